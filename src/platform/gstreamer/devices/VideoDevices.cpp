#include "platform/gstreamer/devices/VideoDevices.h"

#include "contracts/PlatformError.h"
#include "frame/journal.h"
#include "platform/gstreamer/devices/V4l2Device.h"
#include "platform/gstreamer/testpicture/TestPictureState.h"

using namespace Qt::StringLiterals;

namespace {
// A new node gets its owner and access rights a moment after it appears.
constexpr int SettleMs = 150;

QList<VideoMode> TestPictureModes()
{
    return {{0, 1920, 1080, 60, 1}, {0, 1280, 720, 60, 1}, {0, 640, 480, 30, 1}};
}
} // namespace

VideoDevices::VideoDevices(std::unique_ptr<V4l2Calls> calls, const QString& watchedFolder) : m_calls(std::move(calls))
{
    m_settle.setSingleShot(true);
    m_settle.setInterval(SettleMs);
    connect(&m_settle, &QTimer::timeout, this, &VideoDevices::LookAgain);
    if (!watchedFolder.isEmpty() && m_watcher.addPath(watchedFolder))
        connect(&m_watcher, &QFileSystemWatcher::directoryChanged, &m_settle, qOverload<>(&QTimer::start));
    connect(&TestDevice(), &TestPictureState::PluggedChanged, this, &VideoDevices::LookAgain);
}

VideoDevices::~VideoDevices() = default;

void VideoDevices::OfferTestPicture(bool offered)
{
    m_isTestPictureOffered = offered;
    LookAgain();
}

const QList<VideoDevice>& VideoDevices::List()
{
    m_isListed = true;
    Refresh();
    return m_devices;
}

void VideoDevices::LookAgain()
{
    // Before the first listing nobody has seen the order yet, and no camera needs to be woken.
    if (m_isListed)
        Refresh();
}

void VideoDevices::Refresh()
{
    const bool camerasChanged = RefreshCameras();
    const bool testPictureChanged = RefreshTestPicture();
    if (camerasChanged || testPictureChanged)
        Q_EMIT Changed();
}

bool VideoDevices::RefreshCameras()
{
    const QList<V4l2Node> nodes = m_calls->Nodes();
    if (nodes == m_nodes)
        return false;
    for (VideoDevice& device : m_devices) {
        const bool stands = std::any_of(nodes.begin(), nodes.end(), [&](const V4l2Node& node) {
            return node.path == device.node && m_nodes.contains(node);
        });
        if (!device.isTestPicture && !stands)
            device.isPresent = false;
    }
    // Only nodes that are new are opened: opening wakes a sleeping camera.
    for (const V4l2Node& node : nodes)
        if (!m_nodes.contains(node))
            Welcome(node.path);
    m_nodes = nodes;
    return true;
}

void VideoDevices::Welcome(const QString& node)
{
    try {
        const V4l2Device opened(*m_calls, node);
        if (!opened.CapturesVideo())
            return;
        VideoDevice* device = PlaceFor(opened.Card(), opened.Bus());
        if (device == nullptr) {
            const QString name = UniqueName(opened.Card());
            device = &m_devices.emplaceBack();
            device->name = name;
            device->card = opened.Card();
        }
        device->bus = opened.Bus();
        device->node = node;
        device->isPresent = true;
        device->modes = opened.Modes();
        device->otherFormats = opened.OtherFormats();
        device->inputs = opened.Inputs();
        if (device->inputs.isEmpty())
            device->inputs = {u"기본 입력"_s};
    } catch (const PlatformError& error) {
        // Such a node can't be told from one that is no camera; it is tried again when its rights change.
        journal::NoteFault(error.Text());
    }
}

VideoDevice* VideoDevices::PlaceFor(const QString& card, const QString& bus)
{
    VideoDevice* elsewhere = nullptr;
    for (VideoDevice& device : m_devices) {
        if (device.isTestPicture || device.isPresent || device.card != card)
            continue;
        if (device.bus == bus)
            return &device;
        if (elsewhere == nullptr)
            elsewhere = &device;
    }
    return elsewhere;
}

QString VideoDevices::UniqueName(const QString& card) const
{
    const auto isTaken = [this](const QString& name) {
        return std::any_of(m_devices.begin(), m_devices.end(),
                           [&](const VideoDevice& device) { return device.name == name; });
    };
    QString name = card;
    for (int number = 2; isTaken(name); ++number)
        name = u"%1 (%2)"_s.arg(card).arg(number);
    return name;
}

bool VideoDevices::RefreshTestPicture()
{
    const auto listed = std::find_if(m_devices.begin(), m_devices.end(),
                                     [](const VideoDevice& device) { return device.isTestPicture; });
    const bool isPresent = m_isTestPictureOffered && TestDevice().IsPlugged();
    if (listed == m_devices.end()) {
        if (!isPresent)
            return false;
        VideoDevice& device = m_devices.emplaceBack();
        device.name = u"시험 화면"_s;
        device.isTestPicture = true;
        device.isPresent = true;
        device.modes = TestPictureModes();
        device.inputs = {u"시험 입력"_s};
        return true;
    }
    return std::exchange(listed->isPresent, isPresent) != isPresent;
}
