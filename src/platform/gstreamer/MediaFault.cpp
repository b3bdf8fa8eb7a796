#include "platform/gstreamer/MediaFault.h"

#include "platform/gstreamer/GstPointers.h"

using namespace Qt::StringLiterals;

QString FaultText(GstMessage* message)
{
    GError* rawError = nullptr;
    gchar* rawDetails = nullptr;
    gst_message_parse_error(message, &rawError, &rawDetails);
    const GstPointer<GError> error(rawError);
    const GstPointer<gchar> details(rawDetails);
    qWarning("Video device: %s (%s)", error->message, details ? details.get() : "");

    if (error->domain == GST_RESOURCE_ERROR) {
        switch (error->code) {
        case GST_RESOURCE_ERROR_NOT_FOUND:
        case GST_RESOURCE_ERROR_READ:
            return u"캡쳐장치가 연결되어 있지 않습니다.!!"_s;
        case GST_RESOURCE_ERROR_BUSY:
            return u"캡쳐장치를 다른 프로그램이 사용하고 있습니다.!!"_s;
        case GST_RESOURCE_ERROR_NOT_AUTHORIZED:
        case GST_RESOURCE_ERROR_OPEN_READ:
        case GST_RESOURCE_ERROR_OPEN_READ_WRITE:
            return u"캡쳐장치를 열수 없습니다.!! 사용 권한을 확인하세요.!!"_s;
        default:
            break;
        }
    }
    if (error->domain == GST_STREAM_ERROR || error->domain == GST_CORE_ERROR)
        return u"캡쳐장치가 설정된 화면크기의 영상을 보내지 않습니다.!!"_s;
    return u"캡쳐장치에 문제가 있습니다.!! (%1)"_s.arg(QString::fromUtf8(error->message));
}
