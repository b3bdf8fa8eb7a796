#include "filing/Leftovers.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "filing/picture_restore.h"
#include "filing/StillFiling.h"
#include "frame/guard.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "records/capture_index.h"
#include "records/picture_sums.h"
#include "records/Statement.h"
#include "text/text_routines.h"
#include "visit/Visit.h"

#include <algorithm>

using namespace Qt::StringLiterals;

Leftovers::Leftovers(StillFiling& filing) : m_filing(filing)
{
    connect(&m_numbers, &LeftoverNumbers::Found, this,
            [this](const QList<LeftoverNumber>& numbers) { Guarded([&] { Write(numbers); }); });
}

void Leftovers::Settle(const QString& yearFolder, const QStringList& sections)
{
    QList<PictureJournal::Folder> folders = m_filing.Journal().LeftFolders();
    for (const QString& section : sections) {
        const PictureJournal::Folder folder{yearFolder, section};
        if (!Trim(section).isEmpty() && !folders.contains(folder))
            folders.append(folder);
    }
    m_numbers.LookIn(folders);
}

void Leftovers::Write(const QList<LeftoverNumber>& numbers)
{
    if (m_ended)
        return;
    m_filing.WriteLeft();
    const auto count = std::make_shared<Count>();
    for (const LeftoverNumber& number : numbers) {
        // What the journal has comes from there.
        const bool isOnItsWay =
            m_filing.Journal().Find(number.picture) != nullptr || m_filing.Journal().HasRestore(number.picture);
        if (!isOnItsWay && !m_filing.Journal().Holds(number.visit, number.number))
            Submit(number, count);
    }
    for (const RestoreJob& job : m_filing.Journal().Restores())
        Restore(job, count);
    QueueStatements(
        this, [] {}, [this, count](const std::exception_ptr&) { Tell(*count); });
}

void Leftovers::Submit(const LeftoverNumber& leftover, const CountPointer& count)
{
    const auto isNew = std::make_shared<bool>(false);
    const auto write = [isNew, leftover] {
        if (HasPictureRow(leftover.visit, leftover.number))
            return;
        AddCaptureRows(leftover.visit, leftover.number);
        *isNew = true;
        // What it was when it was taken went with its station.
        PictureSum sum;
        journal::NotingFaults(
            [&] { sum = SumOf(Files().ReadArchivedFile(leftover.visit.PicturePath(leftover.number))); });
        KeepSum(leftover.visit, leftover.number, leftover.picture, sum, SumState::Live);
    };
    QueueStatements(this, write,
                    [this, count, isNew, visit = leftover.visit, number = leftover.number,
                     picture = leftover.picture](const std::exception_ptr& fault) {
                        if (fault == nullptr) {
                            m_filing.Release(visit, number, picture);
                            if (*isNew)
                                count->settled.append(visit);
                        } else if (guard::Is<DatabaseAway>(fault)) {
                            count->isAway = true;
                        } else {
                            journal::NoteFault(guard::TextOf(fault));
                        }
                    });
}

void Leftovers::Restore(const RestoreJob& job, const CountPointer& count)
{
    struct Answer
    {
        int number = 0;
        QStringList faults;
    };
    const auto answer = std::make_shared<Answer>();
    // It asks for rows between its files, and is rare enough to be done in the line of the statements as a whole.
    QueueStatements(
        this, [answer, job] { answer->number = picture_restore::Bring(job, answer->faults); },
        [this, job, count, answer](const std::exception_ptr& fault) {
            count->tidings << answer->faults;
            AnswerRestore(job, answer->number, fault, *count);
        });
}

void Leftovers::AnswerRestore(const RestoreJob& job, int number, const std::exception_ptr& fault, Count& count)
{
    if (fault != nullptr) {
        count.isAway |= guard::Is<Away>(fault);
        count.tidings << u"중단된 되살리기를 마치지 못하였습니다. 다음 실행시 다시 합니다.!! (%1: %2)"_s.arg(
            job.source, guard::TextOf(fault));
        return;
    }
    m_filing.Journal().RestoreHasEnded(job.id, number);
    if (number == 0)
        return;
    count.restored.append(job.visit);
    count.tidings << u"중단된 되살리기를 마쳤습니다: %1 %2 %3 %4번"_s.arg(job.visit.chart, job.visit.ymd, job.visit.etc,
                                                                          NumberText(number));
}

void Leftovers::Tell(const Count& count)
{
    if (m_ended)
        return;
    if (!count.isAway)
        m_filing.Journal().LeftFoldersAreSettled();
    QStringList tidings = count.tidings;
    if (!count.settled.isEmpty())
        tidings << u"비정상 종료로 기록되지 않은 캡쳐 %1건을 복구하였습니다.!!"_s.arg(count.settled.size());
    for (const QString& owner : m_filing.Journal().ForeignOwners())
        tidings << u"다른 사용자(%1)의 기록되지 않은 캡쳐 목록이 있습니다.!! 그 사용자로 실행하여 주십시오.!!"_s.arg(
            owner);
    const QMap<QString, int>& foreign = m_filing.Journal().ForeignPictures();
    for (auto owner = foreign.begin(); owner != foreign.end(); ++owner) {
        if (owner.value() > 0)
            tidings
                << u"다른 사용자(%1)의 저장되지 않은 캡쳐 %2장이 이 컴퓨터에 있습니다.!! 그 사용자로 실행하여 주십시오.!!"_s
                       .arg(owner.key())
                       .arg(owner.value());
    }
    Q_EMIT AreSettled({count.settled + count.restored, tidings});
}
