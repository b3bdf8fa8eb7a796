#include "figures.h"

#include "capture/frmCapture.h"
#include "contracts/MSComm.h"
#include "contracts/VideoCap.h"
#include "contracts/VideoOptions.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "platform/gstreamer/register_video.h"
#include "platform/gstreamer/testpicture/TestPictureHooks.h"
#include "platform/gstreamer/VideoControl.h"
#include "support/PseudoTerminal.h"
#include "support/StationInABox.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {
constexpr int StallMs = 12000;
constexpr int AfterMs = 8000;
constexpr int FastPresses = 6;
constexpr int FastMs = 400;
constexpr int SlowPresses = 3;
constexpr int SlowMs = 3000;

/// What the operator sees and does while the database is away.
class Watch
{
public:
    Watch(StationInABox& box, frmCapture& screen, PseudoTerminal& foot) : m_box(box), m_screen(screen), m_foot(foot)
    {
        auto& control = dynamic_cast<VideoControl&>(screen.capCapture());
        QObject::connect(&control, &VideoControl::Painted, &control, [this](const QImage& picture, int) {
            const double now = NowMs();
            if (m_painted > 0)
                m_longestPaint = qMax(m_longestPaint, now - m_painted);
            m_painted = now;
            m_shownFrame = ReadFrameNumber(picture).value_or(m_shownFrame);
        });
    }

    void Press(bool byFoot)
    {
        m_pressed << m_shownFrame;
        m_pressedAt << NowMs();
        if (byFoot)
            m_foot.Send("1");
        else
            m_screen.findChild<QToolButton*>(u"캡쳐"_s)->click();
    }

    /// Six presses of the foot in quick succession, then slow ones by mouse.
    void Examine()
    {
        for (int press = 0; press < FastPresses + SlowPresses; ++press) {
            const bool byFoot = press < FastPresses;
            Press(byFoot);
            ServeFor(byFoot ? FastMs : SlowMs);
        }
    }

    void ServeFor(int ms)
    {
        const double begun = NowMs();
        const auto look = [&] {
            const qsizetype there = m_box.Names(u"2026"_s, u"위내시경"_s).filter(u".jpg"_s).size();
            while (m_fileAfter.size() < qMin(there, m_pressedAt.size()))
                m_fileAfter << NowMs() - m_pressedAt[m_fileAfter.size()];
            return NowMs() - begun >= ms;
        };
        ServeUntil(look, ms);
    }

    void Begin()
    {
        m_heart.Forget();
        m_longestPaint = 0;
    }

    /// False when a still is missing or holds another moment's frame.
    bool Tell(const QString& stall)
    {
        const QStringList names = m_box.Names(u"2026"_s, u"위내시경"_s).filter(u".jpg"_s);
        int farthest = 0;
        QStringList frames;
        for (qsizetype still = 0; still < names.size(); ++still) {
            const QString path = VisitContext.CaptureDir + u"위내시경\\"_s + names[still];
            const int frame = int(ReadFrameNumber(QImage(NativePath(path))).value_or(0));
            farthest = qMax(farthest, qAbs(frame - int(m_pressed.value(still))));
            frames << u"%1/%2"_s.arg(m_pressed.value(still)).arg(frame);
        }
        const QString rows = m_box.Value(u"SELECT COUNT(DISTINCT cap_no) AS v FROM cap"_s);
        const double slowest = m_fileAfter.isEmpty() ? 0 : *std::max_element(m_fileAfter.begin(), m_fileAfter.end());
        PrintFigure(u"%1: stills filed of pressed"_s.arg(stall), u"%1 of %2"_s.arg(names.size()).arg(m_pressed.size()),
                    u"%1 rows afterwards"_s.arg(rows));
        PrintFigure(u"  frames pressed/filed, farthest apart"_s, u"%1"_s.arg(farthest), frames.join(u' '));
        PrintLimited(u"  %1: file after the press, slowest"_s.arg(stall), slowest, u"ms"_s, 100);
        PrintFigure(u"  longest between painted frames"_s, u"%1 ms"_s.arg(m_longestPaint, 0, 'f', 0),
                    u"60 frames a second"_s);
        PrintFigure(u"  longest that an event waited"_s, u"%1 ms"_s.arg(m_heart.LongestMs(), 0, 'f', 0));
        return names.size() == m_pressed.size() && rows.toInt() == names.size() && farthest <= 2;
    }

private:
    StationInABox& m_box;
    frmCapture& m_screen;
    PseudoTerminal& m_foot;
    Heartbeat m_heart;
    quint32 m_shownFrame = 0;
    double m_painted = 0;
    double m_longestPaint = 0;
    QList<quint32> m_pressed;
    QList<double> m_pressedAt;
    QList<double> m_fileAfter;
};

bool BenchStall(const QString& stall, const std::function<void()>& begin, const std::function<void()>& end)
{
    StationInABox box(u"QMARIADB"_s);
    QTemporaryDir folder;
    const QString device = folder.filePath(u"switch"_s);
    PseudoTerminal foot(device);
    UseService<SerialPortOptions>().UseDevices({{u"1"_s, device}});
    RegisterVideo();
    UseService<VideoOptions>().OfferTestPicture(true);
    frmCapture& screen = Form<frmCapture>();
    screen.Show();
    Guarded([&] { screen.ShowStored(); });
    Watch watch(box, screen, foot);
    screen.findChild<QToolButton*>(u"연결"_s)->click();
    watch.ServeFor(2000);
    watch.Begin();
    begin();
    watch.Examine();
    watch.ServeFor(StallMs - FastPresses * FastMs - SlowPresses * SlowMs);
    end();
    watch.ServeFor(AfterMs);
    const bool isRight = watch.Tell(stall);
    screen.Unload();
    return isRight;
}
} // namespace

/// Presses while the database is stopped, locked or killed, and the live picture goes on.
int BenchStalls()
{
    PrivateMariaDb& server = StationInABox::Server();
    bool isRight = BenchStall(
        u"no stall"_s, [] {}, [] {});
    isRight &= BenchStall(
        u"server stopped for 12 s"_s, [&] { server.Freeze(); }, [&] { server.Thaw(); });
    QProcess locker;
    isRight &= BenchStall(
        u"tables locked for 12 s"_s,
        [&] {
            locker.start(u"mariadb"_s, {u"--no-defaults"_s, u"--user=root"_s, u"--socket="_s + server.Socket()});
            locker.write("SELECT table_schema INTO @db FROM information_schema.tables WHERE table_name = 'cap' "
                         "ORDER BY create_time DESC LIMIT 1;\n"
                         "EXECUTE IMMEDIATE CONCAT('LOCK TABLES ', @db, '.cap WRITE');\n");
            locker.waitForBytesWritten();
        },
        [&] {
            locker.closeWriteChannel();
            locker.waitForFinished();
        });
    isRight &= BenchStall(
        u"server killed for 12 s"_s, [&] { server.Kill(); }, [&] { server.Start(); });
    return isRight ? 0 : 1;
}
