#include "sender/visit_facts.h"

#include "contracts/files.h"
#include "frame/services.h"
#include "records/kept_study.h"
#include "records/picture_facts.h"
#include "records/study_identity.h"
#include "visit/Visit.h"

using namespace Qt::StringLiterals;

namespace {

QString TimeOf(const Visit& visit, const VisitTold& told)
{
    QDateTime time = told.firstTakenAt;
    if (!time.isValid() && told.number > 0)
        time = Files().LastModified(visit.PicturePath(told.number)).toLocalTime();
    return time.isValid() ? time.toString(u"HHmmss"_s) : QString();
}

} // namespace

VisitFacts FactsOf(const Visit& visit, const VisitTold& told, const PacsSetupRecord& setup, const SaupRecords& places)
{
    VisitFacts known{PictureFacts(visit, told.doctor, setup, places)};
    std::optional<DicomIdentity> identity = KeptIdentity(visit);
    const std::optional<DicomIdentity> fresh = NewIdentity(visit, setup, places);
    // The study is kept before the identity is: an identity alone is an earlier release's.
    if (identity && told.isNew) {
        known.facts.study = StudyToSend(visit, true, TimeOf(visit, told), setup);
    } else if (!identity && told.isNew && told.mayHaveBeenSent) {
        known.former = FormerIdentities(visit, setup, places);
    } else if (!identity && told.isNew && fresh) {
        known.facts.study = StudyToSend(visit, false, TimeOf(visit, told), setup);
        identity = KeepIdentity(visit, *fresh);
    }
    known.hasIdentity = identity.has_value() || (!told.isNew && fresh);
    known.facts.identity = identity.value_or(fresh.value_or(DicomIdentity()));
    return known;
}

void KeepFound(VisitFacts& known, const Visit& visit, const VisitTold& told, bool wasSent, const PacsSetupRecord& setup)
{
    known.facts.study = StudyToSend(visit, wasSent, TimeOf(visit, told), setup);
    known.facts.identity = KeepIdentity(visit, known.facts.identity);
    known.hasIdentity = true;
}
