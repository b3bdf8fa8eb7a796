#include "platform/disc/DiscWriter.h"
#include "DiscInABox.h"
#include "FakeUdisks.h"
#include "frame/waiting.h"

#include <csignal>
#include <sys/resource.h>

using namespace Qt::StringLiterals;

namespace {
QByteArray Noise(qsizetype bytes)
{
    QByteArray noise(bytes, '\0');
    QRandomGenerator random(7);
    for (char& byte : noise)
        byte = static_cast<char>(random.bounded(256));
    return noise;
}

/// A longer file can't be written by this process.
void LimitFiles(rlim_t bytes)
{
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = std::min(bytes, limit.rlim_max);
    setrlimit(RLIMIT_FSIZE, &limit);
}

const QString Kept = u"저장할 파일은 그대로 있습니다."_s;
const QString Done = u"CD저장이 완료되었습니다."_s;
} // namespace

class DiscWriterTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_box = std::make_unique<DiscInABox>(); }
    void cleanup()
    {
        qunsetenv("LC_ALL");
        m_box.reset();
    }

    void TheDiscHoldsWhatWasStaged()
    {
        qputenv("LC_ALL", "C");
        const QString longName = QString(79, u'가');
        QHash<QString, QByteArray> staged{
            {u"0000123420261124001.jpg"_s, Noise(300000)},
            {longName + u"1.jpg"_s, "1"},
            {longName + u"2.jpg"_s, "2"},
            {u"폴더/속/기록 'a' \"b\" [1]*.txt"_s, "in a folder"},
            {u"빈 파일.avi"_s, ""},
            {u"Same.txt"_s, "S"},
            {u"same.TXT"_s, "s"},
        };
        for (auto file = staged.cbegin(); file != staged.cend(); ++file)
            m_box->Stage(file.key(), file.value());
        QFile::link(u"/etc/hostname"_s, m_box->staging + u"link.txt"_s);
        QFile::link(u"/etc"_s, m_box->staging + u"폴더/etc"_s);
        QVERIFY(m_box->Burner()->Equipped());
        QVERIFY(DiscInABox::Burn());
        qputenv("LC_ALL", "C.UTF-8"); // For the reader; the writer needs no such thing.
        QVERIFY2(DiscInABox::Said().startsWith(Done), qPrintable(DiscInABox::Said()));
        QCOMPARE(m_box->ImageNames(), QStringList{u"cd.iso"_s});

        // Two names that Windows takes for one.
        staged.insert(u"same (2).TXT"_s, staged.take(u"same.TXT"_s));
        QStringList expected;
        for (auto file = staged.cbegin(); file != staged.cend(); ++file) {
            expected << u'/' + file.key();
            QCOMPARE(m_box->ContentOn(u"cd.iso"_s, expected.last()), file.value());
        }
        expected.sort();
        QCOMPARE(m_box->NamesOn(u"cd.iso"_s, false).replaceInStrings(u"'\"'\"'"_s, u"'"_s), expected);

        const QStringList onWindows = m_box->NamesOn(u"cd.iso"_s, true);
        QCOMPARE(onWindows.size(), expected.size());
        QVERIFY(onWindows.contains(u"/0000123420261124001.jpg"_s));
        QVERIFY2(onWindows.contains(u"/빈 파일.avi"_s), qPrintable(onWindows.join(u'\n')));
        QSet<QString> different;
        for (const QString& name : onWindows) {
            QVERIFY(name.section(u'/', -1).size() <= 65);
            different.insert(name.toCaseFolded());
        }
        QCOMPARE(different.size(), expected.size());
    }

    void AnImageThatHoldsSomethingStays()
    {
        m_box->Stage(u"a.jpg"_s, "first");
        WriteWholeFile(m_box->Images() + u"cd.iso"_s, "");
        QFile named(m_box->staging + u"뒤\\빗금.jpg"_s);
        QVERIFY(named.open(QIODevice::WriteOnly));
        QVERIFY(DiscInABox::Burn());
        QVERIFY(DiscInABox::Window()->focusWidget());
        QTest::keyClick(DiscInABox::Window()->focusWidget(), Qt::Key_Return);
        QVERIFY(!DiscInABox::Window()->isVisible());
        m_box->Stage(u"b.jpg"_s, "second");
        QVERIFY(DiscInABox::Burn());
        QCOMPARE(m_box->ImageNames(), (QStringList{u"cd-2.iso"_s, u"cd.iso"_s}));
        QCOMPARE(m_box->NamesOn(u"cd.iso"_s, false), (QStringList{u"/a.jpg"_s, u"/뒤\\빗금.jpg"_s}));
        QCOMPARE(m_box->NamesOn(u"cd-2.iso"_s, false), (QStringList{u"/a.jpg"_s, u"/b.jpg"_s, u"/뒤\\빗금.jpg"_s}));
        QVERIFY(DiscInABox::Said().contains(u"cd-2.iso"_s));

        // What has come or changed since was not written, and stays.
        m_box->Stage(u"b.jpg"_s, "third..");
        m_box->Stage(u"c.jpg"_s, "fourth");
        DiscInABox::Press(u"cmdEmpty"_s);
        QCOMPARE(QDir(m_box->staging).entryList(QDir::Files), (QStringList{u"b.jpg"_s, u"c.jpg"_s}));
    }

    void WhatCanGoWrong_data()
    {
        Columns<QString, QStringList>("script", "said");
        const QString writes = u"[[ \"$*\" == *-commit* ]]"_s;
        QTest::newRow("the program is missing") << QString() << QStringList{u"xorriso"_s, u"설치"_s};
        QTest::newRow("fails at half") << u"%1 && { echo 'xorriso : UPDATE : Writing: 100s 50.0% fifo' >&2; "
                                          "echo 'libburn : FATAL : SCSI error on write' >&2; exit 5; }"_s.arg(writes)
                                       << QStringList{u"쓰지 못했습니다.!!"_s,
                                                      u"다른 CD에 다시 저장하십시오.\n"
                                                      "(libburn : FATAL : SCSI error on write)"_s};
        const auto row = [&writes](const char* name, const QString& line, const QString& said) {
            QTest::newRow(name) << u"%1 && { echo \"%2\" >&2; exit 5; }"_s.arg(writes, line)
                                << QStringList{u"쓰지 못했습니다.!!\n"_s + said};
        };
        row("the disc was taken out", u"libburn : FATAL : SCSI error on write(0,16): [2 3A 01] Medium not present"_s,
            u"CD드라이브에 CD가 없습니다.!!"_s);
        row("for a reason never heard of", u"libburn : FATAL : <img src=x> "_s + QString(10000, u'x'),
            u"xorriso가 오류를 알렸습니다.!!\n(libburn : FATAL : <img src=x> xx"_s);
        QTest::newRow("the reason comes behind many others")
            << u"%1 && { yes 'libburn : SORRY : again' | head -n 5000; echo 'libburn : FATAL : no medium'; exit 5; } >&2"_s
                   .arg(writes)
            << QStringList{u"CD드라이브에 CD가 없습니다.!!"_s};
        const QString endless = u"쓰지 못했습니다.!!\nxorriso이(가) 끝없이 출력하여 중단하였습니다.!!"_s;
        QTest::newRow("prints notes without end")
            << u"%1 && exec yes 'libburn : FATAL : once more' >&2"_s.arg(writes) << QStringList{endless};
        QTest::newRow("prints results without an end of the line")
            << u"%1 && exec tr '\\0' x </dev/zero"_s.arg(writes) << QStringList{endless};
        QTest::newRow("the image's disk is full")
            << u"trap '' XFSZ; %1 && ulimit -f 200; exec $REAL \"$@\""_s.arg(writes)
            << QStringList{u"이미지를 저장할 디스크의 남은 공간이 부족합니다.!!\n(libburn"_s};
        QTest::newRow("a file vanishes before it is written")
            << u"rm -f \"$STAGED/b.jpg\"; exec $REAL \"$@\""_s << QStringList{u"없어진 파일"_s, u"b.jpg"_s};
        QTest::newRow("a file grows while it is written")
            << u"$REAL \"$@\"; code=$?; echo more >> \"$STAGED/b.jpg\"; exit $code"_s
            << QStringList{u"바뀌거나"_s, u"b.jpg"_s};
        QTest::newRow("one byte is another on the disc")
            << u"$REAL \"$@\" || exit; %1 && printf '\\x55' | dd of=$(echo \"$IMAGES\".station-*) bs=1 "
               "seek=$((200 * 2048)) conv=notrunc status=none"_s.arg(writes)
            << QStringList{u"원본과 다릅니다.!!"_s, u"/a.jpg"_s};
        QTest::newRow("a file is not on the disc") << u"$REAL \"$@\" | grep -v \"'/b.jpg'\"; exit ${PIPESTATUS[0]}"_s
                                                   << QStringList{u"원본과 다릅니다.!!"_s, u"/b.jpg"_s};
        QTest::newRow("killed while it is checked")
            << u"%1 && exec $REAL \"$@\"; kill -9 $$"_s.arg(writes) << QStringList{u"확인하지 못했습니다.!!"_s};
    }

    void WhatCanGoWrong()
    {
        QFETCH2(QString, script, QStringList, said);
        m_box->Stage(u"a.jpg"_s, QByteArray(900000, 'a'));
        m_box->Stage(u"b.jpg"_s, "b");
        m_box->Replace(script);
        QCOMPARE(m_box->Burner()->Equipped(), !script.isEmpty());
        QVERIFY(DiscInABox::Burn());
        for (const QString& part : said + QStringList{Kept})
            QVERIFY2(DiscInABox::Said().contains(part), qPrintable(DiscInABox::Said()));
        QVERIFY(DiscInABox::Said().size() < 500);
        QCOMPARE(m_box->ImageNames(), QStringList{});
        QVERIFY(QFile::exists(m_box->staging + u"a.jpg"_s));
        QVERIFY(!DiscInABox::Window()->findChild<QPushButton*>(u"cmdEmpty"_s)->isVisible());
    }

    void AnEndFromOutside_data()
    {
        Columns<QString, bool>("stage", "programEnds");
        QTest::newRow("cancelled while writing") << u"-commit"_s << false;
        QTest::newRow("cancelled while checking") << u"-check_md5_r"_s << false;
        QTest::newRow("the station ends while writing") << u"-commit"_s << true;
        QTest::newRow("the station ends while checking") << u"-check_md5_r"_s << true;
    }

    void AnEndFromOutside()
    {
        QFETCH2(QString, stage, bool, programEnds);
        m_box->Stage(u"a.jpg"_s, "a");
        m_box->Replace(u"[[ \"$*\" == *%1* ]] || exec $REAL \"$@\"\necho $$ > \"$IMAGES/pid.new\"; "
                       "mv \"$IMAGES/pid.new\" \"$IMAGES/pid\"; exec sleep 1000"_s.arg(stage));
        const auto burner = DiscInABox::Burner();
        burner->Startburn();
        const QString pidFile = m_box->Images() + u"pid"_s;
        QTRY_VERIFY(QFile::exists(pidFile));
        const int child = Files().ReadFile(pidFile).trimmed().toInt();
        QFile::remove(pidFile);
        QVERIFY(burner->isburning());
        QVERIFY(!DiscInABox::Window()->close());
        burner->Startburn(); // A second start changes nothing.
        if (programEnds)
            QMetaObject::invokeMethod(qApp, "aboutToQuit", Qt::DirectConnection);
        else
            DiscInABox::Press(u"cmdCancel"_s);
        QTRY_VERIFY(!burner->isburning());
        QTRY_VERIFY(kill(child, 0) != 0);
        QCOMPARE(m_box->ImageNames(), QStringList{});
        QVERIFY(QFile::exists(m_box->staging + u"a.jpg"_s));
        if (!programEnds)
            QVERIFY(DiscInABox::Said().contains(u"취소"_s) && DiscInABox::Said().contains(Kept));
    }

    void AStagingFolderOfThisUserAlone()
    {
        QFile::setPermissions(m_box->staging, QFile::Permissions::fromInt(0x7777));
        QCOMPARE(m_box->Burner()->burnArea(), m_box->staging);
        QCOMPARE(QFile::permissions(m_box->staging) & QFile::Permissions::fromInt(0x0077), QFile::Permissions());
        const QString place = m_box->staging.chopped(1);
        for (const bool isLink : {false, true}) {
            QVERIFY(QDir(place).removeRecursively());
            if (isLink)
                QVERIFY(QFile::link(m_box->Images(), place));
            else
                WriteWholeFile(place, "a file in its place");
            QVERIFY_THROWS_EXCEPTION(PlatformError, m_box->Burner()->burnArea());
            QFile::remove(place);
        }
        UseService<BurnerOptions>().UseImage(m_box->Images() + u"not there/cd.iso"_s);
        QVERIFY(!m_box->Burner()->Equipped());
    }

    void ADrive_data()
    {
        QTest::addColumn<QStringList>("disc"); // Profile, state, and the free sectors as far as they can be told.
        Columns<bool, bool, bool, QString>("equipped", "asked", "answer", "said");
        const QStringList blank{u"CD-R"_s, u"is blank"_s, u"359848"_s};
        const QStringList small{u"CD-R"_s, u"is blank"_s, u"300"_s};
        const QStringList inUse{u"CD-R"_s, u"is written , is appendable"_s, u"300000"_s};
        const QStringList rewritable{u"CD-RW"_s, u"is written , is closed"_s, u"0"_s};
        QTest::newRow("empty") << blank << true << false << false << Done;
        QTest::newRow("too small") << small << true << false << false << u"필요한 공간 1.0 MB, 남은 공간 0.6 MB"_s;
        QTest::newRow("to be blanked") << rewritable << true << true << true << Done;
        QTest::newRow("to be kept") << rewritable << true << true << false << u"취소"_s;
    }

    void ADrive()
    {
        QFETCH5(QStringList, disc, bool, equipped, bool, asked, bool, answer, QString, said);
        WriteWholeFile(m_box->Images() + u"sr10"_s, "");
        WriteWholeFile(m_box->Images() + u"sr2"_s, "");
        const QByteArray script =
            Files().ReadFile(QStringLiteral(STATION_SOURCE_FOLDER "/tests/platform/disc/hand_fed_drive.sh"));
        m_box->Replace(QString::fromUtf8(script).arg(disc[0], disc[1], disc[2]));
        m_box->Stage(u"a.jpg"_s, "a");
        m_box->desk->answers = {answer};
        DiscWriter writer(m_box->Images());
        QCOMPARE(writer.Drives().value(0).Path, m_box->Images() + u"sr2"_s);
        QCOMPARE(writer.Equipped(), equipped);
        writer.StartBurn();
        QCOMPARE(m_box->desk->shown.size(), asked ? 1 : 0);
        const bool writes = said == Done;
        QCOMPARE(writer.IsBurning(), writes);
        if (writes) {
            const auto* cancel = DiscInABox::Window()->findChild<QPushButton*>(u"cmdCancel"_s);
            QCOMPARE(cancel->isEnabled(), asked);
            QTRY_VERIFY(DiscInABox::Said().contains(u"다시 넣어"_s));
            QVERIFY(cancel->isEnabled());
            QTRY_VERIFY_WITH_TIMEOUT(!writer.IsBurning(), 10000);
            QCOMPARE(Files().ReadFile(m_box->Images() + u"log"_s),
                     (asked ? "blank\n" : "") + QByteArray("eject\ncheck\ncheck\n"));
            QCOMPARE(m_box->NamesOn(u"sr2"_s, false), QStringList{u"/a.jpg"_s});
        } else {
            QCOMPARE(QFileInfo(m_box->Images() + u"sr2"_s).size(), 0);
        }
        QVERIFY2(DiscInABox::Said().contains(said), qPrintable(DiscInABox::Said()));
    }

    /// One program asks the drive, whatever is pressed meanwhile, and the operator needn't wait for it.
    void ADriveThatDoesntAnswer()
    {
        WriteWholeFile(m_box->Images() + u"sr0"_s, "");
        m_box->Stage(u"a.jpg"_s, "a");
        m_box->Replace(u"echo $$ >> $IMAGES/asked; exec sleep 1000"_s);
        DiscWriter writer(m_box->Images());
        const QString asked = m_box->Images() + u"asked"_s;
        QTimer press;
        connect(&press, &QTimer::timeout, &press, [&] {
            if (Files().KindOf(asked) == FileKind::None)
                return;
            press.stop();
            QVERIFY(writer.IsBusy() && writer.Equipped());
            writer.StartBurn();
            QVERIFY(!writer.IsBurning());
            waiting::Cancel();
        });
        press.start(10);
        QVERIFY_THROWS_EXCEPTION(PlatformError, writer.Equipped());
        const QByteArray children = Files().ReadFile(asked);
        QCOMPARE(children.count('\n'), 1);
        QTRY_VERIFY(kill(children.trimmed().toInt(), 0) != 0);
        QVERIFY(!writer.IsBusy());
    }

    void ADriveTellsGarbage_data()
    {
        QTest::addColumn<QString>("script");
        QTest::newRow("no text") << u"head -c 900000 /dev/urandom >&2"_s;
        QTest::newRow("without an end of the line") << u"tr '\\0' x </dev/zero"_s;
        QTest::newRow("notes without end") << u"yes 'Media status : is blank' >&2"_s;
        QTest::newRow("nothing") << QString();
    }

    void ADriveTellsGarbage()
    {
        QFETCH(const QString, script);
        WriteWholeFile(m_box->Images() + u"sr0"_s, "");
        m_box->Stage(u"a.jpg"_s, "a");
        m_box->Replace(script.isEmpty() ? u"exit"_s : script);
        DiscWriter writer(m_box->Images());
        QVERIFY(!writer.Equipped());
        writer.StartBurn();
        QTRY_VERIFY(!writer.IsBurning());
        QVERIFY2(DiscInABox::Said().contains(u"CD에 쓸 수 없습니다.!!"_s), qPrintable(DiscInABox::Said()));
    }

    /// The system ends the program; the next one tells.
    void ADiscThatCouldntBeFinishedIsToldOf()
    {
        m_box->Stage(u"a.jpg"_s, "a");
        m_box->Replace(u"exec sleep 1000"_s);
        const auto burner = DiscInABox::Burner();
        burner->Startburn();
        QVERIFY(burner->isburning());
        QCOMPARE(burner->Interrupted(), QString());
        m_box->desk->endIsRequested = true;
        burner->Finish();
        QVERIFY(!burner->isburning());
        RegisterDisc();
        QVERIFY(DiscInABox::Burner()->Interrupted().contains(u"cd.iso"_s));
        QCOMPARE(DiscInABox::Burner()->Interrupted(), QString());
        QCOMPARE(m_box->ImageNames(), QStringList{});
    }

    void AStick_data()
    {
        Columns<QString, QString, QStringList>("trouble", "said", "onStick");
        const QStringList written{u"CAPTURE_20261124-2"_s, u"CAPTURE_20261124"_s};
        const QStringList before{u"CAPTURE_20261124"_s};
        QTest::newRow("none") << QString() << u"이제 빼도 됩니다."_s << written;
        QTest::newRow("in use") << u"busy"_s << u"다른 프로그램이"_s << written;
        QTest::newRow("full") << u"full"_s << u"공간이 부족합니다.!!"_s << before;
        QTest::newRow("write-protected") << u"protected"_s << u"쓰기 금지"_s << before;
        QTest::newRow("a write fails") << u"fault"_s << u"저장하지 못했습니다.!!"_s << before;
        QTest::newRow("cancelled") << u"cancel"_s << u"취소하였습니다."_s << before;
        QTest::newRow("pulled out") << u"gone"_s << u"빠졌습니다.!!"_s << QStringList{};
    }

    void AStick()
    {
        QFETCH3(QString, trouble, QString, said, QStringList, onStick);
        const QString place = m_box->Images() + u"STICK"_s;
        QDir().mkpath(place + u"/CAPTURE_20261124"_s);
        FakeUdisks udisks(m_box->Images() + u"bus"_s, place);
        udisks.refusal = trouble == u"busy" ? u"org.freedesktop.UDisks2.Error.DeviceBusy"_s : QString();
        udisks.isReadOnly = trouble == u"protected";
        m_box->Stage(u"a.jpg"_s, Noise(3000000));
        m_box->Stage(u"폴더/물음?.txt"_s, "b");
        m_box->files->freeBytes = trouble == u"full" ? 1000000 : -1;
        DiscWriter writer(m_box->Images());
        writer.UseSticks(true);
        QCOMPARE(writer.Drives().size(), 1);
        QCOMPARE(writer.Drives().first().DriveType, DriveTypeRemovable);
        writer.UseDrive(place);
        QVERIFY(writer.Equipped());
        if (trouble == u"fault")
            LimitFiles(1000000);
        writer.StartBurn();
        if (trouble == u"cancel")
            DiscInABox::Press(u"cmdCancel"_s);
        if (trouble == u"gone")
            QVERIFY(QDir().rename(place, m_box->Images() + u"pulled"_s));
        QTRY_VERIFY(!writer.IsBurning());
        LimitFiles(RLIM_INFINITY);
        QVERIFY2(DiscInABox::Said().contains(said), qPrintable(DiscInABox::Said()));
        QCOMPARE(QDir(place).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size(), onStick.size());
        for (const QString& name : onStick)
            QVERIFY(FolderExists(place + u'/' + name));
        QCOMPARE(udisks.unmounted.size(), trouble.isEmpty() ? 1 : 0);
        if (onStick.size() == 2) {
            QCOMPARE(Files().ReadFile(place + u"/CAPTURE_20261124-2/a.jpg"_s), Noise(3000000));
            QCOMPARE(Files().ReadFile(place + u"/CAPTURE_20261124-2/폴더/물음_.txt"_s), QByteArray("b"));
        }
    }

private:
    std::unique_ptr<DiscInABox> m_box;
};

QTEST_MAIN(DiscWriterTest)
#include "DiscWriterTest.moc"
