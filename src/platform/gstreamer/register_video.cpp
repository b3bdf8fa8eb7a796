#include "platform/gstreamer/register_video.h"

#include "contracts/VideoOptions.h"
#include "frame/components.h"
#include "platform/gstreamer/devices/VideoDevices.h"
#include "platform/gstreamer/movies/movie_repair.h"
#include "platform/gstreamer/sounds/ShutterSounds.h"
#include "platform/gstreamer/VideoControl.h"

using namespace Qt::StringLiterals;

namespace {
class SharedVideoOptions final : public VideoOptions
{
public:
    explicit SharedVideoOptions(std::shared_ptr<VideoDevices> devices) : m_devices(std::move(devices)) {}

    void OfferTestPicture(bool offered) override { m_devices->OfferTestPicture(offered); }
    void RepairMovies(const QString& folder) override { ::RepairMovies(folder); }

private:
    std::shared_ptr<VideoDevices> m_devices;
};
} // namespace

void RegisterVideo()
{
    auto devices = std::make_shared<VideoDevices>(std::make_unique<KernelV4l2Calls>(), u"/dev"_s);
    InstallService<VideoOptions>(std::make_unique<SharedVideoOptions>(devices));
    RegisterComponent<VideoCap>(u"VIDEOCAPLib.VideoCap"_s,
                                [devices] { return std::make_unique<VideoControl>(devices); });
}

void RegisterShutterSound()
{
    InstallService<ShutterSound>(std::make_unique<ShutterSounds>());
}
