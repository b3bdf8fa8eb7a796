#include "visit/VisitContext.h"

VisitContextRecord VisitContext;
ClientSetupRecord ClientSetup;
SaupRecords SaupTable;
ConnectionPointer Connection;

Visit CurrentVisit()
{
    return {VisitContext.Chart, VisitContext.Yuhyung,    VisitContext.Ymd,
            VisitContext.Etc,   VisitContext.CaptureDir, VisitContext.ImageExt};
}

Visit VisitOf(const QString& chart, const QString& yuhyung, const QString& ymd, const QString& etc)
{
    return {chart, yuhyung, ymd, etc, YearFolder(ClientSetup.CaptureRoot, ymd), VisitContext.ImageExt};
}
