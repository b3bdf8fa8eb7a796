#include "platform/gstreamer/live/LivePipeline.h"

#include "contracts/PlatformError.h"
#include "platform/gstreamer/live/FrameExchange.h"
#include "platform/gstreamer/MediaFault.h"
#include "platform/gstreamer/testpicture/TestPictureSource.h"

#include <gst/app/gstappsink.h>

#include <QFile>

#include <atomic>
#include <condition_variable>

using namespace Qt::StringLiterals;

void PrepareMedia()
{
    static std::once_flag once;
    std::call_once(once, [] { gst_init(nullptr, nullptr); });
}

/// The part of a stream that other threads call into. It lives until the pipeline has come to rest.
class LivePipeline::Worker
{
public:
    Worker(LivePipeline& owner, int frames, const std::shared_ptr<FrameMemory>& memory)
        : m_owner(owner), m_exchange(std::make_shared<FrameExchange>(frames, memory))
    {
    }
    ~Worker() { Close(); }

    void Open(const LiveSource& source, std::chrono::milliseconds patience);
    void Close();

    const std::shared_ptr<FrameExchange>& Exchange() const { return m_exchange; }

private:
    GstElement* Add(const char* factory);
    GstElement* AddSource(const LiveSource& source);
    GstElement* AddFilter(const LiveSource& source);
    void Build(const LiveSource& source);
    void Fail(const QString& reason);

    static GstPadProbeReturn CompressedFrame(GstPad* pad, GstPadProbeInfo* info, gpointer self);
    static GstFlowReturn NewSample(GstAppSink* sink, gpointer self);
    static GstBusSyncReply BusMessage(GstBus* bus, GstMessage* message, gpointer self);

    LivePipeline& m_owner;
    std::shared_ptr<FrameExchange> m_exchange;
    GstPointer<GstElement> m_pipeline;
    std::atomic<bool> m_noticePending = false;

    std::mutex m_mutex;
    std::condition_variable m_begun;
    bool m_hasFrame = false;
    bool m_hasFailed = false;
    QString m_reason;
};

GstElement* LivePipeline::Worker::Add(const char* factory)
{
    GstElement* element = gst_element_factory_make(factory, nullptr);
    if (element == nullptr)
        throw PlatformError(u"영상 구성요소(%1)가 설치되어 있지 않습니다.!!"_s.arg(QString::fromLatin1(factory)));
    gst_bin_add(GST_BIN(m_pipeline.get()), element);
    return element;
}

GstElement* LivePipeline::Worker::AddSource(const LiveSource& source)
{
    if (source.isTestPicture) {
        GstElement* element = NewTestPictureSource();
        gst_bin_add(GST_BIN(m_pipeline.get()), element);
        return element;
    }
    if (!source.elements.isEmpty()) {
        GstElement* element = gst_parse_bin_from_description(source.elements.constData(), TRUE, nullptr);
        Q_ASSERT(element != nullptr);
        gst_bin_add(GST_BIN(m_pipeline.get()), element);
        return element;
    }
    GstElement* element = Add("v4l2src");
    g_object_set(element, "device", QFile::encodeName(source.node).constData(), nullptr);
    return element;
}

GstElement* LivePipeline::Worker::AddFilter(const LiveSource& source)
{
    const VideoMode& mode = source.mode;
    const QString format = source.isTestPicture ? u"I420"_s : CapsFormat(mode.fourcc);
    QString text = format.contains(u'/') ? format : u"video/x-raw, format="_s + format;
    text += u", width=%1, height=%2"_s.arg(mode.width).arg(mode.height);
    if (mode.rateNumerator > 0)
        text += u", framerate=%1/%2"_s.arg(mode.rateNumerator).arg(mode.rateDenominator);
    GstElement* filter = Add("capsfilter");
    const GstPointer<GstCaps> caps(gst_caps_from_string(text.toLatin1().constData()));
    g_object_set(filter, "caps", caps.get(), nullptr);
    return filter;
}

void LivePipeline::Worker::Build(const LiveSource& source)
{
    m_pipeline.reset(GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr))));
    std::vector<GstElement*> chain{AddSource(source), AddFilter(source)};
    if (CapsFormat(source.mode.fourcc) == u"image/jpeg"_s) {
        // Decoding has a thread of its own, so that the device's buffers are fetched on time.
        GstElement* queue = Add("queue");
        g_object_set(queue, "max-size-buffers", 4u, "max-size-bytes", 0u, "max-size-time", guint64(0), nullptr);
        chain.push_back(queue);
        GstPad* pad = gst_element_get_static_pad(queue, "sink");
        gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, CompressedFrame, this, nullptr);
        gst_object_unref(pad);
        chain.push_back(Add("jpegdec"));
    }
    if (source.deinterlaces && !source.isTestPicture && CanDeinterlace(source.mode.fourcc)) {
        // A progressive stream goes through untouched.
        GstElement* deinterlace = Add("deinterlace");
        gst_util_set_object_arg(G_OBJECT(deinterlace), "mode", "auto");
        // Sharp where nothing moves, without combs where something does; one picture of each frame.
        gst_util_set_object_arg(G_OBJECT(deinterlace), "method", "greedyh");
        gst_util_set_object_arg(G_OBJECT(deinterlace), "fields", "top");
        chain.push_back(deinterlace);
    }
    // Full frames leave here for whatever else wants them beside the screen.
    GstElement* tee = Add("tee");
    g_object_set(tee, "allow-not-linked", TRUE, nullptr);
    chain.push_back(tee);
    GstElement* sink = Add("appsink");
    const GstPointer<GstCaps> raw(gst_caps_from_string("video/x-raw"));
    g_object_set(sink, "sync", FALSE, "enable-last-sample", FALSE, "max-buffers", 1u, "caps", raw.get(), nullptr);
    GstAppSinkCallbacks callbacks = {};
    callbacks.new_sample = NewSample;
    gst_app_sink_set_callbacks(GST_APP_SINK(sink), &callbacks, this, nullptr);
    chain.push_back(sink);

    for (std::size_t i = 1; i < chain.size(); ++i)
        if (!gst_element_link(chain[i - 1], chain[i]))
            throw PlatformError(u"캡쳐장치의 영상을 연결할수 없습니다.!!"_s);
}

void LivePipeline::Worker::Open(const LiveSource& source, std::chrono::milliseconds patience)
{
    PrepareMedia();
    Build(source);
    GstBus* bus = gst_element_get_bus(m_pipeline.get());
    gst_bus_set_sync_handler(bus, BusMessage, this, nullptr);
    gst_object_unref(bus);

    const bool refused = gst_element_set_state(m_pipeline.get(), GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE;
    QString reason;
    {
        std::unique_lock lock(m_mutex);
        if (!refused)
            m_begun.wait_for(lock, patience, [this] { return m_hasFrame || m_hasFailed; });
        if (!refused && !m_hasFailed)
            return;
        reason = m_reason;
    }
    Close();
    throw PlatformError(reason.isEmpty() ? u"캡쳐장치를 열수 없습니다.!!"_s : reason);
}

void LivePipeline::Worker::Close()
{
    m_exchange->Close();
    if (!m_pipeline)
        return;
    // Waits for the streaming threads, which is why no lock is held here.
    gst_element_set_state(m_pipeline.get(), GST_STATE_NULL);
    GstBus* bus = gst_element_get_bus(m_pipeline.get());
    gst_bus_set_sync_handler(bus, nullptr, nullptr, nullptr);
    gst_object_unref(bus);
    m_pipeline.reset();
}

GstPadProbeReturn LivePipeline::Worker::CompressedFrame(GstPad*, GstPadProbeInfo* info, gpointer self)
{
    static_cast<Worker*>(self)->m_exchange->AcceptCompressed(gst_pad_probe_info_get_buffer(info));
    return GST_PAD_PROBE_OK;
}

GstFlowReturn LivePipeline::Worker::NewSample(GstAppSink* sink, gpointer self)
{
    auto* worker = static_cast<Worker*>(self);
    const GstPointer<GstSample> sample(gst_app_sink_pull_sample(sink));
    if (!sample)
        return GST_FLOW_EOS;
    worker->m_exchange->Accept(sample.get());
    {
        const std::lock_guard lock(worker->m_mutex);
        if (!worker->m_hasFrame) {
            worker->m_hasFrame = true;
            worker->m_begun.notify_all();
        }
    }
    if (!worker->m_noticePending.exchange(true))
        QMetaObject::invokeMethod(
            &worker->m_owner,
            [worker] {
                worker->m_noticePending = false;
                Q_EMIT worker->m_owner.FrameReady();
            },
            Qt::QueuedConnection);
    return GST_FLOW_OK;
}

GstBusSyncReply LivePipeline::Worker::BusMessage(GstBus*, GstMessage* message, gpointer self)
{
    auto* worker = static_cast<Worker*>(self);
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR)
        worker->Fail(FaultText(message));
    else if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_EOS)
        worker->Fail(u"캡쳐장치의 영상이 끝났습니다.!!"_s);
    gst_message_unref(message);
    return GST_BUS_DROP;
}

void LivePipeline::Worker::Fail(const QString& reason)
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_hasFailed)
            return; // The elements after the faulty one only follow it.
        m_hasFailed = true;
        m_reason = reason;
        m_begun.notify_all();
    }
    m_exchange->Close();
    QMetaObject::invokeMethod(&m_owner, &LivePipeline::Failed, Qt::QueuedConnection);
}

LivePipeline::LivePipeline(int frames, const std::shared_ptr<FrameMemory>& memory)
    : m_worker(std::make_unique<Worker>(*this, frames, memory))
{
}

LivePipeline::~LivePipeline()
{
    m_worker->Close();
}

void LivePipeline::Open(const LiveSource& source, std::chrono::milliseconds patience)
{
    m_worker->Open(source, patience);
}

void LivePipeline::Close()
{
    m_worker->Close();
}

const std::shared_ptr<FrameExchange>& LivePipeline::Frames() const
{
    return m_worker->Exchange();
}
