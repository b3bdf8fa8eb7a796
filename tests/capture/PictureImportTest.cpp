#include "capture/frmCapture.h"
#include "contracts/fpSpread.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "screenparts/NoteBox.h"
#include "screenparts/picture_grid.h"
#include "support/PictureFiles.h"
#include "support/StationInABox.h"
#include "visit/VisitContext.h"

#include <QAbstractItemView>
#include <QDrag>
#include <QDropEvent>
#include <QMimeData>
#include <QTest>
#include <QToolButton>

#include <sys/resource.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {
const QString Stomach = u"위내시경"_s;
const QString Day = u"20261124"_s;
const QString Unreadable = u"읽을 수 없는 그림파일입니다.!!"_s;

QByteArray Patched(QByteArray content, const QByteArray& before, qsizetype offset, const QByteArray& bytes)
{
    const qsizetype at = content.indexOf(before);
    if (at < 0)
        qFatal("nothing to patch");
    return content.replace(at + offset, bytes.size(), bytes);
}
} // namespace

class PictureImportTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_box = std::make_unique<StationInABox>();
        m_screen = nullptr;
    }
    void cleanup() { m_box.reset(); }

    void EveryFormatBecomesAStill_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("output");
        QTest::addColumn<bool>("colours");
        const auto row = [](const char* name, const QString& command, const QString& output, bool colours = true) {
            QTest::newRow(name) << command << output << colours;
        };
        const auto convert = [&row](const char* name, const QString& options, const QString& format,
                                    bool colours = true) {
            const QString source = colours ? u"colours.png"_s : u"lines.png"_s;
            row(name, u"convert %1 %2 %3:out"_s.arg(source, options, format), u"out"_s, colours);
        };
        const auto ffmpeg = [&row](const char* name, const QString& options, const QString& file) {
            row(name, u"ffmpeg -loglevel error -y -i colours.png %1 -f image2 -update 1 %2"_s.arg(options, file), file);
        };
        convert("jpeg", u"-quality 92"_s, u"JPEG"_s);
        convert("png with alpha", u"-alpha set"_s, u"PNG32"_s);
        convert("bmp", {}, u"BMP"_s);
        convert("bmp, run lengths", u"-type Palette -compress RLE"_s, u"BMP"_s);
        convert("gif", {}, u"GIF"_s);
        convert("webp", {}, u"WEBP"_s);
        convert("pbm", {}, u"PBM"_s, false);
        convert("ppm", {}, u"PPM"_s);
        convert("tiff, the first of two pages", u"lines.png -compress LZW"_s, u"TIFF"_s);
        convert("tiff, facsimile", u"-monochrome -compress Group4"_s, u"TIFF"_s, false);
        convert("tiff, cmyk", u"-colorspace CMYK"_s, u"TIFF"_s);
        convert("pcx", u"-alpha off"_s, u"PCX"_s);
        convert("pcx, palette", u"-alpha off -type Palette"_s, u"PCX"_s);
        convert("pcx, one bit", u"-monochrome"_s, u"PCX"_s, false);
        convert("pcx with alpha", u"-alpha set"_s, u"PCX"_s);
        convert("dcx of two", u"lines.png -alpha off"_s, u"DCX"_s);
        convert("cals", u"-monochrome"_s, u"CALS"_s, false);
        convert("tga, from the top", u"-alpha off -orient TopLeft"_s, u"TGA"_s);
        convert("tga, from the bottom", u"-alpha off -orient BottomLeft -flip"_s, u"TGA"_s);
        convert("tga, palette", u"-alpha off -type Palette -orient TopLeft"_s, u"TGA"_s);
        convert("tga, greys", u"-type Grayscale -orient TopLeft"_s, u"TGA"_s, false);
        convert("tga with alpha", u"-alpha set -orient TopLeft"_s, u"TGA"_s);
        ffmpeg("tga, run lengths", u"-pix_fmt bgr24"_s, u"out.tga"_s);
        ffmpeg("tga, 16 bits", u"-pix_fmt rgb555le"_s, u"out16.tga"_s);
        ffmpeg("jpeg-ls", u"-c:v jpegls"_s, u"out.jls"_s);
        ffmpeg("lossless jpeg", u"-c:v ljpeg -pix_fmt bgr24"_s, u"out.ljp"_s);
        ffmpeg("lossless jpeg, luminance", u"-c:v ljpeg -strict -2 -pix_fmt yuvj444p"_s, u"luminance.ljp"_s);
        row("jpeg 2000", u"opj_compress -i colours.png -o out.jp2"_s, u"out.jp2"_s);
        row("jpeg 2000, bare and lossy", u"opj_compress -i colours.png -r 20 -I -o out.j2k"_s, u"out.j2k"_s);
        row("jbig2", {}, {}, false);
    }

    void EveryFormatBecomesAStill()
    {
        QFETCH(QString, command);
        QFETCH(QString, output);
        QFETCH(bool, colours);
        const QByteArray content = command.isEmpty()
                                       ? m_files.Jbig2(PictureFiles::Size.width(), PictureFiles::Size.height())
                                       : m_files.Made(command, output);
        Open();
        // The content decides, not the name.
        Import(m_files.Put(content, u"그림 한 장.dat"_s));
        QCOMPARE(m_box->Desk().shown, QStringList());
        const QString stored = m_box->PicturePath(Day, Stomach, 1);
        QCOMPARE(Files().ReadFile(stored).left(3), "\xFF\xD8\xFF"_ba);
        const QImage picture = LoadPicture(stored);
        QCOMPARE(picture.size(), PictureFiles::Size);
        const QColor corner = picture.pixelColor(40, 40);
        const QColor rest = picture.pixelColor(280, 40);
        const QColor below = picture.pixelColor(40, 200);
        if (colours) {
            QVERIFY2(corner.red() > 180 && corner.blue() < 70, qPrintable(corner.name()));
            QVERIFY2(rest.blue() > 160 && rest.red() < 80, qPrintable(rest.name()));
            QVERIFY2(below.blue() > 160 && below.red() < 80, qPrintable(below.name()));
        } else {
            QVERIFY2(corner.lightness() < 40, qPrintable(corner.name()));
            QVERIFY2(rest.lightness() > 215 && below.lightness() > 215, qPrintable(rest.name()));
        }
    }

    void WhatCannotBeReadIsRefused_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QStringList>("shown");
        const auto large = [](int width, int height, int most = 64) {
            return u"그림이 너무 큽니다.!! (%1 x %2, 한도 %3메가픽셀)"_s.arg(width).arg(height).arg(most);
        };
        const QByteArray jpeg = m_files.Made(u"convert colours.png JPEG:j"_s, u"j"_s);
        const QByteArray huge("\0\0\xFD\xE8\0\0\xFD\xE8", 8);
        const QByteArray png = m_files.Made(u"convert colours.png PNG24:p"_s, u"p"_s);
        const QByteArray jp2 = m_files.Made(u"opj_compress -i colours.png -o b.jp2"_s, u"b.jp2"_s);
        const QByteArray pcx = m_files.Made(u"convert colours.png -alpha off PCX:x"_s, u"x"_s);
        const QByteArray tiff = m_files.Made(u"convert colours.png -compress None -endian MSB TIFF:t"_s, u"t"_s);
        const QByteArray cals = m_files.Made(u"convert lines.png -monochrome CALS:c"_s, u"c"_s);
        const QByteArray jls = m_files.Made(u"ffmpeg -loglevel error -y -i colours.png b.jls"_s, u"b.jls"_s);
        QTest::newRow("empty") << QByteArray() << QStringList{Unreadable};
        QTest::newRow("text") << "캡쳐 화면"_ba.repeated(3000) << QStringList{Unreadable};
        QTest::newRow("zeros") << QByteArray(200000, '\0') << QStringList{Unreadable};
        QTest::newRow("png of 65000 x 65000") << QByteArray(png).replace(16, 8, huge) << QStringList{Unreadable};
        QTest::newRow("png, nothing in 14000 x 14000")
            << QByteArray(png).left(900).replace(16, 8, QByteArray("\0\0\x36\xB0\0\0\x36\xB0", 8))
            << QStringList{Unreadable};
        QTest::newRow("png of 14100 x 14100")
            << PictureFiles::Blank({14100, 14100}, "png") << QStringList{large(14100, 14100)};
        QTest::newRow("gif, nothing in 14000 x 14000")
            << QByteArray("GIF89a\xB0\x36\xB0\x36\x80\0\0\0\0\0\xFF\xFF\xFF,\0\0\0\0\xB0\x36\xB0\x36\0\2\2D\1\0;", 36)
            << QStringList{large(14000, 14000)};
        QTest::newRow("jpeg 2000 of 65000 x 65000")
            << Patched(jp2, "\xFF\x51"_ba, 6, huge) << QStringList{large(65000, 65000)};
        QTest::newRow("jpeg 2000 of 7900 x 7900, cut")
            << Patched(jp2, "\xFF\x51"_ba, 6, QByteArray("\0\0\x1E\xDC\0\0\x1E\xDC", 8)).left(400)
            << QStringList{Unreadable};
        QTest::newRow("jpeg 2000, cut") << jp2.left(100) << QStringList{Unreadable};
        QTest::newRow("pcx of 65535 x 65535")
            << QByteArray(pcx).replace(8, 4, "\xFE\xFF\xFE\xFF") << QStringList{large(65535, 65535)};
        QTest::newRow("tga of 65535 x 65535")
            << QByteArray("\0\0\x0A\0\0\0\0\0\0\0\0\0\xFF\xFF\xFF\xFF\x18\0", 18) + QByteArray(500, '\xFF')
            << QStringList{large(65535, 65535)};
        QTest::newRow("tiff of 65535 x 65535")
            << Patched(tiff, QByteArray("\1\0\0\3\0\0\0\1"), 8, "\xFF\xFF"_ba) << QStringList{Unreadable};
        QTest::newRow("cals of 900000 x 900000")
            << Patched(cals, "rpelcnt: "_ba, 9, "900000,900000"_ba) << QStringList{large(900000, 900000)};
        QTest::newRow("jbig2 of 60000 x 60000") << m_files.Jbig2(60000, 60000) << QStringList{large(60000, 60000)};
        QTest::newRow("jpeg-ls of 65535 x 65535")
            << Patched(jls, "\xFF\xF7"_ba, 5, "\xFF\xFF\xFF\xFF"_ba) << QStringList{large(65535, 65535)};
        QTest::newRow("jpeg of 20000 x 11000")
            << PictureFiles::Promising(jpeg, 20000, 11000) << QStringList{large(20000, 11000, 200)};
        QTest::newRow("jpeg, cut") << jpeg.left(jpeg.size() * 3 / 4) << QStringList{u"잘린 그림파일입니다.!!"_s};
        QTest::newRow("movie") << QByteArray("RIFF\0\0\0\0AVI LIST", 16) + QByteArray(100000, '\7')
                               << QStringList{Unreadable};
        QTest::newRow("folder") << "folder"_ba << QStringList{Unreadable};
        QTest::newRow("pipe") << "pipe"_ba << QStringList{Unreadable};
    }

    void WhatCannotBeReadIsRefused()
    {
        QFETCH(QByteArray, content);
        QString path = m_files.Put(content, u"bad.jpg"_s);
        if (content == "folder") {
            path = QFileInfo(path).path();
        } else if (content == "pipe") {
            path += u".pipe"_s;
            QCOMPARE(mkfifo(qPrintable(path), 0600), 0);
        }
        Open();
        Import(path);
        QTEST(m_box->Desk().shown, "shown");
        QVERIFY(NothingIsStored());
        QCOMPARE(m_box->Desk().pointer, PointerNormal);
#ifndef __SANITIZE_ADDRESS__ // Under the sanitizer the reader runs without its limit of memory.
        for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
            rusage used = {};
            getrusage(who, &used);
            QVERIFY2(used.ru_maxrss < 600 * 1024, "a bad file took too much memory");
        }
#endif
    }

    void ALargeJpegIsFiledAsItIs()
    {
        const QByteArray content = PictureFiles::Blank({8200, 8000}, "jpeg");
        Open();
        Import(m_files.Put(content, u"large.jpg"_s));
        QCOMPARE(m_box->Desk().shown, QStringList());
        const QString stored = m_box->PicturePath(Day, Stomach, 1);
        QCOMPARE(Files().ReadFile(stored), content);
        QCOMPARE(LoadPicture(stored).size(), QSize(4100, 4000));
    }

    void NothingChosen_data()
    {
        QTest::addColumn<std::optional<QString>>("chosen");
        QTest::addColumn<QStringList>("shown");
        const QStringList none{u"선택된 파일이 없습니다.!!"_s};
        QTest::newRow("cancel") << std::optional<QString>() << QStringList();
        QTest::newRow("blank") << std::optional(u"  "_s) << none;
        QTest::newRow("gone") << std::optional(u"/none/그림.png"_s) << none;
    }

    void NothingChosen()
    {
        QFETCH(std::optional<QString>, chosen);
        Open();
        m_box->Desk().files = {chosen};
        m_screen->findChild<QToolButton*>(u"파일"_s)->click();
        QTEST(m_box->Desk().shown, "shown");
        QVERIFY(NothingIsStored());
        const QStringList filter = m_box->Desk().filter.split(QChar(u'\0'));
        QCOMPARE(filter.size(), 22 * 2 + 2);
        QCOMPARE(filter.mid(4, 2), (QStringList{u"CALS (*.CAL)"_s, u"*.cal"_s}));
    }

    void NumberNoteAndMark_data()
    {
        QTest::addColumn<QList<int>>("stored");
        QTest::addColumn<int>("number");
        QTest::newRow("first") << QList<int>{} << 1;
        QTest::newRow("above the sweep") << QList<int>{1, 75} << 76;
        QTest::newRow("four digits") << QList<int>{999} << 1000;
    }

    void NumberNoteAndMark()
    {
        QFETCH(QList<int>, stored);
        QFETCH(int, number);
        for (const int each : stored)
            m_box->AddPicture(Day, Stomach, each);
        VisitContext.ImageExt = u"bmp"_s;
        for (const int each : stored)
            m_box->AddPicture(Day, Stomach, each);
        Open();
        m_screen->txtCapChamgo().insertPlainText(u"가져온 그림"_s);
        // As long as a name can be.
        const QString name = u"긴 "_s + u"이"_s.repeated(81) + u"름.jpg"_s;
        QCOMPARE(name.toUtf8().size(), 254);
        Import(m_files.Put(StationInABox::Jpeg({200, 100}, Qt::green), name));
        QCOMPARE(m_box->Desk().shown, QStringList());
        QVERIFY(FileExists(m_box->PicturePath(Day, Stomach, number)));
        const int column = static_cast<int>(stored.size()) + 1;
        QCOMPARE(CellText(m_screen->sprCap(1), column, 2), u"%1"_s.arg(number, 3, 10, QChar(u'0')));
        QCOMPARE(m_box->Value(u"SELECT MAX(cap_no) AS v FROM cap"_s).toInt(), number);
        QCOMPARE(m_box->Value(u"SELECT ca_chamgo AS v FROM ca"_s), u"가져온 그림"_s);
        QCOMPARE(m_box->Value(u"SELECT endo_check AS v FROM endo"_s), u"0"_s);
        QCOMPARE(m_box->Names(u"2026"_s, Stomach).filter(u".bmp"_s).size(), stored.size() + 1);
    }

    void AFullGridRefusesInSilence()
    {
        for (int number = 1; number <= 50; ++number)
            m_box->AddPicture(Day, Stomach, number);
        Open();
        Import(m_files.Path(u"colours.png"_s));
        QCOMPARE(m_box->Desk().shown, QStringList());
        QCOMPARE(m_box->Names(u"2026"_s, Stomach).size(), 50);
        QCOMPARE(m_box->Desk().pointer, PointerNormal);
    }

    void WithoutAChartNothingIsStored()
    {
        Open();
        VisitContext.Chart = u"  "_s;
        Import(m_files.Path(u"colours.png"_s));
        QCOMPARE(m_box->Desk().shown, QStringList{u"차트번호가 없습니다.!! 확인하세요.!1"_s});
        QVERIFY(NothingIsStored());
    }

    void ARefusingFolderStoresNothing_data()
    {
        QTest::addColumn<int>("failing");
        QTest::newRow("the claim") << 1;
        QTest::newRow("the picture") << 2;
    }

    void ARefusingFolderStoresNothing()
    {
        QFETCH(int, failing);
        Open();
        m_box->FaultyFiles().FailAt(failing, true);
        Import(m_files.Path(u"colours.png"_s));
        m_box->FaultyFiles().Recover();
        QCOMPARE(m_box->Desk().shown, QStringList{u"디스크가 가득 찼습니다.!!"_s});
        QVERIFY(NothingIsStored());
        Import(m_files.Path(u"colours.png"_s));
        QCOMPARE(m_box->Value(u"SELECT MAX(cap_no) AS v FROM cap"_s), u"1"_s);
    }

    void DroppedFilesComeOneByOne()
    {
        Open();
        const auto drop = [this](const QList<QUrl>& urls, Qt::DropActions offered) {
            QMimeData content;
            content.setUrls(urls);
            QWidget* cells = m_screen->sprCap(1).findChild<QAbstractItemView*>()->viewport();
            QDragEnterEvent enter({20, 20}, offered, &content, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(cells, &enter);
            if (!enter.isAccepted())
                return Qt::IgnoreAction;
            QDropEvent event({20, 20}, offered, &content, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(cells, &event);
            return event.dropAction();
        };
        const auto file = [this](const QString& name) { return QUrl::fromLocalFile(m_files.Path(name)); };
        m_files.Put("no picture", u"글.txt"_s);
        QCOMPARE(
            drop({file(u"colours.png"_s), file(u"글.txt"_s), file(u"lines.png"_s)}, Qt::CopyAction | Qt::MoveAction),
            Qt::CopyAction);
        QTRY_COMPARE(m_box->Names(u"2026"_s, Stomach).size(), 2);
        QCOMPARE(m_box->Desk().shown, QStringList{Unreadable});
        QVERIFY(LoadPicture(m_box->PicturePath(Day, Stomach, 2)).pixelColor(280, 200).lightness() > 215);
        QVERIFY(QFile::exists(m_files.Path(u"colours.png"_s)));
        QCOMPARE(drop({QUrl(u"https://clinic.example/a.png"_s)}, Qt::CopyAction), Qt::IgnoreAction);
        QCOMPARE(drop({file(u"colours.png"_s)}, Qt::MoveAction), Qt::IgnoreAction);
    }

    void APictureDraggedOutIsACopyOfItsFile()
    {
        m_box->AddPicture(Day, Stomach, 7);
        Open();
        QWidget* cells = m_screen->sprCap(1).findChild<QAbstractItemView*>()->viewport();
        QTest::mousePress(cells, Qt::LeftButton, Qt::NoModifier, {30, 30});
        QMouseEvent move(QEvent::MouseMove, {90, 60}, cells->mapToGlobal(QPoint(90, 60)), Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QCoreApplication::sendEvent(cells, &move);
        // The platform of the tests ends each drag at once; what it was to carry is still there.
        const auto* drag = m_screen->sprCap(1).findChild<QDrag*>();
        QVERIFY(drag != nullptr);
        QCOMPARE(drag->mimeData()->urls(), QList{QUrl::fromLocalFile(NativePath(m_box->PicturePath(Day, Stomach, 7)))});
        QCOMPARE(drag->supportedActions(), Qt::CopyAction);
        QVERIFY(FileExists(m_box->PicturePath(Day, Stomach, 7)));
    }

private:
    void Open()
    {
        m_screen = &Form<frmCapture>();
        m_screen->Show();
        Guarded([this] { m_screen->ShowStored(); });
    }

    void Import(const QString& path)
    {
        m_box->Desk().files = {path};
        m_screen->findChild<QToolButton*>(u"파일"_s)->click();
    }

    bool NothingIsStored()
    {
        return m_box->Names(u"2026"_s, Stomach).isEmpty() &&
               m_box->Value(u"SELECT COUNT(*) AS v FROM cap"_s) == u"0"_s &&
               m_box->Value(u"SELECT COUNT(*) AS v FROM ca"_s) == u"0"_s;
    }

    PictureFiles m_files;
    std::unique_ptr<StationInABox> m_box;
    frmCapture* m_screen = nullptr;
};

QTEST_MAIN(PictureImportTest)
#include "PictureImportTest.moc"
