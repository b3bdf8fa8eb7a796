#include "contracts/printing.h"
#include "FindingsInABox.h"
#include "pacs/SenderQueue.h"
#include "platform/desktop/prepare_application.h"
#include "screenparts/frmPrintView.h"
#include "screenparts/NoticeStrip.h"
#include "screenparts/printer_notice.h"
#include "support/PdfPages.h"

using namespace Qt::StringLiterals;

namespace {
QString Lines(int count, const QString& stem)
{
    QStringList lines;
    for (int line = 1; line <= count; ++line)
        lines << stem + QString::number(line) + u'.';
    return lines.join(u"\r\n"_s);
}

/// The bounds of what is dark: of the texts, since a rule is thinner than a dot.
QRect Ink(const QImage& page)
{
    QRect ink;
    for (int y = 0; y < page.height(); ++y) {
        for (int x = 0; x < page.width(); ++x) {
            if (qGray(page.pixel(x, y)) < 100)
                ink |= QRect(x, y, 1, 1);
        }
    }
    return ink;
}
} // namespace

class FindingsPrintTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { PrepareApplication(); }
    void init()
    {
        m_box = std::make_unique<FindingsInABox>();
        m_folder = std::make_unique<QTemporaryDir>();
        UseService<PrinterOptions>().UseFolder(m_folder->path());
        for (int number = 1; number <= 8; ++number)
            m_box->AddPicture(VisitContext.Ymd, VisitContext.Etc, number);
        m_box->Open();
    }
    void cleanup() { m_box.reset(); }

    /// The document for the server is the page without the resident number's last digits, phone and address, which a
    /// report loses when it is opened again. Nothing is printed for it, and the same report again is the same document.
    void AStoredReportIsHandedOver()
    {
        ClientSetup.Pacs.Host = u"127.0.0.1"_s;
        ClientSetup.Pacs.SendsReports = true;
        const QString folder = m_box->Desk().ProgramFolder();
        for (const int lines : {26, 26, 27}) {
            m_box->Desk().answers = {true};
            FindingsInABox::Findings().setText(Lines(lines, u"소견(gjpy) "_s));
            m_box->Press(u"저장"_s);
            m_box->Open();
        }
        const auto documents = [&folder] { return QDir(folder).entryList({u"PacsReport-*.pdf"_s}); };
        QTRY_COMPARE(SenderQueue().Look().lines, 3);
        QCOMPARE(documents().size(), 2);
        const PdfPages handed(folder);
        for (const int index : {0, 1}) {
            const QString text = handed.Text(index);
            QVERIFY2(text.contains(u"800101-1******") && text.contains(u"소견(gjpy) 26.") && !text.contains(u"02-123"),
                     qPrintable(text));
            QCOMPARE(handed.ImageList(index).count(u"image"_s), 6);
        }
        QCOMPARE(PdfPages(m_folder->path()).Files().size(), 0);
    }

    void PagesByTheLines_data()
    {
        Columns<int, int, int>("findings", "remarks", "pages");
        QTest::newRow("one line") << 1 << 0 << 1;
        QTest::newRow("a full page") << 25 << 4 << 1;
        QTest::newRow("the 26th line") << 26 << 0 << 2;
        QTest::newRow("the fifth remark") << 1 << 5 << 2;
    }

    void PagesByTheLines()
    {
        QFETCH3(int, findings, int, remarks, int, pages);
        FindingsInABox::Findings().setText(Lines(findings, u"소견(gjpy) "_s));
        FindingsInABox::Remark().setText(Lines(remarks, u"비고 "_s));
        m_box->Press(u"출력"_s);
        const PdfPages printed(m_folder->path());
        QCOMPARE(printed.Files().size(), pages);
        const QString first = printed.Text(0);
        for (const QString& part :
             {u"위내시경 소 견 서"_s, u"2026년 11월 24일"_s, u"00001234-01"_s, u"홍길동"_s, u"800101-1234567"_s,
              u"02-123-4567"_s, u"2026000001"_s, u"나누리"_s, u"나래의원"_s, u"소견(gjpy) 1."_s, u"20261124"_s})
            QVERIFY2(first.contains(part), qPrintable(part + u'\n' + first));
        QCOMPARE(printed.ImageList(0).count(u"image"_s), 6);
        // What hangs lowest in the last line keeps off the rule in row 41: at 144 dots, of ten twips each.
        const QImage paper = printed.Picture(0, 144).convertToFormat(QImage::Format_Grayscale8);
        const int rule = qRound(((16838 - 16243) / 2.0 + 41 * 16243.0 / 80) / 10);
        for (int x = 0; x < paper.width(); ++x)
            QVERIFY2(qGray(paper.pixel(x, rule - 3)) > 200, qPrintable(QString::number(x)));
        if (pages == 2) {
            const QString second = printed.Text(1);
            QVERIFY(second.contains(findings > 25 ? u"소견(gjpy) 26."_s : u"비고 5."_s));
            QVERIFY(!second.contains(u"소견(gjpy) 1."_s) && !second.contains(u"비고 4."_s) &&
                    second.contains(u"홍길동"_s));
            QVERIFY(second.contains(u"Findings"_s) && !second.contains(u"캡쳐일자"_s));
            QVERIFY(!printed.ImageList(1).contains(u"image  "_s));
        }
        QCOMPARE(FindingsInABox::Findings().Text(), QString());
        QCOMPARE(m_box->Value(u"SELECT caso_sogyon AS v FROM caso"_s), Lines(findings, u"소견(gjpy) "_s));
    }

    void LinesAreThoseThatTheBoxShows()
    {
        FindingsBox& box = FindingsInABox::Findings();
        box.setText(u"짧은 줄\r\n\r\n"_s + QString(40, u'가') +
                    u" 끝말\r\nA wrapped line of Latin words that is longer "
                    "than the width of its box\r\n"_s);
        QStringList lines = SplitTextLines(box);
        // The same at every scale of the screen.
        QCOMPARE(lines.mid(1),
                 (QStringList{u"짧은 줄"_s, QString(), QString(25, u'가'), QString(15, u'가') + u" 끝말"_s,
                              u"A wrapped line of Latin words that is longer than "_s, u"the width of its box"_s,
                              QString()}));
        // Each line starts where the picture of the box begins a new one.
        QTextCursor cursor(box.document());
        int shown = 1;
        int top = box.cursorRect(cursor).top();
        while (cursor.movePosition(QTextCursor::NextCharacter)) {
            const int now = box.cursorRect(cursor).top();
            shown += now != top ? 1 : 0;
            top = now;
        }
        QCOMPARE(shown, lines.size() - 1);
        for (const QString& line : lines)
            QVERIFY(QFontMetrics(box.font()).horizontalAdvance(line.trimmed()) <= box.viewport()->width());
        box.setText(u"  "_s);
        lines = SplitTextLines(box);
        QCOMPARE(lines, QStringList{QString()});
    }

    void APrinterIsNotWaitedFor()
    {
        class KeptJobs final : public PrinterJobs
        {
        public:
            void setPresenter(std::function<void(const QString&)> given) override { present = std::move(given); }
            void Dismiss() override { present({}); }
            void End(int) override {}
            std::function<void(const QString&)> present;
        };
        auto* jobs = new KeptJobs;
        const auto before = InstallService<PrinterJobs>(std::unique_ptr<PrinterJobs>(jobs));
        ShowPrinterOnForms();
        UseService<PrinterOptions>().UseFolder({});
        UseService<PrinterOptions>().UsePrinter(u"없는 프린터"_s);
        FindingsInABox::Findings().setText(u"소견"_s);
        m_box->Press(u"출력"_s);
        QCOMPARE(m_box->Desk().shown, QStringList{u"출력하시겠습니까?"_s});
        QCOMPARE(m_box->Value(u"SELECT caso_sogyon AS v FROM caso"_s), u"소견"_s);
        frmCapSogyon& screen = Form<frmCapSogyon>();
        const QSize usual = screen.size();
        jobs->present(u"<b>프린터 X</b>"_s);
        QCOMPARE(screen.findChild<QLabel*>(u"noticeText"_s)->text(), u"<b>프린터 X</b>"_s);
        // The remark stays whole.
        QVERIFY(screen.findChild<NoticeStrip*>()->y() >= usual.height() && screen.height() > usual.height());
        screen.findChild<QPushButton*>(u"noticeOffer"_s)->click();
        QVERIFY(!screen.findChild<NoticeStrip*>()->isVisibleTo(&screen));
        QCOMPARE(screen.size(), usual);
    }

    void ThePreviewPrintsOrNot_data()
    {
        Columns<QString, int>("button", "pages");
        QTest::newRow("print") << u"printViewPrint"_s << 2;
        QTest::newRow("cancel") << u"printViewCancel"_s << 0;
        QTest::newRow("window closed") << QString() << 0;
    }

    void ThePreviewPrintsOrNot()
    {
        QFETCH2(QString, button, int, pages);
        ClientSetup.PrintPreview = true;
        const auto end = qScopeGuard([] { ClientSetup.PrintPreview = false; });
        FindingsInABox::Findings().setText(Lines(26, u"소견 "_s));
        QStringList positions;
        QList<QImage> sheets;
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&] {
            const StationForm* open = LastSeenForm();
            if (open == nullptr || open->objectName() != QString::fromUtf16(frmPrintView::FormName))
                return;
            timer.stop();
            auto& view = Form<frmPrintView>();
            const auto look = [&] {
                positions << view.findChild<QLabel*>(u"printViewPosition"_s)->text();
                sheets << view.findChild<QLabel*>(u"printViewSheet"_s)->pixmap().toImage();
            };
            look();
            view.findChild<QPushButton*>(u"printViewOn"_s)->click();
            look();
            view.findChild<QToolButton*>(u"printViewWidth"_s)->click();
            look();
            button.isEmpty() ? view.Unload() : view.findChild<QPushButton*>(button)->click();
        });
        timer.start(0);
        m_box->Press(u"출력"_s);
        QCOMPARE(positions, (QStringList{u"1 / 2"_s, u"2 / 2"_s, u"2 / 2"_s}));
        QVERIFY(sheets[0].size() == sheets[1].size() && sheets[0] != sheets[1]);
        QVERIFY(sheets[2].width() > sheets[1].width());
        const PdfPages printed(m_folder->path());
        QCOMPARE(printed.Files().size(), pages);
        QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM caso"_s), u"1"_s);
        if (pages > 0) {
            const QString text = printed.Text(1).remove(u' ');
            QVERIFY2(text.contains(u"페이지번호:2/2"_s), qPrintable(text));
            const QSize size = sheets[1].size();
            const QRect paper = Ink(printed.Picture(1, 144).scaled(size, {}, Qt::SmoothTransformation));
            const QRect shown = Ink(sheets[1]);
            QVERIFY((paper.topLeft() - shown.topLeft()).manhattanLength() < 4);
            QVERIFY((paper.bottomRight() - shown.bottomRight()).manhattanLength() < 4);
        }
    }

    void ALongReportCanBeBrokenOff()
    {
        FindingsInABox::Findings().setText(Lines(10000, u"줄 "_s));
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [] {
            auto* progress = Form<frmCapSogyon>().findChild<QProgressDialog*>(u"printProgress"_s);
            if (progress != nullptr && progress->value() >= 3)
                progress->cancel();
        });
        timer.start(0);
        m_box->Press(u"출력"_s);
        const qsizetype pages = PdfPages(m_folder->path()).Files().size();
        QVERIFY2(pages >= 3 && pages < 400, qPrintable(QString::number(pages)));
        QCOMPARE(FindingsRecord.SogyonLines.size(), 10001);
    }

private:
    std::unique_ptr<FindingsInABox> m_box;
    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_MAIN(FindingsPrintTest)
#include "FindingsPrintTest.moc"
