#include "support/ScriptedDesktop.h"

#include "contracts/OpenFilesDialog.h"
#include "frame/event_loop.h"

#include "frame/components.h"
#include "frame/services.h"

#include <QCoreApplication>
#include <QTest>

#include <utility>

namespace {
/// Takes what the desktop's script has for its dialogs, several files a line each.
class ScriptedFiles final : public OpenFilesDialog
{
public:
    explicit ScriptedFiles(ScriptedDesktop& desktop) : m_desktop(desktop) {}

    std::optional<QStringList> Show(const QString& filter) override
    {
        const std::optional<QString> files = m_desktop.ShowOpenDialog(QString(), filter);
        return files ? std::optional(files->split(u'\n')) : std::nullopt;
    }

private:
    ScriptedDesktop& m_desktop;
};
} // namespace

ScriptedDesktop& ScriptedDesktop::Install()
{
    auto desktop = std::make_unique<ScriptedDesktop>();
    ScriptedDesktop& scripted = *desktop;
    InstallService<OpenFilesDialog>(std::make_unique<ScriptedFiles>(scripted));
    InstallService<Desktop>(std::move(desktop));
    return scripted;
}

void ScriptedDesktop::ShowInformation(const QString& text, int /*patienceMs*/)
{
    shown.append(text);
    // A copy, since it may take itself away.
    if (const auto event = whileShown)
        event();
}

bool ScriptedDesktop::AskYesNo(const QString& question)
{
    ShowInformation(question);
    if (answers.empty())
        return false;
    const bool answer = answers.front();
    answers.pop_front();
    return answer;
}

Answer ScriptedDesktop::AskYesNoCancel(const QString& question)
{
    const bool isAnswered = !answers.empty();
    const bool yes = AskYesNo(question);
    return !isAnswered ? Answer::Cancel : yes ? Answer::Yes : Answer::No;
}

std::optional<QString> ScriptedDesktop::ShowOpenDialog(const QString& /*folder*/, const QString& value)
{
    filter = value;
    if (files.empty())
        return std::nullopt;
    const std::optional<QString> file = files.front();
    files.pop_front();
    return file;
}

void ScriptedDesktop::PumpEvents()
{
    if (const auto event = std::exchange(whilePumped, nullptr))
        event();
    QCoreApplication::processEvents();
}

bool ScriptedDesktop::ServeUntil(const DesktopWait& wait)
{
    if (wait.input == WaitInput::Held)
        leaveWait = wait.leave;
    return event_loop::ServeUntil(
        wait.done, [this] { return ended; }, wait.patienceMs);
}
