#include "contracts/desktop.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/services.h"
#include "platform/machine/machine_checks.h"

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 LittleRoom = 1'000'000'000; ///< Bytes; the station keeps no more pictures from there on.

CheckLine FolderLine(const QString& folder)
{
    const QString what = u"프로그램 폴더"_s;
    const QString probe = u"%1/.station-check-%2"_s.arg(folder).arg(getpid());
    try {
        Files().WritePrivateFile(probe, "station");
        Files().DeleteFile(probe);
    } catch (const PlatformError& error) {
        return {CheckLine::Wrong, what, error.Text(),
                u"이 사용자가 쓸 수 있는 폴더로 하십시오. 그림은 여기를 거쳐 저장됩니다"_s};
    }
    const qint64 room = Files().FreeBytes(folder);
    const QString found = u"%1, 남은 공간 %2GB"_s.arg(folder).arg(double(room) / 1e9, 0, 'f', 1);
    if (room >= 0 && room < LittleRoom)
        return {CheckLine::Wrong, what, found, u"1GB 넘게 비우십시오. 공유가 멈추면 그림을 받지 못합니다"_s};
    return {CheckLine::Right, what, found};
}

} // namespace

CheckLines CheckProgramFolders()
{
    const auto& desktop = UseService<Desktop>();
    QStringList folders{desktop.ProgramFolder()};
    try {
        folders << desktop.StateFolder();
    } catch (const PlatformError& error) {
        return {{CheckLine::Wrong, u"프로그램 폴더"_s, error.Text(), u"쓰기 권한을 확인하십시오"_s}};
    }
    folders.removeDuplicates();
    CheckLines lines;
    for (const QString& folder : folders)
        lines.append(FolderLine(folder));
    return lines;
}
