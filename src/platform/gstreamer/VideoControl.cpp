#include "platform/gstreamer/VideoControl.h"

#include "contracts/PlatformError.h"
#include "frame/guard.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "platform/gstreamer/devices/DriverDialog.h"
#include "platform/gstreamer/devices/V4l2Device.h"
#include "platform/gstreamer/devices/VideoDevices.h"
#include "platform/gstreamer/stills/GstStillFrame.h"
#include "platform/gstreamer/VideoControl_live.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QPainter>
#include <QPointer>

#include <mutex>

using namespace Qt::StringLiterals;

namespace {
/// A device that has given no frame in another format by then gives none in it. Shorter than the time after which its
/// signal counts as lost.
constexpr int FormatPatienceMs = 3500;

/// The live picture is a picture to a screen reader.
class LivePictureAccess final : public QAccessibleWidget
{
public:
    explicit LivePictureAccess(QWidget* control) : QAccessibleWidget(control, QAccessible::Graphic) {}
};

QAccessibleInterface* NewAccess(const QString&, QObject* object)
{
    auto* control = qobject_cast<VideoControl*>(object);
    return control != nullptr ? new LivePictureAccess(control) : nullptr;
}
} // namespace

VideoControl::VideoControl(std::shared_ptr<VideoDevices> devices)
    : VideoCap(nullptr), m_devices(std::move(devices)), m_live(std::make_unique<Live>())
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    static std::once_flag once;
    std::call_once(once, [] { QAccessible::installFactory(NewAccess); });
    setAccessibleName(u"실시간 영상"_s);
    DescribeState();
    connect(&m_live->session, &LiveSession::FrameReady, this, &VideoControl::AnswerFrames);
    connect(&m_live->session, &LiveSession::StateChanged, this, &VideoControl::AnswerState);
    m_live->formatPatience.setSingleShot(true);
    connect(&m_live->formatPatience, &QTimer::timeout, this, [this] {
        Guarded([this] {
            if (m_live->session.Present() != LiveSession::State::Idle && m_live->session.FrameCount() == 0)
                GoBackToGoodFormat();
        });
    });
    connect(m_devices.get(), &VideoDevices::Changed, this, &VideoControl::AnswerDevices);
}

VideoControl::~VideoControl()
{
    EndMovie();
    m_live->session.disconnect(this);
}

VideoNames VideoControl::Devices() const
{
    VideoNames names;
    for (const VideoDevice& device : m_devices->List())
        names.names.append(device.name);
    return names;
}

const VideoDevice* VideoControl::ChosenDevice() const
{
    const QList<VideoDevice>& devices = m_devices->List();
    return m_device >= 0 && m_device < devices.size() ? &devices.at(m_device) : nullptr;
}

VideoNames VideoControl::VideoFormats() const
{
    VideoNames names;
    if (const VideoDevice* device = ChosenDevice())
        for (const VideoMode& mode : device->modes)
            names.names.append(mode.Name());
    return names;
}

VideoNames VideoControl::VideoInputs() const
{
    const VideoDevice* device = ChosenDevice();
    return device != nullptr ? VideoNames{device->inputs} : VideoNames{};
}

void VideoControl::Start()
{
    // A movie begins, and changes its file, on the running stream.
    if (!m_movie.captureMode || !RunsAsSet()) {
        if (!m_movie.captureMode)
            EndMovie();
        StartSession();
    }
    if (m_movie.captureMode)
        Record();
}

bool VideoControl::RunsAsSet() const
{
    return m_live->session.Present() != LiveSession::State::Idle && m_live->runningDevice == m_device &&
           m_live->runningFormat == m_format && m_live->runningInput == m_input;
}

void VideoControl::StartSession()
{
    m_live->formatPatience.stop();
    try {
        BeginSession();
    } catch (const PlatformError&) {
        if (!GoBackToGoodFormat())
            throw;
        return;
    }
    if (m_live->goodDevice == m_device && m_live->goodFormat != m_format)
        m_live->formatPatience.start(FormatPatienceMs);
}

bool VideoControl::GoBackToGoodFormat()
{
    const int refused = m_live->runningFormat;
    const int kept = m_live->goodFormat;
    if (m_live->runningDevice != m_live->goodDevice || refused == kept)
        return false;
    m_format = kept;
    BeginSession();
    QMetaObject::invokeMethod(
        this, [this, refused, kept] { Q_EMIT OnFormatRefused(refused, kept); }, Qt::QueuedConnection);
    return true;
}

void VideoControl::BeginSession()
{
    m_live->session.Stop();
    const auto require = [](bool condition, const QString& fault) {
        if (!condition)
            throw PlatformError(fault);
    };
    const VideoDevice* device = ChosenDevice();
    require(device != nullptr, u"설정된 캡쳐장치(%1)가 목록에 없습니다.!! 장치설정을 확인하세요.!!"_s.arg(m_device));
    require(!device->modes.isEmpty(),
            u"캡쳐장치(%1)의 영상형식(%2)은 쓸 수 없습니다.!! 다른 장치를 선택하세요.!!"_s.arg(
                device->name, device->otherFormats.join(u", "_s)));
    require(m_format >= 0 && m_format < device->modes.size(),
            u"설정된 화면크기(%1)가 캡쳐장치에 없습니다.!! 장치설정을 확인하세요.!!"_s.arg(m_format));
    require(m_input >= 0 && m_input < device->inputs.size(),
            u"설정된 캡쳐소스(%1)가 캡쳐장치에 없습니다.!! 장치설정을 확인하세요.!!"_s.arg(m_input));

    // The settings of this start, whatever is set for the next one while the device is opened again.
    m_live->runningDevice = m_device;
    m_live->runningFormat = m_format;
    m_live->runningInput = m_input;
    m_live->toldFrames = 0;
    const VideoMode mode = m_live->choice.Applied(device->name, device->modes.at(m_format));
    const quint64 standard = m_live->choice.Standard(device->name);
    m_live->session.Start(
        [devices = m_devices, position = m_device, input = m_input, mode, standard, deinterlaces = m_deinterlaces] {
            const VideoDevice& present = devices->List().at(position);
            if (!present.isPresent)
                throw PlatformError(u"캡쳐장치(%1)가 연결되어 있지 않습니다.!!"_s.arg(present.name));
            if (!present.isTestPicture) {
                V4l2Device opened(devices->Calls(), present.node);
                opened.SelectInput(input);
                if (standard != 0)
                    opened.SelectStandard(standard);
            }
            return LiveSource{present.isTestPicture, present.node, mode, {}, deinterlaces};
        });
}

void VideoControl::Stop()
{
    EndMovie();
    m_live->formatPatience.stop();
    m_live->session.Stop();
}

std::shared_ptr<const StillFrame> VideoControl::HoldFrame()
{
    return m_live->session.Hold();
}

std::shared_ptr<const AwaitedFrame> VideoControl::AwaitFrame()
{
    return m_live->session.Await();
}

void VideoControl::setMomentsBefore(int seconds)
{
    m_live->session.Memory().SetSeconds(seconds);
}

std::shared_ptr<const FrameMoments> VideoControl::HoldMoments(const StillFrame& press)
{
    const auto* frame = dynamic_cast<const GstStillFrame*>(&press);
    return m_live->session.Memory().Hold(frame != nullptr ? frame->Time() : GST_CLOCK_TIME_NONE);
}

void VideoControl::Reopen()
{
    m_live->session.Lose();
    m_live->session.RetryNow();
}

void VideoControl::SnapShotJPEG(const QString& path, int quality)
{
    const std::shared_ptr<const StillFrame> frame = HoldFrame();
    if (!frame)
        throw PlatformError(u"캡쳐할 영상이 없습니다.!!"_s);
    WriteWholeFile(path, frame->EncodeJPEG(quality));
}

void VideoControl::ShowDriverDialog1(int ownerHandle)
{
    if (const VideoDevice* device = ChosenDevice())
        ShowStreamDialog(FindOwner(ownerHandle, this), *device, device->modes.value(m_format), m_live->choice,
                         m_deinterlaces, m_devices);
    else
        throw PlatformError(u"캡쳐장치를 찾을수 없습니다.!!"_s);
}

void VideoControl::ShowDriverDialog2(int ownerHandle)
{
    if (const VideoDevice* device = ChosenDevice())
        ShowPictureDialog(FindOwner(ownerHandle, this), *device, m_devices);
    else
        throw PlatformError(u"캡쳐장치를 찾을수 없습니다.!!"_s);
}

void VideoControl::AnswerFrames()
{
    const std::shared_ptr<FrameExchange> exchange = m_live->session.Frames();
    if (exchange && exchange->HasPicture())
        update();
    // A handler that serves events may be held up by one for as long as a question stands open, and a movie goes on
    // under it: one further handler runs inside it, but handlers never pile up on each other.
    constexpr int DeepestTelling = 2;
    const int frames = FrameCount();
    if (m_live->telling == DeepestTelling || frames == m_live->toldFrames ||
        m_live->session.Present() == LiveSession::State::Idle)
        return;
    ++m_live->telling;
    m_live->toldFrames = frames;
    const QPointer<VideoControl> self(this);
    Q_EMIT OnFrame(frames, m_live->session.FrameTimeMs());
    if (!self)
        return;
    --m_live->telling;
    if (FrameCount() != m_live->toldFrames)
        QMetaObject::invokeMethod(this, &VideoControl::AnswerFrames, Qt::QueuedConnection);
}

void VideoControl::AnswerState()
{
    const LiveSession::State before = std::exchange(m_live->shownState, m_live->session.Present());
    update();
    if (m_live->shownState == LiveSession::State::Live) {
        m_live->goodDevice = m_live->runningDevice;
        m_live->goodFormat = m_live->runningFormat;
    }
    const bool isLost = m_live->shownState == LiveSession::State::Lost;
    const bool isBack = before == LiveSession::State::Lost && m_live->shownState == LiveSession::State::Live;
    if (isLost && before != LiveSession::State::Lost)
        journal::Note(Journal::Warning, u"영상 신호가 끊김"_s);
    if (isBack)
        journal::Note(Journal::Information, u"영상 신호가 돌아옴"_s);
    DescribeState();
    if (isLost || isBack)
        Q_EMIT OnDeviceChange();
}

void VideoControl::DescribeState()
{
    QString state;
    switch (m_live->session.Present()) {
    case LiveSession::State::Idle:
        state = u"대기 중"_s;
        break;
    case LiveSession::State::Starting:
        state = u"연결 중"_s;
        break;
    case LiveSession::State::Live:
        state = m_live->recorder ? u"녹화 중"_s : u"연결됨"_s;
        break;
    case LiveSession::State::Lost:
        state = m_live->recorder ? u"신호 없음, 녹화 중"_s : u"신호 없음"_s;
        break;
    }
    setAccessibleDescription(state);
}

void VideoControl::AnswerDevices()
{
    const QList<VideoDevice>& devices = m_devices->List();
    if (m_live->runningDevice < 0 || m_live->runningDevice >= devices.size())
        return;
    if (devices.at(m_live->runningDevice).isPresent)
        m_live->session.RetryNow();
    else
        m_live->session.Lose();
}

void VideoControl::UpdateArea()
{
    m_live->session.SetArea(isVisible() ? (QSizeF(PicturePlace().size()) * devicePixelRatioF()).toSize() : QSize());
}

void VideoControl::setPictureMargins(const QMargins& margins)
{
    if (margins == std::exchange(m_margins, margins))
        return;
    UpdateArea();
    update();
}

QSize VideoControl::PictureShape() const
{
    return m_live->view.Image().size();
}

void VideoControl::paintEvent(QPaintEvent*)
{
    UpdateArea(); // The widget may have come to a screen of another density.
    QPainter painter(this);
    for (const QRect& beside : QRegion(rect()).subtracted(PicturePlace()))
        painter.fillRect(beside, Qt::black);
    const int frame = m_live->view.Paint(painter, PicturePlace(), m_live->session);
    PaintMovieMark(painter);
    painter.end();
    // Behind the screen's first painting, which its loading would slow down.
    if (!std::exchange(m_live->isPrepared, true))
        QTimer::singleShot(0, this, [this] { m_live->preparation.Post(&PrepareMedia); });
    const std::shared_ptr<FrameExchange> frames = m_live->session.Frames();
    if (frames && frames->HasPicture())
        update();
    if (frame > 0)
        Q_EMIT Painted(m_live->view.Image(), frame);
}

void VideoControl::resizeEvent(QResizeEvent*)
{
    UpdateArea();
}

void VideoControl::showEvent(QShowEvent*)
{
    UpdateArea();
}

void VideoControl::hideEvent(QHideEvent*)
{
    m_live->view.Clear();
    UpdateArea();
}
