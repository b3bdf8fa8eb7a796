#include "frame/waiting.h"
#include "support/CaptureScreen.h"
#include "support/PictureFiles.h"

#include <sys/resource.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {
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
    void init() { m_box = std::make_unique<StationInABox>(); }
    void cleanup() { m_box.reset(); }

    void EveryFormatBecomesAStill_data()
    {
        Columns<QString, QString, bool>("command", "output", "colours");
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
        convert("pbm", {}, u"PBM"_s, false);
        convert("tiff, the first of two pages", u"lines.png -compress LZW"_s, u"TIFF"_s);
        convert("tiff, facsimile", u"-monochrome -compress Group4"_s, u"TIFF"_s, false);
        convert("pcx", u"-alpha off"_s, u"PCX"_s);
        convert("pcx, one bit", PictureFiles::OneBit(), u"PCX"_s, false);
        convert("dcx of two", u"lines.png -alpha off"_s, u"DCX"_s);
        convert("cals", PictureFiles::OneBit(), u"CALS"_s, false);
        convert("tga, from the top", u"-alpha off -orient TopLeft"_s, u"TGA"_s);
        convert("tga, from the bottom", u"-alpha off -orient BottomLeft -flip"_s, u"TGA"_s);
        ffmpeg("tga, run lengths", u"-pix_fmt bgr24"_s, u"out.tga"_s);
        ffmpeg("jpeg-ls", u"-c:v jpegls"_s, u"out.jls"_s);
        ffmpeg("lossless jpeg", u"-c:v ljpeg -pix_fmt bgr24"_s, u"out.ljp"_s);
        row("jpeg 2000", u"opj_compress -i colours.png -o out.jp2"_s, u"out.jp2"_s);
        row("jbig2", {}, {}, false);
    }

    void EveryFormatBecomesAStill()
    {
        QFETCH3(QString, command, QString, output, bool, colours);
        const QByteArray content = command.isEmpty()
                                       ? m_files.Jbig2(PictureFiles::Size.width(), PictureFiles::Size.height())
                                       : m_files.Made(command, output);
        OpenScreen();
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
        Columns<QByteArray, QStringList>("content", "shown");
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
        QTest::newRow("png of 65000 x 65000") << QByteArray(png).replace(16, 8, huge) << QStringList{Unreadable};
        QTest::newRow("png of 14100 x 14100")
            << PictureFiles::Blank({14100, 14100}, "png") << QStringList{large(14100, 14100)};
        QTest::newRow("gif, nothing in 14000 x 14000")
            << QByteArray("GIF89a\xB0\x36\xB0\x36\x80\0\0\0\0\0\xFF\xFF\xFF,\0\0\0\0\xB0\x36\xB0\x36\0\2\2D\1\0;", 36)
            << QStringList{large(14000, 14000)};
        QTest::newRow("jpeg 2000 of 65000 x 65000")
            << Patched(jp2, "\xFF\x51"_ba, 6, huge) << QStringList{large(65000, 65000)};
        QTest::newRow("tga of 65535 x 65535")
            << QByteArray("\0\0\x0A\0\0\0\0\0\0\0\0\0\xFF\xFF\xFF\xFF\x18\0", 18) + QByteArray(500, '\xFF')
            << QStringList{large(65535, 65535)};
        QTest::newRow("cals of 900000 x 900000")
            << Patched(cals, "rpelcnt: "_ba, 9, "900000,900000"_ba) << QStringList{large(900000, 900000)};
        QTest::newRow("jbig2 of 60000 x 60000") << m_files.Jbig2(60000, 60000) << QStringList{large(60000, 60000)};
        QTest::newRow("jpeg of 20000 x 11000")
            << PictureFiles::Promising(jpeg, 20000, 11000) << QStringList{large(20000, 11000, 200)};
        QTest::newRow("jpeg, cut") << jpeg.left(jpeg.size() * 3 / 4) << QStringList{u"잘린 그림파일입니다.!!"_s};
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
        OpenScreen();
        Import(path);
        QTEST(m_box->Desk().shown, "shown");
        QVERIFY(NothingIsStored());
        QCOMPARE(m_box->Desk().pointer, PointerNormal);
// Under a sanitizer the reader runs without its limit of memory.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
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
        OpenScreen();
        Import(m_files.Put(content, u"large.jpg"_s));
        QCOMPARE(m_box->Desk().shown, QStringList());
        const QString stored = m_box->PicturePath(Day, Stomach, 1);
        QCOMPARE(Files().ReadFile(stored), content);
        QCOMPARE(LoadPicture(stored).size(), QSize(4100, 4000));
    }

    void NothingChosen()
    {
        OpenScreen();
        m_box->Desk().files = {std::nullopt, u"  "_s, u"/none/그림.png"_s};
        for (int time = 0; time < 3; ++time)
            Press(u"파일"_s);
        QCOMPARE(m_box->Desk().shown, QStringList(2, u"선택된 파일이 없습니다.!!"_s));
        QVERIFY(NothingIsStored());
        const QStringList filter = m_box->Desk().filter.split(QChar(u'\0'));
        QCOMPARE(filter.size(), 22 * 2 + 2);
        QCOMPARE(filter.mid(4, 2), (QStringList{u"CALS (*.CAL)"_s, u"*.cal"_s}));
    }

    void SeveralFilesComeOneByOne()
    {
        OpenScreen();
        const auto drop = [](const QList<QUrl>& urls, Qt::DropActions offered) {
            QMimeData content;
            content.setUrls(urls);
            QWidget* cells = opened->sprCap(1).findChild<QAbstractItemView*>()->viewport();
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
        QVERIFY(QFile::copy(m_files.Path(u"colours.png"_s), m_files.Path(u"2.png"_s)));
        QVERIFY(QFile::copy(m_files.Path(u"lines.png"_s), m_files.Path(u"10.png"_s)));
        const QList dropped{file(u"10.png"_s), file(u"글.txt"_s), file(u"2.png"_s)};
        QCOMPARE(drop(dropped, Qt::CopyAction | Qt::MoveAction), Qt::CopyAction);
        // Beside the claims of numbers.
        QTRY_COMPARE(m_box->Names(u"2026"_s, Stomach).filter(u".jpg"_s).size(), 2);
        QCOMPARE(m_box->Desk().shown, QStringList{u"그림파일 3개 중 2개를 저장하였습니다.\r\n\r\n저장하지 못한 파일:"
                                                  "\r\n글.txt: "_s +
                                                  Unreadable});
        QVERIFY(LoadPicture(m_box->PicturePath(Day, Stomach, 2)).pixelColor(280, 200).lightness() > 215);
        QVERIFY(QFile::exists(m_files.Path(u"colours.png"_s)));
        QCOMPARE(drop({QUrl(u"https://clinic.example/a.png"_s)}, Qt::CopyAction), Qt::IgnoreAction);
        QCOMPARE(drop({file(u"colours.png"_s)}, Qt::MoveAction), Qt::IgnoreAction);
    }

    void WhatSeveralFilesLeaveBehind_data()
    {
        Columns<int, int, bool, QStringList>("there", "bad", "cancels", "told");
        QTest::newRow("full") << 49 << 0 << false
                              << QStringList{u"3개 중 1개를"_s, u"한도 50장이 되어 가져오지 않은 파일 2개"_s};
        QTest::newRow("many bad") << 0 << 12 << false << QStringList{u"15개 중 3개를"_s, u"\r\n외 2개"_s};
        QTest::newRow("given up") << 0 << 12 << true << QStringList{u"취소하여 가져오지 않은 파일"_s};
    }

    void WhatSeveralFilesLeaveBehind()
    {
        QFETCH4(int, there, int, bad, bool, cancels, QStringList, told);
        for (int number = 1; number <= there; ++number)
            m_box->AddPicture(Day, Stomach, number);
        OpenScreen();
        QStringList paths;
        for (int at = 0; at < bad; ++at)
            paths << m_files.Put("no picture", QString(70, u'<') + QString::number(at));
        for (const int at : {1, 2, 3})
            paths << m_files.Put(m_files.Made(u"convert colours.png JPEG:j"_s, u"j"_s), u"그림%1.jpg"_s.arg(at));
        if (cancels)
            QTimer::singleShot(0, this, [] { waiting::Cancel(); });
        Import(paths.join(u'\n'));
        QCOMPARE(m_box->Desk().shown.size(), 1);
        const QString shown = m_box->Desk().shown.first();
        for (const QString& part : std::as_const(told))
            QVERIFY2(shown.contains(part), qPrintable(shown));
        QVERIFY(shown.size() < 1500);
    }

    void APictureDraggedOutIsACopyOfItsFile()
    {
        m_box->AddPicture(Day, Stomach, 7);
        OpenScreen();
        QWidget* cells = opened->sprCap(1).findChild<QAbstractItemView*>()->viewport();
        QTest::mousePress(cells, Qt::LeftButton, Qt::NoModifier, {30, 30});
        QMouseEvent move(QEvent::MouseMove, {90, 60}, cells->mapToGlobal(QPoint(90, 60)), Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QCoreApplication::sendEvent(cells, &move);
        // The platform of the tests ends each drag at once; what it was to carry is still there.
        const auto* drag = opened->sprCap(1).findChild<QDrag*>();
        QVERIFY(drag != nullptr);
        QCOMPARE(drag->mimeData()->urls(), QList{QUrl::fromLocalFile(NativePath(m_box->PicturePath(Day, Stomach, 7)))});
        QCOMPARE(drag->supportedActions(), Qt::CopyAction);
        QVERIFY(FileExists(m_box->PicturePath(Day, Stomach, 7)));
    }

private:
    void Import(const QString& path)
    {
        m_box->Desk().files = {path};
        Press(u"파일"_s);
    }

    bool NothingIsStored()
    {
        return m_box->Names(u"2026"_s, Stomach).isEmpty() &&
               m_box->Value(u"SELECT COUNT(*) AS v FROM cap"_s) == u"0"_s &&
               m_box->Value(u"SELECT COUNT(*) AS v FROM ca"_s) == u"0"_s;
    }

    PictureFiles m_files;
    std::unique_ptr<StationInABox> m_box;
};

QTEST_MAIN(PictureImportTest)
#include "PictureImportTest.moc"
