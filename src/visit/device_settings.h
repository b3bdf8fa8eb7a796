#pragma once

#include <QString>

/// Positions in the lists of the video control, counted from 0. `Colors` is kept and reaches no control.
struct DeviceSettingsRecord
{
    int Devices = 0;
    int Sizes = 0;
    int Colors = 0;
    int Sources = 0;
    bool KeepInterlaced = false; ///< The device's interlaced pictures are shown as they come.
};

extern DeviceSettingsRecord DeviceSettings;

/// Fills `DeviceSettings` from `CapSet.ini` in the program's folder. What is missing there, or isn't numeric, is 0.
void LoadDeviceSettings();
/// Writes `DeviceSettings` to `CapSet.ini`, key by key. A file that can't be written keeps its old values.
void SaveDeviceSettings();
/// Writes the one key of interlaced pictures.
void SaveKeepInterlaced();

/// `CapSet.ini` in the program's own folder: the station's own settings.

/// A key's value, cleaned and trimmed. `bytes` is the size of the buffer that receives it: one byte less arrives, and
/// no more than ten characters count. "0" when the file, the section or the key is missing.
QString ReadSetting(const QString& section, const QString& key, int bytes);
/// Writes one key. A failure shows nothing and leaves the old value.
void WriteSetting(const QString& section, const QString& key, const QString& value);
