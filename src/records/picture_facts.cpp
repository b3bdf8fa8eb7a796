#include "records/picture_facts.h"

#include "records/doctor_lookup.h"
#include "records/patient_lookup.h"
#include "records/Statement.h"
#include "text/text_routines.h"
#include "visit/Visit.h"

using namespace Qt::StringLiterals;

namespace {

void TakePatient(DicomPicture& facts)
{
    const auto row =
        OpenRows(Statement(u" SELECT wj_suname, wj_jumin FROM wj ").Quoted(u" WHERE wj_chart = '", facts.chart));
    if (!HasRow(*row))
        return;
    facts.patientName = FieldText(*row, u"wj_suname"_s);
    const QString jumin = FieldText(*row, u"wj_jumin"_s).remove(u'-');
    facts.birthDate = BirthText(jumin);
    // The station calls everyone a woman whose number it doesn't know; another system would take that for known.
    if (!facts.birthDate.isEmpty())
        facts.sex = SexText(jumin);
}

void TakeClinic(DicomPicture& facts, const QString& saup, const SaupRecords& places)
{
    auto place = IsNumericText(saup) ? places.find(WholeNumber(saup)) : places.end();
    if (place == places.end())
        place = places.begin();
    if (place == places.end())
        return;
    facts.identity.institution = place->second.Yoyangno;
    if (facts.institution.isEmpty())
        facts.institution = place->second.Hospital;
}

} // namespace

DicomPicture PictureFacts(const Visit& visit, const QString& doctor, const PacsSetupRecord& setup,
                          const SaupRecords& places)
{
    DicomPicture facts;
    facts.chart = visit.chart;
    facts.ymd = visit.ymd;
    facts.section = visit.etc;
    facts.institution = setup.Institution;
    facts.identity.uidRoot = setup.UidRoot;
    TakePatient(facts);
    const std::optional<DoctorRow> row = Trim(doctor).isEmpty() ? std::nullopt : LookupDoctor(doctor, visit.ymd);
    if (row)
        facts.doctor = row->Name;
    TakeClinic(facts, row ? row->Saup : QString(), places);
    return facts;
}

QString LaunchedVisit::DoctorOf(const Visit& visit) const
{
    return visit.chart == chart && Trim(visit.ymd) == Trim(ymd) ? doctor : QString();
}
