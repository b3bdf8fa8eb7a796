#pragma once

#include "frame/WorkThread.h"

#include <QStringList>

#include <atomic>
#include <memory>
#include <mutex>

class ArchiveYear;

/// Reads all pictures of a year, one after the other, on a thread of its own: those that aren't whole are found.
class PictureSurvey
{
public:
    struct Finding
    {
        QString path;
        QString reason; ///< In Korean.
    };

    /// Begins with a year's pictures. The year has to stay until it is done.
    explicit PictureSurvey(const ArchiveYear& year);
    ~PictureSurvey() { m_state->ends = true; }
    PictureSurvey(const PictureSurvey&) = delete;
    PictureSurvey& operator=(const PictureSurvey&) = delete;

    bool IsDone() const { return m_state->isDone; }
    int ReadCount() const { return m_state->read; }
    /// When it is done.
    const QList<Finding>& Findings() const { return m_state->findings; }
    /// Files in a format that only decoding can judge; when it is done.
    const QStringList& Unknown() const { return m_state->unknown; }

private:
    struct State
    {
        std::atomic<bool> isDone = false;
        std::atomic<bool> ends = false;
        std::atomic<int> read = 0;
        QList<Finding> findings;
        QStringList unknown;
    };

    const std::shared_ptr<State> m_state = std::make_shared<State>();
    WorkThread m_thread;
};

/// Decodes pictures, small, on the reader's threads, and gives those that it can't read or that end early. `progress`
/// hears how many are done.
QList<PictureSurvey::Finding> DecodeAll(const QStringList& paths, const std::function<void(int)>& progress);
