#include "admin/commands.h"

#include "admin/waiting_lists.h"
#include "contracts/files.h"
#include "contracts/SenderProcess.h"
#include "filing/capture_folders.h"
#include "filing/ProcessList.h"
#include "frame/components.h"
#include "frame/terminal.h"
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

QString PictureText(const PacsEntry& entry)
{
    return u"%1 %2 %3 %4"_s.arg(entry.chart, entry.ymd, entry.etc, NumberText(entry.number));
}

QString OwnerText(const QString& owner)
{
    return owner.isEmpty() ? QString() : u", 사용자 %1"_s.arg(owner);
}

/// Pictures in the lists that stations of earlier releases have left, and no sender has taken over yet.
int ShowFormerLists(const QString& folder, TerminalOutput& out)
{
    int lines = 0;
    for (const ProcessList::Found& list : ProcessList::In(folder, u"Pacs"_s)) {
        const qsizetype count = list.document.object().value(u"entries"_s).toArray().size();
        if (list.isReadable && count == 0)
            continue;
        out << (list.isReadable ? u"앞판의목록 "_s : u"읽을수없는목록 "_s) << NativePath(list.path)
            << u" (%1건, %2)\n"_s.arg(count).arg(HolderText(list.holder, list.foreignOwner));
        ++lines;
    }
    return lines;
}

/// Gives how many lines.
int ShowFolder(const QString& folder, TerminalOutput& out)
{
    int lines = ShowFormerLists(folder, out);
    for (const SenderQueue::Found& queue : SenderQueue::In(folder)) {
        const QString sender =
            (queue.isSenderThere ? u"보내는 중"_s : u"보내는 프로그램 없음"_s) + OwnerText(queue.foreignOwner);
        if (!queue.isReadable) {
            out << u"읽을수없는목록 "_s << NativePath(queue.path) << OwnerText(queue.foreignOwner) << u'\n';
            ++lines;
        }
        for (const PacsEntry& entry : queue.entries) {
            const bool isAside = entry.state == PacsState::SetAside;
            const QString reason = entry.reason.isEmpty() ? queue.away : entry.reason;
            out << (isAside ? u"거부 "_s : u"대기 "_s) << PictureText(entry) << u" ("_s << sender << u')'
                << (reason.isEmpty() ? QString() : u' ' + reason) << u'\n';
            ++lines;
        }
        if (queue.lines > 0) {
            out << u"새로넘긴것 %1건 (%2)\n"_s.arg(queue.lines).arg(sender);
            ++lines;
        }
    }
    return lines;
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

int ListPacs(TerminalOutput& out)
{
    const int lines = ShowFolders([&out](const QString& folder) { return ShowFolder(folder, out); });
    if (lines == 0)
        out << u"PACS로 보낼 그림이 없습니다.\n"_s;
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
        out << u"보냄 "_s << PictureText(entry) << u'\n';
    const int left = ShowFolder(LocalFolder(), out);
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
    return ShowFolder(LocalFolder(), out) > 0 ? Found : AllWell;
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
