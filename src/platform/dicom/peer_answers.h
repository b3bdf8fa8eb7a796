#pragma once

#include "contracts/dicom.h"

/// What a server's answers mean, as outcomes with their Korean sentences. Behind each sentence stands what tells a
/// technician more, such as the status and the server's own comment, in brackets.
namespace peeranswers {

/// Whether the server's word is on an object, and which, or on a question.
enum class Asked { Store, Report, Movie, Rejection, Find, Echo };

/// By the status of its answer, 16 bits.
DicomOutcome OfStatus(Asked asked, int status, const QByteArray& comment);
/// A rejected association, by its reason, whose upper byte is the source.
DicomOutcome OfRejection(bool isPassing, int reason);
/// The server takes no such object, question or call at all.
DicomOutcome OfNoContext(Asked asked);
/// The sentence with `detail` behind it: one line of at most 160 characters, without control characters.
QString Reason(const QString& sentence, const QString& detail);

} // namespace peeranswers
