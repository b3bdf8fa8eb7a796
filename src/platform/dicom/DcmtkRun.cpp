#include "platform/dicom/DcmtkRun.h"

#include "platform/process/child_process.h"

using namespace Qt::StringLiterals;

namespace {

/// The directory of a full disc tells a line of each picture; so does a long transfer, which a slow line can hold for
/// an hour.
constexpr qint64 OutputBytes = qint64(16) << 20;
constexpr int TotalMs = 2 * 3600 * 1000;

} // namespace

DcmtkResult RunDcmtk(const QString& program, const QStringList& arguments, const QString& folder, int longestSilenceMs,
                     const std::stop_token& stop)
{
    if (ProgramPath(program).isEmpty())
        return {false, {}, u"%1을(를) 실행할 수 없습니다.!! dcmtk 패키지를 설치하십시오."_s.arg(program)};
    const ChildResult result =
        RunChild(program, arguments, folder,
                 {.outputBytes = OutputBytes, .silenceMs = longestSilenceMs, .totalMs = TotalMs}, stop);
    return {result.succeeded, LinesOf(result.errors), result.fault};
}
