#include "platform/dicom/DcmtkServices.h"

#include "identifiers/dicom_uids.h"
#include "platform/dicom/link_answers.h"
#include "platform/dicom/link_outcomes.h"
#include "platform/dicom/service_elements.h"

#include <QCborArray>

#include <array>

using namespace Qt::StringLiterals;
using namespace dicomlink;
using linkoutcomes::RequestOf;

namespace {

/// For all the answers to one question.
constexpr qint64 FindingMs = 60'000;
/// A report may come on the connection of the question.
constexpr int ReportSeconds = 3;
/// For the next report, and for a server that is slow in telling it.
constexpr int ListenSeconds = 15;
constexpr qint64 ListenGraceMs = 90'000;

constexpr int Duplicate = 0x0111;
constexpr int ProcessingFailure = 0x0110;

struct ServiceWords
{
    QString server;
    QString whatIsRefused;
};

const ServiceWords& WordsOf(DicomService service)
{
    static const std::array<ServiceWords, 3> words{{
        {u"워크리스트 서버"_s, u"워크리스트 서버가 조회를 받지 않습니다.!!"_s},
        {u"검사진행(MPPS) 서버"_s, u"검사진행(MPPS) 서버가 검사 진행을 받지 않습니다.!!"_s},
        {u"PACS 서버"_s, u"PACS 서버가 보관 확인(Storage Commitment)을 받지 않습니다.!!"_s},
    }};
    return words.at(static_cast<std::size_t>(service));
}

/// What the answers mean is the same for all; their sentences are those of the server for pictures.
DicomOutcome OfServer(DicomOutcome outcome, const ServiceWords& words)
{
    if (outcome.kind == DicomOutcome::KindRefused)
        outcome.reason = words.whatIsRefused;
    outcome.reason.replace(u"PACS 서버"_s, words.server);
    return outcome;
}

} // namespace

DicomOutcome DcmtkServices::Ask(const DicomPeer& peer, DicomService service, QCborMap request, QCborMap& answer,
                                qint64 patienceMs, const std::stop_token& stop)
{
    request[ServiceKey] = static_cast<int>(service);
    linkoutcomes::PutPeer(request, peer, m_patience);
    const ServiceWords& words = WordsOf(service);
    const qint64 openMs = (m_patience.connectSeconds + 2 * m_patience.agreeSeconds) * 1000LL + linkoutcomes::GraceMs;
    const LinkProcess::End end = m_link.Ask(request, answer, MostPlain, openMs + patienceMs, stop);
    const DicomOutcome outcome = end == LinkProcess::End::Answered
                                     ? linkoutcomes::OfAnswer(answer, peeranswers::Asked::Find, DicomOutcome::Broken)
                                     : linkoutcomes::OfEnd(end, {DicomOutcome::Broken, linkoutcomes::BrokenText()});
    return OfServer(outcome, words);
}

DicomOutcome DcmtkServices::Reach(const DicomPeer& peer, DicomService service, const std::stop_token& stop)
{
    QCborMap answer;
    return Ask(peer, service, RequestOf(Request::Reach), answer, m_patience.answerSeconds * 1000LL, stop);
}

DicomOutcome DcmtkServices::FindScheduled(const DicomPeer& peer, const QString& patientId, const QString& ymd,
                                          QList<DicomScheduled>& found, const std::stop_token& stop)
{
    found.clear();
    QCborMap request = RequestOf(Request::Scheduled);
    request[ElementsKey] = CborOf(serviceelements::Question(patientId, ymd, DicomCharacters::Unicode));
    QCborMap answer;
    DicomOutcome outcome = Ask(peer, DicomService::Worklist, request, answer, FindingMs, stop);
    if (outcome.kind != DicomOutcome::Accepted)
        return outcome;
    found = linkanswers::ScheduledOf(answer, patientId, ymd);
    return outcome;
}

DicomOutcome DcmtkServices::BeginStep(const DicomPeer& peer, const DicomPerformedStep& step, const DicomPicture& facts,
                                      const std::stop_token& stop)
{
    QCborMap request = RequestOf(Request::Create);
    request[UidKey] = step.uid.toLatin1();
    request[ElementsKey] = CborOf(serviceelements::BegunStep(step, facts, peer.callingAet));
    QCborMap answer;
    DicomOutcome outcome = Ask(peer, DicomService::Steps, request, answer, m_patience.answerSeconds * 1000LL, stop);
    // The identifier is nobody else's: an answer of before has got lost.
    if (outcome.status == Duplicate)
        outcome = {DicomOutcome::Accepted, {}, Duplicate};
    return outcome;
}

DicomOutcome DcmtkServices::EndStep(const DicomPeer& peer, const DicomPerformedStep& step, const DicomPicture& facts,
                                    const std::stop_token& stop)
{
    QCborMap request = RequestOf(Request::Set);
    request[UidKey] = step.uid.toLatin1();
    request[ElementsKey] = CborOf(serviceelements::EndedStep(step, facts));
    QCborMap answer;
    DicomOutcome outcome = Ask(peer, DicomService::Steps, request, answer, m_patience.answerSeconds * 1000LL, stop);
    // It may no longer be updated, having ended; not every server says so by the standard's number.
    const QByteArray comment = answer.value(CommentKey).toByteArray().toLower();
    const bool hasEnded = step.wasTold || comment.startsWith("a710") || comment.contains("no longer") ||
                          comment.contains("may not be updated");
    if (outcome.status == ProcessingFailure && hasEnded)
        outcome = {DicomOutcome::Accepted, {}, ProcessingFailure};
    return outcome;
}

DicomOutcome DcmtkServices::AskCommitment(const DicomPeer& peer, const QString& transaction,
                                          const QList<DicomReference>& objects, DicomCommitment& report,
                                          const std::stop_token& stop)
{
    QCborMap request = RequestOf(Request::Commit);
    request[WaitSecondsKey] = ReportSeconds;
    request[ElementsKey] = CborOf(serviceelements::CommitmentOf(transaction, objects));
    QCborMap answer;
    const qint64 patienceMs = (2 * m_patience.answerSeconds + ReportSeconds) * 1000LL;
    DicomOutcome outcome = Ask(peer, DicomService::Commitment, request, answer, patienceMs, stop);
    report = linkanswers::ReportOf(answer);
    return outcome;
}

bool DcmtkServices::Listen(int port, const DicomTls& tls, const std::stop_token& stop)
{
    QCborMap request = RequestOf(Request::Listen);
    request[PortKey] = port;
    linkoutcomes::PutTls(request, tls);
    QCborMap answer;
    return m_link.Ask(request, answer, MostPlain, linkoutcomes::GraceMs, stop) == LinkProcess::End::Answered &&
           IntegerOf(answer.value(FaultKey), -1) == static_cast<int>(Fault::None);
}

bool DcmtkServices::NextReport(bool isTaken, DicomCommitment& report, const std::stop_token& stop)
{
    QCborMap request = RequestOf(Request::Report);
    request[StatusKey] = isTaken ? 0 : ProcessingFailure;
    request[WaitSecondsKey] = ListenSeconds;
    QCborMap answer;
    const bool isThere = m_link.Ask(request, answer, MostPlain, ListenSeconds * 1000LL + ListenGraceMs, stop) ==
                             LinkProcess::End::Answered &&
                         IntegerOf(answer.value(FaultKey), -1) == static_cast<int>(Fault::None);
    report = linkanswers::ReportOf(answer);
    return isThere;
}
