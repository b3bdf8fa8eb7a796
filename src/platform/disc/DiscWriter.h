#pragma once

#include "contracts/cd.h"
#include "platform/disc/DiscTarget.h"
#include "platform/disc/staged_files.h"
#include "platform/disc/usb_sticks.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <optional>

class BurnWindow;
class StickRun;
class XorrisoRun;

/// The one CD writer of the process: writes the staging folder to the drive that was chosen, else to the first, reads
/// it back and compares, and tells how it goes in a window of its own. Everything runs in the event loop; the work is a
/// child process's, or a thread's where it goes to a stick.
class DiscWriter : public QObject
{
    Q_OBJECT

public:
    /// `devices` is the folder of device files.
    explicit DiscWriter(QString devices = QStringLiteral("/dev/"));
    ~DiscWriter() override;

    void UseImage(const QString& path) { m_image = path; }
    void UseSticks(bool use) { m_usesSticks = use; }
    void UseDrive(const QString& path);
    void ShowOver(QWidget& screen);
    void AddFolder(const QString& folder) { m_added = folder; }
    /// Throws PlatformError when the operator gives up the wait for the list.
    QList<DriveEntry> Drives();

    /// The same when he gives up the drive.
    bool Equipped();
    QString BurnArea() const;
    DiscContent Content() const;
    qint64 KnownRoom() const;
    bool IsBurning() const { return m_stage != Stage::Idle; }
    /// Burning, or asking a drive.
    bool IsBusy() const { return IsBurning() || m_isAsking; }
    void StartBurn();
    void Finish();
    QString Interrupted();

private:
    enum class Stage { Idle, Preparing, Writing, Reloading, Checking, Cancelling, Stick };

    QString ImageOrDevice() const;
    /// The stick that was chosen, while it is there.
    std::optional<UsbStick> ChosenStick();
    DiscMedium AskMedium(const DiscTarget& target);

    void Prepare();
    void Judge(const DiscMedium& medium);
    void Write(const DiscMedium& medium);
    void WriteStick(const UsbStick& stick);
    void EndStick();
    void EndWriting();
    void Reload();
    void Check();
    void EndChecking();

    /// Starts the program for a stage; `EndStage` follows under the eye of `Attempt`.
    void Run(Stage stage, const QStringList& commands);
    void EndStage();
    /// Runs a step; a fault of it ends the burn.
    template <class Step>
    void Attempt(Step&& step);
    /// Takes the present run out; it is deleted once control is back in the event loop.
    XorrisoRun& TakeRun();

    /// Nothing is spoilt by breaking off now.
    bool CanStop() const;
    void Cancel();
    void Succeed();
    void Fail(const QString& what);
    void EndCancelled();
    void End();
    void EmptyStaging();

    /// Stands on the disk while a burn is under way: the next start finds it when this process couldn't end it.
    QString MarkPath() const;
    void LeaveMark();
    void RemoveAdded();

    void ShowBytes(qint64 bytes, double share);
    void ShowEnd(const QString& text, bool canEmpty);
    BurnWindow& Window();

    QString m_devices;
    QString m_image;
    bool m_usesSticks = false;
    QString m_chosen; ///< Path of a drive; empty: the first.
    QList<UsbStick> m_sticks;
    QPointer<QWidget> m_screen;
    QString m_added; ///< Folder that goes to the disc as well.
    bool m_isAsking = false;
    std::optional<DiscMedium> m_found; ///< What the drive told last.
    QElapsedTimer m_foundAt;
    Stage m_stage = Stage::Idle;
    DiscTarget m_target{QString(), false};
    bool m_isStick = false;
    bool m_isOnce = false; ///< What is written to can't be written again.
    bool m_keepsMark = false;
    StagedFiles m_staged;
    StagedFiles m_addedFiles;
    qint64 m_stagedBytes = 0;
    std::unique_ptr<XorrisoRun> m_run;
    std::unique_ptr<StickRun> m_stick;
    QElapsedTimer m_stageTime;
    QTimer m_checkTimer;  ///< Looks how far the check is.
    QTimer m_reloadTimer; ///< Waits for the medium to come back.
    QString m_said;       ///< How the last burn ended.
    bool m_hasSucceeded = false;
    QPointer<BurnWindow> m_window;
};
