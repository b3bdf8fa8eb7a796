#pragma once

#include "contracts/dicom.h"
#include "contracts/MovieEncoder.h"
#include "sender/Ledger.h"
#include "sender/pacs_contents.h"

#include <QHash>
#include <QSet>

#include <stop_token>

/// What goes to the server for one entry of the queue, whichever part: on the link's thread, over a connection that is
/// open.
namespace sending {

struct Task
{
    PacsEntry entry;
    DicomPicture facts;
    PacsContent content;
    Ledger::Siblings siblings;
    bool hasSound = false; ///< Of a movie.
};

/// What the server has of studies that it was asked for, by the study.
using Known = QHash<QString, QSet<QString>>;

struct Answer
{
    DicomOutcome outcome;
    Ledger::Stored stored = {};
    bool wantsOriginal = false;       ///< Nothing was sent: the picture's original is to go before it.
    bool isStillThere = false;        ///< Nothing was sent: what is to be rejected isn't deleted.
    bool isNew = false;               ///< The server has got something.
    QString kept = {};                ///< That object is the picture's again, and isn't to be rejected.
    QList<DicomReference> found = {}; ///< By a search, which ends with it.
};

Answer Send(DicomKit& kit, const Task& task, Known& known, const std::stop_token& stop);

/// A movie's facts as the queue's text, and back.
QString TextOf(const EncodedMovie& movie);
DicomMovie MovieOf(const QString& text);

} // namespace sending
