#include "filing/MarkedPictures.h"

#include "contracts/PlatformError.h"
#include "filing/capture_root.h"
#include "filing/originals.h"
#include "frame/file_calls.h"
#include "frame/guard.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "frame/waiting.h"
#include "records/Statement.h"

#include <QUuid>

using namespace Qt::StringLiterals;

namespace {

/// So long after a failure the database is asked again.
constexpr int RetryMs = 1000;
/// What the end waits for sums that are under way.
constexpr int EndPatienceMs = 1000;
/// What it waits for the journal.
constexpr int JournalPatienceMs = 3000;

[[noreturn]] void ThrowAway(const QString& path)
{
    throw FilesAway(u"저장 폴더가 응답하지 않습니다.!! (%1)"_s.arg(NativePath(path)));
}

/// The picture has been deleted since: what lies in the Log folder is what was marked up.
void KeepOfDeleted(const MarkedJob& job)
{
    const QString path = job.visit.DeletedPicturePath(job.number);
    if (!capture_root::IsGone(job.visit.captureDir, job.visit.PicturePath(job.number)))
        ThrowAway(job.visit.SectionFolder());
    if (Files().KindOf(path) == FileKind::File && SumOf(Files().ReadArchivedFile(path)) == job.sum)
        ReplaceSum(job.visit, job.number, job.sum, SumState::Deleted);
}

/// As the rows of movies name it.
Visit OfMovies(Visit visit)
{
    visit.etc = QString::fromUtf16(MovieSection);
    return visit;
}

/// On the connection's thread.
void Keep(const MarkedJob& job)
{
    // Statements wait behind this.
    if (filecalls::AnyHeld())
        ThrowAway(job.visit.SectionFolder());
    const QString live = job.Path();
    const QByteArray present = Files().VersionOf(live);
    if (present.isEmpty()) {
        if (!job.isMovie)
            KeepOfDeleted(job);
        else if (capture_root::IsGone(job.visit.captureDir, live))
            SumIsDeleted(OfMovies(job.visit), job.number, {});
        else
            ThrowAway(live);
        return;
    }
    // Another station's file has come since, and its sum comes behind it.
    if (present != job.version)
        return;
    const Visit visit = job.isMovie ? OfMovies(job.visit) : job.visit;
    ReplaceSum(visit, job.number, job.sum, SumState::Live);
    if (!job.isMovie)
        journal::NotingFaults([&] { originals::Adopt(visit, job.number); });
    const QByteArray after = Files().VersionOf(live);
    if (after.isEmpty())
        SumIsDeleted(visit, job.number, {});
    else if (after != job.version) // Its sum may have come before this one.
        ReplaceSum(visit, job.number, SumOfFile(live), SumState::Live);
}

} // namespace

MarkedPictures::MarkedPictures(PictureJournal& journal) : m_journal(journal)
{
    m_retry.setSingleShot(true);
    m_retry.setInterval(RetryMs);
    const auto submitAll = [this] {
        for (const MarkedJob& job : QList(m_journal.Marked()))
            Submit(job);
    };
    connect(&m_retry, &QTimer::timeout, this, submitAll);
    submitAll();
}

void MarkedPictures::Add(const Visit& visit, int number, const PictureSum& sum, const QByteArray& version)
{
    Store({QUuid::createUuid().toString(QUuid::Id128), visit, number, sum, version});
}

void MarkedPictures::AddMovie(const Visit& visit, int number, const PictureSum& sum, const QByteArray& version)
{
    Store({QUuid::createUuid().toString(QUuid::Id128), visit, number, sum, version, true});
}

void MarkedPictures::Store(const MarkedJob& job)
{
    m_journal.StoreMarked(job);
    Submit(job);
}

void MarkedPictures::Submit(const MarkedJob& job)
{
    QueueStatements(
        this, [job] { Keep(job); },
        [this, id = job.id](const std::exception_ptr& fault) {
            if (fault != nullptr && guard::Is<Away>(fault)) {
                m_retry.start();
                return;
            }
            if (fault != nullptr)
                journal::NoteFault(guard::TextOf(fault));
            m_journal.RemoveMarked(id);
        });
}

MarkedPicturesAlone::MarkedPicturesAlone()
    : m_journal(
          m_writer, [](const QString& fault) { journal::NoteFault(fault); }, PictureJournal::Heir::OfNobody),
      m_pictures(m_journal)
{
}

MarkedPicturesAlone::~MarkedPicturesAlone()
{
    waiting::ServeFor(EndPatienceMs, [this] { return m_pictures.IsAtRest(); });
    m_writer.AwaitIdle(JournalPatienceMs);
    m_journal.End();
}
