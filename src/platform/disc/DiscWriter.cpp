#include "platform/disc/DiscWriter.h"

#include "contracts/desktop.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/event_loop.h"
#include "frame/guard.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "frame/waiting.h"
#include "platform/disc/BurnWindow.h"
#include "platform/disc/DiscTarget.h"
#include "platform/disc/StickRun.h"
#include "platform/disc/XorrisoRun.h"

#include <QCoreApplication>
#include <QDate>
#include <QScopeGuard>
#include <QStandardPaths>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QString FilesRemain = u"\n\n저장할 파일은 그대로 있습니다."_s;
constexpr int CheckLookMs = 500;
constexpr int ReloadRetryMs = 3000;
constexpr qsizetype NamesShown = 5;
/// A speed measured over less tells nothing.
constexpr qint64 MinimumSpeedTimeMs = 1000;
/// What a drive told of its medium holds for so long.
constexpr qint64 FreshMs = 5000;
constexpr int StickPatienceMs = 10'000;
constexpr qsizetype LongestPathShown = 200;
/// Who has left the program needn't close its message.
constexpr int ClosingPatienceMs = 10'000;

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

QList<DriveEntry> DiscWriter::Drives()
{
    QList<DriveEntry> drives = ListDiscDrives(m_image, m_devices);
    m_sticks = m_usesSticks ? MountedSticks() : QList<UsbStick>();
    for (const UsbStick& stick : m_sticks)
        drives.append({DriveTypeRemovable, stick.folder});
    return drives;
}

void DiscWriter::UseDrive(const QString& path)
{
    if (m_chosen != path)
        m_found.reset();
    m_chosen = path;
}

QString DiscWriter::ImageOrDevice() const
{
    const QList<DriveEntry> drives = ListDiscDrives(m_image, m_devices);
    for (const DriveEntry& drive : drives) {
        if (drive.Path == m_chosen)
            return m_chosen;
    }
    return drives.isEmpty() ? QString() : drives.first().Path;
}

std::optional<UsbStick> DiscWriter::ChosenStick()
{
    if (!m_usesSticks || (!m_chosen.isEmpty() && ImageOrDevice() == m_chosen))
        return std::nullopt;
    m_sticks = MountedSticks();
    for (const UsbStick& stick : m_sticks) {
        if (stick.folder == m_chosen)
            return stick;
    }
    // The first of all drives is a stick where there is none for discs.
    const bool isFirst = ImageOrDevice().isEmpty() && !m_sticks.isEmpty();
    return isFirst ? std::optional(m_sticks.first()) : std::nullopt;
}

DiscMedium DiscWriter::AskMedium(const DiscTarget& target)
{
    XorrisoRun run(target.LookCommands(), XorrisoRun::Look);
    run.Start();
    const waiting::Outcome outcome =
        waiting::Await(u"CD드라이브의 응답을 기다리고 있습니다."_s, [&run] { return run.HasEnded(); });
    if (outcome == waiting::Outcome::Cancelled)
        throw PlatformError(u"CD드라이브가 응답하지 않아 작업을 취소하였습니다.!!"_s);
    if (outcome == waiting::Outcome::Leaving)
        throw PlatformError(QString());
    return DiscTarget::MediumOf(run);
}

bool DiscWriter::Equipped()
{
    // The drive has one that asks it: a second would disturb it.
    if (IsBusy())
        return true;
    m_isAsking = true;
    const auto asked = qScopeGuard([this] { m_isAsking = false; });
    m_found.reset();
    if (ChosenStick())
        return true;
    const QString drive = ImageOrDevice();
    if (drive.isEmpty() || XorrisoRun::Program().isEmpty())
        return false;
    const DiscTarget target(drive, !m_image.isEmpty());
    m_found = target.IsImage() ? target.ImageMedium() : AskMedium(target);
    m_foundAt.start();
    return m_found->writable;
}

DiscContent DiscWriter::Content() const
{
    const bool isStick = !m_chosen.isEmpty() && ImageOrDevice() != m_chosen;
    const StagedFiles staged = ListStagedFiles(BurnArea(), isStick ? DiscNames::Stick : DiscNames::Disc);
    DiscContent content;
    for (const StagedFile& file : staged.files)
        content.files.append({file.path, staged.OnDisc(file).mid(1)});
    content.bytes = staged.files.isEmpty() ? 0 : staged.DiscBytes();
    return content;
}

qint64 DiscWriter::KnownRoom() const
{
    for (const UsbStick& stick : m_sticks) {
        if (stick.folder == m_chosen)
            return Files().FreeBytes(stick.folder);
    }
    if (!m_image.isEmpty())
        return DiscTarget(m_image, true).ImageMedium().freeBytes;
    return m_found && m_found->writable ? m_found->freeBytes : -1;
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
    if (IsBusy())
        return;
    m_stage = Stage::Preparing;
    m_keepsMark = false;
    m_isOnce = false;
    m_hasSucceeded = false;
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
    const std::optional<UsbStick> stick = ChosenStick();
    m_isStick = stick.has_value();
    const QString drive = stick ? stick->folder : ImageOrDevice();
    if (drive.isEmpty())
        throw PlatformError(u"CD드라이브가 없습니다.!!"_s);
    m_target = DiscTarget(drive, !stick && !m_image.isEmpty());
    const DiscNames names = stick ? DiscNames::Stick : DiscNames::Disc;
    m_staged = ListStagedFiles(BurnArea(), names);
    m_addedFiles = m_added.isEmpty() ? StagedFiles() : ListStagedFiles(m_added, names);
    if (!m_staged.unreadable.isEmpty())
        throw PlatformError(u"CD에 쓸 수 없는 이름이 있습니다.!! 목록에서 삭제하거나 이름을 바꾸십시오.\n"_s +
                            NameList(m_staged.unreadable));
    if (m_staged.files.isEmpty())
        throw PlatformError(u"CD에 저장할 파일이 없습니다.!!"_s);
    m_stagedBytes = 0;
    for (const QList<StagedFile>& files : {m_staged.files, m_addedFiles.files}) {
        for (const StagedFile& file : files)
            m_stagedBytes += file.bytes;
    }
    if (stick) {
        WriteStick(*stick);
        return;
    }
    Window().ShowStage(u"CD를 살펴보는 중입니다..."_s, true);
    if (m_target.IsImage())
        Judge(m_target.ImageMedium());
    else if (m_found && m_foundAt.elapsed() < FreshMs) // The screen has just asked.
        Judge(*m_found);
    else
        Run(Stage::Preparing, m_target.LookCommands());
}

void DiscWriter::Judge(const DiscMedium& medium)
{
    if (!medium.writable)
        throw PlatformError(u"CD에 쓸 수 없습니다.!!\n"_s + medium.reason);
    const qint64 needed = m_staged.DiscBytes() + (m_added.isEmpty() ? 0 : m_addedFiles.DiscBytes());
    if (medium.freeBytes >= 0 && needed > medium.freeBytes)
        throw PlatformError(u"CD의 남은 공간이 부족합니다.!!\n필요한 공간 %1, 남은 공간 %2"_s.arg(
            Megabytes(needed), Megabytes(medium.freeBytes)));
    if (medium.holdsData && !AskYesNo(u"CD에 이미 기록된 내용이 있습니다. 모두 지우고 새로 쓰시겠습니까?"_s)) {
        if (IsBurning())
            EndCancelled();
        return;
    }
    // The program may have ended while the question stood.
    if (IsBurning())
        Write(medium);
}

void DiscWriter::Write(const DiscMedium& medium)
{
    m_found.reset();
    m_isOnce = !m_target.IsImage() && medium.once;
    LeaveMark();
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
    if (!m_added.isEmpty()) {
        for (const FolderEntry& entry : Files().Entries(m_added))
            commands << u"-map"_s << m_added + entry.Name << u'/' + entry.Name;
    }
    // Whoever gets the disc may read it.
    commands << u"-find"_s << u"/"_s << u"-exec"_s << u"mkisofs_r"_s << u"--"_s << u"-commit"_s;

    Window().ShowStage(u"CD에 쓰는 중입니다..."_s, CanStop());
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
    m_run = std::make_unique<XorrisoRun>(commands, stage == Stage::Preparing ? XorrisoRun::Look : XorrisoRun::Writing);
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
    case Stage::Preparing:
        Judge(DiscTarget::MediumOf(TakeRun()));
        break;
    case Stage::Idle:
    case Stage::Stick:
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
    QHash<QString, qint64> expected = m_staged.OnDisc();
    expected.insert(m_addedFiles.OnDisc());
    bad += Differences(expected, FilesOfListing(run.Results()));
    bad.removeDuplicates();
    if (!bad.isEmpty())
        throw PlatformError(u"CD에 쓴 내용이 원본과 다릅니다.!!\n"_s + NameList(bad));
    Succeed();
}

bool DiscWriter::CanStop() const
{
    return !m_isOnce || m_stage == Stage::Reloading || m_stage == Stage::Checking;
}

void DiscWriter::Cancel()
{
    if (!IsBurning())
        return;
    m_reloadTimer.stop();
    if (m_stick != nullptr) {
        m_stick->Stop();
        // The kernel can hold a call on one that was pulled out.
        QTimer::singleShot(StickPatienceMs, m_stick.get(), GuardedSlot([this] { EndCancelled(); }));
        return;
    }
    // A drive that is only asked isn't waited for.
    if (m_run == nullptr || m_stage == Stage::Preparing) {
        EndCancelled();
        return;
    }
    m_stage = Stage::Cancelling;
    m_run->Kill();
}

void DiscWriter::WriteStick(const UsbStick& stick)
{
    if (stick.isReadOnly)
        throw PlatformError(u"USB 메모리가 쓰기 금지되어 있습니다.!!"_s);
    LeaveMark();
    const QString name = u"CAPTURE_%1"_s.arg(UseService<Desktop>().Today().toString(u"yyyyMMdd"_s));
    QList<StickFile> files;
    for (const StagedFile& file : m_staged.files)
        files.append({BurnArea() + file.path, m_staged.OnDisc(file).mid(1), file.bytes});
    for (const StagedFile& file : m_addedFiles.files)
        files.append({m_added + file.path, m_addedFiles.OnDisc(file).mid(1), file.bytes});
    m_stage = Stage::Stick;
    m_stageTime.start();
    Window().ShowStage(u"USB 메모리에 쓰는 중입니다..."_s, true);
    m_stick = std::make_unique<StickRun>(stick, name, files);
    connect(m_stick.get(), &StickRun::Written, this,
            GuardedSlot([this](qint64 bytes, double share) { ShowBytes(bytes, share); }));
    connect(m_stick.get(), &StickRun::Checking, this, GuardedSlot([this] {
                m_stageTime.start();
                Window().ShowStage(u"USB 메모리를 확인하는 중입니다..."_s, true);
            }));
    connect(m_stick.get(), &StickRun::Unmounting, this,
            GuardedSlot([this] { Window().ShowStage(u"USB 메모리를 분리하는 중입니다..."_s, false); }));
    connect(m_stick.get(), &StickRun::Ended, this, GuardedSlot([this] { Attempt([this] { EndStick(); }); }));
    m_stick->Start();
}

void DiscWriter::EndStick()
{
    const StickRun::Result result = m_stick->Told();
    if (result.kind == StickRun::Result::Stopped) {
        EndCancelled();
        return;
    }
    if (result.kind == StickRun::Result::Failed)
        throw PlatformError(result.text);
    m_hasSucceeded = true;
    End();
    ShowEnd(result.text, true);
}

void DiscWriter::Succeed()
{
    const QString image = m_target.Keep();
    m_hasSucceeded = true;
    End();
    QString text = u"CD저장이 완료되었습니다."_s;
    if (!image.isEmpty())
        text += u"\n"_s + NativePath(image);
    ShowEnd(text, true);
}

void DiscWriter::Fail(const QString& what)
{
    const QString failed = m_isStick ? u"USB 메모리에 저장하지 못했습니다.!!"_s : u"CD저장에 실패하였습니다.!!"_s;
    // Nobody is there to read it: the next start tells.
    m_keepsMark = UseService<Desktop>().EndIsRequested();
    End();
    ShowEnd(failed + u"\n\n"_s + what + FilesRemain, false);
}

void DiscWriter::EndCancelled()
{
    const QString text = m_isStick ? u"USB 메모리에 저장하기를 취소하였습니다."_s : u"CD저장을 취소하였습니다."_s;
    End();
    ShowEnd(text + FilesRemain, false);
}

void DiscWriter::End()
{
    m_stage = Stage::Idle;
    m_checkTimer.stop();
    m_reloadTimer.stop();
    if (m_run != nullptr)
        TakeRun().Kill();
    if (m_stick != nullptr) {
        m_stick->disconnect(this);
        if (m_stick->HasEnded())
            m_stick.release()->deleteLater(); // It is telling so.
        m_stick.reset();
    }
    Guarded([this] { m_target.Discard(); });
    Guarded([this] { RemoveAdded(); });
    if (!m_keepsMark)
        Guarded([this] { DeleteFile(MarkPath()); });
}

void DiscWriter::RemoveAdded()
{
    const QString added = std::exchange(m_added, QString());
    m_addedFiles = {};
    if (added.isEmpty())
        return;
    const qsizetype name = added.lastIndexOf(u'/', -2) + 1;
    Files().DeleteEntry(added.left(name), added.mid(name).chopped(1));
}

QString DiscWriter::MarkPath() const
{
    return BurnArea().chopped(1) + u"-burning"_s;
}

void DiscWriter::LeaveMark()
{
    const QString mark = Files().ProcessMark() + u'\n' + m_target.Path();
    // Not synced: what is written lately would be brought to the disk first.
    journal::NotingFaults([&] {
        DeleteFile(MarkPath());
        Files().CreateExclusively(MarkPath(), mark.toUtf8());
    });
}

QString DiscWriter::Interrupted()
{
    const QString path = MarkPath();
    if (IsBurning() || Files().KindOf(path) != FileKind::File)
        return {};
    const QString mark = QString::fromUtf8(ReadListFile(path));
    const Holder holder = Files().HolderOf(mark.section(u'\n', 0, 0));
    const bool mayLive =
        holder == Holder::Living || (holder == Holder::Elsewhere && Files().AgeMs(path) < XorrisoRun::Writing.totalMs);
    if (mayLive)
        return {};
    DeleteFile(path);
    return u"지난번 CD저장이 끝나기 전에 프로그램이 종료되었습니다.!!\n"
           "그때 쓰던 것(%1)은 온전하지 않으니 사용하지 마십시오."_s.arg(
               mark.section(u'\n', 1).left(LongestPathShown)) +
           FilesRemain;
}

void DiscWriter::Finish()
{
    if (!IsBurning())
        return;
    Desktop& desktop = UseService<Desktop>();
    const auto isOver = [this] { return !IsBurning(); };
    if (desktop.EndIsRequested() && CanStop()) {
        journal::Note(Journal::Warning, u"CD저장이 끝나기 전에 종료 요청을 받아 중단함"_s);
        m_keepsMark = true;
        End();
        return;
    }
    if (desktop.EndIsRequested()) {
        journal::Note(Journal::Warning, u"CD에 쓰는 동안 종료 요청을 받아 끝나기를 기다림"_s);
        if (!waiting::ServeFor(0, isOver) && desktop.ProgramEnded())
            event_loop::ServeUntil(
                isOver, [] { return false; }, 0);
        return;
    }
    Window().setScreen(nullptr);
    Window().setRemark(CanStop() ? u"끝나면 프로그램을 종료합니다. 바로 종료하려면 취소를 누르십시오."_s
                                 : u"끝나면 프로그램을 종료합니다. 지금 종료하면 CD를 쓸 수 없게 됩니다."_s);
    if (!waiting::ServeFor(0, isOver) && desktop.ProgramEnded()) {
        // The system ends the program meanwhile.
        Finish();
        return;
    }
    delete m_window;
    ShowInformation(m_said, m_hasSucceeded ? ClosingPatienceMs : 0);
}

void DiscWriter::EmptyStaging()
{
    if (IsBurning())
        return;
    DeleteStagedFiles(BurnArea(), m_staged);
    Window().ShowEnd(u"CD에 저장한 파일을 저장 폴더에서 비웠습니다."_s, false);
}

void DiscWriter::ShowEnd(const QString& text, bool canEmpty)
{
    m_said = text;
    // A display that is gone shows nothing any more.
    if (!UseService<Desktop>().EndIsRequested())
        Window().ShowEnd(text, canEmpty);
}

void DiscWriter::ShowOver(QWidget& screen)
{
    m_screen = &screen;
    if (m_window != nullptr)
        m_window->setScreen(m_screen);
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
        m_window->setScreen(m_screen);
        connect(m_window, &BurnWindow::CancelPressed, this, GuardedSlot([this] { Cancel(); }));
        connect(m_window, &BurnWindow::EmptyPressed, this, GuardedSlot([this] { EmptyStaging(); }));
    }
    return *m_window;
}
