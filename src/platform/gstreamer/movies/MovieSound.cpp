#include "platform/gstreamer/movies/MovieSound.h"

#include "frame/WorkThread.h"
#include "platform/gstreamer/GstPointers.h"
#include "platform/gstreamer/live/LivePipeline.h"

#include <gst/app/gstappsink.h>

#include <cmath>
#include <condition_variable>
#include <limits>
#include <mutex>
#include <numbers>

namespace {
constexpr int SampleRate = 44100;
/// Sound further behind the picture than this is let go: its clock runs faster than the picture's.
constexpr qsizetype MostWaitingBytes = SampleRate * 2 / 2;

class Silence final : public MovieSound
{
public:
    QByteArray Take(int samples, std::chrono::milliseconds) override { return QByteArray(2 * samples, '\0'); }
};

class Tone final : public MovieSound
{
public:
    QByteArray Take(int samples, std::chrono::milliseconds) override
    {
        QByteArray bytes(2 * samples, Qt::Uninitialized);
        auto* out = reinterpret_cast<qint16*>(bytes.data());
        for (int i = 0; i < samples; ++i, m_at = (m_at + 1) % SampleRate)
            out[i] = qint16(3000 * std::sin(2 * std::numbers::pi * 440 * m_at / SampleRate));
        return bytes;
    }

private:
    int m_at = 0;
};

class SoundInput final : public MovieSound
{
public:
    // A sound server may take its time to answer.
    SoundInput()
    {
        m_opening.Post([this] { Open(); });
    }
    ~SoundInput() override
    {
        m_opening.AwaitIdle();
        if (m_pipeline)
            gst_element_set_state(m_pipeline.get(), GST_STATE_NULL);
    }

    QByteArray Take(int samples, std::chrono::milliseconds patience) override
    {
        const qsizetype wanted = 2 * samples;
        std::unique_lock lock(m_mutex);
        // One that has been silent is not waited for until it speaks again.
        m_arrived.wait_for(lock, m_isFlowing ? patience : std::chrono::milliseconds(0),
                           [&] { return m_waiting.size() >= wanted; });
        m_isFlowing = m_waiting.size() >= wanted;
        QByteArray bytes = m_waiting.left(wanted);
        m_waiting.remove(0, bytes.size());
        return bytes.leftJustified(wanted, '\0');
    }

private:
    void Open()
    {
        PrepareMedia();
        GError* error = nullptr;
        m_pipeline.reset(gst_parse_launch("autoaudiosrc ! audioconvert ! audioresample ! "
                                          "audio/x-raw,format=S16LE,rate=44100,channels=1,layout=interleaved ! "
                                          "appsink name=sink sync=false max-buffers=50",
                                          &error));
        const GstPointer<GError> fault(error);
        if (!m_pipeline || fault)
            return;
        gst_object_ref_sink(m_pipeline.get());
        const GstPointer<GstElement> sink(gst_bin_get_by_name(GST_BIN(m_pipeline.get()), "sink"));
        GstAppSinkCallbacks callbacks = {};
        callbacks.new_sample = NewSample;
        gst_app_sink_set_callbacks(GST_APP_SINK(sink.get()), &callbacks, this, nullptr);
        gst_element_set_state(m_pipeline.get(), GST_STATE_PLAYING);
    }

    static GstFlowReturn NewSample(GstAppSink* sink, gpointer self)
    {
        auto* sound = static_cast<SoundInput*>(self);
        const GstPointer<GstSample> sample(gst_app_sink_pull_sample(sink));
        if (!sample)
            return GST_FLOW_EOS;
        GstMapInfo map;
        GstBuffer* buffer = gst_sample_get_buffer(sample.get());
        if (!gst_buffer_map(buffer, &map, GST_MAP_READ))
            return GST_FLOW_OK;
        {
            const std::lock_guard lock(sound->m_mutex);
            sound->m_waiting.append(reinterpret_cast<const char*>(map.data), qsizetype(map.size));
            if (sound->m_waiting.size() > MostWaitingBytes)
                sound->m_waiting.remove(0, (sound->m_waiting.size() - MostWaitingBytes) & ~qsizetype(1));
            sound->m_isFlowing = true;
        }
        sound->m_arrived.notify_all();
        gst_buffer_unmap(buffer, &map);
        return GST_FLOW_OK;
    }

    std::mutex m_mutex;
    std::condition_variable m_arrived;
    QByteArray m_waiting;
    bool m_isFlowing = false;
    GstPointer<GstElement> m_pipeline;
    WorkThread m_opening;
};
} // namespace

std::unique_ptr<MovieSound> NewSilence()
{
    return std::make_unique<Silence>();
}

std::unique_ptr<MovieSound> NewTone()
{
    return std::make_unique<Tone>();
}

std::unique_ptr<MovieSound> NewSoundInput()
{
    return std::make_unique<SoundInput>();
}
