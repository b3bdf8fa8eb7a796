#include "admin/commands.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "filing/capture_root.h"
#include "frame/terminal.h"
#include "session/VisitContext.h"

using namespace Qt::StringLiterals;

int ShowRoot(TerminalOutput& out)
{
    const QString mark = capture_root::MarkOf(ClientSetup.CaptureRoot);
    const QString stored = capture_root::StoredMark();
    out << u"캡쳐 폴더 "_s << NativePath(ClientSetup.CaptureRoot) << u'\n' << u"표시 "_s
        << (mark.isEmpty() ? u"없음"_s : mark) << u'\n' << u"데이터베이스 "_s
        << (stored.isEmpty() ? u"기억하지 않음"_s : stored) << u'\n';
    if (!stored.isEmpty() && stored != mark)
        out << u"이 폴더는 데이터베이스가 기억하는 캡쳐 폴더가 아닙니다.!!\n"_s;
    return !mark.isEmpty() && (stored.isEmpty() || stored == mark) ? AllWell : Found;
}

int StoreRoot(TerminalOutput& out)
{
    const QString mark = capture_root::MarkOf(ClientSetup.CaptureRoot);
    if (mark.isEmpty())
        throw PlatformError(u"캡쳐 폴더에 표시가 없습니다.!! 스테이션을 한 번 실행하십시오. (%1)"_s.arg(
            NativePath(ClientSetup.CaptureRoot)));
    capture_root::StoreMark(mark);
    return ShowRoot(out);
}
