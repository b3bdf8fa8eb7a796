#pragma once

#include "contracts/dicom.h"
#include "platform/dicom/link_messages.h"
#include "platform/dicom/LinkProcess.h"
#include "platform/dicom/peer_answers.h"

#include <QCborMap>

/// What the process of the connections has answered, as outcomes.
namespace linkoutcomes {

/// Times that a process may take for what no server has a part in, and beyond those that it gives a server, in ms.
inline constexpr qint64 MakingMs = 60'000;
inline constexpr qint64 GraceMs = 5'000;

QCborMap RequestOf(dicomlink::Request request);
/// Of what went wrong before there was an answer: `lost`, with a reason that tells more.
DicomOutcome OfEnd(LinkProcess::End end, const DicomOutcome& lost);
/// Of an answer; `broken` when the connection ended behind the question.
DicomOutcome OfAnswer(const QCborMap& answer, peeranswers::Asked asked, DicomOutcome::Kind broken);

DicomOutcome NotConnected();
/// A connection that ended in the middle.
QString BrokenText();

} // namespace linkoutcomes
