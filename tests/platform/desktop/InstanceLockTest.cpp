#include "platform/desktop/InstanceLock.h"
#include "support/testing.h"

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {
/// The other instance: says whether it found one, and stays until its input is closed.
int RunOther(const QString& runtimeFolder, const QString& programFolder)
{
    InstanceLock lock(runtimeFolder, programFolder);
    std::puts(lock.HeldByAnother() ? "second" : "first");
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
    return 0;
}
} // namespace

class InstanceLockTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void OneAtATime_data()
    {
        QTest::addColumn<QString>("runtimeFolder");
        QTest::newRow("folder of the session") << u"session"_s;
        QTest::newRow("no session") << QString();
    }

    void OneAtATime()
    {
        QFETCH(QString, runtimeFolder);
        const QTemporaryDir root;
        QDir(root.path()).mkdir(u"session"_s);
        QDir(root.path()).mkdir(u"program"_s);
        const QStringList folders{runtimeFolder.isEmpty() ? QString() : root.filePath(runtimeFolder),
                                  root.filePath(u"program"_s)};
        InstanceLock own(folders[0], folders[1]);

        QProcess other;
        QCOMPARE(Start(other, folders), "first"_ba);
        QVERIFY(own.HeldByAnother());
        QVERIFY(own.HeldByAnother());

        // Nothing of a killed instance stands in the way.
        other.kill();
        QVERIFY(other.waitForFinished());
        QVERIFY(!own.HeldByAnother());
        QVERIFY(!own.HeldByAnother());

        QProcess late;
        QCOMPARE(Start(late, folders), "second"_ba);
        late.closeWriteChannel();
        QVERIFY(late.waitForFinished());
    }

private:
    static QByteArray Start(QProcess& other, const QStringList& folders)
    {
        other.start(QCoreApplication::applicationFilePath(), QStringList{u"--other"_s} + folders);
        return other.waitForReadyRead(20000) ? other.readLine().trimmed() : "silent";
    }
};

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 4 && arguments[1] == u"--other")
        return RunOther(arguments[2], arguments[3]);
    InstanceLockTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "InstanceLockTest.moc"
