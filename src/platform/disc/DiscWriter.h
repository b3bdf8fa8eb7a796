#pragma once

#include "contracts/cd.h"
#include "platform/disc/DiscTarget.h"
#include "platform/disc/staged_files.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QTimer>

class BurnWindow;
class XorrisoRun;

/// The one CD writer of the process: writes the staging folder to the first drive, reads it back and compares, and
/// tells how it goes in a window of its own. Everything runs in the event loop; the work is a child process's.
class DiscWriter : public QObject
{
    Q_OBJECT

public:
    /// `devices` is the folder of device files.
    explicit DiscWriter(QString devices = QStringLiteral("/dev/"));
    ~DiscWriter() override;

    void UseImage(const QString& path) { m_image = path; }
    QList<DriveEntry> Drives() const;

    bool Equipped() const;
    QString BurnArea() const;
    bool IsBurning() const { return m_stage != Stage::Idle; }
    void StartBurn();

private:
    enum class Stage { Idle, Preparing, Writing, Reloading, Checking, Cancelling };

    void Prepare();
    void Write(const DiscMedium& medium);
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

    void Cancel();
    void Succeed();
    void Fail(const QString& what);
    void EndCancelled();
    void End();
    void EmptyStaging();

    void ShowBytes(qint64 bytes, double share);
    BurnWindow& Window();

    QString m_devices;
    QString m_image;
    Stage m_stage = Stage::Idle;
    DiscTarget m_target{QString(), false};
    StagedFiles m_staged;
    qint64 m_stagedBytes = 0;
    std::unique_ptr<XorrisoRun> m_run;
    QElapsedTimer m_stageTime;
    QTimer m_checkTimer;  ///< Looks how far the check is.
    QTimer m_reloadTimer; ///< Waits for the medium to come back.
    QPointer<BurnWindow> m_window;
};
