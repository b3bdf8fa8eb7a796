#include "contracts/cd.h"
#include "frame/components.h"
#include "frame/services.h"
#include "platform/disc/register_disc.h"
#include "platform/files/LocalFiles.h"
#include "station/figures.h"
#include "support/ScriptedDesktop.h"

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QProcess>
#include <QRandomGenerator>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int Megabyte = 1000 * 1000;
constexpr int BeatMs = 2;

struct Burn
{
    double writeMs = 0;
    double checkMs = 0;
};

bool g_failed = false;

QString Said()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->objectName() == u"burnWindow"_s)
            return widget->findChild<QLabel*>(u"lblStage"_s)->text();
    }
    return {};
}

void RemoveImages(const QString& folder)
{
    for (const QString& name : QDir(folder).entryList({u"*.iso"_s}, QDir::Files))
        QFile::remove(folder + name);
}

/// Hears how long the event loop is away at most.
class Beat
{
public:
    Beat()
    {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { Heard(); });
        m_timer.start(BeatMs);
    }
    void Heard()
    {
        const double now = NowMs();
        gapMs = qMax(gapMs, now - m_last);
        m_last = now;
    }

    double gapMs = 0;

private:
    QTimer m_timer;
    double m_last = NowMs();
};

/// The staging folder through the station's writer; `gapMs` takes the longest time without events served.
Burn ByTheStation(double& gapMs)
{
    const auto burner = CreateObject<XPBurn>(u"BaydenBurn.XPBurn"_s);
    Burn burn;
    const double start = NowMs();
    Beat beat;
    burner->Startburn();
    while (burner->isburning()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        if (burn.writeMs == 0 && Said().contains(u"확인하는"_s))
            burn.writeMs = NowMs() - start;
    }
    beat.Heard();
    gapMs = qMax(gapMs, beat.gapMs);
    burn.checkMs = NowMs() - start - burn.writeMs;
    g_failed = g_failed || !Said().contains(u"완료되었습니다."_s);
    return burn;
}

double TimedRun(const QStringList& arguments, double& gapMs)
{
    const double start = NowMs();
    Beat beat;
    QProcess process;
    // It looks for its own end as often as it reports.
    process.start(u"xorriso"_s, QStringList{u"-no_rc"_s, u"-charset"_s, u"UTF-8"_s, u"-md5"_s, u"on"_s, u"-pacifier"_s,
                                            u"interval=0.1"_s} +
                                    arguments);
    while (process.state() != QProcess::NotRunning)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    beat.Heard();
    gapMs = qMax(gapMs, beat.gapMs);
    g_failed = g_failed || process.exitCode() != 0;
    return NowMs() - start;
}

Burn ByTheProgramAlone(const QString& staging, const QString& images, double& gapMs)
{
    const QString image = u"stdio:"_s + images + u"alone.iso"_s;
    return {TimedRun({u"-joliet"_s, u"on"_s, u"-outdev"_s, image, u"-map"_s, staging, u"/"_s, u"-commit"_s}, gapMs),
            TimedRun({u"-indev"_s, image, u"-check_md5_r"_s, u"SORRY"_s, u"/"_s, u"--"_s}, gapMs)};
}

void Stage(const QString& staging, int files, int megabytesEach)
{
    QDir(staging).removeRecursively();
    CreateObject<XPBurn>(u"BaydenBurn.XPBurn"_s)->burnArea();
    QRandomGenerator random(3);
    QByteArray content(megabytesEach * Megabyte, Qt::Uninitialized);
    for (int number = 1; number <= files; ++number) {
        random.fillRange(reinterpret_cast<quint32*>(content.data()), content.size() / 4);
        WriteWholeFile(staging + u"0000123420261124%1.avi"_s.arg(number, 3, 10, QChar(u'0')), content);
    }
}

void Measure(const QString& staging, const QString& images, int files, int megabytesEach, int rounds)
{
    Stage(staging, files, megabytesEach);
    QList<double> writes;
    QList<double> checks;
    QList<double> writesAlone;
    QList<double> checksAlone;
    double gapMs = 0;
    double gapAloneMs = 0;
    // The first round warms the caches for both and doesn't count.
    for (int round = 0; round <= rounds; ++round) {
        // In turn the first, since what was deleted just before costs the next one time.
        Burn alone;
        Burn burn;
        for (const bool own : {round % 2 == 0, round % 2 != 0}) {
            if (own)
                burn = ByTheStation(gapMs);
            else
                alone = ByTheProgramAlone(staging, images, gapAloneMs);
            RemoveImages(images);
        }
        if (round == 0)
            continue;
        writes << burn.writeMs;
        checks << burn.checkMs;
        writesAlone << alone.writeMs;
        checksAlone << alone.checkMs;
    }
    const QString size = u"%1 MB"_s.arg(files * megabytesEach);
    // The fastest of each: what the disk does at times is neither's doing.
    const auto fastest = [](const QList<double>& times) { return *std::min_element(times.cbegin(), times.cend()); };
    const auto print = [&fastest](const QString& what, const QList<double>& own, const QList<double>& beside) {
        PrintRatio(what, fastest(own), u"xorriso alone"_s, fastest(beside), 1.1);
    };
    print(size + u" written to an image (fastest)"_s, writes, writesAlone);
    print(size + u" checked (fastest)"_s, checks, checksAlone);
    PrintLimited(u"  longest time without events served, disc"_s, gapMs, u"ms"_s, 50,
                 u"beside xorriso alone %1 ms"_s.arg(gapAloneMs, 0, 'f', 1));
}

} // namespace

int main(int argc, char* argv[])
{
    ChoosePlatform();
    QApplication application(argc, argv);
    const QTemporaryDir folder;
    qputenv("XDG_DATA_HOME", folder.path().toUtf8());
    const QString images = folder.path() + u"/images/"_s;
    QDir().mkpath(images);
    ScriptedDesktop::Install();
    RegisterFiles();
    RegisterDisc();
    UseService<BurnerOptions>().UseImage(images + u"cd.iso"_s);
    const QString staging = CreateObject<XPBurn>(u"BaydenBurn.XPBurn"_s)->burnArea();
    Measure(staging, images, 70, 1, 8);
    Measure(staging, images, 6, 100, 6);
    if (g_failed)
        std::fputs("a disc wasn't written or checked\n", stderr);
    return g_failed ? 1 : 0;
}
