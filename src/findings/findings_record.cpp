#include "findings/findings_record.h"

using namespace Qt::StringLiterals;

FindingsRecordFields FindingsRecord;

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
