#include "pacs/pacs_batch.h"

#include "contracts/dicom_uids.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/guard.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "frame/WorkThread.h"

using namespace Qt::StringLiterals;

namespace {

/// Few enough that the count on the screen moves, enough that the start of a connection doesn't count.
constexpr qsizetype GroupSize = 5;

/// An object on its way.
struct Object
{
    qsizetype item = 0;
    QString path;
};

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
        journal::NotingFaults([&] { DeleteFile(object.path); });
    }
}

/// Some neighbours of a batch, whose objects are sent over one connection.
struct Group
{
    QList<pacs::Item> items;
    QList<pacs::Result> results;
    QList<Object> objects;  ///< Of those that are to be sent.
    bool isPassing = false; ///< What comes behind waits with it, so that the order stays.
};

Group PrepareGroup(DicomKit& kit, const QList<pacs::Item>& items, qsizetype first, const QSet<QString>& sent,
                   const std::stop_token& stop)
{
    Group group{items, QList<pacs::Result>(items.size()), {}};
    for (qsizetype at = 0; at < items.size() && !group.isPassing; ++at) {
        pacs::Result& result = group.results[at];
        try {
            const QString name = u"%1.dcm"_s.arg(first + at + 1);
            const QString path = Prepare(kit, group.items[at], result, name, sent, stop);
            if (!path.isEmpty())
                group.objects.append({at, path});
        } catch (const FilesAway& error) {
            result.outcome = {DicomOutcome::Away, error.Text()};
        } catch (const PlatformError& error) {
            result.outcome = {DicomOutcome::Cut, error.Text()};
        }
        group.isPassing = !result.isGone && result.outcome.MayPassLater();
    }
    return group;
}

void SendGroup(DicomKit& kit, const DicomPeer& peer, Group& group, const std::stop_token& stop)
{
    QList<qsizetype> wanted;
    QStringList paths;
    for (const Object& object : group.objects) {
        group.results[object.item].isGone = *group.items[object.item].isDropped;
        if (group.results[object.item].isGone)
            continue;
        wanted << object.item;
        paths << object.path;
    }
    const QList<DicomOutcome> outcomes = paths.isEmpty() ? QList<DicomOutcome>() : kit.Send(peer, paths, stop);
    for (qsizetype at = 0; at < wanted.size(); ++at) {
        pacs::Result& result = group.results[wanted[at]];
        result.outcome = outcomes.value(at);
        result.isAnswered = !result.outcome.MayPassLater();
        group.isPassing |= result.outcome.MayPassLater();
    }
    DeleteObjects(group.objects);
}

} // namespace

void pacs::SendBatch(DicomKit& kit, const DicomPeer& peer, const QList<Item>& items, const QSet<QString>& sent,
                     const std::stop_token& stop, const Hear& hear)
{
    WorkThread sender;
    Group underWay;
    std::exception_ptr fault;
    qsizetype heard = 0;
    // The next objects are made while these are on their way.
    const auto settle = [&] {
        sender.AwaitIdle();
        guard::Rethrow(fault);
        if (underWay.items.isEmpty())
            return;
        hear(heard, underWay.results);
        heard += underWay.results.size();
    };
    for (qsizetype first = 0; first < items.size(); first += GroupSize) {
        Group next = PrepareGroup(kit, items.mid(first, GroupSize), first, sent, stop);
        settle();
        if (underWay.isPassing) {
            DeleteObjects(next.objects);
            return;
        }
        underWay = std::move(next);
        sender.Post([&] {
            try {
                SendGroup(kit, peer, underWay, stop);
            } catch (...) {
                fault = std::current_exception();
            }
        });
    }
    settle();
}
