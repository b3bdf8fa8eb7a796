#pragma once

#include "FakeV4l2Calls.h"
#include "platform/gstreamer/devices/VideoDevices.h"
#include "platform/gstreamer/testpicture/TestPictureHooks.h"
#include "platform/gstreamer/VideoControl.h"
#include "support/testing.h"

/// A control on a machine whose only device is the test picture.
struct LiveFixture
{
    enum Format { At1080p60, At720p60, At480p30 };

    LiveFixture()
    {
        FreezeTestPicture(false);
        UnplugTestPicture(false);
        devices->OfferTestPicture(true);
    }

    std::unique_ptr<VideoControl> NewControl(int format = At480p30) const
    {
        auto control = std::make_unique<VideoControl>(devices);
        control->resize(560, 420);
        control->setVideoFormat(format);
        control->show();
        return control;
    }

    const std::shared_ptr<VideoDevices> devices = std::make_shared<VideoDevices>(
        std::make_unique<FakeV4l2Calls>(std::make_shared<FakeV4l2Calls::Cameras>()), QString());
};

inline QImage Decoded(const std::shared_ptr<const StillFrame>& frame)
{
    return frame ? QImage::fromData(frame->EncodeJPEG(90), "JPEG") : QImage();
}

/// True when the picture has something of the scene's pink: neither black, white nor grey.
inline bool ShowsScene(const QImage& picture)
{
    const QRgb pixel = picture.pixel(picture.width() / 8, picture.height() / 2);
    return qRed(pixel) > 60 && qRed(pixel) > qBlue(pixel) + 20;
}
