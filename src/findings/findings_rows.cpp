#include "findings/findings_rows.h"

#include "contracts/PlatformError.h"
#include "findings/findings_record.h"
#include "launch/context/VisitContext.h"
#include "records/capture_scheme.h"
#include "records/patient_lookup.h"
#include "records/Statement.h"
#include "records/text/text_routines.h"

using namespace Qt::StringLiterals;

namespace {

/// What tells one report from another under the same number.
struct Owner
{
    QString chart;
    QString ymd;
    QString jinchal;
    QString etc;

    bool operator==(const Owner&) const = default;
};

/// The owner that the record's row had when it was last read or stored: the doctor can be another one by now.
Owner storedOwner;

Owner RecordOwner()
{
    return {Trim(FindingsRecord.Chart), Trim(FindingsRecord.Ymd), Trim(FindingsRecord.Jinchal),
            Trim(FindingsRecord.Etc)};
}

QString PicturePathOf(int number)
{
    try {
        return PicturePath(YearFolder(ClientSetup.CaptureRoot, FindingsRecord.Ymd), FindingsRecord.Etc,
                           FindingsRecord.Chart, FindingsRecord.Ymd, number, VisitContext.ImageExt);
    } catch (const PlatformError&) {
        // A row whose section or chart is no name of a folder has no pictures here.
        return {};
    }
}

void ReadRow(const AdoRecordset& row)
{
    const auto text = [&row](const QString& column) { return FieldText(row, column); };
    FindingsRecord.Yeonno = text(u"caso_yeonno"_s);
    FindingsRecord.Chart = text(u"caso_chart"_s);
    FindingsRecord.Yuhyung = text(u"caso_yuhyung"_s);
    FindingsRecord.Jinchal = text(u"caso_jinchal"_s);
    FindingsRecord.Etc = text(u"caso_etc"_s);
    FindingsRecord.Suname = text(u"caso_suname"_s);
    FindingsRecord.Jumin = text(u"caso_jumin"_s);
    FindingsRecord.Ymd = text(u"caso_ymd"_s);
    FindingsRecord.Balymd = text(u"caso_balymd"_s);
    FindingsRecord.Hospital = text(u"caso_hospital"_s);
    FindingsRecord.Yoyangno = text(u"caso_yoyangno"_s);
    FindingsRecord.Doctor = text(u"caso_doctor"_s);
    FindingsRecord.Myonheo = text(u"caso_myonheo"_s);
    for (size_t slot = 0; slot < FindingsRecord.PicNo.size(); ++slot) {
        const int number = FieldNumber(row, u"caso_no%1"_s.arg(slot + 1));
        FindingsRecord.PicNo[slot] = number;
        FindingsRecord.PicPath[slot] = number > 0 ? PicturePathOf(number) : QString();
    }
    FindingsRecord.Sogyon = row.Fields(u"caso_sogyon"_s).toString();
    FindingsRecord.Bigo = row.Fields(u"caso_bigo"_s).toString();

    const QString jumin = QString(FindingsRecord.Jumin).remove(u'-');
    FindingsRecord.Sex = SexText(jumin);
    const QString years = AgeText(FindingsRecord.Ymd, jumin).left(3);
    FindingsRecord.Nai = IsNumericText(years) ? WholeNumberText(years) + u"세 "_s : QString();
    storedOwner = RecordOwner();
}

/// True for a row that was only put there to claim its number.
bool IsBare(const AdoRecordset& row)
{
    return FieldText(row, u"caso_balymd"_s).isEmpty() && FieldText(row, u"caso_jinchal"_s).isEmpty();
}

enum class NumberState { Free, Own, Foreign };

NumberState StateOfNumber()
{
    const auto row = OpenRows(Statement(u" SELECT caso_chart, caso_ymd, caso_jinchal, caso_etc, caso_balymd FROM caso ")
                                  .Quoted(u" WHERE caso_yeonno = '", FindingsRecord.Yeonno));
    if (!HasRow(*row))
        return NumberState::Free;
    Owner owner = {FieldText(*row, u"caso_chart"_s), FieldText(*row, u"caso_ymd"_s), FieldText(*row, u"caso_jinchal"_s),
                   FieldText(*row, u"caso_etc"_s)};
    if (IsBare(*row))
        owner.jinchal = RecordOwner().jinchal;
    return owner == RecordOwner() || owner == storedOwner ? NumberState::Own : NumberState::Foreign;
}

/// Puts a bare row under the record's number, which the key lets only one station do. False when another report was
/// quicker.
bool Claim()
{
    try {
        Execute(Statement(u" INSERT INTO caso ( caso_yeonno, caso_chart, caso_ymd, caso_etc ) ")
                    .Then(u" VALUES ( '", FindingsRecord.Yeonno)
                    .Then(u"', '", FindingsRecord.Chart)
                    .Then(u"', '", FindingsRecord.Ymd)
                    .Then(u"', '", FindingsRecord.Etc)
                    .Piece(u"' ) "));
        return true;
    } catch (const PlatformError&) {
        // Also a claim that had arrived before its connection was lost, and was repeated.
        const NumberState state = StateOfNumber();
        if (state == NumberState::Free)
            throw;
        return state == NumberState::Own;
    }
}

void RemoveClaim()
{
    try {
        Execute(Statement(u" DELETE FROM caso ")
                    .Quoted(u" WHERE caso_yeonno = '", FindingsRecord.Yeonno)
                    .Piece(u" AND caso_balymd = '' AND caso_jinchal = '' "));
    } catch (const PlatformError&) {
        // The next save knows the row as its own.
    }
}

void WriteRow()
{
    const FindingsRecordFields& record = FindingsRecord;
    Execute(Statement(u" REPLACE INTO caso VALUES ( ")
                .Then(u" '", record.Yeonno)
                .Then(u"', '", record.Chart)
                .Then(u"', '", record.Yuhyung)
                .Then(u"', '", record.Ymd)
                .Piece(u"', ")
                .Then(u" '", record.Suname)
                .Then(u"', '", record.Jumin)
                .Then(u"', '", record.Jinchal)
                .Piece(u"', ")
                .Then(u" '", record.Etc)
                .Then(u"', ", record.PicNo[0])
                .Then(u", ", record.PicNo[1])
                .Then(u", ", record.PicNo[2])
                .Piece(u", ")
                .Then(u" ", record.PicNo[3])
                .Then(u", ", record.PicNo[4])
                .Then(u", ", record.PicNo[5])
                .Then(u", '", record.Sogyon)
                .Piece(u"', ")
                .Then(u" '", record.Bigo)
                .Then(u"', '", record.Balymd)
                .Then(u"', '", record.Myonheo)
                .Then(u"', '", record.Doctor)
                .Piece(u"', ")
                .Then(u" '", record.Yoyangno)
                .Then(u"', '", record.Hospital)
                .Piece(u"' ) "));
}

/// The condition that a doctor's row is valid on the record's date of capture.
Statement& ValidOnDate(Statement& statement, QStringView end)
{
    return statement.Then(u"(( doctor_jungji = '' AND doctor_ymd <= '", FindingsRecord.Ymd)
        .Piece(u"' ) ")
        .Then(u" OR ( doctor_jungji <> '' AND doctor_ymd <= '", FindingsRecord.Ymd)
        .Then(u"' AND doctor_jungji >= '", FindingsRecord.Ymd)
        .Piece(end);
}

Statement DoctorStatement(QStringView columns)
{
    Statement statement(columns);
    statement.Quoted(u" WHERE doctor_code = '", FindingsRecord.Jinchal).Piece(u" AND ");
    ValidOnDate(statement, u"' ))").Piece(u" ORDER BY doctor_ymd DESC ");
    return statement;
}

} // namespace

bool ReadFindingsOfVisit()
{
    Statement statement(u" SELECT * FROM caso ");
    statement.Quoted(u" WHERE caso_chart = '", FindingsRecord.Chart).Quoted(u" AND caso_ymd = '", FindingsRecord.Ymd);
    if (!Trim(FindingsRecord.Jinchal).isEmpty())
        statement.Quoted(u" AND caso_jinchal = '", FindingsRecord.Jinchal);
    statement.Quoted(u" AND caso_etc = '", FindingsRecord.Etc).Piece(u" ORDER BY caso_yeonno ASC ");
    const auto rows = OpenRows(statement, adOpenKeyset);
    if (!HasRow(*rows)) {
        storedOwner = RecordOwner();
        return false;
    }
    ClearFindingsRecord();
    ReadRow(*rows);
    return true;
}

bool ReadFindingsByNumber(const QString& number)
{
    const auto rows =
        OpenRows(Statement(u" SELECT * FROM caso ").Quoted(u" WHERE caso_yeonno = '", number), adOpenKeyset);
    ClearFindingsRecord();
    if (!HasRow(*rows))
        return false;
    ReadRow(*rows);
    return true;
}

QString NextFindingsNumber(const QString& year)
{
    const auto rows = OpenRows(Statement(u" SELECT IFNULL(MAX(caso_yeonno), 0) AS maxnum FROM caso ")
                                   .Quoted(u" WHERE LEFT(caso_yeonno,4) = '", year),
                               adOpenKeyset);
    const int largest = HasRow(*rows) ? FieldText(*rows, u"maxnum"_s).toInt() : 0;
    return largest > 0 ? QString::number(largest + 1) : year + LayIntoMask(u"1"_s, u"000000");
}

bool StoreFindings()
{
    if (FindingsRecord.Yeonno.toInt() <= 0 || FindingsRecord.Ymd.isEmpty())
        throw PlatformError(u"열린 소견서가 없습니다. 소견서를 다시 여십시오.!!"_s);
    const QString before = FindingsRecord.Yeonno;
    bool claimed = false;
    for (;;) {
        const NumberState state = StateOfNumber();
        if (state == NumberState::Own)
            break;
        claimed = state == NumberState::Free && Claim();
        if (claimed)
            break;
        FindingsRecord.Yeonno = NextFindingsNumber(FindingsRecord.Ymd.left(4));
    }
    try {
        WriteRow();
    } catch (const PlatformError&) {
        if (claimed)
            RemoveClaim();
        throw;
    }
    storedOwner = RecordOwner();
    return FindingsRecord.Yeonno != before;
}

void RemoveFindings()
{
    Execute(Statement(u" DELETE FROM caso ").Quoted(u" WHERE caso_yeonno = '", FindingsRecord.Yeonno));
}

bool ReadDoctor()
{
    const auto row = OpenRows(DoctorStatement(u" SELECT doctor_saup, doctor_name, doctor_meonheo FROM doctor "));
    if (!HasRow(*row))
        return false;
    FindingsRecord.Doctor = FieldText(*row, u"doctor_name"_s);
    FindingsRecord.Myonheo = FieldText(*row, u"doctor_meonheo"_s);
    FindingsRecord.Saup = FieldText(*row, u"doctor_saup"_s);
    const auto place =
        IsNumericText(FindingsRecord.Saup) ? SaupTable.find(WholeNumber(FindingsRecord.Saup)) : SaupTable.end();
    if (place != SaupTable.end()) {
        FindingsRecord.Hospital = place->second.Hospital;
        FindingsRecord.Yoyangno = place->second.Yoyangno;
    }
    return true;
}

QString DoctorListName()
{
    const auto row = OpenRows(DoctorStatement(u" SELECT doctor_myung FROM doctor "));
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

QString OpinionText(const QString& code)
{
    const auto row =
        OpenRows(Statement(u" SELECT * FROM so ").Quoted(u" WHERE so_code = '", code).Piece(u" AND so_gubun = '4' "));
    return HasRow(*row) ? row->Fields(u"so_myung"_s).toString() : QString();
}
