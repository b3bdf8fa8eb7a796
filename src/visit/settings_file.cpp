#include "visit/settings_file.h"

#include "contracts/desktop.h"
#include "contracts/ProfileFile.h"
#include "frame/components.h"
#include "text/text_routines.h"

using namespace Qt::StringLiterals;

namespace {
constexpr int CharactersRead = 10;

QString SettingsPath()
{
    return UseService<Desktop>().ProgramFolder() + u"\\CapSet.ini"_s;
}
} // namespace

QString ReadSetting(const QString& section, const QString& key, int bytes)
{
    const QString value =
        UseService<ProfileFile>().GetPrivateProfileString(section, key, u"0"_s, bytes, SettingsPath());
    return Trim(CleanText(value, CharactersRead));
}

void WriteSetting(const QString& section, const QString& key, const QString& value)
{
    UseService<ProfileFile>().WritePrivateProfileString(section, key, value, SettingsPath());
}
