#include "contracts/setup_components.h"
#include "frame/components.h"
#include "frame/services.h"
#include "platform/files/LocalFiles.h"
#include "platform/profile/windows949.h"
#include "platform/setup/register_setup.h"
#include "support/ClinicDatabase.h"
#include "support/ScriptedDesktop.h"
#include "support/testing.h"

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {
QString noted; ///< What the setup has said beside its boxes.

struct Outcome
{
    bool started = false;
    ClientSetupRecord setup;
    SaupRecords places;
    ConnectionPointer connection;
    QStringList shown;
    QString noted;
};
} // namespace

class SetupTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        RegisterFiles();
        RegisterSetup();
        InstallService<Desktop>(std::make_unique<ScriptedDesktop>());
        QVERIFY2(m_server.Start(), qPrintable(m_server.Fault()));
    }

    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        auto desktop = std::make_unique<ScriptedDesktop>();
        desktop->folder = Folder();
        InstallService<Desktop>(std::move(desktop));
        m_clinic.reset();
    }

    void cleanup() { qunsetenv("CAPTURE_STATION_SETUP"); }

    void readsAGoodFile_data()
    {
        Columns<QString, QString>("driver", "encoding");
        for (const QString& driver : {u"QMARIADB"_s, u"QSQLITE"_s}) {
            for (const QString& encoding : {u"UTF-8"_s, u"UTF-8 with its mark"_s, u"windows-949"_s})
                QTest::addRow("%s, %s", qPrintable(driver), qPrintable(encoding)) << driver << encoding;
        }
    }

    void readsAGoodFile()
    {
        QFETCH(QString, encoding);
        UseClinic();
        QString text = GoodFile();
        if (encoding == u"windows-949")
            Put(windows949::Encoded(text.replace(u'\n', u"\r\n"_s)));
        else
            Put((encoding == u"UTF-8" ? "" : "\xEF\xBB\xBF") + text.toUtf8());
        const Outcome outcome = SetupRead();

        QCOMPARE(outcome.shown, QStringList());
        QVERIFY(outcome.started && outcome.connection != nullptr);
        QVERIFY(!outcome.connection->Execute(u" SELECT COUNT(*) FROM ca "_s)->Eof());
        const ClientSetupRecord& setup = outcome.setup;
        QCOMPARE((QStringList{setup.CommPort, setup.CaptureRoot, setup.EtcList, setup.ImageFormat, setup.CheckTable}),
                 (QStringList{u"2"_s, Folder() + u"/캡쳐/"_s, u"위내시경,대장내시경,초음파"_s, u"2"_s, u"1"_s}));
        QVERIFY(setup.TestPicture && setup.PrintPreview);
        QCOMPARE(setup.LaunchEncoding, u"windows-949"_s);
        QCOMPARE(setup.SerialPorts,
                 (QHash<QString, QString>{{u"1"_s, u"/dev/ttyUSB0"_s}, {u"3"_s, u"/dev/ttyACM0"_s}}));
        QCOMPARE(setup.PrinterFolder, Folder() + u"/인쇄"_s);
        QCOMPARE(setup.BurnerImage, u"/var/tmp/cd.iso"_s);
        QVERIFY(setup.BurnerIndex && !setup.BurnerIndexNotes && setup.BurnerUsb);
        QVERIFY(setup.Pacs.Characters == DicomCharacters::Korean && setup.Pacs.HasNameParts);
        QVERIFY(setup.Pacs.SendsAtClosing && setup.Pacs.PatientIdPrefix == u"NARAE-");
        QCOMPARE(outcome.places.size(), 2u);
        QCOMPARE(outcome.places.at(1).Yoyangno, u"11100001"_s);
        QCOMPARE(outcome.places.at(1).Hospital, u"나래의원"_s);
        QCOMPARE(outcome.places.at(12).Hospital, u"빛터의원"_s);
        QVERIFY(QDir(Folder() + u"/캡쳐"_s).exists());
        QCOMPARE(outcome.noted, QString());
    }

    void tellsWhatIsWrong_data()
    {
        Columns<QString, QString, QString, QString>("driver", "key", "line", "expected");
        const QList<std::tuple<const char*, QString, QString, QString>> cases{
            {"unknown driver", u"Driver"_s, u"Driver=QODBC"_s, u"QODBC은(는) 쓸 수 없습니다.!!"_s},
            {"no database name", u"Name"_s, u"Name="_s, u"[Database] Name 항목이 없습니다."_s},
            {"port that is no number", u"Port"_s, u"Port=삼"_s, u"Port는 1부터"_s},
            {"port of a host that is no number", u"Port"_s, u"Host=localhost,a:x"_s, u"Host의 포트는 1부터"_s},
            {"check of the server without an authority", u"Port"_s, u"SslVerify=1"_s, u"SslCa가 있어야"_s},
            {"host with options of the library", u"Port"_s, u"Host=db;ssl-verify-server-cert=0"_s, u"서버의 이름"_s},
            {"password file that isn't there", u"User"_s, u"User=root\nPasswordFile=없음"_s, u"없음"_s},
            {"no root", u"CaptureRoot"_s, u"CaptureRoot=  "_s, u"[Client] CaptureRoot 항목이 없습니다."_s},
            {"root that can't be made", u"CaptureRoot"_s, u"CaptureRoot=/proc/없음/"_s,
             u"폴더를 만들 수 없습니다.!!"_s},
            {"root with a drive letter", u"CaptureRoot"_s, u"CaptureRoot=D:\\capture\\"_s, u"드라이브 문자"_s},
            {"share that isn't mounted", u"CommPort"_s, u"CaptureMount=1"_s, u"공유가 연결되어 있지 않습니다.!!"_s},
            {"section above the root", u"EtcList"_s, u"EtcList=위내시경,.."_s, u"\"..\"은(는) 검사 이름으로"_s},
            {"section with a backslash", u"EtcList"_s, u"EtcList=..\\위"_s, u"\"..\\위\""_s},
            {"scale between the steps", u"EtcList"_s, u"[Screen]\nScale=1.1"_s, u"[Screen] Scale은 1, 1.25"_s},
            {"server for pictures that is an option", u"EtcList"_s, u"[Pacs]\nHost=-v"_s, u"[Pacs] Host는"_s},
            {"title that is too long", u"EtcList"_s, u"[Pacs]\nHost=a\nCalledAet=A2345678901234567"_s,
             u"CalledAet은"_s},
            {"title that is two values", u"EtcList"_s, u"[Pacs]\nHost=a\nCallingAet=A\\B"_s, u"CallingAet은"_s},
            {"launch strings in another encoding", u"LaunchEncoding"_s, u"LaunchEncoding=CP949"_s,
             u"LaunchEncoding은"_s},
            {"neither still nor save", u"EtcList"_s, u"[Pacs]\nHost=a\nSend=all"_s, u"[Pacs] Send는"_s},
            {"institution that no table holds", u"EtcList"_s, u"[Pacs]\nInstitution="_s + QString(65, u'a'),
             u"Institution은 64자까지"_s},
            {"prefix with a caret", u"EtcList"_s, u"[Pacs]\nPatientIdPrefix=A^"_s, u"PatientIdPrefix는"_s},
            {"character set without its backslash", u"EtcList"_s, u"[Pacs]\nCharacterSet=ISO 2022 IR 149"_s,
             u"CharacterSet은"_s},
            {"neither 0 nor 1", u"EtcList"_s, u"[Pacs]\nAtClosing=yes"_s, u"AtClosing은(는) 0이나 1"_s},
            {"root of identifiers with a 0", u"EtcList"_s, u"[Pacs]\nUidRoot=1.02.3"_s, u"[Pacs] UidRoot는"_s},
            {"section that its column would cut", u"EtcList"_s, u"EtcList="_s + QString(101, u'a'), u"검사 이름으로"_s},
        };
        for (const QString& driver : {u"QMARIADB"_s, u"QSQLITE"_s}) {
            for (const auto& [name, key, line, expected] : cases)
                QTest::addRow("%s, %s", qPrintable(driver), name) << driver << key << line << expected;
        }
    }

    void tellsWhatIsWrong()
    {
        QFETCH3(QString, key, QString, line, QString, expected);
        UseClinic();
        Put(Changed(key, line).toUtf8());
        const Outcome outcome = SetupRead();

        QVERIFY(!outcome.started && outcome.connection == nullptr);
        QCOMPARE(outcome.shown.size(), 1);
        QVERIFY2(outcome.shown.first().contains(expected), qPrintable(outcome.shown.first()));
        QVERIFY2(outcome.shown.first().contains(Folder() + u"/Setup.ini"_s), qPrintable(outcome.shown.first()));
        QVERIFY(key != u"CommPort" || !QDir(Folder() + u"/캡쳐"_s).exists()); // nothing is made in place of the share
    }

    void missingTables_data() { Engines(); }
    void missingTables()
    {
        QFETCH(QString, driver);
        m_clinic = std::make_shared<ClinicDatabase>(driver, &m_server);
        QVERIFY2(m_clinic->Make({u"cap"_s, u"clinic"_s}), qPrintable(m_clinic->Fault()));
        QVERIFY2(m_clinic->Run(u"DROP TABLE so; DROP TABLE yk; ALTER TABLE wj RENAME TO patients; "
                               "CREATE VIEW wj AS SELECT * FROM patients;"_s),
                 qPrintable(m_clinic->Fault()));
        Put(GoodFile().toUtf8());
        const Outcome outcome = SetupRead();
        QVERIFY(!outcome.started);
        QCOMPARE(outcome.shown.size(), 1);
        QVERIFY2(outcome.shown.first().contains(u"테이블이 없습니다.!! (ca, so, yk)"_s),
                 qPrintable(outcome.shown.first()));
    }

    void findsTheFile()
    {
        const Outcome nowhere = SetupRead();
        QVERIFY(!nowhere.started);
        QCOMPARE(nowhere.shown.size(), 1);
        QVERIFY(nowhere.shown.first().contains(u"설정 파일이 없습니다.!!"_s));
        QVERIFY(nowhere.shown.first().contains(Folder() + u"/Setup.ini"_s));
        QVERIFY(nowhere.shown.first().contains(u"/etc/capture-station/Setup.ini"_s));

        Put("[Database]\nDriver=QSQLITE\nName=beside\n[Client]\nCaptureRoot=root/\n");
        QVERIFY(SetupRead(false).started);
        qputenv("CAPTURE_STATION_SETUP", "");
        QVERIFY(SetupRead(false).started);
        Put("[Database]\nDriver=QSQLITE\nName=named\n[Client]\nCaptureRoot=other/\n", u"다른 설정.ini"_s);
        qputenv("CAPTURE_STATION_SETUP", QFile::encodeName(m_folder->filePath(u"다른 설정.ini"_s)));
        QCOMPARE(SetupRead(false).setup.CaptureRoot, Folder() + u"/other/"_s);
        // A file that was named is not replaced by another one in silence.
        qputenv("CAPTURE_STATION_SETUP", QFile::encodeName(m_folder->filePath(u"없음.ini"_s)));
        const Outcome missing = SetupRead(false);
        QVERIFY(!missing.started);
        QVERIFY(missing.shown.value(0).contains(u"없음.ini"_s) && !missing.shown.value(0).contains(u"/etc"_s));
    }

    void refusesWhatIsNoSmallFile()
    {
        const QString pipe = m_folder->filePath(u"pipe"_s);
        QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        Put(QByteArray(1'000'001, ';'), u"large"_s);
        for (const QString& path : {pipe, u"/dev/zero"_s, m_folder->filePath(u"large"_s)}) {
            qputenv("CAPTURE_STATION_SETUP", QFile::encodeName(path));
            const Outcome outcome = SetupRead(false);
            QVERIFY(!outcome.started);
            QVERIFY2(outcome.shown.value(0).contains(u"읽지 않습니다.!!"_s), qPrintable(outcome.shown.value(0)));
        }
    }

    void mountedRootIsTaken()
    {
        Put("[Database]\nDriver=QSQLITE\nName=x\n[Client]\nCaptureRoot=/proc/\nCaptureMount=1\n");
        const Outcome outcome = SetupRead(false);
        QVERIFY2(outcome.started, qPrintable(outcome.shown.join(u'\n')));
    }

    void readsThePasswordFile_data()
    {
        Columns<QString, QByteArray, bool>("driver", "content", "opens");
        QTest::newRow("one line") << u"QMARIADB"_s << QByteArray("비밀 '\\1\n") << true;
        QTest::newRow("more lines") << u"QMARIADB"_s << QByteArray("비밀 '\\1\r\nnote\n") << true;
        QTest::newRow("another password") << u"QMARIADB"_s << QByteArray("비밀") << false;
    }

    void readsThePasswordFile()
    {
        QFETCH2(QByteArray, content, bool, opens);
        UseClinic();
        QVERIFY2(m_server.Run(u"CREATE OR REPLACE USER station@localhost IDENTIFIED BY '비밀 ''\\\\1'; "
                              "GRANT ALL ON *.* TO station@localhost;"_s),
                 qPrintable(m_server.Fault()));
        Put(content, u"암호"_s);
        Put(Changed(u"User"_s, u"User=station\nPasswordFile=암호"_s).toUtf8());
        const Outcome outcome = SetupRead();
        QCOMPARE(outcome.started, opens);
        QVERIFY(opens || outcome.shown.value(0).contains(u"암호가 맞지 않습니다.!!"_s));
    }

    void notesAnOpenPassword()
    {
        const QByteArray begin = "[Client]\nCaptureRoot=a/\n[Database]\nDriver=QSQLITE\nName=x\n";
        const QString setup = m_folder->filePath(u"Setup.ini"_s);
        const auto allow = [](const QString& path, bool others) {
            const QFile::Permissions own = QFile::ReadOwner | QFile::WriteOwner;
            return QFile::setPermissions(path, others ? own | QFile::ReadOther : own);
        };
        Put(begin);
        QVERIFY(allow(setup, true));
        QCOMPARE(SetupRead(false).noted, QString());
        Put(begin + "Password=1234\n");
        QVERIFY(SetupRead(false).noted.contains(setup));
        QVERIFY(!SetupRead(false).noted.contains(u"1234"_s));
        QVERIFY(allow(setup, false));
        QCOMPARE(SetupRead(false).noted, QString());
    }

    void startsOnTheTrialClinic_data() { Engines(); }
    void startsOnTheTrialClinic()
    {
        QFETCH(QString, driver);
        const QString trial = Folder() + u"/it's a trial"_s;
        const auto make = [&] {
            QProcess script;
            script.setProcessChannelMode(QProcess::MergedChannels);
            script.start(u"" STATION_SOURCE_FOLDER "/scripts/trial-clinic"_s,
                         driver == u"QSQLITE" ? QStringList{trial}
                                              : QStringList{trial, u"--mariadb"_s, m_server.Socket()});
            const bool done = script.waitForFinished(60000) && script.exitCode() == 0;
            return done ? QString() : u"trial-clinic: "_s + QString::fromUtf8(script.readAll());
        };
        QCOMPARE(make(), QString());
        qputenv("CAPTURE_STATION_SETUP", QFile::encodeName(trial + u"/Setup.ini"_s));
        const Outcome outcome = SetupRead();
        QVERIFY2(outcome.started, qPrintable(outcome.shown.join(u'\n')));
        QVERIFY(outcome.setup.TestPicture);

        const auto pictures = outcome.connection->Execute(u" SELECT * FROM cap  WHERE cap_chart = '00001234' "_s);
        QVERIFY(!pictures->Eof());
        for (; !pictures->Eof(); pictures->MoveNext()) {
            const QString path = pictures->Fields(u"cap_path"_s).toString();
            QVERIFY2(path.startsWith(outcome.setup.CaptureRoot) && FileExists(path), qPrintable(path));
        }
        // What the operator has done since then stays.
        outcome.connection->Execute(u" DELETE FROM ca "_s);
        QCOMPARE(make(), QString());
        QVERIFY(outcome.connection->Execute(u" SELECT * FROM ca "_s)->Eof());
    }

private:
    static void Engines()
    {
        QTest::addColumn<QString>("driver");
        QTest::newRow("MariaDB") << u"QMARIADB"_s;
        QTest::newRow("SQLite") << u"QSQLITE"_s;
    }

    /// A complete clinic on the engine of the test's row; made once, since making a table takes a server long.
    void UseClinic()
    {
        QFETCH(QString, driver);
        m_clinic = m_clinics.value(driver);
        if (m_clinic != nullptr)
            return;
        m_clinic = std::make_shared<ClinicDatabase>(driver, &m_server);
        QVERIFY2(m_clinic->Make({u"ca"_s, u"cap"_s, u"clinic"_s}), qPrintable(m_clinic->Fault()));
        m_clinics.insert(driver, m_clinic);
    }

    QString Folder() const { return m_folder->path(); }
    QString GoodFile() const
    {
        const DatabaseSettings& database = m_clinic->Settings();
        return u"; 의원의 설정\n"
               "[Database]\nDriver=%1\nSocket=%2\nName=%3\nUser=%4\nPort=\n\n"
               "[Client]\nCommPort=2\nLaunchEncoding=Windows-949\nCaptureRoot=%5/캡쳐/\nEtcList= 위내시경 "
               ",대장내시경,, 초음파 ,\nImageFormat=2\n"
               "CheckTable=1\nPrintPreview=1\n\n"
               "[Saup.1]\nYoyangno=11100001\nHospital=나래의원\n[saup.12]\nHospital=빛터의원\n\n"
               "[Video]\nTestPicture=1\n[SerialPort]\n1=/dev/ttyUSB0\n03=/dev/ttyACM0\n4=\n"
               "[Printer]\nFolder=인쇄\n[Burner]\nImage=/var/tmp/cd.iso\nIndex=1\nUsb=1\n"
               "[Pacs]\nAtClosing=1\nPatientIdPrefix=NARAE-\nCharacterSet=\\ISO 2022 IR 149\nNameParts=1\n"_s.arg(
                   database.driver, database.socket, database.name, database.user, Folder());
    }

    void Put(const QByteArray& content, const QString& name = u"Setup.ini"_s)
    {
        QFile file(m_folder->filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    /// The text of the good file with the line of a key replaced by another line.
    QString Changed(const QString& key, const QString& line) const
    {
        QStringList lines = GoodFile().split(u'\n');
        for (QString& each : lines) {
            if (each.startsWith(key + u'='))
                each = line;
        }
        return lines.join(u'\n');
    }

    static Outcome SetupRead(bool openConnection = true)
    {
        Outcome outcome;
        auto& desktop = static_cast<ScriptedDesktop&>(UseService<Desktop>());
        desktop.shown.clear();
        noted.clear();
        const auto handler =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& text) { noted += text; });
        outcome.started = CreateObject<clsStartProfile>(u"prjStartProfile.clsStartProfile"_s)
                              ->SetupRead(outcome.setup, outcome.places, openConnection, outcome.connection);
        qInstallMessageHandler(handler);
        outcome.noted = noted;
        outcome.shown = desktop.shown;
        return outcome;
    }

    PrivateMariaDb m_server;
    std::unique_ptr<QTemporaryDir> m_folder;
    QHash<QString, std::shared_ptr<ClinicDatabase>> m_clinics;
    std::shared_ptr<ClinicDatabase> m_clinic; ///< Of the present test.
};

QTEST_GUILESS_MAIN(SetupTest)
#include "SetupTest.moc"
