#include "figures.h"
#include "scene.h"

#include "contracts/ImagXpress.h"
#include "contracts/printing.h"
#include "frame/components.h"
#include "frame/services.h"
#include "screenparts/PrintedPage.h"
#include "session/VisitContext.h"
#include "support/StationInABox.h"
#include "viewing/CaptureSheet.h"

#include <QBuffer>
#include <QDir>
#include <QImage>

using namespace Qt::StringLiterals;

namespace {
constexpr int PicturesOnDisk = 48;
constexpr int LargePictures = 12;
constexpr int Rounds = 3;
} // namespace

/// Two pages of pictures as a camera of 48 megapixels takes them.
int BenchSheetMemory()
{
    StationInABox box;
    const QTemporaryDir printed;
    UseService<PrinterOptions>().UseFolder(printed.path());
    const auto carrier = CreateObject<ImagXpress>(u"IMAGXPR6LibCtl.ImagXpress"_s);
    CaptureSheetRecord sheet;
    ClearCaptureSheetRecord(sheet);
    {
        const QByteArray scene = ScenePicture(1, {8000, 6000});
        for (int number = 1; number <= LargePictures; ++number) {
            sheet.Pictures << box.PicturePath(VisitContext.Ymd, VisitContext.Etc, number);
            WriteWholeFile(sheet.Pictures.last(), scene);
        }
    }
    const double before = ResidentMb();
    ForgetPeak();
    const double start = NowMs();
    PrintCaptureSheet(PagesOf(sheet, *carrier));
    PrintFigure(u"sheet of 12 pictures of 48 megapixels"_s, u"%1 ms"_s.arg(NowMs() - start, 0, 'f', 0));
    PrintLimited(u"  memory of that sheet"_s, PeakMb() - before, u"MB"_s, 250);
    return 0;
}

/// Eight pages of six 1080p pictures each to PDF files, held against decoding and encoding the same pictures alone.
int BenchSheet()
{
    StationInABox box;
    const QTemporaryDir printed;
    UseService<PrinterOptions>().UseFolder(printed.path());
    const auto carrier = CreateObject<ImagXpress>(u"IMAGXPR6LibCtl.ImagXpress"_s);
    QList<QByteArray> scenes;
    for (int seed = 0; seed < 4; ++seed)
        scenes << ScenePicture(seed, {1920, 1080});
    CaptureSheetRecord sheet;
    ClearCaptureSheetRecord(sheet);
    sheet.Of = CurrentVisit();
    sheet.PrintYmd = VisitContext.Ymd;
    for (int number = 1; number <= PicturesOnDisk; ++number) {
        const QString path = box.PicturePath(VisitContext.Ymd, VisitContext.Etc, number);
        WriteWholeFile(path, scenes[number % scenes.size()]);
        sheet.Pictures << path;
    }

    QList<double> sheets;
    QList<double> alone;
    for (int round = 0; round < Rounds; ++round) {
        double start = NowMs();
        PrintCaptureSheet(PagesOf(sheet, *carrier));
        sheets << NowMs() - start;
        start = NowMs();
        for (const QString& path : sheet.Pictures) {
            const QImage picture(NativePath(path));
            QBuffer buffer;
            buffer.open(QIODevice::WriteOnly);
            if (!picture.save(&buffer, "JPEG", 90))
                return 1;
        }
        alone << NowMs() - start;
    }
    if (QDir(printed.path()).entryList({u"*.pdf"_s}).size() != Rounds * PicturesOnDisk / 6)
        return 1;
    PrintRatio(u"sheet of 48 1080p pictures to PDF (median)"_s, Median(sheets), u"decoding and encoding them"_s,
               Median(alone), 0.75);
    return 0;
}
