#include "capture/frmCapture.h"
#include "contracts/ImagXpress.h"
#include "findings/frmSoFind.h"
#include "findings/UpDownArrows.h"
#include "FindingsInABox.h"
#include "frame/guard.h"
#include "screenparts/fill_routines.h"

using namespace Qt::StringLiterals;

namespace {
const QString Earlier = u"20250301"_s;
} // namespace

class FindingsScreenTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_box = std::make_unique<FindingsInABox>();
        m_box->AddPicture(VisitContext.Ymd, VisitContext.Etc, 1);
    }
    void cleanup() { m_box.reset(); }

    void ANewReportTakesSixPicturesOfThreeColumns()
    {
        for (int number = 1; number <= 13; ++number)
            m_box->AddPicture(VisitContext.Ymd, VisitContext.Etc, number);
        m_box->Open();
        QCOMPARE(Numbers(), (QStringList{u"1"_s, u"2"_s, u"3"_s, u"6"_s, u"7"_s, u"8"_s}));
        QCOMPARE(FindingsInABox::TextOf(u"txtSuname"_s), u"홍길동"_s);
        QCOMPARE(FindingsInABox::TextOf(u"txtJumin"_s), u"800101-1234567"_s);
        QCOMPARE(FindingsInABox::TextOf(u"txtCaymd"_s), u"2026년 11월 24일"_s);
        QCOMPARE(FindingsInABox::TextOf(u"txtHospital"_s), u"나래의원"_s);
        QCOMPARE(Form<frmCapSogyon>().focusWidget(), &FindingsInABox::Findings());
    }

    void OnlyTickedPicturesOfTheHistoryCount()
    {
        for (int number = 1; number <= 8; ++number)
            m_box->AddPicture(VisitContext.Ymd, VisitContext.Etc, number);
        m_box->Fill(2);
        for (const QPoint& box : {QPoint(3, 1), QPoint(1, 3), QPoint(5, 3)}) {
            m_box->Grid().setCol(box.x());
            m_box->Grid().setRow(box.y());
            m_box->Grid().setCellType(CellTypeCheckBox);
            m_box->Grid().setValue(u"1"_s);
        }
        DeleteFile(m_box->PicturePath(VisitContext.Ymd, VisitContext.Etc, 4));
        m_box->Open(2);
        QCOMPARE(Numbers(), (QStringList{u"2"_s, u"6"_s}));
    }

    void PicturesThatAreGoneLeaveNoGapAndStayInTheRecord()
    {
        for (int number = 1; number <= 3; ++number)
            m_box->AddPicture(VisitContext.Ymd, VisitContext.Etc, number);
        m_box->Open();
        FindingsInABox::Findings().setText(u"소견"_s);
        m_box->Press(u"저장"_s);
        DeleteFile(m_box->PicturePath(VisitContext.Ymd, VisitContext.Etc, 2));
        m_box->Open();
        QCOMPARE(Numbers(), (QStringList{u"1"_s, u"3"_s}));
        QCOMPARE(FindingsRecord.PicNo[1], 2);
    }

    void DoctorsValidOnTheDay()
    {
        m_box->Open();
        auto& doctors = *Form<frmCapSogyon>().findChild<QComboBox*>(u"cmbJinchal"_s);
        QStringList entries;
        for (int entry = 0; entry < doctors.count(); ++entry)
            entries << doctors.itemText(entry);
        QCOMPARE(entries, (QStringList{u"11 나누리"_s, u"12 다온유"_s}));
        // A place of business that the setup doesn't have leaves the hospital's name.
        doctors.setCurrentIndex(1);
        Q_EMIT doctors.activated(1);
        QCOMPARE(FindingsInABox::TextOf(u"txtDoctor"_s), u"다온유"_s);
        QCOMPARE(FindingsInABox::TextOf(u"txtHospital"_s), u"나래의원"_s);
    }

    void KeysStepFromTheValueShown_data()
    {
        Columns<QString, QString, Qt::Key, QString>("list", "typed", "key", "value");
        QTest::newRow("month") << u"cmbPmm"_s << QString() << Qt::Key_Down << u"12"_s;
        QTest::newRow("day, typed") << u"cmbPdd"_s << u"7"_s << Qt::Key_Down << u"08"_s;
        QTest::newRow("doctor") << u"cmbJinchal"_s << QString() << Qt::Key_Up << u"11 나누리"_s;
    }

    void KeysStepFromTheValueShown()
    {
        QFETCH3(QString, list, QString, typed, Qt::Key, key);
        VisitContext.Jinchal = u"12"_s;
        auto& shown = *m_box->Open().findChild<QComboBox*>(list);
        if (!typed.isEmpty())
            shown.setEditText(typed);
        QTest::keyClick(&shown, key);
        QTEST(shown.currentText(), "value");
        const bool isDoctor = list == u"cmbJinchal";
        QCOMPARE(FindingsInABox::TextOf(u"txtDoctor"_s), isDoctor ? u"나누리"_s : u"다온유"_s);
        // Blue, and the print date orange.
        QCOMPARE(shown.lineEdit()->palette().color(QPalette::Text).rgb(), isDoctor ? 0xff0000ffU : 0xffa64100U);
    }

    void ClearedAfterEachCommand_data()
    {
        Columns<QString, bool, int, QString, QString>("button", "answer", "messages", "text", "left");
        QTest::newRow("save, no") << u"저장"_s << false << 1 << u"소견"_s << u"소견"_s;
        QTest::newRow("save, nothing typed") << u"저장"_s << true << 2 << u"  "_s << u"  "_s;
        QTest::newRow("delete, no") << u"삭제"_s << false << 1 << u"소견"_s << QString();
        QTest::newRow("cancel") << u"취소"_s << false << 0 << u"소견"_s << QString();
    }

    void ClearedAfterEachCommand()
    {
        QFETCH3(QString, button, bool, answer, QString, text);
        m_box->Open();
        FindingsInABox::Findings().setText(text);
        m_box->Press(button, {answer});
        QTEST(static_cast<int>(m_box->Desk().shown.size()), "messages");
        QTEST(FindingsInABox::Findings().Text(), "left");
        QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM caso"_s), u"0"_s);
        QCOMPARE(FindingsRecord.Yeonno, u"2026000001"_s);
    }

    void OpeningAgainNeverPutsATextUnderAnotherVisit_data()
    {
        Columns<std::deque<bool>, QString, QString, QString>("answers", "shown", "number", "stored");
        QTest::newRow("cancel") << std::deque<bool>{} << u"쓰던 소견"_s << u"2026-000001"_s << QString();
        QTest::newRow("let go") << std::deque{false} << QString() << u"2025-000001"_s << QString();
        QTest::newRow("stored first") << std::deque{true} << QString() << u"2025-000001"_s << u"20261124"_s;
    }

    void OpeningAgainNeverPutsATextUnderAnotherVisit()
    {
        QFETCH(std::deque<bool>, answers);
        m_box->AddPicture(Earlier, VisitContext.Etc, 1);
        m_box->Open();
        FindingsInABox::Findings().setText(u"쓰던 소견"_s);
        m_box->Open();
        QCOMPARE(m_box->Desk().shown, QStringList());
        VisitContext.Ymd = Earlier;
        VisitContext.CaptureDir = YearFolder(ClientSetup.CaptureRoot, Earlier);
        m_box->Desk().answers = answers;
        m_box->Fill(1);
        m_box->Open();
        QCOMPARE(m_box->Desk().shown, QStringList{u"홍길동님의 저장하지 않은 소견이 있습니다. 저장하시겠습니까?"_s});
        QTEST(FindingsInABox::Findings().Text(), "shown");
        QTEST(FindingsInABox::TextOf(u"txtYeonNo"_s), "number");
        QTEST(m_box->Value(u"SELECT caso_ymd AS v FROM caso"_s), "stored");
    }

    /// Closing loses no text that isn't stored whole.
    void AColumnThatIsTooShort()
    {
        m_box->Run(u"CREATE TRIGGER cut AFTER INSERT ON caso BEGIN UPDATE caso SET caso_sogyon = "
                   "substr(caso_sogyon, 1, 255); END;"_s);
        const QString text(300, u'가');
        m_box->Open();
        FindingsInABox::Findings().setText(text);
        m_box->Press(u"종료"_s);
        QCOMPARE(m_box->Desk().shown.last(), u"소견이(가) 길어 300자 중 255자만 저장되었습니다.!!"_s);
        QCOMPARE(FindingsInABox::Findings().Text(), text);
        m_box->Press(u"종료"_s, {false});
        QCOMPARE(FindForm(u"frmCapSogyon"_s), nullptr);
    }

    /// A text of a run that was killed.
    void ATextThatWasNotStoredComesBack_data()
    {
        Columns<bool, bool, QString>("isKilled", "isWanted", "shown");
        QTest::newRow("let go") << false << true << QString();
        QTest::newRow("killed") << true << true << u"쓰던 글"_s;
        QTest::newRow("killed, not wanted") << true << false << QString();
    }

    void ATextThatWasNotStoredComesBack()
    {
        QFETCH2(bool, isKilled, bool, isWanted);
        m_box->Open();
        FindingsInABox::Findings().setText(u"쓰던 글"_s);
        FindingsInABox::Remark().setFocus();
        QStringList drafts;
        QTRY_COMPARE((drafts = Drafts()).size(), 1);
        QCOMPARE(QFile::permissions(drafts.first()) &
                     ~(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser),
                 QFile::Permissions());
        const QString left = QString(drafts.first()).replace(u".json"_s, u".kept.json"_s);
        QVERIFY(!isKilled || QFile::copy(drafts.first(), left));
        m_box->Press(u"종료"_s, {false});
        QCOMPARE(Drafts(), isKilled ? QStringList{left} : QStringList());
        m_box->Desk().shown.clear();
        m_box->Desk().answers = {isWanted};
        m_box->Open();
        QCOMPARE(m_box->Desk().shown.size(), isKilled ? 1 : 0);
        QTEST(FindingsInABox::Findings().Text(), "shown");
        m_box->Press(u"저장"_s);
        m_box->Press(u"종료"_s);
        QCOMPARE(Drafts(), QStringList());
    }

    void AFaultLeavesAllAsItWas_data()
    {
        QTest::addColumn<std::function<void(FindingsScreenTest&)>>("work");
        using Work = std::function<void(FindingsScreenTest&)>;
        QTest::newRow("the list closed") << Work(
            [](FindingsScreenTest& test) { test.InList([](frmSoFind& list) { list.close(); }); });
        QTest::newRow("a report chosen") << Work(
            [](FindingsScreenTest& test) { test.InList([](frmSoFind& list) { Q_EMIT list.sprSo().DblClick(1, 1); }); });
        QTest::newRow("a doctor chosen") << Work([](FindingsScreenTest& test) {
            test.StopServer();
            auto* doctors = Form<frmCapSogyon>().findChild<QComboBox*>(u"cmbJinchal"_s);
            doctors->setCurrentIndex(1);
            Q_EMIT doctors->activated(1);
        });
        QTest::newRow("opened for another visit") << Work([](FindingsScreenTest& test) {
            test.StopServer();
            VisitContext.Ymd = Earlier;
            Guarded([&] { test.m_box->Open(); });
        });
    }

    void AFaultLeavesAllAsItWas()
    {
        QFETCH(std::function<void(FindingsScreenTest&)>, work);
        m_box->Open();
        FindingsInABox::Findings().setText(u"먼저 소견"_s);
        m_box->Press(u"저장"_s);
        m_box->AddReport(u"2026000002"_s, u"00000001"_s, u"가"_s);
        m_box->Open();
        m_box->Desk().shown.clear();
        const QStringList before = Texts();
        work(*this);
        QCOMPARE(m_box->Desk().shown.size(), 1);
        QVERIFY(FindForm(u"frmCapSogyon"_s) != nullptr);
        QCOMPARE(Texts(), before);
        m_box->Run(u"ALTER TABLE doctor_gone RENAME TO doctor;"_s);
        FindingsInABox::Findings().setText(u"나중 소견"_s);
        m_box->Press(u"저장"_s);
        QCOMPARE(m_box->Value(u"SELECT caso_sogyon || caso_jinchal || caso_doctor || caso_myonheo AS v FROM caso "
                              "WHERE caso_yeonno = '2026000001'"_s),
                 u"나중 소견11나누리10001"_s);
    }

    void APhraseIsAppended()
    {
        m_box->Open();
        FindingsInABox::Findings().setText(u"앞."_s);
        for (int time = 0; time < 2; ++time) {
            QTimer::singleShot(0, this, [] {
                QWidget* pad = QApplication::activeModalWidget();
                QTest::keyClicks(pad->findChild<QLineEdit*>(u"filter"_s), u"G002"_s);
                QTest::keyClick(pad->findChild<QLineEdit*>(u"filter"_s), Qt::Key_Return);
            });
            Form<frmCapSogyon>().findChild<QPushButton*>(u"cmdSoFind"_s)->click();
        }
        QCOMPARE(FindingsInABox::Findings().Text(), u"앞.위염 소견. 위염 소견. "_s);
    }

    void EarlierFindingsWithTheSameWords()
    {
        m_box->AddReport(u"2026000001"_s, u"00000001"_s, u"가"_s, u"20260101"_s);
        m_box->AddReport(u"2026000002"_s, u"00000002"_s, u"나"_s, u"20260202"_s);
        m_box->Run(u"UPDATE caso SET caso_sogyon = '100%_용종' WHERE caso_yeonno = '2026000001';"_s);
        m_box->Open();
        for (const auto& [text, number] :
             {std::pair(u"100%_"_s, u"2026-000001"_s), std::pair(u"정상."_s, u"2026-000002"_s)}) {
            FindingsInABox::Findings().setText(text);
            QStringList shown;
            QTimer::singleShot(0, this, [&shown] {
                QWidget* picker = QApplication::activeModalWidget();
                auto* list = picker->findChild<QListWidget*>(u"reports"_s);
                for (int row = 0; row < list->count(); ++row)
                    shown << list->item(row)->text();
                picker->close();
            });
            Form<frmCapSogyon>().findChild<QPushButton*>(u"cmdQry"_s)->click();
            QCOMPARE(shown.size(), 1);
            QVERIFY2(shown.first().contains(number), qPrintable(shown.first()));
        }
    }

    void FromTheCaptureScreen()
    {
        m_box->AddPicture(VisitContext.Ymd, VisitContext.Etc, 1, u""_s);
        m_box->AddPicture(Earlier, VisitContext.Etc, 4, u""_s);
        frmCapture& screen = Form<frmCapture>();
        screen.Show();
        screen.ShowStored();
        Trigger(screen.findChild<QToolButton*>(u"기타"_s)->menu());
        QCOMPARE(FindingsInABox::TextOf(u"txtCaymd"_s), u"2026년 11월 24일"_s);
        Q_EMIT screen.sprCap(3).DblClick(1, 2);
        screen.sprCap(2).setRow(1);
        screen.sprCap(2).setCol(1);
        screen.sprCap(2).setValue(u"1"_s);
        Trigger(screen.findChild<QMenu*>(u"팝업메뉴"_s));
        QCOMPARE(FindingsInABox::TextOf(u"txtCaymd"_s), u"2025년 03월 01일"_s);
        QCOMPARE(Numbers(), QStringList{u"4"_s});
    }

private:
    QStringList Drafts()
    {
        QStringList paths;
        for (const QFileInfo& file : QDir(m_box->Desk().ProgramFolder()).entryInfoList({u"TextDraft-*"_s}))
            paths << file.filePath();
        return paths;
    }
    void StopServer() { m_box->Run(u"ALTER TABLE doctor RENAME TO doctor_gone;"_s); }
    /// Opens the list, stops the server, and goes on in the list.
    void InList(const std::function<void(frmSoFind&)>& work)
    {
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&] {
            if (FindForm(u"frmSoFind"_s) == nullptr || !Form<frmSoFind>().isActiveWindow())
                return;
            timer.stop();
            StopServer();
            work(Form<frmSoFind>());
        });
        timer.start(1);
        m_box->Press(u"조회"_s);
    }
    /// All texts of screen and record.
    static QStringList Texts()
    {
        const auto& screen = Form<frmCapSogyon>();
        QStringList texts = Numbers();
        for (const QLineEdit* box : screen.findChildren<QLineEdit*>())
            texts << box->text();
        const FindingsRecordFields& record = FindingsRecord;
        return texts << FindingsInABox::Findings().Text() << record.Yeonno << record.Jinchal << record.Ymd
                     << record.Doctor << record.Myonheo << record.Sogyon << record.Saup;
    }
    static void Trigger(QMenu* menu)
    {
        for (QAction* action : menu->actions()) {
            if (action->objectName() == u"소견서입력"_s)
                action->trigger();
        }
    }
    /// Numbers under the pictures that show, up to the first empty place.
    static QStringList Numbers()
    {
        QStringList numbers;
        for (int slot = 1; slot <= 6; ++slot) {
            const auto& form = Form<frmCapSogyon>();
            const QString number = form.findChild<QLabel*>(u"lblSogyon(%1)"_s.arg(slot))->text();
            if (form.findChild<ImagXpress*>(u"imgSogyon(%1)"_s.arg(slot))->Picture().isNull() != number.isEmpty())
                return {u"picture and number differ"_s};
            if (!number.isEmpty())
                numbers << number;
        }
        return numbers;
    }

    std::unique_ptr<FindingsInABox> m_box;
};

QTEST_MAIN(FindingsScreenTest)
#include "FindingsScreenTest.moc"
