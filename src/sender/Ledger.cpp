#include "sender/Ledger.h"

#include "contracts/LocalDatabase.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/journal.h"
#include "pacs/parts.h"
#include "pacs/queue_rows.h"
#include "pacs/SenderQueue.h"
#include "pacs/service_rows.h"
#include "records/Statement.h"
#include "sender/LedgerChange.h"

#include <QUuid>

#include <chrono>
#include <thread>
#include <utility>

using namespace Qt::StringLiterals;
using queue_rows::Is;
using queue_rows::Same;

namespace {

constexpr int LinesAtOnce = 1000;
constexpr int DaysKept = 400;
/// A queue is put aside only when it can't be read so often.
constexpr int OpenTries = 4;
constexpr int OpenPauseMs = 250;

/// A line that came meanwhile may have given it another place.
QString Where(const PacsEntry& entry)
{
    return u" WHERE "_s + Same(entry);
}

} // namespace

Ledger::Ledger()
{
    try {
        OpenPatiently();
    } catch (const PlatformError& error) {
        journal::NoteFault(error.Text());
        m_database.reset();
        UseService<LocalDatabases>().Rename(SenderQueue::Path(), SenderQueue::Path() + u".broken"_s);
        Open();
    }
    PutBack(true);
    m_database->Run({u"UPDATE picture SET notBefore = 0 WHERE "_s + Is(PacsState::Waiting)});
}

Ledger::~Ledger() = default;

void Ledger::OpenPatiently()
{
    // Another process may be making it at this very moment.
    for (int left = OpenTries - 1; left > 0; --left) {
        if (journal::NotingFaults([this] { Open(); }))
            return;
        std::this_thread::sleep_for(std::chrono::milliseconds(OpenPauseMs));
    }
    Open();
}

void Ledger::Open()
{
    // Behind a power cut the lines are there again, and what was under way is asked of the server.
    m_database = UseService<LocalDatabases>().Open(SenderQueue::Path(), LocalDatabases::Process);
    queue_rows::MakeTables(*m_database);
}

Ledger::Orders Ledger::TakeLines(const Rules& rules)
{
    Orders orders;
    m_rules = rules;
    for (;;) {
        const auto lines = queue_rows::Lines(*m_database, LinesAtOnce);
        if (lines.isEmpty())
            return orders;
        orders.areAny = true;
        m_database->Together([&] {
            LedgerChange change(*m_database, rules);
            for (const auto& [place, line] : lines) {
                change.Take(line, orders);
                service_rows::Take(*m_database, line);
            }
            m_database->Run({queue_rows::RemoveLinesUpTo(lines.last().first)});
        });
    }
}

QList<Ledger::VisitToAsk> Ledger::Visits(const QString& rest)
{
    QList<VisitToAsk> visits;
    for (const QVariantList& row : m_database->Rows(u"SELECT chart, ymd, etc, doctor, imageExt FROM "_s + rest))
        visits.append({row.at(0).toString(), row.at(1).toString(), row.at(2).toString(), row.at(3).toString(),
                       row.at(4).toString()});
    return visits;
}

QList<Ledger::VisitToAsk> Ledger::VisitsToAsk()
{
    return Visits(u"visit WHERE isToBeAsked = 1"_s);
}

QList<Ledger::VisitToAsk> Ledger::HeldVisits(int most)
{
    return Visits(u"picture WHERE "_s + Is(PacsState::Held) +
                  u" GROUP BY chart, ymd, etc ORDER BY ymd DESC LIMIT %1"_s.arg(most));
}

void Ledger::Release(const VisitToAsk& visit)
{
    PacsLine line{PacsLine::Stored, {}, visit.chart, visit.ymd, visit.etc, visit.imageExt, 0, visit.doctor};
    m_database->Together([&] {
        Orders orders;
        LedgerChange(*m_database, {}).Take(line, orders);
    });
}

void Ledger::TakeNumbers(const VisitToAsk& visit, const QList<int>& numbers)
{
    QStringList statements;
    for (const int number : numbers) {
        // Another station may have sent it.
        statements << Statement(u"INSERT OR IGNORE INTO picture ( id, chart, ymd, etc, imageExt, number, doctor, "
                                "state, isDoubtful ) VALUES ( ")
                          .Then(u"'", QUuid::createUuid().toString(QUuid::Id128))
                          .Then(u"', '", visit.chart)
                          .Then(u"', '", visit.ymd)
                          .Then(u"', '", visit.etc)
                          .Then(u"', '", visit.imageExt)
                          .Then(u"', ", number)
                          .Then(u", '", visit.doctor)
                          .Then(u"', '", queue_rows::Word(PacsState::Waiting))
                          .Piece(u"', 1 )")
                          .Text();
    }
    statements << u"UPDATE visit SET isToBeAsked = 0 WHERE "_s + Same(visit.chart, visit.ymd, visit.etc, 0);
    m_database->Run(statements);
}

bool Ledger::MayHaveBeenSent(const PacsEntry& entry)
{
    return queue_rows::MayHaveBeenSent(*m_database, entry.chart, entry.ymd, entry.etc);
}

void Ledger::MarkSent(const PacsEntry& entry)
{
    const QString visit = Statement().Value(entry.chart).Then(u"', '", entry.ymd).Then(u"', '", entry.etc).Text();
    m_database->Run(
        {Statement(u"REPLACE INTO picture ( id, chart, ymd, etc, imageExt, number, doctor, state, uid ) "
                   "VALUES ( ")
             .Then(u"'", QUuid::createUuid().toString(QUuid::Id128))
             .Piece(u"', '"_s + visit)
             .Then(u"', '", entry.imageExt)
             .Then(u"', ", entry.number)
             .Then(u", '', '", queue_rows::Word(PacsState::Sent))
             .Then(u"', '", entry.uid)
             .Piece(u"' )")
             .Text(),
         u"REPLACE INTO visit ( chart, ymd, etc, doctor, imageExt, isStored, isToBeAsked, wasSent ) VALUES ( '"_s +
             visit + u"', '', '', 1, 0, 1 )"_s});
}

QList<PacsEntry> Ledger::Due(int most)
{
    return queue_rows::Entries(*m_database, Is(PacsState::Waiting) + u" AND NOT "_s + parts::IsRawMovie() +
                                                u" AND notBefore <= %1 ORDER BY part LIKE 'movie:%', place LIMIT %2"_s
                                                    .arg(QDateTime::currentMSecsSinceEpoch())
                                                    .arg(most));
}

QString Ledger::FirstReason()
{
    return m_database
        ->Rows(u"SELECT reason FROM picture WHERE "_s + Is(PacsState::Waiting) + u" ORDER BY place LIMIT 1"_s)
        .value(0)
        .value(0)
        .toString();
}

int Ledger::Waiting()
{
    return WaitingBut({});
}

int Ledger::WaitingBut(const QString& reason)
{
    Statement condition(u"SELECT COUNT(*) FROM picture WHERE ( ");
    condition.Piece(Is(PacsState::Waiting)).Piece(u" OR ").Piece(Is(PacsState::UnderWay)).Piece(u" )");
    if (!reason.isEmpty())
        condition.Quoted(u" AND reason <> '", reason);
    return m_database->Rows(condition.Text()).value(0).value(0).toInt();
}

void Ledger::Begin(const QList<PacsEntry>& entries)
{
    QStringList statements;
    for (const PacsEntry& entry : entries)
        statements << u"UPDATE picture SET "_s + Is(PacsState::UnderWay) + Where(entry) +
                          u" AND revision = %1"_s.arg(entry.revision);
    m_database->Run(statements);
}

bool Ledger::IsStill(const PacsEntry& entry)
{
    return !queue_rows::Entries(*m_database, Same(entry) + u" AND revision = %1 AND "_s.arg(entry.revision) +
                                                 Is(PacsState::UnderWay))
                .isEmpty();
}

void Ledger::End(const PacsEntry& entry, PacsState state, const QString& reason)
{
    m_database->Run({Statement(u"UPDATE picture SET ")
                         .Piece(Is(state))
                         .Quoted(u", tries = 0, reason = '", reason)
                         .Piece(Where(entry))
                         .Then(u" AND revision = ", entry.revision)
                         .Text()});
}

void Ledger::Sent(const PacsEntry& entry, const Stored& stored)
{
    const bool isAnother = parts::IsOfPicture(entry.part) && !entry.uid.isEmpty() && entry.uid != stored.object.uid;
    // What was sent before anybody marked it is the original from now on.
    const bool wasOriginal = isAnother && entry.uid == stored.original;
    const QString text = isAnother && !wasOriginal ? parts::TextWithFormer(entry) : entry.text;
    m_database->Together([&] {
        if (wasOriginal)
            m_database->Run(
                {u"INSERT OR IGNORE INTO picture ( id, chart, ymd, etc, imageExt, number, doctor, takenAt, "
                 "part, state, uid, classUid, restorings, sentAt ) SELECT id, chart, ymd, etc, imageExt, "
                 "number, doctor, takenAt, '%1', '%2', uid, classUid, restorings, sentAt FROM picture"_s.arg(
                     QString::fromUtf16(parts::Original), queue_rows::Word(PacsState::Sent)) +
                 Where(entry)});
        m_database->Run({Statement(u"UPDATE picture SET isDoubtful = 0, uid = '")
                             .Value(stored.object.uid)
                             .Then(u"', classUid = '", stored.object.classUid)
                             .Then(u"', instance = ", stored.instance)
                             .Then(u", restorings = ", stored.restorings)
                             .Then(u", text = '", text)
                             .Then(u"', takenAt = '",
                                   queue_rows::TimeText(stored.takenAt.isValid() ? stored.takenAt : entry.takenAt))
                             .Then(u"', sentAt = '", QDateTime::currentDateTime().toString(Qt::ISODateWithMs))
                             .Piece(u"', state = CASE WHEN revision = ")
                             .Value(entry.revision)
                             .Then(u" THEN '", queue_rows::Word(PacsState::Sent))
                             .Piece(u"' ELSE state END, reason = '', tries = 0")
                             .Piece(Where(entry))
                             .Text()});
        // It was deleted while it was under way.
        for (const PacsEntry& now :
             queue_rows::Entries(*m_database, Same(entry) + u" AND "_s + Is(PacsState::Withdrawn)))
            LedgerChange(*m_database, m_rules).Reject(now);
    });
}

void Ledger::SetAside(const PacsEntry& entry, const QString& reason)
{
    End(entry, PacsState::SetAside, reason);
}

void Ledger::Gone(const PacsEntry& entry)
{
    End(entry, PacsState::Withdrawn, {});
}

void Ledger::Later(const PacsEntry& entry, const QString& reason, int waitMs, bool isDoubtful)
{
    m_database->Run({Statement(u"UPDATE picture SET ")
                         .Piece(Is(PacsState::Waiting))
                         .Piece(u", tries = tries + 1")
                         .Quoted(u", reason = '", reason)
                         .Piece(u", notBefore = %1"_s.arg(QDateTime::currentMSecsSinceEpoch() + waitMs))
                         .Piece(waitMs > 0 ? u", place = ( SELECT MAX( place ) + 1 FROM picture )" : u"")
                         .Piece(isDoubtful ? u", isDoubtful = 1" : u"")
                         .Piece(Where(entry))
                         .Then(u" AND revision = ", entry.revision)
                         .Text()});
}

void Ledger::PutBack(bool areDoubtful)
{
    m_database->Run({u"UPDATE picture SET "_s + Is(PacsState::Waiting) +
                     (areDoubtful ? u", isDoubtful = 1"_s : QString()) + u" WHERE "_s + Is(PacsState::UnderWay)});
}

void Ledger::Tell(const QString& name, const QString& value)
{
    m_database->Run({queue_rows::WriteStatus(name, value)});
}

void Ledger::ForgetOld(const QDate& today)
{
    const QString before = today.addDays(-DaysKept).toString(u"yyyyMMdd"_s);
    const QString old = Statement().Quoted(u"ymd < '", before).Text();
    m_database->Run(
        {u"DELETE FROM picture WHERE "_s + old + u" AND state IN ( 'held', 'sent', 'committed', 'withdrawn' )"_s,
         u"DELETE FROM visit WHERE isToBeAsked = 0 AND "_s + old});
    service_rows::ForgetOld(*m_database, before);
}
