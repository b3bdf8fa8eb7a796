#include "figures.h"

#include "contracts/files.h"
#include "filing/PictureRecord.h"
#include "frame/services.h"
#include "pacs/PacsHandover.h"
#include "scene.h"
#include "support/PacsServer.h"
#include "support/SenderInABox.h"
#include "support/StationInABox.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int Stills = 500;
constexpr int EarlyStills = 50;
constexpr int LimitMs = 300'000;

bool Ran(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, arguments);
    return process.waitForFinished(LimitMs) && process.exitCode() == 0;
}

/// dcmtk's programs on the same pictures, with one association for all. Gives milliseconds, negative when one failed.
double ProgramsAlone(const QStringList& pictures, const PacsServer& server)
{
    QTemporaryDir folder;
    QStringList objects;
    const double start = NowMs();
    for (const QString& picture : pictures) {
        objects << folder.filePath(u"%1.dcm"_s.arg(objects.size()));
        if (!Ran(u"img2dcm"_s, {u"--vl-photo"_s, picture, objects.last()}))
            return -1;
    }
    if (!Ran(u"storescu"_s, QStringList{u"-xy"_s, u"-R"_s, u"127.0.0.1"_s, QString::number(server.Port())} + objects))
        return -1;
    return NowMs() - start;
}

} // namespace

/// A day's pictures of 1080p that an outage has held up, on their way by the sender; held against dcmtk's programs
/// alone.
int BenchPacs()
{
    StationInABox box;
    PacsServer server;
    SenderInABox sender(box, server.Port());
    const Visit visit = CurrentVisit();
    QStringList pictures;
    const auto pacs = PacsHandover::ForSetup(ClientSetup, SaupTable, Launched());
    for (int number = 1; number <= Stills; ++number) {
        WriteWholeFile(visit.PicturePath(number), ScenePicture(number, {1920, 1080}));
        pictures << NativePath(visit.PicturePath(number));
        pacs->Outlet()->HandOver(PictureRecord{QString::number(number), visit, PictureState::OnShare, number});
    }
    pacs->VisitIsStored(visit);
    SenderQueue queue;
    if (!ServeUntil([&] { return queue.Look().lines == 0; }, LimitMs))
        return 1;
    sender.Kill();
    server.Start();
    Heartbeat heart;
    const double start = NowMs();
    sender.Start();
    double first = 0;
    double last = 0;
    const auto isDone = [&] {
        last = std::max(last, sender.PeakMb());
        if (first == 0 && queue.Look().waiting <= Stills - EarlyStills)
            first = last;
        return queue.Look().waiting == 0;
    };
    const bool hasCome = ServeUntil(isDone, LimitMs);
    const double ours = NowMs() - start;
    const double longest = heart.LongestMs();
    const double together = ProgramsAlone(pictures, server);
    if (!hasCome || together < 0 || queue.Look().setAside > 0)
        return 1;
    PrintRatio(u"%1 stills of 1080p to a server after an outage"_s.arg(Stills), ours,
               u"img2dcm for each, storescu for all"_s, together, 1.0);
    PrintFigure(u"  longest that an event of the station waited"_s, u"%1 ms"_s.arg(longest, 0, 'f', 1));
    PrintFigure(u"  sender and its DICOM program, most memory"_s, u"%1 MB"_s.arg(last, 0, 'f', 1),
                u"%1 MB more than after %2 stills"_s.arg(last - first, 0, 'f', 1).arg(EarlyStills));
    return 0;
}
