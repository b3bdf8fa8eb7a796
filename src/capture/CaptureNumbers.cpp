#include "capture/CaptureNumbers.h"

#include "visit/Visit.h"

#include <algorithm>

int CaptureNumbers::NextCaptureNo(const Visit& visit) const
{
    const std::lock_guard lock(m_mutex);
    const Largest* known = Find(visit);
    return known != nullptr ? known->number : 0;
}

void CaptureNumbers::Read(const Visit& visit, const QList<int>& numbers)
{
    const std::lock_guard lock(m_mutex);
    At(visit).number = numbers.isEmpty() ? 0 : *std::ranges::max_element(numbers);
}

void CaptureNumbers::Filed(const Visit& visit, int number)
{
    const std::lock_guard lock(m_mutex);
    int& largest = At(visit).number;
    largest = std::max(largest, number);
}

bool CaptureNumbers::Knows(const Visit& visit) const
{
    const std::lock_guard lock(m_mutex);
    return Find(visit) != nullptr;
}

const CaptureNumbers::Largest* CaptureNumbers::Find(const Visit& visit) const
{
    const auto found = std::ranges::find_if(m_visits, [&](const Largest& known) {
        return known.chart == visit.chart && known.ymd == visit.ymd && known.etc == visit.etc;
    });
    return found != m_visits.end() ? &*found : nullptr;
}

CaptureNumbers::Largest& CaptureNumbers::At(const Visit& visit)
{
    if (const Largest* known = Find(visit))
        return m_visits[static_cast<size_t>(known - m_visits.data())];
    return m_visits.emplace_back(Largest{visit.chart, visit.ymd, visit.etc, 0});
}
