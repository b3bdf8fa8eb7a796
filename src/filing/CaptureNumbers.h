#pragma once

#include "visit/Visit.h"

#include <QList>
#include <QObject>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

/// From which number on a picture's own is looked for: behind the largest of the visit's rows and of those that this
/// station has in hand, whose rows aren't in or are about to go. Where the rows don't answer at once, the names in the
/// visit's folder stand for them. So a gap stays a gap, and the highest number is taken again once it has been deleted.
/// Whether a number is free, its claim and its file tell.
class CaptureNumbers : public QObject
{
public:
    /// The largest number of a visit's rows, on its way from the database.
    class Question
    {
    public:
        void Answer(std::optional<int> largest);
        /// Nothing when it isn't there in time, or can't be had.
        std::optional<int> Await(int patienceMs);

    private:
        std::mutex m_mutex;
        std::condition_variable m_changed;
        std::optional<int> m_largest;
        bool m_isAnswered = false;
    };
    using QuestionPointer = std::shared_ptr<Question>;

    /// Asks the database, on the screen's thread, without waiting for it.
    QuestionPointer Ask(const Visit& visit);

    /// The number that comes next. For a thread that may wait for the share. Throws PlatformError.
    int Next(const Visit& visit, Question& question) const;
    /// This station has the number in hand. Any thread.
    void Hold(const Visit& visit, int number);
    void Release(const Visit& visit, int number);

private:
    mutable std::mutex m_mutex;
    std::vector<std::pair<Visit, int>> m_held;
};
