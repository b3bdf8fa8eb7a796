#pragma once

#include "contracts/VideoCap.h"

#include <memory>

class QPainter;
class VideoDevices;
struct VideoDevice;

/// The video capture control on GStreamer and V4L2.
class VideoControl final : public VideoCap
{
    Q_OBJECT

public:
    explicit VideoControl(std::shared_ptr<VideoDevices> devices);
    ~VideoControl() override;

    VideoNames Devices() const override;
    VideoNames VideoFormats() const override;
    VideoNames VideoInputs() const override;
    void setDevice(int position) override { m_device = position; }
    void setVideoFormat(int position) override { m_format = position; }
    void setVideoInput(int position) override { m_input = position; }

    bool Deinterlaces() const override { return m_deinterlaces; }
    void setDeinterlaces(bool on) override { m_deinterlaces = on; }

    void Start() override;
    void Stop() override;

    bool CaptureMode() const override { return m_movie.captureMode; }
    void setCaptureMode(bool on) override;
    void setCaptureFileName(const QString& path) override { m_movie.fileName = path; }
    void setUseCustomVideoFormat(bool on) override { m_movie.useCustomFormat = on; }
    void setCustomVideoWidth(int pixels) override { m_movie.width = pixels; }
    void setCustomVideoHeight(int pixels) override { m_movie.height = pixels; }
    void setFrameRate(int framesPerSecond) override { m_movie.framesPerSecond = framesPerSecond; }
    void setCaptureAudio(bool on) override { m_movie.audio = on; }
    void setCaptureVideo(bool on) override { m_movie.video = on; }
    void setCompleteMovie(bool on) override { m_movie.complete = on; }
    bool HasRoomForMovie(const QString& path) const override;
    void setKeepMovieFormat(bool on) override { m_movie.keepFormat = on; }

    void SnapShotJPEG(const QString& path, int quality) override;
    std::shared_ptr<const StillFrame> HoldFrame() override;
    void setPictureMargins(const QMargins& margins) override;
    QSize PictureShape() const override;
    std::shared_ptr<const AwaitedFrame> AwaitFrame() override;
    void setMomentsBefore(int seconds) override;
    std::shared_ptr<const FrameMoments> HoldMoments(const StillFrame& press) override;
    void Reopen() override;

    void ShowDriverDialog1(int ownerHandle) override;
    void ShowDriverDialog2(int ownerHandle) override;

Q_SIGNALS:
    /// A frame has been painted for the first time: the picture as it stands on the screen, and the frame's number
    /// counted from the start.
    void Painted(const QImage& picture, int frame);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    /// What a movie is to be like, as set.
    struct MovieSettings
    {
        bool captureMode = false;
        QString fileName;
        bool useCustomFormat = false;
        int width = 0;
        int height = 0;
        int framesPerSecond = 0;
        bool audio = false;
        bool video = false;
        bool complete = false;
        bool keepFormat = false;
    };

    struct Live;

    const VideoDevice* ChosenDevice() const;
    void UpdateArea();
    QRect PicturePlace() const { return rect().marginsRemoved(m_margins); }
    void AnswerFrames();
    void AnswerState();
    /// For a screen reader.
    void DescribeState();
    void AnswerDevices();
    void StartSession();
    void BeginSession();
    /// Goes back to the format that gave a picture, if this start is another one's. False when it isn't.
    bool GoBackToGoodFormat();
    bool RunsAsSet() const;
    int FrameCount() const;

    void Record();
    void EndMovie();
    void AnswerMovieEnd(const QString& reason);
    void PaintMovieMark(QPainter& painter) const;

    const std::shared_ptr<VideoDevices> m_devices;
    int m_device = 0;
    int m_format = 0;
    int m_input = 0;
    bool m_deinterlaces = true;
    QMargins m_margins; ///< Of the live picture.
    MovieSettings m_movie;
    const std::unique_ptr<Live> m_live;
};
