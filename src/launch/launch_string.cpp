#include "launch/launch_string.h"

#include "contracts/desktop.h"
#include "filing/capture_folders.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"

#include <QStringDecoder>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

struct Reading
{
    LaunchString launch;
    bool isValid = false;
};

LaunchString Fields(const QString& command)
{
    return {command.mid(0, 1),  command.mid(1, 2),  command.mid(3, 1),  command.mid(4, 8),
            command.mid(12, 2), command.mid(14, 2), command.mid(16, 8), Trim(command.mid(24))};
}

Reading Read(const QByteArray& bytes, const char* encoding)
{
    QStringDecoder decoder(encoding, QStringConverter::Flag::Stateless);
    if (!decoder.isValid())
        return {};
    const QString text = decoder(bytes);
    return {Fields(text), !decoder.hasError()};
}

bool IsListed(const LaunchString& launch)
{
    return std::ranges::any_of(SectionsOfClient(), [&](const QString& piece) { return Trim(piece) == launch.etc; });
}

bool PrefersKorean(const CommandString& command)
{
    if (ClientSetup.LaunchEncoding.isEmpty())
        return command.isOfLegacyLocale;
    return ClientSetup.LaunchEncoding == u"windows-949"_s;
}

} // namespace

LaunchString CutLaunchString(const CommandString& command)
{
    const Reading utf8 = Read(command.bytes, "UTF-8");
    const Reading korean = Read(command.bytes, "windows-949");
    if (!utf8.isValid)
        return korean.launch;
    if (!korean.isValid)
        return utf8.launch;
    // Some hundred syllables of the one are Latin letters in the other.
    const bool isListed = IsListed(utf8.launch);
    if (isListed != IsListed(korean.launch))
        return isListed ? utf8.launch : korean.launch;
    return PrefersKorean(command) ? korean.launch : utf8.launch;
}
