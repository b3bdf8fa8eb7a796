#include "platform/setup/setup_steps.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/file_calls.h"
#include "frame/services.h"
#include "frame/waiting.h"
#include "platform/files/program_folder.h"

#include <QFileInfo>
#include <QStorageInfo>

using namespace Qt::StringLiterals;

namespace {

constexpr char SetupVariable[] = "CAPTURE_STATION_SETUP";
/// A share that doesn't answer is told after so long.
constexpr int SharePatienceMs = 3000;
constexpr qint64 MostBytes = 1'000'000;

bool IsMountPoint(const QString& path)
{
    const QString place = QFileInfo(NativePath(path)).canonicalFilePath();
    return !place.isEmpty() && QStorageInfo(place).rootPath() == place;
}

} // namespace

QStringList setup_steps::Candidates(const QString& programFolder)
{
    const QString named = qEnvironmentVariable(SetupVariable);
    if (!named.trimmed().isEmpty())
        return {named};
    QStringList candidates{programFolder + u"/Setup.ini"_s, ExecutableFolder() + u"/Setup.ini"_s,
                           u"/etc/capture-station/Setup.ini"_s};
    candidates.removeDuplicates();
    return candidates;
}

QString setup_steps::FindSetupFile(const QStringList& candidates)
{
    for (const QString& candidate : candidates) {
        if (FileExists(candidate))
            return QFileInfo(NativePath(candidate)).absoluteFilePath();
    }
    return {};
}

QByteArray setup_steps::ReadSmallFile(const QString& path)
{
    // A link may lead to the file.
    const QFileInfo file(NativePath(path));
    if (file.exists() && !file.isFile())
        throw PlatformError(u"보통 파일이 아니어서 읽지 않습니다.!! (%1)"_s.arg(file.filePath()));
    const QString place = file.exists() ? file.canonicalFilePath() : path;
    QByteArray content = Files().ReadArchivedPiece(place, 0, MostBytes + 1);
    if (content.size() > MostBytes)
        throw PlatformError(u"파일이 너무 커서 읽지 않습니다.!! 1MB까지입니다. (%1)"_s.arg(file.filePath()));
    return content;
}

void setup_steps::ReadPassword(SetupFile& file)
{
    if (file.passwordFile.isEmpty())
        return;
    QString password = QString::fromUtf8(ReadSmallFile(file.passwordFile));
    password.truncate(password.indexOf(u'\n') < 0 ? password.size() : password.indexOf(u'\n'));
    if (password.endsWith(u'\r'))
        password.chop(1);
    file.database.password = password;
}

QString setup_steps::PasswordHolder(const SetupFile& file, const QString& setupPath)
{
    if (!file.passwordFile.isEmpty())
        return file.passwordFile;
    return file.database.password.isEmpty() ? QString() : setupPath;
}

void setup_steps::CheckCaptureRoot(const SetupFile& file, MissingRoot missingRoot)
{
    const QString& root = file.client.CaptureRoot;
    const waiting::Patience patience(SharePatienceMs);
    if (file.needsCaptureMount && !filecalls::Ask([root] { return IsMountPoint(root); }))
        throw PlatformError(u"캡쳐 폴더의 공유가 연결되어 있지 않습니다.!! (%1)"_s.arg(NativePath(root)));
    if (missingRoot == MissingRoot::IsMade) {
        // Without its share the station opens, and makes nothing there.
        if (!Files().IsMissingMount(root))
            MakeFolder(root);
    } else if (!FolderExists(root))
        throw PlatformError(u"캡쳐 폴더가 없습니다.!! (%1)"_s.arg(NativePath(root)));
}
