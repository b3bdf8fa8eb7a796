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

void SaveCaptureRows(const CaptureVisit& visit, int number, const QString& note)
{
    QString path = VisitPicturePath(visit, number);
    path.replace(u'\\', u'/');
    Execute(Statement(u" REPLACE INTO ca VALUES ( ")
                .Piece(u" '").Value(visit.chart).Piece(u"', '").Value(visit.yuhyung).Piece(u"', '").Value(visit.ymd)
                .Piece(u"', 'A', '").Value(visit.etc).Piece(u"', ")
                .Piece(u" '").Value(NoteForStore(note)).Piece(u"', '").Value(visit.extra).Piece(u"' ) "));
    Execute(Statement(u" REPLACE INTO cap VALUES ( ")
                .Piece(u" '").Value(visit.chart).Piece(u"', '").Value(visit.yuhyung).Piece(u"', '").Value(visit.ymd)
                .Piece(u"', ")
                .Piece(u" 'A', '").Value(visit.etc).Piece(u"', ").Value(number).Piece(u", '").Value(path)
                .Piece(u"') "));
}

void UpdateVisitNote(const CaptureVisit& visit, const QString& note)
{
    Execute(Statement(u" UPDATE ca SET ")
                .Piece(u" ca_chamgo = '").Value(NoteForStore(note)).Piece(u"' ")
                .Piece(u" WHERE ca_chart = '").Value(visit.chart).Piece(u"' ")
                .Piece(u" AND ca_ymd = '").Value(visit.ymd).Piece(u"' ")
                .Piece(u" AND ca_etc = '").Value(visit.etc).Piece(u"' ")
                .Piece(u" AND ca_gubun = 'A' "));
}

void MarkVisitCaptured(const CaptureVisit& visit, const QString& mark)
{
    if (Trim(ClientSetup.CheckTable.left(1)) == u"1"_s) {
        Execute(Statement(u"update yk set ")
                    .Piece(u"yk_check = '").Value(mark).Piece(u"' ")
                    .Piece(u"where  yk_chart = '").Value(visit.chart)
                    .Piece(u"'  and yk_jinchal = '").Value(visit.jinchal).Piece(u"' ")
                    .Piece(u" and yk_ykymd = '").Value(visit.ymd).Piece(u"' AND  yk_sayugubun = '6'  "));
        return;
    }
    Execute(Statement(u" UPDATE endo  SET  ")
                .Piece(u" endo_check = '").Value(mark).Piece(u"'   ")
                .Piece(u" WHERE endo_ykymd = '").Value(visit.ymd).Piece(u"'  ")
                .Piece(u" AND endo_chart = '").Value(visit.chart).Piece(u"'  ")
                .Piece(u" AND endo_jinchal = '").Value(visit.jinchal).Piece(u"' "));
}
