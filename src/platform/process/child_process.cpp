#include "platform/process/child_process.h"

#include "contracts/files.h"

#include <QDeadlineTimer>
#include <QStandardPaths>

#include <algorithm>
#include <csignal>
#include <memory>

#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// How soon a stop is noticed.
constexpr int LookMs = 50;
constexpr int KilledMs = 2000;

/// One below the smallest file, and known to a handler of cores that gets them through a pipe.
constexpr rlim_t NoCore = 1;

void Limit(__rlimit_resource resource, rlim_t most)
{
    rlimit limit = {};
    getrlimit(resource, &limit);
    limit.rlim_max = std::min(limit.rlim_max, most);
    limit.rlim_cur = std::min(limit.rlim_cur, most);
    setrlimit(resource, &limit);
}

/// In the child, before its program begins, possibly still in this process's memory: system calls and nothing else.
void Confine(pid_t parent, qint64 memoryBytes, int standardInput)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        _exit(EXIT_FAILURE); // It has ended before it could be told.
    setsid();
    if (standardInput >= 0)
        dup2(standardInput, STDIN_FILENO);
    // Not every library of the station closes its sockets and devices for a program that is started. The toolkit's own
    // are needed up to there.
    constexpr unsigned Last = ~0U;
    close_range(STDERR_FILENO + 1, Last, CLOSE_RANGE_CLOEXEC);
    Limit(RLIMIT_CORE, NoCore);
    if (memoryBytes != NoMemoryLimit)
        Limit(RLIMIT_DATA, static_cast<rlim_t>(memoryBytes));
}

QString Filled(const char16_t* sentence, const QString& program)
{
    return QString::fromUtf16(sentence).arg(program);
}

} // namespace

QString ProgramPath(const QString& program)
{
    const QString path = QStandardPaths::findExecutable(program);
    return path.isEmpty() ? QStandardPaths::findExecutable(program, {u"/usr/sbin"_s, u"/sbin"_s}) : path;
}

ChildResult RunChild(const QString& program, const QStringList& arguments, const QString& folder,
                     const ChildLimits& limits, const std::stop_token& stop)
{
    ChildResult result;
    const QString path = ProgramPath(program);
    if (path.isEmpty()) {
        result.fault = Filled(UnstartedChildText, program);
        return result;
    }
    QDeadlineTimer silence(limits.silenceMs);
    const QDeadlineTimer total(limits.totalMs);
    QProcess process;
    PrepareChild(process, limits.memoryBytes);
    process.setWorkingDirectory(NativePath(folder));
    const auto look = [&] {
        if (!result.fault.isEmpty())
            return;
        if (stop.stop_requested())
            result.fault = u"%1을(를) 그만두었습니다."_s.arg(program);
        else if (silence.hasExpired())
            result.fault = Filled(SilentChildText, program);
        else if (total.hasExpired())
            result.fault = Filled(EndlessChildText, program);
        if (!result.fault.isEmpty())
            KillChild(process);
    };
    TakeOutput(
        process, &process, limits.outputBytes,
        [&](QProcess::ProcessChannel channel, const QByteArray& more) {
            (channel == QProcess::StandardOutput ? result.output : result.errors) += more;
            silence.setRemainingTime(limits.silenceMs);
            look(); // A wait doesn't run out while there is always something to read.
        },
        [&] { result.fault = Filled(BabblingChildText, program); });
    process.start(path, arguments);
    while (result.fault.isEmpty() && !process.waitForFinished(LookMs) && process.state() != QProcess::NotRunning)
        look();
    if (process.state() != QProcess::NotRunning)
        process.waitForFinished(KilledMs);
    if (!result.fault.isEmpty())
        return result;
    if (process.error() == QProcess::FailedToStart)
        result.fault = Filled(UnstartedChildText, program) + u" (%1)"_s.arg(process.errorString());
    else if (process.exitStatus() != QProcess::NormalExit)
        result.fault = Filled(CrashedChildText, program);
    result.succeeded = result.fault.isEmpty() && process.exitCode() == 0;
    return result;
}

QStringList LinesOf(const QByteArray& printed)
{
    return QString::fromUtf8(printed).split(u'\n', Qt::SkipEmptyParts);
}

void PrepareChild(QProcess& process, qint64 memoryBytes, int standardInput)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
    environment.remove(u"LANGUAGE"_s); // Stands above it in all but the locale C.
    process.setProcessEnvironment(environment);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setChildProcessModifier(
        [parent = getpid(), memoryBytes, standardInput] { Confine(parent, memoryBytes, standardInput); });
}

void KillChild(QProcess& process)
{
    process.closeReadChannel(QProcess::StandardOutput);
    process.closeReadChannel(QProcess::StandardError);
    if (const auto id = static_cast<pid_t>(process.processId()); id > 0)
        kill(-id, SIGKILL);
    process.kill();
}

void TakeOutput(QProcess& process, const QObject* context, qint64 outputBytes, const OutputTaker& take,
                const std::function<void()>& tooMuch)
{
    const auto left = std::make_shared<qint64>(outputBytes);
    const auto read = [&process, left, take, tooMuch](QProcess::ProcessChannel channel) {
        const QByteArray more =
            channel == QProcess::StandardOutput ? process.readAllStandardOutput() : process.readAllStandardError();
        if (more.isEmpty() || *left < 0)
            return;
        *left -= more.size() + more.count('\n') * LineCost;
        if (*left >= 0) {
            take(channel, more);
            return;
        }
        // A grandchild may keep the channel open, and would be read for as long as it prints.
        KillChild(process);
        tooMuch();
    };
    QObject::connect(&process, &QProcess::readyReadStandardOutput, context, [read] { read(QProcess::StandardOutput); });
    QObject::connect(&process, &QProcess::readyReadStandardError, context, [read] { read(QProcess::StandardError); });
}
