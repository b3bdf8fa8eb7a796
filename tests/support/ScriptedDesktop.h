#pragma once

#include "contracts/desktop.h"
#include "frame/services.h"

#include <QStringList>
#include <QTemporaryDir>

#include <deque>

/// A desktop whose boxes answer by themselves: what they said is kept, questions take their answers from a script.
class ScriptedDesktop : public Desktop
{
public:
    QStringList shown;                        ///< Texts of all boxes, in order.
    std::deque<bool> answers;                 ///< For the questions to come; No when none is left.
    std::deque<std::optional<QString>> files; ///< Files chosen in the open dialogs to come; a cancel when none is left.
    std::function<void()> whileShown;         ///< Runs while a box stands open.
    std::function<void()> whilePumped;        ///< Runs once, inside the next pump.
    std::function<void()> leaveWait;          ///< Of the wait that was begun last: the operator closes a window.
    QString filter;                           ///< Of the open dialog that was shown last.
    QString command;
    QByteArray commandBytes; ///< In the place of `command`, unless they are empty.
    bool isOfLegacyLocale = false;
    QDate today{2026, 11, 24};
    QString folder;        ///< The program's own folder; a temporary one when empty.
    QString machineFolder; ///< Of all users; none when empty.
    bool otherInstance = false;
    bool endIsRequested = false;
    bool ended = false;
    MousePointer pointer = PointerNormal;

    /// Installs a fresh one and gives it for scripting.
    static ScriptedDesktop& Install();

    void ShowInformation(const QString& text, int patienceMs = 0) override;
    void ShowPlain(const QString& text) override { ShowInformation(text); }
    bool AskYesNo(const QString& question) override;
    Answer AskYesNoCancel(const QString& question) override;
    void SetMousePointer(MousePointer value) override { pointer = value; }
    void PumpEvents() override;
    bool ServeUntil(const DesktopWait& wait) override;
    void ShowPrinterDialog() override {}
    std::optional<QString> ShowOpenDialog(const QString& folder, const QString& filter) override;
    CommandString Command() const override
    {
        return {commandBytes.isEmpty() ? command.toUtf8() : commandBytes, isOfLegacyLocale};
    }
    QString StateFolder() const override { return ProgramFolder(); }
    QString MachineFolder() const override { return machineFolder; }
    QString ProgramFolder() const override { return folder.isEmpty() ? m_folder.path() : folder; }
    bool PrevInstance() override { return otherInstance; }
    void LeaveInstance() override {}
    void setEndRequest(std::function<void()>) override {}
    void LoseDisplay() override {}
    bool EndIsRequested() const override { return endIsRequested; }
    void EndProgram() override { ended = true; }
    bool ProgramEnded() const override { return ended; }
    QDate Today() const override { return today; }

private:
    QTemporaryDir m_folder;
};
