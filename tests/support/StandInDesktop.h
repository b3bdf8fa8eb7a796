#pragma once

#include "contracts/desktop.h"

#include <QStringList>

/// A desktop without windows: keeps what it was told to show, and answers as the test has set it.
class StandInDesktop : public Desktop
{
public:
    QStringList shown;     ///< Texts of the message boxes, in order.
    QStringList questions; ///< Texts of the questions, in order.
    bool answer = false;   ///< To every question.
    QString folder;        ///< The program's own folder.
    QString command;
    QDate today;
    bool ended = false;

    void ShowInformation(const QString& text) override { shown.append(text); }
    void ShowPlain(const QString& text) override { shown.append(text); }
    bool AskYesNo(const QString& question) override;
    void SetMousePointer(MousePointer /*pointer*/) override {}
    void PumpEvents() override;
    bool PumpEventsUntil(const std::function<bool()>& done, int timeoutMs) override;
    void ShowPrinterDialog() override {}
    QString Command() const override { return command; }
    QString ProgramFolder() const override { return folder; }
    bool PrevInstance() override { return false; }
    void EndProgram() override { ended = true; }
    bool ProgramEnded() const override { return ended; }
    QDate Today() const override { return today; }
};
