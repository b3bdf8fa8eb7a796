#include "pacs/pacs_batch.h"

#include "contracts/dicom_uids.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/journal.h"
#include "frame/services.h"

using namespace Qt::StringLiterals;

namespace {

/// An object on its way.
struct Object
{
    qsizetype item = 0;
    QString path;
};

bool IsPassing(const DicomOutcome& outcome)
{
    return outcome.kind == DicomOutcome::Away || outcome.kind == DicomOutcome::Cut;
}

/// Makes the item's object, if there is something to be sent; gives its path then.
QString Prepare(DicomKit& kit, pacs::Item& item, pacs::Result& result, const QString& name, const QSet<QString>& sent,
                const std::stop_token& stop)
{
    const QString picture = item.entry.visit.PicturePath(item.entry.number);
    const FileKind kind = Files().KindOf(picture);
    // Without the folder there is no share to tell.
    if (*item.isDropped || (kind == FileKind::None && FolderExists(item.entry.visit.SectionFolder()))) {
        result.isGone = true;
        return {};
    }
    if (kind == FileKind::Other) {
        result.outcome = {DicomOutcome::Refused, u"그림 파일이 아닙니다.!!"_s};
        return {};
    }
    const QByteArray content = Files().ReadArchivedFile(picture);
    item.facts.number = item.entry.number;
    item.facts.takenAt = Files().LastModified(picture).toLocalTime();
    result.uid = InstanceUid(item.facts, content);
    if (sent.contains(result.uid)) {
        result.outcome = {DicomOutcome::Accepted};
        return {};
    }
    const QString path = kit.WorkFolder() + name;
    result.outcome = kit.MakeObject(content, item.facts, path, stop);
    return result.outcome.kind == DicomOutcome::Accepted ? path : QString();
}

void DeleteObjects(const QList<Object>& objects)
{
    for (const Object& object : objects) {
        try {
            DeleteFile(object.path);
        } catch (const PlatformError& error) {
            journal::NoteFault(error.Text());
        }
    }
}

} // namespace

QList<pacs::Result> pacs::SendBatch(DicomKit& kit, const DicomPeer& peer, QList<Item>& items, const QSet<QString>& sent,
                                    const std::stop_token& stop)
{
    QList<Result> results(items.size());
    QList<Object> objects;
    for (qsizetype at = 0; at < items.size(); ++at) {
        try {
            const QString path = Prepare(kit, items[at], results[at], u"%1.dcm"_s.arg(at + 1), sent, stop);
            if (!path.isEmpty())
                objects.append({at, path});
        } catch (const FilesAway& error) {
            results[at].outcome = {DicomOutcome::Away, error.Text()};
        } catch (const PlatformError& error) {
            results[at].outcome = {DicomOutcome::Cut, error.Text()};
        }
        // The order stays: what comes behind waits with it.
        if (!results[at].isGone && IsPassing(results[at].outcome))
            break;
    }
    QList<Object> wanted;
    QStringList paths;
    for (const Object& object : objects) {
        if (*items[object.item].isDropped) {
            results[object.item].isGone = true;
            continue;
        }
        wanted.append(object);
        paths << object.path;
    }
    const QList<DicomOutcome> outcomes = paths.isEmpty() ? QList<DicomOutcome>() : kit.Send(peer, paths, stop);
    for (qsizetype at = 0; at < wanted.size(); ++at) {
        Result& result = results[wanted[at].item];
        result.outcome = outcomes.value(at);
        result.isAnswered = !IsPassing(result.outcome);
    }
    DeleteObjects(objects);
    return results;
}
