#include "filing/CaptureNumbers.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/services.h"
#include "records/capture_index.h"
#include "records/Statement.h"

#include <algorithm>

namespace {
/// A database that answers does so within this time, beside the encoding of the picture.
constexpr int RowsPatienceMs = 50;

/// In what follows chart and date in the name of a picture or a claim; 0 in any other.
int NumberIn(const QString& rest)
{
    bool isNumber = false;
    const int number = rest.section(QLatin1Char('.'), 0, 0).toInt(&isNumber);
    return isNumber ? std::max(0, number) : 0;
}
} // namespace

void CaptureNumbers::Question::Answer(std::optional<int> largest)
{
    const std::lock_guard lock(m_mutex);
    m_largest = largest;
    m_isAnswered = true;
    m_changed.notify_all();
}

std::optional<int> CaptureNumbers::Question::Await(int patienceMs)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, std::chrono::milliseconds(patienceMs), [this] { return m_isAnswered; });
    return m_largest;
}

CaptureNumbers::QuestionPointer CaptureNumbers::Ask(const Visit& visit)
{
    auto question = std::make_shared<Question>();
    const auto ask = [question, visit] {
        try {
            question->Answer(::NextCaptureNo(visit));
        } catch (const PlatformError&) {
            question->Answer(std::nullopt);
        }
    };
    // Without a connection it is never done: who asks doesn't wait for ever.
    QueueStatements(this, ask, [](const std::exception_ptr&) {});
    return question;
}

int CaptureNumbers::Next(const Visit& visit, Question& question) const
{
    int largest = 0;
    if (const std::optional<int> ofRows = question.Await(RowsPatienceMs)) {
        largest = *ofRows;
    } else {
        for (const QString& name : Files().FilesStartingWith(visit.SectionFolder(), visit.PicturePrefix()))
            largest = std::max(largest, NumberIn(name.sliced(visit.PicturePrefix().size())));
    }
    const std::lock_guard lock(m_mutex);
    for (const auto& [each, number] : m_held) {
        if (each == visit)
            largest = std::max(largest, number);
    }
    return largest + 1;
}

void CaptureNumbers::Hold(const Visit& visit, int number)
{
    const std::lock_guard lock(m_mutex);
    m_held.emplace_back(visit, number);
}

void CaptureNumbers::Release(const Visit& visit, int number)
{
    const std::lock_guard lock(m_mutex);
    const auto held = std::ranges::find(m_held, std::pair(visit, number));
    if (held != m_held.end())
        m_held.erase(held);
}
