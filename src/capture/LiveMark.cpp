#include "capture/LiveMark.h"

#include "frame/journal.h"
#include "frame/services.h"
#include "pacs/handed_files.h"

namespace {
/// The sender holds it for a moment when it looks; another screen of this user for as long as it is there.
constexpr int AgainMs = 200;
} // namespace

LiveMark::LiveMark()
{
    m_again.setInterval(AgainMs);
    QObject::connect(&m_again, &QTimer::timeout, &m_again, [this] { Take(); });
}

void LiveMark::setLive(bool isLive)
{
    m_again.stop();
    if (!isLive) {
        m_lock.reset();
    } else if (m_lock == nullptr) {
        m_again.start();
        Take();
    }
}

void LiveMark::Take()
{
    // One that can't be had at all isn't asked for again.
    const bool isAsked = journal::NotingFaults([this] { m_lock = Files().Lock(handed_files::LiveLockPath()); });
    if (!isAsked || m_lock != nullptr)
        m_again.stop();
}
