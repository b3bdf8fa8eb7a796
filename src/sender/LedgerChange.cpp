#include "sender/LedgerChange.h"

#include "contracts/LocalDatabase.h"
#include "pacs/parts.h"
#include "pacs/queue_rows.h"
#include "records/Statement.h"
#include "sender/pauses.h"

#include <QUuid>

using namespace Qt::StringLiterals;
using queue_rows::Is;
using queue_rows::Same;

namespace {

/// A deletion that was begun has moved the file within that time, as a rule.
constexpr int DeletionMs = 3000;

QString VisitOf(const PacsLine& line)
{
    return Same(line.chart, line.ymd, line.etc, 0);
}

/// The condition that a row is the very object that the line tells of.
QString ObjectOf(const PacsLine& line)
{
    return VisitOf(line) + Statement().Then(u" AND number = ", line.number).Quoted(u" AND part = '", line.part).Text();
}

/// That it is one of the objects that go with it when it is deleted, or, without a number, with the visit's pictures.
QString AllOf(const PacsLine& line)
{
    if (!line.part.isEmpty())
        return ObjectOf(line);
    return Same(line.chart, line.ymd, line.etc, line.number) + u" AND "_s + parts::IsOfPicture();
}

} // namespace

void LedgerChange::Take(const PacsLine& line, Ledger::Orders& orders)
{
    switch (line.kind) {
    case PacsLine::Send:
        Send(line);
        break;
    case PacsLine::Changed:
        MarkChanged(line);
        break;
    case PacsLine::Withdrawn:
        Withdraw(line);
        break;
    case PacsLine::Kept:
        Keep(line);
        break;
    case PacsLine::Stored:
        Store(line);
        break;
    case PacsLine::Retry:
        orders.isRetry = true;
        Run(u"UPDATE picture SET "_s + Is(PacsState::Waiting) + u", tries = 0, reason = '' WHERE "_s +
            Is(PacsState::SetAside));
        Run(u"UPDATE picture SET notBefore = 0 WHERE "_s + Is(PacsState::Waiting));
        break;
    case PacsLine::Drop:
        Run(u"UPDATE picture SET "_s + Is(PacsState::Withdrawn) + u" WHERE "_s + Is(PacsState::SetAside));
        break;
    case PacsLine::Opened:
    case PacsLine::Begun:
    case PacsLine::Closed:
    case PacsLine::Chosen:
        break;
    case PacsLine::Setup:
        orders.setup = line.id;
        break;
    }
}

void LedgerChange::Run(const QString& statement)
{
    m_queue.Run({statement});
}

std::optional<PacsEntry> LedgerChange::Find(const PacsLine& line)
{
    const QList<PacsEntry> found = queue_rows::Entries(m_queue, ObjectOf(line));
    return found.isEmpty() ? std::nullopt : std::optional(found.first());
}

bool LedgerChange::Goes(const PacsLine& line)
{
    return m_rules.sendsEach || line.goes ||
           !m_queue.Rows(u"SELECT * FROM visit WHERE isStored = 1 AND "_s + VisitOf(line)).isEmpty();
}

void LedgerChange::Insert(const PacsLine& line, PacsState state, const QDateTime& takenAt)
{
    Run(u"DELETE FROM picture WHERE "_s + AllOf(line));
    Run(Statement(u"INSERT INTO picture ( id, chart, ymd, etc, imageExt, number, doctor, part, takenAt, text, state ) "
                  "SELECT ")
            .Then(u"'", line.id)
            .Then(u"', '", line.chart)
            .Then(u"', '", line.ymd)
            .Then(u"', '", line.etc)
            .Then(u"', '", line.imageExt)
            .Then(u"', ", line.number)
            .Then(u", '", line.doctor)
            .Then(u"', '", line.part)
            .Then(u"', '", queue_rows::TimeText(takenAt))
            .Then(u"', '", line.text)
            .Then(u"', '", queue_rows::Word(state))
            .Piece(u"'")
            .Text());
}

void LedgerChange::Send(const PacsLine& line)
{
    const std::optional<PacsEntry> known = Find(line);
    // The journal hands over again what it couldn't let go of. A deleted report may be stored again as it was.
    if (known && known->id == line.id && (known->state != PacsState::Withdrawn || !parts::IsReport(line.part)))
        return;
    if (known && parts::IsReport(line.part)) {
        // What the server has of it is told to be followed by this one.
        Run(Statement(u"UPDATE picture SET id = '")
                .Value(line.id)
                .Then(u"', text = '", line.text)
                .Then(u"', takenAt = '", queue_rows::TimeText(line.takenAt))
                .Piece(u"', notBefore = 0, tries = 0, reason = '', "_s + QString::fromUtf16(NewTurn) + u", "_s +
                       Is(PacsState::Waiting) + u" WHERE "_s + ObjectOf(line))
                .Text());
        return;
    }
    // Taken again from the deleted ones it is what it was.
    const bool isBack = known && known->state == PacsState::Withdrawn && !line.takenAt.isValid();
    if (known && known->id != line.id && known->state != PacsState::Withdrawn)
        Reject(*known);
    Insert(line, Goes(line) ? PacsState::Waiting : PacsState::Held, isBack ? known->takenAt : line.takenAt);
}

void LedgerChange::MarkChanged(const PacsLine& line)
{
    const std::optional<PacsEntry> known = Find(line);
    if (!known) {
        Insert(line, Goes(line) ? PacsState::Waiting : PacsState::Held, line.takenAt);
        return;
    }
    const bool isHeld = known->state == PacsState::Held && !Goes(line);
    Run(u"UPDATE picture SET "_s + QString::fromUtf16(NewTurn) + u", notBefore = 0, tries = 0, reason = '', "_s +
        Is(isHeld ? PacsState::Held : PacsState::Waiting) + u" WHERE "_s + ObjectOf(line));
}

void LedgerChange::Withdraw(const PacsLine& line)
{
    if (line.number == 0 && line.part.isEmpty())
        Run(u"UPDATE visit SET isStored = -isStored WHERE isStored = 1 AND "_s + VisitOf(line));
    // Another station may have sent it.
    bool isUnsure = !Find(line);
    if (isUnsure && line.number > 0)
        Insert(line, PacsState::Withdrawn, line.takenAt);
    PacsEntry meant;
    for (const PacsEntry& entry : queue_rows::Entries(m_queue, AllOf(line))) {
        Reject(entry);
        isUnsure |= entry.isDoubtful || entry.state == PacsState::UnderWay;
        meant = entry;
    }
    if (m_rules.rejects && isUnsure && line.number > 0 && line.part.isEmpty())
        InsertRejection(meant, parts::SearchOf(line.id), {});
    Run(u"UPDATE picture SET revision = revision + 1, "_s + Is(PacsState::Withdrawn) + u" WHERE "_s + AllOf(line));
}

void LedgerChange::InsertRejection(const PacsEntry& entry, const QString& uid, const QString& classUid)
{
    Run(Statement(u"INSERT OR IGNORE INTO picture ( id, chart, ymd, etc, imageExt, number, doctor, part, takenAt, "
                  "text, notBefore, state ) SELECT ")
            .Then(u"'", QUuid::createUuid().toString(QUuid::Id128))
            .Then(u"', '", entry.chart)
            .Then(u"', '", entry.ymd)
            .Then(u"', '", entry.etc)
            .Then(u"', '", entry.imageExt)
            .Then(u"', ", entry.number)
            .Then(u", '", entry.doctor)
            .Then(u"', '", parts::RejectionOf(uid))
            .Then(u"', '", queue_rows::TimeText(QDateTime::currentDateTime()))
            .Then(u"', '", classUid)
            .Piece(u"', %1, '"_s.arg(QDateTime::currentMSecsSinceEpoch() + pauses::Of(DeletionMs)))
            .Piece(queue_rows::Word(PacsState::Waiting))
            .Piece(u"'")
            .Text());
}

void LedgerChange::Reject(const PacsEntry& entry)
{
    if (!m_rules.rejects || parts::IsRejection(entry.part))
        return;
    for (const DicomReference& stored : parts::StoredOf(entry))
        InsertRejection(entry, stored.uid, stored.classUid);
}

void LedgerChange::Keep(const PacsLine& line)
{
    if (line.number == 0)
        Run(u"UPDATE visit SET isStored = -isStored WHERE isStored = -1 AND "_s + VisitOf(line));
    // What hasn't been rejected yet stays.
    Run(u"DELETE FROM picture WHERE "_s + Same(line.chart, line.ymd, line.etc, line.number) + u" AND "_s +
        parts::IsRejection() + u" AND state IN ( 'waiting', 'aside' )"_s);
    // What the server has of it tells whether it goes again.
    const PacsState state = Goes(line) ? PacsState::Waiting : PacsState::Held;
    Run(u"UPDATE picture SET "_s + QString::fromUtf16(NewTurn) + u", "_s + Is(state) + u" WHERE "_s + AllOf(line) +
        u" AND "_s + Is(PacsState::Withdrawn) + u" AND ( uid = '' OR "_s + parts::IsRejected() + u" )"_s);
    Run(u"UPDATE picture SET revision = revision + 1, "_s + Is(PacsState::Sent) + u" WHERE "_s + AllOf(line) +
        u" AND "_s + Is(PacsState::Withdrawn));
}

void LedgerChange::Store(const PacsLine& line)
{
    Run(Statement(u"REPLACE INTO visit ( chart, ymd, etc, doctor, imageExt, isStored, isToBeAsked, wasSent ) "
                  "VALUES ( ")
            .Then(u"'", line.chart)
            .Then(u"', '", line.ymd)
            .Then(u"', '", line.etc)
            .Then(u"', '", line.doctor)
            .Then(u"', '", line.imageExt)
            .Piece(u"', 1, 1, ")
            .Piece(u"COALESCE( ( SELECT wasSent FROM visit WHERE "_s + VisitOf(line) + u" ), 0 ) )"_s)
            .Text());
    Run(u"UPDATE picture SET "_s + Is(PacsState::Waiting) + u" WHERE "_s + VisitOf(line) + u" AND "_s +
        Is(PacsState::Held));
}
