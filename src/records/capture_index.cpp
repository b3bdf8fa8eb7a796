#include "records/capture_index.h"

#include "records/Statement.h"
#include "text/text_routines.h"
#include "visit/VisitContext.h"

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

bool HasPictureRow(const Visit& visit, int number)
{
    return HasRow(*OpenRows(
        Statement(u" SELECT * FROM cap ").OfVisit(Pictures, visit).Then(u" AND cap_no = ", number).Piece(u" ")));
}

QString StoredNote(const Visit& visit)
{
    const auto rows = OpenRows(Statement(u" SELECT ca_chamgo FROM ca ").OfVisit(Visits, visit));
    // Not null, if only empty, for a row without a note.
    return HasRow(*rows) ? u""_s + FieldText(*rows, u"ca_chamgo"_s) : QString();
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

void SaveCaptureRows(const Visit& visit, int number, const QString& note)
{
    QString path = visit.PicturePath(number);
    path.replace(u'\\', u'/');
    Execute(Statement(u" REPLACE INTO ca VALUES ( ")
                .Then(u" '", visit.chart)
                .Then(u"', '", visit.yuhyung)
                .Then(u"', '", visit.ymd)
                .Then(u"', 'A', '", visit.etc)
                .Piece(u"', ")
                .Then(u" '", NoteForStore(note))
                .Then(u"', '", VisitContext.CaExtra)
                .Piece(u"' ) "));
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

void UpdateVisitNote(const Visit& visit, const QString& note)
{
    Execute(
        Statement(u" UPDATE ca SET ").Then(u" ca_chamgo = '", NoteForStore(note)).Piece(u"' ").OfVisit(Visits, visit));
}

void DeletePictureRow(const Visit& visit, int number)
{
    Execute(Statement(u" DELETE FROM cap ").OfVisit(Pictures, visit).Then(u" AND cap_no = ", number).Piece(u" "));
}

void DeletePictureRows(const Visit& visit)
{
    Execute(Statement(u" DELETE FROM cap ").OfVisit(Pictures, visit));
}

void DeleteVisitRow(const Visit& visit)
{
    Execute(Statement(u" DELETE FROM ca ").OfVisit(Visits, visit));
}

bool MarksInYk()
{
    return Trim(ClientSetup.CheckTable.left(1)) == u"1"_s;
}

void MarkVisitCaptured(const Visit& visit, const QString& mark)
{
    if (MarksInYk()) {
        Execute(Statement(u"update yk set ")
                    .Quoted(u"yk_check = '", mark)
                    .Then(u"where  yk_chart = '", visit.chart)
                    .Quoted(u"'  and yk_jinchal = '", VisitContext.Jinchal)
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
                .Quoted(u" AND endo_jinchal = '", VisitContext.Jinchal));
}
