#pragma once

/// Positions in the lists of the video control, counted from 0. `Colors` is kept and reaches no control.
struct DeviceSettingsRecord
{
    int Devices = 0;
    int Sizes = 0;
    int Colors = 0;
    int Sources = 0;
};

extern DeviceSettingsRecord DeviceSettings;

/// Fills `DeviceSettings` from `CapSet.ini` in the program's folder. What is missing there, or isn't numeric, is 0.
void LoadDeviceSettings();
/// Writes `DeviceSettings` to `CapSet.ini`, key by key. A file that can't be written keeps its old values.
void SaveDeviceSettings();
