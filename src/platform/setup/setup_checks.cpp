#include "platform/setup/setup_checks.h"

#include "contracts/desktop.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/services.h"
#include "platform/setup/setup_steps.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <cstdlib>
#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace setup_steps;

namespace {

/// The times of two stations stand side by side in one archive.
constexpr qint64 MostClockSeconds = 60;
/// Two long texts of a report, with room.
constexpr qint64 LeastPacketBytes = 1'048'576;
/// A table of millions of rows is written anew in hours.
constexpr int UpkeepReplySeconds = 24 * 60 * 60;

void CheckSecret(const QString& holder, CheckLines& lines)
{
    const QString what = u"암호가 든 파일"_s;
    const QFileInfo file(NativePath(holder));
    const QFileDevice::Permissions rights = file.permissions();
    const QString readers = u"%1, 주인 %2, 그룹 %3"_s.arg(file.absoluteFilePath(), file.owner(), file.group());
    if (rights.testFlag(QFileDevice::ReadOther))
        lines.append({CheckLine::Wrong, what, u"모든 사용자가 읽을 수 있습니다: %1"_s.arg(readers),
                      u"chmod o= %1"_s.arg(file.absoluteFilePath())});
    else if (rights.testFlag(QFileDevice::ReadGroup))
        lines.append({CheckLine::Remark, what, u"그룹의 사용자도 읽을 수 있습니다: %1"_s.arg(readers),
                      u"스테이션을 쓰는 사용자만 그 그룹에 두십시오"_s});
    else
        lines.append({CheckLine::Right, what, readers});
}

/// Who may write it chooses the server and the folder that patients' data go to.
void CheckWriters(const QString& path, CheckLines& lines)
{
    struct stat file = {};
    struct stat folder = {};
    const QByteArray native = QFile::encodeName(NativePath(path));
    const QByteArray above = QFile::encodeName(QFileInfo(NativePath(path)).absolutePath());
    if (stat(native.constData(), &file) == 0 && (file.st_mode & S_IWOTH) != 0)
        lines.append({CheckLine::Wrong, u"설정 파일"_s, u"모든 사용자가 고칠 수 있습니다: %1"_s.arg(path),
                      u"chmod o-w %1"_s.arg(path)});
    if (stat(above.constData(), &folder) == 0 && (folder.st_mode & (S_IWOTH | S_ISVTX)) == S_IWOTH)
        lines.append({CheckLine::Wrong, u"설정 파일"_s,
                      u"모든 사용자가 바꾸어 놓을 수 있는 폴더에 있습니다: %1"_s.arg(path),
                      u"chmod o-w %1"_s.arg(QFile::decodeName(above))});
}

/// A statement that is larger is refused, and its findings or note with it.
void CheckPacket(AdoConnection& connection, CheckLines& lines)
{
    const QString what = u"데이터베이스의 max_allowed_packet"_s;
    const qint64 bytes =
        connection.Execute(u" SELECT @@max_allowed_packet AS bytes "_s)->Fields(u"bytes"_s).toLongLong();
    const bool isRight = bytes >= LeastPacketBytes;
    lines.append({isRight ? CheckLine::Right : CheckLine::Wrong, what, u"%1바이트"_s.arg(bytes),
                  isRight ? QString()
                          : u"긴 소견이 저장되지 않습니다. 서버의 설정에 max_allowed_packet=16M를 적고 다시 시작하거나 "
                            "SET GLOBAL max_allowed_packet=16777216을 실행하십시오"_s});
}

void CheckClock(AdoConnection& connection, CheckLines& lines)
{
    const QString what = u"시계"_s;
    const auto rows = connection.Execute(u" SELECT UNIX_TIMESTAMP() AS server "_s);
    const qint64 apart = std::llabs(rows->Fields(u"server"_s).toLongLong() - QDateTime::currentSecsSinceEpoch());
    const bool isRight = apart <= MostClockSeconds;
    lines.append({isRight ? CheckLine::Right : CheckLine::Wrong, what, u"서버와 %1초 차이"_s.arg(apart),
                  isRight ? QString() : u"두 컴퓨터의 시각을 맞추십시오 (timedatectl set-ntp true)"_s});
}

bool CrossesNetworkInClear(const DatabaseSettings& database)
{
    return !IsThisMachine(database.host) && database.certificateAuthority.isEmpty();
}

void CheckDatabase(SetupFile& file, OutsideChecks::Setup& setup)
{
    const QString what = u"데이터베이스 연결"_s;
    try {
        ReadPassword(file);
        setup.connection = OpenConnection(file.database);
        const QString place = setup.isServer ? file.database.host + file.database.socket : QString();
        setup.lines.append({CheckLine::Right, what, u"%1 %2"_s.arg(place, file.database.name).trimmed()});
        if (!setup.isServer)
            return;
        if (CrossesNetworkInClear(file.database))
            setup.lines.append({CheckLine::Remark, u"데이터베이스 암호화"_s,
                                u"환자의 자료가 암호화되지 않고 망을 건넙니다"_s, u"[Database] SslCa를 쓰십시오"_s});
        else if (!IsThisMachine(file.database.host) && !file.database.verifiesServerName)
            setup.lines.append({CheckLine::Remark, u"데이터베이스 암호화"_s,
                                u"서버의 이름을 확인하지 않아, 서버를 흉내 내는 컴퓨터를 늦게 알아차립니다"_s,
                                u"서버의 인증서에 이름을 넣고 SslVerify=1을 쓰십시오"_s});
        CheckClock(*setup.connection, setup.lines);
        CheckPacket(*setup.connection, setup.lines);
    } catch (const PlatformError& error) {
        setup.lines.append({CheckLine::Wrong, what, error.Text(), u"[Database] 구역과 서버를 확인하십시오"_s});
    }
}

} // namespace

OutsideChecks::Setup CheckSetup()
{
    OutsideChecks::Setup setup;
    const QString what = u"설정 파일"_s;
    const QStringList candidates = Candidates(UseService<Desktop>().ProgramFolder());
    const QString path = FindSetupFile(candidates);
    if (path.isEmpty()) {
        setup.lines.append({CheckLine::Wrong, what, u"없습니다: %1"_s.arg(NativePath(candidates.join(u", "_s))),
                            u"예제(/usr/share/doc/capture-station/examples/Setup.ini)를 복사하여 고치십시오"_s});
        return setup;
    }
    SetupFile file;
    try {
        file = ReadSetupFile(ReadSmallFile(path), QFileInfo(path).absolutePath());
    } catch (const PlatformError& error) {
        setup.lines.append({CheckLine::Wrong, what, error.Text(), u"파일과 읽을 권한을 확인하십시오"_s});
        return setup;
    }
    setup.isGood = file.problems.isEmpty();
    setup.client = file.client;
    setup.places = file.places;
    setup.isServer = file.database.driver.compare(u"QSQLITE", Qt::CaseInsensitive) != 0;
    if (setup.isGood && file.oddities.isEmpty())
        setup.lines.append({CheckLine::Right, what, path});
    for (const QString& problem : file.problems)
        setup.lines.append({CheckLine::Wrong, what, problem, u"%1을(를) 고치십시오"_s.arg(path)});
    for (const SetupFile::Oddity& oddity : file.oddities)
        setup.lines.append({CheckLine::Wrong, what, oddity.found, u"%1: %2"_s.arg(path, oddity.toDo)});
    CheckWriters(path, setup.lines);
    if (!file.passwordFile.isEmpty())
        CheckWriters(file.passwordFile, setup.lines);
    for (const QString& note : file.notes)
        setup.lines.append({CheckLine::Remark, what, note});
    if (const QString holder = PasswordHolder(file, path); !holder.isEmpty() && FileExists(holder))
        CheckSecret(holder, setup.lines);
    if (!setup.isGood)
        return setup;
    try {
        if (file.needsCaptureMount)
            CheckCaptureRoot(file, MissingRoot::IsTold);
    } catch (const PlatformError& error) {
        setup.lines.append(
            {CheckLine::Wrong, u"캡쳐 폴더의 마운트"_s, error.Text(), u"공유를 마운트하십시오 (findmnt)"_s});
    }
    CheckDatabase(file, setup);
    return setup;
}

ConnectionPointer OpenForUpkeep(const QString& user, const QString& password, const QString& passwordFile)
{
    const QString path = FindSetupFile(Candidates(UseService<Desktop>().ProgramFolder()));
    SetupFile file = ReadSetupFile(ReadSmallFile(path), QFileInfo(path).absolutePath());
    if (!user.isEmpty()) {
        file.database.user = user;
        file.database.password = password;
        file.passwordFile = passwordFile;
    }
    ReadPassword(file);
    file.database.replyTimeoutSeconds = UpkeepReplySeconds;
    return OpenConnection(file.database);
}
