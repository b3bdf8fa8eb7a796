#include "platform/dicom/link_outcomes.h"

using namespace Qt::StringLiterals;
using namespace dicomlink;
using peeranswers::Asked;
using peeranswers::Reason;

namespace {

const QString Silent = u"PACS 서버가 응답하지 않습니다.!!"_s;

} // namespace

QCborMap linkoutcomes::RequestOf(Request request)
{
    QCborMap map;
    map[RequestKey] = static_cast<int>(request);
    return map;
}

void linkoutcomes::PutPeer(QCborMap& request, const DicomPeer& peer, const DicomPatience& patience)
{
    request[HostKey] = peer.host;
    request[PortKey] = peer.port;
    request[CalledKey] = peer.calledAet.toUtf8();
    request[CallingKey] = peer.callingAet.toUtf8();
    request[ConnectSecondsKey] = patience.connectSeconds;
    request[AgreeSecondsKey] = patience.agreeSeconds;
    request[AnswerSecondsKey] = patience.answerSeconds;
    PutTls(request, peer.tls);
}

void linkoutcomes::PutTls(QCborMap& request, const DicomTls& tls)
{
    request[AuthorityKey] = tls.authority;
    request[CertificateKey] = tls.certificate;
    request[PrivateKeyKey] = tls.key;
}

DicomOutcome linkoutcomes::NotConnected()
{
    return {DicomOutcome::Away, u"PACS 서버에 연결되어 있지 않습니다.!!"_s};
}

QString linkoutcomes::BrokenText()
{
    return u"PACS 서버와의 연결이 도중에 끊겼습니다.!!"_s;
}

DicomOutcome linkoutcomes::OfEnd(LinkProcess::End end, const DicomOutcome& lost)
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

DicomOutcome linkoutcomes::OfAnswer(const QCborMap& answer, Asked asked, DicomOutcome::Kind broken)
{
    const int status = static_cast<int>(IntegerOf(answer.value(StatusKey), DicomOutcome::NoStatus));
    const QByteArray comment = answer.value(CommentKey).toByteArray();
    const QString told = QString::fromUtf8(comment);
    const bool isSilent = answer.value(SilentKey).toBool();
    switch (static_cast<Fault>(IntegerOf(answer.value(FaultKey), -1))) {
    case Fault::None:
        return peeranswers::OfStatus(asked, status, comment);
    case Fault::Rejected:
        return peeranswers::OfRejection(false, status);
    case Fault::Busy:
        return peeranswers::OfRejection(true, status);
    case Fault::NoContext:
        return peeranswers::OfNoContext(asked);
    case Fault::Broken:
        return {broken, Reason(isSilent ? Silent : BrokenText(), told)};
    case Fault::Gone:
        return {DicomOutcome::Away, Reason(BrokenText(), told)};
    case Fault::Untrusted:
        return {DicomOutcome::Away, Reason(u"PACS 서버와 암호화된 연결을 맺지 못합니다(인증서).!!"_s, told)};
    case Fault::NoKeys:
        return {DicomOutcome::Away, Reason(u"암호화(TLS) 파일을 읽을 수 없습니다.!!"_s, told)};
    case Fault::Unreachable:
        return {DicomOutcome::Away, Reason(isSilent ? Silent : u"PACS 서버에 연결할 수 없습니다.!!"_s, told)};
    default:
        return {DicomOutcome::Refused, Reason(u"DICOM 파일을 만들지 못했습니다.!!"_s, told)};
    }
}
