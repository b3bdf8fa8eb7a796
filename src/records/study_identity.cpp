#include "records/study_identity.h"

#include "contracts/PlatformError.h"
#include "identifiers/dicom_uids.h"
#include "records/Statement.h"
#include "records/tables.h"
#include "visit/Visit.h"

using namespace Qt::StringLiterals;

namespace {

const QString NoTable = u"테이블 ca_uid를 쓸 수 없어 PACS의 식별자를 기억하지 못합니다.!!"_s;

/// Characters that the table's columns hold.
constexpr qsizetype TextRoom = 64;
constexpr qsizetype RootRoom = 24;

DicomIdentity Fitting(const DicomIdentity& identity)
{
    return {FittingColumn(identity.institution, TextRoom), FittingColumn(identity.uidRoot, RootRoom),
            FittingColumn(identity.patientId, TextRoom), FittingColumn(identity.issuer, TextRoom), identity.study};
}

/// What the visit's identifiers are made from.
DicomPicture PictureOf(const Visit& visit, const DicomIdentity& identity)
{
    DicomPicture picture;
    picture.chart = visit.chart;
    picture.ymd = visit.ymd;
    picture.section = visit.etc;
    picture.identity = identity;
    return picture;
}

std::optional<DicomIdentity> RowOf(const Visit& visit)
{
    const auto row =
        OpenRows(Statement(u" SELECT uid_institution, uid_root, uid_patient, uid_issuer, uid_study FROM ca_uid ")
                     .Quoted(u" WHERE uid_chart = '", visit.chart)
                     .Quoted(u" AND uid_ymd = '", visit.ymd)
                     .Quoted(u" AND uid_etc = '", visit.etc));
    if (!HasRow(*row))
        return std::nullopt;
    DicomIdentity identity{FieldText(*row, 0), FieldText(*row, 1), FieldText(*row, 2), FieldText(*row, 3)};
    // Given by others: a worklist.
    if (const QString study = FieldText(*row, 4); study != StudyUid(PictureOf(visit, identity)))
        identity.study = study;
    return identity;
}

void AddRow(const Visit& visit, const DicomIdentity& identity)
{
    const DicomPicture picture = PictureOf(visit, identity);
    Execute(Statement(u" INSERT INTO ca_uid ( uid_chart, uid_ymd, uid_etc, uid_study, uid_series, ")
                .Piece(u"uid_institution, uid_root, uid_patient, uid_issuer ) ")
                .Then(u" VALUES ( '", visit.chart)
                .Then(u"', '", visit.ymd)
                .Then(u"', '", visit.etc)
                .Then(u"', '", StudyUid(picture))
                .Then(u"', '", SeriesUid(picture))
                .Then(u"', '", identity.institution)
                .Then(u"', '", identity.uidRoot)
                .Then(u"', '", identity.patientId)
                .Then(u"', '", identity.issuer)
                .Piece(u"' ) "));
}

} // namespace

std::optional<DicomIdentity> NewIdentity(const Visit& visit, const PacsSetupRecord& setup, const SaupRecords& places)
{
    QString institution = setup.Institution.trimmed();
    if (institution.isEmpty() && !places.empty())
        institution = places.begin()->second.Yoyangno.trimmed();
    if (institution.isEmpty() && setup.UidRoot.isEmpty())
        return std::nullopt;
    return Fitting({institution, setup.UidRoot, setup.PatientIdPrefix + visit.chart.trimmed(), institution});
}

QList<DicomIdentity> FormerIdentities(const Visit& visit, const PacsSetupRecord& setup, const SaupRecords& places)
{
    QList<DicomIdentity> identities;
    const auto add = [&](const QString& institution) {
        const DicomIdentity identity{institution.trimmed(), setup.UidRoot, visit.chart.trimmed(), {}};
        if (!identities.contains(identity))
            identities.append(identity);
    };
    for (const auto& [number, place] : places)
        add(place.Yoyangno);
    if (places.empty())
        add({});
    return identities;
}

std::optional<DicomIdentity> KeptIdentity(const Visit& visit)
{
    try {
        return RowOf(visit);
    } catch (const TableRefused& error) {
        NoteWithoutTable(NoTable, error);
        return std::nullopt;
    }
}

DicomIdentity KeepIdentity(const Visit& visit, const DicomIdentity& identity)
{
    DicomIdentity own = Fitting(identity);
    try {
        if (const std::optional<DicomIdentity> kept = RowOf(visit))
            return *kept;
        try {
            AddRow(visit, own);
        } catch (const DatabaseAway&) {
            throw;
        } catch (const PlatformError&) {
            // The key of the table lets only one of two stations in.
            if (const std::optional<DicomIdentity> theirs = RowOf(visit))
                return *theirs;
            throw;
        }
        return RowOf(visit).value_or(own);
    } catch (const TableRefused& error) {
        NoteWithoutTable(NoTable, error);
        return own;
    }
}
