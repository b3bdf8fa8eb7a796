#include "pacs/PacsSending.h"
#include "platform/dicom/register_dicom.h"
#include "platform/files/LocalFiles.h"
#include "platform/sql/register_sql.h"
#include "screenparts/NoticeStrip.h"
#include "support/CaptureScreen.h"
#include "support/EditorInABox.h"
#include "support/PacsPeer.h"
#include "support/PacsServer.h"

#include <csignal>

using namespace Qt::StringLiterals;

namespace {

Visit VisitOfToday()
{
    return VisitOf(QString::fromUtf16(StationInABox::Chart), u"01"_s, Day, Stomach);
}

void NameServer(int port, bool sendsEachStill)
{
    RegisterDicom();
    ClientSetup.Pacs.Host = u"127.0.0.1"_s;
    ClientSetup.Pacs.Port = port;
    ClientSetup.Pacs.CalledAet = u"ANY-SCP"_s;
    ClientSetup.Pacs.CallingAet = u"TEST"_s;
    ClientSetup.Pacs.SendsEachStill = sendsEachStill;
    SaupTable = {{1, {u"31100001"_s, u"한국의원"_s}}};
}

/// What the strip of the screen opened last says; empty when it isn't there.
QString Notice()
{
    const auto* strip = opened->findChild<NoticeStrip*>();
    return strip->isHidden() ? QString() : strip->findChild<QLabel*>()->text();
}

/// A station that sends the visit's pictures until it is killed.
int RunStation(const QStringList& arguments)
{
    ScriptedDesktop::Install().folder = arguments[2];
    RegisterFiles();
    RegisterSql();
    DatabaseSettings settings;
    settings.driver = u"QSQLITE"_s;
    settings.name = arguments[3];
    Connection = OpenConnection(settings);
    ClientSetup.CaptureRoot = arguments[4];
    VisitContext.ImageExt = u"jpg"_s;
    NameServer(arguments[5].toInt(), false);
    PacsSending sending(ClientSetup.Pacs, SaupTable, Launched());
    sending.VisitIsStored(VisitOfToday(), {1, 2, 3, 4, 5, 6, 7, 8}, false);
    return QApplication::exec();
}

} // namespace

class PacsSendingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_box = std::make_unique<EditorInABox>();
        m_server = std::make_unique<PacsServer>();
    }
    void cleanup()
    {
        m_box.reset();
        m_server.reset();
    }

    /// From the press to the server: what is deleted before it goes never goes, what the server has isn't sent twice.
    void AVisitGoes_data()
    {
        Columns<bool, bool, QList<int>>("each", "isThere", "come");
        QTest::newRow("when it is stored") << false << true << QList<int>{1, 3};
        QTest::newRow("each still") << true << true << QList<int>{1, 2, 3};
        QTest::newRow("when the server comes") << false << false << QList<int>{1, 3};
        QTest::newRow("each still, when the server comes") << true << false << QList<int>{1, 3};
    }

    void AVisitGoes()
    {
        QFETCH3(bool, each, bool, isThere, QList<int>, come);
        NameServer(m_server->Port(), each);
        if (isThere)
            m_server->Start();
        OpenWithOneStill();
        Press(u"캡쳐"_s);
        Press(u"캡쳐"_s);
        if (each)
            QTRY_COMPARE_WITH_TIMEOUT(Notice(), isThere ? QString() : u"PACS 0/3"_s, 30000);
        m_box->Desk().answers = {true};
        ChooseOver(1, 2, 1, u"그림지우기"_s);
        Press(u"저장"_s);
        if (!isThere) {
            QTRY_COMPARE(Notice(), u"PACS 0/2"_s);
            m_server->Start();
        }
        QTRY_COMPARE_WITH_TIMEOUT(Notice(), QString(), 60000);
        QCOMPARE(m_server->NumbersAsTheyCame(), come);
        const QString object = m_server->Objects().constLast();
        QCOMPARE(PacsServer::Element(object, "0010,0010"), u"홍길동"_s);
        QCOMPARE(PacsServer::Element(object, "0010,0030"), u"19800101"_s);
        QCOMPARE(PacsServer::Element(object, "0008,0080"), u"한국의원"_s);
        m_server->Stop();
        Press(u"저장"_s);
        QTRY_COMPARE_WITH_TIMEOUT(Notice(), QString(), 30000);
    }

    /// A marked-up picture of an earlier visit goes by itself, as an instance of its own beside the first.
    void AMarkedPictureIsAnotherInstance()
    {
        m_server->Start();
        NameServer(m_server->Port(), false);
        m_box->AddPicture(u"20250301"_s, Stomach, 1, u""_s);
        OpenScreen();
        ShowLine(u"20250301"_s);
        for (const int objects : {1, 2}) {
            m_box->OnceOpen([objects](frmImgEdit&) {
                EditorInABox::Tool(3);
                EditorInABox::Drag({100 * objects, 100}, {540, 380});
                EditorInABox::Click(u"cmdISave"_s);
                EditorInABox::Click(u"cmdIExit"_s);
            });
            DoubleClick(2, 2, 1);
            QTRY_COMPARE_WITH_TIMEOUT(m_server->Objects().size(), objects, 30000);
        }
        const QStringList paths = m_server->Objects();
        QCOMPARE(PacsServer::Element(paths[0], "0020,000d"), PacsServer::Element(paths[1], "0020,000d"));
    }

    /// What the server refuses waits for nobody, outlives the program, and goes when somebody wants it again.
    void ARefusedPictureIsSetAside()
    {
        PacsPeer peer;
        peer.Start({u"--statuses"_s, u"C001"_s});
        NameServer(peer.Port(), false);
        const Visit visit = VisitOfToday();
        WriteWholeFile(visit.PicturePath(1), StationInABox::Jpeg({64, 48}, Qt::blue));
        WriteWholeFile(visit.PicturePath(2), StationInABox::Jpeg({64, 48}, Qt::red));
        WriteWholeFile(visit.PicturePath(3), "no picture");
        QString notice;
        const auto open = [&] {
            auto sending = PacsSending::ForSetup(ClientSetup.Pacs, SaupTable, Launched());
            connect(sending.get(), &PacsSending::NoticeChanged, this,
                    [&notice](const QString& text) { notice = text; });
            return sending;
        };
        auto sending = open();
        sending->VisitIsStored(visit, {1, 2, 3}, false);
        QTRY_COMPARE_WITH_TIMEOUT(notice, u"PACS 거부 2건"_s, 30000);
        peer.Start();
        sending.reset();
        sending = open();
        QTRY_COMPARE(notice, u"PACS 거부 2건"_s);
        sending->RetryRefused();
        QTRY_COMPARE_WITH_TIMEOUT(notice, u"PACS 거부 1건"_s, 30000);
        QStringList come;
        for (const PacsPeer::Stored& each : peer.Objects())
            come << QString::number(each.number) + u' ' + each.status;
        QCOMPARE(come, (QStringList{u"1 C001"_s, u"2 0000"_s, u"1 0000"_s}));
    }

    /// A station that dies in the middle leaves the rest to the next start, and nothing of the patients beside it.
    void AKilledStationIsFollowed()
    {
        m_server->Start({u"+xa"_s, u"--sleep-after"_s, u"1"_s});
        for (int number = 1; number <= 8; ++number)
            m_box->AddPicture(Day, Stomach, number);
        const QString folder = m_box->Desk().ProgramFolder();
        QProcess station;
        station.setProcessChannelMode(QProcess::ForwardedChannels);
        station.start(QCoreApplication::applicationFilePath(), {u"station"_s, folder, m_box->Database().Settings().name,
                                                                m_box->Root(), QString::number(m_server->Port())});
        QTRY_VERIFY_WITH_TIMEOUT(m_server->Objects().size() >= 2, 60000);
        station.kill();
        QVERIFY(station.waitForFinished());
        QVERIFY(m_server->Objects().size() < 8);
        m_server->Stop();
        m_server->Start();
        NameServer(m_server->Port(), false);
        {
            const auto sending = PacsSending::ForSetup(ClientSetup.Pacs, SaupTable, Launched());
            QVERIFY(sending->Waiting() > 0);
            QTRY_COMPARE_WITH_TIMEOUT(sending->Waiting(), 0, 60000);
        }
        QCOMPARE(m_server->Objects().size(), 8);
        QCOMPARE(QDir(folder).entryList({u"Dicom-*"_s}), QStringList());
    }

    /// A clinic without a server has nothing of all that.
    void WithoutAServerThereIsNothing()
    {
        OpenWithOneStill();
        Press(u"저장"_s);
        QCOMPARE(QDir(m_box->Desk().ProgramFolder()).entryList({u"Pacs*"_s, u"Dicom*"_s}), QStringList());
        QVERIFY(PacsSending::ForSetup(ClientSetup.Pacs, SaupTable, Launched()) == nullptr);
    }

private:
    std::unique_ptr<EditorInABox> m_box;
    std::unique_ptr<PacsServer> m_server;
};

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.value(1) == u"station"_s)
        return RunStation(arguments);
    PacsSendingTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "PacsSendingTest.moc"
