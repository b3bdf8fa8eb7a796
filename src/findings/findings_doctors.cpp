#include "findings/findings_doctors.h"

#include "findings/findings_record.h"
#include "records/doctor_lookup.h"
#include "records/Statement.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"

using namespace Qt::StringLiterals;

void TakeDoctor(FindingsRecordFields& record, const DoctorRow& doctor)
{
    record.Doctor = doctor.Name;
    record.Myonheo = doctor.Licence;
    record.Saup = doctor.Saup;
    const auto place = IsNumericText(record.Saup) ? SaupTable.find(WholeNumber(record.Saup)) : SaupTable.end();
    if (place != SaupTable.end()) {
        record.Hospital = place->second.Hospital;
        record.Yoyangno = place->second.Yoyangno;
    }
}

QString DoctorListName(const QString& code, const QString& ymd)
{
    const auto row = OpenRows(DoctorStatement(u" SELECT doctor_myung FROM doctor ", code, ymd));
    // Not null, if only empty, for a doctor without a name.
    return HasRow(*row) ? u""_s + FieldText(*row, u"doctor_myung"_s) : QString();
}

QStringList DoctorEntries(const QString& ymd)
{
    Statement statement(u" SELECT doctor_code, doctor_myung FROM doctor ");
    statement.Piece(u" WHERE ");
    ValidOnDate(statement, ymd, u"' )) ")
        .Piece(u" AND doctor_kwamok < '80' ")
        .Piece(u" ORDER BY doctor_code ASC, doctor_ymd DESC ");
    QStringList entries;
    QString previous;
    for (const auto rows = OpenRows(statement); !rows->Eof(); rows->MoveNext()) {
        const QString code = FieldText(*rows, u"doctor_code"_s);
        if (code == previous)
            continue;
        entries << code + u' ' + FieldText(*rows, u"doctor_myung"_s);
        previous = code;
    }
    return entries;
}
