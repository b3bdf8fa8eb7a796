#include "platform/disc/DiscWriter.h"

#include "contracts/desktop.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "platform/disc/BurnWindow.h"
#include "platform/disc/DiscTarget.h"
#include "platform/disc/XorrisoRun.h"

#include <QCoreApplication>
#include <QDate>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace {

const QString FilesRemain = u"\n\n저장할 파일은 그대로 있습니다."_s;
constexpr int CheckLookMs = 500;
constexpr int ReloadRetryMs = 3000;
constexpr qsizetype NamesShown = 5;
/// A speed measured over less tells nothing.
constexpr qint64 MinimumSpeedTimeMs = 1000;

QString Megabytes(qint64 bytes)
{
    return QLocale::c().toString(static_cast<double>(bytes) / (1024 * 1024), 'f', bytes < 10 * 1024 * 1024 ? 1 : 0) +
           u" MB"_s;
}

QString NameList(QStringList names)
{
    names.sort();
    const qsizetype more = names.size() - NamesShown;
    QString text = names.mid(0, NamesShown).join(u'\n');
    if (more > 0)
        text += u"\n외 %1개"_s.arg(more);
    return text;
}

/// Files that the disc doesn't hold as they were staged, or that nobody staged.
QStringList Differences(const QHash<QString, qint64>& expected, const QHash<QString, qint64>& found)
{
    QStringList names;
    for (auto file = expected.cbegin(); file != expected.cend(); ++file) {
        if (found.value(file.key(), -1) != file.value())
            names << file.key();
    }
    for (auto file = found.cbegin(); file != found.cend(); ++file) {
        if (!expected.contains(file.key()))
            names << file.key();
    }
    return names;
}

} // namespace

DiscWriter::DiscWriter(QString devices) : m_devices(std::move(devices))
{
    m_checkTimer.setInterval(CheckLookMs);
    connect(&m_checkTimer, &QTimer::timeout, this, GuardedSlot([this] {
        if (m_run != nullptr && m_target.IsImage() && m_stagedBytes > 0) {
            const qint64 bytes = qMin(m_run->ReadBytes(), m_stagedBytes);
            ShowBytes(bytes, static_cast<double>(bytes) / static_cast<double>(m_stagedBytes));
        }
    }));
    m_reloadTimer.setSingleShot(true);
    m_reloadTimer.setInterval(ReloadRetryMs);
    connect(&m_reloadTimer, &QTimer::timeout, this, GuardedSlot([this] { Attempt([this] { Check(); }); }));
    if (qApp != nullptr)
        connect(qApp, &QCoreApplication::aboutToQuit, this, [this] {
            if (IsBurning())
                Guarded([this] { End(); });
            delete m_window;
        });
}

DiscWriter::~DiscWriter()
{
    if (IsBurning())
        Guarded([this] { End(); });
    // The registry outlives the application, which a window can't.
    if (qApp != nullptr)
        delete m_window;
}

QList<DriveEntry> DiscWriter::Drives() const
{
    return ListDiscDrives(m_image, m_devices);
}

bool DiscWriter::Equipped() const
{
    if (IsBurning())
        return true;
    const QList<DriveEntry> drives = Drives();
    if (drives.isEmpty() || XorrisoRun::Program().isEmpty())
        return false;
    return DiscTarget(drives.first().Path, !m_image.isEmpty()).Medium().writable;
}

QString DiscWriter::BurnArea() const
{
    QString path = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + u"/capture-station/cd/"_s;
    Files().MakePrivateFolder(path);
    Files().RemoveLeftovers(path);
    return path;
}

void DiscWriter::StartBurn()
{
    if (IsBurning())
        return;
    m_stage = Stage::Preparing;
    Attempt([this] { Prepare(); });
}

template <class Step>
void DiscWriter::Attempt(Step&& step)
{
    try {
        step();
    } catch (const PlatformError& error) {
        Fail(error.Text());
    } catch (...) {
        End();
        throw;
    }
}

void DiscWriter::Prepare()
{
    const QList<DriveEntry> drives = Drives();
    if (drives.isEmpty())
        throw PlatformError(u"CD드라이브가 없습니다.!!"_s);
    m_target = DiscTarget(drives.first().Path, !m_image.isEmpty());
    m_staged = ListStagedFiles(BurnArea());
    if (!m_staged.unreadable.isEmpty())
        throw PlatformError(u"CD에 쓸 수 없는 이름이 있습니다.!! 목록에서 삭제하거나 이름을 바꾸십시오.\n"_s +
                            NameList(m_staged.unreadable));
    if (m_staged.files.isEmpty())
        throw PlatformError(u"CD에 저장할 파일이 없습니다.!!"_s);
    m_stagedBytes = 0;
    for (const StagedFile& file : m_staged.files)
        m_stagedBytes += file.bytes;

    Window().ShowStage(u"CD를 살펴보는 중입니다..."_s, false);
    const DiscMedium medium = m_target.Medium();
    if (!medium.writable)
        throw PlatformError(u"CD에 쓸 수 없습니다.!!\n"_s + medium.reason);
    const qint64 needed = m_staged.DiscBytes();
    if (needed > medium.freeBytes)
        throw PlatformError(u"CD의 남은 공간이 부족합니다.!!\n필요한 공간 %1, 남은 공간 %2"_s.arg(
            Megabytes(needed), Megabytes(medium.freeBytes)));
    if (medium.holdsData && !AskYesNo(u"CD에 이미 기록된 내용이 있습니다. 모두 지우고 새로 쓰시겠습니까?"_s)) {
        EndCancelled();
        return;
    }
    Write(medium);
}

void DiscWriter::Write(const DiscMedium& medium)
{
    QStringList commands{u"-outdev"_s, m_target.Begin()};
    if (medium.holdsData)
        commands << u"-blank"_s << u"as_needed"_s;
    commands << u"-joliet"_s << u"on"_s << u"-close"_s << u"on"_s << u"-volid"_s
             << u"CAPTURE_%1"_s.arg(UseService<Desktop>().Today().toString(u"yyyyMMdd"_s)) << u"-follow"_s << u"off"_s
             << u"-map"_s << BurnArea() << u"/"_s;
    // Links, and what is just being copied into the folder.
    commands << u"-find"_s << u"/"_s << u"-not"_s << u"-type"_s << u"d"_s << u"-not"_s << u"-type"_s << u"f"_s
             << u"-exec"_s << u"rm"_s << u"--"_s << u"-find"_s << u"/"_s << u"-name"_s << u".station-*"_s << u"-exec"_s
             << u"rm"_s << u"--"_s;
    for (const DiscRename& rename : m_staged.renames)
        commands << u"-mv"_s << rename.from << rename.to << u"--"_s;
    // Whoever gets the disc may read it.
    commands << u"-find"_s << u"/"_s << u"-exec"_s << u"mkisofs_r"_s << u"--"_s << u"-commit"_s;

    Window().ShowStage(u"CD에 쓰는 중입니다..."_s, m_target.IsImage() || !medium.once);
    Run(Stage::Writing, commands);
    connect(m_run.get(), &XorrisoRun::Written, this,
            GuardedSlot([this](qint64 bytes, double share) { ShowBytes(bytes, share); }));
    connect(m_run.get(), &XorrisoRun::Closing, this,
            GuardedSlot([this] { Window().ShowProgress(-1, u"CD를 마무리하는 중입니다."_s); }));
}

void DiscWriter::Run(Stage stage, const QStringList& commands)
{
    if (XorrisoRun::Program().isEmpty())
        throw PlatformError(u"CD를 쓰는 프로그램(xorriso)이 설치되어 있지 않습니다.!!"_s);
    m_stage = stage;
    m_run = std::make_unique<XorrisoRun>(commands);
    m_stageTime.start();
    connect(m_run.get(), &XorrisoRun::Ended, this, GuardedSlot([this] { Attempt([this] { EndStage(); }); }));
    m_run->Start();
}

void DiscWriter::EndStage()
{
    switch (m_stage) {
    case Stage::Writing:
        EndWriting();
        break;
    case Stage::Reloading:
        Check();
        break;
    case Stage::Checking:
        EndChecking();
        break;
    case Stage::Cancelling:
        EndCancelled();
        break;
    case Stage::Idle:
    case Stage::Preparing:
        break;
    }
}

XorrisoRun& DiscWriter::TakeRun()
{
    m_run->disconnect(this);
    m_run->deleteLater();
    return *m_run.release();
}

void DiscWriter::EndWriting()
{
    const XorrisoRun& run = TakeRun();
    const QStringList changed = ChangedSince(BurnArea(), m_staged);
    if (!changed.isEmpty())
        throw PlatformError(u"CD에 쓰는 동안 바뀌거나 없어진 파일이 있습니다.!!\n"_s + NameList(changed));
    if (!run.Succeeded())
        throw PlatformError(u"CD에 쓰지 못했습니다.!!\n"_s + run.Reason());
    if (m_target.IsImage())
        Check();
    else
        Reload();
}

/// What a drive still has in its memory would be read back instead of the disc.
void DiscWriter::Reload()
{
    Run(Stage::Reloading, {u"-outdev"_s, m_target.Address(), u"-eject"_s, u"all"_s});
}

void DiscWriter::Check()
{
    if (m_run != nullptr)
        TakeRun();
    Window().ShowStage(u"CD를 확인하는 중입니다..."_s, true);
    Run(Stage::Checking, {u"-indev"_s, m_target.Address(), u"-check_md5_r"_s, u"SORRY"_s, u"/"_s, u"--"_s, u"-find"_s,
                          u"/"_s, u"-type"_s, u"f"_s, u"-exec"_s, u"lsdl"_s, u"--"_s});
    m_checkTimer.start();
}

void DiscWriter::EndChecking()
{
    m_checkTimer.stop();
    const XorrisoRun& run = TakeRun();
    if (!run.Succeeded() && !m_target.IsImage() && run.Results().isEmpty()) {
        // A drive that can't pull its tray in again waits for a hand.
        Window().ShowStage(u"CD를 드라이브에 다시 넣어 주십시오. 이어서 확인합니다."_s, true);
        m_reloadTimer.start();
        return;
    }
    QStringList bad;
    for (const QString& line : run.Results()) {
        if (line.startsWith(u"MD5 MISMATCH: "_s))
            bad << line.section(u'\'', 1, -2);
    }
    if (bad.isEmpty() && !run.Succeeded())
        throw PlatformError(u"CD에 쓴 내용을 확인하지 못했습니다.!!\n"_s + run.Reason());
    if (bad.isEmpty() && !run.Results().contains(u"File contents and their MD5 checksums match."_s))
        throw PlatformError(u"CD에 쓴 내용을 확인하지 못했습니다.!!"_s);
    bad += Differences(m_staged.OnDisc(), FilesOfListing(run.Results()));
    bad.removeDuplicates();
    if (!bad.isEmpty())
        throw PlatformError(u"CD에 쓴 내용이 원본과 다릅니다.!!\n"_s + NameList(bad));
    Succeed();
}

void DiscWriter::Cancel()
{
    if (!IsBurning())
        return;
    m_reloadTimer.stop();
    if (m_run == nullptr) {
        EndCancelled();
        return;
    }
    m_stage = Stage::Cancelling;
    m_run->Kill();
}

void DiscWriter::Succeed()
{
    const QString image = m_target.Keep();
    End();
    QString text = u"CD저장이 완료되었습니다."_s;
    if (!image.isEmpty())
        text += u"\n"_s + NativePath(image);
    Window().ShowEnd(text, true);
}

void DiscWriter::Fail(const QString& what)
{
    End();
    Window().ShowEnd(u"CD저장에 실패하였습니다.!!\n\n"_s + what + FilesRemain, false);
}

void DiscWriter::EndCancelled()
{
    End();
    Window().ShowEnd(u"CD저장을 취소하였습니다."_s + FilesRemain, false);
}

void DiscWriter::End()
{
    m_stage = Stage::Idle;
    m_checkTimer.stop();
    m_reloadTimer.stop();
    if (m_run != nullptr)
        TakeRun().Kill();
    Guarded([this] { m_target.Discard(); });
}

void DiscWriter::EmptyStaging()
{
    if (IsBurning())
        return;
    DeleteStagedFiles(BurnArea(), m_staged);
    Window().ShowEnd(u"CD에 저장한 파일을 저장 폴더에서 비웠습니다."_s, false);
}

void DiscWriter::ShowBytes(qint64 bytes, double share)
{
    QString detail = Megabytes(bytes);
    const qint64 elapsedMs = m_stageTime.elapsed();
    if (elapsedMs >= MinimumSpeedTimeMs && share > 0) {
        const qint64 leftSeconds = qRound64(static_cast<double>(elapsedMs) * (1 - share) / share / 1000);
        detail += u"   초당 %1   남은 시간 %2:%3"_s.arg(Megabytes(bytes * 1000 / elapsedMs))
                      .arg(leftSeconds / 60)
                      .arg(leftSeconds % 60, 2, 10, QChar(u'0'));
    }
    Window().ShowProgress(share, detail);
}

BurnWindow& DiscWriter::Window()
{
    if (m_window == nullptr) {
        m_window = new BurnWindow;
        connect(m_window, &BurnWindow::CancelPressed, this, GuardedSlot([this] { Cancel(); }));
        connect(m_window, &BurnWindow::EmptyPressed, this, GuardedSlot([this] { EmptyStaging(); }));
    }
    return *m_window;
}
