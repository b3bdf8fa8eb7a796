#include "platform/process/child_process.h"
#include "support/testing.h"

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

class ChildProcessTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void WhatAProgramDoes_data()
    {
        Columns<QString, int, int, QString>("script", "silenceMs", "totalMs", "fault");
        constexpr int Long = 100'000; // No row that passes takes it.
        constexpr int Short = 300;
        const auto babbles = [&](const char* name, const QString& script) {
            QTest::newRow(name) << script << Long << Long << u"bash이(가) 끝없이 출력하여 중단하였습니다.!!"_s;
        };
        babbles("babbles", u"exec yes"_s);
        babbles("babbles of faults", u"exec yes >&2"_s);
        babbles("babbles without an end of a line", u"exec tr '\\0' x </dev/zero"_s);
        babbles("babbles of faults without an end of a line", u"exec tr '\\0' x </dev/zero >&2"_s);
        babbles("babbles through another", u"yes & wait"_s);
        babbles("babbles of nothing", u"exec yes ''"_s);
        const QString silent = u"bash이(가) 응답하지 않습니다.!!"_s;
        QTest::newRow("is silent") << u"exec sleep 1000"_s << Short << Long << silent;
        QTest::newRow("ignores a request to end")
            << u"trap '' TERM; while :; do sleep 1000; done"_s << Short << Long << silent;
        QTest::newRow("never ends") << u"while :; do echo x; sleep 0.02; done"_s << Long << Short
                                    << u"bash이(가) 정해진 시간 안에 끝나지 않습니다.!!"_s;
        QTest::newRow("crashes") << u"kill -SEGV $$"_s << Long << Long << u"bash이(가) 도중에 끝났습니다.!!"_s;
    }

    void WhatAProgramDoes()
    {
        QFETCH4(QString, script, int, silenceMs, int, totalMs, QString, fault);
        constexpr qint64 OutputBytes = 200'000;
        const QTemporaryDir folder;
        const ChildResult result = RunChild(u"bash"_s, {u"-c"_s, u"echo $$ >group; "_s + script}, folder.path(),
                                            {.outputBytes = OutputBytes, .silenceMs = silenceMs, .totalMs = totalMs});
        QCOMPARE(result.fault, fault);
        QVERIFY(!result.succeeded);
        QVERIFY(result.output.size() + result.errors.size() <= OutputBytes);
        QVERIFY(LinesOf(result.output).size() <= OutputBytes / LineCost);
        QFile group(folder.filePath(u"group"_s));
        QVERIFY(group.open(QIODevice::ReadOnly));
        const int leader = group.readAll().trimmed().toInt();
        QVERIFY(leader > 1);
        QTRY_VERIFY(kill(-leader, 0) != 0);
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList{u"group"_s});
    }

    void AProgramOfGoodManners()
    {
        qputenv("LANGUAGE", "ko");
        const int ours = open("/dev/null", O_RDONLY);
        // The one that it leaves behind holds its output open.
        const QString script = u"cat; echo \"$LC_ALL $LANGUAGE.\"; ulimit -Hc; (setsid sleep 20 &)\n"
                               "[ -e /proc/$$/fd/%1 ] || echo '다 닫힘' >&2\n"
                               "read -r _ _ _ _ _ session _ </proc/$$/stat; [ $session = $$ ] && echo alone >&2"_s;
        const ChildResult result = RunChild(u"bash"_s, {u"-c"_s, script.arg(ours)}, u"/"_s, {.silenceMs = 10'000});
        close(ours);
        QCOMPARE(result.fault, QString());
        QVERIFY(result.succeeded);
        QCOMPARE(LinesOf(result.output), (QStringList{u"C.UTF-8 ."_s, u"0"_s}));
        QCOMPARE(LinesOf(result.errors).value(0), u"다 닫힘"_s);
        QCOMPARE(LinesOf(result.errors).last(), u"alone"_s);
    }

    void OneThatEatsMemory()
    {
        const QStringList eats{u"-c"_s, u"text=$(head -c 60000000 /dev/zero | tr '\\0' x); echo eaten"_s};
        QCOMPARE(RunChild(u"bash"_s, eats, {}, {}).output, "eaten\n");
        const ChildResult result = RunChild(u"bash"_s, eats, {}, {.memoryBytes = 16 << 20});
        QVERIFY(!result.succeeded);
        QCOMPARE(result.output, "");
    }

    void OneThatNobodyWantsAnyMore()
    {
        QCOMPARE(RunChild(u"no-such-program"_s, {}, {}, {}).fault, u"no-such-program을(를) 실행할 수 없습니다.!!"_s);
        std::stop_source stop;
        stop.request_stop();
        // Also while there is always something to read.
        QCOMPARE(RunChild(u"yes"_s, {}, {}, {.outputBytes = 1 << 30}, stop.get_token()).fault,
                 u"yes을(를) 그만두었습니다."_s);
    }
};

QTEST_GUILESS_MAIN(ChildProcessTest)
#include "ChildProcessTest.moc"
