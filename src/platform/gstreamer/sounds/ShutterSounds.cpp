#include "platform/gstreamer/sounds/ShutterSounds.h"

#include "platform/gstreamer/GstPointers.h"
#include "platform/gstreamer/live/LivePipeline.h"

#include <gst/app/gstappsrc.h>

#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

namespace {

constexpr int SamplesPerSecond = 48000;
/// Of full scale: to be heard beside the patient, not to startle him.
constexpr double Loudness = 0.12;
/// So long a machine without sound isn't asked again.
constexpr auto SilencePause = std::chrono::minutes(1);
constexpr GstClockTime LongestPlaying = 2 * GST_SECOND;

struct Tone
{
    double beginMs;
    double lengthMs;
    double hertz;
};

/// Two short clicks, as of a shutter; or two lower tones that fall.
std::vector<Tone> TonesOf(ShutterSound::Kind kind)
{
    if (kind == ShutterSound::Safe)
        return {{0, 18, 2100}, {45, 22, 1500}};
    return {{0, 110, 520}, {140, 160, 390}};
}

std::vector<std::int16_t> SamplesOf(ShutterSound::Kind kind)
{
    const std::vector<Tone> tones = TonesOf(kind);
    const double lengthMs = tones.back().beginMs + tones.back().lengthMs + 30;
    std::vector<std::int16_t> samples(static_cast<size_t>(lengthMs * SamplesPerSecond / 1000));
    for (const Tone& tone : tones) {
        const auto begin = static_cast<size_t>(tone.beginMs * SamplesPerSecond / 1000);
        const auto length = static_cast<size_t>(tone.lengthMs * SamplesPerSecond / 1000);
        for (size_t at = 0; at < length; ++at) {
            const double share = static_cast<double>(at) / static_cast<double>(length);
            const double seconds = static_cast<double>(at) / SamplesPerSecond;
            const double fade = std::exp(-4 * share) * std::sin(std::numbers::pi * std::min(1.0, share * 8) / 2);
            samples[begin + at] = static_cast<std::int16_t>(32767 * Loudness * fade *
                                                            std::sin(2 * std::numbers::pi * tone.hertz * seconds));
        }
    }
    return samples;
}

/// False on a machine that has no sound.
bool PlayNow(ShutterSound::Kind kind)
{
    PrepareMedia();
    GError* error = nullptr;
    const GstPointer<GstElement> pipeline(gst_parse_launch(
        "appsrc name=clicks format=time caps=audio/x-raw,format=S16LE,rate=48000,channels=1,layout=interleaved ! "
        "audioconvert ! audioresample ! autoaudiosink",
        &error));
    g_clear_error(&error);
    if (!pipeline)
        return false;
    const GstPointer<GstElement> source(gst_bin_get_by_name(GST_BIN(pipeline.get()), "clicks"));
    const std::vector<std::int16_t> samples = SamplesOf(kind);
    const gsize bytes = samples.size() * sizeof samples.front();
    GstBuffer* buffer = gst_buffer_new_allocate(nullptr, bytes, nullptr);
    gst_buffer_fill(buffer, 0, samples.data(), bytes);
    GST_BUFFER_PTS(buffer) = 0;
    GST_BUFFER_DURATION(buffer) = gst_util_uint64_scale(samples.size(), GST_SECOND, SamplesPerSecond);
    bool isHeard = false;
    if (gst_element_set_state(pipeline.get(), GST_STATE_PLAYING) != GST_STATE_CHANGE_FAILURE) {
        gst_app_src_push_buffer(GST_APP_SRC(source.get()), buffer);
        gst_app_src_end_of_stream(GST_APP_SRC(source.get()));
        GstBus* bus = gst_element_get_bus(pipeline.get());
        // A warning says that nothing was found to play on.
        constexpr auto Awaited = GstMessageType(GST_MESSAGE_EOS | GST_MESSAGE_ERROR | GST_MESSAGE_WARNING);
        if (GstMessage* end = gst_bus_timed_pop_filtered(bus, LongestPlaying, Awaited)) {
            isHeard = GST_MESSAGE_TYPE(end) == GST_MESSAGE_EOS;
            gst_message_unref(end);
        }
        gst_object_unref(bus);
    } else {
        gst_buffer_unref(buffer);
    }
    gst_element_set_state(pipeline.get(), GST_STATE_NULL);
    return isHeard;
}

} // namespace

void ShutterSounds::Play(Kind kind)
{
    // Of a burst of stills one is heard after the other, but they don't queue up behind the last press.
    if (!m_thread.IsIdle())
        return;
    m_thread.Post([kind, silentUntil = m_silentUntil] {
        const Clock::time_point now = Clock::now();
        if (now >= *silentUntil && !PlayNow(kind))
            *silentUntil = now + SilencePause;
    });
}
