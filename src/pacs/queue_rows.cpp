#include "pacs/queue_rows.h"

#include "contracts/LocalDatabase.h"
#include "pacs/service_rows.h"
#include "records/local_tables.h"
#include "records/Statement.h"
#include "records/words.h"

#include <array>

using namespace Qt::StringLiterals;

namespace {

const std::array<QString, 12> Kinds{u"send"_s, u"changed"_s, u"withdrawn"_s, u"kept"_s,  u"stored"_s, u"retry"_s,
                                    u"drop"_s, u"setup"_s,   u"opened"_s,    u"begun"_s, u"closed"_s, u"chosen"_s};
const std::array<QString, 7> States{u"held"_s,  u"waiting"_s,   u"underway"_s, u"sent"_s,
                                    u"aside"_s, u"withdrawn"_s, u"committed"_s};

const QString PictureColumns =
    u"place, id, chart, ymd, etc, imageExt, number, doctor, state, reason, tries, notBefore, uid, isDoubtful, "
    "revision"_s;
const QString LaterColumns = u"part, takenAt, text, classUid, instance, restorings"_s;

QString PictureTable(const QString& name)
{
    return u"CREATE TABLE IF NOT EXISTS "_s + name +
           u" ( place INTEGER PRIMARY KEY AUTOINCREMENT, id TEXT, chart TEXT, ymd TEXT, etc TEXT, imageExt TEXT, "
           "number INTEGER, doctor TEXT, state TEXT, reason TEXT DEFAULT '', tries INTEGER DEFAULT 0, "
           "notBefore INTEGER DEFAULT 0, uid TEXT DEFAULT '', isDoubtful INTEGER DEFAULT 0, "
           "revision INTEGER DEFAULT 0, sentAt TEXT DEFAULT '', part TEXT DEFAULT '', takenAt TEXT DEFAULT '', "
           "text TEXT DEFAULT '', classUid TEXT DEFAULT '', instance INTEGER DEFAULT 0, "
           "restorings INTEGER DEFAULT 0, UNIQUE ( chart, ymd, etc, number, part ) )"_s;
}

/// A queue of an earlier release, whose pictures have no parts: the key of a table can't be changed.
QStringList WithParts()
{
    return {PictureTable(u"newPicture"_s),
            u"INSERT INTO newPicture ( %1, sentAt ) SELECT %1, sentAt FROM picture"_s.arg(PictureColumns),
            u"DROP TABLE picture"_s, u"ALTER TABLE newPicture RENAME TO picture"_s};
}

} // namespace

QString queue_rows::TimeText(const QDateTime& time)
{
    return time.isValid() ? time.toString(Qt::ISODateWithMs) : QString();
}

void queue_rows::MakeTables(LocalDatabase& queue)
{
    service_rows::MakeTables(queue);
    // Without a word to the file where they are there: others may be about to write.
    if (HasColumn(queue, u"line"_s, u"part"_s) && HasColumn(queue, u"picture"_s, u"part"_s))
        return;
    const QStringList tables{
        u"CREATE TABLE IF NOT EXISTS line ( place INTEGER PRIMARY KEY AUTOINCREMENT, kind TEXT, id TEXT, "
        "chart TEXT, ymd TEXT, etc TEXT, imageExt TEXT, number INTEGER, doctor TEXT, goes INTEGER, "
        "takenAt TEXT DEFAULT '', part TEXT DEFAULT '', text TEXT DEFAULT '' )"_s,
        PictureTable(u"picture"_s), u"CREATE INDEX IF NOT EXISTS pictureState ON picture ( state, notBefore )"_s,
        u"CREATE TABLE IF NOT EXISTS visit ( chart TEXT, ymd TEXT, etc TEXT, doctor TEXT, imageExt TEXT, "
        "isStored INTEGER, isToBeAsked INTEGER, wasSent INTEGER DEFAULT 0, PRIMARY KEY ( chart, ymd, etc ) )"_s,
        u"CREATE TABLE IF NOT EXISTS status ( name TEXT PRIMARY KEY, value TEXT )"_s};
    queue.Together([&] {
        if (HasColumn(queue, u"picture"_s, u"place"_s) && !HasColumn(queue, u"picture"_s, u"part"_s))
            queue.Run(WithParts());
        queue.Run(tables);
        for (const QString& column : {u"takenAt"_s, u"part"_s, u"text"_s}) {
            if (!HasColumn(queue, u"line"_s, column))
                queue.Run({u"ALTER TABLE line ADD COLUMN %1 TEXT DEFAULT ''"_s.arg(column)});
        }
    });
}

QString queue_rows::Write(const PacsLine& line)
{
    return Statement(u"INSERT INTO line ( kind, id, chart, ymd, etc, imageExt, number, doctor, goes, takenAt, "
                     "part, text ) VALUES ( ")
        .Then(u"'", Kinds.at(line.kind))
        .Then(u"', '", line.id)
        .Then(u"', '", line.chart)
        .Then(u"', '", line.ymd)
        .Then(u"', '", line.etc)
        .Then(u"', '", line.imageExt)
        .Then(u"', ", line.number)
        .Then(u", '", line.doctor)
        .Then(u"', ", line.goes ? 1 : 0)
        .Then(u", '", TimeText(line.takenAt))
        .Then(u"', '", line.part)
        .Then(u"', '", line.text)
        .Piece(u"' )")
        .Text();
}

QList<std::pair<qint64, PacsLine>> queue_rows::Lines(LocalDatabase& queue, int most)
{
    QList<std::pair<qint64, PacsLine>> lines;
    for (const QVariantList& row :
         queue.Rows(Statement(u"SELECT place, kind, id, chart, ymd, etc, imageExt, number, doctor, goes, takenAt, "
                              "part, text FROM line ")
                        .Then(u"ORDER BY place LIMIT ", most)
                        .Text())) {
        const auto text = [&row](qsizetype column) { return row.at(column).toString(); };
        lines.append({row.at(0).toLongLong(),
                      {FromWord<PacsLine::Kind>(Kinds, text(1)), text(2), text(3), text(4), text(5), text(6),
                       row.at(7).toInt(), text(8), row.at(9).toInt() != 0,
                       QDateTime::fromString(text(10), Qt::ISODateWithMs), text(11), text(12)}});
    }
    return lines;
}

QString queue_rows::RemoveLinesUpTo(qint64 place)
{
    return u"DELETE FROM line WHERE place <= %1"_s.arg(place);
}

bool queue_rows::HasParts(LocalDatabase& queue)
{
    return HasColumn(queue, u"picture"_s, u"part"_s);
}

QList<PacsEntry> queue_rows::Entries(LocalDatabase& queue, const QString& condition, bool hasParts)
{
    QList<PacsEntry> entries;
    // One to be looked at may be of an earlier release.
    const QString later = hasParts ? LaterColumns : u"'', '', '', '', 0, 0"_s;
    for (const QVariantList& row :
         queue.Rows(u"SELECT %1, %2 FROM picture WHERE "_s.arg(PictureColumns, later) + condition)) {
        const auto text = [&row](qsizetype column) { return row.at(column).toString(); };
        entries.append({row.at(0).toLongLong(),
                        text(1),
                        text(2),
                        text(3),
                        text(4),
                        text(5),
                        row.at(6).toInt(),
                        text(7),
                        FromWord<PacsState>(States, text(8)),
                        text(9),
                        row.at(10).toInt(),
                        row.at(11).toLongLong(),
                        text(12),
                        row.at(13).toInt() != 0,
                        row.at(14).toInt(),
                        text(15),
                        QDateTime::fromString(text(16), Qt::ISODateWithMs),
                        text(17),
                        text(18),
                        row.at(19).toInt(),
                        row.at(20).toInt()});
    }
    return entries;
}

QString queue_rows::Word(PacsState state)
{
    return States.at(static_cast<std::size_t>(state));
}

QString queue_rows::Is(PacsState state)
{
    return u"state = '%1'"_s.arg(Word(state));
}

QString queue_rows::Same(const QString& chart, const QString& ymd, const QString& etc, int number)
{
    Statement condition;
    condition.Quoted(u"chart = '", chart).Quoted(u" AND ymd = '", ymd).Quoted(u" AND etc = '", etc);
    if (number > 0)
        condition.Then(u" AND number = ", number);
    return condition.Text();
}

QString queue_rows::Same(const PacsEntry& entry)
{
    return Same(entry.chart, entry.ymd, entry.etc, entry.number) +
           Statement().Then(u" AND number = ", entry.number).Quoted(u" AND part = '", entry.part).Text();
}

bool queue_rows::MayHaveBeenSent(LocalDatabase& queue, const QString& chart, const QString& ymd, const QString& etc)
{
    return ymd.trimmed() < QDate::currentDate().toString(u"yyyyMMdd"_s) ||
           !queue.Rows(u"SELECT * FROM visit WHERE wasSent = 1 AND "_s + Same(chart, ymd, etc, 0)).isEmpty();
}

QStringList queue_rows::PatientTables(LocalDatabase& queue)
{
    QStringList tables;
    for (const QString& table : {u"line"_s, u"picture"_s, u"visit"_s, u"worklist"_s, u"step"_s, u"commitment"_s}) {
        if (HasColumn(queue, table, u"chart"_s))
            tables << table;
    }
    return tables;
}

QHash<QString, QString> queue_rows::Status(LocalDatabase& queue)
{
    QHash<QString, QString> status;
    for (const QVariantList& row : queue.Rows(u"SELECT name, value FROM status"_s))
        status.insert(row.at(0).toString(), row.at(1).toString());
    return status;
}

QString queue_rows::WriteStatus(const QString& name, const QString& value)
{
    return Statement(u"REPLACE INTO status VALUES ( ").Then(u"'", name).Then(u"', '", value).Piece(u"' )").Text();
}
