#include "findings/findings_record.h"

using namespace Qt::StringLiterals;

FindingsRecordFields FindingsRecord;

void ClearFindingsRecord(FindingsRecordFields& record)
{
    const QString saup = record.Saup;
    record = {};
    record.Saup = saup;
    record.Yeonno = u"0"_s;
    record.Chart = u"0"_s;
    record.SogyonLines = QStringList{QString()};
    record.BigoLines = QStringList{QString()};
}
