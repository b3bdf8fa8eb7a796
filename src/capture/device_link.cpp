#include "capture/device_link.h"

#include "capture/LiveMark.h"
#include "contracts/PlatformError.h"
#include "contracts/RoomAwake.h"
#include "contracts/VideoCap.h"
#include "devicesettings/frmCapSet.h"
#include "frame/components.h"
#include "frame/services.h"
#include "visit/device_settings.h"

using namespace Qt::StringLiterals;

namespace {
/// The room stays awake, and no movie is made ready for a server, while the device runs.
void TellDeviceRuns(bool on)
{
    if (LiveMark* live = ServiceSlot<LiveMark>().get())
        live->setLive(on);
    RoomAwake* room = ServiceSlot<RoomAwake>().get();
    if (room != nullptr && on)
        room->Keep();
    else if (room != nullptr)
        room->Release();
}
} // namespace

bool StartDevice(VideoCap& capture)
{
    if (capture.Devices().Count() < 1) {
        ShowInformation(u"캡쳐 장치를 찾을수 없습니다.!!"_s);
        return false;
    }
    capture.setDevice(DeviceSettings.Devices);
    capture.setVideoFormat(DeviceSettings.Sizes);
    capture.setVideoInput(DeviceSettings.Sources);
    capture.setDeinterlaces(!DeviceSettings.KeepInterlaced);
    try {
        capture.Start();
    } catch (const PlatformError&) {
        TellDeviceRuns(false);
        throw;
    }
    TellDeviceRuns(true);
    return true;
}

void ChooseDevice(VideoCap& capture)
{
    ShowDeviceSettings(capture);
    if (capture.Devices().Count() >= 1)
        capture.setDevice(DeviceSettings.Devices);
    const int formats = capture.VideoFormats().Count();
    if (formats >= 1 && DeviceSettings.Sizes <= formats - 1)
        capture.setVideoFormat(DeviceSettings.Sizes);
    const int inputs = capture.VideoInputs().Count();
    if (inputs >= 1 && DeviceSettings.Sources <= inputs - 1)
        capture.setVideoInput(DeviceSettings.Sources);
    StartDevice(capture);
}

void ShowDriverSettings(VideoCap& capture, int ownerHandle)
{
    try {
        capture.ShowDriverDialog1(ownerHandle);
    } catch (const PlatformError&) {
        // What keeps the device from running says more than what kept the dialog away.
        if (StartDevice(capture))
            throw;
        return;
    }
    if (DeviceSettings.KeepInterlaced == capture.Deinterlaces()) {
        DeviceSettings.KeepInterlaced = !capture.Deinterlaces();
        SaveKeepInterlaced();
    }
    StartDevice(capture);
}

void KeepFormat(VideoCap& capture, int refused, int kept)
{
    DeviceSettings.Sizes = kept;
    SaveDeviceSettings();
    const VideoNames formats = capture.VideoFormats();
    ShowInformation(u"선택한 화면크기(%1)로는 영상이 나오지 않아 앞의 화면크기(%2)로 돌아왔습니다.!!"_s.arg(
        formats.Name(refused), formats.Name(kept)));
}

void StopDevice(VideoCap& capture)
{
    if (capture.CaptureMode())
        capture.setCaptureMode(false);
    capture.Stop();
    TellDeviceRuns(false);
}
