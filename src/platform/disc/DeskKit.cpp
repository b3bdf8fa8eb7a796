#include "platform/disc/DeskKit.h"

#include "contracts/desktop.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/controls.h"
#include "frame/plain_text.h"
#include "frame/services.h"
#include "frame/WorkThread.h"
#include "platform/disc/staged_files.h"

#include <QApplication>
#include <QEventLoop>
#include <QPointer>
#include <QProgressDialog>
#include <QPushButton>
#include <QScopeGuard>
#include <QTimer>

#include <atomic>
#include <limits>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int QuietMs = 400; ///< A copy that is done by then shows no window.
constexpr int LookMs = 100;
constexpr int BarSteps = 1000;

/// One copy, seen from both threads.
struct CopyState
{
    std::atomic<qint64> done = 0;
    std::atomic<qint64> total = 0;
    std::atomic<bool> stop = false;
    QString fault; ///< Written before the thread ends, read after.
};

qsizetype NameStart(const QString& path)
{
    return qMax(path.lastIndexOf(u'/'), path.lastIndexOf(u'\\')) + 1;
}

/// The file of that name in the folder, whatever its case: on the disc's Windows names they are one. Empty when there
/// is none.
QString NameTakenBy(const QString& folder, const QString& name)
{
    for (const FolderEntry& entry : Files().Entries(folder)) {
        if (entry.Name.compare(name, Qt::CaseInsensitive) == 0)
            return entry.Name;
    }
    return {};
}

void CopyBeside(const QString& source, const QString& target, CopyState& state)
{
    const QString folder = target.left(NameStart(target));
    const QString name = target.mid(NameStart(target));
    const auto progress = [&state](qint64 done, qint64 total) {
        state.done = done;
        state.total = total;
        return !state.stop;
    };
    for (int number = 1; !state.stop; ++number) {
        const QString candidate = number == 1 ? name : NumberedName(name, number);
        const QString there = NameTakenBy(folder, candidate);
        if (!there.isEmpty()) {
            if (Files().SameContent(source, folder + there))
                return;
            continue;
        }
        if (Files().CopyToNewFile(source, folder + candidate, progress) != CopyOutcome::NameTaken)
            return;
    }
}

/// Goes when the copy is over; a cancel ends the copy first.
class CopyWindow : public QProgressDialog
{
public:
    CopyWindow(const QString& name, CopyState& state) : QProgressDialog(QApplication::activeWindow())
    {
        setObjectName(u"copyWindow"_s);
        setWindowTitle(u"파일 복사"_s);
        setWindowModality(Qt::ApplicationModal);
        setMinimumWidth(380);
        setMinimumDuration(0);
        setAutoReset(false);
        setLabel(new PlainLabel(name, this));
        setRange(0, BarSteps);
        setCancelButton(Named(new QPushButton(u"취소"_s, this), u"cmdCancel"_s, u"취소"_s));
        connect(this, &QProgressDialog::canceled, this, [&state] { state.stop = true; });
        connect(&m_look, &QTimer::timeout, this, [this, &state] {
            if (state.total > 0)
                setValue(static_cast<int>(state.done * BarSteps / state.total));
        });
        m_look.start(LookMs);
    }

private:
    QTimer m_look;
};

} // namespace

void DeskKit::FileCopyDialog(const QString& source, const QString& target)
{
    if (m_cancelled)
        return;
    const QString name = source.mid(NameStart(source));
    CopyState state;
    {
        WorkThread thread;
        const auto wait = qScopeGuard([&] { thread.AwaitIdle(); });
        QEventLoop loop;
        const auto isDone = std::make_shared<bool>(false);
        thread.Post([&, isDone, quit = QPointer(&loop)] {
            try {
                CopyBeside(source, target, state);
            } catch (const PlatformError& error) {
                state.fault = error.Text();
            }
            PostToScreen([isDone, quit] {
                *isDone = true;
                if (quit)
                    quit->quit();
            });
        });
        QTimer quiet;
        quiet.setSingleShot(true);
        QObject::connect(&quiet, &QTimer::timeout, &loop, &QEventLoop::quit);
        quiet.start(QuietMs);
        loop.exec(QEventLoop::ExcludeUserInputEvents);
        if (!*isDone) {
            CopyWindow window(name, state);
            window.show();
            loop.exec();
        }
        if (UseService<Desktop>().ProgramEnded())
            state.stop = true;
    }
    m_cancelled = state.stop;
    if (!state.fault.isEmpty())
        ShowInformation(u"파일을 복사하지 못했습니다.!! (%1)\n\n%2"_s.arg(name, state.fault));
}
