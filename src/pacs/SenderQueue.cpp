#include "pacs/SenderQueue.h"

#include "contracts/LocalDatabase.h"
#include "filing/capture_folders.h"
#include "frame/components.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "pacs/parts.h"
#include "pacs/queue_rows.h"
#include "records/Statement.h"

#include <QDateTime>
#include <QVariantList>

using namespace Qt::StringLiterals;

namespace {

const QString Prefix = u"Sender-"_s;
const QString Ending = u".queue"_s;
const QString BrokenEnding = u".broken"_s;

/// A folder may be one of several machines.
QString NameHere()
{
    return Prefix + Files().ProcessMark().section(u'.', 0, 0);
}

bool IsLiving(const QString& mark)
{
    const Holder holder = mark.isEmpty() ? Holder::Dead : Files().HolderOf(mark);
    return holder == Holder::Living || holder == Holder::Self;
}

int Count(LocalDatabase& queue, const QString& from)
{
    return queue.Rows(u"SELECT COUNT(*) FROM "_s + from).value(0).value(0).toInt();
}

/// Lines from which the sender gets something to do.
const QString ThatGo =
    u"line WHERE kind IN ( 'stored', 'retry', 'drop' ) OR ( kind IN ( 'send', 'changed' ) AND ( goes = 1 OR EXISTS ( "
    "SELECT * FROM visit WHERE visit.chart = line.chart AND visit.ymd = line.ymd AND visit.etc = line.etc AND "
    "isStored = 1 ) OR EXISTS ( SELECT * FROM picture WHERE picture.chart = line.chart AND picture.ymd = line.ymd AND "
    "picture.etc = line.etc AND picture.number = line.number AND picture.part = line.part AND state <> 'held' ) ) ) OR "
    "( kind = 'withdrawn' AND ( goes = 1 OR EXISTS ( SELECT * FROM picture WHERE picture.chart = line.chart AND "
    "picture.ymd = line.ymd AND picture.etc = line.etc AND picture.number = line.number AND uid <> '' AND state <> "
    "'withdrawn' ) ) )"_s;
const QString OfServices = u"line WHERE kind IN ( 'opened', 'begun', 'closed', 'chosen' )"_s;
/// What nobody will do anything about.
const QString Failed = u"state = 'failed'"_s;

} // namespace

QString SenderQueue::Path()
{
    return LocalFolder() + NameHere() + Ending;
}

QString SenderQueue::LockPath()
{
    return LocalFolder() + NameHere() + u".lock"_s;
}

QList<SenderQueue::Found> SenderQueue::In(const QString& folder)
{
    QList<Found> queues;
    for (const QString& name : Files().FilesStartingWith(folder, Prefix)) {
        if (!name.endsWith(Ending) && !name.endsWith(Ending + BrokenEnding))
            continue;
        Found found;
        found.path = folder + name;
        found.foreignOwner = Files().ForeignOwner(found.path);
        found.isReadable = name.endsWith(Ending) && journal::NotingFaults([&found] {
                               // This process may have its own open, and reading the file beside that would undo its
                               // locks.
                               const bool isOwn = NativePath(found.path) == NativePath(Path());
                               auto& databases = UseService<LocalDatabases>();
                               const auto queue = isOwn ? databases.Open(found.path) : databases.OpenToRead(found.path);
                               const QHash<QString, QString> status = queue_rows::Status(*queue);
                               found.isSenderThere = IsLiving(status.value(QString::fromUtf16(queue_rows::SenderMark)));
                               found.away = status.value(QString::fromUtf16(queue_rows::AwayReason));
                               found.lines = Count(*queue, u"line"_s);
                               const bool hasParts = queue_rows::HasParts(*queue);
                               found.entries = queue_rows::Entries(
                                   *queue, u"state IN ( 'waiting', 'underway', 'aside' ) ORDER BY place"_s, hasParts);
                               found.steps = service_rows::Steps(
                                   *queue, u"state IN ( 'new', 'refused' ) OR ( state = 'running' AND closedAt <> '' "
                                           ") ORDER BY beganAt"_s);
                               found.commitments = service_rows::Commitments(*queue, Failed);
                               // A queue of an earlier release has none of that.
                               if (hasParts)
                                   found.staying = queue_rows::Entries(*queue, parts::IsStaying());
                           });
        queues.append(found);
    }
    return queues;
}

SenderQueue::SenderQueue() : m_database(UseService<LocalDatabases>().Open(Path()))
{
    queue_rows::MakeTables(*m_database);
}

SenderQueue::~SenderQueue() = default;

void SenderQueue::Add(const QList<PacsLine>& lines)
{
    QStringList statements;
    for (const PacsLine& line : lines)
        statements << queue_rows::Write(line);
    m_database->Run(statements);
}

SenderQueue::State SenderQueue::Look()
{
    State state;
    for (const QVariantList& row : m_database->Rows(
             u"SELECT state, COUNT(*) FROM picture WHERE state IN ( 'waiting', 'underway', 'aside', 'held' "
             ") AND NOT ( state IN ( 'waiting', 'underway' ) AND "_s +
             parts::IsRawMovie() + u" ) GROUP BY state"_s)) {
        const int count = row.at(1).toInt();
        if (row.at(0) == u"aside"_s)
            state.setAside = count;
        else if (row.at(0) == u"held"_s)
            state.held = count;
        else
            state.waiting += count;
    }
    state.movies = Count(*m_database, u"picture WHERE state IN ( 'waiting', 'underway' ) AND "_s + parts::IsRawMovie());
    state.staying = Count(*m_database, u"picture WHERE "_s + parts::IsStaying());
    state.lines = Count(*m_database, ThatGo);
    state.waiting += state.lines;
    state.heldLines = Count(*m_database, u"line WHERE kind = 'send'"_s) -
                      Count(*m_database, u"( SELECT * FROM "_s + ThatGo + u" ) WHERE kind = 'send'"_s);
    state.held += state.heldLines;
    const QHash<QString, QString> status = queue_rows::Status(*m_database);
    state.sent = status.value(QString::fromUtf16(queue_rows::SentNow)).toInt();
    state.away = status.value(QString::fromUtf16(queue_rows::AwayReason));
    state.setup = status.value(QString::fromUtf16(queue_rows::SetupDigest));
    state.isSenderThere = IsLiving(status.value(QString::fromUtf16(queue_rows::SenderMark)));
    state.serviceLines = Count(*m_database, OfServices);
    state.due = service_rows::DueBefore(*m_database, QDateTime::currentMSecsSinceEpoch());
    state.hasOpenSteps = Count(*m_database, u"step WHERE closedAt = '' AND state IN ( 'new', 'running' )"_s) > 0;
    state.uncommitted = Count(*m_database, u"commitment WHERE "_s + Failed);
    return state;
}

std::optional<service_rows::Worklist> SenderQueue::WorklistOf(const Visit& visit)
{
    const PacsLine line = PacsLine::Of(PacsLine::Opened, visit);
    const auto found = service_rows::Worklists(*m_database, queue_rows::Same(line.chart, line.ymd, line.etc, 0));
    return found.isEmpty() ? std::nullopt : std::optional(found.first());
}

QList<PacsEntry> SenderQueue::Staying()
{
    return queue_rows::Entries(*m_database, parts::IsStaying() + u" ORDER BY place"_s);
}

QList<PacsEntry> SenderQueue::SentSince(const QString& time)
{
    return queue_rows::Entries(*m_database, u"state IN ( 'sent', 'committed' )"_s +
                                                Statement().Quoted(u" AND sentAt >= '", time).Text() +
                                                u" ORDER BY sentAt, place"_s);
}
