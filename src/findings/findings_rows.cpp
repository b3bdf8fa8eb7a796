#include "findings/findings_rows.h"

#include "contracts/PlatformError.h"
#include "findings/findings_record.h"
#include "records/patient_lookup.h"
#include "records/Statement.h"
#include "text/text_routines.h"
#include "visit/VisitContext.h"

using namespace Qt::StringLiterals;

namespace {

/// The new row that was sent last: it may have arrived although the answer didn't.
QStringList unanswered;

FindingsOwner RecordOwner()
{
    Visit visit;
    visit.chart = Trim(FindingsRecord.Chart);
    visit.ymd = Trim(FindingsRecord.Ymd);
    visit.etc = Trim(FindingsRecord.Etc);
    return {visit, Trim(FindingsRecord.Jinchal)};
}

FindingsOwner RowOwner(const AdoRecordset& row)
{
    Visit visit;
    visit.chart = FieldText(row, u"caso_chart"_s);
    visit.ymd = FieldText(row, u"caso_ymd"_s);
    visit.etc = FieldText(row, u"caso_etc"_s);
    return {visit, FieldText(row, u"caso_jinchal"_s)};
}

QString PicturePathOf(int number)
{
    try {
        return VisitOfFindings().PicturePath(number);
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
    FindingsRecord.Stored = RecordOwner();
}

std::unique_ptr<AdoRecordset> RowOfNumber()
{
    return OpenRows(Statement(u" SELECT * FROM caso ").Quoted(u" WHERE caso_yeonno = '", FindingsRecord.Yeonno),
                    adOpenKeyset);
}

/// By these a new row is known again.
QStringList RowTexts()
{
    const FindingsOwner owner = RecordOwner();
    return {FindingsRecord.Yeonno, owner.visit.chart,           owner.visit.ymd,       owner.jinchal,
            owner.visit.etc,       Trim(FindingsRecord.Balymd), FindingsRecord.Sogyon, FindingsRecord.Bigo};
}

QStringList RowTexts(const AdoRecordset& row)
{
    QStringList texts;
    for (const QString& column :
         {u"caso_yeonno"_s, u"caso_chart"_s, u"caso_ymd"_s, u"caso_jinchal"_s, u"caso_etc"_s, u"caso_balymd"_s})
        texts << FieldText(row, column);
    return texts << row.Fields(u"caso_sogyon"_s).toString() << row.Fields(u"caso_bigo"_s).toString();
}

/// True when the row under the record's number is the record's own. A report that was never stored has none, unless its
/// row arrived without an answer.
bool IsOwn(const AdoRecordset& row)
{
    if (!FindingsRecord.Stored)
        return RowTexts(row) == unanswered;
    const FindingsOwner owner = RowOwner(row);
    return owner == *FindingsRecord.Stored || owner == RecordOwner();
}

/// The whole row, behind the word that says what happens to one of its number.
void WriteRow(QStringView command)
{
    const FindingsRecordFields& record = FindingsRecord;
    Execute(Statement(command)
                .Piece(u" INTO caso VALUES ( ")
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

/// Puts the record under its number as a new row, whole, which the key lets only one station do. False when another
/// report was quicker.
bool InsertRow()
{
    unanswered = RowTexts();
    try {
        WriteRow(u" INSERT");
        return true;
    } catch (const PlatformError&) {
        const auto row = RowOfNumber();
        if (!HasRow(*row))
            throw;
        // One that had arrived before its connection was lost was repeated, and met itself.
        return RowTexts(*row) == unanswered;
    }
}

/// The year's greatest number as text; "0" when the year has no report.
QString GreatestNumber(const QString& year)
{
    const auto rows = OpenRows(Statement(u" SELECT IFNULL(MAX(caso_yeonno), 0) AS maxnum FROM caso ")
                                   .Quoted(u" WHERE LEFT(caso_yeonno,4) = '", year),
                               adOpenKeyset);
    return HasRow(*rows) ? FieldText(*rows, u"maxnum"_s) : QString();
}

/// The number behind the greatest; the year's first when the greatest is none that can be counted on from.
QString NumberBehind(const QString& greatest, const QString& year)
{
    const qlonglong number = greatest.toLongLong();
    const QString next = QString::number(number + 1);
    return number > 0 && next.startsWith(year) ? next : FirstFindingsNumber(year);
}

/// Gives the record the next number in place of one that is taken.
void TakeNextNumber()
{
    const QString year = FindingsRecord.Ymd.left(4);
    const QString greatest = GreatestNumber(year);
    const QString next = NumberBehind(greatest, year);
    // No way on from a number such as 2026000001A, which only an administrator can mend.
    if (FindingsRecord.Yeonno.startsWith(year) && next <= FindingsRecord.Yeonno)
        throw PlatformError(
            u"다음 소견서 번호를 정할 수 없습니다. 소견서 번호 %1을(를) 확인하세요.!!"_s.arg(greatest.left(20)));
    FindingsRecord.Yeonno = next;
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
    if (!HasRow(*rows))
        return false;
    FindingsRecordRollback rollback;
    ClearFindingsRecord();
    ReadRow(*rows);
    rollback.Keep();
    return true;
}

bool ReadFindingsByNumber(const QString& number)
{
    const auto rows =
        OpenRows(Statement(u" SELECT * FROM caso ").Quoted(u" WHERE caso_yeonno = '", number), adOpenKeyset);
    FindingsRecordRollback rollback;
    ClearFindingsRecord();
    const bool found = HasRow(*rows);
    if (found)
        ReadRow(*rows);
    rollback.Keep();
    return found;
}

QString FirstFindingsNumber(const QString& year)
{
    return year + LayIntoMask(u"1"_s, u"000000");
}

QString NextFindingsNumber(const QString& year)
{
    return NumberBehind(GreatestNumber(year), year);
}

bool StoreFindings()
{
    const bool hasNumber = FindingsRecord.Stored || FindingsRecord.Yeonno.toLongLong() > 0;
    if (!hasNumber || FindingsRecord.Ymd.isEmpty())
        throw PlatformError(u"열린 소견서가 없습니다. 소견서를 다시 여십시오.!!"_s);
    FindingsRecordRollback rollback;
    const QString before = FindingsRecord.Yeonno;
    const auto row = RowOfNumber();
    if (HasRow(*row) && IsOwn(*row)) {
        WriteRow(u" REPLACE");
    } else {
        while (!InsertRow())
            TakeNextNumber();
    }
    FindingsRecord.Stored = RecordOwner();
    rollback.Keep();
    return FindingsRecord.Yeonno != before;
}

QString CutTextsOfFindings()
{
    const auto row = RowOfNumber();
    if (!HasRow(*row))
        return {};
    QStringList cut;
    const auto compare = [&](const QString& name, const QString& column, const QString& text) {
        // Characters, as the column counts them: one that it can't hold has become another.
        const qsizetype stored = row->Fields(column).toString().toUcs4().size();
        const qsizetype wanted = text.toUcs4().size();
        if (stored < wanted)
            cut << u"%1이(가) 길어 %2자 중 %3자만 저장되었습니다.!!"_s.arg(name).arg(wanted).arg(stored);
    };
    compare(u"소견"_s, u"caso_sogyon"_s, FindingsRecord.Sogyon);
    compare(u"비고"_s, u"caso_bigo"_s, FindingsRecord.Bigo);
    return cut.join(u"\r\n"_s);
}

void RemoveFindings()
{
    const auto row = RowOfNumber();
    if (HasRow(*row) && !IsOwn(*row))
        throw PlatformError(u"다른 곳에서 같은 번호로 저장한 소견서입니다. 삭제하지 않았습니다.!!"_s);
    Execute(Statement(u" DELETE FROM caso ").Quoted(u" WHERE caso_yeonno = '", FindingsRecord.Yeonno));
    FindingsRecord.Stored.reset();
}

QString OpinionText(const QString& code)
{
    const auto row =
        OpenRows(Statement(u" SELECT * FROM so ").Quoted(u" WHERE so_code = '", code).Piece(u" AND so_gubun = '4' "));
    return HasRow(*row) ? row->Fields(u"so_myung"_s).toString() : QString();
}
