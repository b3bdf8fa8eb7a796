#include "sender/SenderLife.h"

#include "contracts/dicom.h"
#include "contracts/files.h"
#include "contracts/setup_components.h"
#include "frame/components.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "pacs/pacs_setup.h"
#include "pacs/queue_rows.h"
#include "pacs/SenderQueue.h"
#include "records/Statement.h"
#include "sender/former_lists.h"
#include "sender/Ledger.h"
#include "sender/pauses.h"
#include "sender/Sender.h"

#include <QEventLoop>
#include <QTimer>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int FirstPauseMs = 2000;
constexpr int LongestPauseMs = 60'000;

void Wait(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(pauses::Of(ms), &loop, &QEventLoop::quit);
    loop.exec();
}

struct Start
{
    ClientSetupRecord setup;
    SaupRecords places;
};

/// False when there is nothing to be started for. Tries again for as long as the setup or the database isn't there.
bool AwaitStart(Ledger& ledger, Start& start)
{
    for (int pauseMs = FirstPauseMs;; pauseMs = std::min(pauseMs * 2, LongestPauseMs)) {
        Connection.reset();
        const auto profile = CreateObject<clsStartProfile>(u"prjStartProfile.clsStartProfile"_s);
        if (profile->SetupRead(start.setup, start.places, true, Connection))
            return !start.setup.Pacs.Host.isEmpty();
        ledger.Tell(QString::fromUtf16(queue_rows::AwayReason), u"설정이나 데이터베이스를 쓸 수 없습니다.!!"_s);
        Wait(pauseMs);
    }
}

bool HasLines()
{
    const SenderQueue::State state = SenderQueue().Look();
    return state.lines > 0 || state.serviceLines > 0 || state.heldLines > 0;
}

enum class Next { Nothing, Looks, StartsAgain, Fails };

Next Work()
{
    Ledger ledger;
    ledger.Tell(QString::fromUtf16(queue_rows::SenderMark), Files().ProcessMark());
    TakeFormerLists(ledger);
    Start start;
    Next next = Next::Looks;
    const SenderQueue::State state = SenderQueue().Look();
    const bool isAnythingThere = state.waiting > 0 || state.movies > 0 || state.held > 0 ||
                                 state.due != service_rows::Kinds() || state.serviceLines > 0 || state.hasOpenSteps;
    if (isAnythingThere && !AwaitStart(ledger, start)) {
        next = Next::Nothing;
    } else if (isAnythingThere) {
        Sender sender(ledger, start.setup, start.places, SetupDigest(start.setup, start.places));
        QEventLoop loop;
        QObject::connect(&sender, &Sender::Ended, &loop, &QEventLoop::quit);
        loop.exec();
        if (sender.HasFailed())
            return Next::Fails;
        next = sender.HasOtherSetup() ? Next::StartsAgain : Next::Looks;
    }
    ledger.Tell(QString::fromUtf16(queue_rows::SenderMark), {});
    return next;
}

} // namespace

bool LiveAsSender()
{
    journal::NotingFaults([] { CreateObject<DicomKit>(QString::fromUtf16(DicomKitName))->RemoveLeftObjects(); });
    for (Next next = Next::StartsAgain; next != Next::Nothing;) {
        // Without the lock: a line may have come in after the last look, by one who saw this sender live.
        if (next == Next::Looks && !HasLines())
            return true;
        const std::unique_ptr<FileLock> lock = Files().Lock(SenderQueue::LockPath());
        if (lock == nullptr)
            return true;
        next = Work();
        if (next == Next::Fails)
            return false;
    }
    return true;
}
