#include "platform/dicom/DcmtkKit.h"

#include "contracts/desktop.h"
#include "contracts/dicom_uids.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "platform/dicom/DcmtkRun.h"
#include "platform/dicom/DcmtkServices.h"
#include "platform/dicom/dicom_text.h"
#include "platform/dicom/jpeg_frame.h"
#include "platform/dicom/link_messages.h"
#include "platform/dicom/picture_elements.h"
#include "platform/dicom/register_dicom.h"

#include <QCborArray>
#include <QDeadlineTimer>

using namespace Qt::StringLiterals;
using namespace dicomlink;
using peeranswers::Asked;
using peeranswers::Reason;

namespace {

constexpr qint64 MakingMs = 60'000;
constexpr qint64 FindingMs = 120'000;
/// A silent server isn't waited for at the end.
constexpr qint64 ClosingMs = 3'000;
/// Beyond the patience of the process itself, which is to answer.
constexpr qint64 GraceMs = 5'000;
constexpr qint64 StoreGraceMs = 10'000;
/// On a slow line, in bytes a second.
constexpr qint64 LeastSpeed = 100'000;

const QString Silent = u"PACS 서버가 응답하지 않습니다.!!"_s;
const QString Broken = u"PACS 서버와의 연결이 도중에 끊겼습니다.!!"_s;

QCborMap RequestOf(Request request)
{
    QCborMap map;
    map[RequestKey] = static_cast<int>(request);
    return map;
}

/// An outcome of what went wrong before there was an answer.
DicomOutcome OutcomeOfEnd(LinkProcess::End end, const DicomOutcome& lost)
{
    switch (end) {
    case LinkProcess::End::Missing:
        return {DicomOutcome::Away, u"capture-station-dicom을(를) 실행할 수 없습니다.!!"_s};
    case LinkProcess::End::Stopped:
        return {DicomOutcome::Away, u"보내기를 그만두었습니다."_s};
    case LinkProcess::End::Late:
        return {lost.kind, Reason(lost.reason, u"응답 없음"_s)};
    default:
        return {lost.kind, Reason(lost.reason, u"capture-station-dicom"_s)};
    }
}

DicomOutcome OutcomeOfAnswer(const QCborMap& answer, Asked asked, DicomOutcome::Kind broken)
{
    const int status = static_cast<int>(answer.value(StatusKey).toInteger(DicomOutcome::NoStatus));
    const QByteArray comment = answer.value(CommentKey).toByteArray();
    const QString told = QString::fromUtf8(comment);
    const bool isSilent = answer.value(SilentKey).toBool();
    switch (static_cast<Fault>(answer.value(FaultKey).toInteger(-1))) {
    case Fault::None:
        return peeranswers::OfStatus(asked, status, comment);
    case Fault::Rejected:
        return peeranswers::OfRejection(false, status);
    case Fault::Busy:
        return peeranswers::OfRejection(true, status);
    case Fault::NoContext:
        return peeranswers::OfNoContext(asked);
    case Fault::Broken:
        return {broken, Reason(isSilent ? Silent : Broken, told)};
    case Fault::Gone:
        return {DicomOutcome::Away, Reason(Broken, told)};
    case Fault::Unreachable:
        return {DicomOutcome::Away, Reason(isSilent ? Silent : u"PACS 서버에 연결할 수 없습니다.!!"_s, told)};
    default:
        return {DicomOutcome::Refused, Reason(u"DICOM 파일을 만들지 못했습니다.!!"_s, told)};
    }
}

/// The picture's coded data and elements; gives the problem instead where no object can come of it.
QString TakePicture(const QByteArray& content, const DicomPicture& picture, QCborMap& request, bool& isOtherSet)
{
    const JpegFrame frame = ReadJpegFrame(content);
    if (!frame.problem.isEmpty())
        return frame.problem;
    if (frame.coded.size() > MostFrame)
        return u"DICOM으로 보내기에는 너무 큰 그림입니다.!!"_s;
    const PictureElements made = ElementsOf(picture, InstanceUid(picture, content), frame);
    request[ElementsKey] = CborOf(made.elements);
    request[FrameKey] = frame.coded;
    isOtherSet = made.isOtherSet;
    return {};
}

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

DicomOutcome DcmtkKit::AskOfPeer(const DicomPeer& peer, bool isEcho, const std::stop_token& stop)
{
    QCborMap request = RequestOf(isEcho ? Request::Echo : Request::Open);
    request[HostKey] = peer.host;
    request[PortKey] = peer.port;
    request[CalledKey] = peer.calledAet.toUtf8();
    request[CallingKey] = peer.callingAet.toUtf8();
    request[ConnectSecondsKey] = m_patience.connectSeconds;
    request[AgreeSecondsKey] = m_patience.agreeSeconds;
    request[AnswerSecondsKey] = m_patience.answerSeconds;
    const qint64 patienceMs = (m_patience.connectSeconds + m_patience.agreeSeconds) * 1000LL + GraceMs;
    QCborMap answer;
    const LinkProcess::End end = m_link.Ask(request, answer, MostPlain, patienceMs, stop);
    if (end != LinkProcess::End::Answered)
        return OutcomeOfEnd(end, {DicomOutcome::Away, u"PACS 서버에 연결할 수 없습니다.!!"_s});
    return OutcomeOfAnswer(answer, Asked::Echo, DicomOutcome::Away);
}

DicomOutcome DcmtkKit::Open(const DicomPeer& peer, const std::stop_token& stop)
{
    Close();
    DicomOutcome outcome = AskOfPeer(peer, false, stop);
    m_isOpen = outcome.kind == DicomOutcome::Accepted;
    return outcome;
}

DicomOutcome DcmtkKit::Echo(const DicomPeer& peer, const std::stop_token& stop)
{
    DicomOutcome outcome = AskOfPeer(peer, true, stop);
    m_isOpen = m_isOpen && m_link.IsLiving();
    return outcome;
}

DicomOutcome DcmtkKit::Store(const QByteArray& content, const DicomPicture& picture, const std::stop_token& stop)
{
    QCborMap request = RequestOf(Request::Store);
    bool isOtherSet = false;
    if (const QString problem = TakePicture(content, picture, request, isOtherSet); !problem.isEmpty())
        return {DicomOutcome::Refused, problem};
    if (!m_isOpen)
        return {DicomOutcome::Away, u"PACS 서버에 연결되어 있지 않습니다.!!"_s};
    QCborMap answer;
    const qint64 patienceMs = m_patience.answerSeconds * 1000LL + StoreGraceMs + content.size() * 1000 / LeastSpeed;
    const LinkProcess::End end = m_link.Ask(request, answer, MostPlain, patienceMs, stop);
    DicomOutcome outcome = end == LinkProcess::End::Answered ? OutcomeOfAnswer(answer, Asked::Store, DicomOutcome::Cut)
                                                             : OutcomeOfEnd(end, {DicomOutcome::Cut, Broken});
    outcome.isOtherSet = isOtherSet && outcome.kind == DicomOutcome::Accepted;
    if (outcome.kind == DicomOutcome::Away || outcome.kind == DicomOutcome::Cut)
        Close();
    return outcome;
}

DicomOutcome DcmtkKit::Find(const QString& study, const QString& series, qint64 patienceMs, QCborMap& answer,
                            const std::stop_token& stop)
{
    if (!m_isOpen)
        return {DicomOutcome::Away, u"PACS 서버에 연결되어 있지 않습니다.!!"_s};
    QCborMap request = RequestOf(Request::Find);
    request[StudyKey] = study.toLatin1();
    if (!series.isEmpty())
        request[SeriesKey] = series.toLatin1();
    const LinkProcess::End end = m_link.Ask(request, answer, MostPlain, patienceMs, stop);
    DicomOutcome outcome = end == LinkProcess::End::Answered ? OutcomeOfAnswer(answer, Asked::Find, DicomOutcome::Away)
                                                             : OutcomeOfEnd(end, {DicomOutcome::Away, Broken});
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
        const QCborArray matches = answer.value(MatchesKey).toArray();
        for (const auto& each : matches) {
            const QCborArray match = each.toArray();
            const QString name = dicomtext::NameOf(match.at(2).toByteArray(), match.at(3).toByteArray());
            // A server may tell of more than it was asked for.
            if (match.at(0).toByteArray() == uid.toLatin1())
                matching.append({uid, QString::fromUtf8(match.at(1).toByteArray()).trimmed(), name});
        }
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
    const QCborArray matches = answer.value(MatchesKey).toArray();
    for (const auto& each : matches) {
        const QCborArray match = each.toArray();
        const QByteArray uid = match.at(0).toByteArray();
        if (!uid.isEmpty())
            found.append({QString::fromLatin1(uid), match.at(1).toByteArray().trimmed().toInt()});
    }
    return outcome;
}

void DcmtkKit::Close()
{
    if (!std::exchange(m_isOpen, false) || !m_link.IsLiving())
        return;
    QCborMap answer;
    m_link.Ask(RequestOf(Request::Close), answer, MostPlain, ClosingMs, {});
}

DicomOutcome DcmtkKit::MakeObject(const QByteArray& content, const DicomPicture& picture, QByteArray& object,
                                  const std::stop_token& stop)
{
    QCborMap request = RequestOf(Request::Make);
    DicomOutcome outcome;
    if (const QString problem = TakePicture(content, picture, request, outcome.isOtherSet); !problem.isEmpty())
        return {DicomOutcome::Refused, problem};
    QCborMap answer;
    const LinkProcess::End end = m_link.Ask(request, answer, MostMessage, MakingMs, stop);
    m_isOpen = m_isOpen && end == LinkProcess::End::Answered;
    if (end != LinkProcess::End::Answered)
        return OutcomeOfEnd(end, {DicomOutcome::Cut, u"DICOM 파일을 만들지 못했습니다.!!"_s});
    object = answer.value(ObjectKey).toByteArray();
    if (object.isEmpty())
        return OutcomeOfAnswer(answer, Asked::Store, DicomOutcome::Cut);
    outcome.kind = DicomOutcome::Accepted;
    return outcome;
}

DicomOutcome DcmtkKit::MakeDirectory(const QString& folder, const std::stop_token& stop)
{
    try {
        DeleteFile(folder + u"DICOMDIR"_s);
        QStringList objects;
        const QString below = folder + u"DICOM\\"_s;
        if (FolderExists(below)) {
            for (const FolderEntry& entry : Files().Entries(below)) {
                if (!entry.IsFolder && !entry.IsLink)
                    objects << u"DICOM/"_s + entry.Name;
            }
        }
        if (objects.isEmpty())
            return {DicomOutcome::Accepted};
        // The profile for compressed pictures; the visits have no time, which a directory can't do without.
        const DcmtkResult result =
            RunDcmtk(u"dcmmkdir"_s, QStringList{u"-Pdv"_s, u"+I"_s} + objects, folder, int(MakingMs), stop);
        if (result.succeeded)
            return {DicomOutcome::Accepted};
        const QString told = result.lines.isEmpty() ? QString() : result.lines.last();
        return {DicomOutcome::Away,
                result.fault.isEmpty() ? Reason(u"DICOMDIR을 만들지 못했습니다.!!"_s, told) : result.fault};
    } catch (const PlatformError& error) {
        return {DicomOutcome::Away, error.Text()};
    }
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
