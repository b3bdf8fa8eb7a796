#include "filing/CaptureNumbers.h"

#include "contracts/files.h"
#include "frame/services.h"

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
    At(visit) = numbers.isEmpty() ? 0 : *std::ranges::max_element(numbers);
}

void CaptureNumbers::Filed(const Visit& visit, int number)
{
    const std::lock_guard lock(m_mutex);
    int& largest = At(visit);
    largest = std::max(largest, number);
}

void CaptureNumbers::LearnFromFolder(const Visit& visit)
{
    {
        const std::lock_guard lock(m_mutex);
        if (Find(visit) != nullptr)
            return;
    }
    for (const QString& name : Files().FilesStartingWith(visit.SectionFolder(), visit.PicturePrefix()))
        Filed(visit, visit.PictureNumber(name));
}

const CaptureNumbers::Largest* CaptureNumbers::Find(const Visit& visit) const
{
    const auto found = std::ranges::find(m_visits, visit, &Largest::visit);
    return found != m_visits.end() ? &*found : nullptr;
}

int& CaptureNumbers::At(const Visit& visit)
{
    auto found = std::ranges::find(m_visits, visit, &Largest::visit);
    if (found == m_visits.end())
        found = m_visits.insert(found, {visit, 0});
    return found->number;
}
