#include "findings/findings_rows.h"

#include "contracts/PlatformError.h"
#include "findings/findings_record.h"
#include "records/acts.h"
#include "records/patient_lookup.h"
#include "records/Statement.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// The columns in the order of the table.
const QStringList& Columns()
{
    static const QStringList columns = [] {
        QStringList names;
        for (const QString& name :
             u"yeonno chart yuhyung ymd suname jumin jinchal etc no1 no2 no3 no4 no5 no6 sogyon bigo balymd myonheo "
             "doctor yoyangno hospital"_s.split(u' '))
            names << u"caso_"_s + name;
        return names;
    }();
    return columns;
}

constexpr qsizetype FindingsColumn = 14;
constexpr qsizetype RemarkColumn = 15;

/// The record as its row is to be, in that order.
QList<QVariant> RowOfRecord(const FindingsRecordFields& record)
{
    QList<QVariant> row{record.Yeonno, record.Chart, record.Yuhyung, record.Ymd,
                        record.Suname, record.Jumin, record.Jinchal, record.Etc};
    for (const int number : record.PicNo)
        row << qlonglong{number};
    return row << record.Sogyon << record.Bigo << record.Balymd << record.Myonheo << record.Doctor << record.Yoyangno
               << record.Hospital;
}

QList<QVariant> ValuesOf(const AdoRecordset& row)
{
    QList<QVariant> values;
    for (const QString& column : Columns())
        values << row.Fields(column);
    return values;
}

/// A row that was sent and not answered: it may have arrived.
QList<QVariant> unanswered;

/// Whose report it is: chart, date and section.
Visit OwnerOf(const QList<QVariant>& row)
{
    const auto text = [&row](const QString& column) { return Trim(row.value(Columns().indexOf(column)).toString()); };
    Visit visit;
    visit.chart = text(u"caso_chart"_s);
    visit.ymd = text(u"caso_ymd"_s);
    visit.etc = text(u"caso_etc"_s);
    return visit;
}

QString PicturePathOf(const FindingsRecordFields& record, int number)
{
    try {
        return VisitOf(record.Chart, record.Yuhyung, record.Ymd, record.Etc).PicturePath(number);
    } catch (const PlatformError&) {
        // A row whose section or chart is no name of a folder has no pictures here.
        return {};
    }
}

void ReadRow(FindingsRecordFields& record, const AdoRecordset& row)
{
    const auto text = [&row](const QString& column) { return FieldText(row, column); };
    record.Yeonno = text(u"caso_yeonno"_s);
    record.Chart = text(u"caso_chart"_s);
    record.Yuhyung = text(u"caso_yuhyung"_s);
    record.Jinchal = text(u"caso_jinchal"_s);
    record.Etc = text(u"caso_etc"_s);
    record.Suname = text(u"caso_suname"_s);
    record.Jumin = text(u"caso_jumin"_s);
    record.Ymd = text(u"caso_ymd"_s);
    record.Balymd = text(u"caso_balymd"_s);
    record.Hospital = text(u"caso_hospital"_s);
    record.Yoyangno = text(u"caso_yoyangno"_s);
    record.Doctor = text(u"caso_doctor"_s);
    record.Myonheo = text(u"caso_myonheo"_s);
    for (size_t slot = 0; slot < record.PicNo.size(); ++slot) {
        const int number = FieldNumber(row, u"caso_no%1"_s.arg(slot + 1));
        record.PicNo[slot] = number;
        record.PicPath[slot] = number > 0 ? PicturePathOf(record, number) : QString();
    }
    record.Sogyon = row.Fields(u"caso_sogyon"_s).toString();
    record.Bigo = row.Fields(u"caso_bigo"_s).toString();

    const QString jumin = QString(record.Jumin).remove(u'-');
    record.Sex = SexText(jumin);
    const QString years = AgeText(record.Ymd, jumin).left(3);
    record.Nai = IsNumericText(years) ? WholeNumberText(years) + u"세 "_s : QString();
    record.Stored = ValuesOf(row);
}

std::unique_ptr<AdoRecordset> RowOfNumber(const FindingsRecordFields& record)
{
    return OpenRows(Statement(u" SELECT * FROM caso ").Quoted(u" WHERE caso_yeonno = '", record.Yeonno), adOpenKeyset);
}

/// What stands under the record's number now.
std::optional<QList<QVariant>> PresentRow(const FindingsRecordFields& record)
{
    const auto row = RowOfNumber(record);
    return HasRow(*row) ? std::optional(ValuesOf(*row)) : std::nullopt;
}

bool IsSame(const QList<QVariant>& row, const QList<QVariant>& sent)
{
    return std::ranges::equal(row, sent, {}, &QVariant::toString, &QVariant::toString);
}

/// True when a row is what columns that are too short, or hold fewer characters, make of the other.
bool CanBe(const QList<QVariant>& row, const QList<QVariant>& sent)
{
    return std::ranges::equal(row, sent, &MayBeStoredAs, &QVariant::toString, &QVariant::toString);
}

Statement& WithValue(Statement& statement, const QVariant& value)
{
    return value.typeId() == QMetaType::LongLong ? statement.Value(value.toInt())
                                                 : statement.Piece(u"'").Value(value.toString()).Piece(u"'");
}

/// Puts the record under its number as a new row, whole, which the key lets only one station do. False when another
/// report was quicker.
bool InsertRow(const FindingsRecordFields& record)
{
    unanswered = RowOfRecord(record);
    Statement statement(u" INSERT INTO caso VALUES ( ");
    for (qsizetype at = 0; at < unanswered.size(); ++at)
        WithValue(statement.Piece(at == 0 ? u"" : u", "), unanswered[at]);
    try {
        Execute(statement.Piece(u" ) "));
        return true;
    } catch (const PlatformError&) {
        const auto row = PresentRow(record);
        if (!row)
            throw;
        // One that had arrived before its connection was lost was repeated, and met itself.
        return IsSame(*row, unanswered);
    }
}

/// Puts the record in the place of its row, in one statement, so that no other station comes in between. False when the
/// row isn't what it was.
bool ReplaceRow(const FindingsRecordFields& record, const QList<QVariant>& before)
{
    unanswered = RowOfRecord(record);
    Statement statement(u" UPDATE caso SET ");
    for (qsizetype at = 1; at < unanswered.size(); ++at)
        WithValue(statement.Piece(at == 1 ? u"" : u", ").Piece(Columns()[at]).Piece(u" = "), unanswered[at]);
    statement.Quoted(u" WHERE caso_yeonno = '", record.Yeonno);
    for (qsizetype at = 0; at < before.size(); ++at)
        statement.Piece(u" AND ").Same(Columns()[at], before[at]);
    return Execute(statement) > 0;
}

/// What has become of the row that was stored. Where it can't be that, another station was quicker, and what was sent
/// is what the next save starts from.
void ReadBack(FindingsRecordFields& record)
{
    const auto row = PresentRow(record);
    record.Stored = row && CanBe(*row, unanswered) ? *row : unanswered;
    unanswered.clear();
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
void TakeNextNumber(FindingsRecordFields& record)
{
    const QString year = record.Ymd.left(4);
    const QString greatest = GreatestNumber(year);
    const QString next = NumberBehind(greatest, year);
    // No way on from a number such as 2026000001A, which only an administrator can mend.
    if (record.Yeonno.startsWith(year) && next <= record.Yeonno)
        throw PlatformError(
            u"다음 소견서 번호를 정할 수 없습니다. 소견서 번호 %1을(를) 확인하세요.!!"_s.arg(greatest.left(20)));
    record.Yeonno = next;
}

} // namespace

bool ReadFindingsOfVisit(FindingsRecordFields& record)
{
    Statement statement(u" SELECT * FROM caso ");
    statement.Quoted(u" WHERE caso_chart = '", record.Chart).Quoted(u" AND caso_ymd = '", record.Ymd);
    if (!Trim(record.Jinchal).isEmpty())
        statement.Quoted(u" AND caso_jinchal = '", record.Jinchal);
    statement.Quoted(u" AND caso_etc = '", record.Etc).Piece(u" ORDER BY caso_yeonno ASC ");
    const auto rows = OpenRows(statement, adOpenKeyset);
    if (!HasRow(*rows))
        return false;
    FindingsRecordRollback rollback(record);
    ClearFindingsRecord(record);
    ReadRow(record, *rows);
    rollback.Keep();
    return true;
}

bool ReadFindingsByNumber(FindingsRecordFields& record, const QString& number)
{
    const auto rows =
        OpenRows(Statement(u" SELECT * FROM caso ").Quoted(u" WHERE caso_yeonno = '", number), adOpenKeyset);
    FindingsRecordRollback rollback(record);
    ClearFindingsRecord(record);
    const bool found = HasRow(*rows);
    if (found)
        ReadRow(record, *rows);
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

namespace {

/// As they were read or stored last; null for a report without a row.
QString TextsOf(const FindingsRecordFields& record)
{
    const std::optional<FindingsTexts> texts = StoredFindingsTexts(record);
    if (!texts)
        return {};
    return texts->remark.isEmpty() ? u""_s + texts->findings : texts->findings + u"\n--\n"_s + texts->remark;
}

void RecordReport(acts::Kind kind, const FindingsRecordFields& record, const QString& earlier)
{
    acts::Act act{kind, record.Chart, Trim(record.Ymd), record.Etc};
    act.detail = record.Yeonno;
    act.before = earlier;
    acts::Record(act);
}

} // namespace

FindingsStored StoreFindings(FindingsRecordFields& record)
{
    const bool hasNumber = record.Stored || record.Yeonno.toLongLong() > 0;
    if (!hasNumber || record.Ymd.isEmpty())
        throw PlatformError(u"열린 소견서가 없습니다. 소견서를 다시 여십시오.!!"_s);
    FindingsRecordRollback rollback(record);
    const QString before = record.Yeonno;
    const QString earlier = TextsOf(record);
    if (record.Stored) {
        const QList<QVariant> sent = unanswered;
        if (!ReplaceRow(record, *record.Stored)) {
            // Its own, from a statement that arrived without an answer.
            const auto row = PresentRow(record);
            const bool isOwn = row && (IsSame(*row, unanswered) || (IsSame(*row, sent) && ReplaceRow(record, *row)));
            if (!isOwn) {
                unanswered.clear();
                return FindingsStored::Changed;
            }
        }
    } else {
        while (!InsertRow(record))
            TakeNextNumber(record);
    }
    ReadBack(record);
    rollback.Keep();
    RecordReport(acts::Kind::ReportStored, record, earlier);
    return record.Yeonno == before ? FindingsStored::Done : FindingsStored::Renumbered;
}

void TakePresentRow(FindingsRecordFields& record)
{
    const auto row = PresentRow(record);
    const bool isOwn = row && OwnerOf(*row) == OwnerOf(RowOfRecord(record));
    record.Stored = isOwn ? row : std::nullopt;
}

std::optional<FindingsTexts> StoredFindingsTexts(const FindingsRecordFields& record)
{
    if (!record.Stored)
        return std::nullopt;
    return FindingsTexts{record.Stored->at(FindingsColumn).toString(), record.Stored->at(RemarkColumn).toString()};
}

void ExpectFindingsTexts(FindingsRecordFields& record, const FindingsTexts& texts)
{
    const std::optional<FindingsTexts> stored = StoredFindingsTexts(record);
    // Nothing, where nothing was stored, is null as well as empty.
    if (stored && stored->findings != texts.findings)
        record.Stored->replace(FindingsColumn, texts.findings);
    if (stored && stored->remark != texts.remark)
        record.Stored->replace(RemarkColumn, texts.remark);
}

QString CutTextsOfFindings(const FindingsRecordFields& record)
{
    const std::optional<FindingsTexts> stored = StoredFindingsTexts(record);
    QStringList cut;
    const auto compare = [&](const QString& name, const QString& kept, const QString& text) {
        // Characters, as the column counts them: one that it can't hold has become another.
        const qsizetype characters = kept.toUcs4().size();
        const qsizetype wanted = text.toUcs4().size();
        if (characters < wanted)
            cut << u"%1이(가) 길어 %2자 중 %3자만 저장되었습니다.!!"_s.arg(name).arg(wanted).arg(characters);
    };
    if (stored) {
        compare(u"소견"_s, stored->findings, record.Sogyon);
        compare(u"비고"_s, stored->remark, record.Bigo);
    }
    return cut.join(u"\r\n"_s);
}

void RemoveFindings(FindingsRecordFields& record)
{
    const auto row = PresentRow(record);
    const QList<QVariant> own = record.Stored.value_or(RowOfRecord(record));
    if (row && OwnerOf(*row) != OwnerOf(own))
        throw PlatformError(u"다른 곳에서 같은 번호로 저장한 소견서입니다. 삭제하지 않았습니다.!!"_s);
    const QString earlier = TextsOf(record);
    Execute(Statement(u" DELETE FROM caso ").Quoted(u" WHERE caso_yeonno = '", record.Yeonno));
    RecordReport(acts::Kind::ReportDeleted, record, earlier);
    record.Stored.reset();
}

QString OpinionText(const QString& code)
{
    const auto row =
        OpenRows(Statement(u" SELECT * FROM so ").Quoted(u" WHERE so_code = '", code).Piece(u" AND so_gubun = '4' "));
    return HasRow(*row) ? row->Fields(u"so_myung"_s).toString() : QString();
}
