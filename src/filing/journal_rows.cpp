#include "filing/journal_rows.h"

#include "contracts/LocalDatabase.h"
#include "filing/visit_json.h"
#include "records/local_tables.h"
#include "records/Statement.h"
#include "records/words.h"

#include <QJsonArray>
#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace {

/// As they stand in the journal.
const QStringList States{u"taken"_s, u"local"_s, u"share"_s, u"aside"_s, u"deleted"_s};
const QStringList Origins{u"press"_s, u"foot"_s, u"import"_s, u"restore"_s};

QJsonObject ObjectIn(const QVariant& text)
{
    return QJsonDocument::fromJson(text.toString().toUtf8()).object();
}

QString TextOf(const QJsonObject& json)
{
    return QString::fromUtf8(QJsonDocument(json).toJson(QJsonDocument::Compact));
}

QJsonArray ToJson(const QList<MovieJob::File>& files)
{
    QJsonArray json;
    for (const MovieJob::File& file : files)
        json.append(QJsonObject{
            {u"path"_s, file.path}, {u"version"_s, QString::fromUtf8(file.version)}, {u"local"_s, file.local}});
    return json;
}

QList<MovieJob::File> MovieFiles(const QJsonValue& json)
{
    QList<MovieJob::File> files;
    const QJsonArray array = json.toArray();
    for (const auto& file : array)
        files.append({file[u"path"_s].toString(), file[u"version"_s].toString().toUtf8(), file[u"local"_s].toString()});
    return files;
}

/// A sum as one text: its length behind it.
QString TextOf(const PictureSum& sum)
{
    return sum.IsKnown() ? sum.hash + u' ' + QString::number(sum.bytes) : QString();
}

PictureSum SumIn(const QString& text)
{
    return {text.section(u' ', 0, 0), text.section(u' ', 1, 1).toLongLong()};
}

// Jobs of every kind stand in a table of their own, as their identity and the rest of them in JSON.

/// In the order in which they were written first; none without the table.
QList<std::pair<QString, QJsonObject>> JobsIn(LocalDatabase& journal, QStringView table)
{
    QList<std::pair<QString, QJsonObject>> jobs;
    if (!HasTable(journal, table))
        return jobs;
    for (const QVariantList& row : journal.Rows(u"SELECT id, job FROM %1 ORDER BY rowid"_s.arg(table)))
        jobs.append({row.at(0).toString(), ObjectIn(row.at(1))});
    return jobs;
}

/// One that is there keeps its place.
QString PutStatement(QStringView table, const QString& id, const QJsonObject& job)
{
    return Statement(u"INSERT INTO %1 ( id, job ) VALUES ( "_s.arg(table))
        .Then(u"'", id)
        .Then(u"', '", TextOf(job))
        .Piece(u"' ) ON CONFLICT ( id ) DO UPDATE SET job = excluded.job")
        .Text();
}

QString RemoveStatement(QStringView table, const QString& id)
{
    return Statement(u"DELETE FROM %1"_s.arg(table)).Quoted(u" WHERE id = '", id).Text();
}

} // namespace

QStringList journal_rows::Tables()
{
    return {u"CREATE TABLE IF NOT EXISTS picture ( place INTEGER PRIMARY KEY AUTOINCREMENT, id TEXT NOT NULL UNIQUE, "
            "chart TEXT, yuhyung TEXT, ymd TEXT, etc TEXT, captureDir TEXT, imageExt TEXT, number INTEGER, state TEXT, "
            "origin TEXT, takenAt TEXT, reason TEXT, note TEXT, noteBase TEXT, sum TEXT, detail TEXT )"_s,
            u"CREATE TABLE IF NOT EXISTS folder ( captureDir TEXT, etc TEXT, isLeft INTEGER, "
            "PRIMARY KEY ( captureDir, etc, isLeft ) )"_s,
            u"CREATE TABLE IF NOT EXISTS deletion ( id TEXT PRIMARY KEY, job TEXT )"_s,
            u"CREATE TABLE IF NOT EXISTS movie ( place INTEGER PRIMARY KEY AUTOINCREMENT, id TEXT NOT NULL UNIQUE, "
            "job TEXT )"_s,
            u"CREATE TABLE IF NOT EXISTS restored ( id TEXT PRIMARY KEY, job TEXT )"_s,
            u"CREATE TABLE IF NOT EXISTS marked ( place INTEGER PRIMARY KEY AUTOINCREMENT, id TEXT NOT NULL UNIQUE, "
            "job TEXT )"_s};
}

void journal_rows::MakeTables(LocalDatabase& journal)
{
    journal.Run(Tables());
    for (const QString& column : {u"sum"_s, u"detail"_s}) {
        if (!HasColumn(journal, u"picture", column))
            journal.Run({u"ALTER TABLE picture ADD COLUMN %1 TEXT"_s.arg(column)});
    }
}

QList<PictureRecord> journal_rows::PictureRecords(LocalDatabase& journal)
{
    QList<PictureRecord> pictures;
    const auto column = [&journal](const QString& name) {
        return HasColumn(journal, u"picture", name) ? name : u"NULL"_s;
    };
    for (const QVariantList& row :
         journal.Rows(u"SELECT id, chart, yuhyung, ymd, etc, captureDir, imageExt, number, state, origin, takenAt, "
                      "reason, note, noteBase, "_s +
                      column(u"sum"_s) + u", "_s + column(u"detail"_s) + u" FROM picture ORDER BY place"_s)) {
        const auto text = [&row](qsizetype column) { return row.at(column).toString(); };
        PictureRecord picture;
        picture.id = text(0);
        picture.visit = {text(1), text(2), text(3), text(4), text(5), text(6)};
        picture.number = row.at(7).toInt();
        picture.state = FromWord<PictureState>(States, text(8));
        picture.origin = FromWord<PictureOrigin>(Origins, text(9));
        picture.takenAt = QDateTime::fromString(text(10), Qt::ISODateWithMs);
        picture.reason = text(11);
        if (!row.at(12).isNull())
            picture.note = TypedNote{text(12), text(13)};
        picture.sum = SumIn(text(14));
        picture.detail = text(15);
        pictures.append(picture);
    }
    return pictures;
}

QList<PictureJournal::Folder> journal_rows::Folders(LocalDatabase& journal)
{
    QList<PictureJournal::Folder> folders;
    for (const QVariantList& row : journal.Rows(u"SELECT captureDir, etc FROM folder"_s))
        folders.append({row.at(0).toString(), row.at(1).toString()});
    return folders;
}

QList<DeletionJob> journal_rows::Deletions(LocalDatabase& journal)
{
    QList<DeletionJob> jobs;
    for (const auto& [id, json] : JobsIn(journal, u"deletion")) {
        DeletionJob job;
        job.id = id;
        job.visit = VisitFromJson(json);
        job.isWhole = json.value(u"isWhole"_s).toBool();
        job.markedDoctor = json.value(u"markedDoctor"_s).toString();
        job.rowsUpTo = json.value(u"rowsUpTo"_s).toInt();
        job.isPlanned = json.value(u"isPlanned"_s).toBool();
        const QJsonArray items = json.value(u"items"_s).toArray();
        for (const auto& item : items)
            job.items.append({item[u"number"_s].toInt(), item[u"version"_s].toString().toUtf8(),
                              item[u"picture"_s].toString(), item[u"isMoved"_s].toBool()});
        jobs.append(job);
    }
    return jobs;
}

QString journal_rows::Write(const DeletionJob& job)
{
    QJsonObject json = ToJson(job.visit);
    QJsonArray items;
    for (const DeletionJob::Item& item : job.items)
        items.append(QJsonObject{{u"number"_s, item.number},
                                 {u"version"_s, QString::fromUtf8(item.version)},
                                 {u"picture"_s, item.picture},
                                 {u"isMoved"_s, item.isMoved}});
    json.insert(u"items"_s, items);
    json.insert(u"isWhole"_s, job.isWhole);
    json.insert(u"rowsUpTo"_s, job.rowsUpTo);
    json.insert(u"isPlanned"_s, job.isPlanned);
    // Null where no mark is taken back.
    if (!job.markedDoctor.isNull())
        json.insert(u"markedDoctor"_s, job.markedDoctor);
    return PutStatement(u"deletion", job.id, json);
}

QString journal_rows::RemoveDeletion(const QString& id)
{
    return RemoveStatement(u"deletion", id);
}

QList<MovieJob> journal_rows::Movies(LocalDatabase& journal)
{
    QList<MovieJob> jobs;
    for (const auto& [id, json] : JobsIn(journal, u"movie")) {
        MovieJob job{id, VisitFromJson(json)};
        job.startedAt = QDateTime::fromString(json.value(u"startedAt"_s).toString(), Qt::ISODateWithMs);
        job.isListed = json.value(u"isListed"_s).toBool();
        job.earlier = MovieFiles(json.value(u"earlier"_s));
        job.brought = MovieFiles(json.value(u"brought"_s));
        jobs.append(job);
    }
    return jobs;
}

QString journal_rows::Write(const MovieJob& job)
{
    QJsonObject json = ToJson(job.visit);
    json.insert(u"earlier"_s, ToJson(job.earlier));
    json.insert(u"brought"_s, ToJson(job.brought));
    json.insert(u"isListed"_s, job.isListed);
    json.insert(u"startedAt"_s, job.startedAt.toString(Qt::ISODateWithMs));
    return PutStatement(u"movie", job.id, json);
}

QString journal_rows::RemoveMovie(const QString& id)
{
    return RemoveStatement(u"movie", id);
}

QList<RestoreJob> journal_rows::Restores(LocalDatabase& journal)
{
    QList<RestoreJob> jobs;
    for (const auto& [id, json] : JobsIn(journal, u"restored"))
        jobs.append({id, VisitFromJson(json), json.value(u"wanted"_s).toInt(), json.value(u"source"_s).toString()});
    return jobs;
}

QString journal_rows::Write(const RestoreJob& job)
{
    QJsonObject json = ToJson(job.visit);
    json.insert(u"wanted"_s, job.wanted);
    json.insert(u"source"_s, job.source);
    return PutStatement(u"restored", job.id, json);
}

QString journal_rows::RemoveRestore(const QString& id)
{
    return RemoveStatement(u"restored", id);
}

QList<MarkedJob> journal_rows::Marked(LocalDatabase& journal)
{
    QList<MarkedJob> jobs;
    for (const auto& [id, json] : JobsIn(journal, u"marked"))
        jobs.append({id, VisitFromJson(json), json.value(u"number"_s).toInt(), SumIn(json.value(u"sum"_s).toString()),
                     json.value(u"version"_s).toString().toUtf8(), json.value(u"movie"_s).toBool()});
    return jobs;
}

QString journal_rows::Write(const MarkedJob& job)
{
    QJsonObject json = ToJson(job.visit);
    json.insert(u"number"_s, job.number);
    json.insert(u"sum"_s, TextOf(job.sum));
    json.insert(u"version"_s, QString::fromUtf8(job.version));
    json.insert(u"movie"_s, job.isMovie);
    return PutStatement(u"marked", job.id, json);
}

QString journal_rows::RemoveMarked(const QString& id)
{
    return RemoveStatement(u"marked", id);
}

QString journal_rows::Write(const PictureRecord& picture)
{
    const Visit& visit = picture.visit;
    // Its place stays what it was: the order of the presses.
    Statement statement(u"INSERT INTO picture ( id, chart, yuhyung, ymd, etc, captureDir, imageExt, number, state, "
                        "origin, takenAt, reason, note, noteBase, sum, detail ) VALUES ( ");
    statement.Then(u"'", picture.id)
        .Then(u"', '", visit.chart)
        .Then(u"', '", visit.yuhyung)
        .Then(u"', '", visit.ymd)
        .Then(u"', '", visit.etc)
        .Then(u"', '", visit.captureDir)
        .Then(u"', '", visit.imageExt)
        .Then(u"', ", picture.number)
        .Then(u", '", States.at(static_cast<int>(picture.state)))
        .Then(u"', '", Origins.at(static_cast<int>(picture.origin)))
        .Then(u"', '", picture.takenAt.toString(Qt::ISODateWithMs))
        .Then(u"', '", picture.reason);
    if (picture.note)
        statement.Then(u"', '", picture.note->text).Then(u"', '", picture.note->base).Piece(u"'");
    else
        statement.Piece(u"', NULL, NULL");
    return statement.Then(u", '", TextOf(picture.sum))
        .Then(u"', '", picture.detail)
        .Piece(u"' ) ON CONFLICT ( id ) DO UPDATE SET number = excluded.number, state = excluded.state, "
               "reason = excluded.reason, note = excluded.note, noteBase = excluded.noteBase, sum = excluded.sum")
        .Text();
}

QString journal_rows::Remove(const QString& id)
{
    return Statement().Quoted(u"DELETE FROM picture WHERE id = '", id).Text();
}

QString journal_rows::Write(const PictureJournal::Folder& folder, bool isLeft)
{
    return Statement(u"INSERT OR IGNORE INTO folder VALUES ( ")
        .Then(u"'", folder.captureDir)
        .Then(u"', '", folder.etc)
        .Then(u"', ", isLeft ? 1 : 0)
        .Piece(u" )")
        .Text();
}

QString journal_rows::ForgetLeftFolders()
{
    return u"DELETE FROM folder WHERE isLeft = 1"_s;
}
