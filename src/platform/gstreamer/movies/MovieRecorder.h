#pragma once

#include "frame/WorkThread.h"
#include "platform/gstreamer/live/FrameExchange.h"
#include "platform/gstreamer/movies/AviFile.h"
#include "platform/gstreamer/movies/MovieFrameMaker.h"
#include "platform/gstreamer/movies/MovieSound.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <optional>

/// Records the frames of a stream at a steady rate into one movie file after the other. Frames come in on the streaming
/// thread; encoding and writing have a thread of their own.
class MovieRecorder : public QObject, public FrameTap
{
    Q_OBJECT

public:
    /// Free bytes of the file system that holds a file; negative when it can't be told.
    using FreeSpace = std::function<qint64(const QString& nativePath)>;

    static constexpr qint64 ScarceBytes = 1'000'000'000;
    static constexpr qint64 LeastBytes = 200'000'000;
    static qint64 FreeBytes(const QString& nativePath);

    MovieRecorder(const AviFile::Format& format, std::unique_ptr<MovieSound> sound, FreeSpace freeSpace = {});
    /// Ends the recording.
    ~MovieRecorder() override;

    /// All frames from now on go into that file, those before into the one before. Throws PlatformError when the file
    /// can't be made; the recording then goes on as it was.
    void ChangeFile(const QString& nativePath);
    /// Returns when all files are whole, waiting as `filecalls::AwaitUntil` does. Gives the reason for the operator
    /// when one isn't.
    QString Finish();
    /// The disk or the share hasn't answered for so long that the recording has ended. What had been written is whole
    /// when it answers, or can be repaired when this process has ended; until then the object must not go.
    bool IsHeld() const;

    void Accept(GstSample* sample) override;

    /// The present file.
    QString Path() const;
    /// Frames of the present file.
    int Frames() const;
    /// Number of the present file, from 1.
    int FileNumber() const;
    /// Length of what was recorded in all files, in milliseconds.
    qint64 ElapsedMs() const;
    bool IsSpaceScarce() const;
    /// Frames that wait to be written.
    int Backlog() const;

Q_SIGNALS:
    /// The recording has ended by itself. The text is for the operator.
    void Ended(const QString& reason);

private:
    struct Item
    {
        std::shared_ptr<AviFile> file;
        QByteArray planes;       ///< Empty: the frame before once more.
        bool isComplete = false; ///< No frame: the file has all of its frames.
    };

    int FramesDue(GstClockTime time);
    void Work();
    void WriteFrame(const Item& item, bool isFinishing);
    void CompleteFile(AviFile& file);
    void WatchSpace();
    /// Files that aren't whole yet; nothing more goes into them. With the lock held.
    std::vector<std::shared_ptr<AviFile>> TakeUnfinished();
    void EndByItself(const QString& reason);
    /// On the thread of the object.
    void WatchWriting();
    void CompleteHeldFiles();
    bool HasEndedWriting() const;

    const AviFile::Format m_format;
    const FreeSpace m_freeSpace;
    const std::unique_ptr<MovieSound> m_sound;
    MovieFrameMaker m_maker;

    // Streaming thread.
    std::optional<GstClockTime> m_firstTime;
    GstClockTime m_lastTime = 0;
    qint64 m_framesSinceFirst = 0;

    // Writing thread.
    QByteArray m_picture;
    int m_framesToWatch = 0;

    mutable std::mutex m_mutex; // Guards all that follows.
    std::condition_variable m_changed;
    std::deque<Item> m_queue;
    std::shared_ptr<AviFile> m_file;
    QString m_path;
    int m_frames = 0;
    int m_fileNumber = 0;
    qint64 m_allFrames = 0;
    bool m_isScarce = false;
    bool m_hasEnded = false;
    bool m_isFinishing = false;
    QString m_reason;
    std::optional<std::chrono::steady_clock::time_point> m_writingSince;
    bool m_isHeld = false;
    std::vector<std::shared_ptr<AviFile>> m_heldFiles; ///< Those that weren't whole then.
    bool m_hasWorkEnded = false;

    QTimer m_watch;

    WorkThread m_worker;
};
