#include "admin/commands.h"

#include "admin/Report.h"
#include "admin/waiting_lists.h"
#include "contracts/files.h"
#include "contracts/SenderProcess.h"
#include "filing/capture_folders.h"
#include "filing/ProcessList.h"
#include "frame/components.h"
#include "frame/terminal.h"
#include "pacs/parts.h"
#include "pacs/SenderQueue.h"
#include "records/capture_index.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QUuid>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// A server that has taken nothing for so long is left alone.
constexpr int PatienceMs = 30'000;

QString EntryText(const PacsEntry& entry)
{
    QString text = u"%1 %2 %3"_s.arg(entry.chart, entry.ymd, entry.etc);
    if (entry.number > 0)
        text += u' ' + NumberText(entry.number);
    if (parts::IsReport(entry.part))
        text += u" 소견서 "_s + parts::ValueOf(entry.part);
    else if (parts::IsMovie(entry.part))
        text += u" 동영상 "_s + parts::ValueOf(entry.part);
    else if (parts::IsRejection(entry.part))
        text += u" 삭제 알림"_s;
    else if (!entry.part.isEmpty())
        text += u" 원래 그림"_s;
    return text;
}

QString OwnerText(const QString& owner)
{
    return owner.isEmpty() ? QString() : u", 사용자 %1"_s.arg(owner);
}

/// Pictures in the lists that stations of earlier releases have left, and no sender has taken over yet.
int ShowFormerLists(const QString& folder, Report& report)
{
    int lines = 0;
    for (const ProcessList::Found& list : ProcessList::In(folder, u"Pacs"_s)) {
        const qsizetype count = list.document.object().value(u"entries"_s).toArray().size();
        if (list.isReadable && count == 0)
            continue;
        QJsonObject facts = HolderFacts(list.holder, list.foreignOwner);
        facts[u"kind"_s] = list.isReadable ? u"former-list"_s : u"unreadable-list"_s;
        facts[u"path"_s] = NativePath(list.path);
        facts[u"count"_s] = count;
        report.Item((list.isReadable ? u"앞판의목록 "_s : u"읽을수없는목록 "_s) + NativePath(list.path) +
                        u" (%1건, %2)"_s.arg(count).arg(HolderText(list.holder, list.foreignOwner)),
                    facts);
        ++lines;
    }
    return lines;
}

void ShowEntry(const PacsEntry& entry, const SenderQueue::Found& queue, const QString& sender, QJsonObject facts,
               Report& report)
{
    const bool isAside = entry.state == PacsState::SetAside;
    const QString reason = entry.reason.isEmpty() ? queue.away : entry.reason;
    facts[u"kind"_s] = isAside ? u"refused"_s : u"waiting"_s;
    facts[u"chart"_s] = entry.chart;
    facts[u"date"_s] = entry.ymd;
    facts[u"section"_s] = entry.etc;
    facts[u"number"_s] = entry.number;
    if (!entry.part.isEmpty())
        facts[u"part"_s] = entry.part;
    facts[u"reason"_s] = reason;
    report.Item((isAside ? u"거부 "_s : u"대기 "_s) + EntryText(entry) + u" ("_s + sender + u')' +
                    (reason.isEmpty() ? QString() : u' ' + reason),
                facts);
}

/// What the hospital's other servers are still to hear of, or to answer for. Gives how many lines.
int ShowServices(const SenderQueue::Found& queue, const QJsonObject& sender, Report& report)
{
    const auto show = [&](const QString& word, const QString& kind, const Visit& visit, int number,
                          const QString& reason) {
        QJsonObject facts = sender;
        facts[u"kind"_s] = kind;
        facts[u"chart"_s] = visit.chart;
        facts[u"date"_s] = visit.ymd;
        facts[u"section"_s] = visit.etc;
        if (number > 0)
            facts[u"number"_s] = number;
        facts[u"reason"_s] = reason;
        report.Item(u"%1 %2 %3 %4"_s.arg(word, visit.chart, visit.ymd, visit.etc) +
                        (number > 0 ? u' ' + NumberText(number) : QString()) +
                        (reason.isEmpty() ? QString() : u' ' + reason),
                    facts);
    };
    for (const service_rows::Step& step : queue.steps) {
        const bool isRefused = step.state == service_rows::StepState::Refused;
        show(isRefused ? u"검사진행거부"_s : u"검사진행대기"_s, isRefused ? u"step-refused"_s : u"step-waiting"_s,
             step.VisitBelow({}), 0, step.reason);
    }
    for (const service_rows::Commitment& each : queue.commitments)
        show(u"보관확인안됨"_s, u"not-committed"_s, {each.chart, {}, each.ymd, each.etc, {}, {}}, each.number,
             each.reason);
    return static_cast<int>(queue.steps.size() + queue.commitments.size());
}

/// Gives how many lines.
int ShowFolder(const QString& folder, Report& report)
{
    int lines = ShowFormerLists(folder, report);
    for (const SenderQueue::Found& queue : SenderQueue::In(folder)) {
        const QString sender =
            (queue.isSenderThere ? u"보내는 중"_s : u"보내는 프로그램 없음"_s) + OwnerText(queue.foreignOwner);
        QJsonObject facts{{u"senderRuns"_s, queue.isSenderThere}};
        if (!queue.foreignOwner.isEmpty())
            facts[u"owner"_s] = queue.foreignOwner;
        if (!queue.isReadable) {
            facts[u"kind"_s] = u"unreadable-list"_s;
            facts[u"path"_s] = NativePath(queue.path);
            report.Item(u"읽을수없는목록 "_s + NativePath(queue.path) + OwnerText(queue.foreignOwner), facts);
            facts.remove(u"path"_s);
            ++lines;
        }
        for (const PacsEntry& entry : queue.entries) {
            ShowEntry(entry, queue, sender, facts, report);
            ++lines;
        }
        lines += ShowServices(queue, facts, report);
        // Nothing is to be done about them here.
        for (const PacsEntry& entry : queue.staying) {
            QJsonObject stays{{u"kind"_s, u"stays"_s},   {u"chart"_s, entry.chart},   {u"date"_s, entry.ymd},
                              {u"section"_s, entry.etc}, {u"number"_s, entry.number}, {u"part"_s, entry.part},
                              {u"uid"_s, entry.uid}};
            report.Item(u"PACS에남음 "_s + EntryText(entry) + u" (여기에서는 지워졌습니다) "_s + entry.uid, stays);
        }
        if (queue.lines > 0) {
            facts[u"kind"_s] = u"handed-over"_s;
            facts[u"count"_s] = queue.lines;
            report.Item(u"새로넘긴것 %1건 (%2)"_s.arg(queue.lines).arg(sender), facts);
            ++lines;
        }
    }
    return lines;
}

int ShowOwn(TerminalOutput& out)
{
    Report report(out);
    return ShowFolder(LocalFolder(), report);
}

bool IsEquipped(TerminalOutput& out)
{
    if (!ClientSetup.Pacs.Host.isEmpty())
        return true;
    out << u"설정에 PACS 서버가 없습니다.!! ([Pacs] Host)\n"_s;
    return false;
}

/// Waits until the sender has done what it can; gives how it stands.
SenderQueue::State AwaitSender(SenderQueue& queue)
{
    UseService<SenderProcess>().Start(false);
    SenderQueue::State state = queue.Look();
    const auto left = [&] {
        state = queue.Look();
        const bool isStuck = state.NeedsSetup() && !state.isSenderThere && state.lines == 0;
        return isStuck ? 0 : state.waiting;
    };
    AwaitNothingLeft(left, PatienceMs);
    return state;
}

} // namespace

int ListPacs(Report& report)
{
    const int lines = ShowFolders([&report](const QString& folder) { return ShowFolder(folder, report); });
    report.Total(lines == 0 ? u"PACS로 보낼 그림이 없습니다."_s : QString(), {{u"waiting"_s, lines}});
    return lines == 0 ? AllWell : Found;
}

int RetryPacs(TerminalOutput& out)
{
    if (!IsEquipped(out))
        return CantWork;
    const QString begun = QDateTime::currentDateTime().toString(Qt::ISODateWithMs);
    SenderQueue queue;
    queue.Add({{PacsLine::Retry}});
    AwaitSender(queue);
    const QList<PacsEntry> sent = queue.SentSince(begun);
    for (const PacsEntry& entry : sent)
        out << u"보냄 "_s << EntryText(entry) << u'\n';
    const int left = ShowOwn(out);
    out << u"%1건을 보냈습니다.\n"_s.arg(sent.size());
    return left > 0 ? Found : AllWell;
}

int DropPacs(TerminalOutput& out)
{
    if (!IsEquipped(out))
        return CantWork;
    SenderQueue queue;
    const int before = queue.Look().setAside;
    queue.Add({{PacsLine::Drop}});
    const int after = AwaitSender(queue).setAside;
    out << u"거부된 %1건을 목록에서 지웠습니다. 그림은 그대로 있습니다.\n"_s.arg(before - after);
    return ShowOwn(out) > 0 ? Found : AllWell;
}

int SendVisitToPacs(const QStringList& arguments, TerminalOutput& out)
{
    if (!IsEquipped(out))
        return CantWork;
    const Visit visit{arguments[0], {}, arguments[1], arguments[2], {}, VisitContext.ImageExt};
    const qsizetype count = StoredNumbers(visit, NumberOrder::Any).size();
    if (count == 0) {
        out << u"그 방문의 그림이 없습니다.!! (%1 %2 %3)\n"_s.arg(visit.chart, visit.ymd, visit.etc);
        return Found;
    }
    SenderQueue().Add({PacsLine::Of(PacsLine::Stored, visit)});
    UseService<SenderProcess>().Start(false);
    out << u"그림 %1장 가운데 아직 보내지 않은 것을 보냅니다. (%2 %3 %4)\n"_s.arg(count).arg(visit.chart, visit.ymd,
                                                                                             visit.etc);
    return AllWell;
}
