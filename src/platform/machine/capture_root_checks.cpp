#include "platform/machine/machine_checks.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/file_calls.h"
#include "frame/services.h"
#include "frame/waiting.h"
#include "platform/files/posix_files.h"

#include <QDate>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// A share that hasn't answered after so long is told.
constexpr int PatienceMs = 5000;
/// A lease that a living station has renewed: it does so each minute.
constexpr qint64 LivingLeaseMs = 5LL * 60 * 1000;
constexpr qint64 LittleRoom = 1'000'000'000; ///< Bytes; the station warns from there on.

const QString Root = u"캡쳐 폴더"_s;

/// What the picture files of a station go through: a new file, its content on the disk, a second name, the folder's own
/// entry on the disk.
void CheckWriting(const QByteArray& root, CheckLines& lines)
{
    const QByteArray name = root + "/.station-check-" + QByteArray::number(getpid());
    const QByteArray second = name + ".link";
    const int file = open(name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (file < 0) {
        lines.append({CheckLine::Wrong, Root, u"파일을 만들 수 없습니다 (%1)"_s.arg(posix_files::ErrorText(errno)),
                      u"이 사용자에게 쓰기 권한을 주십시오 (chgrp 그룹 폴더; chmod 2770 폴더)"_s});
        return;
    }
    const bool isSynced = write(file, "station", 7) == 7 && fsync(file) == 0;
    const int syncError = errno;
    close(file);
    const bool isLinked = link(name.constData(), second.constData()) == 0;
    const int linkError = errno;
    unlink(second.constData());
    unlink(name.constData());
    const int folder = open(root.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool isFolderSynced = folder >= 0 && (fsync(folder) == 0 || errno == EINVAL || errno == ENOTSUP);
    if (folder >= 0)
        close(folder);
    if (!isSynced || !isFolderSynced)
        lines.append({CheckLine::Wrong, Root,
                      u"디스크에 안전하게 쓰지 못합니다 (%1)"_s.arg(posix_files::ErrorText(syncError)),
                      u"디스크나 공유의 서버를 확인하십시오"_s});
    else
        lines.append({CheckLine::Right, Root, u"쓰고 지울 수 있습니다"_s});
    if (!isLinked)
        lines.append({CheckLine::Remark, Root,
                      u"하드 링크를 만들 수 없습니다 (%1)"_s.arg(posix_files::ErrorText(linkError)),
                      u"저장은 되지만, 같은 이름을 지키는 데 공유의 배타적 생성만 씁니다"_s});
}

/// Mount options of a network file system, as the kernel lists them.
QString MountOptions(const QString& mountPoint)
{
    QFile mounts(u"/proc/self/mounts"_s);
    QString options;
    if (mounts.open(QFile::ReadOnly)) {
        for (const QByteArray& line : mounts.readAll().split('\n')) {
            const QList<QByteArray> parts = line.split(' ');
            if (parts.size() > 3 && QFile::decodeName(parts.at(1)) == mountPoint)
                options = QString::fromUtf8(parts.at(3));
        }
    }
    return options;
}

void CheckCarrier(const QString& root, CheckLines& lines)
{
    const QStorageInfo disk(root);
    const QString kind = QString::fromUtf8(disk.fileSystemType());
    // A root that lies in no mount of this process's view is on a disk all the same.
    const qint64 freeBytes = Files().FreeBytes(root);
    if (freeBytes < 0) {
        lines.append({CheckLine::Wrong, Root, qt_error_string(), u"디스크나 공유의 연결을 확인하십시오"_s});
        return;
    }
    const QString place = disk.isValid() ? u"%1에 있는 %2, "_s.arg(disk.rootPath(), kind) : QString();
    const QString found = place + u"남은 공간 %1GB"_s.arg(double(freeBytes) / 1e9, 0, 'f', 1);
    if (freeBytes < LittleRoom)
        lines.append({CheckLine::Wrong, Root, found, u"공간을 늘리십시오. 그림이 들어가지 않으면 찍을 수 없습니다"_s});
    else
        lines.append({CheckLine::Right, Root, found});
    if (kind.startsWith(u"nfs"_s) && MountOptions(disk.rootPath()).split(u',').contains(u"soft"_s))
        lines.append({CheckLine::Wrong, Root, u"NFS가 soft로 마운트되어 있습니다"_s, u"hard로 마운트하십시오"_s});
}

void CheckSharing(const QByteArray& root, CheckLines& lines)
{
    struct stat facts = {};
    if (stat(root.constData(), &facts) != 0)
        return;
    const bool isShared = (facts.st_mode & S_IWGRP) != 0;
    if (isShared && (facts.st_mode & S_ISGID) == 0)
        lines.append({CheckLine::Remark, Root, u"그룹이 쓸 수 있으나 setgid가 없습니다"_s,
                      u"여러 사용자가 함께 쓰면 chmod g+s 하십시오"_s});
    if ((facts.st_mode & S_IRWXO) != 0)
        lines.append({CheckLine::Remark, Root, u"이 컴퓨터의 모든 사용자가 환자의 그림을 볼 수 있습니다"_s,
                      u"chmod o= %1 (SMB는 마운트의 dir_mode=02770, file_mode=0660)"_s.arg(QFile::decodeName(root))});
}

/// The folders of this year: the station makes those that are missing.
void CheckYear(const ClientSetupRecord& client, CheckLines& lines)
{
    const QString year = NativePath(client.CaptureRoot + QDate::currentDate().toString(u"yyyy"_s));
    QStringList folders{year, year + u"/movie"_s};
    for (const QString& section : client.EtcList.split(u',', Qt::SkipEmptyParts))
        folders << year + u'/' + section << year + u'/' + section + u"Log"_s;
    QStringList missing;
    for (const QString& folder : folders) {
        const QByteArray native = QFile::encodeName(folder);
        if (access(native.constData(), F_OK) != 0)
            missing << QFileInfo(folder).fileName();
        else if (!QFileInfo(folder).isDir() || access(native.constData(), W_OK | X_OK) != 0)
            lines.append({CheckLine::Wrong, u"올해의 폴더"_s, u"쓸 수 없습니다: %1"_s.arg(folder),
                          u"이 사용자에게 쓰기 권한을 주십시오"_s});
    }
    if (missing.isEmpty())
        lines.append({CheckLine::Right, u"올해의 폴더"_s, u"%1개"_s.arg(folders.size())});
    else
        lines.append({CheckLine::Remark, u"올해의 폴더"_s, u"아직 없음: %1"_s.arg(missing.join(u", "_s)),
                      u"스테이션이 시작할 때 만듭니다"_s});
}

/// A station that works now, under this machine's identity, and of a boot that isn't this machine's.
void CheckCopies(const ClientSetupRecord& client, CheckLines& lines)
{
    const QString prefix = QString::fromUtf16(LeasePrefix);
    for (const QString& name : Files().FilesStartingWith(client.CaptureRoot, prefix)) {
        const QString mark = name.sliced(prefix.size());
        if (Files().HolderOf(mark) == Holder::Elsewhere && Files().IsOfThisMachine(mark) &&
            Files().AgeMs(client.CaptureRoot + name) < LivingLeaseMs) {
            lines.append({CheckLine::Wrong, u"machine-id"_s, u"다른 컴퓨터가 이 컴퓨터와 같은 machine-id를 씁니다"_s,
                          u"디스크를 복사한 컴퓨터에서 rm -f /etc/machine-id /var/lib/dbus/machine-id; "
                          "systemd-machine-id-setup 하고 다시 시작하십시오"_s});
            return;
        }
    }
}

} // namespace

CheckLines CheckRootFolder(const ClientSetupRecord& client)
{
    const QString root = NativePath(client.CaptureRoot);
    try {
        const waiting::Patience patience(PatienceMs);
        return filecalls::Ask([client, root] {
            CheckLines lines;
            if (!QFileInfo(root).isDir()) {
                lines.append(
                    {CheckLine::Wrong, Root, u"없습니다: %1"_s.arg(root), u"만들거나 공유를 마운트하십시오"_s});
                return lines;
            }
            const QByteArray native = QFile::encodeName(root);
            CheckCarrier(root, lines);
            CheckWriting(native, lines);
            CheckSharing(native, lines);
            CheckYear(client, lines);
            CheckCopies(client, lines);
            return lines;
        });
    } catch (const FilesAway&) {
        return {{CheckLine::Wrong, Root, u"공유가 응답하지 않습니다: %1"_s.arg(root),
                 u"공유의 서버와 망을 확인하십시오"_s}};
    }
}
