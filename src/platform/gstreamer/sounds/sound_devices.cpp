#include "platform/gstreamer/sounds/sound_devices.h"

#include "platform/gstreamer/live/LivePipeline.h"

#include <gst/gst.h>

namespace {

int CountOf(const char* classes)
{
    GstDeviceMonitor* monitor = gst_device_monitor_new();
    gst_device_monitor_add_filter(monitor, classes, nullptr);
    GList* devices = gst_device_monitor_get_devices(monitor);
    gst_object_unref(monitor);
    const int count = static_cast<int>(g_list_length(devices));
    g_list_free_full(devices, gst_object_unref);
    return count;
}

} // namespace

SoundDevices FindSoundDevices()
{
    PrepareMedia();
    return {CountOf("Audio/Source"), CountOf("Audio/Sink")};
}
