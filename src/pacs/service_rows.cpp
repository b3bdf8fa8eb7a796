#include "pacs/service_rows.h"

#include "contracts/LocalDatabase.h"
#include "pacs/queue_rows.h"
#include "records/local_tables.h"
#include "records/Statement.h"
#include "records/words.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <array>

using namespace Qt::StringLiterals;
using queue_rows::Same;
using queue_rows::TimeText;

namespace {

const std::array<QString, 6> WorklistStates{u"asked"_s, u"offered"_s, u"chosen"_s, u"taken"_s, u"nothing"_s, u"away"_s};
const std::array<QString, 4> StepStates{u"new"_s, u"running"_s, u"ended"_s, u"refused"_s};
const QString WorklistColumns = u"chart, ymd, etc, imageExt, state, reason, tries, offers, choice"_s;
const QString StepColumns =
    u"uid, chart, ymd, etc, imageExt, doctor, mark, beganAt, closedAt, state, reason, tries, wasTold, told"_s;
/// A step that a server is to be told of.
const QString StepIsOpen = u"( state = 'new' OR ( state = 'running' AND closedAt <> '' ) )"_s;

/// Of an order, by name.
struct OrderText
{
    QString name;
    QString DicomOrder::*text;
};

const std::array<OrderText, 9> OrderTexts{{
    {u"accession"_s, &DicomOrder::accession},
    {u"procedureId"_s, &DicomOrder::procedureId},
    {u"procedureText"_s, &DicomOrder::procedureText},
    {u"procedureCode"_s, &DicomOrder::procedureCode},
    {u"procedureScheme"_s, &DicomOrder::procedureScheme},
    {u"procedureName"_s, &DicomOrder::procedureName},
    {u"stepId"_s, &DicomOrder::stepId},
    {u"stepText"_s, &DicomOrder::stepText},
    {u"referring"_s, &DicomOrder::referring},
}};

QString JsonOf(const QList<service_rows::Offer>& offers)
{
    QJsonArray array;
    for (const service_rows::Offer& offer : offers) {
        QJsonObject json{{u"key"_s, offer.key}, {u"text"_s, offer.text}, {u"study"_s, offer.study}};
        for (const OrderText& each : OrderTexts)
            json[each.name] = offer.order.*each.text;
        array.append(json);
    }
    return array.isEmpty() ? QString() : QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Compact));
}

QList<service_rows::Offer> OffersOf(const QString& text)
{
    QList<service_rows::Offer> offers;
    const QJsonArray array = QJsonDocument::fromJson(text.toUtf8()).array();
    for (const auto& value : array) {
        const QJsonObject json = value.toObject();
        service_rows::Offer offer{json[u"key"_s].toString(), json[u"text"_s].toString(), {}, {}};
        offer.study = json[u"study"_s].toString();
        for (const OrderText& each : OrderTexts)
            offer.order.*each.text = json[each.name].toString();
        offers.append(offer);
    }
    return offers;
}

QString Now()
{
    return QString::number(QDateTime::currentMSecsSinceEpoch());
}

QString Word(service_rows::WorklistState state)
{
    return WorklistStates.at(static_cast<std::size_t>(state));
}

QString Word(service_rows::StepState state)
{
    return StepStates.at(static_cast<std::size_t>(state));
}

QString OfVisit(const PacsLine& line)
{
    return Same(line.chart, line.ymd, line.etc, 0);
}

bool AreThere(LocalDatabase& queue)
{
    return HasTable(queue, u"commitment");
}

/// What is kept stays, and what several fit stays to be chosen until the server answers anew.
QStringList Opened(const PacsLine& line)
{
    return {Statement(u"INSERT OR IGNORE INTO worklist ( chart, ymd, etc, imageExt, state ) VALUES ( ")
                .Then(u"'", line.chart)
                .Then(u"', '", line.ymd)
                .Then(u"', '", line.etc)
                .Then(u"', '", line.imageExt)
                .Piece(u"', 'asked' )")
                .Text(),
            u"UPDATE worklist SET state = 'asked', tries = 0, notBefore = 0 WHERE state NOT IN ( 'chosen', 'taken' ) "
            "AND "_s +
                OfVisit(line)};
}

QStringList Begun(const PacsLine& line)
{
    // The process tells it once, but may tell it again when it can't be sure that it has.
    const QString isOpen = u"SELECT * FROM step WHERE closedAt = '' AND "_s + OfVisit(line) +
                           Statement().Quoted(u" AND mark = '", line.text).Text();
    return {Statement(u"INSERT OR IGNORE INTO step ( uid, chart, ymd, etc, imageExt, doctor, mark, beganAt, state ) "
                      "SELECT ")
                .Then(u"'", line.id)
                .Then(u"', '", line.chart)
                .Then(u"', '", line.ymd)
                .Then(u"', '", line.etc)
                .Then(u"', '", line.imageExt)
                .Then(u"', '", line.doctor)
                .Then(u"', '", line.text)
                .Then(u"', '", TimeText(line.takenAt))
                .Piece(u"', 'new' WHERE NOT EXISTS ( "_s + isOpen + u" )"_s)
                .Text()};
}

QStringList Closed(const PacsLine& line)
{
    return {Statement(u"UPDATE step SET notBefore = 0, closedAt = '")
                .Value(TimeText(line.takenAt))
                .Quoted(u"' WHERE closedAt = '' AND mark = '", line.text)
                .Piece(u" AND "_s + OfVisit(line))
                .Text()};
}

QStringList Retry()
{
    return {u"UPDATE step SET state = CASE WHEN wasMade = 0 THEN 'new' ELSE 'running' END, tries = 0, reason = '' "
            "WHERE state = 'refused'"_s,
            u"UPDATE step SET notBefore = 0"_s, u"UPDATE worklist SET notBefore = 0"_s,
            u"UPDATE commitment SET state = 'waiting', notBefore = 0, wasResent = 0 WHERE state = 'failed'"_s,
            u"UPDATE commitment SET notBefore = 0 WHERE state = 'waiting'"_s};
}

} // namespace

void service_rows::MakeTables(LocalDatabase& queue)
{
    if (AreThere(queue))
        return;
    queue.Run({u"CREATE TABLE IF NOT EXISTS worklist ( chart TEXT, ymd TEXT, etc TEXT, imageExt TEXT, state TEXT, "
               "reason TEXT DEFAULT '', tries INTEGER DEFAULT 0, notBefore INTEGER DEFAULT 0, offers TEXT DEFAULT '', "
               "choice TEXT DEFAULT '', PRIMARY KEY ( chart, ymd, etc ) )"_s,
               u"CREATE TABLE IF NOT EXISTS step ( uid TEXT PRIMARY KEY, chart TEXT, ymd TEXT, etc TEXT, "
               "imageExt TEXT, doctor TEXT, mark TEXT, beganAt TEXT, closedAt TEXT DEFAULT '', state TEXT, "
               "reason TEXT DEFAULT '', tries INTEGER DEFAULT 0, notBefore INTEGER DEFAULT 0, "
               "wasMade INTEGER DEFAULT 0, wasTold INTEGER DEFAULT 0, told TEXT DEFAULT '' )"_s,
               u"CREATE TABLE IF NOT EXISTS commitment ( uid TEXT PRIMARY KEY, classUid TEXT, chart TEXT, ymd TEXT, "
               "etc TEXT, number INTEGER, transactionUid TEXT DEFAULT '', state TEXT, reason TEXT DEFAULT '', "
               "notBefore INTEGER DEFAULT 0, wasResent INTEGER DEFAULT 0 )"_s});
}

void service_rows::Take(LocalDatabase& queue, const PacsLine& line)
{
    switch (line.kind) {
    case PacsLine::Opened:
        queue.Run(Opened(line));
        break;
    case PacsLine::Chosen:
        queue.Run(
            {Statement(u"UPDATE worklist SET state = 'chosen', notBefore = 0, choice = '")
                 .Value(line.text)
                 .Piece(u"' WHERE state IN ( 'asked', 'offered', 'away' ) AND offers <> '' AND "_s + OfVisit(line))
                 .Text()});
        break;
    case PacsLine::Begun:
        queue.Run(Begun(line));
        break;
    case PacsLine::Closed:
        queue.Run(Closed(line));
        break;
    case PacsLine::Retry:
        queue.Run(Retry());
        break;
    case PacsLine::Drop:
        queue.Run({u"DELETE FROM step WHERE state = 'refused'"_s, u"DELETE FROM commitment WHERE state = 'failed'"_s});
        break;
    default:
        break;
    }
}

QList<service_rows::Worklist> service_rows::Worklists(LocalDatabase& queue, const QString& condition)
{
    QList<Worklist> worklists;
    if (!AreThere(queue))
        return worklists;
    for (const QVariantList& row : queue.Rows(u"SELECT %1 FROM worklist WHERE "_s.arg(WorklistColumns) + condition)) {
        const auto text = [&row](qsizetype column) { return row.at(column).toString(); };
        worklists.append({text(0), text(1), text(2), text(3), FromWord<WorklistState>(WorklistStates, text(4)), text(5),
                          row.at(6).toInt(), OffersOf(text(7)), text(8)});
    }
    return worklists;
}

QList<service_rows::Worklist> service_rows::DueWorklists(LocalDatabase& queue)
{
    return Worklists(queue, u"state IN ( 'asked', 'chosen' ) AND notBefore <= "_s + Now());
}

void service_rows::Answer(LocalDatabase& queue, const Worklist& worklist, qint64 notBefore)
{
    const bool isOfChosen = worklist.state == WorklistState::Taken && !worklist.choice.isEmpty();
    queue.Run({Statement(u"UPDATE worklist SET state = '")
                   .Value(Word(worklist.state))
                   .Then(u"', reason = '", worklist.reason)
                   .Then(u"', offers = '", JsonOf(worklist.offers))
                   .Then(u"', tries = ", worklist.tries)
                   .Piece(u", notBefore = %1 WHERE state = '%2' AND "_s.arg(notBefore).arg(
                       Word(isOfChosen ? WorklistState::Chosen : WorklistState::Asked)))
                   .Piece(Same(worklist.chart, worklist.ymd, worklist.etc, 0))
                   .Text()});
}

void service_rows::PutOff(LocalDatabase& queue, const Worklist& worklist, qint64 notBefore)
{
    queue.Run({u"UPDATE worklist SET tries = %1, notBefore = %2 WHERE "_s.arg(worklist.tries).arg(notBefore) +
               Same(worklist.chart, worklist.ymd, worklist.etc, 0)});
}

void service_rows::AskAnew(LocalDatabase& queue, const Worklist& worklist)
{
    queue.Run({u"UPDATE worklist SET state = 'asked', choice = '', tries = 0, notBefore = 0 WHERE state = 'chosen' "
               "AND "_s +
               Same(worklist.chart, worklist.ymd, worklist.etc, 0)});
}

QList<service_rows::Step> service_rows::Steps(LocalDatabase& queue, const QString& condition)
{
    QList<Step> steps;
    if (!AreThere(queue))
        return steps;
    for (const QVariantList& row : queue.Rows(u"SELECT %1 FROM step WHERE "_s.arg(StepColumns) + condition)) {
        const auto text = [&row](qsizetype column) { return row.at(column).toString(); };
        steps.append({text(0), text(1), text(2), text(3), text(4), text(5), text(6),
                      QDateTime::fromString(text(7), Qt::ISODateWithMs),
                      QDateTime::fromString(text(8), Qt::ISODateWithMs), FromWord<StepState>(StepStates, text(9)),
                      text(10), row.at(11).toInt(), row.at(12).toInt() != 0, text(13).split(u' ', Qt::SkipEmptyParts)});
    }
    return steps;
}

QList<service_rows::Step> service_rows::DueSteps(LocalDatabase& queue)
{
    return Steps(queue, StepIsOpen + u" AND notBefore <= "_s + Now() + u" ORDER BY beganAt"_s);
}

QList<service_rows::Step> service_rows::OpenSteps(LocalDatabase& queue)
{
    return Steps(queue, u"closedAt = '' AND state IN ( 'new', 'running' )"_s);
}

void service_rows::Close(LocalDatabase& queue, const Step& step, const QDateTime& at)
{
    queue.Run({Statement(u"UPDATE step SET notBefore = 0, closedAt = '")
                   .Value(TimeText(at))
                   .Quoted(u"' WHERE closedAt = '' AND uid = '", step.uid)
                   .Text()});
}

void service_rows::Keep(LocalDatabase& queue, const Step& step, qint64 notBefore)
{
    const bool wasMade = step.state == StepState::Running || step.state == StepState::Ended;
    queue.Run({Statement(u"UPDATE step SET state = '")
                   .Value(Word(step.state))
                   .Then(u"', reason = '", step.reason)
                   .Then(u"', tries = ", step.tries)
                   .Then(u", wasTold = ", step.wasTold ? 1 : 0)
                   .Piece(wasMade ? u", wasMade = 1" : u"")
                   .Then(u", told = '", step.told.join(u' '))
                   .Piece(u"', notBefore = %1"_s.arg(notBefore))
                   .Quoted(u" WHERE uid = '", step.uid)
                   .Text()});
}

QList<PacsEntry> service_rows::EntriesOf(LocalDatabase& queue, const Step& step)
{
    QStringList earlier;
    const QString same = Same(step.chart, step.ymd, step.etc, 0);
    for (const Step& each : Steps(queue, same + Statement().Quoted(u" AND uid <> '", step.uid).Text()))
        earlier += each.told;
    QList<PacsEntry> entries = queue_rows::Entries(queue, u"state NOT IN ( 'withdrawn', 'aside' ) AND "_s + same +
                                                              u" ORDER BY number, part"_s);
    entries.removeIf([&earlier](const PacsEntry& entry) { return earlier.contains(entry.uid); });
    return entries;
}

service_rows::Kinds service_rows::DueBefore(LocalDatabase& queue, qint64 time)
{
    const auto isAny = [&](const QString& rest) {
        return !queue.Rows(u"SELECT * FROM %1 AND notBefore <= %2 LIMIT 1"_s.arg(rest).arg(time)).isEmpty();
    };
    return {isAny(u"worklist WHERE state IN ( 'asked', 'chosen' )"_s), isAny(u"step WHERE "_s + StepIsOpen),
            isAny(u"commitment WHERE state IN ( 'waiting', 'asked' )"_s)};
}

service_rows::Kinds service_rows::InSetup(const PacsSetupRecord& setup)
{
    return {!setup.Worklist.host.isEmpty(), !setup.Steps.host.isEmpty(), setup.CommitPort > 0};
}

void service_rows::ForgetOld(LocalDatabase& queue, const QString& ymd)
{
    const QString old = Statement().Quoted(u"ymd < '", ymd).Text();
    queue.Run({u"DELETE FROM worklist WHERE "_s + old,
               u"DELETE FROM step WHERE state IN ( 'ended', 'refused' ) AND "_s + old,
               u"DELETE FROM commitment WHERE "_s + old});
}
