#include "contracts/MSComm.h"
#include "filing/NumberClaim.h"
#include "frame/waiting.h"
#include "screenparts/NoticeStrip.h"
#include "support/CaptureScreen.h"
#include "support/PseudoTerminal.h"

using namespace Qt::StringLiterals;

/// The capture screen while its server stands still: it takes statements, and answers none.
class DatabaseStallTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        ShowWaitsOnForms();
        waiting::cancelledAfterMs = 2 * waiting::ShownAfterMs;
    }
    void init()
    {
        m_box = std::make_unique<StationInABox>(u"QMARIADB"_s);
        m_visit = CurrentVisit();
        // Tells of each row that came in, in which order it came.
        m_box->Run(u"CREATE TABLE came (place INT AUTO_INCREMENT PRIMARY KEY, no INT); CREATE TRIGGER note_row "
                   "AFTER INSERT ON cap FOR EACH ROW INSERT INTO came (no) VALUES (NEW.cap_no);"_s);
    }
    void cleanup()
    {
        StationInABox::Server().Thaw();
        m_box.reset();
    }

    void SixPressesOfTheFootAreSixStills()
    {
        QTemporaryDir folder;
        const QString device = folder.filePath(u"switch"_s);
        PseudoTerminal cable(device);
        UseService<SerialPortOptions>().UseDevices({{u"1"_s, device}});
        frmCapture& screen = OpenWithOneStill();
        StationInABox::Server().Freeze();
        MSComm& port = *screen.findChild<MSComm*>(u"commCapture"_s);
        for (int still = 2; still <= 7; ++still) {
            const int frame = FakeVideoCap::Last()->frames + 1;
            cable.Send("1");
            const QString picture = m_box->PicturePath(Day, Stomach, still);
            QTRY_VERIFY(FileExists(picture));
            QCOMPARE(FakeVideoCap::FrameNumber(picture), frame);
            // The foot is let in again when the screen has heard of the file.
            QTRY_VERIFY(!port.PortOpen());
            QTRY_VERIFY(port.PortOpen());
        }
        QTRY_COMPARE(Mark(7), u"기록 대기"_s);
        QCOMPARE(Mark(1) + Mark(2), u"기록 대기"_s);
        const QLabel& strip = *screen.findChild<QLabel*>(u"noticeText"_s);
        QCOMPARE(strip.text(), u"데이터베이스가 응답하지 않습니다. 그림은 파일로 저장되고 있습니다. (6장 대기)"_s);
        QVERIFY(strip.isVisible());
        StationInABox::Server().Thaw();
        QTRY_COMPARE(Mark(7), QString());
        QTRY_VERIFY(!strip.isVisible());
        QCOMPARE(Came(), u"1,2,3,4,5,6,7"_s);
        QVERIFY(m_box->Desk().shown.isEmpty());
        AwaitStills();
        QTRY_VERIFY(!NumberClaim::Stands(m_visit, 7));
    }

    void ACommandIsGivenUp_data()
    {
        QTest::addColumn<QString>("how");
        QTest::newRow("by the strip's button") << u"cancel"_s;
        QTest::newRow("by closing the screen") << u"close"_s;
    }

    void ACommandIsGivenUp()
    {
        QFETCH(QString, how);
        frmCapture& screen = OpenWithOneStill();
        screen.txtCapChamgo().insertPlainText(u"쓰던 글"_s);
        const bool closes = how == u"close"_s;
        QAbstractButton& cancel = *screen.findChild<QAbstractButton*>(u"noticeCancel"_s);
        QTimer operating;
        bool isPressed = false;
        connect(&operating, &QTimer::timeout, this, [&] {
            // The shutter goes on in the wait.
            if (!std::exchange(isPressed, true))
                screen.findChild<QToolButton*>(u"캡쳐"_s)->click();
            if (!cancel.isVisible())
                return;
            operating.stop();
            closes ? m_box->Desk().leaveWait() : cancel.click();
        });
        operating.start(20);
        StationInABox::Server().Freeze();
        Press(u"저장"_s);
        QCOMPARE(m_box->Names(u"2026"_s, Stomach).filter(u".jpg"_s).size(), 2);
        QCOMPARE(m_box->Desk().shown,
                 closes ? QStringList() : QStringList{u"데이터베이스가 응답하지 않아 작업을 취소하였습니다.!!"_s});
        m_box->Desk().shown.clear();
        if (closes) {
            screen.close();
            QCOMPARE(m_box->Desk().shown.size(), 1);
            QVERIFY(m_box->Desk().shown[0].startsWith(u"캡쳐 1건의 기록을"_s));
            QVERIFY(m_box->Desk().ended);
            return;
        }
        StationInABox::Server().Thaw();
        QTRY_COMPARE(Came(), u"1,2"_s);
        QCOMPARE(screen.txtCapChamgo().Text(), u"쓰던 글"_s);
    }

    void APictureThatIsDeletedComesInNoMore()
    {
        frmCapture& screen = OpenWithOneStill();
        StationInABox::Server().Freeze();
        for (int still = 2; still <= 3; ++still)
            screen.findChild<QToolButton*>(u"캡쳐"_s)->click();
        QTRY_COMPARE(Mark(3), u"기록 대기"_s);
        m_box->Desk().answers = {true};
        ChooseOver(1, 2, 1, u"그림지우기"_s);
        QVERIFY(!screen.PicturesOf(1).PlaceOf({{}, 2}));
        StationInABox::Server().Thaw();
        QTRY_COMPARE(Mark(3), QString());
        QTRY_VERIFY(!NumberClaim::Stands(m_visit, 2));
        QCOMPARE(m_box->Value(u"SELECT GROUP_CONCAT(cap_no ORDER BY cap_no) AS v FROM cap"_s), u"1,3"_s);
        QTRY_COMPARE(m_box->Names(u"2026"_s, Stomach).size(), 2); // the claim of the other goes last
    }

    void AnotherSectionGoesOnBehindWhatItsFolderHolds()
    {
        OpenWithOneStill();
        MakeFolder(SectionFolder(m_visit.captureDir, Colon));
        WriteWholeFile(m_box->PicturePath(Day, Colon, 7), "another station's");
        StationInABox::Server().Stop();
        ChooseSection(Colon);
        QCOMPARE(m_box->Desk().shown.size(), 1);
        Press(u"캡쳐"_s);
        QVERIFY(FileExists(m_box->PicturePath(Day, Colon, 8)));
        QCOMPARE(Mark(8), u"기록 대기"_s);
        QVERIFY(StationInABox::Server().Start());
        QTRY_COMPARE(Came(), u"1,8"_s);
    }

private:
    QString Came() { return m_box->Value(u"SELECT GROUP_CONCAT(no ORDER BY place) AS v FROM came"_s); }

    std::unique_ptr<StationInABox> m_box;
    Visit m_visit;
};

QTEST_MAIN(DatabaseStallTest)
#include "DatabaseStallTest.moc"
