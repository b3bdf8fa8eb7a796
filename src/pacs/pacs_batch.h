#pragma once

#include "contracts/dicom.h"
#include "pacs/PacsQueue.h"

#include <QSet>

#include <atomic>
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

/// Reads the pictures, makes objects of them and sends these, in their order; `sent` names those that the server has
/// already. Behind one that couldn't be brought on, the others are left as `Away`.
QList<Result> SendBatch(DicomKit& kit, const DicomPeer& peer, QList<Item>& items, const QSet<QString>& sent,
                        const std::stop_token& stop);

} // namespace pacs
