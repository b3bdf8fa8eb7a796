#include "platform/desktop/command_string.h"

namespace {

/// Of the locale that counts for characters; empty without one.
QByteArray CharacterLocale()
{
    for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        if (QByteArray locale = qgetenv(variable); !locale.isEmpty())
            return locale;
    }
    return {};
}

/// As in `ko_KR.EUC-KR@modifier`. `C`, `POSIX` and a name without an encoding tell of none.
bool NamesLegacyEncoding(QByteArray locale)
{
    if (const qsizetype modifier = locale.indexOf('@'); modifier >= 0)
        locale.truncate(modifier);
    const qsizetype point = locale.indexOf('.');
    if (point < 0)
        return locale == "ko_KR"; // In the system's list of locales that is EUC-KR.
    const QByteArray encoding = locale.sliced(point + 1).toLower().replace("-", "");
    return !encoding.isEmpty() && encoding != "utf8";
}

} // namespace

CommandString CommandStringOf(const char* argument)
{
    return {argument, NamesLegacyEncoding(CharacterLocale())};
}
