#include "session/VisitContext.h"

#include "text/text_routines.h"

using namespace Qt::StringLiterals;

VisitContextRecord VisitContext;
ClientSetupRecord ClientSetup;
SaupRecords SaupTable;

QString ImageExtOfSetup()
{
    return Trim(ClientSetup.ImageFormat) == u"2"_s ? u"bmp"_s : u"jpg"_s;
}

QStringList SectionsOfClient()
{
    QStringList sections = ClientSetup.EtcList.split(u',');
    sections.removeIf([](const QString& piece) { return Trim(piece).isEmpty(); });
    return sections;
}

MarkTable MarkTableOfSetup()
{
    return Trim(ClientSetup.CheckTable.left(1)) == u"1"_s ? MarkTable::Yk : MarkTable::Endo;
}

LaunchedVisit Launched()
{
    return {VisitContext.Chart, VisitContext.Ymd, VisitContext.Jinchal};
}

Visit CurrentVisit()
{
    return {VisitContext.Chart, VisitContext.Yuhyung,    VisitContext.Ymd,
            VisitContext.Etc,   VisitContext.CaptureDir, VisitContext.ImageExt};
}

Visit VisitOf(const QString& chart, const QString& yuhyung, const QString& ymd, const QString& etc)
{
    return {chart, yuhyung, ymd, etc, YearFolder(ClientSetup.CaptureRoot, ymd), VisitContext.ImageExt};
}
