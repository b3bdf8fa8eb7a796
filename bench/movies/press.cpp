#include "capture/frmCapture.h"
#include "contracts/MSComm.h"
#include "contracts/VideoCap.h"
#include "contracts/VideoOptions.h"
#include "frame/components.h"
#include "movies/works.h"
#include "platform/gstreamer/register_video.h"
#include "session/VisitContext.h"
#include "station/figures.h"
#include "support/PseudoTerminal.h"
#include "support/StationInABox.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <QToolButton>

#include <algorithm>
#include <atomic>
#include <sys/inotify.h>

using namespace Qt::StringLiterals;

namespace {
constexpr int Presses = 200;
constexpr int PressesPerSection = 25; ///< And as many clicks: the grid is then full.

/// Tells when a picture has got its own name in a folder, asked of the kernel on a thread of its own.
class NameWatch
{
public:
    explicit NameWatch(const QString& folder) : m_notices(inotify_init1(IN_CLOEXEC))
    {
        inotify_add_watch(m_notices, NativePath(folder).toLocal8Bit().constData(), IN_MOVED_TO | IN_CREATE);
        m_reader = std::thread([this] { Read(); });
    }
    ~NameWatch()
    {
        m_ends = true;
        m_reader.join();
        close(m_notices);
    }
    NameWatch(const NameWatch&) = delete;
    NameWatch& operator=(const NameWatch&) = delete;

    void Expect() { m_seenMs = 0; }
    double SeenMs() const { return m_seenMs; }

private:
    void Read()
    {
        alignas(inotify_event) char bytes[4096];
        pollfd state = {m_notices, POLLIN, 0};
        while (!m_ends) {
            if (poll(&state, 1, 50) <= 0)
                continue;
            const ssize_t size = read(m_notices, bytes, sizeof bytes);
            const double now = NowMs();
            for (ssize_t at = 0; at < size;) {
                const auto* event = reinterpret_cast<const inotify_event*>(bytes + at);
                if (QByteArray(event->name).endsWith(".jpg"))
                    m_seenMs = now;
                at += ssize_t(sizeof *event + event->len);
            }
        }
    }

    int m_notices;
    std::atomic<bool> m_ends = false;
    std::atomic<double> m_seenMs = 0;
    std::thread m_reader;
};

/// Serves events as they come, with no sleep between them. False when five seconds were not enough.
template <class Done>
bool ServeUntil(Done done)
{
    QTimer tick;
    tick.start(5);
    const double start = NowMs();
    while (!done()) {
        if (NowMs() - start > 5000)
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

double Percentile99(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values[(values.size() * 99 - 1) / 100];
}
} // namespace

int BenchPress()
{
    StationInABox box(u"QMARIADB"_s);
    RegisterVideo();
    UseService<VideoOptions>().OfferTestPicture(true);
    QStringList sections;
    for (int section = 1; section <= Presses / PressesPerSection; ++section)
        sections << u"검사%1"_s.arg(section);
    ClientSetup.EtcList = sections.join(u',');
    const QTemporaryDir folder;
    PseudoTerminal cable(folder.filePath(u"switch"_s));
    UseService<SerialPortOptions>().UseDevices({{u"1"_s, folder.filePath(u"switch"_s)}});
    frmCapture& screen = Form<frmCapture>();
    screen.Show();
    screen.findChild<QToolButton*>(u"연결"_s)->click();
    auto* capture = screen.findChild<QToolButton*>(u"캡쳐"_s);
    const auto* port = screen.findChild<MSComm*>(u"commCapture"_s);
    if (!ServeUntil([&] { return screen.capCapture().HoldFrame() != nullptr; })) {
        std::fputs("no live picture\n", stderr);
        return 1;
    }

    QList<double> presses;
    QList<double> clicks;
    int missing = 0;
    for (int section = 0; section < sections.size(); ++section) {
        screen.cmbEtc().setCurrentIndex(section);
        Q_EMIT screen.cmbEtc().activated(section);
        NameWatch watch(SectionFolder(VisitContext.CaptureDir, VisitContext.Etc));
        const auto take = [&](QList<double>& into, const auto& trigger) {
            watch.Expect();
            const double start = NowMs();
            trigger();
            if (ServeUntil([&watch] { return watch.SeenMs() > 0; }))
                into << watch.SeenMs() - start;
            else
                ++missing;
            ServeUntil([port] { return port->PortOpen(); });
            const double settled = NowMs() + 20;
            ServeUntil([settled] { return NowMs() > settled; });
        };
        for (int press = 0; press < PressesPerSection; ++press) {
            take(presses, [&cable] { cable.Send("1"); });
            take(clicks, [capture] { capture->click(); });
        }
    }
    if (presses.isEmpty() || clicks.isEmpty())
        return 1;
    PrintFigure(
        u"foot on the switch to file, 1080p, median"_s, u"%1 ms"_s.arg(Median(presses), 0, 'f', 1),
        u"%1 times a click's %2 ms"_s.arg(Median(presses) / Median(clicks), 0, 'f', 2).arg(Median(clicks), 0, 'f', 1));
    PrintFigure(u"  99th percentile"_s, u"%1 ms"_s.arg(Percentile99(presses), 0, 'f', 1),
                u"%1 times a click's %2 ms"_s.arg(Percentile99(presses) / Percentile99(clicks), 0, 'f', 2)
                    .arg(Percentile99(clicks), 0, 'f', 1));
    PrintFigure(u"  %1 presses over %2 sections, missing"_s.arg(Presses).arg(sections.size()), u"%1"_s.arg(missing),
                u"none"_s);
    return missing == 0 ? 0 : 1;
}
