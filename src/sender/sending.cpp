#include "sender/sending.h"

#include "identifiers/dicom_uids.h"
#include "pacs/handed_files.h"
#include "pacs/parts.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

bool HasPicture(DicomKit& kit, const DicomPicture& facts, const QString& uid, sending::Known& known,
                const std::stop_token& stop)
{
    const QString study = StudyUid(facts);
    if (!known.contains(study)) {
        QList<DicomFound> found;
        kit.FindPictures(study, SeriesUid(facts), found, stop);
        QSet<QString>& uids = known[study];
        for (const DicomFound& each : std::as_const(found))
            uids.insert(each.uid);
    }
    return known[study].contains(uid);
}

/// The picture's identifier: another one than that of what has been rejected.
QString UidBeside(const QHash<QString, bool>& rejected, DicomPicture& facts, const QByteArray& bytes)
{
    for (facts.restorings = 0;; ++facts.restorings) {
        QString uid = InstanceUid(facts, bytes);
        if (!rejected.value(uid, false))
            return uid;
    }
}

std::optional<DicomReference> Among(const QList<DicomReference>& stored, const QString& uid)
{
    const auto found = std::ranges::find(stored, uid, &DicomReference::uid);
    return found == stored.end() ? std::nullopt : std::optional(*found);
}

/// Of one more marking than there have been.
int NextInstance(const PacsEntry& entry)
{
    const int first = InstanceOfMarking(entry.number, 1) - entry.number;
    return InstanceOfMarking(entry.number, entry.instance / first + 1);
}

sending::Answer SendPicture(DicomKit& kit, const sending::Task& task, sending::Known& known,
                            const std::stop_token& stop)
{
    const PacsEntry& entry = task.entry;
    const PacsContent& content = task.content;
    const QHash<QString, bool>& rejected = task.siblings.rejected;
    DicomPicture facts = task.facts;
    facts.number = entry.number;
    facts.takenAt = entry.takenAt.isValid() ? entry.takenAt : content.takenAt;
    const bool isMarked = entry.part.isEmpty() && !content.original.isEmpty() && content.original != content.bytes;
    if (isMarked) {
        DicomPicture original = facts;
        facts.original.uid = UidBeside(rejected, original, content.original);
        const auto stored = Among(task.siblings.stored, facts.original.uid);
        if (!stored && !task.siblings.isOriginalAside)
            return {.outcome = {}, .wantsOriginal = true};
        facts.original.classUid = stored ? stored->classUid : ClassUidOf(facts.study.kind.modality);
    }
    const QString uid = UidBeside(rejected, facts, content.bytes);
    sending::Answer answer{{DicomOutcome::Accepted}, {{{}, uid}, entry.instance, facts.restorings}};
    if (rejected.contains(uid))
        answer.kept = uid;
    if (const auto stored = Among(task.siblings.stored, uid)) {
        answer.stored.object = *stored;
        return answer;
    }
    answer.stored.original = facts.original.uid;
    if (isMarked)
        answer.stored.instance = facts.instance = NextInstance(entry);
    answer.stored.object.classUid = ClassUidOf(facts.study.kind.modality);
    answer.isNew = true;
    if (entry.isDoubtful && HasPicture(kit, facts, uid, known, stop))
        return answer;
    answer.outcome = kit.Store(content.bytes, facts, content.look, stop);
    if (!answer.outcome.stored.uid.isEmpty())
        answer.stored.object = answer.outcome.stored;
    return answer;
}

sending::Answer SendReport(DicomKit& kit, const sending::Task& task, const std::stop_token& stop)
{
    const PacsEntry& entry = task.entry;
    DicomReport report{entry.text, entry.takenAt, {}, entry.instance + 1};
    if (!entry.uid.isEmpty() && !task.siblings.rejected.contains(entry.uid))
        report.predecessor = {entry.classUid, entry.uid};
    const DicomOutcome outcome = kit.StoreReport(task.content.bytes, report, task.facts, stop);
    return {.outcome = outcome, .stored = {outcome.stored, report.instance, 0}, .isNew = true};
}

sending::Answer SendMovie(DicomKit& kit, const sending::Task& task, const std::stop_token& stop)
{
    const PacsEntry& entry = task.entry;
    DicomMovie movie = sending::MovieOf(entry.text);
    movie.startedAt = entry.takenAt;
    movie.hasSound = task.hasSound;
    movie.key = entry.id.toUtf8();
    // The number behind the visit's part of the name.
    movie.instance = std::max(1, parts::ValueOf(entry.part).section(u'.', 0, 0).right(3).toInt());
    const DicomOutcome outcome = kit.StoreMovie(handed_files::MoviePath(entry.id), movie, task.facts, stop);
    return {.outcome = outcome, .stored = {outcome.stored, movie.instance, 0}, .isNew = true};
}

sending::Answer SendRejection(DicomKit& kit, const sending::Task& task, const std::stop_token& stop)
{
    const PacsEntry& entry = task.entry;
    const QString uid = parts::ValueOf(entry.part);
    DicomPicture facts = task.facts;
    facts.number = entry.number;
    if (entry.number > 0 && task.content.kind == PacsContent::Read) {
        QHash<QString, bool> others = task.siblings.rejected;
        others.remove(uid);
        for (const QByteArray& bytes : {task.content.bytes, task.content.original}) {
            if (!bytes.isEmpty() && UidBeside(others, facts, bytes) == uid)
                return {.outcome = {}, .isStillThere = true};
        }
    }
    const DicomOutcome outcome = kit.StoreRejection({{entry.text, uid}}, entry.takenAt, task.facts, stop);
    return {.outcome = outcome, .stored = {outcome.stored, 0, 0}, .isNew = true};
}

sending::Answer Search(DicomKit& kit, const sending::Task& task, sending::Known& known, const std::stop_token& stop)
{
    DicomPicture facts = task.facts;
    facts.number = task.entry.number;
    sending::Answer answer{{DicomOutcome::Accepted}};
    for (const QByteArray& bytes : {task.content.bytes, task.content.original}) {
        if (bytes.isEmpty())
            continue;
        const QString uid = UidBeside(task.siblings.rejected, facts, bytes);
        if (HasPicture(kit, facts, uid, known, stop))
            answer.found.append({ClassUidOf(facts.study.kind.modality), uid});
    }
    return answer;
}

} // namespace

sending::Answer sending::Send(DicomKit& kit, const Task& task, Known& known, const std::stop_token& stop)
{
    const QString& part = task.entry.part;
    if (parts::IsReport(part))
        return SendReport(kit, task, stop);
    if (parts::IsMovie(part))
        return SendMovie(kit, task, stop);
    if (parts::IsSearch(part))
        return Search(kit, task, known, stop);
    if (parts::IsRejection(part))
        return SendRejection(kit, task, stop);
    return SendPicture(kit, task, known, stop);
}

QString sending::TextOf(const EncodedMovie& movie)
{
    return u"%1 %2 %3 %4"_s.arg(movie.columns).arg(movie.rows).arg(movie.frames).arg(movie.frameMs, 0, 'f', 6);
}

DicomMovie sending::MovieOf(const QString& text)
{
    DicomMovie movie;
    movie.columns = text.section(u' ', 0, 0).toInt();
    movie.rows = text.section(u' ', 1, 1).toInt();
    movie.frames = text.section(u' ', 2, 2).toInt();
    movie.frameMs = text.section(u' ', 3, 3).toDouble();
    return movie;
}
