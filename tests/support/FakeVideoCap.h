#pragma once

#include "contracts/VideoCap.h"

/// A video control without a device behind it: its frames are drawn on demand, each darker or lighter by its number.
class FakeVideoCap : public VideoCap
{
    Q_OBJECT

public:
    QStringList devices = {QStringLiteral("fake")};
    bool live = false; ///< A frame can be had.
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
    void ShowDriverDialog1(int) override { ShowDialog(QStringLiteral("Dialog1")); }
    void ShowDriverDialog2(int) override { ShowDialog(QStringLiteral("Dialog2")); }

    /// Number of the frame that a stored still holds.
    static int FrameNumber(const QString& path);

private:
    void ShowDialog(const QString& call);
    static QString Partial(const QString& path);
    void EndFile();

    bool m_captureMode = false;
    QString m_movie;
    QString m_open; ///< The movie that is being written.
};
