#include "platform/terminal/TerminalDesktop.h"

#include "frame/components.h"
#include "frame/event_loop.h"
#include "frame/terminal.h"
#include "frame/waiting.h"
#include "platform/files/program_folder.h"
#include "platform/terminal/register_terminal.h"

#include <QCoreApplication>

#include <unistd.h>

using namespace Qt::StringLiterals;

TerminalDesktop::TerminalDesktop() : m_programFolder(ProgramFolderHere()) {}

const StatePlace& TerminalDesktop::State() const
{
    if (!m_state)
        m_state = StateFolderHere(m_programFolder);
    return *m_state;
}

void TerminalDesktop::ShowInformation(const QString& text, int /*patienceMs*/)
{
    TellOnError(text);
}

bool TerminalDesktop::AskYesNo(const QString& question)
{
    TellOnError(question);
    return false;
}

void TerminalDesktop::PumpEvents()
{
    QCoreApplication::processEvents();
}

bool TerminalDesktop::ServeUntil(const DesktopWait& wait)
{
    return event_loop::ServeUntil(
        wait.done, [this] { return m_ended; }, wait.patienceMs);
}

std::optional<QString> TerminalDesktop::ShowOpenDialog(const QString& /*folder*/, const QString& /*filter*/)
{
    return std::nullopt;
}

QDate TerminalDesktop::Today() const
{
    return QDate::currentDate();
}

void RegisterTerminal()
{
    InstallService<Desktop>(std::make_unique<TerminalDesktop>());
    // Who waits has to know for what: he can only break the program off.
    waiting::setPresenter([](const waiting::Notice& notice) {
        if (notice.mayCancel)
            TellOnError(notice.text);
    });
}

bool IsErrorTerminal()
{
    return isatty(STDERR_FILENO) == 1;
}
