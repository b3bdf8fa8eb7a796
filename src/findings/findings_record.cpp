#include "findings/findings_record.h"

#include "visit/VisitContext.h"

using namespace Qt::StringLiterals;

FindingsRecordFields FindingsRecord;

Visit VisitOfFindings()
{
    return VisitOf(FindingsRecord.Chart, FindingsRecord.Yuhyung, FindingsRecord.Ymd, FindingsRecord.Etc);
}

void ClearFindingsRecord()
{
    const QString saup = FindingsRecord.Saup;
    FindingsRecord = {};
    FindingsRecord.Saup = saup;
    FindingsRecord.Yeonno = u"0"_s;
    FindingsRecord.Chart = u"0"_s;
    FindingsRecord.SogyonLines = QStringList{QString()};
    FindingsRecord.BigoLines = QStringList{QString()};
}
