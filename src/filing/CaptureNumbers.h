#pragma once

#include "visit/Visit.h"

#include <QList>

#include <mutex>
#include <vector>

/// The largest picture number of each visit, as far as this station knows: held in memory, so that the shutter asks
/// neither the database nor a folder. It says from where on a number is looked for; whether one is free, its claim and
/// its file tell. May be used on any thread.
class CaptureNumbers
{
public:
    /// The largest number that is known of the visit, 0 when none is. The next one comes behind it.
    int NextCaptureNo(const Visit& visit) const;
    /// The rows of the visit have been read.
    void Read(const Visit& visit, const QList<int>& numbers);
    /// A picture of that number has been filed.
    void Filed(const Visit& visit, int number);
    /// Looks into the visit's folder, unless something is known of the visit: for a thread that may wait for the share.
    void LearnFromFolder(const Visit& visit);

private:
    struct Largest
    {
        Visit visit;
        int number = 0;
    };

    const Largest* Find(const Visit& visit) const;
    int& At(const Visit& visit);

    mutable std::mutex m_mutex;
    std::vector<Largest> m_visits;
};
