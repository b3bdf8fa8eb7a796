#include "filing/capture_root.h"
#include "filing/MovieFiling.h"
#include "filing/PictureDeletion.h"
#include "filing/StillFiling.h"
#include "frame/journal.h"
#include "records/capture_index.h"
#include "records/Statement.h"
#include "support/StationInABox.h"

#include <QDirIterator>
#include <QRandomGenerator>

using namespace Qt::StringLiterals;

/// Presses, deletions, movies, other stations, shares and databases that go and come, a root that is another one for a
/// while, and stations that end in the middle, in any order. Whatever has happened: in the end each picture that was
/// taken stands once, under a number and a row of its own, or lies among the deleted ones; the movie is the last one,
/// whole; and no other root has been touched.
class FilingWalkTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        m_movies.reset();
        m_deletions.reset();
        m_filing.reset();
        m_box.reset();
        capture_root::Watch(QString());
    }

    void Walk_data()
    {
        QTest::addColumn<quint32>("seed");
        // One of these again, or, with STATION_WALKS, so many others.
        QList<quint32> seeds{1880899823, 3504727460, 2713091737, 1727409234, 2515367510, 3862052266, 3877739965};
        if (const QByteArray wanted = qgetenv("STATION_WALK_SEED"); !wanted.isEmpty())
            seeds = {wanted.toUInt()};
        for (int walk = qEnvironmentVariableIntValue("STATION_WALKS"); walk > 0; --walk)
            seeds << QRandomGenerator::global()->generate();
        for (const quint32 seed : seeds)
            QTest::addRow("seed %u", seed) << seed;
    }

    void Walk()
    {
        QFETCH(quint32, seed);
        m_random.seed(seed);
        m_box = std::make_unique<StationInABox>();
        m_kept.clear();
        m_content = 0;
        m_movie.clear();
        MakeFolder(LogFolder(VisitContext.CaptureDir, VisitContext.Etc));
        MakeFolder(MovieFolder(VisitContext.CaptureDir));
        Start();
        for (int step = 0; step < Steps; ++step)
            Step();
        m_box->FaultyFiles().Recover();
        Database(true);
        const auto isAtRest = [this] {
            // Rows that the server has refused have their turn with the next picture, or when the visit is stored.
            m_filing->WriteWaiting();
            return m_filing->Journal().Count() == 0 && m_filing->Journal().Deletions().isEmpty() &&
                   m_filing->Journal().Records().isEmpty() && m_filing->IsAtRest() && m_movies->IsAtRest() &&
                   m_filing->Marked().IsAtRest() && m_filing->Stills().IsIdle();
        };
        QVERIFY2(QTest::qWaitFor(isAtRest, 20000), qPrintable(What()));
        End();

        QStringList rows = m_box->Value(u"SELECT GROUP_CONCAT(cap_no) AS v FROM cap"_s).split(u',', Qt::SkipEmptyParts);
        QStringList files;
        QSet<QByteArray> contents;
        // A claim that its station couldn't let go of is cleared away by a later one.
        for (const QString& name : m_box->Names(u"2026"_s, VisitContext.Etc).filter(u".jpg"_s)) {
            const QByteArray content = Files().ReadFile(CurrentVisit().SectionFolder() + name);
            // One that was refused, and came there all the same, has its claim: a later station writes its rows.
            const int number = CurrentVisit().PictureNumber(name);
            const bool isRefused = !m_kept.contains(content) && FileExists(CurrentVisit().ClaimPath(number));
            if (!isRefused || rows.contains(QString::number(number)))
                files << QString::number(number);
            QVERIFY2(!contents.contains(content), "a picture stands twice");
            contents.insert(content);
        }
        std::ranges::sort(rows);
        std::ranges::sort(files);
        QCOMPARE(files.join(u' '), rows.join(u' '));
        for (const QString& name : m_box->Names(u"2026"_s, VisitContext.Etc + u"Log"_s)) {
            const QByteArray content = Files().ReadFile(CurrentVisit().LogFolder() + name);
            QVERIFY2(!contents.contains(content), "a picture lies there twice");
            contents.insert(content);
        }
        for (const QByteArray& content : m_kept)
            QVERIFY2(contents.contains(content), content.constData());
        QByteArrayList movie;
        for (const QString& name : m_box->Names(u"2026"_s, u"movie"_s))
            movie << Files().ReadFile(MovieFolder(VisitContext.CaptureDir) + name);
        QCOMPARE(movie, m_movie);
        QCOMPARE(QDir(m_box->Desk().ProgramFolder()).entryList(QDir::Files | QDir::Hidden),
                 QStringList{u"CaptureRoot.json"_s});
    }

private:
    static constexpr int Steps = 60;

    void Start()
    {
        capture_root::Watch(m_box->Root());
        journal::NotingFaults([this] { capture_root::Judge(m_box->Root()); });
        m_filing = std::make_unique<StillFiling>([](const Visit&) { return std::nullopt; });
        m_deletions = std::make_unique<PictureDeletion>(
            *m_filing, PictureDeletion::Terms{CurrentVisit().captureDir, MarkTable::Endo});
        m_movies = std::make_unique<MovieFiling>(*m_filing);
        m_filing->WriteLeft();
    }
    void End()
    {
        m_movies->End();
        m_deletions->End();
        m_filing->End();
        m_movies.reset();
        m_deletions.reset();
        m_filing.reset();
    }

    void Step()
    {
        switch (m_random.bounded(11)) {
        case 0:
        case 1:
        case 2:
            Press();
            break;
        case 3:
            Delete(m_random.bounded(3) == 0);
            break;
        case 4:
            m_box->FaultyFiles().FailAt(1 + m_random.bounded(6), m_random.bounded(2) == 0);
            break;
        case 5:
            m_box->FaultyFiles().Recover();
            break;
        case 6:
            Database(!m_hasDatabase);
            break;
        case 7:
            Cut();
            break;
        case 8:
            Record();
            break;
        case 9:
            if (m_random.bounded(4) == 0)
                WrongRoot();
            break;
        default:
            OtherStation();
        }
        QTest::qWait(m_random.bounded(25));
    }

    void Cut()
    {
        End();
        Start();
    }

    /// A movie of one to three files, as the recorder leaves them.
    void Record()
    {
        const QString stem = m_movies->Begin(CurrentVisit());
        m_movie.clear();
        for (int part = 1 + m_random.bounded(3); part > 0; --part) {
            m_movie << "movie " + QByteArray::number(++m_content);
            QFile file(NativePath(MoviePath(stem, int(m_movie.size()))));
            if (!file.open(QIODevice::NewOnly))
                qFatal("no movie: %s", qPrintable(file.errorString()));
            file.write(m_movie.last());
        }
        m_movies->HasBegun();
        m_movies->Look();
    }

    /// The share's mount goes, and what lay below it is seen for some steps: folders as they should be, without a mark
    /// or with another one.
    void WrongRoot()
    {
        m_box->FaultyFiles().Recover();
        Database(true);
        if (!QTest::qWaitFor([this] { return m_filing->Stills().IsIdle() && m_movies->IsAtRest(); }))
            return;
        const QString root = NativePath(m_box->Root()).chopped(1);
        const QString aside = root + u".aside"_s;
        if (!QDir().rename(root, aside))
            qFatal("no root to be moved");
        MakeFolder(CurrentVisit().LogFolder());
        MakeFolder(CurrentVisit().SectionFolder());
        if (m_random.bounded(2) == 0)
            WriteWholeFile(m_box->Root() + QString::fromUtf16(capture_root::MarkName), R"({"id":"another"})");
        const auto names = [&root] {
            QStringList found;
            QDirIterator walk(root, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                              QDirIterator::Subdirectories);
            while (walk.hasNext())
                found << walk.next();
            found.sort();
            return found;
        };
        const QStringList before = names();
        for (int step = 2 + m_random.bounded(4); step > 0; --step) {
            if (m_random.bounded(3) == 0)
                Cut();
            else
                Press();
            QTest::qWait(m_random.bounded(60));
        }
        const auto isQuiet = [this] { return m_filing->Stills().UnderWay() == 0 && m_filing->Stills().IsIdle(); };
        QVERIFY(QTest::qWaitFor(isQuiet));
        QCOMPARE(names(), before);
        QDir(root).removeRecursively();
        if (!QDir().rename(aside, root))
            qFatal("no root to come back");
    }

    void Press()
    {
        const QByteArray content = "picture " + QByteArray::number(++m_content);
        m_filing->Stills().File({CurrentVisit(), PictureOrigin::Press, [content] { return content; },
                                 [](const QByteArray&) {},
                                 [this, content](int, const std::exception_ptr& fault) {
                                     if (fault == nullptr)
                                         m_kept.insert(content);
                                 }});
    }

    void Delete(bool isWhole)
    {
        if (!m_hasDatabase)
            return;
        DeletionJob job;
        job.visit = CurrentVisit();
        QList<int> numbers = StoredNumbers(job.visit, NumberOrder::Ascending);
        if (!isWhole && !numbers.isEmpty())
            numbers = {numbers[m_random.bounded(numbers.size())]};
        for (const int number : numbers)
            job.items.append(DeletionJob::Item{number});
        job.isWhole = isWhole;
        m_deletions->Begin(job);
    }

    /// A database without its tables refuses, and takes the same rows later.
    void Database(bool isThere)
    {
        // In the line of the station's own statements: beside them the file may be locked.
        if (isThere != std::exchange(m_hasDatabase, isThere))
            Execute(Statement(isThere ? u"ALTER TABLE cap_gone RENAME TO cap" : u"ALTER TABLE cap RENAME TO cap_gone"));
    }

    void OtherStation()
    {
        if (!m_hasDatabase)
            return;
        const int number = NextCaptureNo(CurrentVisit()) + 1;
        if (FileExists(CurrentVisit().PicturePath(number)) || FileExists(CurrentVisit().ClaimPath(number)))
            return;
        QFile file(NativePath(CurrentVisit().PicturePath(number)));
        if (!file.open(QIODevice::NewOnly))
            return;
        file.write("other " + QByteArray::number(++m_content));
        file.close();
        WritePictureRow(CurrentVisit(), number);
    }

    QString What() const
    {
        QStringList what{m_box->Names(u"2026"_s, VisitContext.Etc).join(u' ')};
        for (const PictureRecord& picture : m_filing->Journal().Records())
            what << u"%1 number %2 state %3"_s.arg(picture.id).arg(picture.number).arg(int(picture.state));
        for (const DeletionJob& job : m_filing->Journal().Deletions())
            what << u"deletion of %1, planned %2"_s.arg(job.items.size()).arg(job.isPlanned);
        return what.join(u'\n');
    }

    QRandomGenerator m_random;
    std::unique_ptr<StationInABox> m_box;
    std::unique_ptr<StillFiling> m_filing;
    std::unique_ptr<PictureDeletion> m_deletions;
    std::unique_ptr<MovieFiling> m_movies;
    QSet<QByteArray> m_kept; ///< Pictures that were safe.
    QByteArrayList m_movie;  ///< Files of the one that was recorded last.
    int m_content = 0;
    bool m_hasDatabase = true;
};

QTEST_MAIN(FilingWalkTest)
#include "FilingWalkTest.moc"
