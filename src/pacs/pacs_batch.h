#pragma once

#include "contracts/dicom.h"
#include "pacs/PacsQueue.h"

#include <QSet>

#include <atomic>
#include <functional>
#include <memory>
#include <stop_token>

/// Some pictures on their way to the server. They are brought there on a thread that may block.
namespace pacs {

struct Item
{
    PacsQueue::Entry entry;
    DicomPicture facts;
    /// Set when the picture has been deleted meanwhile.
    std::shared_ptr<std::atomic<bool>> isDropped = std::make_shared<std::atomic<bool>>(false);
};

struct Result
{
    DicomOutcome outcome;
    QString uid = {};        ///< Of a picture that the server has.
    bool isGone = false;     ///< There is no such picture any more.
    bool isAnswered = false; ///< By the server.
};

/// The picture may be taken another time.
bool MayPassLater(const DicomOutcome& outcome);

/// Hears what became of neighbours, the first of which has that place in the batch; on a thread of the batch's.
using Hear = std::function<void(qsizetype first, const QList<Result>& results)>;

/// Reads the pictures, makes objects of them and sends these, in their order; `sent` names those that the server has
/// already. `hear` is called in the order of the batch, and no more behind a picture that couldn't be brought on.
void SendBatch(DicomKit& kit, const DicomPeer& peer, const QList<Item>& items, const QSet<QString>& sent,
               const std::stop_token& stop, const Hear& hear);

} // namespace pacs
