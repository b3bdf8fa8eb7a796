#include "contracts/setup_components.h"
#include "frame/components.h"
#include "frame/services.h"
#include "platform/files/LocalFiles.h"
#include "platform/profile/windows949.h"
#include "platform/setup/register_setup.h"
#include "support/CapturedStderr.h"
#include "support/ClinicDatabase.h"
#include "support/ScriptedDesktop.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
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
    void initTestCase();
    void init();
    void cleanup();

    void readsAGoodFile_data();
    void readsAGoodFile();
    void tellsWhatIsWrong_data();
    void tellsWhatIsWrong();
    void tellsAllThatIsWrongAtOnce();
    void missingTables_data() { Engines(); }
    void missingTables();
    void findsTheFile();
    void endsTheRoot_data();
    void endsTheRoot();
    void mountedRootIsTaken();
    void readsThePasswordFile_data();
    void readsThePasswordFile();
    void notesAnOpenPassword();
    void readsWithoutTheDatabase();
    void startsOnTheTrialClinic_data() { Engines(); }
    void startsOnTheTrialClinic();

private:
    static void Engines();
    /// A complete clinic on the engine of the test's row; made once, since making a table takes a server long.
    void UseClinic();
    QString Folder() const { return m_folder->path(); }
    QString GoodFile() const;
    void Put(const QByteArray& content, const QString& name = QStringLiteral("Setup.ini"));
    /// The text of the good file with the line of a key replaced by another line.
    QString Changed(const QString& key, const QString& line) const;
    static Outcome SetupRead(bool openConnection = true);

    PrivateMariaDb m_server;
    std::unique_ptr<QTemporaryDir> m_folder;
    QHash<QString, std::shared_ptr<ClinicDatabase>> m_clinics;
    std::shared_ptr<ClinicDatabase> m_clinic; ///< Of the present test.
};

void SetupTest::Engines()
{
    QTest::addColumn<QString>("driver");
    QTest::newRow("MariaDB") << u"QMARIADB"_s;
    QTest::newRow("SQLite") << u"QSQLITE"_s;
}

void SetupTest::initTestCase()
{
    RegisterFiles();
    RegisterSetup();
    InstallService<Desktop>(std::make_unique<ScriptedDesktop>());
    QVERIFY2(m_server.Start(), qPrintable(m_server.Fault()));
}

void SetupTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    auto desktop = std::make_unique<ScriptedDesktop>();
    desktop->folder = Folder();
    InstallService<Desktop>(std::move(desktop));
    m_clinic.reset();
}

void SetupTest::cleanup()
{
    qunsetenv("CAPTURE_STATION_SETUP");
}

void SetupTest::UseClinic()
{
    QFETCH(QString, driver);
    m_clinic = m_clinics.value(driver);
    if (m_clinic != nullptr)
        return;
    m_clinic = std::make_shared<ClinicDatabase>(driver, &m_server);
    QVERIFY2(m_clinic->Make({u"ca"_s, u"cap"_s, u"clinic"_s}), qPrintable(m_clinic->Fault()));
    m_clinics.insert(driver, m_clinic);
}

QString SetupTest::GoodFile() const
{
    const DatabaseSettings& database = m_clinic->Settings();
    return u"; 의원의 설정\n"
           "[Database]\nDriver=%1\nSocket=%2\nName=%3\nUser=%4\nPort=\n\n"
           "[Client]\nCommPort=2\nCaptureRoot=%5/캡쳐/\nEtcList= 위내시경 ,대장내시경,, 초음파 ,\nImageFormat=2\n"
           "CheckTable=1\n\n"
           "[Saup.1]\nYoyangno=11100001\nHospital=나래의원\n[saup.12]\nHospital=빛터의원\n\n"
           "[Video]\nTestPicture=1\n[SerialPort]\n1=/dev/ttyUSB0\n03=/dev/ttyACM0\n4=\n"
           "[Printer]\nFolder=인쇄\n[Burner]\nImage=/var/tmp/cd.iso\n"_s.arg(database.driver, database.socket,
                                                                             database.name, database.user, Folder());
}

void SetupTest::Put(const QByteArray& content, const QString& name)
{
    QFile file(m_folder->filePath(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

QString SetupTest::Changed(const QString& key, const QString& line) const
{
    QStringList lines = GoodFile().split(u'\n');
    for (QString& each : lines) {
        if (each.startsWith(key + u'='))
            each = line;
    }
    return lines.join(u'\n');
}

Outcome SetupTest::SetupRead(bool openConnection)
{
    Outcome outcome;
    auto& desktop = static_cast<ScriptedDesktop&>(UseService<Desktop>());
    desktop.shown.clear();
    CapturedStderr captured;
    outcome.started = CreateObject<clsStartProfile>(u"prjStartProfile.clsStartProfile"_s)
                          ->SetupRead(outcome.setup, outcome.places, openConnection, outcome.connection);
    outcome.noted = captured.Text();
    outcome.shown = desktop.shown;
    return outcome;
}

void SetupTest::readsAGoodFile_data()
{
    QTest::addColumn<QString>("driver");
    QTest::addColumn<QString>("encoding");
    for (const QString& driver : {u"QMARIADB"_s, u"QSQLITE"_s}) {
        for (const QString& encoding : {u"UTF-8"_s, u"UTF-8 with its mark"_s, u"windows-949"_s})
            QTest::addRow("%s, %s", qPrintable(driver), qPrintable(encoding)) << driver << encoding;
    }
}

void SetupTest::readsAGoodFile()
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
    QVERIFY(setup.TestPicture);
    QCOMPARE(setup.SerialPorts, (QHash<QString, QString>{{u"1"_s, u"/dev/ttyUSB0"_s}, {u"3"_s, u"/dev/ttyACM0"_s}}));
    QCOMPARE(setup.PrinterFolder, Folder() + u"/인쇄"_s);
    QCOMPARE(setup.BurnerImage, u"/var/tmp/cd.iso"_s);
    QCOMPARE(outcome.places.size(), 2u);
    QCOMPARE(outcome.places.at(1).Yoyangno, u"11100001"_s);
    QCOMPARE(outcome.places.at(1).Hospital, u"나래의원"_s);
    QCOMPARE(outcome.places.at(12).Hospital, u"빛터의원"_s);
    QVERIFY(QDir(Folder() + u"/캡쳐"_s).exists());
    QCOMPARE(outcome.noted, QString());
}

void SetupTest::tellsWhatIsWrong_data()
{
    QTest::addColumn<QString>("driver");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("expected");
    const QList<std::tuple<const char*, QString, QString, QString>> cases{
        {"no driver", u"Driver"_s, u""_s, u"[Database] Driver 항목이 없습니다."_s},
        {"unknown driver", u"Driver"_s, u"Driver=QODBC"_s, u"QODBC은(는) 쓸 수 없습니다.!!"_s},
        {"no database name", u"Name"_s, u"Name="_s, u"[Database] Name 항목이 없습니다."_s},
        {"database that isn't there", u"Name"_s, u"Name=nowhere"_s, u"nowhere"_s},
        {"port that is no number", u"Port"_s, u"Port=삼"_s, u"Port는 1부터"_s},
        {"password file that isn't there", u"User"_s, u"User=root\nPasswordFile=없음"_s, u"없음"_s},
        {"no root", u"CaptureRoot"_s, u"CaptureRoot=  "_s, u"[Client] CaptureRoot 항목이 없습니다."_s},
        {"root that can't be made", u"CaptureRoot"_s, u"CaptureRoot=/proc/없음/"_s, u"폴더를 만들 수 없습니다.!!"_s},
        {"root below a file", u"CaptureRoot"_s, u"CaptureRoot=Setup.ini\\그림\\"_s, u"폴더를 만들 수 없습니다.!!"_s},
        {"root with a drive letter", u"CaptureRoot"_s, u"CaptureRoot=D:\\capture\\"_s, u"드라이브 문자"_s},
        {"share that isn't mounted", u"CommPort"_s, u"CaptureMount=1"_s, u"공유가 연결되어 있지 않습니다.!!"_s},
        {"section above the root", u"EtcList"_s, u"EtcList=위내시경,.."_s, u"\"..\"은(는) 검사 이름으로"_s},
        {"section with a slash", u"EtcList"_s, u"EtcList=위/장"_s, u"\"위/장\""_s},
        {"section with a backslash", u"EtcList"_s, u"EtcList=..\\위"_s, u"\"..\\위\""_s},
        {"section that its column would cut", u"EtcList"_s, u"EtcList="_s + QString(101, u'a'), u"검사 이름으로"_s},
        {"section with an end mark", u"EtcList"_s, u"EtcList=위"_s + QChar(u'\0') + u"장"_s,
         u"검사 이름으로 쓸 수 없습니다."_s},
    };
    for (const QString& driver : {u"QMARIADB"_s, u"QSQLITE"_s}) {
        for (const auto& [name, key, line, expected] : cases)
            QTest::addRow("%s, %s", qPrintable(driver), name) << driver << key << line << expected;
    }
}

void SetupTest::tellsWhatIsWrong()
{
    QFETCH(QString, key);
    QFETCH(QString, line);
    QFETCH(QString, expected);
    UseClinic();
    Put(Changed(key, line).toUtf8());
    const Outcome outcome = SetupRead();

    QVERIFY(!outcome.started && outcome.connection == nullptr);
    QCOMPARE(outcome.shown.size(), 1);
    QVERIFY2(outcome.shown.first().contains(expected), qPrintable(outcome.shown.first()));
    QVERIFY2(outcome.shown.first().contains(Folder() + u"/Setup.ini"_s), qPrintable(outcome.shown.first()));
    QVERIFY(key != u"CommPort" || !QDir(Folder() + u"/캡쳐"_s).exists()); // nothing is made in place of the share
}

void SetupTest::tellsAllThatIsWrongAtOnce()
{
    Put("[Database]\nDriver=QSQLITE\n[Client]\nEtcList=..\nCaptureRoot=\n");
    const Outcome several = SetupRead();
    QCOMPARE(several.shown.size(), 1);
    for (const QString& expected : {u"Name"_s, u".."_s, u"CaptureRoot"_s})
        QVERIFY2(several.shown.first().contains(expected), qPrintable(several.shown.first()));

    Put("[Database]\nDriver=QSQLITE\nName=x.sqlite\n[Client]\nCaptureRoot=/proc/x/\n");
    const Outcome rootAndDatabase = SetupRead();
    QCOMPARE(rootAndDatabase.shown.size(), 1);
    QVERIFY2(rootAndDatabase.shown.first().contains(u"/proc/x"_s), qPrintable(rootAndDatabase.shown.first()));
    QVERIFY2(rootAndDatabase.shown.first().contains(Folder() + u"/x.sqlite"_s),
             qPrintable(rootAndDatabase.shown.first()));

    Put("\x00\xFF\xFE[Client\n\n=\n[[[");
    const Outcome rubbish = SetupRead();
    QVERIFY(!rubbish.started);
    QCOMPARE(rubbish.shown.size(), 1);
    Put("[Database]\nDriver=QSQLITE\nName=\xC0\xA7\xB3\n[Client]\nCaptureRoot=/tmp/\n");
    QVERIFY(SetupRead().shown.value(0).contains(u"Name의 글자를 읽을 수 없습니다."_s));
}

void SetupTest::missingTables()
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
    QVERIFY2(outcome.shown.first().contains(u"테이블이 없습니다.!! (ca, so, yk)"_s), qPrintable(outcome.shown.first()));
}

void SetupTest::findsTheFile()
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

void SetupTest::endsTheRoot_data()
{
    QTest::addColumn<QString>("root");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<bool>("noted");
    QTest::newRow("slash") << u"%1/a/"_s << u"%1/a/"_s << false;
    QTest::newRow("backslashes") << u"\\%1\\a\\"_s << u"\\%1\\a\\"_s << false;
    QTest::newRow("none") << u"%1/a"_s << u"%1/a\\"_s << true;
    QTest::newRow("backslash within") << u"\\%1\\a"_s << u"\\%1\\a\\"_s << true;
    QTest::newRow("from the file's folder") << u"캡쳐\\a"_s << u"%1/캡쳐\\a\\"_s << true;
}

void SetupTest::endsTheRoot()
{
    QFETCH(QString, root);
    QFETCH(QString, expected);
    QFETCH(bool, noted);
    Put(u"[Database]\nDriver=QSQLITE\nName=x\n[Client]\nCaptureRoot=%1\n"_s.arg(root.replace(u"%1"_s, Folder()))
            .toUtf8());
    const Outcome outcome = SetupRead(false);
    QVERIFY(outcome.started);
    QCOMPARE(outcome.setup.CaptureRoot, expected.replace(u"%1"_s, Folder()));
    QVERIFY(FolderExists(outcome.setup.CaptureRoot));
    QCOMPARE(outcome.noted.contains(u"CaptureRoot"_s), noted);
}

void SetupTest::mountedRootIsTaken()
{
    Put("[Database]\nDriver=QSQLITE\nName=x\n[Client]\nCaptureRoot=/proc/\nCaptureMount=1\n");
    const Outcome outcome = SetupRead(false);
    QVERIFY2(outcome.started, qPrintable(outcome.shown.join(u'\n')));
}

void SetupTest::readsThePasswordFile_data()
{
    QTest::addColumn<QString>("driver");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("opens");
    QTest::newRow("one line") << u"QMARIADB"_s << QByteArray("비밀 '\\1\n") << true;
    QTest::newRow("no line end") << u"QMARIADB"_s << QByteArray("비밀 '\\1") << true;
    QTest::newRow("more lines") << u"QMARIADB"_s << QByteArray("비밀 '\\1\r\nnote\n") << true;
    QTest::newRow("another password") << u"QMARIADB"_s << QByteArray("비밀") << false;
}

void SetupTest::readsThePasswordFile()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, opens);
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

void SetupTest::notesAnOpenPassword()
{
    const QByteArray begin = "[Client]\nCaptureRoot=a/\n[Database]\nDriver=QSQLITE\nName=x\n";
    const QString setup = m_folder->filePath(u"Setup.ini"_s);
    const QString secret = m_folder->filePath(u"secret"_s);
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

    Put(begin + "PasswordFile=secret\n");
    Put("1234\n", u"secret"_s);
    QVERIFY(allow(setup, true) && allow(secret, false));
    QCOMPARE(SetupRead(false).noted, QString());
    QVERIFY(allow(secret, true));
    QVERIFY(SetupRead(false).noted.contains(secret));
}

void SetupTest::readsWithoutTheDatabase()
{
    Put("[Database]\nDriver=QSQLITE\nName=missing\n[Client]\nCaptureRoot=a/\nEtcList=\n");
    const Outcome outcome = SetupRead(false);
    QVERIFY(outcome.started && outcome.connection == nullptr);
    QCOMPARE(outcome.setup.EtcList, QString());
    QVERIFY(!outcome.setup.TestPicture);
    QVERIFY(outcome.setup.SerialPorts.isEmpty() && outcome.places.empty());
    QCOMPARE(outcome.setup.PrinterFolder + outcome.setup.BurnerImage, QString());
    QVERIFY(!SetupRead(true).started);
}

void SetupTest::startsOnTheTrialClinic()
{
    QFETCH(QString, driver);
    const QString trial = Folder() + u"/it's a trial"_s;
    const auto make = [&] {
        QProcess script;
        script.setProcessChannelMode(QProcess::MergedChannels);
        script.start(u"" STATION_SOURCE_FOLDER "/scripts/trial-clinic"_s,
                     driver == u"QSQLITE" ? QStringList{trial} : QStringList{trial, u"--mariadb"_s, m_server.Socket()});
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

QTEST_GUILESS_MAIN(SetupTest)
#include "SetupTest.moc"
