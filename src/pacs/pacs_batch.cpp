#include "pacs/pacs_batch.h"

#include "contracts/dicom_uids.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/services.h"

#include <QScopeGuard>

using namespace Qt::StringLiterals;

namespace {

/// Reads the item's picture, if there is something to be sent; false when its result stands already.
bool Prepare(pacs::Item& item, pacs::Result& result, QByteArray& content, const QSet<QString>& sent)
{
    const QString picture = item.entry.visit.PicturePath(item.entry.number);
    const FileKind kind = Files().KindOf(picture);
    // Without the folder there is no share to tell.
    if (*item.isDropped || (kind == FileKind::None && FolderExists(item.entry.visit.SectionFolder()))) {
        result.isGone = true;
        return false;
    }
    if (kind == FileKind::Other) {
        result.outcome = {DicomOutcome::Refused, u"그림 파일이 아닙니다.!!"_s};
        return false;
    }
    content = Files().ReadArchivedFile(picture);
    item.facts.number = item.entry.number;
    item.facts.takenAt = Files().LastModified(picture).toLocalTime();
    result.uid = InstanceUid(item.facts, content);
    if (sent.contains(result.uid))
        result.outcome = {DicomOutcome::Accepted};
    return !sent.contains(result.uid);
}

/// The connection is opened for the first picture that needs it.
void Send(DicomKit& kit, const DicomPeer& peer, pacs::Item& item, pacs::Result& result, const QSet<QString>& sent,
          bool& isOpen, const std::stop_token& stop)
{
    try {
        QByteArray content;
        if (!Prepare(item, result, content, sent))
            return;
        if (!isOpen) {
            result.outcome = kit.Open(peer, stop);
            isOpen = result.outcome.kind == DicomOutcome::Accepted;
            if (!isOpen)
                return;
        }
        result.outcome = kit.Store(content, item.facts, stop);
        result.isAnswered = !pacs::MayPassLater(result.outcome);
    } catch (const FilesAway& error) {
        result.outcome = {DicomOutcome::Away, error.Text()};
    } catch (const PlatformError& error) {
        result.outcome = {DicomOutcome::Cut, error.Text()};
    }
}

} // namespace

bool pacs::MayPassLater(const DicomOutcome& outcome)
{
    return outcome.kind != DicomOutcome::Accepted && outcome.kind != DicomOutcome::Refused &&
           outcome.kind != DicomOutcome::KindRefused;
}

void pacs::SendBatch(DicomKit& kit, const DicomPeer& peer, const QList<Item>& items, const QSet<QString>& sent,
                     const std::stop_token& stop, const Hear& hear)
{
    const auto close = qScopeGuard([&kit] { kit.Close(); });
    bool isOpen = false;
    for (qsizetype at = 0; at < items.size(); ++at) {
        Item item = items[at];
        Result result;
        Send(kit, peer, item, result, sent, isOpen, stop);
        hear(at, {result});
        if (!result.isGone && MayPassLater(result.outcome))
            return;
    }
}
