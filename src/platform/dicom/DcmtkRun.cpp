#include "platform/dicom/DcmtkRun.h"

#include "contracts/files.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <QStandardPaths>

#include <csignal>

#include <sys/prctl.h>

using namespace Qt::StringLiterals;

namespace {
/// How soon a stop is noticed.
constexpr int LookMs = 50;
constexpr int KilledMs = 2000;
} // namespace

DcmtkResult RunDcmtk(const QString& program, const QStringList& arguments, const QString& folder, int longestSilenceMs,
                     const std::stop_token& stop)
{
    DcmtkResult result;
    const QString path = QStandardPaths::findExecutable(program);
    if (path.isEmpty()) {
        result.fault = u"%1을(를) 실행할 수 없습니다.!! dcmtk 패키지를 설치하십시오."_s.arg(program);
        return result;
    }
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(NativePath(folder));
    process.setProgram(path);
    process.setArguments(arguments);
    process.setStandardInputFile(QProcess::nullDevice());
    // Only a pattern of progress stands there, in the middle of lines.
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setReadChannel(QProcess::StandardError);
    process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    process.start();
    QDeadlineTimer silence(longestSilenceMs);
    QByteArray told;
    while (!process.waitForFinished(LookMs) && process.state() != QProcess::NotRunning) {
        const QByteArray more = process.readAllStandardError();
        told += more;
        if (!more.isEmpty())
            silence.setRemainingTime(longestSilenceMs);
        if (stop.stop_requested())
            result.fault = u"보내기를 그만두었습니다."_s;
        else if (silence.hasExpired())
            result.fault = u"%1이(가) 응답하지 않습니다.!!"_s.arg(program);
        if (!result.fault.isEmpty()) {
            process.kill();
            process.waitForFinished(KilledMs);
            break;
        }
    }
    told += process.readAllStandardError();
    result.lines = QString::fromUtf8(told).split(u'\n', Qt::SkipEmptyParts);
    if (!result.fault.isEmpty())
        return result;
    if (process.error() == QProcess::FailedToStart)
        result.fault = u"%1을(를) 실행할 수 없습니다.!! (%2)"_s.arg(program, process.errorString());
    else if (process.exitStatus() != QProcess::NormalExit)
        result.fault = u"%1이(가) 도중에 끝났습니다.!!"_s.arg(program);
    result.succeeded = result.fault.isEmpty() && process.exitCode() == 0;
    return result;
}
