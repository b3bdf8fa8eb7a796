#include "filing/PendingRows.h"

#include "contracts/desktop.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "frame/WorkThread.h"
#include "text/text_routines.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr char16_t Prefix[] = u"PendingRows-";
constexpr char16_t ListEnding[] = u".json";
constexpr char16_t LockEnding[] = u".lock";
constexpr char16_t BrokenEnding[] = u".broken";
/// The one list of all stations of an earlier release.
constexpr char16_t CommonList[] = u"PendingRows.json";

QString ListFolder()
{
    return UseService<Desktop>().ProgramFolder() + u'\\';
}

QString PathOf(const QString& mark, QStringView ending)
{
    return ListFolder() + QString::fromUtf16(Prefix) + mark + ending.toString();
}

QString OwnList()
{
    return PathOf(Files().ProcessMark(), ListEnding);
}

void IgnoringFaults(const std::function<void()>& step)
{
    try {
        step();
    } catch (const PlatformError& error) {
        journal::NoteFault(error.Text());
    }
}

/// Throws PlatformError when it isn't written.
void WriteList(const QString& path, const QByteArray& content)
{
    try {
        Files().WritePrivateFile(path, content);
    } catch (const StoredWithFault& error) {
        journal::NoteFault(error.Text());
    }
}

QJsonObject ToJson(const PendingRows::Entry& entry)
{
    const Visit& visit = entry.visit;
    return {{u"chart"_s, visit.chart},
            {u"yuhyung"_s, visit.yuhyung},
            {u"ymd"_s, visit.ymd},
            {u"etc"_s, visit.etc},
            {u"captureDir"_s, visit.captureDir},
            {u"imageExt"_s, visit.imageExt},
            {u"number"_s, entry.number},
            {u"note"_s, entry.note},
            {u"refused"_s, entry.refused},
            {u"spooled"_s, entry.spooled}};
}

PendingRows::Entry FromJson(const QJsonObject& json)
{
    const auto text = [&json](const QString& key) { return json.value(key).toString(); };
    return {{text(u"chart"_s), text(u"yuhyung"_s), text(u"ymd"_s), text(u"etc"_s), text(u"captureDir"_s),
             text(u"imageExt"_s)},
            json.value(u"number"_s).toInt(),
            text(u"note"_s),
            json.value(u"refused"_s).toBool(),
            false,
            false,
            text(u"spooled"_s)};
}

/// Throws PlatformError when it can't be read.
QJsonDocument ReadDocument(const QString& path)
{
    QJsonParseError error = {};
    QJsonDocument document = QJsonDocument::fromJson(Files().ReadFile(path), &error);
    if (error.error != QJsonParseError::NoError)
        throw PlatformError(error.errorString());
    return document;
}

QList<PendingRows::Entry> EntriesOf(const QJsonDocument& document)
{
    QList<PendingRows::Entry> entries;
    const QJsonArray values = document.isArray() ? document.array() : document.object().value(u"entries"_s).toArray();
    for (const auto& value : values)
        entries.append(FromJson(value.toObject()));
    return entries;
}

auto IsOf(const Visit& visit, int number)
{
    return [&visit, number](const PendingRows::Entry& entry) { return entry.number == number && entry.visit == visit; };
}

} // namespace

QList<PendingRows::List> PendingRows::ListsIn(const QString& folder)
{
    QList<List> lists;
    const QString plain = QString::fromUtf16(CommonList).chopped(QStringView(ListEnding).size());
    for (const QString& name : Files().FilesStartingWith(folder, plain)) {
        const bool isBroken = name.endsWith(QStringView(BrokenEnding));
        if (!isBroken && !name.endsWith(QStringView(ListEnding)))
            continue;
        List list{folder + name, Holder::Dead, Files().ForeignOwner(folder + name), false, {}};
        const qsizetype prefix = QStringView(Prefix).size();
        if (!isBroken && name.startsWith(QStringView(Prefix)))
            list.holder = Files().HolderOf(name.mid(prefix, name.size() - prefix - QStringView(ListEnding).size()));
        try {
            list.entries = EntriesOf(ReadDocument(list.path));
            list.isReadable = true;
        } catch (const PlatformError& error) {
            qWarning("%s: %s", qPrintable(NativePath(list.path)), error.what());
        }
        lists.append(list);
    }
    return lists;
}

PendingRows::PendingRows(WorkThread& writer, std::function<void(const QString&)> fault)
    : m_writer(writer), m_fault(std::move(fault))
{
    IgnoringFaults([this] { m_lock = Files().Lock(PathOf(Files().ProcessMark(), LockEnding)); });
    if (FileExists(OwnList()))
        ReadList(OwnList(), m_folders);
    TakeOver();
}

PendingRows::~PendingRows()
{
    End();
}

void PendingRows::End()
{
    if (m_lock == nullptr)
        return;
    m_folders.clear();
    IgnoringFaults([this] {
        if (m_entries.isEmpty() && m_leftFolders.isEmpty())
            DeleteFile(OwnList());
        else
            StoreNow();
        DeleteFile(PathOf(Files().ProcessMark(), LockEnding));
    });
    m_lock.reset();
}

void PendingRows::LeftFoldersAreSettled()
{
    if (m_leftFolders.isEmpty())
        return;
    m_leftFolders.clear();
    Store();
}

void PendingRows::TakeOver()
{
    QStringList taken;
    const QStringList names = Files().FilesStartingWith(ListFolder(), QString::fromUtf16(Prefix));
    for (const QString& name : names) {
        const qsizetype prefix = QStringView(Prefix).size();
        const bool isList = name.endsWith(QStringView(ListEnding));
        const QString mark = name.mid(prefix, name.size() - prefix - QStringView(ListEnding).size());
        const Holder holder = Files().HolderOf(mark);
        if ((!isList && !name.endsWith(QStringView(LockEnding))) || holder == Holder::Self ||
            holder == Holder::Elsewhere)
            continue;
        const QString owner = Files().ForeignOwner(ListFolder() + name);
        if (owner.isEmpty() && TakeOverList(mark))
            taken << mark;
        else if (isList && !owner.isEmpty() && holder == Holder::Dead && !m_foreignOwners.contains(owner))
            m_foreignOwners << owner;
    }
    const QString common = ListFolder() + QString::fromUtf16(CommonList);
    if (FileExists(common))
        ReadList(common, m_leftFolders);
    if (!m_entries.isEmpty())
        journal::Note(Journal::Warning, u"앞 실행이 남긴 기록 대기 %1건을 이어받음"_s.arg(m_entries.size()));
    if (!taken.isEmpty() || FileExists(common)) {
        IgnoringFaults([&] {
            StoreNow();
            for (const QString& mark : taken) {
                DeleteFile(PathOf(mark, ListEnding));
                DeleteFile(PathOf(mark, LockEnding));
            }
            DeleteFile(common);
            m_foreignLocks.clear();
        });
    }
}

bool PendingRows::TakeOverList(const QString& mark)
{
    bool taken = false;
    IgnoringFaults([&] {
        auto lock = Files().Lock(PathOf(mark, LockEnding));
        if (lock == nullptr)
            return;
        const QString list = PathOf(mark, ListEnding);
        taken = !FileExists(list) || ReadList(list, m_leftFolders);
        m_foreignLocks.push_back(std::move(lock));
    });
    return taken;
}

bool PendingRows::ReadList(const QString& path, QList<Folder>& folders)
{
    try {
        const QJsonDocument document = ReadDocument(path);
        for (const Entry& entry : EntriesOf(document)) {
            m_entries.append(entry);
            m_entries.last().waits = true;
            // Numbers there are a process's own.
            if (!m_entries.last().spooled.isEmpty())
                m_entries.last().number = --m_lastSpooled;
        }
        const QJsonArray claimed = document.object().value(u"folders"_s).toArray();
        for (const auto& value : claimed)
            folders.append({value[u"captureDir"_s].toString(), value[u"etc"_s].toString()});
        return true;
    } catch (const PlatformError& error) {
        journal::NoteFault(u"%1: %2"_s.arg(error.Text(), path));
        IgnoringFaults([&path] { Files().RenameFile(path, path + QString::fromUtf16(BrokenEnding)); });
        return false;
    }
}

bool PendingRows::Holds(const Visit& visit, int number) const
{
    return std::ranges::any_of(m_entries, IsOf(visit, number));
}

QList<int> PendingRows::NumbersOf(const Visit& visit) const
{
    QList<int> numbers;
    for (const Entry& entry : m_entries) {
        if (entry.visit == visit && entry.number > 0)
            numbers.append(entry.number);
    }
    return numbers;
}

QList<PendingRows::Entry> PendingRows::Spooled() const
{
    QList<Entry> spooled = m_entries;
    spooled.removeIf([](const Entry& entry) { return entry.number > 0; });
    return spooled;
}

QList<int> PendingRows::SpooledOf(const Visit& visit) const
{
    QList<int> numbers;
    for (const Entry& entry : m_entries) {
        if (entry.visit == visit && entry.number < 0)
            numbers.append(entry.number);
    }
    return numbers;
}

int PendingRows::Spool(const Visit& visit, const QString& picture, const QString& note)
{
    Entry entry{visit, --m_lastSpooled, note};
    entry.waits = true;
    entry.spooled = picture;
    m_entries.append(entry);
    Store();
    return entry.number;
}

void PendingRows::File(const Visit& visit, int spooled, int number)
{
    if (Entry* entry = Find(visit, spooled)) {
        entry->number = number;
        entry->spooled.clear();
    }
    Store();
}

int PendingRows::Waiting() const
{
    return static_cast<int>(
        std::ranges::count_if(m_entries, [](const Entry& entry) { return !entry.refused && entry.number > 0; }));
}

QList<std::pair<Visit, int>> PendingRows::All() const
{
    QList<std::pair<Visit, int>> all;
    for (const Entry& entry : m_entries) {
        if (entry.number > 0)
            all.append({entry.visit, entry.number});
    }
    return all;
}

PendingRows::Entry* PendingRows::Find(const Visit& visit, int number)
{
    const auto found = std::ranges::find_if(m_entries, IsOf(visit, number));
    return found != m_entries.end() ? &*found : nullptr;
}

void PendingRows::Remove(const Visit& visit, int number)
{
    const Entry* entry = Find(visit, number);
    const bool isListed = entry != nullptr && entry->waits;
    m_entries.removeIf(IsOf(visit, number));
    if (isListed)
        Store();
}

QList<std::pair<Visit, int>> PendingRows::LetAllWait()
{
    QList<std::pair<Visit, int>> fresh;
    for (Entry& entry : m_entries) {
        if (!std::exchange(entry.waits, true))
            fresh.append({entry.visit, entry.number});
    }
    if (!fresh.isEmpty())
        Store();
    return fresh;
}

void PendingRows::Refuse(const Visit& visit, int number)
{
    if (Entry* entry = Find(visit, number))
        entry->waits = entry->refused = true;
    Store();
}

QString PendingRows::RefusalText(const Entry& entry, const QString& reason)
{
    return u"캡쳐 %1번(차트 %2, %3, %4)의 기록을 데이터베이스가 거부하여 따로 보관합니다.!!\r\n%5"_s.arg(
        NumberText(entry.number), entry.visit.chart, LayIntoMask(entry.visit.ymd, u"0000-00-00"), entry.visit.etc,
        reason);
}

void PendingRows::ClaimsIn(const Folder& folder)
{
    if (m_folders.contains(folder))
        return;
    m_folders.append(folder);
    Store();
}

QByteArray PendingRows::Content() const
{
    QJsonArray folders;
    for (const QList<Folder>& some : {m_folders, m_leftFolders}) {
        for (const Folder& folder : some)
            folders.append(QJsonObject{{u"captureDir"_s, folder.captureDir}, {u"etc"_s, folder.etc}});
    }
    QJsonArray entries;
    for (const Entry& entry : m_entries)
        entries.append(ToJson(entry));
    return QJsonDocument(QJsonObject{{u"folders"_s, folders}, {u"entries"_s, entries}}).toJson();
}

void PendingRows::Store()
{
    m_writer.Post([path = OwnList(), content = Content(), told = m_fault] {
        try {
            WriteList(path, content);
        } catch (const PlatformError& error) {
            journal::NoteFault(error.Text());
            PostToScreen([told, text = u"기록을 기다리는 캡쳐의 목록을 저장하지 못했습니다.!!\r\n%1"_s.arg(
                                    error.Text())] { told(text); });
        }
    });
}

void PendingRows::StoreNow() const
{
    WriteList(OwnList(), Content());
}
