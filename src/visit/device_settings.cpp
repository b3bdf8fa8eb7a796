#include "visit/device_settings.h"

#include "frame/components.h"
#include "text/text_routines.h"
#include "visit/settings_file.h"

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
}

void SaveDeviceSettings()
{
    WritePosition(u"Devices"_s, DeviceSettings.Devices);
    WritePosition(u"Sizes"_s, DeviceSettings.Sizes);
    WritePosition(u"Colors"_s, DeviceSettings.Colors);
    WritePosition(u"sources"_s, DeviceSettings.Sources);
}
