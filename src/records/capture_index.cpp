#include "records/capture_index.h"

#include "contracts/PlatformError.h"
#include "records/acts.h"
#include "records/Statement.h"
#include "records/visit_note.h"
#include "text/text_routines.h"
#include "visit/Visit.h"

using namespace Qt::StringLiterals;

namespace {
const QString Pictures = u"cap"_s;
const QString Visits = u"ca"_s;
} // namespace

QList<int> StoredNumbers(const Visit& visit, NumberOrder order)
{
    Statement statement(u" SELECT * FROM cap ");
    statement.OfVisit(Pictures, visit);
    if (order == NumberOrder::Ascending)
        statement.Piece(u" ORDER BY cap_no ASC ");
    QList<int> numbers;
    for (const auto rows = OpenRows(statement); !rows->Eof(); rows->MoveNext())
        numbers.append(FieldNumber(*rows, u"cap_no"_s));
    return numbers;
}

int NextCaptureNo(const Visit& visit)
{
    const auto rows =
        OpenRows(Statement(u" SELECT IFNULL(MAX(cap_no), 0) AS Maxno FROM cap ").OfVisit(Pictures, visit));
    return HasRow(*rows) ? FieldNumber(*rows, u"maxno"_s) : 0;
}

bool HasPictureRow(const Visit& visit, int number)
{
    return HasRow(*OpenRows(
        Statement(u" SELECT * FROM cap ").OfVisit(Pictures, visit).Then(u" AND cap_no = ", number).Piece(u" ")));
}

QList<PictureKey> StoredPictures(const QString& year, const std::optional<PictureKey>& after, int most)
{
    Statement statement(u" SELECT cap_chart, cap_ymd, cap_etc, cap_no FROM cap ");
    // With an equation instead of LIKE, MariaDB no longer sees that its key has the order, and sorts for each call.
    statement.Quoted(u" WHERE LEFT(cap_ymd, 4) = '", year).Piece(u" AND cap_gubun LIKE 'A' ");
    if (after) {
        // The first condition alone is one that a server begins to read at.
        statement.Quoted(u" AND cap_chart >= '", after->chart)
            .Quoted(u" AND ( cap_chart > '", after->chart)
            .Quoted(u" OR cap_ymd > '", after->ymd)
            .Quoted(u" OR ( cap_ymd = '", after->ymd)
            .Quoted(u" AND ( cap_etc > '", after->etc)
            .Quoted(u" OR ( cap_etc = '", after->etc)
            .Then(u" AND cap_no > ", after->number)
            .Piece(u" ) ) ) ) ");
    }
    statement.Then(u" ORDER BY cap_chart, cap_ymd, cap_gubun, cap_etc, cap_no LIMIT ", most).Piece(u" ");
    QList<PictureKey> pictures;
    for (const auto rows = OpenRows(statement); !rows->Eof(); rows->MoveNext())
        pictures.append({rows->Fields(0).toString(), rows->Fields(1).toString(), rows->Fields(2).toString(),
                         rows->Fields(3).toInt()});
    return pictures;
}

std::set<PictureKey> PicturesWithRow(const QString& section, const QList<PictureKey>& pictures)
{
    if (pictures.isEmpty())
        return {};
    Statement statement(u" SELECT cap_chart, cap_ymd, cap_etc, cap_no FROM cap ");
    statement.Quoted(u" WHERE cap_etc = '", section).Piece(u" AND cap_gubun = 'A' AND ( ");
    bool isFirst = true;
    for (const PictureKey& picture : pictures) {
        statement.Quoted(isFirst ? u" ( cap_chart = '" : u" OR ( cap_chart = '", picture.chart)
            .Quoted(u" AND cap_ymd = '", picture.ymd)
            .Then(u" AND cap_no = ", picture.number)
            .Piece(u" ) ");
        isFirst = false;
    }
    std::set<PictureKey> found;
    for (const auto rows = OpenRows(statement.Piece(u" ) ")); !rows->Eof(); rows->MoveNext())
        found.insert({rows->Fields(0).toString(), rows->Fields(1).toString(), rows->Fields(2).toString(),
                      rows->Fields(3).toInt()});
    return found;
}

std::set<PictureKey> VisitsWithRow(const QString& year, const QStringList& charts)
{
    if (charts.isEmpty())
        return {};
    Statement statement(u" SELECT ca_chart, ca_ymd, ca_etc FROM ca ");
    statement.Quoted(u" WHERE LEFT(ca_ymd, 4) = '", year).Piece(u" AND ca_gubun = 'A' AND ca_chart IN ( ");
    for (const QString& chart : charts)
        statement.Quoted(&chart == &charts.first() ? u"'" : u", '", chart);
    std::set<PictureKey> found;
    for (const auto rows = OpenRows(statement.Piece(u" ) ")); !rows->Eof(); rows->MoveNext())
        found.insert({rows->Fields(0).toString(), rows->Fields(1).toString(), rows->Fields(2).toString()});
    return found;
}

bool HasVisitRow(const Visit& visit)
{
    return HasRow(*OpenRows(Statement(u" SELECT * FROM ca ").OfVisit(Visits, visit)));
}

QStringList StoredYears()
{
    QStringList years;
    for (const auto rows = OpenRows(Statement(u" SELECT DISTINCT LEFT(cap_ymd, 4) FROM cap WHERE cap_gubun = 'A' "));
         !rows->Eof(); rows->MoveNext())
        years.append(rows->Fields(0).toString());
    return years;
}

QList<VisitLine> StoredVisits(const QString& chart, const QString& kind)
{
    QList<VisitLine> lines;
    for (const auto rows = OpenRows(Statement(u" SELECT * FROM ca ")
                                        .Quoted(u" WHERE ca_chart = '", chart)
                                        .Quoted(u" AND ca_gubun = '", kind)
                                        .Piece(u" ORDER BY ca_ymd DESC "));
         !rows->Eof(); rows->MoveNext())
        lines.append({FieldText(*rows, u"ca_ymd"_s), FieldText(*rows, u"ca_etc"_s), FieldText(*rows, u"ca_chamgo"_s)});
    return lines;
}

QString NoteForStore(const QString& typed)
{
    return CleanText(Trim(typed), static_cast<int>(typed.size()));
}

void WritePictureRow(const Visit& visit, int number)
{
    QString path = visit.PicturePath(number);
    path.replace(u'\\', u'/');
    Execute(Statement(u" REPLACE INTO cap VALUES ( ")
                .Then(u" '", visit.chart)
                .Then(u"', '", visit.yuhyung)
                .Then(u"', '", visit.ymd)
                .Piece(u"', ")
                .Then(u" 'A', '", visit.etc)
                .Then(u"', ", number)
                .Then(u", '", path)
                .Piece(u"') "));
}

QString StoredPatientType(const Visit& visit)
{
    const auto ofVisit = OpenRows(Statement(u" SELECT ca_yuhyung FROM ca ").OfVisit(Visits, visit));
    if (HasRow(*ofVisit))
        return FieldText(*ofVisit, 0);
    const auto ofPicture = OpenRows(Statement(u" SELECT cap_yuhyung FROM cap ").OfVisit(Pictures, visit));
    return HasRow(*ofPicture) ? FieldText(*ofPicture, 0) : QString();
}

void AddCaptureRows(const Visit& visit, int number)
{
    try {
        // The number is claimed and has no row: the statement may run twice, as on a connection that was lost.
        WritePictureRow(visit, number);
        AddVisitRow(visit, {});
    } catch (const PlatformError&) {
        DeletePictureRow(visit, number);
        throw;
    }
}

void DeletePictureRow(const Visit& visit, int number)
{
    Execute(Statement(u" DELETE FROM cap ").OfVisit(Pictures, visit).Then(u" AND cap_no = ", number).Piece(u" "));
}

bool DeleteEmptyVisitRow(const Visit& visit)
{
    if (!StoredNumbers(visit, NumberOrder::Any).isEmpty())
        return false;
    const QString note = RawNote(visit);
    const bool isGone = Execute(Statement(u" DELETE FROM ca ").OfVisit(Visits, visit)) > 0;
    if (isGone && !Trim(note).isEmpty()) {
        acts::Act act = acts::Of(acts::Kind::NoteStored, visit);
        act.detail = u"삭제"_s;
        act.before = note;
        acts::Record(act);
    }
    return true;
}

void MarkVisitCaptured(const Visit& visit, const QString& doctor, const QString& mark, MarkTable table)
{
    if (table == MarkTable::Yk) {
        Execute(Statement(u"update yk set ")
                    .Quoted(u"yk_check = '", mark)
                    .Then(u"where  yk_chart = '", visit.chart)
                    .Quoted(u"'  and yk_jinchal = '", doctor)
                    .Then(u" and yk_ykymd = '", visit.ymd)
                    .Piece(u"' AND  yk_sayugubun = '6'  "));
        return;
    }
    Execute(Statement(u" UPDATE endo  SET  ")
                .Then(u" endo_check = '", mark)
                .Piece(u"'   ")
                .Then(u" WHERE endo_ykymd = '", visit.ymd)
                .Piece(u"'  ")
                .Then(u" AND endo_chart = '", visit.chart)
                .Piece(u"'  ")
                .Quoted(u" AND endo_jinchal = '", doctor));
}
