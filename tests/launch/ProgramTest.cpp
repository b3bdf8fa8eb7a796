#include "platform/files/LocalFiles.h"
#include "support/StationInABox.h"
#include "text/date_routines.h"

#include <sys/resource.h>

using namespace Qt::StringLiterals;

/// The program itself, started as the clinic's program starts it.
class ProgramTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void StartsWith_data()
    {
        Columns<QByteArrayList, QString, QString, int, bool>("arguments", "locale", "section", "exitCode", "opens");
        const QString utf8 = u"C.UTF-8"_s;
        const QString launch = u"A01 000012340111"_s + TextFromDate(QDate::currentDate());
        const auto korean = [&](const QString& section) {
            return QByteArrayList{QStringEncoder("windows-949")(launch + section)};
        };
        QTest::newRow("the Korean code page") << korean(u"초음파"_s) << utf8 << u"초음파"_s << 0 << true;
        // Bytes that could be either.
        QTest::newRow("a Korean locale") << korean(u"처치"_s) << u"ko_KR.eucKR@x"_s << u"처치"_s << 0 << true;
        QTest::newRow("no locale") << korean(u"처치"_s) << u"POSIX"_s << u"óġ"_s << 0 << true;
        QTest::newRow("UTF-8") << QByteArrayList{(launch + u"초음파"_s).toUtf8()} << utf8 << u"초음파"_s << 0 << true;
        QTest::newRow("two arguments") << QByteArrayList{"A01", "00001234"} << utf8 << QString() << 2 << false;
        QTest::newRow("none") << QByteArrayList{} << utf8 << QString() << 0 << false;
    }

    void StartsWith()
    {
        QFETCH5(QByteArrayList, arguments, QString, locale, QString, section, int, exitCode, bool, opens);
        StationInABox box;
        QFile setup(NativePath(box.Root() + u"Setup.ini"_s));
        QVERIFY(setup.open(QIODevice::WriteOnly));
        setup.write(u"[Database]\nDriver=QSQLITE\nName=%1\n[Client]\nCaptureRoot=%2\nEtcList=위내시경\n"_s
                        .arg(box.Database().Settings().name, box.Root())
                        .toUtf8());
        setup.close();
        // The section is none of this client's list: only a start that read its name right clears up in its folder.
        const QString folder = SectionFolder(YearFolder(box.Root(), TextFromDate(QDate::currentDate())), section);
        MakeFolder(folder);
        const QString left = folder + u".station-"_s + Files().ProcessMark() + u"0-1.part"_s;
        WriteWholeFile(left, "of a station that died");

        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"CAPTURE_STATION_SETUP"_s, setup.fileName());
        environment.insert(u"CAPTURE_STATION_FOLDER"_s, NativePath(box.Root()));
        environment.insert(u"LC_ALL"_s, locale);
        environment.insert(u"XDG_RUNTIME_DIR"_s, NativePath(box.Root()));
        program.setProcessEnvironment(environment);
        // Through a shell, since a QProcess hands texts over in one code page alone.
        QByteArray command = "exec " STATION_PROGRAM;
        for (const QByteArray& argument : arguments)
            command += " '" + argument + '\'';
        QFile script(NativePath(box.Root() + u"start.sh"_s));
        QVERIFY(script.open(QIODevice::WriteOnly) && script.write(command) > 0);
        script.close();
        program.start(u"/bin/sh"_s, {script.fileName()});
        if (opens) {
            QTRY_VERIFY_WITH_TIMEOUT(!FileExists(left), 20000);
            rlimit core = {1, 1};
            QCOMPARE(prlimit(static_cast<pid_t>(program.processId()), RLIMIT_CORE, nullptr, &core), 0);
            QCOMPARE(core.rlim_max, rlim_t{0});
            program.terminate();
        }
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), exitCode);
        QCOMPARE(program.readAllStandardError().contains("must be one argument"), exitCode == 2);
        QCOMPARE(FileExists(left), !opens);
    }
};

QTEST_MAIN(ProgramTest)
#include "ProgramTest.moc"
