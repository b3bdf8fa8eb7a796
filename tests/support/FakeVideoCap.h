#pragma once

#include "contracts/VideoCap.h"

/// A video control without a device behind it: its frames are drawn on demand, each darker or lighter by its number.
class FakeVideoCap : public VideoCap
{
    Q_OBJECT

public:
    QStringList devices = {QStringLiteral("fake")};
    bool live = false; ///< A frame can be had.
    bool slow = false; ///< Of a live picture: a press has to wait for its frame.
    int before = 0;    ///< Seconds that are kept for `HoldMoments`.
    int frames = 0;    ///< Number of the last frame that was handed out.
    QSize frameSize{320, 240};
    QString dialogFault; ///< What its dialogs throw.
    bool room = true;    ///< The disk has room for a movie.
    bool deinterlaces = true;
    QMargins margins;   ///< Of the live picture.
    QStringList movies; ///< Paths that were begun with `CaptureMode`, in order; each is a partial file until it ends.
    QStringList calls;  ///< Members called that change the device's state, in order.

    /// Registers the control under its name; the last one made is found by `Last`.
    static void Register();
    static FakeVideoCap* Last();

    explicit FakeVideoCap(QWidget* parent = nullptr);

    VideoNames Devices() const override { return {devices}; }
    VideoNames VideoFormats() const override { return {{QStringLiteral("320x240")}}; }
    VideoNames VideoInputs() const override { return {{QStringLiteral("0")}}; }
    void setDevice(int position) override { calls << QStringLiteral("Device %1").arg(position); }
    void setVideoFormat(int position) override { calls << QStringLiteral("VideoFormat %1").arg(position); }
    void setVideoInput(int position) override { calls << QStringLiteral("VideoInput %1").arg(position); }
    bool Deinterlaces() const override { return deinterlaces; }
    void setDeinterlaces(bool on) override { deinterlaces = on; }
    void Start() override;
    void Stop() override;
    bool CaptureMode() const override { return m_captureMode; }
    void setCaptureMode(bool on) override;
    void setCaptureFileName(const QString& path) override { m_movie = path; }
    void setUseCustomVideoFormat(bool) override {}
    void setCustomVideoWidth(int) override {}
    void setCustomVideoHeight(int) override {}
    void setFrameRate(int) override {}
    void setCaptureAudio(bool) override {}
    void setCaptureVideo(bool) override {}
    void setCompleteMovie(bool) override {}
    bool HasRoomForMovie(const QString&) const override { return room; }
    void setKeepMovieFormat(bool) override {}
    void SnapShotJPEG(const QString& path, int quality) override;
    std::shared_ptr<const StillFrame> HoldFrame() override;
    void setPictureMargins(const QMargins& value) override { margins = value; }
    QSize PictureShape() const override { return live ? frameSize : QSize(); }
    std::shared_ptr<const AwaitedFrame> AwaitFrame() override;
    void setMomentsBefore(int seconds) override { before = seconds; }
    /// A dozen frames with the numbers from 1001 on, 300 ms apart; the one 600 ms before the press is the sharpest.
    std::shared_ptr<const FrameMoments> HoldMoments(const StillFrame& press) override;
    void Reopen() override { calls << QStringLiteral("Reopen"); }
    /// What waits for a frame gets the next one, or none.
    void AnswerAwaited(bool hasFrame);
    void ShowDriverDialog1(int) override { ShowDialog(QStringLiteral("Dialog1")); }
    void ShowDriverDialog2(int) override { ShowDialog(QStringLiteral("Dialog2")); }

    /// Number of the frame that a stored still holds.
    static int FrameNumber(const QString& path);

private:
    void ShowDialog(const QString& call);
    static QString Partial(const QString& path);
    void EndFile();

    class Awaited;
    QList<std::shared_ptr<Awaited>> m_awaited;
    bool m_captureMode = false;
    QString m_movie;
    QString m_open; ///< The movie that is being written.
};
