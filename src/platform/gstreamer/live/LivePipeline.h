#pragma once

#include "platform/gstreamer/devices/VideoMode.h"

#include <QObject>

#include <chrono>
#include <memory>

class FrameExchange;
class FrameMemory;

/// What a stream comes from.
struct LiveSource
{
    bool isTestPicture = false;
    QString node; ///< Device file of a camera.
    VideoMode mode;
    /// Stands in for a device, in the media library's own notation; empty when there is one.
    QByteArray elements = {};
    bool deinterlaces = true; ///< What says that it is interlaced.
};

/// One stream from a device to the frame exchange. Its signals come on the thread that it lives on.
class LivePipeline : public QObject
{
    Q_OBJECT

public:
    /// `frames` were counted before this stream. `memory` takes what is kept of them; null for none.
    explicit LivePipeline(int frames, const std::shared_ptr<FrameMemory>& memory = nullptr);
    ~LivePipeline() override;

    /// Starts the stream. Waits for the first frame or a fault, no longer than `patience`; a slower device goes on
    /// starting by itself. Throws PlatformError with the device's reason.
    void Open(const LiveSource& source, std::chrono::milliseconds patience);
    /// Ends the stream; the device is free when this returns.
    void Close();

    const std::shared_ptr<FrameExchange>& Frames() const;

Q_SIGNALS:
    /// There are new frames. Frames that come while this waits to be delivered are told of by it too.
    void FrameReady();
    /// The stream has ended by itself.
    void Failed();

private:
    class Worker;

    std::unique_ptr<Worker> m_worker;
};

/// Makes the media library ready; slow the first time. Thread-safe.
void PrepareMedia();
