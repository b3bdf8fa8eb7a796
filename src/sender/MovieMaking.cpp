#include "sender/MovieMaking.h"

#include "contracts/files.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "pacs/handed_files.h"
#include "pacs/parts.h"
#include "sender/pacs_contents.h"
#include "sender/pauses.h"
#include "sender/sending.h"

#include <QPointer>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int FirstPauseMs = 10'000;
constexpr int MostDoublings = 5;
constexpr int EndPatienceMs = 3000;

/// Whoever shows one waits for this a moment at most.
bool IsLive()
{
    try {
        return Files().Lock(handed_files::LiveLockPath()) == nullptr;
    } catch (const PlatformError&) {
        return true;
    }
}

} // namespace

void MovieMaking::Look()
{
    if (!m_setup.Pacs.SendsMovies) {
        // The setup wanted them when they were handed over.
        if (const std::optional<PacsEntry> unwanted = m_ledger.RawMovie())
            m_ledger.Gone(*unwanted);
        return;
    }
    if (m_isUnderWay) {
        if (IsLive())
            m_stop.request_stop();
        return;
    }
    const std::optional<PacsEntry> movie = m_ledger.RawMovie();
    if (!movie || IsLive())
        return;
    m_isUnderWay = true;
    m_stop = std::stop_source();
    m_work.Post([entry = *movie, source = MovieSource(*movie, movie->VisitBelow(m_setup.CaptureRoot)),
                 hasSound = m_setup.Pacs.MovieSound, stop = m_stop.get_token(), self = QPointer(this)] {
        EncodedMovie made;
        std::exception_ptr fault;
        try {
            // One that isn't there any more is found out when its turn comes.
            if (Files().KindOf(source) == FileKind::File || !FolderExists(source.left(source.lastIndexOf(u'\\'))))
                made = UseService<MovieEncoder>().Encode(source, handed_files::MoviePath(entry.id), hasSound, stop);
        } catch (...) {
            fault = std::current_exception();
        }
        PostToScreen([self, entry, made, fault] {
            if (self)
                journal::NotingFaults([&] { self->Answer(entry, made, fault); });
        });
    });
}

void MovieMaking::Answer(const PacsEntry& entry, const EncodedMovie& movie, const std::exception_ptr& fault)
{
    m_isUnderWay = false;
    if (fault == nullptr) {
        m_ledger.MovieIsReady(entry, sending::TextOf(movie));
        if (!m_ledger.NeededFiles().contains(entry.id))
            handed_files::Remove(entry.id);
    } else if (m_stop.stop_requested()) {
        m_ledger.Later(entry, {}, 0, false);
    } else if (guard::Is<MovieUnusable>(fault)) {
        m_ledger.SetAside(entry, guard::TextOf(fault).simplified());
        journal::NoteFault(guard::TextOf(fault));
    } else {
        m_ledger.Later(entry, guard::TextOf(fault).simplified(),
                       pauses::Of(FirstPauseMs << std::min(entry.tries, MostDoublings)), false);
    }
}

void MovieMaking::End()
{
    m_stop.request_stop();
    m_work.End(EndPatienceMs);
}
