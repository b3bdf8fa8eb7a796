#include "contracts/pictures.h"
#include "frame/services.h"
#include "platform/imaging/confined_reader.h"
#include "platform/imaging/kernel_confinement.h"
#include "platform/imaging/pixel_stream.h"
#include "platform/imaging/register_imaging.h"
#include "support/PictureFiles.h"
#include "support/ScriptedDesktop.h"
#include "support/testing.h"

#include <functional>
#include <sys/resource.h>

using namespace Qt::StringLiterals;

namespace {
/// Red left upper quarter on noise, so that a turn and a wrong scale both show.
QImage Sample(QSize size)
{
    QImage picture(size, QImage::Format_RGB32);
    QRandomGenerator random(7);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            picture.setPixel(x, y, qRgb(40 + int(random.bounded(30)), 90, 160));
    }
    QPainter(&picture).fillRect(0, 0, size.width() / 2, size.height() / 2, Qt::red);
    return picture;
}

QByteArray Encoded(const QImage& picture, const char* format, bool progressive = false)
{
    QByteArray content;
    QBuffer buffer(&content);
    QImageWriter writer(&buffer, format);
    writer.setProgressiveScanWrite(progressive);
    writer.setQuality(90);
    writer.write(picture);
    return content;
}

QByteArray WithOrientation(QByteArray jpeg, char orientation)
{
    QByteArray exif("\xFF\xE1\x00\x22"
                    "Exif\0\0MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0",
                    29);
    exif += orientation;
    exif += QByteArray(6, char(0));
    return jpeg.insert(2, exif);
}

qsizetype PeakKilobytes()
{
    QFile status(u"/proc/self/status"_s);
    if (status.open(QIODevice::ReadOnly)) {
        for (const QByteArray& line : status.readAll().split('\n')) {
            if (line.startsWith("VmHWM:"))
                return line.mid(6).trimmed().split(' ').first().toLongLong();
        }
    }
    return -1;
}
} // namespace

class PictureReaderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        ScriptedDesktop::Install();
        RegisterImaging();
    }

    void FitsRoom_data()
    {
        Columns<QByteArray, QSize, QSize, QSize>("format", "size", "room", "expected");

        QTest::newRow("jpeg, an eighth") << "jpeg"_ba << QSize(1920, 1080) << QSize(107, 71) << QSize(107, 60);
        QTest::newRow("jpeg, between a quarter and a half")
            << "jpeg"_ba << QSize(640, 480) << QSize(215, 500) << QSize(215, 161);
        QTest::newRow("jpeg, never enlarged") << "jpeg"_ba << QSize(60, 40) << QSize(107, 71) << QSize(60, 40);
        QTest::newRow("jpeg, a line") << "jpeg"_ba << QSize(900, 1) << QSize(107, 71) << QSize(107, 1);
        QTest::newRow("png") << "png"_ba << QSize(640, 480) << QSize(107, 71) << QSize(94, 71);
    }

    void FitsRoom()
    {
        QFETCH4(QByteArray, format, QSize, size, QSize, room, QSize, expected);
        // The clinic's names end in jpg whatever the content is.
        const QString path = Write(Encoded(Sample(size), format), u"a.jpg"_s);

        const QImage fitted = Pictures().LoadWithin(path, room);
        QCOMPARE(fitted.size(), expected);
        QCOMPARE(Pictures().Load(path).size(), size);
        if (expected.width() > 20 && expected.height() > 20) {
            QVERIFY(qRed(fitted.pixel(expected.width() / 4, expected.height() / 4)) > 200);
            QVERIFY(qRed(fitted.pixel(expected.width() * 3 / 4, expected.height() / 4)) < 120);
            QVERIFY(qRed(fitted.pixel(expected.width() / 4, expected.height() * 3 / 4)) < 120);
        }
    }

    void TurnsByOrientation_data()
    {
        Columns<char, QSize>("orientation", "fitted");
        QTest::addColumn<QPointF>("red"); // Where the red quarter comes to stand, as a share of the size.

        QTest::newRow("upright") << char(1) << QSize(100, 50) << QPointF(0.25, 0.25);
        QTest::newRow("half turn") << char(3) << QSize(100, 50) << QPointF(0.75, 0.75);
        QTest::newRow("quarter turn right") << char(6) << QSize(50, 100) << QPointF(0.75, 0.25);
        QTest::newRow("quarter turn left") << char(8) << QSize(50, 100) << QPointF(0.25, 0.75);
    }

    void TurnsByOrientation()
    {
        QFETCH3(char, orientation, QSize, fitted, QPointF, red);
        const QString path = Write(WithOrientation(Encoded(Sample({1600, 800}), "jpeg"), orientation), u"turned.jpg"_s);

        const QSize full = fitted * 16;
        const QImage whole = Pictures().Load(path);
        const QImage small = Pictures().LoadWithin(path, {100, 100});
        QCOMPARE(whole.size(), full);
        QCOMPARE(small.size(), fitted);
        QVERIFY(qRed(whole.pixel(int(full.width() * red.x()), int(full.height() * red.y()))) > 200);
        QVERIFY(qRed(small.pixel(int(fitted.width() * red.x()), int(fitted.height() * red.y()))) > 200);
    }

    void BadFiles_data()
    {
        QTest::addColumn<QByteArray>("content");

        const QByteArray jpeg = Encoded(Sample({640, 480}), "jpeg");
        const QByteArray progressive = Encoded(Sample({640, 480}), "jpeg", true);
        const QByteArray png = Encoded(Sample({640, 480}), "png");
        const qsizetype scan = jpeg.indexOf("\xFF\xDA");

        QTest::newRow("empty") << QByteArray();
        QTest::newRow("jpeg, cut before its data") << jpeg.left(scan + 14);
        QTest::newRow("jpeg of 65000 x 65000") << PictureFiles::Promising(jpeg, 65000, 65000);
        QTest::newRow("progressive of 8000 x 8000") << PictureFiles::Promising(progressive.left(9000), 8000, 8000);
        QTest::newRow("png, cut") << png.left(png.size() / 3);
        QTest::newRow("png of 65000 x 65000")
            << QByteArray(png).replace(16, 8, QByteArray("\0\0\xFD\xE8\0\0\xFD\xE8", 8));
        QTest::newRow("drawing")
            << R"(<svg xmlns="http://www.w3.org/2000/svg" width="9" height="9"><rect width="9" height="9"/></svg>)"_ba;
    }

    void BadFiles()
    {
        QFETCH(QByteArray, content);
        const QString path = Write(content, u"bad.jpg"_s);
        const qsizetype before = PeakKilobytes();

        QVERIFY(Pictures().Load(path).isNull());
        QVERIFY(Pictures().LoadWithin(path, {107, 71}).isNull());
        const auto batch = Pictures().LoadAll({path, m_folder.filePath(u"absent.jpg"_s), m_folder.path()}, {107, 71});
        for (int index = 0; index < 4; ++index)
            QVERIFY(batch->Take(index).isNull());
        QVERIFY2(PeakKilobytes() - before < 60 * 1024, "a bad file made the program grow");
    }

    void CutJpegShowsWhatIsThere_data()
    {
        Columns<QByteArray, bool>("content", "cut");

        const QByteArray jpeg = Encoded(Sample({640, 480}), "jpeg");
        const QByteArray progressive = Encoded(Sample({640, 480}), "jpeg", true);
        QTest::newRow("whole") << jpeg << false;
        QTest::newRow("half") << jpeg.left(jpeg.size() / 2) << true;
        QTest::newRow("progressive") << progressive.left(progressive.size() / 2) << true;
        // What cameras do.
        QTest::newRow("without the mark of the end") << jpeg.chopped(2) << false;
        QTest::newRow("bytes between the segments") << QByteArray(jpeg).insert(20, "\0\0\0"_ba) << false;
        QTest::newRow("a wrong byte amid the data")
            << QByteArray(jpeg).replace(jpeg.size() / 2, 2, "\xFF\xD5") << false;
    }

    void CutJpegShowsWhatIsThere()
    {
        QFETCH2(QByteArray, content, bool, cut);
        const QString path = Write(content, u"cut.jpg"_s);

        const QImage full = Pictures().Load(path);
        QVERIFY(!full.isNull());
        QCOMPARE(CutFileName(full), cut ? u"cut.jpg"_s : QString());
        const QImage small = Pictures().LoadWithin(path, {64, 48});
        QCOMPARE(small.size(), QSize(64, 48));
        if (full.width() == 640)
            QVERIFY(qRed(small.pixel(10, 3)) > 200);
    }

    /// Ones that the limits let through.
    void LargePicturesTakeNoMemoryHere()
    {
        QByteArray progressive;
        {
            // Its decoder keeps every coefficient until the last scan.
            QBuffer buffer(&progressive);
            QImageWriter writer(&buffer, "jpeg");
            writer.setProgressiveScanWrite(true);
            writer.write(QImage({8000, 7900}, QImage::Format_Grayscale8));
        }
        const QString png = Write(PictureFiles::Blank({8000, 8000}, "png"), u"large.png"_s);
        const QString jpeg = Write(progressive, u"large.jpg"_s);
        const qsizetype before = PeakKilobytes();
        QFile peak(u"/proc/self/clear_refs"_s);
        QVERIFY(peak.open(QIODevice::WriteOnly) && peak.write("5") == 1 && peak.flush());
        const auto batch = Pictures().LoadAll({png, png, jpeg, jpeg}, {107, 71});
        for (int index = 0; index < 4; ++index)
            QCOMPARE(batch->Take(index).height(), 71);
        QVERIFY2(PeakKilobytes() < before, "a large picture made the program grow");
    }

    /// And those of the archive here, where it is faster.
    void FilesFromOutsideAreDecodedInTheReader()
    {
        const auto isDecodedHere = [](const std::function<void()>& read) {
            rusage before = {};
            rusage after = {};
            getrusage(RUSAGE_CHILDREN, &before);
            read();
            getrusage(RUSAGE_CHILDREN, &after);
            return before.ru_minflt == after.ru_minflt;
        };
        for (const char* format : {"jpeg", "png"}) {
            const QImage picture = Sample({640, 480});
            const QString path = Write(Encoded(picture, format), u"a.jpg"_s);
            QImage own;
            QImage foreign;
            QVERIFY(isDecodedHere([&] { own = Pictures().Load(path); }));
            QVERIFY(!isDecodedHere([&] { foreign = Pictures().LoadForeign(path).picture; }));
            QCOMPARE(foreign, own);
            QCOMPARE(own.size(), picture.size());
        }
    }

    void ADecoderThatWasTakenOverIsStopped_data()
    {
        Columns<QStringList, QString, QString>("arguments", "file", "call");
        QTest::addColumn<QStringList>("free");

        const QString helper = QStringLiteral(SHUT_IN_ATTEMPTS);
        // That the attempts come off where nothing forbids them.
        QTest::newRow("free") << QStringList{u"free"_s} << u"done"_s << u"done"_s << QStringList();
        QTest::newRow("reader") << QStringList{u"shut-in"_s} << u"EPERM"_s << u"EPERM"_s << QStringList();
        QTest::newRow("reader without Landlock")
            << QStringList{u"without-landlock"_s, helper, u"shut-in"_s} << u"EPERM"_s << u"EPERM"_s << QStringList();
        QTest::newRow("program") << QStringList{u"program"_s} << u"EACCES"_s << u"EPERM"_s
                                 << QStringList{u"code done"_s, u"input-by-name done"_s};
    }

    void ADecoderThatWasTakenOverIsStopped()
    {
        QFETCH3(QStringList, arguments, QString, file, QString, call);
        if (!kernelconfinement::HasSeccomp() || (file == u"EACCES" && !kernelconfinement::CanConfinePrograms()))
            QSKIP("the kernel can't confine");
        const QString own = Write("input", u"input"_s);
        QStringList lines = Output(QStringLiteral(SHUT_IN_ATTEMPTS), arguments, own).split(u'\n', Qt::SkipEmptyParts);
        QFETCH(QStringList, free);
        for (const QString& line : free)
            QVERIFY2(lines.removeOne(line), qPrintable(line));
        lines.removeOne(u"file-in-old-thread EPERM"_s);
        QVERIFY2(lines.size() >= 8, qPrintable(lines.join(u' ')));
        for (const QString& line : std::as_const(lines))
            QVERIFY2(line.endsWith(line.startsWith(u"file"_s) ? file : call), qPrintable(line));
    }

    /// Kinds that are decoded by the reader itself are read all the same.
    void WithoutLandlockNoProgramRuns()
    {
        const auto content = [this](const QByteArray& file, const QStringList& wish) {
            const QStringList arguments = QStringList{u"without-landlock"_s, confinedreader::ReaderProgram()} + wish;
            const QByteArray answer =
                Output(QStringLiteral(SHUT_IN_ATTEMPTS), arguments, Write(file, u"in"_s)).toLatin1();
            PixelStreamHeader header;
            header.mark = 0;
            std::memcpy(&header, answer.constData(), qMin<size_t>(sizeof header, size_t(answer.size())));
            return header.mark == PixelStreamHeader::Mark ? int(header.content) : -1;
        };
        const QByteArray png = Encoded(Sample({64, 48}), "png");
        QCOMPARE(content(png, {u"0"_s, u"0"_s, u"0"_s}), int(PixelStreamHeader::Opaque));
        const QByteArray targa = QByteArray("\0\0\2\0\0\0\0\0\0\0\0\0\x08\0\x08\0\x18\0", 18) + QByteArray(192, '\x50');
        QCOMPARE(content(targa, {}), int(PixelStreamHeader::Unconfinable));
    }

    void BatchKeepsOrderAndReportsOnItsThread()
    {
        QStringList paths;
        for (int index = 0; index < 40; ++index)
            paths << Write(Encoded(Sample({200 + index, 100}), "jpeg"), u"batch%1.jpg"_s.arg(index));
        paths[17] = m_folder.filePath(u"absent.jpg"_s);
        // A share's path as the station joins it.
        paths[3].replace(u'/', u'\\');

        const auto batch = Pictures().LoadAll(paths, {400, 400});
        int reports = 0;
        connect(batch.get(), &PictureBatch::Ready, this, [&] {
            QCOMPARE(QThread::currentThread(), thread());
            ++reports;
        });
        for (int index = 0; index < paths.size(); ++index) {
            QTRY_VERIFY(batch->IsReady(index));
            QCOMPARE(batch->Take(index).size(), index == 17 ? QSize(0, 0) : QSize(200 + index, 100));
        }
        QTRY_COMPARE(reports, paths.size());
        QVERIFY(batch->Take(0).isNull());
        QVERIFY(!batch->IsReady(40) && !batch->IsReady(-1));
    }

    void BatchCanBeLeftAtAnyMoment()
    {
        const QString path = Write(Encoded(Sample({1920, 1080}), "png"), u"slow.png"_s);
        for (int round = 0; round < 8; ++round) {
            const auto batch = Pictures().LoadAll(QStringList(30, path), {107, 71});
            if (round % 2 == 1)
                QVERIFY(!batch->Take(round / 4).isNull());
            QCoreApplication::processEvents();
        }
        // What the earlier lists left undone doesn't stand before this one.
        const auto batch = Pictures().LoadAll({path}, {107, 71});
        QSignalSpy ready(batch.get(), &PictureBatch::Ready);
        QTRY_COMPARE_WITH_TIMEOUT(ready.size(), 1, 3000);
    }

private:
    static QString Output(const QString& program, const QStringList& arguments, const QString& input)
    {
        QProcess process;
        process.setStandardInputFile(input);
        process.start(program, arguments);
        if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
            return {};
        return QString::fromLatin1(process.readAllStandardOutput());
    }

    QString Write(const QByteArray& content, const QString& name)
    {
        QFile file(m_folder.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("no test file");
        return file.fileName();
    }

    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(PictureReaderTest)
#include "PictureReaderTest.moc"
