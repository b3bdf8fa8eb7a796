#include "platform/gstreamer/testpicture/TestPictureSource.h"

#include "platform/gstreamer/testpicture/TestPicturePainter.h"
#include "platform/gstreamer/testpicture/TestPictureState.h"

#include <gst/base/gstpushsrc.h>
#include <gst/video/video.h>

#include <atomic>
#include <mutex>

namespace {
// A source that falls behind by more than this many frames lets the missed ones go.
constexpr guint64 FramesToCatchUp = 8;

struct SourceData
{
    TestPicturePainter painter;
    std::mutex mutex;
    GstClockID pendingWait = nullptr; ///< Guarded by the mutex.
    std::atomic<bool> flushing = false;
    quint32 number = 0;
    GstClockTime firstTime = GST_CLOCK_TIME_NONE;
    guint64 slot = 0; ///< Frame times that have passed since the first frame.
};

struct TestPictureSource
{
    GstPushSrc parent;
    SourceData* data;
};

struct TestPictureSourceClass
{
    GstPushSrcClass parent;
};

GType TestPictureSourceType();
gpointer parentClass = nullptr;

SourceData& DataOf(gpointer source)
{
    return *static_cast<TestPictureSource*>(source)->data;
}

void Finalize(GObject* object)
{
    delete static_cast<TestPictureSource*>(static_cast<gpointer>(object))->data;
    G_OBJECT_CLASS(parentClass)->finalize(object);
}

gboolean StartSource(GstBaseSrc* base)
{
    SourceData& data = DataOf(base);
    data.number = 0;
    data.slot = 0;
    data.firstTime = GST_CLOCK_TIME_NONE;
    if (TestDevice().IsPlugged())
        return TRUE;
    GST_ELEMENT_ERROR(base, RESOURCE, NOT_FOUND, ("unplugged"), (nullptr));
    return FALSE;
}

gboolean IsSeekable(GstBaseSrc*)
{
    return FALSE;
}

gboolean SetCaps(GstBaseSrc* base, GstCaps* caps)
{
    GstVideoInfo info;
    if (!gst_video_info_from_caps(&info, caps) || info.fps_n <= 0)
        return FALSE;
    DataOf(base).painter.SetFormat(info);
    return TRUE;
}

gboolean DecideAllocation(GstBaseSrc* base, GstQuery* query)
{
    // Without a pool each frame would be fresh memory, and cost a page fault for every 4 KiB.
    if (gst_query_get_n_allocation_pools(query) == 0) {
        GstCaps* caps = nullptr;
        gst_query_parse_allocation(query, &caps, nullptr);
        const guint size = guint(DataOf(base).painter.Info().size);
        GstBufferPool* pool = gst_video_buffer_pool_new();
        GstStructure* config = gst_buffer_pool_get_config(pool);
        gst_buffer_pool_config_set_params(config, caps, size, 4, 0);
        gst_buffer_pool_set_config(pool, config);
        gst_query_add_allocation_pool(query, pool, size, 4, 0);
        gst_object_unref(pool);
    }
    return GST_BASE_SRC_CLASS(parentClass)->decide_allocation(base, query);
}

gboolean Unlock(GstBaseSrc* base)
{
    SourceData& data = DataOf(base);
    data.flushing = true;
    TestDevice().Wake();
    const std::lock_guard lock(data.mutex);
    if (data.pendingWait != nullptr)
        gst_clock_id_unschedule(data.pendingWait);
    return TRUE;
}

gboolean UnlockStop(GstBaseSrc* base)
{
    DataOf(base).flushing = false;
    return TRUE;
}

/// The time of the pipeline, and waiting for it. The base class could pace the frames too, but it shifts them by what
/// the first one cost to make.
class PipelineClock
{
public:
    explicit PipelineClock(GstElement* element)
        : m_clock(gst_element_get_clock(element)), m_base(gst_element_get_base_time(element))
    {
    }
    ~PipelineClock()
    {
        if (m_clock != nullptr)
            gst_object_unref(m_clock);
    }
    PipelineClock(const PipelineClock&) = delete;
    PipelineClock& operator=(const PipelineClock&) = delete;

    bool Stands() const { return m_clock != nullptr; }

    GstClockTime RunningTime() const
    {
        const GstClockTime now = gst_clock_get_time(m_clock);
        return now > m_base ? now - m_base : 0;
    }

    void WaitUntil(GstClockTime runningTime, SourceData& data) const
    {
        const GstClockID wait = gst_clock_new_single_shot_id(m_clock, m_base + runningTime);
        std::unique_lock lock(data.mutex);
        if (!data.flushing) {
            data.pendingWait = wait;
            lock.unlock();
            gst_clock_id_wait(wait, nullptr);
            lock.lock();
            data.pendingWait = nullptr;
        }
        lock.unlock();
        gst_clock_id_unref(wait);
    }

private:
    GstClock* m_clock;
    GstClockTime m_base;
};

GstFlowReturn Fill(GstPushSrc* push, GstBuffer* buffer)
{
    SourceData& data = DataOf(push);
    TestDevice().WaitWhileFrozen([&data] { return data.flushing.load(); });
    if (data.flushing)
        return GST_FLOW_FLUSHING;
    if (!TestDevice().IsPlugged()) {
        GST_ELEMENT_ERROR(push, RESOURCE, NOT_FOUND, ("unplugged"), (nullptr));
        return GST_FLOW_ERROR;
    }

    const GstVideoInfo& info = data.painter.Info();
    const PipelineClock clock(GST_ELEMENT(push));
    if (!clock.Stands())
        return GST_FLOW_FLUSHING; // The pipeline is on its way down.
    const GstClockTime now = clock.RunningTime();
    const auto timeOf = [&](guint64 slot) {
        return data.firstTime + gst_util_uint64_scale(slot, GST_SECOND * guint64(info.fps_d), guint64(info.fps_n));
    };
    if (data.firstTime == GST_CLOCK_TIME_NONE)
        data.firstTime = now;
    else
        ++data.slot;
    if (now > timeOf(data.slot + FramesToCatchUp))
        data.slot = gst_util_uint64_scale(now - data.firstTime, guint64(info.fps_n), GST_SECOND * guint64(info.fps_d));
    data.number = quint32(data.slot + 1);

    GstVideoFrame frame;
    if (!gst_video_frame_map(&frame, &info, buffer, GST_MAP_WRITE))
        return GST_FLOW_ERROR;
    data.painter.Paint(frame, data.number);
    gst_video_frame_unmap(&frame);
    GST_BUFFER_PTS(buffer) = timeOf(data.slot);
    GST_BUFFER_DURATION(buffer) = timeOf(data.slot + 1) - timeOf(data.slot);
    GST_BUFFER_OFFSET(buffer) = data.slot;
    clock.WaitUntil(GST_BUFFER_PTS(buffer), data);
    return data.flushing ? GST_FLOW_FLUSHING : GST_FLOW_OK;
}

void InitClass(gpointer klass, gpointer)
{
    parentClass = g_type_class_peek_parent(klass);
    G_OBJECT_CLASS(klass)->finalize = Finalize;
    GstBaseSrcClass* base = GST_BASE_SRC_CLASS(klass);
    base->start = StartSource;
    base->is_seekable = IsSeekable;
    base->set_caps = SetCaps;
    base->decide_allocation = DecideAllocation;
    base->unlock = Unlock;
    base->unlock_stop = UnlockStop;
    GST_PUSH_SRC_CLASS(klass)->fill = Fill;

    GstElementClass* element = GST_ELEMENT_CLASS(klass);
    gst_element_class_set_static_metadata(element, "Test picture", "Source/Video", "A moving, numbered picture",
                                          "capture-station");
    GstCaps* caps = gst_caps_from_string("video/x-raw, format=I420, colorimetry=(string)1:4:0:0, "
                                         "pixel-aspect-ratio=1/1, width=[32,4096], height=[32,4096], "
                                         "framerate=[1/1,120/1]");
    gst_element_class_add_pad_template(element, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, caps));
    gst_caps_unref(caps);
}

void InitInstance(GTypeInstance* instance, gpointer)
{
    static_cast<TestPictureSource*>(static_cast<gpointer>(instance))->data = new SourceData;
    gst_base_src_set_live(GST_BASE_SRC(instance), TRUE);
    gst_base_src_set_format(GST_BASE_SRC(instance), GST_FORMAT_TIME);
}

GType TestPictureSourceType()
{
    static const GType type =
        g_type_register_static_simple(GST_TYPE_PUSH_SRC, "CaptureStationTestPicture", sizeof(TestPictureSourceClass),
                                      InitClass, sizeof(TestPictureSource), InitInstance, GTypeFlags(0));
    return type;
}
} // namespace

GstElement* NewTestPictureSource()
{
    return GST_ELEMENT(g_object_new(TestPictureSourceType(), nullptr));
}
