#include "platform/gstreamer/devices/V4l2Device.h"

#include "contracts/PlatformError.h"

#include <QSize>

#include <linux/videodev2.h>

#include <algorithm>
#include <array>
#include <cstring>

using namespace Qt::StringLiterals;

namespace {
// Sizes and rates that are offered when a driver names a range instead of a list.
constexpr std::array<QSize, 9> CommonSizes = {QSize(640, 480),   QSize(720, 480),   QSize(720, 576),
                                              QSize(800, 600),   QSize(1024, 768),  QSize(1280, 720),
                                              QSize(1280, 1024), QSize(1920, 1080), QSize(3840, 2160)};
constexpr std::array<int, 5> CommonRates = {60, 50, 30, 25, 15};

// Below this rate a moving picture is too jerky to examine by.
constexpr double SmoothFramesPerSecond = 25;

template <std::size_t Size>
QString DriverText(const __u8 (&text)[Size])
{
    const char* bytes = reinterpret_cast<const char*>(text);
    return QString::fromUtf8(bytes, qsizetype(strnlen(bytes, Size))).trimmed();
}

bool IsOnGrid(int value, __u32 minimum, __u32 maximum, __u32 step)
{
    return value >= int(minimum) && value <= int(maximum) && (step <= 1 || (value - int(minimum)) % int(step) == 0);
}

bool SuitsBetter(const VideoMode& a, const VideoMode& b)
{
    const auto rank = [](const VideoMode& mode) {
        const bool smooth = mode.rateNumerator == 0 || mode.FramesPerSecond() >= SmoothFramesPerSecond;
        const bool raw = CapsFormat(mode.fourcc) != u"image/jpeg"_s;
        return std::tuple(smooth, mode.width * mode.height, mode.FramesPerSecond(), raw);
    };
    return rank(a) > rank(b);
}

QString RefusalText(int error)
{
    switch (error) {
    case EBUSY:
        return u"다른 프로그램이 사용하고 있습니다"_s;
    case EACCES:
    case EPERM:
        return u"사용 권한이 없습니다"_s;
    case ENOENT:
    case ENODEV:
    case ENXIO:
        return u"연결되어 있지 않습니다"_s;
    default:
        return QString::fromLocal8Bit(std::strerror(error));
    }
}
} // namespace

V4l2Device::V4l2Device(V4l2Calls& calls, const QString& path) : m_calls(calls), m_descriptor(calls.Open(path))
{
    if (m_descriptor < 0)
        throw PlatformError(u"캡쳐장치를 열수 없습니다.!! (%1: %2)"_s.arg(path, RefusalText(-m_descriptor)));
    v4l2_capability capability = {};
    if (Request(VIDIOC_QUERYCAP, &capability) != 0)
        return;
    const __u32 abilities =
        (capability.capabilities & V4L2_CAP_DEVICE_CAPS) != 0 ? capability.device_caps : capability.capabilities;
    const bool isSinglePlanar = (abilities & V4L2_CAP_VIDEO_CAPTURE) != 0;
    m_isMultiPlanar = !isSinglePlanar && (abilities & V4L2_CAP_VIDEO_CAPTURE_MPLANE) != 0;
    m_capturesVideo = (isSinglePlanar || m_isMultiPlanar) && (abilities & V4L2_CAP_STREAMING) != 0;
    m_card = DriverText(capability.card);
    m_bus = DriverText(capability.bus_info);
}

V4l2Device::~V4l2Device()
{
    if (m_descriptor >= 0)
        m_calls.Close(m_descriptor);
}

int V4l2Device::Request(unsigned long request, void* argument) const
{
    return m_calls.Request(m_descriptor, request, argument);
}

void V4l2Device::ForEachFormat(quint32 bufferType, const std::function<void(quint32)>& call) const
{
    for (__u32 index = 0;; ++index) {
        v4l2_fmtdesc format = {};
        format.index = index;
        format.type = bufferType;
        if (Request(VIDIOC_ENUM_FMT, &format) != 0)
            break;
        // A format that the kernel library only emulates would be decoded twice.
        if ((format.flags & V4L2_FMT_FLAG_EMULATED) == 0)
            call(format.pixelformat);
    }
}

QStringList V4l2Device::OtherFormats() const
{
    QStringList names;
    ForEachFormat(V4L2_BUF_TYPE_VIDEO_CAPTURE, [&](quint32 fourcc) {
        if (CapsFormat(fourcc).isEmpty())
            names << FourccText(fourcc);
    });
    if (m_isMultiPlanar)
        ForEachFormat(V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE,
                      [&](quint32 fourcc) { names << FourccText(fourcc) + u" multi-planar"_s; });
    return names;
}

QList<VideoMode> V4l2Device::Modes() const
{
    QList<VideoMode> modes;
    ForEachFormat(V4L2_BUF_TYPE_VIDEO_CAPTURE, [&](quint32 fourcc) {
        if (!CapsFormat(fourcc).isEmpty())
            AppendSizes(fourcc, modes);
    });
    std::stable_sort(modes.begin(), modes.end(), SuitsBetter);
    modes.erase(std::unique(modes.begin(), modes.end()), modes.end());
    return modes;
}

void V4l2Device::AppendSizes(quint32 fourcc, QList<VideoMode>& modes) const
{
    bool listed = false;
    for (__u32 index = 0;; ++index) {
        v4l2_frmsizeenum size = {};
        size.index = index;
        size.pixel_format = fourcc;
        if (Request(VIDIOC_ENUM_FRAMESIZES, &size) != 0)
            break;
        listed = true;
        if (size.type == V4L2_FRMSIZE_TYPE_DISCRETE) {
            AppendRates({fourcc, int(size.discrete.width), int(size.discrete.height)}, modes);
            continue;
        }
        const v4l2_frmsize_stepwise& range = size.stepwise;
        for (const QSize common : CommonSizes)
            if (IsOnGrid(common.width(), range.min_width, range.max_width, range.step_width) &&
                IsOnGrid(common.height(), range.min_height, range.max_height, range.step_height))
                AppendRates({fourcc, common.width(), common.height()}, modes);
        break;
    }
    if (listed)
        return;
    // Older grabbers list no sizes: the one that is set now is known to work.
    v4l2_format present = {};
    present.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    if (Request(VIDIOC_G_FMT, &present) == 0)
        AppendRates({fourcc, int(present.fmt.pix.width), int(present.fmt.pix.height)}, modes);
}

void V4l2Device::AppendRates(VideoMode mode, QList<VideoMode>& modes) const
{
    bool listed = false;
    for (__u32 index = 0;; ++index) {
        v4l2_frmivalenum interval = {};
        interval.index = index;
        interval.pixel_format = mode.fourcc;
        interval.width = __u32(mode.width);
        interval.height = __u32(mode.height);
        if (Request(VIDIOC_ENUM_FRAMEINTERVALS, &interval) != 0)
            break;
        listed = true;
        if (interval.type == V4L2_FRMIVAL_TYPE_DISCRETE) {
            if (interval.discrete.numerator == 0)
                continue;
            mode.rateNumerator = int(interval.discrete.denominator);
            mode.rateDenominator = int(interval.discrete.numerator);
            modes.append(mode);
            continue;
        }
        const auto seconds = [](const v4l2_fract& fraction) {
            return double(fraction.numerator) / fraction.denominator;
        };
        for (const int rate : CommonRates) {
            if (1.0 / rate < seconds(interval.stepwise.min) - 1e-9 ||
                1.0 / rate > seconds(interval.stepwise.max) + 1e-9)
                continue;
            mode.rateNumerator = rate;
            mode.rateDenominator = 1;
            modes.append(mode);
        }
        break;
    }
    if (!listed)
        modes.append(mode);
}

QStringList V4l2Device::Inputs() const
{
    QStringList inputs;
    for (__u32 index = 0;; ++index) {
        v4l2_input input = {};
        input.index = index;
        if (Request(VIDIOC_ENUMINPUT, &input) != 0)
            break;
        inputs.append(DriverText(input.name));
    }
    return inputs;
}

void V4l2Device::SelectInput(int input)
{
    int present = -1;
    if (Request(VIDIOC_G_INPUT, &present) == 0 && present == input)
        return;
    int wanted = input;
    const int result = Request(VIDIOC_S_INPUT, &wanted);
    if (result == -ENOTTY && input == 0)
        return; // A device without a choice of inputs.
    if (result != 0)
        throw PlatformError(u"캡쳐소스를 바꿀수 없습니다.!! (%1: %2)"_s.arg(input).arg(RefusalText(-result)));
}

QList<VideoStandard> V4l2Device::Standards() const
{
    QList<VideoStandard> standards;
    for (__u32 index = 0;; ++index) {
        v4l2_standard standard = {};
        standard.index = index;
        if (Request(VIDIOC_ENUMSTD, &standard) != 0)
            break;
        standards.append({standard.id, DriverText(standard.name)});
    }
    return standards;
}

quint64 V4l2Device::Standard() const
{
    v4l2_std_id present = 0;
    return Request(VIDIOC_G_STD, &present) == 0 ? present : 0;
}

void V4l2Device::SelectStandard(quint64 standard)
{
    v4l2_std_id wanted = standard;
    if (standard == Standard())
        return;
    const int result = Request(VIDIOC_S_STD, &wanted);
    if (result != 0)
        throw PlatformError(u"영상방식을 바꿀수 없습니다.!! (%1)"_s.arg(RefusalText(-result)));
}

QList<PictureControl> V4l2Device::Controls() const
{
    QList<PictureControl> controls;
    v4l2_queryctrl query = {};
    query.id = V4L2_CTRL_FLAG_NEXT_CTRL;
    for (; Request(VIDIOC_QUERYCTRL, &query) == 0; query.id |= V4L2_CTRL_FLAG_NEXT_CTRL) {
        const bool isNumber = query.type == V4L2_CTRL_TYPE_INTEGER || query.type == V4L2_CTRL_TYPE_BOOLEAN;
        constexpr __u32 Untouchable = V4L2_CTRL_FLAG_DISABLED | V4L2_CTRL_FLAG_READ_ONLY | V4L2_CTRL_FLAG_WRITE_ONLY;
        v4l2_control value = {query.id, 0};
        if (!isNumber || (query.flags & Untouchable) != 0 || Request(VIDIOC_G_CTRL, &value) != 0)
            continue;
        controls.append({query.id, DriverText(query.name), query.minimum, query.maximum, std::max(query.step, 1),
                         value.value, query.default_value});
    }
    return controls;
}

bool V4l2Device::SetControl(quint32 id, int value)
{
    v4l2_control control = {id, value};
    return Request(VIDIOC_S_CTRL, &control) == 0;
}
