#include "findings/frmSoFind.h"
#include "FindingsInABox.h"

using namespace Qt::StringLiterals;

class FindingsSearchTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data() { FindingsInABox::AddEngines(); }

    void init()
    {
        QFETCH_GLOBAL(QString, driver);
        m_box = std::make_unique<FindingsInABox>(driver);
        m_box->AddPicture(VisitContext.Ymd, VisitContext.Etc, 1);
        m_box->AddReport(u"2025000001"_s, u"00000123"_s, u"가을"_s, u"20250505"_s);
        m_box->AddReport(u"2026000001"_s, u"00000200"_s, u"나무"_s, u"20260303"_s);
        m_box->AddReport(u"2026000002"_s, u"00000100"_s, u"O''Brien"_s, u"20240404"_s);
    }
    void cleanup() { m_box.reset(); }

    void TheListOpensNewestFirstAndOpensTheRowChosen()
    {
        InList([](frmSoFind& list) {
            QCOMPARE(Numbers(list), (QStringList{u"2026-000002"_s, u"2026-000001"_s, u"2025-000001"_s}));
            QCOMPARE(list.sprSo().TextAt(5, 1), u"720505-1234567"_s);
            QCOMPARE(list.sprSo().TextAt(6, 1), u"2024-04-04"_s);
            Q_EMIT list.sprSo().DblClick(1, 3);
            QVERIFY(list.IsUnloaded());
        });
        QCOMPARE(FindingsInABox::TextOf(u"txtSuname"_s), u"가을"_s);
        QCOMPARE(FindingsInABox::TextOf(u"txtYeonNo"_s), u"2025-000001"_s);
        QCOMPARE(FindingsInABox::Findings().Text(), u"  정상."_s);
    }

    void EachColumnIsAKey_data()
    {
        Columns<int, int, QString, QStringList>("x", "key", "typed", "found");
        const QString first = u"2025-000001"_s;
        const QString second = u"2026-000001"_s;
        const QString third = u"2026-000002"_s;
        QTest::newRow("number") << 615 << 1 << u"2026"_s << QStringList{second, third};
        QTest::newRow("chart, padded") << 2085 << 2 << u"123"_s << QStringList{first, second};
        QTest::newRow("name") << 4679 << 4 << u"나"_s << QStringList{second};
        QTest::newRow("name with a quote") << 3555 << 4 << u"O'"_s << QStringList{third, first, second};
        QTest::newRow("date") << 7814 << 6 << u"20250505"_s << QStringList{first, second};
        QTest::newRow("nothing typed") << 6480 << 6 << u"  "_s << QStringList{third, second, first};
        QTest::newRow("row numbers") << 614 << 0 << QString() << QStringList{};
        QTest::newRow("right of the columns") << 7815 << 0 << QString() << QStringList{};
    }

    void EachColumnIsAKey()
    {
        QFETCH4(int, x, int, key, QString, typed, QStringList, found);
        InList([&](frmSoFind& list) {
            QTRY_VERIFY(list.isActiveWindow());
            Q_EMIT list.sprSo().RightClick(0, 1, 1, x, 256);
            QCOMPARE(ShownBox(list), nullptr);
            Q_EMIT list.sprSo().RightClick(0, 1, 0, x, 255);
            QLineEdit* box = ShownBox(list);
            QCOMPARE(box == nullptr, key == 0);
            if (box == nullptr)
                return;
            QCOMPARE(box->objectName(), u"txtSoFind(%1)"_s.arg(key));
            QVERIFY(box->hasFocus());
            box->insert(typed);
            QTest::keyClick(box, Qt::Key_Return);
            QCOMPARE(ShownBox(list), nullptr);
            QStringList numbers = Numbers(list);
            // Rows with equal keys come in no particular order.
            if (key == 3 || key == 5)
                numbers.sort();
            QCOMPARE(numbers, found);
            QCOMPARE(list.sprSo().ActiveRow(), 1);
        });
    }

    void AReportDeletedMeanwhile()
    {
        InList([this](frmSoFind& list) {
            m_box->Run(u"DELETE FROM caso WHERE caso_yeonno = '2026000001';"_s);
            list.sprSo().SetActiveCell(1, 2);
            Q_EMIT list.sprSo().KeyDown(13, 0);
        });
        QCOMPARE(m_box->Desk().shown, QStringList{u"소견서가 존재하지 않습니다.!!"_s});
        QCOMPARE(FindingsRecord.Chart, u"0"_s);
        // Nothing of it can be stored.
        FindingsInABox::Findings().setText(u"소견"_s);
        m_box->Press(u"저장"_s);
        QCOMPARE(m_box->Desk().shown.size(), 2);
        QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM caso"_s), u"2"_s);
    }

    void ClosedWithoutAChoiceTheReportComesBack()
    {
        m_box->Open();
        m_box->Press(u"취소"_s);
        InList([](frmSoFind& list) { list.close(); });
        QCOMPARE(FindingsInABox::TextOf(u"txtYeonNo"_s), u"2026-000003"_s);
    }

    void RowsComeInWhileTheListIsShown_data()
    {
        QTest::addColumn<QString>("meanwhile");
        for (const char* what : {"nothing", "a search", "the close box", "a double click", "a fault"})
            QTest::newRow(what) << QString::fromLatin1(what);
    }

    void RowsComeInWhileTheListIsShown()
    {
        QFETCH(QString, meanwhile);
        QStringList rows;
        for (int number = 10; number < 20000; ++number)
            rows << u"('%1', '00000001')"_s.arg(2026000000 + number);
        m_box->Run(u"INSERT INTO caso (caso_yeonno, caso_chart) VALUES "_s + rows.join(u',') + u";"_s);
        const bool fails = meanwhile == u"a fault"_s;
        m_box->Open();
        // A number that is too great, in the last row but two.
        if (fails)
            m_box->Run(uR"(ALTER TABLE caso RENAME TO reports; CREATE VIEW caso AS SELECT caso_yeonno, caso_chart,
caso_yuhyung, caso_suname, abs(CASE caso_yeonno WHEN '2026000002' THEN -9223372036854775807 - 1 ELSE 0 END)
AS caso_jumin, caso_ymd, caso_jinchal, caso_etc FROM reports;)"_s);
        InList([&](frmSoFind& list) {
            QVERIFY(list.IsFilling());
            if (meanwhile == u"the close box"_s) {
                list.close();
                return;
            }
            if (meanwhile == u"a double click"_s) {
                Q_EMIT list.sprSo().DblClick(1, 2);
                QCOMPARE(FindingsRecord.Yeonno, u"2026019998"_s);
                return;
            }
            const bool searches = meanwhile == u"a search"_s;
            if (searches) {
                Q_EMIT list.sprSo().RightClick(0, 1, 0, 2085, 255);
                ShownBox(list)->insert(u"100"_s);
                QTest::keyClick(ShownBox(list), Qt::Key_Return);
            }
            list.sprSo().SetActiveCell(1, 3);
            QTRY_VERIFY(!list.IsFilling());
            QCOMPARE(list.sprSo().ActiveRow(), 3);
            const QString last = searches ? u"2026-000001"_s : fails ? u"2026-000010"_s : u"2025-000001"_s;
            const int written = searches ? 3 : fails ? 19990 : 19993;
            QCOMPARE(Numbers(list).size(), written);
            QCOMPARE(list.sprSo().MaxRows(), qMax(500, written));
            QCOMPARE(list.sprSo().TextAt(1, written), last);
        });
        QCOMPARE(m_box->Desk().shown.size(), fails ? 1 : 0);
    }

private:
    /// Opens the list by its button and runs `work` on it while it is shown.
    void InList(const std::function<void(frmSoFind&)>& work)
    {
        m_box->Open();
        m_worked = false;
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&] {
            if (QApplication::activeModalWidget() == nullptr)
                return;
            timer.stop();
            work(Form<frmSoFind>());
            m_worked = true;
            if (FindForm(u"frmSoFind"_s) != nullptr)
                Form<frmSoFind>().Unload();
        });
        timer.start(0);
        m_box->Press(u"조회"_s);
        QVERIFY(m_worked);
        QCOMPARE(FindForm(u"frmSoFind"_s), nullptr);
    }
    static QStringList Numbers(frmSoFind& list)
    {
        QStringList numbers;
        for (int row = 1; row <= list.sprSo().DataRowCnt(); ++row)
            numbers << list.sprSo().TextAt(1, row);
        return numbers;
    }
    static QLineEdit* ShownBox(frmSoFind& list)
    {
        for (QLineEdit* box : list.findChildren<QLineEdit*>()) {
            if (box->isVisible())
                return box;
        }
        return nullptr;
    }

    std::unique_ptr<FindingsInABox> m_box;
    bool m_worked = false;
};

QTEST_MAIN(FindingsSearchTest)
#include "FindingsSearchTest.moc"
