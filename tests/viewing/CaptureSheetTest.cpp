#include "contracts/printing.h"
#include "platform/desktop/prepare_application.h"
#include "screenparts/fill_routines.h"
#include "screenparts/PrintedPage.h"
#include "support/CaptureScreen.h"
#include "support/PdfPages.h"
#include "viewing/CapShow.h"

using namespace Qt::StringLiterals;

class CaptureSheetTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { PrepareApplication(); }
    void init()
    {
        m_box = std::make_unique<StationInABox>();
        m_printed = std::make_unique<QTemporaryDir>();
        UseService<PrinterOptions>().UseFolder(m_printed->path());
    }
    void cleanup() { m_box.reset(); }

    void TheViewerPrintsThreeColumns_data()
    {
        Columns<int, QList<int>>("pictures", "onPages");
        QTest::newRow("none") << 0 << QList<int>{};
        QTest::newRow("three of five in a row") << 5 << QList<int>{3};
        QTest::newRow("six of ten") << 10 << QList<int>{6};
        QTest::newRow("seven of eleven on two pages") << 11 << QList<int>{6, 1};
    }

    void TheViewerPrintsThreeColumns()
    {
        QFETCH2(int, pictures, QList<int>, onPages);
        for (int number = 1; number <= pictures; ++number)
            m_box->AddPicture(Day, Stomach, number);
        OpenViewer().findChild<QAction*>(u"출력"_s)->trigger();
        const PdfPages pages(m_printed->path());
        QCOMPARE(pages.Files().size(), onPages.size());
        for (int page = 0; page < onPages.size(); ++page) {
            QCOMPARE(pages.ImageList(page).count(u" image "_s), onPages[page]);
            const QString text = pages.Text(page).simplified();
            const QStringList expected = {u"위내시경"_s,       u"F i n d i n g s"_s, u"2026년 11월 24일"_s,
                                          u"00001234-01"_s,    u"홍길동"_s,          u"46세"_s,
                                          u"800101-1234567"_s, u"2026/11/24"_s,      u"12-3번지"_s};
            for (const QString& part : expected)
                QVERIFY2(text.contains(part), qPrintable(part + u'\n' + text));
            const QString count = onPages.size() > 1 ? u"/%1"_s.arg(onPages.size()) : QString();
            QVERIFY(pages.Text(page).remove(u' ').contains(u"페이지번호:%1%2\n"_s.arg(page + 1).arg(count)));
        }
        QVERIFY(m_box->Desk().shown.isEmpty());
    }

    void AHistorySheetTakesTheTickedPictures()
    {
        for (const int number : {1, 2, 3, 4})
            m_box->AddPicture(u"20250301"_s, u"대장내시경"_s, number, u""_s);
        frmCapture& screen = OpenScreen();
        Q_EMIT screen.sprCap(3).DblClick(1, 1);
        auto* print = screen.findChild<QMenu*>(u"팝업메뉴"_s)->findChild<QAction*>(u"출력"_s);
        print->trigger();
        QCOMPARE(PdfPages(m_printed->path()).Files().size(), 0);
        for (const QPoint cell : {QPoint(3, 1), QPoint(1, 3)}) {
            screen.sprCap(2).setCol(cell.x());
            screen.sprCap(2).setRow(cell.y());
            screen.sprCap(2).setValue(u"1"_s);
        }
        print->trigger();
        const PdfPages pages(m_printed->path());
        QCOMPARE(pages.Files().size(), 1);
        QCOMPARE(pages.ImageList(0).count(u" image "_s), 2);
        QVERIFY(pages.Text(0).contains(u"2025/03/01"_s));
        QVERIFY(pages.Text(0).contains(u"대장내시경"_s));
    }

    void APictureThatCannotBeReadKeepsItsPlace()
    {
        for (const int number : {1, 2, 3})
            m_box->AddPicture(Day, Stomach, number);
        WriteWholeFile(m_box->PicturePath(Day, Stomach, 2), "no picture");
        // What is there of it is printed, and can't be taken for the whole.
        const QByteArray whole = Files().ReadFile(m_box->PicturePath(Day, Stomach, 1));
        WriteWholeFile(m_box->PicturePath(Day, Stomach, 1), whole.left(whole.size() * 3 / 4));
        frmCapture& screen = OpenScreen();
        DeleteFile(m_box->PicturePath(Day, Stomach, 3));
        screen.findChild<QToolButton*>(u"출력"_s)->click();
        const PdfPages pages(m_printed->path());
        QCOMPARE(pages.ImageList(0).count(u" image "_s), 1);
        QVERIFY(pages.Text(0).contains(u"0000123420261124001.jpg"_s));
        QVERIFY(pages.Text(0).contains(u"0000123420261124002.jpg"_s));
        QVERIFY(!pages.Text(0).contains(u"003.jpg"_s));
    }

    void WhatAFaultLeftUnprintedIsGone()
    {
        m_box->AddPicture(Day, Stomach, 1);
        Guarded([] {
            const PrintedPage page;
            page.Font(11);
            page.Text({3, 5, 2, 69}, u"다른 환자"_s);
            throw PlatformError(u"고장.!!"_s);
        });
        OpenViewer().findChild<QAction*>(u"출력"_s)->trigger();
        QVERIFY(!PdfPages(m_printed->path()).Text(0).contains(u"다른 환자"_s));
    }

    void AFullDiskPrintsNothingAndSaysSo()
    {
        m_box->AddPicture(Day, Stomach, 1);
        UseService<PrinterOptions>().UseFolder(m_printed->path() + u"/none/none\0"_s);
        m_box->FaultyFiles().FailAt(1, true);
        OpenViewer().findChild<QAction*>(u"출력"_s)->trigger();
        QCOMPARE(m_box->Desk().shown.size(), 1);
        QCOMPARE(m_box->Desk().pointer, PointerNormal);
    }

private:
    CapShow& OpenViewer()
    {
        CapShow& viewer = Form<CapShow>();
        viewer.Show();
        Guarded([&] { LoadCaptureList(CurrentVisit(), viewer.PicturesOfVisit(), false); });
        return viewer;
    }

    std::unique_ptr<StationInABox> m_box;
    std::unique_ptr<QTemporaryDir> m_printed;
};

QTEST_MAIN(CaptureSheetTest)
#include "CaptureSheetTest.moc"
