#include "contracts/PlatformError.h"
#include "contracts/printing.h"
#include "frame/components.h"
#include "frame/services.h"
#include "platform/desktop/prepare_application.h"
#include "platform/files/LocalFiles.h"
#include "platform/imagecontrol/ImageControl.h"
#include "platform/printing/PrintQueue.h"
#include "platform/printing/register_printing.h"
#include "support/PdfPages.h"
#include "support/testing.h"

using namespace Qt::StringLiterals;

namespace {

constexpr int Dots = 144; // Ten twips a dot.

int TopMarginDots()
{
    return qRound((16838 - 16243) / 2.0 / 10);
}

/// The dark dots' bounds inside a part of the page, in twips from the page's corner.
QRect InkTwips(const QImage& page)
{
    QRect ink;
    for (int y = 0; y < page.height(); ++y) {
        for (int x = 0; x < page.width(); ++x) {
            if (qGray(page.pixel(x, y)) < 128)
                ink |= QRect(x, y, 1, 1);
        }
    }
    const int left = qRound((11906 - 11184) / 2.0 / 10);
    ink.translate(-left, -TopMarginDots());
    return QRect(ink.topLeft() * 10, ink.size() * 10);
}

/// All printers as one: what they take, and how each sheet stands.
class FakePrinters final : public PrintServer
{
public:
    SentSheet Send(const QString& printer, const QByteArray& pdf) override
    {
        const QMutexLocker lock(&m_mutex);
        m_looks.release();
        if (!m_refusal.isEmpty())
            throw PlatformError(m_refusal);
        m_sent << printer + QString::fromUtf8(pdf);
        return {printer, static_cast<int>(m_sent.size())};
    }
    SheetState Look(const SentSheet&) override
    {
        m_looks.release();
        const QMutexLocker lock(&m_mutex);
        return m_state;
    }

    void Set(const QString& refusal, const SheetState& state)
    {
        const QMutexLocker lock(&m_mutex);
        m_refusal = refusal;
        m_state = state;
    }
    QStringList Sent() const
    {
        const QMutexLocker lock(&m_mutex);
        return m_sent;
    }
    void AwaitLooks(int count)
    {
        m_looks.acquire(m_looks.available());
        while (!m_looks.tryAcquire(count, 1))
            QCoreApplication::processEvents();
    }

private:
    mutable QMutex m_mutex;
    QString m_refusal;
    SheetState m_state;
    QStringList m_sent;
    QSemaphore m_looks;
};

} // namespace

class PagePrinterTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        PrepareApplication();
        RegisterFiles();
    }

    void init()
    {
        RegisterPrinting();
        m_folder = std::make_unique<QTemporaryDir>();
        UseService<PrinterOptions>().UseFolder(m_folder->path());
        m_canvas = CreateObject<clsPageCanvas>(u"prjPageCanvas.clsPageCanvas"_s);
        Printer().setWidth(11184);
        Printer().setHeight(16243);
        SetFont(11);
    }

    void EachEndDocIsASheetOfItsOwn()
    {
        m_canvas->myCelText(m_grid, u"첫째 장"_s, 3, 5, 2, 69, Printer(), u"C"_s);
        Printer().EndDoc();
        m_canvas->myCelText(m_grid, u"둘째 장"_s, 3, 5, 2, 69, Printer(), u"C"_s);
        Printer().EndDoc();
        const PdfPages pages(m_folder->path());
        QCOMPARE(pages.Files(), (QStringList{u"Page000001.pdf"_s, u"Page000002.pdf"_s}));
        QVERIFY(pages.Text(0).contains(u"첫째 장"_s) && !pages.Text(0).contains(u"둘째"_s));
        QVERIFY(pages.Text(1).contains(u"둘째 장"_s));
        QVERIFY2(pages.Report(u"pdfinfo"_s, 0).contains(u"A4"_s), qPrintable(pages.Report(u"pdfinfo"_s, 0)));
        const QString fonts = pages.Report(u"pdffonts"_s, 0);
        QVERIFY2(fonts.contains(u"NanumBarunGothic"_s) && !fonts.contains(u" no  no"_s), qPrintable(fonts));
    }

    void TextKeepsInsideItsCell_data()
    {
        Columns<QString, QString, bool>("text", "alignment", "whole");
        QTest::newRow("short, left") << u"가나"_s << u"L"_s << true;
        QTest::newRow("short, right") << u"가나"_s << u"R"_s << true;
        QTest::newRow("more than twice too wide") << QString(30, u'가') << u"L"_s << true;
        QTest::newRow("far too wide") << QString(60, u'가') << u"L"_s << false;
        QTest::newRow("far too wide, centred") << QString(60, u'가') << u"C"_s << false;
    }

    void TextKeepsInsideItsCell()
    {
        QFETCH3(QString, text, QString, alignment, bool, whole);
        m_canvas->myCelText(m_grid, text, 20, 21, 10, 28, Printer(), alignment);
        Printer().EndDoc();
        const PdfPages pages(m_folder->path());
        QCOMPARE(pages.Text(0).contains(text), whole);
        QCOMPARE(pages.Text(0).contains(u"…"_s), !whole);
        const QRect ink = InkTwips(pages.Picture(0, Dots));
        QVERIFY(ink.left() >= m_grid.X[10] - 10);
        QVERIFY2(ink.right() <= m_grid.X[28] + 10, qPrintable(QString::number(ink.right())));
        const qreal middle = (m_grid.Y[20] + m_grid.Y[21]) / 2;
        QVERIFY2(qAbs(ink.center().y() - middle) < 40, qPrintable(QString::number(ink.center().y() - middle)));
        if (whole && alignment == u"R"_s)
            QVERIFY(ink.right() > m_grid.X[28] - 60);
    }

    void RulesAndPictures()
    {
        ImageControl control;
        QImage picture(1920, 1080, QImage::Format_RGB32);
        picture.fill(Qt::black);
        control.setPicture(picture);
        const ImageControl empty;
        m_canvas->myDrawPic(m_grid, 51, 63, 4, 24, Printer(), control);
        m_canvas->myDrawPic(m_grid, 51, 63, 26, 46, Printer(), empty);
        Printer().EndDoc();
        m_canvas->myDrawBox(m_grid, 4, 2, 8, 69, 8, Printer());
        Printer().EndDoc();
        const PdfPages pages(m_folder->path());
        QVERIFY2(pages.ImageList(0).contains(u"1920  1080"_s), qPrintable(pages.ImageList(0)));
        const QRect ink = InkTwips(pages.Picture(0, Dots));
        QVERIFY(qAbs(ink.width() * 9.0 / 16 - ink.height()) < 30);
        QVERIFY(qAbs(ink.width() - (m_grid.X[24] - m_grid.X[4])) < 30);
        QVERIFY(qAbs(ink.center().y() - (m_grid.Y[51] + m_grid.Y[63]) / 2) < 30);
        const QRect rule = InkTwips(pages.Picture(1, 1440 / 10));
        QVERIFY(rule.height() <= 20);
        QVERIFY(qAbs(rule.left() - m_grid.X[2]) < 20 && qAbs(rule.right() - m_grid.X[69]) < 20);
        QVERIFY(qAbs(rule.center().y() - m_grid.Y[8]) < 20);
    }

    void PagesIntoOneChosenFile()
    {
        const QString chosen = m_folder->filePath(u"소견.PDF"_s);
        WriteWholeFile(chosen, "replaced, as the dialog has asked");
        WriteWholeFile(m_folder->filePath(u"소견-2.PDF"_s), "kept");
        UseService<PrinterOptions>().UseFile(chosen);
        for (const QString& text : {u"첫째 장"_s, u"둘째 장"_s, u"셋째 장"_s}) {
            m_canvas->myCelText(m_grid, text, 3, 5, 2, 69, Printer(), u"C"_s);
            Printer().EndDoc();
        }
        QCOMPARE(Files().ReadFile(m_folder->filePath(u"소견-2.PDF"_s)), "kept");
        DeleteFile(m_folder->filePath(u"소견-2.PDF"_s));
        const PdfPages pages(m_folder->path());
        QCOMPARE(pages.Files(), (QStringList{u"소견-3.PDF"_s, u"소견-4.PDF"_s, u"소견.PDF"_s}));
        QVERIFY(pages.Text(0).contains(u"둘째"_s) && pages.Text(1).contains(u"셋째"_s));
        QVERIFY(pages.Text(2).contains(u"첫째"_s));
    }

    void ASheetThatCannotBePrintedIsGone()
    {
        WriteWholeFile(m_folder->filePath(u"file"_s), "no folder");
        UseService<PrinterOptions>().UseFolder(m_folder->filePath(u"file"_s));
        m_canvas->myCelText(m_grid, u"버릴 장"_s, 3, 5, 2, 69, Printer(), u"C"_s);
        QVERIFY_THROWS_EXCEPTION(PlatformError, Printer().EndDoc());
        UseService<PrinterOptions>().UseFolder(m_folder->path() + u"/새 폴더"_s);
        m_canvas->myCelText(m_grid, u"다음 장"_s, 3, 5, 2, 69, Printer(), u"C"_s);
        Printer().EndDoc();
        const PdfPages pages(m_folder->path() + u"/새 폴더"_s);
        QVERIFY(pages.Text(0).contains(u"다음 장"_s));
        QVERIFY(!pages.Text(0).contains(u"버릴"_s));
    }

    void SheetsWaitForTheirPrinter()
    {
        auto* printers = new FakePrinters;
        PrintQueue queue(std::unique_ptr<PrintServer>(printers), 10);
        QString told;
        queue.setPresenter([&told](const QString& trouble) { told = trouble; });
        printers->Set(u"거절"_s, {});
        queue.Send(u"X"_s, "1");
        queue.Send(u"X"_s, "2");
        QTRY_VERIFY2(told.contains(u"거절"_s) && told.contains(u"2장"_s), qPrintable(told));
        QCOMPARE(printers->Sent(), QStringList());
        queue.Redirect(u"Y"_s);
        printers->AwaitLooks(2); // One of them begins behind that.
        printers->Set({}, {.trouble = u"멈춤"_s});
        QTRY_COMPARE(told, u"멈춤"_s);
        QCOMPARE(printers->Sent(), (QStringList{u"Y1"_s, u"Y2"_s}));

        // What was read isn't told again, but what is new.
        queue.Dismiss();
        QCOMPARE(told, QString());
        printers->AwaitLooks(4);
        QCoreApplication::processEvents();
        QCOMPARE(told, QString());
        printers->Set({}, {.trouble = u"용지"_s});
        QTRY_COMPARE(told, u"용지"_s);
        printers->Set({}, {.isThrough = true});
        QTRY_COMPARE(told, QString());

        // What the printer has dropped stays told until it was read.
        printers->Set({}, {.isThrough = true, .isLost = true, .trouble = u"중단"_s});
        queue.Send(u"X"_s, "3");
        QTRY_COMPARE(told, u"중단"_s);
        queue.Dismiss();
        printers->Set(u"거절"_s, {.isThrough = true});
        queue.Send(u"X"_s, "4");
        QTRY_VERIFY2(told.contains(u" 1장"_s), qPrintable(told));
        queue.Dismiss();
        printers->Set({}, {.isThrough = true});
        queue.Send(u"X"_s, "5");
        queue.End(5000);
        QCOMPARE(printers->Sent().mid(2), (QStringList{u"X3"_s, u"X5"_s}));
    }

private:
    static void SetFont(int points)
    {
        Printer().setFontName(u"돋움"_s);
        Printer().setFontSize(points);
        Printer().setFontBold(true);
        Printer().setFontUnderline(false);
    }

    const PrintGrid m_grid{11184, 16243};
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<clsPageCanvas> m_canvas;
};

QTEST_MAIN(PagePrinterTest)
#include "PagePrinterTest.moc"
