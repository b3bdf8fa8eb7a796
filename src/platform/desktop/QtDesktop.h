#pragma once

#include "contracts/desktop.h"
#include "platform/files/program_folder.h"

#include <memory>
#include <optional>

class EndSignals;
class InstanceLock;
class QMessageBox;

/// The desktop through Qt Widgets.
class QtDesktop final : public Desktop
{
public:
    explicit QtDesktop(CommandString command);
    ~QtDesktop() override;

    void ShowInformation(const QString& text, int patienceMs = 0) override;
    void ShowPlain(const QString& text) override;
    bool AskYesNo(const QString& question) override;
    Answer AskYesNoCancel(const QString& question) override;
    void SetMousePointer(MousePointer pointer) override;
    void PumpEvents() override;
    bool ServeUntil(const DesktopWait& wait) override;
    void ShowPrinterDialog() override;
    std::optional<QString> ShowOpenDialog(const QString& folder, const QString& filter) override;
    /// The same for several files.
    std::optional<QStringList> ShowOpenFilesDialog(const QString& filter);
    CommandString Command() const override { return m_command; }
    QString ProgramFolder() const override { return m_programFolder; }
    QString StateFolder() const override { return State().folder; }
    QString MachineFolder() const override { return State().machineFolder; }
    bool PrevInstance() override;
    void LeaveInstance() override;
    void setEndRequest(std::function<void()> end) override;
    bool EndIsRequested() const override { return m_endIsRequested; }
    void LoseDisplay() override { m_displayIsGone = m_endIsRequested = true; }
    void EndProgram() override;
    bool ProgramEnded() const override { return m_ended; }
    QDate Today() const override;

private:
    const StatePlace& State() const;

    class OpenBox;

    bool Run(QMessageBox& box);
    std::optional<QStringList> ChooseFiles(const QString& folder, const QString& filter, bool several);
    void RequestEnd();
    void ShowPointer();

    CommandString m_command;
    QString m_programFolder;
    mutable std::optional<StatePlace> m_state; ///< Looked for at first use.
    QString m_chosenPrinter;                   ///< Empty as long as the operator chose none.
    QString m_chosenPrintFile;                 ///< Chosen in place of a printer.
    QString m_openFolder;                      ///< Of the file chosen last.
    std::unique_ptr<InstanceLock> m_instance;
    std::optional<bool> m_prevInstance;
    bool m_busy = false;      ///< What the station asked for.
    bool m_busyShown = false; ///< What the operator sees.
    int m_openBoxes = 0;
    QStringList m_openTexts; ///< Of the message boxes that stand open, one above the other.
    std::unique_ptr<EndSignals> m_signals;
    std::function<void()> m_end;
    bool m_endIsRequested = false;
    bool m_displayIsGone = false;
    bool m_ended = false;
};
