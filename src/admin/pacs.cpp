#include "admin/pacs.h"

#include "admin/commands.h"
#include "admin/exit_codes.h"
#include "contracts/desktop.h"
#include "contracts/files.h"
#include "frame/components.h"
#include "pacs/PacsSending.h"
#include "text/text_routines.h"
#include "visit/VisitContext.h"

#include <QElapsedTimer>
#include <QTextStream>

using namespace Qt::StringLiterals;

namespace {

/// A server that has taken nothing for so long is left alone.
constexpr int PatienceMs = 30'000;
constexpr int LookMs = 200;

QString OwnFolder()
{
    return UseService<Desktop>().ProgramFolder() + u'\\';
}

QString HolderText(const PacsQueue::List& list)
{
    QString text = u"끝난 스테이션"_s;
    if (list.holder == Holder::Living)
        text = u"실행 중인 스테이션"_s;
    else if (list.holder == Holder::Elsewhere)
        text = u"다른 컴퓨터의 스테이션"_s;
    return list.foreignOwner.isEmpty() ? text : u"%1, 사용자 %2"_s.arg(text, list.foreignOwner);
}

QString PictureText(const Visit& visit, int number)
{
    return u"%1 %2 %3 %4"_s.arg(visit.chart, visit.ymd, visit.etc, NumberText(number));
}

/// Gives how many lines.
int ShowFolder(const QString& folder, QTextStream& out)
{
    int lines = 0;
    for (const PacsQueue::List& list : PacsQueue::ListsIn(folder)) {
        if (!list.isReadable) {
            out << u"읽을수없는목록 "_s << NativePath(list.path) << u" ("_s << HolderText(list) << u")\n"_s;
            ++lines;
        }
        for (const PacsQueue::Entry& entry : list.entries) {
            const QString reason = entry.refusal.isEmpty() ? list.away : entry.refusal;
            out << (entry.refusal.isEmpty() ? u"대기 "_s : u"거부 "_s) << PictureText(entry.visit, entry.number)
                << u" ("_s << HolderText(list) << u")"_s << (reason.isEmpty() ? QString() : u' ' + reason) << u'\n';
            ++lines;
        }
    }
    return lines;
}

/// Tells of the lists that living stations hold; false when there is none.
bool TellHeld(QTextStream& out)
{
    bool isAnyHeld = false;
    for (const PacsQueue::List& list : PacsQueue::ListsIn(OwnFolder())) {
        if (list.holder != Holder::Living || !list.foreignOwner.isEmpty() || list.entries.isEmpty())
            continue;
        isAnyHeld = true;
        out << u"실행 중인 스테이션의 것이어서 손대지 않습니다.!! (%1건) 그 스테이션을 끝내고 다시 하십시오.\n"_s.arg(
            list.entries.size());
    }
    return isAnyHeld;
}

bool IsEquipped(QTextStream& out)
{
    if (!ClientSetup.Pacs.Host.isEmpty())
        return true;
    out << u"설정에 PACS 서버가 없습니다.!! ([Pacs] Host)\n"_s;
    return false;
}

/// Serves the sending until nothing waits, or nothing has come on for too long.
void AwaitSending(const PacsSending& sending)
{
    int before = sending.Waiting();
    QElapsedTimer unchanged;
    unchanged.start();
    while (sending.Waiting() > 0 && unchanged.elapsed() < PatienceMs) {
        UseService<Desktop>().PumpEventsUntil([&] { return sending.Waiting() < before; }, LookMs);
        if (sending.Waiting() != std::exchange(before, sending.Waiting()))
            unchanged.restart();
    }
}

} // namespace

int ListPacs(QTextStream& out)
{
    int lines = ShowFolder(OwnFolder(), out);
    for (const QString& folder : Surroundings.foldersOfOthers())
        lines += folder + u'\\' == OwnFolder() ? 0 : ShowFolder(folder + u'\\', out);
    if (lines == 0)
        out << u"PACS로 보낼 그림이 없습니다.\n"_s;
    return lines == 0 ? AllWell : Found;
}

int RetryPacs(QTextStream& out)
{
    if (!IsEquipped(out))
        return CantWork;
    int sent = 0;
    {
        PacsSending sending;
        QObject::connect(&sending, &PacsSending::Sent, &sending, [&](const Visit& visit, int number) {
            ++sent;
            out << u"보냄 "_s << PictureText(visit, number) << u'\n';
        });
        sending.RetryRefused();
        AwaitSending(sending);
        sending.End();
    }
    const int left = ShowFolder(OwnFolder(), out);
    const bool isAnyHeld = TellHeld(out);
    out << u"%1건을 보냈습니다.\n"_s.arg(sent);
    return left > 0 || isAnyHeld ? Found : AllWell;
}

int DropPacs(QTextStream& out)
{
    if (!IsEquipped(out))
        return CantWork;
    {
        PacsSending sending;
        out << u"거부된 %1건을 목록에서 지웠습니다. 그림은 그대로 있습니다.\n"_s.arg(sending.Refused());
        sending.DropRefused();
        sending.End();
    }
    const int left = ShowFolder(OwnFolder(), out);
    return TellHeld(out) || left > 0 ? Found : AllWell;
}
