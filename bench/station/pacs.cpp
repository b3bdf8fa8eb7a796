#include "figures.h"

#include "contracts/files.h"
#include "frame/services.h"
#include "pacs/PacsSending.h"
#include "platform/dicom/register_dicom.h"
#include "scene.h"
#include "support/PacsServer.h"
#include "support/StationInABox.h"

using namespace Qt::StringLiterals;

namespace {

constexpr int Stills = 50;
constexpr int LimitMs = 300'000;

bool Ran(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, arguments);
    return process.waitForFinished(LimitMs) && process.exitCode() == 0;
}

/// dcmtk's programs one after the other on the same pictures; with `isTogether` one association for all. Gives
/// milliseconds, negative when one failed.
double ProgramsAlone(const QStringList& pictures, const PacsServer& server, bool isTogether)
{
    QTemporaryDir folder;
    const QStringList send{u"-xy"_s, u"-R"_s, u"127.0.0.1"_s, QString::number(server.Port())};
    QStringList objects;
    const double start = NowMs();
    for (const QString& picture : pictures) {
        objects << folder.filePath(u"%1.dcm"_s.arg(objects.size()));
        if (!Ran(u"img2dcm"_s, {u"--vl-photo"_s, picture, objects.last()}) ||
            (!isTogether && !Ran(u"storescu"_s, send + QStringList{objects.last()})))
            return -1;
    }
    if (isTogether && !Ran(u"storescu"_s, send + objects))
        return -1;
    return NowMs() - start;
}

} // namespace

/// A stored visit of 50 pictures of 1080p on its way to a server; held against dcmtk's programs alone.
int BenchPacs()
{
    StationInABox box;
    PacsServer server;
    server.Start();
    RegisterDicom();
    ClientSetup.Pacs.Host = u"127.0.0.1"_s;
    ClientSetup.Pacs.Port = server.Port();
    ClientSetup.Pacs.CalledAet = u"ANY-SCP"_s;
    ClientSetup.Pacs.CallingAet = u"BENCH"_s;
    const Visit visit = CurrentVisit();
    QList<int> numbers;
    QStringList pictures;
    for (int number = 1; number <= Stills; ++number) {
        WriteWholeFile(visit.PicturePath(number), ScenePicture(number, {1920, 1080}));
        numbers << number;
        pictures << NativePath(visit.PicturePath(number));
    }
    const double single = ProgramsAlone(pictures, server, false);
    const double together = ProgramsAlone(pictures, server, true);
    const auto sending = PacsSending::ForSetup(ClientSetup.Pacs, SaupTable, Launched());
    Heartbeat heart;
    const double start = NowMs();
    sending->VisitIsStored(visit, numbers, false);
    const bool isDone = ServeUntil([&] { return sending->Waiting() == 0; }, LimitMs);
    const double ours = NowMs() - start;
    if (!isDone || single < 0 || together < 0 || sending->Refused() > 0)
        return 1;
    PrintFigure(u"%1 stills of 1080p to a server"_s.arg(Stills), u"%1 ms"_s.arg(ours, 0, 'f', 0),
                u"%1 x img2dcm + storescu for each"_s.arg(ours / single, 0, 'f', 2));
    PrintFigure({}, {}, u"%1 x img2dcm for each, storescu for all"_s.arg(ours / together, 0, 'f', 2));
    PrintFigure(u"  longest that an event waited"_s, u"%1 ms"_s.arg(heart.LongestMs(), 0, 'f', 1));
    return 0;
}
