#pragma once

class VideoCap;

/// Starts the device with the stored settings, and keeps the room awake until it is stopped. False, with a message,
/// when the machine has no video device; the control is then left alone. A device that can't be opened is a
/// PlatformError.
bool StartDevice(VideoCap& capture);

/// Lets the operator choose device, format and input, applies what the control has of them, and starts the device.
void ChooseDevice(VideoCap& capture);

/// Shows the driver's first settings dialog, and starts the device however that went. Tells, or throws as
/// PlatformError, what keeps the device from running, or else what kept the dialog away.
void ShowDriverSettings(VideoCap& capture, int ownerHandle);

/// The device went back to a format that gives a picture: stores that one, and tells the operator.
void KeepFormat(VideoCap& capture, int refused, int kept);

/// Ends a recording and stops the device; the room may fall asleep.
void StopDevice(VideoCap& capture);
