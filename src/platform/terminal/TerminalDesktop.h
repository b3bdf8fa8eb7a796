#pragma once

#include "contracts/desktop.h"
#include "platform/files/program_folder.h"

#include <optional>

/// The desktop of a program without a screen: what would be a box is a line on standard error, and every question is
/// answered with No. It needs a QCoreApplication, whose events are served while something is awaited.
class TerminalDesktop : public Desktop
{
public:
    TerminalDesktop();

    void ShowInformation(const QString& text, int patienceMs = 0) override;
    void ShowPlain(const QString& text) override { ShowInformation(text); }
    bool AskYesNo(const QString& question) override;
    /// The administrator's program asks none of these.
    Answer AskYesNoCancel(const QString& /*question*/) override { return Answer::Cancel; }
    void SetMousePointer(MousePointer /*pointer*/) override {}
    void PumpEvents() override;
    bool ServeUntil(const DesktopWait& wait) override;
    void ShowPrinterDialog() override {}
    std::optional<QString> ShowOpenDialog(const QString& folder, const QString& filter) override;
    CommandString Command() const override { return {}; }
    QString ProgramFolder() const override { return m_programFolder; }
    QString StateFolder() const override { return State().folder; }
    QString MachineFolder() const override { return State().machineFolder; }
    bool PrevInstance() override { return false; }
    void LeaveInstance() override {}
    void setEndRequest(std::function<void()> /*end*/) override {}
    void LoseDisplay() override {}
    bool EndIsRequested() const override { return false; }
    void EndProgram() override { m_ended = true; }
    bool ProgramEnded() const override { return m_ended; }
    QDate Today() const override;

private:
    const StatePlace& State() const;

    const QString m_programFolder;
    mutable std::optional<StatePlace> m_state; ///< Looked for at first use.
    bool m_ended = false;
};
