#include "filing/StationLease.h"

#include "filing/capture_root.h"
#include "frame/journal.h"
#include "frame/services.h"

using namespace Qt::StringLiterals;

namespace {
constexpr int RenewMs = 60'000;

QString PathOf(const QString& root, const QString& mark)
{
    return root + QString::fromUtf16(LeasePrefix) + mark;
}

/// Those of processes that have ended.
void RemoveOld(const QString& root)
{
    const QString prefix = QString::fromUtf16(LeasePrefix);
    for (const QString& name : Files().FilesStartingWith(root, prefix)) {
        if (StationLease::HolderOf(root, name.sliced(prefix.size())) == Holder::Dead)
            journal::NotingFaults([&] { DeleteFile(root + name); });
    }
}
} // namespace

StationLease::StationLease(const QString& root) : m_root(root)
{
    connect(&m_timer, &QTimer::timeout, this, &StationLease::Renew);
    m_timer.start(RenewMs);
    Renew();
    m_share.Post([root = m_root] { RemoveOld(root); });
}

StationLease::~StationLease()
{
    m_share.End(1000, [root = m_root] { DeleteFile(PathOf(root, Files().ProcessMark())); });
}

void StationLease::Renew()
{
    // One that the share holds is renewed by that.
    if (!m_share.IsIdle())
        return;
    m_share.Post([root = m_root] {
        capture_root::Check(root);
        Files().WriteWholeFile(PathOf(root, Files().ProcessMark()), {});
    });
}

Holder StationLease::HolderOf(const QString& root, const QString& mark)
{
    const Holder holder = Files().HolderOf(mark);
    if (holder != Holder::Elsewhere || !Files().IsOfThisMachine(mark))
        return holder;
    return Files().AgeMs(PathOf(root, mark)) > OldMs ? Holder::Dead : Holder::Elsewhere;
}
