#include "records/doctor_lookup.h"

#include "records/Statement.h"

using namespace Qt::StringLiterals;

Statement& ValidOnDate(Statement& statement, const QString& ymd, QStringView end)
{
    return statement.Then(u"(( doctor_jungji = '' AND doctor_ymd <= '", ymd)
        .Piece(u"' ) ")
        .Then(u" OR ( doctor_jungji <> '' AND doctor_ymd <= '", ymd)
        .Then(u"' AND doctor_jungji >= '", ymd)
        .Piece(end);
}

Statement DoctorStatement(QStringView columns, const QString& code, const QString& ymd)
{
    Statement statement(columns);
    statement.Quoted(u" WHERE doctor_code = '", code).Piece(u" AND ");
    ValidOnDate(statement, ymd, u"' ))").Piece(u" ORDER BY doctor_ymd DESC ");
    return statement;
}

std::optional<DoctorRow> LookupDoctor(const QString& code, const QString& ymd)
{
    const auto row =
        OpenRows(DoctorStatement(u" SELECT doctor_saup, doctor_name, doctor_meonheo FROM doctor ", code, ymd));
    if (!HasRow(*row))
        return std::nullopt;
    return DoctorRow{FieldText(*row, u"doctor_name"_s), FieldText(*row, u"doctor_meonheo"_s),
                     FieldText(*row, u"doctor_saup"_s)};
}
