#include "visit/VisitContext.h"

#include "text/text_routines.h"

using namespace Qt::StringLiterals;

VisitContextRecord VisitContext;
ClientSetupRecord ClientSetup;
SaupRecords SaupTable;
ConnectionPointer Connection;

QString ImageExtOfSetup()
{
    return Trim(ClientSetup.ImageFormat) == u"2"_s ? u"bmp"_s : u"jpg"_s;
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
