#include "admin/commands.h"

#include "admin/waiting_lists.h"
#include "contracts/desktop.h"
#include "contracts/files.h"
#include "filing/capture_folders.h"
#include "frame/components.h"
#include "frame/terminal.h"
#include "pacs/PacsSending.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"

using namespace Qt::StringLiterals;

namespace {

/// A server that has taken nothing for so long is left alone.
constexpr int PatienceMs = 30'000;

QString PictureText(const Visit& visit, int number)
{
    return u"%1 %2 %3 %4"_s.arg(visit.chart, visit.ymd, visit.etc, NumberText(number));
}

/// Gives how many lines.
int ShowFolder(const QString& folder, TerminalOutput& out)
{
    int lines = 0;
    for (const PacsQueue::List& list : PacsQueue::ListsIn(folder)) {
        if (!list.isReadable) {
            out << u"읽을수없는목록 "_s << NativePath(list.path) << u" ("_s
                << HolderText(list.holder, list.foreignOwner) << u")\n"_s;
            ++lines;
        }
        for (const PacsQueue::Entry& entry : list.entries) {
            const QString reason = entry.refusal.isEmpty() ? list.away : entry.refusal;
            out << (entry.refusal.isEmpty() ? u"대기 "_s : u"거부 "_s) << PictureText(entry.visit, entry.number)
                << u" ("_s << HolderText(list.holder, list.foreignOwner) << u")"_s
                << (reason.isEmpty() ? QString() : u' ' + reason) << u'\n';
            ++lines;
        }
    }
    return lines;
}

/// Tells of the lists that living stations hold; false when there is none.
bool TellHeld(TerminalOutput& out)
{
    bool isAnyHeld = false;
    for (const PacsQueue::List& list : PacsQueue::ListsIn(LocalFolder())) {
        if (list.holder != Holder::Living || !list.foreignOwner.isEmpty() || list.entries.isEmpty())
            continue;
        isAnyHeld = true;
        out << u"실행 중인 스테이션의 것이어서 손대지 않습니다.!! (%1건) 그 스테이션을 끝내고 다시 하십시오.\n"_s.arg(
            list.entries.size());
    }
    return isAnyHeld;
}

bool IsEquipped(TerminalOutput& out)
{
    if (!ClientSetup.Pacs.Host.isEmpty())
        return true;
    out << u"설정에 PACS 서버가 없습니다.!! ([Pacs] Host)\n"_s;
    return false;
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
    int sent = 0;
    {
        PacsSending sending(ClientSetup.Pacs, SaupTable, Launched());
        QObject::connect(&sending, &PacsSending::Sent, &sending, [&](const Visit& visit, int number) {
            ++sent;
            out << u"보냄 "_s << PictureText(visit, number) << u'\n';
        });
        sending.RetryRefused();
        AwaitNothingLeft([&sending] { return sending.Waiting(); }, PatienceMs);
        sending.End();
    }
    const int left = ShowFolder(LocalFolder(), out);
    const bool isAnyHeld = TellHeld(out);
    out << u"%1건을 보냈습니다.\n"_s.arg(sent);
    return left > 0 || isAnyHeld ? Found : AllWell;
}

int DropPacs(TerminalOutput& out)
{
    if (!IsEquipped(out))
        return CantWork;
    {
        PacsSending sending(ClientSetup.Pacs, SaupTable, Launched());
        out << u"거부된 %1건을 목록에서 지웠습니다. 그림은 그대로 있습니다.\n"_s.arg(sending.Refused());
        sending.DropRefused();
        sending.End();
    }
    const int left = ShowFolder(LocalFolder(), out);
    return TellHeld(out) || left > 0 ? Found : AllWell;
}
