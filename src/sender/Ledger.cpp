#include "sender/Ledger.h"

#include "contracts/LocalDatabase.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/journal.h"
#include "pacs/queue_rows.h"
#include "pacs/SenderQueue.h"
#include "pacs/service_rows.h"
#include "records/Statement.h"

#include <QUuid>

#include <utility>

using namespace Qt::StringLiterals;
using queue_rows::Is;
using queue_rows::Same;

namespace {

constexpr int LinesAtOnce = 1000;
constexpr int DaysKept = 400;
/// Of a picture's row.
const QString NewTurn = u"place = ( SELECT MAX( place ) + 1 FROM picture ), revision = revision + 1"_s;

/// A line that came meanwhile may have given it another place.
QString Where(const PacsEntry& entry)
{
    return u" WHERE "_s + Same(entry);
}

} // namespace

/// What the lines of one transaction change.
class Ledger::Change
{
public:
    Change(LocalDatabase& queue, bool sendsEach) : m_queue(queue), m_sendsEach(sendsEach) {}

    void Take(const PacsLine& line, Orders& orders)
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

private:
    static QString Of(const PacsLine& line) { return Same(line.chart, line.ymd, line.etc, line.number); }
    static QString VisitOf(const PacsLine& line) { return Same(line.chart, line.ymd, line.etc, 0); }

    void Run(const QString& statement) { m_queue.Run({statement}); }

    std::optional<PacsEntry> Find(const PacsLine& line)
    {
        const QList<PacsEntry> found =
            queue_rows::Entries(m_queue, Of(line) + Statement().Quoted(u" AND part = '", line.part).Text());
        return found.isEmpty() ? std::nullopt : std::optional(found.first());
    }

    bool Goes(const PacsLine& line)
    {
        return m_sendsEach || line.goes ||
               !m_queue.Rows(u"SELECT * FROM visit WHERE isStored = 1 AND "_s + VisitOf(line)).isEmpty();
    }

    void Insert(const PacsLine& line, PacsState state)
    {
        Run(u"DELETE FROM picture WHERE "_s + Of(line));
        Run(Statement(u"INSERT INTO picture ( id, chart, ymd, etc, imageExt, number, doctor, state ) SELECT ")
                .Then(u"'", line.id)
                .Then(u"', '", line.chart)
                .Then(u"', '", line.ymd)
                .Then(u"', '", line.etc)
                .Then(u"', '", line.imageExt)
                .Then(u"', ", line.number)
                .Then(u", '", line.doctor)
                .Then(u"', '", queue_rows::Word(state))
                .Piece(u"'")
                .Text());
    }

    void Send(const PacsLine& line)
    {
        const std::optional<PacsEntry> known = Find(line);
        // The journal hands over again what it couldn't let go of.
        if (!known || known->id != line.id)
            Insert(line, Goes(line) ? PacsState::Waiting : PacsState::Held);
    }

    void MarkChanged(const PacsLine& line)
    {
        const std::optional<PacsEntry> known = Find(line);
        if (!known) {
            Insert(line, Goes(line) ? PacsState::Waiting : PacsState::Held);
            return;
        }
        const bool isHeld = known->state == PacsState::Held && !Goes(line);
        Run(u"UPDATE picture SET "_s + NewTurn + u", notBefore = 0, tries = 0, reason = '', "_s +
            Is(isHeld ? PacsState::Held : PacsState::Waiting) + u" WHERE "_s + Of(line));
    }

    void Withdraw(const PacsLine& line)
    {
        if (line.number == 0)
            Run(u"UPDATE visit SET isStored = -isStored WHERE isStored = 1 AND "_s + VisitOf(line));
        else if (!Find(line))
            Insert(line, PacsState::Withdrawn);
        Run(u"UPDATE picture SET revision = revision + 1, "_s + Is(PacsState::Withdrawn) + u" WHERE "_s + Of(line));
    }

    void Keep(const PacsLine& line)
    {
        if (line.number == 0)
            Run(u"UPDATE visit SET isStored = -isStored WHERE isStored = -1 AND "_s + VisitOf(line));
        // What the server has of it tells whether it goes again.
        const PacsState state = Goes(line) ? PacsState::Waiting : PacsState::Held;
        Run(u"UPDATE picture SET "_s + NewTurn + u", "_s + Is(state) + u" WHERE "_s + Of(line) + u" AND "_s +
            Is(PacsState::Withdrawn) + u" AND uid = ''"_s);
        Run(u"UPDATE picture SET revision = revision + 1, "_s + Is(PacsState::Sent) + u" WHERE "_s + Of(line) +
            u" AND "_s + Is(PacsState::Withdrawn));
    }

    void Store(const PacsLine& line)
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

    LocalDatabase& m_queue;
    const bool m_sendsEach;
};

Ledger::Ledger()
{
    try {
        Open();
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

void Ledger::Open()
{
    // Behind a power cut the lines are there again, and what was under way is asked of the server.
    m_database = UseService<LocalDatabases>().Open(SenderQueue::Path(), LocalDatabases::Process);
    queue_rows::MakeTables(*m_database);
}

Ledger::Orders Ledger::TakeLines(bool sendsEach)
{
    Orders orders;
    for (;;) {
        const auto lines = queue_rows::Lines(*m_database, LinesAtOnce);
        if (lines.isEmpty())
            return orders;
        m_database->Together([&] {
            Change change(*m_database, sendsEach);
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
        Change(*m_database, false).Take(line, orders);
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

bool Ledger::WasSent(const PacsEntry& entry)
{
    return !m_database
                ->Rows(u"SELECT * FROM visit WHERE wasSent = 1 AND "_s + Same(entry.chart, entry.ymd, entry.etc, 0))
                .isEmpty();
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
    return queue_rows::Entries(
        *m_database,
        Is(PacsState::Waiting) +
            u" AND notBefore <= %1 ORDER BY place LIMIT %2"_s.arg(QDateTime::currentMSecsSinceEpoch()).arg(most));
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

void Ledger::Sent(const PacsEntry& entry, const QString& uid)
{
    m_database->Run({Statement(u"UPDATE picture SET isDoubtful = 0, uid = '")
                         .Value(uid)
                         .Then(u"', sentAt = '", QDateTime::currentDateTime().toString(Qt::ISODateWithMs))
                         .Piece(u"', state = CASE WHEN revision = ")
                         .Value(entry.revision)
                         .Then(u" THEN '", queue_rows::Word(PacsState::Sent))
                         .Piece(u"' ELSE state END, reason = '', tries = 0")
                         .Piece(Where(entry))
                         .Text()});
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
        {u"DELETE FROM picture WHERE "_s + old + u" AND state IN ( 'held', 'sent', 'withdrawn', 'committed' )"_s,
         u"DELETE FROM visit WHERE isToBeAsked = 0 AND "_s + old});
    service_rows::ForgetOld(*m_database, before);
}
