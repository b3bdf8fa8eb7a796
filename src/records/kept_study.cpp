#include "records/kept_study.h"

#include "contracts/PlatformError.h"
#include "identifiers/dicom_uids.h"
#include "records/Statement.h"
#include "records/tables.h"
#include "visit/Visit.h"

#include <algorithm>
#include <array>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

const QString NoTable = u"테이블 ca_study를 쓸 수 없어 PACS 검사의 종류와 시각, 처방을 기억하지 못합니다.!!"_s;

/// A column of the order, and the characters that it holds.
struct OrderColumn
{
    QString name;
    QString DicomOrder::*text;
    qsizetype room;
};

const std::array<OrderColumn, 9> OrderColumns{{
    {u"st_accession"_s, &DicomOrder::accession, 64},
    {u"st_procedure"_s, &DicomOrder::procedureId, 64},
    {u"st_proctext"_s, &DicomOrder::procedureText, 64},
    {u"st_code"_s, &DicomOrder::procedureCode, 64},
    {u"st_scheme"_s, &DicomOrder::procedureScheme, 64},
    {u"st_codename"_s, &DicomOrder::procedureName, 64},
    {u"st_step"_s, &DicomOrder::stepId, 64},
    {u"st_steptext"_s, &DicomOrder::stepText, 64},
    {u"st_referring"_s, &DicomOrder::referring, 200},
}};

Statement& OfVisit(Statement& statement, const Visit& visit)
{
    return statement.Quoted(u" WHERE st_chart = '", visit.chart)
        .Quoted(u" AND st_ymd = '", visit.ymd)
        .Quoted(u" AND st_etc = '", visit.etc);
}

std::optional<DicomStudy> RowOf(const Visit& visit)
{
    Statement statement(u" SELECT st_time, st_modality, st_body, st_side ");
    for (const OrderColumn& column : OrderColumns)
        statement.Piece(u", "_s + column.name);
    statement.Piece(u" FROM ca_study ");
    const auto row = OpenRows(OfVisit(statement, visit));
    if (!HasRow(*row))
        return std::nullopt;
    DicomStudy study;
    study.time = FieldText(*row, 0);
    study.kind = {ModalityOf(FieldText(*row, 1)).value_or(DicomModality::Endoscopy), FieldText(*row, 2),
                  FieldText(*row, 3)};
    int place = 4;
    for (const OrderColumn& column : OrderColumns)
        study.order.*column.text = FieldText(*row, place++);
    return study;
}

void AddRow(const Visit& visit, const DicomStudy& study)
{
    Statement statement(u" INSERT INTO ca_study ( st_chart, st_ymd, st_etc, st_time, st_modality, st_body, st_side");
    for (const OrderColumn& column : OrderColumns)
        statement.Piece(u", "_s + column.name);
    statement.Then(u" ) VALUES ( '", visit.chart)
        .Then(u"', '", visit.ymd)
        .Then(u"', '", visit.etc)
        .Then(u"', '", study.time)
        .Then(u"', '", WordOf(study.kind.modality))
        .Then(u"', '", study.kind.bodyPart)
        .Then(u"', '", study.kind.laterality);
    for (const OrderColumn& column : OrderColumns)
        statement.Then(u"', '", FittingColumn(study.order.*column.text, column.room));
    Execute(statement.Piece(u"' ) "));
}

} // namespace

DicomPictureKind KindOfSection(const QString& section, const PacsSetupRecord& setup)
{
    if (const auto told = setup.Kinds.find(section.trimmed()); told != setup.Kinds.end())
        return told->second;
    const auto has = [&section](const QString& word) { return section.contains(word, Qt::CaseInsensitive); };
    if (has(u"초음파"_s))
        return {DicomModality::Ultrasound, {}, {}};
    if (has(u"현미경"_s))
        return {DicomModality::Microscopy, {}, {}};
    if (has(u"피부"_s) || has(u"외부"_s) || has(u"사진"_s))
        return {DicomModality::Photography, {}, {}};
    return {};
}

DicomStudy KeptStudy(const Visit& visit, const PacsSetupRecord& setup)
{
    try {
        if (const std::optional<DicomStudy> kept = RowOf(visit))
            return *kept;
    } catch (const TableRefused& error) {
        NoteWithoutTable(NoTable, error);
    }
    return {{}, KindOfSection(visit.etc, setup), {}};
}

DicomStudy KeepStudy(const Visit& visit, const DicomStudy& study)
{
    try {
        const std::optional<DicomStudy> kept = RowOf(visit);
        if (kept && (!kept->time.isEmpty() || study.time.isEmpty()))
            return *kept;
        if (!kept) {
            try {
                AddRow(visit, study);
            } catch (const DatabaseAway&) {
                throw;
            } catch (const PlatformError&) {
                // The key of the table lets only one of two stations in.
                if (!RowOf(visit))
                    throw;
            }
        }
        Statement statement;
        statement.Then(u" UPDATE ca_study SET st_time = '", study.time).Piece(u"' ");
        Execute(OfVisit(statement, visit).Piece(u" AND st_time = '' "));
        return RowOf(visit).value_or(study);
    } catch (const TableRefused& error) {
        NoteWithoutTable(NoTable, error);
        return study;
    }
}

DicomStudy StudyToSend(const Visit& visit, bool wasSent, const QString& time, const PacsSetupRecord& setup)
{
    try {
        const std::optional<DicomStudy> kept = RowOf(visit);
        if (!kept)
            return KeepStudy(visit, wasSent ? DicomStudy() : DicomStudy{time, KindOfSection(visit.etc, setup), {}});
        // A worklist may have made row and identity before anything was sent.
        if (!kept->time.isEmpty() || (wasSent && kept->order == DicomOrder()))
            return *kept;
        return KeepStudy(visit, {time, kept->kind, {}});
    } catch (const TableRefused& error) {
        NoteWithoutTable(NoTable, error);
        return {time, KindOfSection(visit.etc, setup), {}};
    }
}

void KeepOrder(const Visit& visit, const DicomOrder& order, const PacsSetupRecord& setup)
{
    KeepStudy(visit, {{}, KindOfSection(visit.etc, setup), order});
    try {
        Statement statement(u" UPDATE ca_study SET ");
        QString before;
        for (const OrderColumn& column : OrderColumns) {
            statement.Then(before + column.name + u" = '"_s, FittingColumn(order.*column.text, column.room));
            before = u"', "_s;
        }
        Execute(OfVisit(statement.Piece(u"' "), visit));
    } catch (const TableRefused& error) {
        NoteWithoutTable(NoTable, error);
    }
}
