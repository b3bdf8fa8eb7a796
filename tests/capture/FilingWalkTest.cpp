#include "filing/PictureDeletion.h"
#include "filing/StillFiling.h"
#include "records/capture_index.h"
#include "records/Statement.h"
#include "support/StationInABox.h"

#include <QRandomGenerator>

using namespace Qt::StringLiterals;

/// Presses, deletions, other stations, shares and databases that go and come, and stations that end in the middle, in
/// any order. Whatever has happened: in the end each picture that was taken stands once, under a number and a row of
/// its own, or lies among the deleted ones.
class FilingWalkTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        m_deletions.reset();
        m_filing.reset();
        m_box.reset();
    }

    void Walk_data()
    {
        QTest::addColumn<quint32>("seed");
        // One of these again, or, with STATION_WALKS, so many others.
        QList<quint32> seeds{1880899823, 3504727460, 1133039458, 2713091737, 828780564, 1727409234, 4189879707};
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
        MakeFolder(LogFolder(VisitContext.CaptureDir, VisitContext.Etc));
        Start();
        for (int step = 0; step < Steps; ++step)
            Step();
        m_box->FaultyFiles().Recover();
        Database(true);
        const auto isAtRest = [this] {
            // Rows that the server has refused have their turn with the next picture, or when the visit is stored.
            m_filing->WriteWaiting();
            return m_filing->Journal().Count() == 0 && m_filing->Journal().Deletions().isEmpty() &&
                   m_filing->Journal().Pictures().isEmpty() && m_filing->IsAtRest() &&
                   m_box->Names(u"2026"_s, VisitContext.Etc).filter(u".jpg"_s).size() ==
                       m_box->Names(u"2026"_s, VisitContext.Etc).size();
        };
        QVERIFY2(QTest::qWaitFor(isAtRest, 20000), qPrintable(What()));
        End();

        QStringList rows = m_box->Value(u"SELECT GROUP_CONCAT(cap_no) AS v FROM cap"_s).split(u',', Qt::SkipEmptyParts);
        QStringList files;
        QSet<QByteArray> contents;
        for (const QString& name : m_box->Names(u"2026"_s, VisitContext.Etc)) {
            files << QString::number(CurrentVisit().PictureNumber(name));
            const QByteArray content = Files().ReadFile(CurrentVisit().SectionFolder() + name);
            QVERIFY2(!contents.contains(content), "a picture stands twice");
            contents.insert(content);
        }
        std::ranges::sort(rows);
        std::ranges::sort(files);
        QCOMPARE(files.join(u' '), rows.join(u' '));
        for (const QString& name : m_box->Names(u"2026"_s, VisitContext.Etc + u"Log"_s))
            contents.insert(Files().ReadFile(CurrentVisit().LogFolder() + name));
        // Under a number that was taken again only the last one is left there.
        for (const QByteArray& content : m_kept)
            QVERIFY2(contents.contains(content), content.constData());
        QCOMPARE(QDir(m_box->Desk().ProgramFolder()).entryList(QDir::Files | QDir::Hidden), QStringList());
    }

private:
    static constexpr int Steps = 60;

    void Start()
    {
        m_filing = std::make_unique<StillFiling>([](const Visit&) { return std::nullopt; });
        m_deletions = std::make_unique<PictureDeletion>(
            *m_filing, PictureDeletion::Terms{CurrentVisit().captureDir, MarkTable::Endo});
        m_filing->WriteLeft();
    }
    void End()
    {
        m_deletions->End();
        m_filing->End();
        m_deletions.reset();
        m_filing.reset();
    }

    void Step()
    {
        switch (m_random.bounded(9)) {
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
            End();
            Start();
            break;
        default:
            OtherStation();
        }
        QTest::qWait(m_random.bounded(25));
    }

    void Press()
    {
        const QByteArray content = "picture " + QByteArray::number(++m_content);
        m_filing->Pictures().File({CurrentVisit(), PictureOrigin::Press, [content] { return content; },
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
        // What is deleted may be written over among the deleted ones.
        for (const int number : numbers) {
            if (FileExists(job.visit.PicturePath(number)))
                m_kept.remove(Files().ReadFile(job.visit.PicturePath(number)));
        }
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
        for (const PictureRecord& picture : m_filing->Journal().Pictures())
            what << u"%1 number %2 state %3"_s.arg(picture.id).arg(picture.number).arg(int(picture.state));
        for (const DeletionJob& job : m_filing->Journal().Deletions())
            what << u"deletion of %1, planned %2"_s.arg(job.items.size()).arg(job.isPlanned);
        return what.join(u'\n');
    }

    QRandomGenerator m_random;
    std::unique_ptr<StationInABox> m_box;
    std::unique_ptr<StillFiling> m_filing;
    std::unique_ptr<PictureDeletion> m_deletions;
    QSet<QByteArray> m_kept; ///< Pictures that were safe, and that nobody has deleted.
    int m_content = 0;
    bool m_hasDatabase = true;
};

QTEST_MAIN(FilingWalkTest)
#include "FilingWalkTest.moc"
