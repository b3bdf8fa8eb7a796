#include "platform/disc/StickRun.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "platform/disc/staged_files.h"

#include <QFile>
#include <QScopeGuard>

#include <atomic>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {
constexpr int LookMs = 100;
constexpr int StopPatienceMs = 3000;
constexpr qsizetype PieceBytes = qsizetype(1) << 20;
/// A folder's and a name's own share, in clusters of a large stick.
constexpr qint64 FileRoomBytes = 64 * 1024;

const QString Unfinished = u"미완성_"_s;

enum Step { Writing, Reading, Ejecting };

/// Of the file system that the folder is on; 0 when it is gone.
dev_t DeviceOf(const QString& folder)
{
    struct stat facts = {};
    return stat(QFile::encodeName(folder).constData(), &facts) == 0 ? facts.st_dev : 0;
}

/// What the kernel has kept of a file while it was written would be read back instead of the stick.
void ForgetKept(const QString& path)
{
    const int file = open(QFile::encodeName(path).constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    if (file < 0)
        return;
    posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED);
    close(file);
}
} // namespace

struct StickRun::State
{
    UsbStick stick;
    QString name;
    QList<StickFile> files;
    qint64 totalBytes = 0;
    dev_t device = 0;
    bool hasBegun = false; ///< The folder stands.
    std::atomic<bool> stop = false;
    std::atomic<int> step = Writing;
    std::atomic<qint64> done = 0;
    std::atomic<bool> hasEnded = false;
    Result result; ///< Written before `hasEnded`, read after.

    QString Root() const { return stick.folder + u'/'; }

    void Run()
    {
        const QString folder = FreeName();
        const QString partial = Unfinished + folder;
        try {
            Prepare(partial);
            Copy(partial);
            Compare(partial);
            if (!stop) {
                Files().RenameFile(Root() + partial, Root() + folder);
                Sync();
                step = Ejecting;
                Eject(folder);
                return;
            }
            result = {Result::Stopped, {}};
        } catch (const PlatformError& error) {
            const bool isGone =
                DeviceOf(stick.folder) != device || (hasBegun && Files().KindOf(Root() + partial) == FileKind::None);
            result = {Result::Failed, isGone ? GoneText(partial) : error.Text()};
            if (isGone)
                return;
        }
        journal::NotingFaults([&] { Files().DeleteEntry(Root(), partial); });
    }

    QString GoneText(const QString& partial) const
    {
        return u"USB 메모리가 빠졌습니다.!!"_s +
               (hasBegun ? u" 남은 폴더(%1)는 온전하지 않습니다."_s.arg(partial) : QString());
    }

    QString FreeName() const
    {
        for (int number = 1;; ++number) {
            QString candidate = number == 1 ? name : name + u"-%1"_s.arg(number);
            if (Files().KindOf(Root() + candidate) == FileKind::None &&
                Files().KindOf(Root() + Unfinished + candidate) == FileKind::None)
                return candidate;
        }
    }

    void Prepare(const QString& partial)
    {
        device = DeviceOf(stick.folder);
        const qint64 free = Files().FreeBytes(stick.folder);
        const qint64 needed = totalBytes + (files.size() + 1) * FileRoomBytes;
        if (free >= 0 && free < needed)
            throw PlatformError(u"USB 메모리의 남은 공간이 부족합니다.!!"_s);
        CheckAccess();
        Files().MakeOneFolder(Root() + partial);
        hasBegun = true;
    }

    void CheckAccess() const
    {
        if (access(QFile::encodeName(stick.folder).constData(), W_OK) == 0)
            return;
        if (errno == EROFS)
            throw PlatformError(u"USB 메모리가 쓰기 금지되어 있습니다.!!"_s);
        throw PlatformError(errno == EACCES ? u"USB 메모리에 쓸 권한이 없습니다.!!"_s
                                            : u"USB 메모리가 빠졌습니다.!!"_s);
    }

    void Copy(const QString& partial)
    {
        qint64 before = 0;
        for (const StickFile& file : files) {
            CheckDevice();
            const QString target = Root() + partial + u'/' + file.to;
            MakeFoldersOf(partial, file.to);
            const CopyOutcome outcome =
                Files().CopyToNewFile(file.from, target, [this, before](qint64 doneBytes, qint64) {
                    done = before + doneBytes;
                    return !stop.load();
                });
            if (outcome == CopyOutcome::NameTaken)
                throw PlatformError(u"USB 메모리에 같은 이름의 파일이 있습니다.!! (%1)"_s.arg(file.to));
            if (stop)
                return;
            before += file.bytes;
            done = before;
        }
    }

    void MakeFoldersOf(const QString& partial, const QString& path) const
    {
        for (qsizetype at = path.indexOf(u'/'); at >= 0; at = path.indexOf(u'/', at + 1)) {
            const QString folder = Root() + partial + u'/' + path.left(at);
            if (!FolderExists(folder))
                Files().MakeOneFolder(folder);
        }
    }

    void Compare(const QString& partial)
    {
        done = 0;
        if (!stop)
            step = Reading;
        for (const StickFile& file : files) {
            if (stop)
                return;
            CheckDevice();
            const QString copy = Root() + partial + u'/' + file.to;
            ForgetKept(copy);
            if (!IsSame(file.from, copy))
                throw PlatformError(u"USB 메모리에 쓴 내용이 원본과 다릅니다.!!\n%1"_s.arg(file.to));
        }
    }

    bool IsSame(const QString& one, const QString& other)
    {
        QFile first(one);
        QFile second(other);
        if (!first.open(QIODevice::ReadOnly) || !second.open(QIODevice::ReadOnly) || first.size() != second.size())
            return false;
        while (!first.atEnd() && !stop) {
            const QByteArray piece = first.read(PieceBytes);
            if (piece.isEmpty() || piece != second.read(PieceBytes))
                return false;
            done += piece.size();
        }
        return true;
    }

    /// Where the stick was mounted there may be a folder of the machine's own disk now.
    void CheckDevice() const
    {
        if (DeviceOf(stick.folder) != device)
            throw PlatformError(u"USB 메모리가 빠졌습니다.!!"_s);
    }

    void Sync() const
    {
        const int folder = open(QFile::encodeName(stick.folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        const auto close = qScopeGuard([folder] { ::close(folder); });
        if (folder < 0 || (fsync(folder) != 0 && errno != EINVAL))
            throw PlatformError(u"USB 메모리에 쓰지 못했습니다.!!"_s);
    }

    void Eject(const QString& folder)
    {
        const QString written = u"USB 메모리에 저장하였습니다. (%1)\n"_s.arg(folder);
        const QString fault = UnmountStick(stick);
        result = {Result::Succeeded,
                  written + (fault.isEmpty() ? u"이제 빼도 됩니다."_s : fault + u" 분리한 다음에 빼십시오."_s)};
    }
};

StickRun::StickRun(UsbStick stick, const QString& name, const QList<StickFile>& files)
    : m_state(std::make_shared<State>())
{
    m_state->stick = std::move(stick);
    m_state->name = name;
    m_state->files = files;
    for (const StickFile& file : files)
        m_state->totalBytes += file.bytes;
    m_look.setInterval(LookMs);
    connect(&m_look, &QTimer::timeout, this, &StickRun::Look);
}

StickRun::~StickRun()
{
    Stop();
    m_thread.End(StopPatienceMs);
}

void StickRun::Start()
{
    m_look.start();
    m_thread.Post([state = m_state] {
        try {
            state->Run();
        } catch (const PlatformError& error) {
            state->result = {Result::Failed, error.Text()};
        }
        state->hasEnded = true;
        PostToScreen([] {});
    });
}

void StickRun::Stop()
{
    m_state->stop = true;
}

bool StickRun::HasEnded() const
{
    return m_state->hasEnded;
}

StickRun::Result StickRun::Told() const
{
    return m_state->result;
}

void StickRun::Look()
{
    if (m_state->hasEnded) {
        m_look.stop();
        Q_EMIT Ended();
        return;
    }
    for (const int step = m_state->step; m_step < step;) {
        ++m_step;
        if (m_step == Reading)
            Q_EMIT Checking();
        else
            Q_EMIT Unmounting();
    }
    if (m_step != Ejecting && m_state->totalBytes > 0)
        Q_EMIT Written(m_state->done, static_cast<double>(m_state->done) / static_cast<double>(m_state->totalBytes));
}
