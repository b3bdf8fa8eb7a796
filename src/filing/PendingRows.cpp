#include "filing/PendingRows.h"

#include "contracts/PlatformError.h"
#include "filing/visit_json.h"
#include "frame/journal.h"
#include "frame/WorkThread.h"
#include "text/text_routines.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QString ListName = u"PendingRows"_s;

QJsonObject ToJson(const PendingRows::Entry& entry)
{
    QJsonObject json = ToJson(entry.visit);
    json.insert(u"number"_s, entry.number);
    json.insert(u"note"_s, entry.note);
    json.insert(u"refused"_s, entry.refused);
    json.insert(u"spooled"_s, entry.spooled);
    return json;
}

PendingRows::Entry FromJson(const QJsonObject& json)
{
    return {VisitFromJson(json),
            json.value(u"number"_s).toInt(),
            json.value(u"note"_s).toString(),
            json.value(u"refused"_s).toBool(),
            false,
            false,
            json.value(u"spooled"_s).toString()};
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
    for (const ProcessList::Found& found : ProcessList::In(folder, ListName))
        lists.append({found.path, found.holder, found.foreignOwner, found.isReadable, EntriesOf(found.document)});
    return lists;
}

PendingRows::PendingRows(WorkThread& writer, std::function<void(const QString&)> fault)
    : m_writer(writer), m_fault(std::move(fault)), m_list(ListName)
{
    TakeOver();
}

PendingRows::~PendingRows()
{
    End();
}

void PendingRows::End()
{
    if (m_list.HasEnded())
        return;
    m_folders.clear();
    const bool isEmpty = m_entries.isEmpty() && m_leftFolders.isEmpty();
    m_list.End(isEmpty ? std::nullopt : std::optional(Content()));
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
    const bool isTaken = m_list.TakeOver(
        [this](const QJsonDocument& document, bool isOwn) { ReadList(document, isOwn ? m_folders : m_leftFolders); });
    if (!m_entries.isEmpty())
        journal::Note(Journal::Warning, u"앞 실행이 남긴 기록 대기 %1건을 이어받음"_s.arg(m_entries.size()));
    if (!isTaken)
        return;
    try {
        ProcessList::Write(m_list.Path(), Content());
        m_list.RemoveTaken();
    } catch (const PlatformError& error) {
        journal::NoteFault(error.Text());
    }
}

void PendingRows::ReadList(const QJsonDocument& document, QList<Folder>& folders)
{
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
    m_writer.Post([path = m_list.Path(), content = Content(), told = m_fault] {
        try {
            ProcessList::Write(path, content);
        } catch (const PlatformError& error) {
            journal::NoteFault(error.Text());
            PostToScreen([told, text = u"기록을 기다리는 캡쳐의 목록을 저장하지 못했습니다.!!\r\n%1"_s.arg(
                                    error.Text())] { told(text); });
        }
    });
}
