#include "visit/device_settings.h"

#include "contracts/desktop.h"
#include "contracts/ProfileFile.h"
#include "frame/components.h"
#include "text/text_routines.h"

using namespace Qt::StringLiterals;

DeviceSettingsRecord DeviceSettings;

namespace {
const QString CaptureSetting = u"Capture Setting"_s;

int ReadPosition(const QString& key)
{
    return WholeNumber(ReadSetting(CaptureSetting, key, 10));
}

void WritePosition(const QString& key, int position)
{
    WriteSetting(CaptureSetting, key, QString::number(position));
}
} // namespace

void LoadDeviceSettings()
{
    DeviceSettings.Devices = ReadPosition(u"Devices"_s);
    DeviceSettings.Sizes = ReadPosition(u"Sizes"_s);
    DeviceSettings.Colors = ReadPosition(u"Colors"_s);
    DeviceSettings.Sources = ReadPosition(u"Sources"_s);
    DeviceSettings.KeepInterlaced = ReadPosition(u"KeepInterlaced"_s) == 1;
}

void SaveDeviceSettings()
{
    WritePosition(u"Devices"_s, DeviceSettings.Devices);
    WritePosition(u"Sizes"_s, DeviceSettings.Sizes);
    WritePosition(u"Colors"_s, DeviceSettings.Colors);
    WritePosition(u"sources"_s, DeviceSettings.Sources);
}

void SaveKeepInterlaced()
{
    WritePosition(u"KeepInterlaced"_s, DeviceSettings.KeepInterlaced ? 1 : 0);
}

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
