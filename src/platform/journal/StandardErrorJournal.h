#pragma once

#include "contracts/Journal.h"
#include "frame/WorkThread.h"

#include <QByteArray>

#include <deque>
#include <memory>
#include <mutex>

/// Lines on standard error: time, program, severity, text. Whoever reads them, the session's journal or a terminal, may
/// stand still: lines that it doesn't take are dropped and counted.
class StandardErrorJournal final : public Journal
{
public:
    void Write(Severity severity, const QString& line) override;
    /// What still waits is written, if it is taken at once; nothing is taken any more.
    void End();

private:
    struct Lines
    {
        std::mutex mutex;
        std::deque<QByteArray> waiting;
        int dropped = 0;
    };
    static void PutAll(Lines& lines);

    const std::shared_ptr<Lines> m_lines = std::make_shared<Lines>();
    WorkThread m_thread;
};

/// Installs the journal; the toolkit's own warnings go there too. A reader that goes away doesn't end the program.
void RegisterJournal();
/// At the program's end.
void EndJournal();
