#include "findings/findings_doctors.h"

#include "findings/findings_record.h"
#include "records/Statement.h"
#include "text/text_routines.h"
#include "visit/VisitContext.h"

using namespace Qt::StringLiterals;

namespace {

/// The condition that a doctor's row is valid on the record's date of capture.
Statement& ValidOnDate(Statement& statement, QStringView end)
{
    return statement.Then(u"(( doctor_jungji = '' AND doctor_ymd <= '", FindingsRecord.Ymd)
        .Piece(u"' ) ")
        .Then(u" OR ( doctor_jungji <> '' AND doctor_ymd <= '", FindingsRecord.Ymd)
        .Then(u"' AND doctor_jungji >= '", FindingsRecord.Ymd)
        .Piece(end);
}

Statement DoctorStatement(QStringView columns, const QString& code)
{
    Statement statement(columns);
    statement.Quoted(u" WHERE doctor_code = '", code).Piece(u" AND ");
    ValidOnDate(statement, u"' ))").Piece(u" ORDER BY doctor_ymd DESC ");
    return statement;
}

} // namespace

std::optional<FindingsDoctor> ReadDoctor(const QString& code)
{
    const auto row = OpenRows(DoctorStatement(u" SELECT doctor_saup, doctor_name, doctor_meonheo FROM doctor ", code));
    if (!HasRow(*row))
        return std::nullopt;
    return FindingsDoctor{FieldText(*row, u"doctor_name"_s), FieldText(*row, u"doctor_meonheo"_s),
                          FieldText(*row, u"doctor_saup"_s)};
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
    const auto row = OpenRows(DoctorStatement(u" SELECT doctor_myung FROM doctor ", code));
    // Not null, if only empty, for a doctor without a name.
    return HasRow(*row) ? u""_s + FieldText(*row, u"doctor_myung"_s) : QString();
}

QStringList DoctorEntries()
{
    Statement statement(u" SELECT doctor_code, doctor_myung FROM doctor ");
    statement.Piece(u" WHERE ");
    ValidOnDate(statement, u"' )) ")
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
