#pragma once

#include "contracts/dicom.h"
#include "platform/dicom/link_messages.h"
#include "platform/dicom/LinkProcess.h"
#include "platform/dicom/peer_answers.h"

#include <QCborMap>

/// How long a server may keep the process of the connections waiting, in seconds.
struct DicomPatience
{
    int connectSeconds = 10;
    int agreeSeconds = 15;  ///< For an association, once connected.
    int answerSeconds = 60; ///< For an answer, and of any silence of the network.
};

/// What the process of the connections is asked, and what it has answered, as outcomes.
namespace linkoutcomes {

/// Times that a process may take for what no server has a part in, and beyond those that it gives a server, in ms.
inline constexpr qint64 MakingMs = 60'000;
inline constexpr qint64 GraceMs = 5'000;

QCborMap RequestOf(dicomlink::Request request);
/// Which server is to be asked, how long it may take, and how it is encrypted.
void PutPeer(QCborMap& request, const DicomPeer& peer, const DicomPatience& patience);
void PutTls(QCborMap& request, const DicomTls& tls);
/// Of what went wrong before there was an answer: `lost`, with a reason that tells more.
DicomOutcome OfEnd(LinkProcess::End end, const DicomOutcome& lost);
/// Of an answer; `broken` when the connection ended behind the question.
DicomOutcome OfAnswer(const QCborMap& answer, peeranswers::Asked asked, DicomOutcome::Kind broken);

DicomOutcome NotConnected();
/// A connection that ended in the middle.
QString BrokenText();

} // namespace linkoutcomes
