#include "FindingsInABox.h"

#include "findings/findings_rows.h"

using namespace Qt::StringLiterals;

class FindingsRecordTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data() { FindingsInABox::AddEngines(); }

    void init()
    {
        QFETCH_GLOBAL(QString, driver);
        m_box = std::make_unique<FindingsInABox>(driver);
        m_box->AddPicture(VisitContext.Ymd, VisitContext.Etc, 1);
    }
    void cleanup() { m_box.reset(); }

    void NumbersCountThroughTheYearOfTheCapture()
    {
        m_box->AddReport(u"2025000007"_s, u"00000001"_s, u"가"_s);
        m_box->Open();
        QCOMPARE(FindingsInABox::TextOf(u"txtYeonNo"_s), u"2026-000001"_s);
        Store(u"첫째"_s);
        QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM caso WHERE caso_yeonno = '2026000001'"_s), u"1"_s);
        QCOMPARE(NextFindingsNumber(u"2026"_s), u"2026000002"_s);
        QCOMPARE(NextFindingsNumber(u"2025"_s), u"2025000008"_s);
    }

    void TextsComeBackUnchanged_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("blanks and line ends") << u"  첫줄\r\n\r\n둘째  \r\n"_s;
        QTest::newRow("line feeds") << u"a\nb\n"_s;
        QTest::newRow("quotes") << u"it's ''ok'' \"x\" \\' \\\\ ; DROP TABLE caso; -- %_"_s;
        QTest::newRow("beyond the first plane") << u"각 뷁 \U0001F600 \u00a0 −"_s;
    }

    void TextsComeBackUnchanged()
    {
        QFETCH(QString, text);
        m_box->Open();
        FindingsInABox::Findings().setText(text);
        FindingsInABox::Remark().setText(text);
        m_box->Press(u"저장"_s);
        QCOMPARE(FindingsInABox::Findings().Text(), QString());
        m_box->Open();
        QCOMPARE(FindingsInABox::Findings().Text(), text);
        QCOMPARE(FindingsRecord.Bigo, text);
        m_box->Press(u"저장"_s);
        QCOMPARE(m_box->Value(u"SELECT caso_sogyon AS v FROM caso"_s), text);
    }

    void TwoStationsWithOneNumber()
    {
        m_box->Open();
        m_box->AddReport(u"2026000001"_s, u"00000077"_s, u"남의 보고"_s);
        Store(u"내 소견"_s);
        QCOMPARE(m_box->Desk().shown.last(), u"다른 곳에서 같은 번호를 사용하여 새 번호로 저장합니다.!!"_s);
        QCOMPARE(Findings(u"2026000001"_s), u"  정상."_s);
        QCOMPARE(Findings(u"2026000002"_s), u"내 소견"_s);

        m_box->Open();
        m_box->Press(u"삭제"_s);
        m_box->AddReport(u"2026000002"_s, u"00000078"_s, u"또 남의 보고"_s);
        Store(u"다시"_s);
        QCOMPARE(Findings(u"2026000002"_s), u"  정상."_s);
        QCOMPARE(Findings(u"2026000003"_s), u"다시"_s);
    }

    void AReportKeepsItsNumberWithAnotherDoctor()
    {
        m_box->Open();
        Store(u"하나"_s);
        m_box->Open();
        auto* doctors = Form<frmCapSogyon>().findChild<QComboBox*>(u"cmbJinchal"_s);
        doctors->setCurrentIndex(1);
        Q_EMIT doctors->activated(1);
        Store(u"둘"_s);
        QCOMPARE(m_box->Desk().shown, QStringList{u"저장하시겠습니까?"_s});
        QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM caso"_s), u"1"_s);
        QCOMPARE(m_box->Value(u"SELECT caso_jinchal AS v FROM caso"_s), u"12"_s);
    }

    void ARowThatStandsUnderTheNumber_data()
    {
        Columns<QString, QString>("findings", "rows");
        QTest::newRow("sent before, the answer lost") << u"내 소견"_s << u"1"_s;
        QTest::newRow("of the same visit, by another station") << u"남의 소견"_s << u"2"_s;
    }

    void ARowThatStandsUnderTheNumber()
    {
        QFETCH(QString, findings);
        m_box->Open();
        FindingsInABox::Findings().setText(u"내 소견"_s);
        m_box->Desk().whileShown = [&] {
            m_box->Desk().whileShown = {};
            m_box->Run(u"INSERT INTO caso VALUES ('2026000001', '00001234', '01', '20261124', '홍길동', "
                       "'800101-1234567', '11', '위내시경', 1, 0, 0, 0, 0, 0, '%1', '', '20261124', '10001', '나누리', "
                       "'11100001', '나래의원');"_s.arg(findings));
        };
        m_box->Press(u"저장"_s);
        QCOMPARE(Findings(u"2026000001"_s), findings);
        QTEST(m_box->Value(u"SELECT COUNT(*) AS v FROM caso"_s), "rows");
        QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM caso WHERE caso_sogyon = '내 소견'"_s), u"1"_s);
    }

    /// What stands on an emptied screen isn't the report.
    void ABlankScreen_data()
    {
        Columns<QString, QString, std::deque<bool>, QString>("cleared", "button", "answers", "stored");
        const QString kept = u"먼저"_s;
        QTest::newRow("save, no") << u"취소"_s << u"저장"_s << std::deque{true, false} << kept;
        QTest::newRow("save, yes") << u"취소"_s << u"저장"_s << std::deque{true, true} << u"한 줄"_s;
        QTest::newRow("save after a save") << u"저장"_s << u"저장"_s << std::deque{true, false} << kept;
        QTest::newRow("print") << u"취소"_s << u"출력"_s << std::deque{true, false} << kept;
        QTest::newRow("close") << u"취소"_s << u"종료"_s << std::deque{true, false} << kept;
        QTest::newRow("its row is gone") << u"삭제"_s << u"저장"_s << std::deque{true} << u"한 줄"_s;
    }

    void ABlankScreen()
    {
        QFETCH4(QString, cleared, QString, button, std::deque<bool>, answers, QString, stored);
        m_box->Open();
        Store(u"먼저"_s);
        m_box->Open();
        m_box->Press(cleared);
        FindingsInABox::Findings().setText(u"한 줄"_s);
        m_box->Press(button, answers);
        QCOMPARE(m_box->Desk().shown.size(), static_cast<qsizetype>(answers.size()));
        if (answers.size() > 1)
            QCOMPARE(m_box->Desk().shown[1],
                     u"화면이 비어 있습니다. 2026000001번 홍길동님의 소견서를 이 내용으로 바꾸시겠습니까?"_s);
        QCOMPARE(Findings(u"2026000001"_s), stored);
        QCOMPARE(FindingsInABox::Findings().Text(), answers.back() ? QString() : u"한 줄"_s);
    }

    /// Two stations have opened one report; the other one was quicker.
    void TheOtherStationWasQuicker_data()
    {
        Columns<QString, std::deque<bool>, QString, QString, bool>("change", "answers", "stored", "shown", "asked");
        const QString theirs = u"UPDATE caso SET caso_sogyon = '남의 글'"_s;
        const QString mine = u"내 글"_s;
        QTest::newRow("nothing has changed") << QString() << std::deque{true} << mine << QString() << false;
        QTest::newRow("mine") << theirs << std::deque{true, true} << mine << QString() << true;
        QTest::newRow("theirs") << theirs << std::deque{true, false} << u"남의 글"_s << u"남의 글"_s << true;
        QTest::newRow("neither") << theirs << std::deque{true} << u"남의 글"_s << mine << true;
        QTest::newRow("a blank at the end")
            << u"UPDATE caso SET caso_bigo = ' '"_s << std::deque{true} << u"먼저"_s << mine << true;
        QTest::newRow("another doctor") << u"UPDATE caso SET caso_jinchal = '12'"_s << std::deque{true, true} << mine
                                        << QString() << true;
        QTest::newRow("deleted, mine") << u"DELETE FROM caso"_s << std::deque{true, true} << mine << QString() << true;
        QTest::newRow("deleted, theirs") << u"DELETE FROM caso"_s << std::deque{true, false} << QString() << QString()
                                         << true;
    }

    void TheOtherStationWasQuicker()
    {
        QFETCH4(QString, change, std::deque<bool>, answers, QString, stored, QString, shown);
        m_box->Open();
        Store(u"먼저"_s);
        m_box->Open();
        m_box->Run(change + u';');
        FindingsInABox::Findings().setText(u"내 글"_s);
        m_box->Press(u"저장"_s, answers);
        QTEST(m_box->Desk().shown.contains(u"다른 곳에서 이 소견서를 고쳤습니다. 내 것으로 저장하시겠습니까?"_s),
              "asked");
        QCOMPARE(Findings(u"2026000001"_s), stored);
        QCOMPARE(FindingsInABox::Findings().Text(), shown);
        // What gave way comes back when the report is opened the next time.
        const bool gaveWay = answers.size() == 2 && !answers.back();
        if (shown == u"내 글")
            return;
        m_box->Desk().answers = {true};
        m_box->Open();
        QCOMPARE(m_box->Desk().shown.contains(u"저장하지 않은 소견이 있습니다. 다시 불러올까요?"_s), gaveWay);
        QCOMPARE(FindingsInABox::Findings().Text(), u"내 글"_s);
        if (gaveWay) {
            m_box->Press(u"저장"_s);
            QCOMPARE(Findings(u"2026000001"_s), u"내 글"_s);
        }
    }

    void NoNumberBehindTheGreatest()
    {
        m_box->AddReport(u"2026000001A"_s, u"00000001"_s, u"가"_s);
        m_box->Open();
        m_box->AddReport(u"2026000001"_s, u"00000077"_s, u"남의 보고"_s);
        Store(u"내 소견"_s);
        QCOMPARE(m_box->Desk().shown.size(), 2);
        QVERIFY2(m_box->Desk().shown.last().contains(u"2026000001A"_s), qPrintable(m_box->Desk().shown.last()));
        QCOMPARE(FindingsInABox::Findings().Text(), u"내 소견"_s);
        // Nor is the other report deleted in the place of this one.
        m_box->Press(u"삭제"_s);
        QCOMPARE(Findings(u"2026000001"_s), u"  정상."_s);
        QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM caso"_s), u"2"_s);
    }

    void NothingIsLostWhenTheDatabaseRefuses()
    {
        m_box->Open();
        FindingsInABox::Findings().setText(u"긴 소견"_s);
        m_box->Run(u"ALTER TABLE caso RENAME TO caso_gone;"_s);
        m_box->Press(u"저장"_s);
        QCOMPARE(m_box->Desk().shown.size(), 2);
        QCOMPARE(FindingsInABox::Findings().Text(), u"긴 소견"_s);
        QCOMPARE(FindingsRecord.Sogyon, QString());
        m_box->Press(u"종료"_s);
        QVERIFY(!Form<frmCapSogyon>().IsUnloaded());
        m_box->Run(u"ALTER TABLE caso_gone RENAME TO caso;"_s);
        m_box->Press(u"종료"_s);
        QCOMPARE(Findings(u"2026000001"_s), u"긴 소견"_s);
    }

    /// A station that is killed at any moment leaves no row without a patient and a text.
    void ANumberIsTakenByAWholeRow()
    {
        m_box->Open();
        m_box->Run(RefusalOfBareRows());
        Store(u"소견"_s);
        QCOMPARE(Findings(u"2026000001"_s), u"소견"_s);
    }

private:
    void Store(const QString& text)
    {
        FindingsInABox::Findings().setText(text);
        m_box->Press(u"저장"_s);
    }
    QString Findings(const QString& number)
    {
        return m_box->Value(u"SELECT caso_sogyon AS v FROM caso WHERE caso_yeonno = '%1'"_s.arg(number));
    }
    static QString RefusalOfBareRows()
    {
        QFETCH_GLOBAL(QString, driver);
        const QString bare = u"(caso_chart = '' OR caso_suname = '' OR IFNULL(caso_sogyon, '') = '')"_s;
        return driver == u"QSQLITE"_s
                   ? u"CREATE TRIGGER bare BEFORE INSERT ON caso WHEN %1 BEGIN SELECT "
                     "RAISE(ABORT, 'bare'); END;"_s.arg(QString(bare).replace(u"caso_"_s, u"NEW.caso_"_s))
                   : u"ALTER TABLE caso ADD CONSTRAINT bare CHECK (NOT %1);"_s.arg(bare);
    }

    std::unique_ptr<FindingsInABox> m_box;
};

QTEST_MAIN(FindingsRecordTest)
#include "FindingsRecordTest.moc"
