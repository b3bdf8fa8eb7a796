#include "records/picture_facts.h"

#include "records/doctor_lookup.h"
#include "records/kept_study.h"
#include "records/patient_lookup.h"
#include "records/Statement.h"
#include "text/text_routines.h"
#include "visit/Visit.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

void TakePatient(DicomPicture& facts)
{
    const auto row =
        OpenRows(Statement(u" SELECT wj_suname, wj_jumin FROM wj ").Quoted(u" WHERE wj_chart = '", facts.chart));
    if (!HasRow(*row))
        return;
    facts.patientName = FieldText(*row, u"wj_suname"_s);
    // Of a masked number the digits behind the first seven are asterisks or blanks, or aren't there.
    constexpr qsizetype Telling = 7;
    const QString jumin = FieldText(*row, u"wj_jumin"_s).remove(u'-').remove(u' ').left(Telling);
    if (!std::ranges::all_of(jumin, [](QChar letter) { return letter >= u'0' && letter <= u'9'; }))
        return;
    facts.birthDate = BirthText(jumin);
    // The station calls everyone a woman whose number it doesn't know; another system would take that for known.
    if (!facts.birthDate.isEmpty())
        facts.sex = SexText(jumin);
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
    if (facts.institution.isEmpty() && !places.empty())
        facts.institution = places.begin()->second.Hospital;
    facts.characters = setup.Characters;
    facts.hasNameParts = setup.HasNameParts;
    facts.study = KeptStudy(visit, setup);
    facts.burnedIn = setup.BurnedIn;
    TakePatient(facts);
    const std::optional<DoctorRow> row = Trim(doctor).isEmpty() ? std::nullopt : LookupDoctor(doctor, visit.ymd);
    if (row)
        facts.doctor = row->Name;
    return facts;
}

QString LaunchedVisit::DoctorOf(const Visit& visit) const
{
    return visit.chart == chart && Trim(visit.ymd) == Trim(ymd) ? doctor : QString();
}
