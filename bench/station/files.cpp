#include "figures.h"
#include "scene.h"

#include "capture/frmCapture.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "session/VisitContext.h"
#include "support/StationInABox.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {

constexpr int Imports = 10;
constexpr int Rounds = 3;
constexpr int PicturesOfVisit = 50;

frmCapture& OpenScreen()
{
    frmCapture& screen = Form<frmCapture>();
    screen.Show();
    Guarded([&] { screen.ShowStored(); });
    return screen;
}

} // namespace

/// From the chosen file to rows and thumbnail, held against decoding, encoding and storing the picture alone.
int BenchImport()
{
    StationInABox box(u"QMARIADB"_s);
    frmCapture& screen = OpenScreen();
    const QString source = NativePath(box.Root() + u"foreign"_s);
    WriteWholeFile(source, ScenePicture(1, {4000, 3000}));
    const QString beside = VisitContext.CaptureDir + u"위내시경\\beside"_s;
    QList<double> imports;
    QList<double> alone;
    for (int number = 0; number < Imports; ++number) {
        double start = NowMs();
        box.Desk().files = {source};
        screen.findChild<QToolButton*>(u"파일"_s)->click();
        imports << NowMs() - start;
        start = NowMs();
        QByteArray content;
        QBuffer buffer(&content);
        buffer.open(QIODevice::WriteOnly);
        QImage(source).save(&buffer, "JPEG", 90);
        WriteWholeFile(beside, content);
        alone << NowMs() - start;
        DeleteFile(beside);
    }
    if (box.Value(u"SELECT COUNT(*) AS v FROM cap"_s).toInt() != Imports)
        return 1;
    PrintRatio(u"import of a 12-megapixel JPEG (median)"_s, Median(imports), u"decoding, encoding and storing it"_s,
               Median(alone));
    return 0;
}

/// A visit of 50 1080p pictures into the Log folder, held against storing and deleting as many files alone.
int BenchDelete()
{
    StationInABox box(u"QMARIADB"_s);
    const QByteArray scene = ScenePicture(1, {1920, 1080});
    frmCapture& screen = OpenScreen();
    const QString beside = LogFolder(VisitContext.CaptureDir, VisitContext.Etc) + u"beside"_s;
    QList<double> deletions;
    QList<double> alone;
    for (int round = 0; round < Rounds; ++round) {
        for (int number = 1; number <= PicturesOfVisit; ++number) {
            box.AddPicture(VisitContext.Ymd, VisitContext.Etc, number, u"note"_s);
            WriteWholeFile(box.PicturePath(VisitContext.Ymd, VisitContext.Etc, number), scene);
        }
        Guarded([&] { screen.ShowStored(); });
        double start = NowMs();
        box.Desk().answers = {true};
        screen.findChild<QToolButton*>(u"삭제"_s)->click();
        deletions << NowMs() - start;
        start = NowMs();
        for (int number = 1; number <= PicturesOfVisit; ++number) {
            WriteWholeFile(beside, scene);
            DeleteFile(beside);
        }
        alone << NowMs() - start;
    }
    if (box.Value(u"SELECT COUNT(*) AS v FROM cap"_s).toInt() != 0)
        return 1;
    PrintRatio(u"delete of a visit of 50 1080p pictures (median)"_s, Median(deletions),
               u"storing and deleting 50 files"_s, Median(alone), 1.2);
    return 0;
}
