#include "platform/dicom/DcmtkKit.h"

#include "contracts/desktop.h"
#include "contracts/files.h"
#include "frame/components.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "identifiers/dicom_uids.h"
#include "platform/dicom/DcmtkServices.h"
#include "platform/dicom/link_outcomes.h"
#include "platform/dicom/register_dicom.h"

#include <QCborArray>
#include <QDeadlineTimer>

using namespace Qt::StringLiterals;
using namespace dicomlink;
using namespace linkoutcomes;
using peeranswers::Asked;

namespace {

constexpr qint64 FindingMs = 120'000;
/// A silent server isn't waited for at the end.
constexpr qint64 ClosingMs = 3'000;

/// What killed processes of this machine and user left: their folders hold patients' data.
void RemoveLeftFolders(const QString& above)
{
    for (const FolderEntry& entry : Files().Entries(above)) {
        if (!entry.IsFolder || !entry.Name.startsWith(u"Dicom-"_s))
            continue;
        const QString mark = entry.Name.section(u'-', 1, 1);
        if (Files().HolderOf(mark) == Holder::Dead && Files().ForeignOwner(above + entry.Name).isEmpty())
            Files().DeleteEntry(above, entry.Name);
    }
}

} // namespace

DcmtkKit::~DcmtkKit()
{
    Close();
}

DicomOutcome DcmtkKit::AskOfPeer(Request asked, const DicomPeer& peer, Taken& taken, const std::stop_token& stop)
{
    taken.clear();
    QCborMap request = RequestOf(asked);
    PutPeer(request, peer, m_patience);
    const qint64 patienceMs = (m_patience.connectSeconds + m_patience.agreeSeconds) * 1000LL + GraceMs;
    QCborMap answer;
    const LinkProcess::End end = m_link.Ask(request, answer, MostPlain, patienceMs, stop);
    if (end != LinkProcess::End::Answered)
        return OfEnd(end, {DicomOutcome::Away, u"PACS 서버에 연결할 수 없습니다.!!"_s});
    taken = linkanswers::TakenOf(answer);
    return OfAnswer(answer, Asked::Echo, DicomOutcome::Away);
}

DicomOutcome DcmtkKit::Open(const DicomPeer& peer, const std::stop_token& stop)
{
    Close();
    DicomOutcome outcome = AskOfPeer(Request::Open, peer, m_taken, stop);
    m_isOpen = outcome.kind == DicomOutcome::Accepted;
    return outcome;
}

DicomOutcome DcmtkKit::Echo(const DicomPeer& peer, const std::stop_token& stop)
{
    Taken taken;
    DicomOutcome outcome = AskOfPeer(Request::Echo, peer, taken, stop);
    m_isOpen = m_isOpen && m_link.IsLiving();
    return outcome;
}

DicomOutcome DcmtkKit::Abilities(const DicomPeer& peer, DicomAbilities& abilities, const std::stop_token& stop)
{
    abilities = {};
    Taken taken;
    DicomOutcome outcome = AskOfPeer(Request::Abilities, peer, taken, stop);
    m_isOpen = m_isOpen && m_link.IsLiving();
    if (outcome.kind != DicomOutcome::Accepted)
        return outcome;
    using enum DicomModality;
    for (const DicomModality modality : {Endoscopy, Ultrasound, Microscopy, Photography}) {
        const QString uid = ClassUidOf(modality);
        abilities.kinds.append({uid, Takes(taken, uid, Content::Jpeg), Takes(taken, uid, Content::Pixels)});
    }
    for (const auto& [series, content] :
         {std::pair(DicomSeries::Reports, Content::Document), std::pair(DicomSeries::Movies, Content::Movie),
          std::pair(DicomSeries::Rejections, Content::Nothing)})
        abilities.kinds.append({ClassUidOf(series), Takes(taken, ClassUidOf(series), content), false});
    abilities.answersQuestions = Takes(taken, u"1.2.840.10008.5.1.4.1.2.2.1"_s, Content::Nothing);
    abilities.isEncrypted = !peer.tls.authority.isEmpty();
    return outcome;
}

DicomOutcome DcmtkKit::Find(const QString& study, const QString& series, qint64 patienceMs, QCborMap& answer,
                            const std::stop_token& stop)
{
    if (!m_isOpen)
        return NotConnected();
    QCborMap request = RequestOf(Request::Find);
    request[StudyKey] = study.toLatin1();
    if (!series.isEmpty())
        request[SeriesKey] = series.toLatin1();
    const LinkProcess::End end = m_link.Ask(request, answer, MostPlain, patienceMs, stop);
    DicomOutcome outcome = end == LinkProcess::End::Answered ? OfAnswer(answer, Asked::Find, DicomOutcome::Away)
                                                             : OfEnd(end, {DicomOutcome::Away, BrokenText()});
    if (outcome.kind == DicomOutcome::Away)
        Close();
    return outcome;
}

DicomOutcome DcmtkKit::FindStudies(const QStringList& uids, QList<DicomFoundStudy>& found, const std::stop_token& stop)
{
    found.clear();
    QList<DicomFoundStudy> matching;
    const QDeadlineTimer deadline(FindingMs);
    // One by one: not every server understands a list.
    for (const QString& uid : uids) {
        QCborMap answer;
        DicomOutcome outcome = Find(uid, {}, deadline.remainingTime(), answer, stop);
        if (outcome.kind != DicomOutcome::Accepted)
            return outcome;
        matching += linkanswers::StudiesOf(answer, uid);
    }
    found = matching;
    return {DicomOutcome::Accepted};
}

DicomOutcome DcmtkKit::FindPictures(const QString& study, const QString& series, QList<DicomFound>& found,
                                    const std::stop_token& stop)
{
    found.clear();
    QCborMap answer;
    DicomOutcome outcome = Find(study, series, FindingMs, answer, stop);
    if (outcome.kind != DicomOutcome::Accepted)
        return outcome;
    found = linkanswers::PicturesOf(answer);
    return outcome;
}

void DcmtkKit::Close()
{
    if (!std::exchange(m_isOpen, false) || !m_link.IsLiving())
        return;
    QCborMap answer;
    m_link.Ask(RequestOf(Request::Close), answer, MostPlain, ClosingMs, {});
}

void DcmtkKit::RemoveLeftObjects()
{
    journal::NotingFaults([] { RemoveLeftFolders(UseService<Desktop>().ProgramFolder() + u'\\'); });
}

void RegisterDicom()
{
    RegisterComponent<DicomKit>(QString::fromUtf16(DicomKitName), [] { return std::make_unique<DcmtkKit>(); });
    RegisterComponent<DicomServices>(QString::fromUtf16(DicomServicesName),
                                     [] { return std::make_unique<DcmtkServices>(); });
}
