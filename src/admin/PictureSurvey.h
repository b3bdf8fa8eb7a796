#pragma once

#include "frame/WorkThread.h"
#include "records/picture_sums.h"

#include <QStringList>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

class ArchiveYear;

/// Reads all pictures of a year, one after the other, on a thread of its own: those that aren't whole are found. Who
/// began it takes the findings as they come, so that they need no memory.
class PictureSurvey
{
public:
    struct Finding
    {
        QString path;
        QString reason; ///< In Korean.
    };

    struct News
    {
        QList<Finding> findings;
        QStringList unknown; ///< Files in a format that only decoding can judge.
    };

    /// What a file held when it was read.
    struct Seen
    {
        PictureDigest digest{};
        qint64 bytes = -1; ///< Negative for one that couldn't be read.
    };

    /// Begins with a year's pictures.
    explicit PictureSurvey(const ArchiveYear& year);
    ~PictureSurvey() { m_state->ends = true; }
    PictureSurvey(const PictureSurvey&) = delete;
    PictureSurvey& operator=(const PictureSurvey&) = delete;

    bool IsDone() const { return m_state->isDone; }
    int ReadCount() const { return m_state->read; }
    /// There is enough to be taken.
    bool HasNews() const { return m_state->newsCount >= EnoughNews; }
    /// What has been found since the last call.
    News TakeNews();
    /// Of each picture, by the year's section and its place there. Whole once it is done.
    const std::vector<std::vector<Seen>>& ByPlace() const { return m_state->seen; }

private:
    static constexpr int EnoughNews = 500;

    struct State
    {
        void Add(const std::function<void(News&)>& change);

        std::mutex mutex;
        News news;
        std::vector<std::vector<Seen>> seen;
        std::atomic<int> newsCount = 0;
        std::atomic<bool> isDone = false;
        std::atomic<bool> ends = false;
        std::atomic<int> read = 0;
    };

    const std::shared_ptr<State> m_state = std::make_shared<State>();
    WorkThread m_thread;
};

/// Decodes pictures, small, on the reader's threads, and gives those that it can't read or that end early. `progress`
/// hears how many are done.
QList<PictureSurvey::Finding> DecodeAll(const QStringList& paths, const std::function<void(int)>& progress);
