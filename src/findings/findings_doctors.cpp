#include "findings/findings_doctors.h"

#include "findings/findings_record.h"
#include "records/doctor_lookup.h"
#include "records/Statement.h"
#include "text/text_routines.h"
#include "visit/VisitContext.h"

using namespace Qt::StringLiterals;

std::optional<FindingsDoctor> ReadDoctor(const QString& code)
{
    const std::optional<DoctorRow> row = LookupDoctor(code, FindingsRecord.Ymd);
    return row ? std::optional(FindingsDoctor{row->Name, row->Licence, row->Saup}) : std::nullopt;
}

void TakeDoctor(const FindingsDoctor& doctor)
{
    FindingsRecord.Doctor = doctor.Doctor;
    FindingsRecord.Myonheo = doctor.Myonheo;
    FindingsRecord.Saup = doctor.Saup;
    const auto place =
        IsNumericText(FindingsRecord.Saup) ? SaupTable.find(WholeNumber(FindingsRecord.Saup)) : SaupTable.end();
    if (place != SaupTable.end()) {
        FindingsRecord.Hospital = place->second.Hospital;
        FindingsRecord.Yoyangno = place->second.Yoyangno;
    }
}

QString DoctorListName(const QString& code)
{
    const auto row = OpenRows(DoctorStatement(u" SELECT doctor_myung FROM doctor ", code, FindingsRecord.Ymd));
    // Not null, if only empty, for a doctor without a name.
    return HasRow(*row) ? u""_s + FieldText(*row, u"doctor_myung"_s) : QString();
}

QStringList DoctorEntries()
{
    Statement statement(u" SELECT doctor_code, doctor_myung FROM doctor ");
    statement.Piece(u" WHERE ");
    ValidOnDate(statement, FindingsRecord.Ymd, u"' )) ")
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
