#include "pacs/PacsQueue.h"

#include "filing/visit_json.h"
#include "frame/journal.h"
#include "frame/WorkThread.h"

#include <QJsonArray>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QString ListName = u"Pacs"_s;
/// What a day sees at one station, with room.
constexpr qsizetype MostMarks = 500;

QJsonObject EntryJson(const PacsQueue::Entry& entry)
{
    QJsonObject json = ToJson(entry.visit);
    json.insert(u"number"_s, entry.number);
    json.insert(u"doctor"_s, entry.doctor);
    json.insert(u"refusal"_s, entry.refusal);
    json.insert(u"cuts"_s, entry.cuts);
    return json;
}

QList<PacsQueue::Entry> EntriesOf(const QJsonDocument& document)
{
    QList<PacsQueue::Entry> entries;
    const QJsonArray values = document.object().value(u"entries"_s).toArray();
    for (const auto& value : values) {
        const QJsonObject json = value.toObject();
        entries.append({VisitFromJson(json), json.value(u"number"_s).toInt(), json.value(u"doctor"_s).toString(),
                        json.value(u"refusal"_s).toString(), json.value(u"cuts"_s).toInt()});
    }
    return entries;
}

} // namespace

QList<PacsQueue::List> PacsQueue::ListsIn(const QString& folder)
{
    QList<List> lists;
    for (const ProcessList::Found& found : ProcessList::In(folder, ListName))
        lists.append({found.path, found.holder, found.foreignOwner, found.isReadable, EntriesOf(found.document),
                      found.document.object().value(u"away"_s).toString()});
    return lists;
}

PacsQueue::PacsQueue(WorkThread& writer, QString today) : m_writer(writer), m_today(std::move(today)), m_list(ListName)
{
    if (!m_list.TakeOver([this](const QJsonDocument& document, bool) { Read(document); }))
        return;
    journal::NotingFaults([&] {
        ProcessList::Write(m_list.Path(), Content());
        m_list.RemoveTaken();
    });
}

void PacsQueue::Read(const QJsonDocument& document)
{
    for (Entry& entry : EntriesOf(document)) {
        entry.id = ++m_lastId;
        m_entries.append(entry);
    }
    if (document.object().value(u"day"_s).toString() != m_today)
        return;
    const QJsonArray sent = document.object().value(u"sent"_s).toArray();
    for (const auto& value : sent) {
        const QJsonObject json = value.toObject();
        m_sent.append({VisitFromJson(json), json.value(u"number"_s).toInt(), json.value(u"uid"_s).toString()});
    }
}

PacsQueue::Entry* PacsQueue::Find(qint64 id)
{
    const auto found = std::ranges::find(m_entries, id, &Entry::id);
    return found == m_entries.end() ? nullptr : &*found;
}

void PacsQueue::Add(const Visit& visit, const QList<int>& numbers, const QString& doctor, bool isChanged)
{
    for (const int number : numbers) {
        const auto isSame = [&](const Entry& entry) { return entry.number == number && entry.visit == visit; };
        m_entries.removeIf([&](const Entry& entry) { return isSame(entry) && !entry.refusal.isEmpty(); });
        const auto holds = [&](const Entry& entry) { return isSame(entry) && !(isChanged && entry.isUnderWay); };
        if (std::ranges::any_of(m_entries, holds))
            continue;
        m_entries.append({visit, number, doctor});
        m_entries.last().id = ++m_lastId;
    }
    Store();
}

QList<PacsQueue::Entry> PacsQueue::Take(int most)
{
    QList<Entry> taken;
    for (Entry& entry : m_entries) {
        if (taken.size() == most)
            break;
        if (entry.refusal.isEmpty() && !std::exchange(entry.isUnderWay, true))
            taken.append(entry);
    }
    return taken;
}

void PacsQueue::PutBack()
{
    for (Entry& entry : m_entries)
        entry.isUnderWay = false;
}

void PacsQueue::Sent(const Entry& entry, const QString& uid)
{
    m_sent.removeIf([&](const Mark& mark) { return mark.uid == uid; });
    m_sent.append({entry.visit, entry.number, uid});
    if (m_sent.size() > MostMarks)
        m_sent.removeFirst();
    Remove(entry);
}

void PacsQueue::Remove(const Entry& entry)
{
    m_entries.removeIf([&](const Entry& each) { return each.id == entry.id; });
}

void PacsQueue::Refuse(const Entry& entry, const QString& reason)
{
    if (Entry* found = Find(entry.id)) {
        found->refusal = reason;
        found->isUnderWay = false;
    }
}

int PacsQueue::CountCut(const Entry& entry)
{
    Entry* found = Find(entry.id);
    return found == nullptr ? 0 : ++found->cuts;
}

QList<qint64> PacsQueue::Forget(const Visit& visit, std::optional<int> number)
{
    QList<qint64> underWay;
    const auto isIt = [&](const Entry& entry) {
        return entry.visit == visit && entry.number == number.value_or(entry.number);
    };
    for (const Entry& entry : std::as_const(m_entries)) {
        if (isIt(entry) && entry.isUnderWay)
            underWay.append(entry.id);
    }
    if (m_entries.removeIf(isIt) > 0)
        Store();
    return underWay;
}

QStringList PacsQueue::SentUids() const
{
    QStringList uids;
    for (const Mark& mark : m_sent)
        uids << mark.uid;
    return uids;
}

bool PacsQueue::Knows(const Visit& visit, int number) const
{
    const auto isSame = [&](const auto& each) { return each.number == number && each.visit == visit; };
    return std::ranges::any_of(m_entries, isSame) || std::ranges::any_of(m_sent, isSame);
}

int PacsQueue::Waiting() const
{
    return static_cast<int>(m_entries.size()) - Refused();
}

int PacsQueue::Refused() const
{
    return static_cast<int>(
        std::ranges::count_if(m_entries, [](const Entry& entry) { return !entry.refusal.isEmpty(); }));
}

void PacsQueue::RetryRefused()
{
    for (Entry& entry : m_entries) {
        entry.refusal.clear();
        entry.cuts = 0;
    }
    Store();
}

void PacsQueue::DropRefused()
{
    m_entries.removeIf([](const Entry& entry) { return !entry.refusal.isEmpty(); });
    Store();
}

QByteArray PacsQueue::Content() const
{
    QJsonArray entries;
    for (const Entry& entry : m_entries)
        entries.append(EntryJson(entry));
    QJsonArray sent;
    for (const Mark& mark : m_sent) {
        QJsonObject json{{u"chart"_s, mark.visit.chart}, {u"ymd"_s, mark.visit.ymd}, {u"etc"_s, mark.visit.etc}};
        json.insert(u"number"_s, mark.number);
        json.insert(u"uid"_s, mark.uid);
        sent.append(json);
    }
    const QJsonObject list{{u"day"_s, m_today}, {u"away"_s, m_away}, {u"entries"_s, entries}, {u"sent"_s, sent}};
    return QJsonDocument(list).toJson(QJsonDocument::Compact);
}

void PacsQueue::Store()
{
    m_writer.Post([path = m_list.Path(), content = Content()] {
        journal::NotingFaults([&] { ProcessList::Write(path, content); });
    });
}

void PacsQueue::End()
{
    const bool isEmpty = m_entries.isEmpty() && m_sent.isEmpty();
    m_list.End(isEmpty ? std::nullopt : std::optional(Content()));
}
