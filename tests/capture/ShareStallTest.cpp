#include "contracts/files.h"
#include "filing/NumberClaim.h"
#include "frame/waiting.h"
#include "platform/files/posix_files.h"
#include "platform/sql/register_sql.h"
#include "screenparts/NoticeStrip.h"
#include "support/CaptureScreen.h"
#include "support/StoppableShare.h"

#include <csignal>

using namespace Qt::StringLiterals;

namespace {

QStringList SpoolFiles(const ScriptedDesktop& desk)
{
    return QDir(desk.ProgramFolder()).entryList({u"Spool-*"_s}, QDir::Files | QDir::Hidden, QDir::Name);
}

int DieAtSpoolFile(const char* path)
{
    if (QByteArray(path).contains("/Spool-"))
        std::raise(SIGKILL);
    return unlink(path);
}

/// A station of its own whose share stands still while it takes three pictures. It dies with them in the spool, or,
/// once the share answers, when the first one has been filed and its spool file is about to go.
int RunDyingStation(const QStringList& arguments)
{
    ScriptedDesktop::Install().folder = arguments[2];
    RegisterFiles();
    RegisterSql();
    DatabaseSettings settings;
    settings.driver = u"QSQLITE"_s;
    settings.name = arguments[3];
    Connection = OpenConnection(settings);
    const pid_t server = arguments[5].toInt();
    const bool diesMoving = arguments[6] == u"moving"_s;
    if (diesMoving)
        posix_files::calls.unlink = DieAtSpoolFile;
    Visit visit{u"00001234"_s, u"01"_s, u"20261124"_s, u"위내시경"_s, arguments[4], u"jpg"_s};
    StillFiling filing([](const Visit&) { return std::optional(TypedNote{u"쓰던 글"_s, {}}); });
    StoppableShare::StopServer(server);
    for (const char* content : {"one", "two", "three"})
        filing.Stills().File({visit, PictureOrigin::Press, [content] { return QByteArray(content); },
                              [](const QByteArray&) {}, [](int, std::exception_ptr) {}});
    if (!QTest::qWaitFor([&] { return filing.Stills().Waiting() == 3 && filing.Stills().UnderWay() == 0; }, 20000))
        return 1;
    if (!diesMoving)
        std::raise(SIGKILL);
    kill(server, SIGCONT);
    QTest::qWait(20000);
    return 1;
}

} // namespace

/// The capture screen while its share stands still.
class ShareStallTest : public QObject
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
        m_box = std::make_unique<StationInABox>();
        m_share = std::make_unique<StoppableShare>(NativePath(m_box->Root()).chopped(1));
        m_visit = CurrentVisit();
    }
    void cleanup()
    {
        m_share->Resume();
        for (StationForm* form : LoadedForms())
            form->Unload();
        m_share.reset();
        m_box.reset();
    }

    void PressesAreKeptInOrder()
    {
        frmCapture& screen = OpenWithOneStill();
        m_share->Stop();
        QList<int> frames;
        for (int press = 0; press < 4; ++press) {
            frames << FakeVideoCap::Last()->frames + 1;
            screen.findChild<QToolButton*>(u"캡쳐"_s)->click();
        }
        QTRY_COMPARE(Numbers(), u"001 대기 대기 대기 대기"_s);
        QCOMPARE(SpoolFiles(m_box->Desk()).size(), 4);
        for (const QString& name : SpoolFiles(m_box->Desk()))
            QCOMPARE(QFile::permissions(m_box->Desk().ProgramFolder() + u'/' + name) & 0x77, QFile::Permissions());
        const QLabel& strip = *screen.findChild<QLabel*>(u"noticeText"_s);
        QCOMPARE(strip.text(), u"저장 폴더가 응답하지 않습니다. 그림은 이 컴퓨터에 보관되고 있습니다. (4장 대기)"_s);
        QVERIFY(strip.isVisible());
        // Behind them, although the share would take it.
        m_share->Resume();
        frames << FakeVideoCap::Last()->frames + 1;
        screen.findChild<QToolButton*>(u"캡쳐"_s)->click();
        QTRY_COMPARE(Numbers(), u"001 002 003 004 005 006"_s);
        QTRY_COMPARE(m_box->Value(u"SELECT GROUP_CONCAT(cap_no) AS v FROM cap"_s), u"1,2,3,4,5,6"_s);
        QTRY_VERIFY(!strip.isVisible());
        for (int at = 0; at < frames.size(); ++at)
            QCOMPARE(FakeVideoCap::FrameNumber(m_box->PicturePath(Day, Stomach, at + 2)), frames[at]);
        QVERIFY(SpoolFiles(m_box->Desk()).isEmpty());
        QTRY_COMPARE(m_box->Names(u"2026"_s, Stomach).size(), 6); // no claim
        QVERIFY(m_box->Desk().shown.isEmpty());
    }

    void ADeletedOneIsFiledNoMore()
    {
        frmCapture& screen = OpenWithOneStill();
        m_share->Stop();
        for (int press = 0; press < 3; ++press)
            screen.findChild<QToolButton*>(u"캡쳐"_s)->click();
        QTRY_COMPARE(Numbers(), u"001 대기 대기 대기"_s);
        m_box->Desk().answers = {true, true};
        // The first of them is in the hands of the share.
        ChooseOver(1, 2, 1, u"그림지우기"_s);
        ChooseOver(1, 3, 1, u"그림지우기"_s);
        QCOMPARE(Numbers(), u"001 대기"_s);
        m_share->Resume();
        QTRY_VERIFY(!Numbers().contains(u"대기"_s));
        AwaitStills();
        QTRY_COMPARE(m_box->Names(u"2026"_s, Stomach).size(), 2);
        QTRY_VERIFY(SpoolFiles(m_box->Desk()).isEmpty());
        QCOMPARE(m_box->Value(u"SELECT GROUP_CONCAT(cap_no) AS v FROM cap"_s), u"1,2"_s);
    }

    void AFullSpoolRefuses()
    {
        frmCapture& screen = OpenWithOneStill();
        m_share->Stop();
        screen.findChild<QToolButton*>(u"캡쳐"_s)->click();
        QTRY_COMPARE(Numbers(), u"001 대기"_s);
        m_box->FaultyFiles().freeBytes = 900'000'000;
        screen.findChild<QToolButton*>(u"캡쳐"_s)->click();
        QTRY_COMPARE(m_box->Desk().shown.size(), 1);
        QVERIFY(m_box->Desk().shown[0].startsWith(u"저장 폴더가 응답하지 않고"_s));
        QCOMPARE(Numbers(), u"001 대기"_s);
    }

    void AStationThatDiesLosesNoneAndDoublesNone_data()
    {
        QTest::addColumn<QString>("when");
        QTest::newRow("with pictures in the spool") << u"spooled"_s;
        QTest::newRow("while one is moved") << u"moving"_s;
    }

    void AStationThatDiesLosesNoneAndDoublesNone()
    {
        QFETCH(QString, when);
        QProcess process;
        process.setProcessChannelMode(QProcess::ForwardedChannels);
        process.start(QCoreApplication::applicationFilePath(),
                      {u"station"_s, m_box->Desk().ProgramFolder(), m_box->Database().Settings().name,
                       m_visit.captureDir, QString::number(m_share->Process()), when});
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitStatus(), QProcess::CrashExit);
        m_share->Resume();
        frmCapture& screen = OpenScreen();
        QTRY_COMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM cap"_s), u"3"_s);
        AwaitStills();
        QTRY_COMPARE(m_box->Names(u"2026"_s, Stomach).size(), 3);
        // A claim that the kernel brought to the share behind the station's death may have taken a number.
        QStringList contents;
        for (const QString& name : m_box->Names(u"2026"_s, Stomach))
            contents << QString::fromUtf8(Files().ReadFile(m_visit.SectionFolder() + name));
        QCOMPARE(contents, (QStringList{u"one"_s, u"two"_s, u"three"_s}));
        QVERIFY(SpoolFiles(m_box->Desk()).isEmpty());
        QCOMPARE(m_box->Value(u"SELECT ca_chamgo AS v FROM ca"_s), u"쓰던 글"_s);
        QCOMPARE(screen.sprCap(1).DataRowCnt(), 2);
    }

    void ACommandIsGivenUpAndTheScreenCloses()
    {
        frmCapture& screen = OpenWithOneStill();
        QAbstractButton& cancel = *screen.findChild<QAbstractButton*>(u"noticeCancel"_s);
        QTimer operating;
        bool pressed = false;
        connect(&operating, &QTimer::timeout, this, [&] {
            if (screen.findChild<QLabel*>(u"noticeText"_s)->isVisible() && !std::exchange(pressed, true))
                screen.findChild<QToolButton*>(u"캡쳐"_s)->click();
            if (cancel.isVisible()) {
                operating.stop();
                cancel.click();
            }
        });
        operating.start(20);
        m_share->Stop();
        m_box->Desk().answers = {true};
        ChooseOver(1, 1, 1, u"그림지우기"_s);
        QCOMPARE(m_box->Desk().shown.value(1), u"저장 폴더가 응답하지 않아 작업을 취소하였습니다.!!"_s);
        QTRY_COMPARE(Numbers(), u"001 대기"_s);
        m_box->Desk().shown.clear();
        screen.close();
        QVERIFY(m_box->Desk().ended);
        QCOMPARE(m_box->Desk().shown.size(), 1);
        QVERIFY(m_box->Desk().shown[0].startsWith(u"캡쳐 1건"_s));
        QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM cap"_s), u"1"_s);
    }

private:
    /// Under the pictures of the visit's grid.
    static QString Numbers()
    {
        QStringList numbers;
        fpSpread& grid = opened->sprCap(1);
        for (int row = 2; row <= grid.DataRowCnt(); row += 2) {
            for (const int column : PictureColumns(1))
                numbers << CellText(grid, column, row);
        }
        numbers.removeAll(QString());
        return numbers.join(u' ');
    }

    std::unique_ptr<StationInABox> m_box;
    std::unique_ptr<StoppableShare> m_share;
    Visit m_visit;
};

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.value(1) == u"station"_s)
        return RunDyingStation(arguments);
    ShareStallTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "ShareStallTest.moc"
