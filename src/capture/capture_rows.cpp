#include "capture/capture_rows.h"

#include "launch/context/VisitContext.h"
#include "records/capture_scheme.h"
#include "records/Statement.h"
#include "records/text/text_routines.h"

using namespace Qt::StringLiterals;

QString NoteForStore(const QString& typed)
{
    return CleanText(Trim(typed), static_cast<int>(typed.size()));
}

QString VisitPicturePath(const CaptureVisit& visit, int number)
{
    return PicturePath(visit.captureDir, visit.etc, visit.chart, visit.ymd, number, visit.imageExt);
}

bool HasPictureRow(const CaptureVisit& visit, int number)
{
    const auto rows = OpenRows(Statement(u" SELECT * FROM cap ")
                                   .Quoted(u" WHERE cap_chart = '", visit.chart)
                                   .Quoted(u" AND cap_ymd = '", visit.ymd)
                                   .Quoted(u" AND cap_etc = '", visit.etc)
                                   .Piece(u" AND cap_gubun = 'A' ")
                                   .Then(u" AND cap_no = ", number)
                                   .Piece(u" "));
    const bool there = HasRow(*rows);
    rows->Close();
    return there;
}

void SaveCaptureRows(const CaptureVisit& visit, int number, const QString& note)
{
    QString path = VisitPicturePath(visit, number);
    path.replace(u'\\', u'/');
    Execute(Statement(u" REPLACE INTO ca VALUES ( ")
                .Then(u" '", visit.chart)
                .Then(u"', '", visit.yuhyung)
                .Then(u"', '", visit.ymd)
                .Then(u"', 'A', '", visit.etc)
                .Piece(u"', ")
                .Then(u" '", NoteForStore(note))
                .Then(u"', '", visit.extra)
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

void UpdateVisitNote(const CaptureVisit& visit, const QString& note)
{
    Execute(Statement(u" UPDATE ca SET ")
                .Then(u" ca_chamgo = '", NoteForStore(note))
                .Piece(u"' ")
                .Quoted(u" WHERE ca_chart = '", visit.chart)
                .Quoted(u" AND ca_ymd = '", visit.ymd)
                .Quoted(u" AND ca_etc = '", visit.etc)
                .Piece(u" AND ca_gubun = 'A' "));
}

bool MarksInYk()
{
    return Trim(ClientSetup.CheckTable.left(1)) == u"1"_s;
}

void MarkVisitCaptured(const CaptureVisit& visit, const QString& mark)
{
    if (MarksInYk()) {
        Execute(Statement(u"update yk set ")
                    .Quoted(u"yk_check = '", mark)
                    .Then(u"where  yk_chart = '", visit.chart)
                    .Quoted(u"'  and yk_jinchal = '", visit.jinchal)
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
                .Quoted(u" AND endo_jinchal = '", visit.jinchal));
}
