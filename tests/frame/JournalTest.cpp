#include "frame/journal.h"
#include "frame/terminal.h"
#include "platform/journal/StandardErrorJournal.h"
#include "support/testing.h"

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

class JournalTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void NamesAndValuesStayOut_data()
    {
        Columns<QString, QString>("shown", "line");
        const QString root = u"/srv/capture/2026/위내시경/0000123420261124001.jpg"_s;
        QTest::newRow("driver's text, which quotes")
            << u"데이터베이스 작업을 하지 못하였습니다.!!\n\nDuplicate entry '김하늘' [1062]"_s
            << u"데이터베이스 작업을 하지 못하였습니다.!! [1062]"_s;
        QTest::newRow("no number") << u"저장하지 못했습니다.!!\r\n김하늘"_s << u"저장하지 못했습니다.!!"_s;
        QTest::newRow("file of the archive") << u"파일을 쓸 수 없습니다.!! (%1: No space left)"_s.arg(root)
                                             << u"파일을 쓸 수 없습니다.!! (%1: No space left)"_s.arg(root);
        QTest::newRow("file that the operator chose")
            << u"읽을 수 없는 그림파일입니다.!! (/home/doctor/김 하늘.jpg: Is a directory)"_s
            << u"읽을 수 없는 그림파일입니다.!! (…: Is a directory)"_s;
        QTest::newRow("device") << u"직렬 포트를 열수 없습니다.!! (/dev/ttyS0: Permission denied)"_s
                                << u"직렬 포트를 열수 없습니다.!! (/dev/ttyS0: Permission denied)"_s;
    }

    void NamesAndValuesStayOut()
    {
        QFETCH(QString, shown);
        QTEST(journal::Reduced(shown, u"/srv/capture\\"_s), "line");
    }

    void ATerminalGetsNoCommands_data()
    {
        Columns<QString, QString>("piece", "shown");
        QTest::newRow("title and colour")
            << u"위\x1b]0;x\x07\x1b[31m.jpg\n"_s << u"위\uFFFD]0;x\uFFFD\uFFFD[31m.jpg\n"_s;
        QTest::newRow("line of its own") << u"x.jpg\r\n[정상] 모두"_s << u"x.jpg [정상] 모두"_s;
        QTest::newRow("8-bit control") << u"\u009B2J위\u0085\u2028"_s << u"\uFFFD2J위 "_s;
        QTest::newRow("turned around") << u"\u202Egpj.exe"_s << u"\uFFFDgpj.exe"_s;
        QTest::newRow("half a character") << QString(QChar(0xD83D)) + u"a"_s << u"\uFFFDa"_s;
        QTest::newRow("text") << u"  위 내시경 😀 한글\n"_s << u"  위 내시경 😀 한글\n"_s;
    }

    void ATerminalGetsNoCommands()
    {
        QFETCH2(QString, piece, QString, shown);
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), std::fclose);
        TerminalOutput(file.get()) << piece;
        std::rewind(file.get());
        QByteArray written(200, 0);
        written.resize(qsizetype(std::fread(written.data(), 1, size_t(written.size()), file.get())));
        QCOMPARE(QString::fromUtf8(written), shown);
    }

    void AReaderThatStandsStillHoldsNobodyUp()
    {
        // As RegisterJournal does: a line may still be on its way when the reader goes.
        std::signal(SIGPIPE, SIG_IGN);
        int ends[2] = {};
        QVERIFY(pipe2(ends, O_CLOEXEC) == 0);
        const int before = dup(STDERR_FILENO);
        dup2(ends[1], STDERR_FILENO);
        close(ends[1]);
        {
            StandardErrorJournal lines;
            for (int line = 0; line < 5000; ++line)
                lines.Write(Journal::Warning, u"\x1b"_s + QString(200, u'가'));
            QByteArray read;
            pollfd ready{ends[0], POLLIN, 0};
            while (!read.contains("줄을 적지 못하였습니다") && poll(&ready, 1, 5000) == 1) {
                QByteArray piece(65536, 0);
                piece.resize(qMax(ssize_t(0), ::read(ends[0], piece.data(), size_t(piece.size()))));
                read += piece;
            }
            dup2(before, STDERR_FILENO);
            QVERIFY(read.contains("줄을 적지 못하였습니다"));
            QVERIFY(read.startsWith("20") && read.contains(" 주의: \uFFFD가") && !read.contains('\x1b'));
        }
        close(before);
        close(ends[0]);
    }
};

QTEST_GUILESS_MAIN(JournalTest)
#include "JournalTest.moc"
