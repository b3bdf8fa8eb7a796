#include "platform/gstreamer/stills/GstStillFrame.h"

#include "contracts/PlatformError.h"
#include "platform/gstreamer/stills/JpegEncoder.h"

using namespace Qt::StringLiterals;

QByteArray GstStillFrame::EncodeJPEG(int quality) const
{
    GstVideoInfo info;
    if (!VideoInfoOf(m_sample.get(), info))
        throw PlatformError(u"캡쳐 영상의 형식을 알수 없습니다.!!"_s);
    MappedFrame frame(info, gst_sample_get_buffer(m_sample.get()), GST_MAP_READ);
    if (!frame.IsMapped())
        throw PlatformError(u"캡쳐 영상을 읽을수 없습니다.!!"_s);
    return EncodeJpeg(YuvPlanes(frame.Frame()), quality);
}
