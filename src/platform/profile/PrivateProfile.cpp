#include "platform/profile/PrivateProfile.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/services.h"
#include "platform/profile/IniFile.h"
#include "platform/profile/windows949.h"

namespace {
QByteArray ContentOf(const QString& path)
{
    return FileExists(path) ? Files().ReadFile(path) : QByteArray();
}
} // namespace

QString PrivateProfile::GetPrivateProfileString(const QString& section, const QString& key, const QString& fallback,
                                                int size, const QString& path) const
{
    QString value = fallback;
    try {
        value = IniFile(ContentOf(path), IniFile::Encoding::Windows949).Value(section, key).value_or(fallback);
    } catch (const PlatformError&) {
        // A file that can't be read counts as missing.
    }
    return windows949::Decoded(windows949::Encoded(value, qMax(0, size - 1)));
}

bool PrivateProfile::WritePrivateProfileString(const QString& section, const QString& key, const QString& value,
                                               const QString& path)
{
    try {
        const QByteArray before = ContentOf(path);
        IniFile file(before, IniFile::Encoding::Windows949);
        file.SetValue(section, key, value);
        if (file.Content() != before)
            WriteWholeFile(path, file.Content());
        return true;
    } catch (const PlatformError&) {
        return false;
    }
}

void RegisterProfile()
{
    InstallService<ProfileFile>(std::make_unique<PrivateProfile>());
}
