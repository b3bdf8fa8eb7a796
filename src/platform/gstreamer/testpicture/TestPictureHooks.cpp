#include "platform/gstreamer/testpicture/TestPictureHooks.h"

#include "platform/gstreamer/testpicture/TestPictureState.h"

void FreezeTestPicture(bool frozen)
{
    TestDevice().SetFrozen(frozen);
}

void UnplugTestPicture(bool unplugged)
{
    TestDevice().SetPlugged(!unplugged);
}

std::optional<quint32> ReadFrameNumber(const QImage& picture)
{
    if (picture.isNull())
        return std::nullopt;
    quint32 number = 0;
    const int y = picture.height() - 1 - picture.height() / 32;
    for (int cell = 0; cell < 32; ++cell) {
        const int x = (picture.width() * (2 * cell + 1)) / 64;
        const int grey = qGray(picture.pixel(x, y));
        if (grey > 80 && grey < 176)
            return std::nullopt;
        number = (number << 1) | (grey >= 176 ? 1u : 0u);
    }
    return number;
}
