#pragma once

#include <QByteArray>
#include <QMargins>
#include <QSize>
#include <QStringList>
#include <QWidget>

#include <memory>
#include <vector>

/// A frame held fast at the moment it was asked for, in the format in which the device gave it.
class StillFrame
{
public:
    virtual ~StillFrame() = default;
    /// The frame as a JPEG file. `quality` from 1 to 100. Throws PlatformError.
    virtual QByteArray EncodeJPEG(int quality) const = 0;
};

/// A frame beside a press.
struct Moment
{
    std::shared_ptr<const StillFrame> frame;
    int offsetMs = 0; ///< To the press, negative before it.
};

/// The live picture around a press, as far as it has come. Any thread.
class FrameMoments
{
public:
    static constexpr int Most = 12;
    static constexpr int BehindMs = 500; ///< So long frames are still taken.

    virtual ~FrameMoments() = default;
    /// `Most` at most, oldest first, evenly in time. The press's own frame isn't among them.
    virtual std::vector<Moment> Frames() const = 0;
    /// No frame is still to come.
    virtual bool IsComplete() const = 0;
    /// Of the frames, in the memory that holds them.
    virtual qint64 Bytes() const = 0;
};

/// A frame that a press waits for. Any thread.
class AwaitedFrame
{
public:
    static constexpr int PatienceMs = 1000; ///< A later one isn't taken.

    virtual ~AwaitedFrame() = default;
    /// The first one that came; null while there is none.
    virtual std::shared_ptr<const StillFrame> Frame() const = 0;
    /// None is still to come.
    virtual bool IsOver() const = 0;
};

/// The names that the control offers, by position from 0. A position keeps its meaning while the program runs.
struct VideoNames
{
    QStringList names;

    int Count() const { return static_cast<int>(names.size()); }
    QString Name(int position) const { return names.value(position); }
};

/// `VIDEOCAPLib.VideoCap`: the video capture control. It shows the live picture itself. Its events arrive on the
/// user-interface thread.
class VideoCap : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

    /// The devices of the machine, as they are now. A device once listed keeps its position, also when it is
    /// unplugged.
    virtual VideoNames Devices() const = 0;
    /// The formats of the chosen device.
    virtual VideoNames VideoFormats() const = 0;
    /// The inputs of the chosen device.
    virtual VideoNames VideoInputs() const = 0;

    /// Positions in the lists above. One that the list doesn't have leads to the fault of `Start`.
    virtual void setDevice(int position) = 0;
    virtual void setVideoFormat(int position) = 0;
    virtual void setVideoInput(int position) = 0;

    /// What the device says is interlaced is deinterlaced, from the next start on; true at first. The first dialog of
    /// the driver has a switch for it.
    virtual bool Deinterlaces() const = 0;
    virtual void setDeinterlaces(bool on) = 0;

    /// The device runs and its picture shows; on a running control the present settings take effect. With
    /// `CaptureMode` it also begins to write `CaptureFileName`. Throws PlatformError when the device can't be opened.
    virtual void Start() = 0;
    /// Can be called on a stopped control.
    virtual void Stop() = 0;

    virtual bool CaptureMode() const = 0;
    virtual void setCaptureMode(bool on) = 0;
    virtual void setCaptureFileName(const QString& path) = 0;
    /// The custom width and height are used for the movie.
    virtual void setUseCustomVideoFormat(bool on) = 0;
    virtual void setCustomVideoWidth(int pixels) = 0;
    virtual void setCustomVideoHeight(int pixels) = 0;
    /// Frames per second of the movie.
    virtual void setFrameRate(int framesPerSecond) = 0;
    virtual void setCaptureAudio(bool on) = 0;
    virtual void setCaptureVideo(bool on) = 0;
    /// The movie that runs is to be completed; set before `CaptureMode` goes false.
    virtual void setCompleteMovie(bool on) = 0;
    /// The disk of that path has room to record; one that can't be asked counts as roomy.
    virtual bool HasRoomForMovie(const QString& path) const = 0;
    /// The movie's format stays in force; set to false after `CaptureMode` went false.
    virtual void setKeepMovieFormat(bool on) = 0;

    /// Writes the present frame to the path as a whole JPEG file before it returns, replacing a file that is there.
    /// Throws PlatformError without a live frame, or when the file can't be written.
    virtual void SnapShotJPEG(const QString& path, int quality) = 0;
    /// The live frame of this moment, to be filed later; null when there is none: device idle, no frame yet, or the
    /// signal lost, or the newest one half a second old.
    virtual std::shared_ptr<const StillFrame> HoldFrame() = 0;
    /// The next frame, for a press that has found none; null when none is to be expected: device idle, or the signal
    /// lost.
    virtual std::shared_ptr<const AwaitedFrame> AwaitFrame() = 0;
    /// So many seconds of the live picture are kept in memory, for `HoldMoments`; 0 for none, as at first.
    virtual void setMomentsBefore(int seconds) = 0;
    /// The live picture around this moment, at which that frame was held; null when none is kept.
    virtual std::shared_ptr<const FrameMoments> HoldMoments(const StillFrame& press) = 0;
    /// Opens a running device anew, as after a loss of its signal: the machine has slept.
    virtual void Reopen() = 0;

    /// The live picture is laid out within these margins of the control, in pixels; none at first. The control stays
    /// as it is, and black there.
    virtual void setPictureMargins(const QMargins& margins) = 0;
    /// Width and height of the live picture as it is painted, for its shape; empty while there is none.
    virtual QSize PictureShape() const = 0;

    /// Settings dialogs of the driver, owned by the window of that handle; they return when they close.
    virtual void ShowDriverDialog1(int ownerHandle) = 0;
    virtual void ShowDriverDialog2(int ownerHandle) = 0;

Q_SIGNALS:
    /// Frames processed so far, counted anew from each start and each movie file; and the time in milliseconds. While a
    /// handler serves events further ones come in, one at a time.
    void OnFrame(int frames, int timeMs);
    /// The control has ended the movie by itself: the disk is full, or the file can't be written. `CaptureMode` is
    /// false, and what was recorded is whole unless the reason says otherwise. The text is for the operator.
    void OnMovieFault(const QString& reason);
    /// A format that was set in place of another gave no picture, and the device is back at that one. Positions in the
    /// list of formats.
    void OnFormatRefused(int refused, int kept);
    /// The device has stopped by itself, or its signal came back.
    void OnDeviceChange();
};
