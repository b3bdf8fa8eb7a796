#include "pacs/queue_rows.h"

#include "contracts/LocalDatabase.h"
#include "records/Statement.h"
#include "records/words.h"

#include <array>

using namespace Qt::StringLiterals;

namespace {

const std::array<QString, 8> Kinds{u"send"_s,   u"changed"_s, u"withdrawn"_s, u"kept"_s,
                                   u"stored"_s, u"retry"_s,   u"drop"_s,      u"setup"_s};
const std::array<QString, 6> States{u"held"_s, u"waiting"_s, u"underway"_s, u"sent"_s, u"aside"_s, u"withdrawn"_s};

} // namespace

QStringList queue_rows::Tables()
{
    return {u"CREATE TABLE IF NOT EXISTS line ( place INTEGER PRIMARY KEY AUTOINCREMENT, kind TEXT, id TEXT, "
            "chart TEXT, ymd TEXT, etc TEXT, imageExt TEXT, number INTEGER, doctor TEXT, goes INTEGER )"_s,
            u"CREATE TABLE IF NOT EXISTS picture ( place INTEGER PRIMARY KEY AUTOINCREMENT, id TEXT, chart TEXT, "
            "ymd TEXT, etc TEXT, imageExt TEXT, number INTEGER, doctor TEXT, state TEXT, reason TEXT DEFAULT '', "
            "tries INTEGER DEFAULT 0, notBefore INTEGER DEFAULT 0, uid TEXT DEFAULT '', isDoubtful INTEGER DEFAULT 0, "
            "revision INTEGER DEFAULT 0, sentAt TEXT DEFAULT '', UNIQUE ( chart, ymd, etc, number ) )"_s,
            u"CREATE INDEX IF NOT EXISTS pictureState ON picture ( state, notBefore )"_s,
            u"CREATE TABLE IF NOT EXISTS visit ( chart TEXT, ymd TEXT, etc TEXT, doctor TEXT, imageExt TEXT, "
            "isStored INTEGER, isToBeAsked INTEGER, wasSent INTEGER DEFAULT 0, PRIMARY KEY ( chart, ymd, etc ) )"_s,
            u"CREATE TABLE IF NOT EXISTS status ( name TEXT PRIMARY KEY, value TEXT )"_s};
}

QString queue_rows::Write(const PacsLine& line)
{
    return Statement(u"INSERT INTO line ( kind, id, chart, ymd, etc, imageExt, number, doctor, goes ) VALUES ( ")
        .Then(u"'", Kinds.at(line.kind))
        .Then(u"', '", line.id)
        .Then(u"', '", line.chart)
        .Then(u"', '", line.ymd)
        .Then(u"', '", line.etc)
        .Then(u"', '", line.imageExt)
        .Then(u"', ", line.number)
        .Then(u", '", line.doctor)
        .Then(u"', ", line.goes ? 1 : 0)
        .Piece(u" )")
        .Text();
}

QList<std::pair<qint64, PacsLine>> queue_rows::Lines(LocalDatabase& queue, int most)
{
    QList<std::pair<qint64, PacsLine>> lines;
    for (const QVariantList& row :
         queue.Rows(Statement(u"SELECT place, kind, id, chart, ymd, etc, imageExt, number, doctor, goes FROM line ")
                        .Then(u"ORDER BY place LIMIT ", most)
                        .Text())) {
        const auto text = [&row](qsizetype column) { return row.at(column).toString(); };
        lines.append({row.at(0).toLongLong(),
                      {FromWord<PacsLine::Kind>(Kinds, text(1)), text(2), text(3), text(4), text(5), text(6),
                       row.at(7).toInt(), text(8), row.at(9).toInt() != 0}});
    }
    return lines;
}

QString queue_rows::RemoveLinesUpTo(qint64 place)
{
    return u"DELETE FROM line WHERE place <= %1"_s.arg(place);
}

QList<PacsEntry> queue_rows::Entries(LocalDatabase& queue, const QString& condition)
{
    QList<PacsEntry> entries;
    for (const QVariantList& row :
         queue.Rows(u"SELECT place, id, chart, ymd, etc, imageExt, number, doctor, state, reason, tries, notBefore, "
                    "uid, isDoubtful, revision FROM picture WHERE "_s +
                    condition)) {
        const auto text = [&row](qsizetype column) { return row.at(column).toString(); };
        entries.append({row.at(0).toLongLong(), text(1), text(2), text(3), text(4), text(5), row.at(6).toInt(), text(7),
                        FromWord<PacsState>(States, text(8)), text(9), row.at(10).toInt(), row.at(11).toLongLong(),
                        text(12), row.at(13).toInt() != 0, row.at(14).toInt()});
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
