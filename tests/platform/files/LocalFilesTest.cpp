#include "platform/files/LocalFiles.h"
#include "contracts/PlatformError.h"
#include "platform/files/posix_files.h"
#include "support/testing.h"

#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {
/// While it lives, no file can grow beyond the limit: a disk that fills up in the middle of a write.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &m_before); }

private:
    rlimit m_before = {};
};

/// A share that lacks operations, on a disk that fails at one step, while it lives.
class Share
{
public:
    Share(bool link, bool rename, const QString& step) : m_kept(posix_files::calls)
    {
        failing = step;
        const auto refuse = [](const char*, const char*) {
            errno = EOPNOTSUPP;
            return -1;
        };
        if (!link)
            posix_files::calls.link = refuse;
        if (!rename)
            posix_files::calls.renameToNew = refuse;
        posix_files::calls.fsync = [](int handle) {
            struct stat facts = {};
            fstat(handle, &facts);
            return Fails(S_ISDIR(facts.st_mode) ? u"folder sync" : u"file sync") ? -1 : ::fsync(handle);
        };
        posix_files::calls.close = [](int handle) { return ::close(handle) != 0 || Fails(u"close") ? -1 : 0; };
        if (step == u"unlink")
            posix_files::calls.unlink = [](const char*) { return Fails(u"unlink") ? -1 : 0; };
    }
    ~Share() { posix_files::calls = m_kept; }
    Share(const Share&) = delete;
    Share& operator=(const Share&) = delete;

private:
    static bool Fails(QStringView step)
    {
        errno = EIO;
        return failing == step;
    }

    static inline QString failing;
    posix_files::SystemCalls m_kept;
};
} // namespace

class LocalFilesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void PathsOfTheStationReachTheFile()
    {
        m_files.MakeFolder(Path(u"root\\2026\\위내시경\\"_s));
        const QString path = Path(u"root\\\\2026\\위내시경\\0000123420261124001.jpg"_s);
        m_files.WriteWholeFile(path, "picture");
        QVERIFY(QFile::exists(m_folder->filePath(u"root/2026/위내시경/0000123420261124001.jpg"_s)));
        QVERIFY(m_files.FileExists(path));
        QVERIFY(!m_files.FileExists(Path(u"root\\2026\\위내시경"_s)));
        QCOMPARE(m_files.ReadFile(path), QByteArray("picture"));
    }

    void NewFileIsNeverPutOverAnother()
    {
        QVERIFY(m_files.WriteNewFile(Path(u"a"_s), "first"));
        QVERIFY(!m_files.WriteNewFile(Path(u"a"_s), "second"));
        QCOMPARE(m_files.ReadFile(Path(u"a"_s)), QByteArray("first"));
        QCOMPARE(Names(), QStringList{u"a"_s});
    }

    void AFullDiskLeavesTheOldFileAndNothingElse()
    {
        m_files.WriteWholeFile(Path(u"a"_s), "before");
        {
            const FullDisk full(4096);
            QVERIFY_THROWS_EXCEPTION(PlatformError, m_files.WriteWholeFile(Path(u"a"_s), QByteArray(100000, 'x')));
            QVERIFY_THROWS_EXCEPTION(PlatformError, m_files.WriteNewFile(Path(u"b"_s), QByteArray(100000, 'x')));
        }
        QCOMPARE(m_files.ReadFile(Path(u"a"_s)), QByteArray("before"));
        QCOMPARE(Names(), QStringList{u"a"_s});
    }

    /// What a share may refuse and a disk may report, at each step of bringing a file under its name.
    void FaultsOnTheWay_data()
    {
        Columns<bool, bool, QString, bool, bool>("link", "rename", "failing", "stands", "told");
        QTest::newRow("no links") << false << true << QString() << true << false;
        QTest::newRow("neither links nor exclusive renaming") << false << false << QString() << true << false;
        QTest::newRow("the file's sync") << true << true << u"file sync"_s << false << true;
        QTest::newRow("its close") << true << true << u"close"_s << false << true;
        QTest::newRow("removal of the partial name") << true << true << u"unlink"_s << true << true;
        QTest::newRow("the folder's sync") << true << true << u"folder sync"_s << true << true;
    }

    void FaultsOnTheWay()
    {
        QFETCH5(bool, link, bool, rename, QString, failing, bool, stands, bool, told);
        for (const bool replace : {false, true}) {
            if (replace && failing == u"unlink"_s)
                continue; // Nothing is left to remove.
            m_files.DeleteFile(Path(u"a"_s));
            const Share share(link, rename, failing);
            bool said = false;
            try {
                if (replace)
                    m_files.WriteWholeFile(Path(u"a"_s), "new");
                else
                    QVERIFY(m_files.WriteNewFile(Path(u"a"_s), "new"));
            } catch (const StoredWithFault&) {
                said = true;
                QVERIFY(stands);
            } catch (const PlatformError&) {
                said = true;
                QVERIFY(!stands);
            }
            QCOMPARE(said, told);
            QCOMPARE(m_files.FileExists(Path(u"a"_s)), stands);
            if (stands && !replace && failing.isEmpty()) {
                QVERIFY(!m_files.WriteNewFile(Path(u"a"_s), "later"));
                QCOMPARE(m_files.ReadFile(Path(u"a"_s)), QByteArray("new"));
                QCOMPARE(Names(), QStringList{u"a"_s});
            }
        }
    }

    /// Stations of several users file into one root.
    void NewFoldersAndFilesAreSharedAsTheRootIs_data()
    {
        Columns<mode_t, mode_t, mode_t, mode_t>("root", "mask", "folder", "file");
        QTest::newRow("closed root, mask of a server") << mode_t(02770) << mode_t(077) << mode_t(02770) << mode_t(0660);
        QTest::newRow("closed root, mask of a desktop") << mode_t(02770) << mode_t(02) << mode_t(02770) << mode_t(0660);
        QTest::newRow("root of one user") << mode_t(0700) << mode_t(022) << mode_t(0750) << mode_t(0640);
        QTest::newRow("open root") << mode_t(02775) << mode_t(022) << mode_t(02775) << mode_t(0664);
        QTest::newRow("root that others may pass") << mode_t(02771) << mode_t(022) << mode_t(02771) << mode_t(0660);
    }

    void NewFoldersAndFilesAreSharedAsTheRootIs()
    {
        QFETCH2(mode_t, root, mode_t, mask);
        const QByteArray native = QFile::encodeName(m_folder->path());
        QCOMPARE(chown(native.constData(), uid_t(-1), 4), geteuid() == 0 ? 0 : -1);
        const auto facts = [&](const QString& name) {
            struct stat found = {};
            stat(QFile::encodeName(m_folder->filePath(name)).constData(), &found);
            return found;
        };
        // What stands stays, however open it is.
        m_files.WritePrivateFile(Path(u"old"_s), "x");
        QCOMPARE(chmod(QFile::encodeName(m_folder->filePath(u"old"_s)).constData(), 0644), 0);
        QCOMPARE(chmod(native.constData(), root), 0);
        const mode_t before = umask(mask);
        m_files.MakeFolder(Path(u"2026\\위내시경\\"_s));
        const QString inside = u"2026\\위내시경\\"_s;
        m_files.WriteWholeFile(Path(inside + u"mark"_s), "x");
        m_files.WriteNewFile(Path(inside + u"still"_s), "x");
        m_files.CreateExclusively(Path(inside + u"claim"_s), "x");
        m_files.WritePrivateFile(Path(inside + u"secret"_s), "x");
        m_files.CopyToNewFile(Path(inside + u"secret"_s), Path(inside + u"movie"_s), {});
        umask(before);
        for (const QString& folder : {u"2026"_s, u"2026/위내시경"_s}) {
            QTEST(mode_t(facts(folder).st_mode & 07777), "folder");
            QCOMPARE(facts(folder).st_gid, facts(u"."_s).st_gid);
        }
        for (const QString& file : {u"mark"_s, u"still"_s, u"claim"_s, u"movie"_s})
            QTEST(mode_t(facts(u"2026/위내시경/"_s + file).st_mode & 0777), "file");
        QCOMPARE(facts(u"2026/위내시경/secret"_s).st_mode & 0777, mode_t(0600));
        QCOMPARE(facts(u"old"_s).st_mode & 0777, mode_t(0644));
    }

    void PartsThatLeaveTheirFolder_data()
    {
        Columns<QString, bool>("part", "allowed");
        QTest::newRow("Korean with a blank") << u"위 내시경"_s << true;
        QTest::newRow("up") << u".."_s << false;
        QTest::newRow("slash") << u"a/b"_s << false;
        QTest::newRow("backslash") << u"a\\b"_s << false;
        QTest::newRow("NUL") << u"a"_s + QChar(u'\0') << false;
    }

    void PartsThatLeaveTheirFolder()
    {
        QFETCH(QString, part);
        QTEST(IsPathPart(part), "allowed");
    }

private:
    QString Path(const QString& name) const { return m_folder->path() + u'\\' + name; }
    QStringList Names() const { return QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden); }

    LocalFiles m_files;
    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(LocalFilesTest)
#include "LocalFilesTest.moc"
