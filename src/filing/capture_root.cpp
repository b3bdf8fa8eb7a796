#include "filing/capture_root.h"

#include "contracts/files.h"
#include "filing/capture_folders.h"
#include "filing/NumberClaim.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "frame/WorkThread.h"
#include "records/capture_index.h"
#include "records/Statement.h"
#include "records/tables.h"
#include "visit/Visit.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QUuid>

#include <algorithm>
#include <mutex>

using namespace Qt::StringLiterals;

namespace {

/// So many pictures of the newest year are looked for before a root counts as one without them.
constexpr int MostLookedFor = 100;
const QString Table = u"caproot"_s;

const QString NotMounted = u"캡쳐 폴더의 공유가 연결되어 있지 않습니다. 그림은 이 컴퓨터에 보관됩니다."_s;
const QString MarkGone = u"캡쳐 폴더에 표시가 없습니다. 공유를 확인하세요. 그림은 이 컴퓨터에 보관됩니다."_s;
const QString OtherMark = u"캡쳐 폴더가 앞서 쓰던 것이 아닙니다. 그림은 이 컴퓨터에 보관됩니다."_s;
const QString NoPictures = u"기록된 그림이 캡쳐 폴더에 없습니다. 찍는 그림은 이 컴퓨터에 보관됩니다."_s;

struct Gate
{
    std::mutex mutex;
    QString root;    ///< Empty when none is watched.
    QString mark;    ///< The remembered one; empty when there is none.
    QString refusal; ///< Empty when it isn't refused.
    QByteArray seen; ///< Version of the mark's file when it was found to be that one.
    std::function<void()> listener;
};

Gate& TheGate()
{
    static auto& gate = *new Gate;
    return gate;
}

QString MarkPath(const QString& root)
{
    return root + QString::fromUtf16(capture_root::MarkName);
}

QString MemoryPath()
{
    return LocalFolder() + u"CaptureRoot.json"_s;
}

/// Identities by the root's path.
QJsonObject Memory()
{
    QJsonObject memory;
    if (FileExists(MemoryPath()))
        journal::NotingFaults([&memory] { memory = QJsonDocument::fromJson(Files().ReadFile(MemoryPath())).object(); });
    return memory;
}

void Remember(const QString& root, const QString& mark)
{
    QJsonObject memory = Memory();
    if (memory.value(root).toString() == mark)
        return;
    memory.insert(root, mark);
    journal::NotingFaults([&] { Files().WritePrivateFile(MemoryPath(), QJsonDocument(memory).toJson()); });
}

/// Makes the mark, or finds the one that another station was quicker to make.
QString MakeMark(const QString& root)
{
    const QString mark = QUuid::createUuid().toString(QUuid::Id128);
    const QJsonObject content{{u"id"_s, mark}};
    return Files().CreateExclusively(MarkPath(root), QJsonDocument(content).toJson()) ? mark
                                                                                      : capture_root::MarkOf(root);
}

/// There are rows, and of those that are looked for none has its file.
bool LacksPictures(const QString& root)
{
    QStringList years = StoredYears();
    if (years.isEmpty())
        return false;
    const QString year = *std::ranges::max_element(years);
    const QList<PictureKey> keys = StoredPictures(year, std::nullopt, MostLookedFor);
    return std::ranges::none_of(keys, [&](const PictureKey& key) {
        try {
            const Visit visit{key.chart, {}, key.ymd, key.etc, YearFolder(root, key.ymd), {}};
            return NumberClaim::IsPictureThere(visit, key.number);
        } catch (const FilesAway&) {
            throw;
        } catch (const PlatformError&) {
            return false;
        }
    });
}

/// Why a root without mark, of which nothing is remembered, gets none; empty when it gets one, nothing when there is no
/// telling.
std::optional<QString> ReasonForNoMark(const QString& root)
{
    if (Files().IsMissingMount(root))
        return NotMounted;
    try {
        return LacksPictures(root) ? NoPictures : QString();
    } catch (const FilesAway&) {
        throw;
    } catch (const PlatformError& error) {
        journal::NoteFault(error.Text());
        return std::nullopt;
    }
}

void TellListener()
{
    std::function<void()> listener;
    {
        const std::lock_guard lock(TheGate().mutex);
        listener = TheGate().listener;
    }
    if (listener)
        listener();
}

void setRefusal(const QString& refusal)
{
    {
        const std::lock_guard lock(TheGate().mutex);
        if (TheGate().refusal == refusal)
            return;
        TheGate().refusal = refusal;
    }
    journal::Note(refusal.isEmpty() ? Journal::Information : Journal::Warning,
                  refusal.isEmpty() ? u"캡쳐 폴더를 다시 씀"_s : refusal);
    PostToScreen(TellListener);
}

void setWatched(const QString& root, const QString& mark)
{
    const std::lock_guard lock(TheGate().mutex);
    TheGate().root = root;
    TheGate().mark = mark;
    TheGate().refusal.clear();
    TheGate().seen.clear();
}

void Take(const QString& root, const QString& mark)
{
    {
        const std::lock_guard lock(TheGate().mutex);
        TheGate().mark = mark;
    }
    Remember(root, mark);
    setRefusal({});
}

/// A root without a name has no mark; nor may its null text be looked up, which the toolkit of Debian 13 doesn't live
/// through.
QString RememberedOf(const QString& root)
{
    return root.isEmpty() ? QString() : Memory().value(root).toString();
}

} // namespace

QString capture_root::MarkOf(const QString& root)
{
    if (!FileExists(MarkPath(root)))
        return {};
    const QByteArray content = Files().ReadArchivedFile(MarkPath(root));
    return QJsonDocument::fromJson(content).object().value(u"id"_s).toString();
}

QString capture_root::StoredMark()
{
    if (!EnsureTable(Connection, QString(), Table, false))
        return {};
    const auto rows = OpenRows(Statement(u" SELECT caproot_id FROM caproot "));
    return HasRow(*rows) ? FieldText(*rows, 0) : QString();
}

void capture_root::StoreMark(const QString& mark)
{
    EnsureTable(Connection, QString(), Table, true);
    Execute(Statement(u" REPLACE INTO caproot VALUES ( 1").Then(u", '", mark).Piece(u"') "));
}

void capture_root::Watch(const QString& root)
{
    setWatched(root, RememberedOf(root));
}

void capture_root::Judge(const QString& root)
{
    QString remembered = RememberedOf(root);
    try {
        // The clinic's word counts before the station's own.
        if (const QString stored = StoredMark(); !stored.isEmpty())
            remembered = stored;
    } catch (const PlatformError& error) {
        journal::NoteFault(error.Text());
    }
    setWatched(root, remembered);
    const QString mark = MarkOf(root);
    if (!mark.isEmpty() && (remembered.isEmpty() || remembered == mark)) {
        Take(root, mark);
        return;
    }
    if (!remembered.isEmpty()) {
        const bool isMissing = mark.isEmpty() && Files().IsMissingMount(root);
        setRefusal(isMissing ? NotMounted : mark.isEmpty() ? MarkGone : OtherMark);
        return;
    }
    const std::optional<QString> reason = ReasonForNoMark(root);
    if (!reason)
        return; // The next start makes it.
    if (!reason->isEmpty()) {
        setRefusal(*reason);
        return;
    }
    MakeFolder(root);
    Take(root, MakeMark(root));
}

void capture_root::Check(const QString& folder)
{
    QString root;
    QString remembered;
    QString refusal;
    QByteArray seen;
    {
        const std::lock_guard lock(TheGate().mutex);
        root = TheGate().root;
        remembered = TheGate().mark;
        refusal = TheGate().refusal;
        seen = TheGate().seen;
    }
    // Pictures of an earlier setup lie elsewhere.
    if (root.isEmpty() || !folder.startsWith(root) || (remembered.isEmpty() && refusal.isEmpty()))
        return;
    const QByteArray version = Files().VersionOf(MarkPath(root));
    if (refusal.isEmpty() && !version.isEmpty() && version == seen)
        return;
    QString mark;
    try {
        mark = MarkOf(root);
    } catch (const FilesAway&) {
        throw;
    } catch (const PlatformError&) {
        return; // There is no telling; whatever is done there meets the same fault.
    }
    if (!mark.isEmpty() && (remembered.isEmpty() || remembered == mark)) {
        {
            const std::lock_guard lock(TheGate().mutex);
            TheGate().seen = version;
        }
        if (!refusal.isEmpty())
            Take(root, mark);
        return;
    }
    // A share whose server has gone has no root at all.
    if (refusal.isEmpty() && !FolderExists(root))
        return;
    if (refusal.isEmpty() || !remembered.isEmpty())
        setRefusal(mark.isEmpty() ? MarkGone : OtherMark);
    throw Refused(Refusal());
}

bool capture_root::IsGone(const QString& yearFolder, const QString& path)
{
    Check(yearFolder);
    if (FileExists(path))
        return false;
    Check(yearFolder);
    if (!FolderExists(RootOfYear(yearFolder)))
        throw FilesAway(u"저장 폴더가 응답하지 않습니다.!!"_s);
    return true;
}

QString capture_root::Refusal()
{
    const std::lock_guard lock(TheGate().mutex);
    return TheGate().refusal;
}

void capture_root::Accept()
{
    QString root;
    {
        const std::lock_guard lock(TheGate().mutex);
        root = TheGate().root;
    }
    MakeFolder(root);
    QString mark = MarkOf(root);
    if (mark.isEmpty())
        mark = MakeMark(root);
    if (EnsureTable(Connection, QString(), Table, false))
        StoreMark(mark);
    Take(root, mark);
}

void capture_root::setListener(std::function<void()> listener)
{
    const std::lock_guard lock(TheGate().mutex);
    TheGate().listener = std::move(listener);
}
