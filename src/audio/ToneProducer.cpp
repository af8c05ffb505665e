// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/ToneProducer.h"

#include "kits/kernel/OS.h"
#include "kits/support/Trace.h"
#include "synth/Realtime.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace vexa {

namespace {

constexpr const char* kName = "Vexa audio out";
constexpr uint32 kApiVersion = 0x500;
/// The default buffer size in frames, if the consumer leaves it open.
constexpr std::size_t kDefaultFrames = 16;
/// The number of stereo frames that are rendered at a time.
constexpr std::size_t kStretch = 256;
constexpr float kPreferredRate = 44100;

/// Microseconds of rendering per second of sound above which a voice is dropped, about 80 %, unless
/// performance time waits for it, and those that the event loop allows for it, about 110 %. Both
/// are used as whole microseconds per frame: 18 and 24 at 44100 Hz, 79.4 % and 105.8 %.
constexpr double kOverload = 800000;
constexpr double kAllowance = 1100000;

/// Seconds.
constexpr float kLoadFades = 0.5F;

/// Microseconds that an event may take from the server's thread through the MIDI thread.
constexpr bigtime_t kDelivery = 500;
/// Microseconds that an event may come too early: more than a period and all latencies.
constexpr bigtime_t kMostAhead = 1000000;

media_format PreferredFormat() {
    media_format format;
    format.type = B_MEDIA_RAW_AUDIO;
    format.u.raw_audio = media_raw_audio_format::wildcard;
    format.u.raw_audio.frame_rate = kPreferredRate;
    format.u.raw_audio.channel_count = 1;
    format.u.raw_audio.format = B_AUDIO_FLOAT;
    format.u.raw_audio.byte_order = B_MEDIA_LITTLE_ENDIAN;
    return format;
}

void CopyName(char* into, const char* name) {
    std::snprintf(into, B_MEDIA_NAME_LENGTH, "%s", name);
}

} // namespace

VexaToneProducer::VexaToneProducer(VoiceRenderer& renderer, VoiceTable& voices)
    : BMediaNode(kName),
      BMediaEventLooper(kApiVersion),
      BBufferProducer(B_MEDIA_RAW_AUDIO),
      preferred(PreferredFormat()),
      voices(voices),
      renderer(renderer) {
    output.destination = media_destination::null;
    output.format = preferred;
}

VexaToneProducer::~VexaToneProducer() {
    Quit();
}

void VexaToneProducer::SetChannels(uint32 channels) {
    Call([this, channels] {
        preferred.u.raw_audio.channel_count = channels;
        output.format = preferred;
    });
}

void VexaToneProducer::SetEvents(kits::EventGate* gate) {
    Call([this, gate] { events = gate; });
}

void* VexaToneProducer::AddOn(int32*) const {
    return nullptr;
}

void VexaToneProducer::SetRunMode(run_mode mode) {
    FPRINTF(stderr, "ToneProducer::SetRunMode\n");
    if (mode == B_OFFLINE)
        ReportError(B_NODE_FAILED_SET_RUN_MODE);
}

status_t VexaToneProducer::HandleMessage(int32 message, const void*, std::size_t) {
    FPRINTF(stderr, "ToneProducer::HandleMessage(%ld = 0x%lx)\n", static_cast<long>(message),
            static_cast<unsigned long>(message));
    return B_ERROR;
}

void VexaToneProducer::NodeRegistered() {
    FPRINTF(stderr, "ToneProducer::NodeRegistered\n");
    output.node = Node();
    output.source = {ControlPort(), 0};
    CopyName(output.name, kName);
    SetPriority(B_REAL_TIME_PRIORITY);
    Run();
}

status_t VexaToneProducer::FormatSuggestionRequested(media_type type, int32, media_format* format) {
    FPRINTF(stderr, "ToneProducer::FormatSuggestionRequested\n");
    if (!format) {
        FPRINTF(stderr, "\tERROR - NULL format pointer passed in!\n");
        return B_BAD_VALUE;
    }
    *format = preferred;
    return type == B_MEDIA_UNKNOWN_TYPE || type == B_MEDIA_RAW_AUDIO ? B_OK : B_MEDIA_BAD_FORMAT;
}

status_t VexaToneProducer::FormatProposal(const media_source& source, media_format* format) {
    FPRINTF(stderr, "ToneProducer::FormatProposal\n");
    if (source != output.source) {
        FPRINTF(stderr, "ToneProducer::FormatProposal returning B_MEDIA_BAD_SOURCE\n");
        return B_MEDIA_BAD_SOURCE;
    }
    const media_type proposed = format->type;
    *format = preferred;
    if (proposed != B_MEDIA_UNKNOWN_TYPE && proposed != B_MEDIA_RAW_AUDIO) {
        FPRINTF(stderr, "ToneProducer::FormatProposal returning B_MEDIA_BAD_FORMAT\n");
        return B_MEDIA_BAD_FORMAT;
    }
    return B_OK;
}

status_t VexaToneProducer::FormatChangeRequested(const media_source&, const media_destination&,
                                                 media_format*, int32*) {
    FPRINTF(stderr, "ToneProducer::FormatChangeRequested\n");
    return B_ERROR;
}

status_t VexaToneProducer::GetNextOutput(int32* cookie, media_output* into) {
    FPRINTF(stderr, "ToneProducer::GetNextOutput\n");
    if (*cookie != 0)
        return B_BAD_INDEX;
    *into = output;
    *cookie = 1;
    return B_OK;
}

status_t VexaToneProducer::DisposeOutputCookie(int32) {
    FPRINTF(stderr, "ToneProducer::DisposeOutputCookie\n");
    return B_OK;
}

status_t VexaToneProducer::SetBufferGroup(const media_source& source, BBufferGroup* group) {
    FPRINTF(stderr, "ToneProducer::SetBufferGroup\n");
    if (source != output.source)
        return B_MEDIA_BAD_SOURCE;
    if (group == buffers.get())
        return B_OK;
    buffers.reset(group ? group
                        : new BBufferGroup(output.format.u.raw_audio.buffer_size, BuffersNeeded(),
                                           B_ANY_ADDRESS, B_FULL_LOCK));
    return B_OK;
}

status_t VexaToneProducer::GetLatency(bigtime_t* latency) {
    FPRINTF(stderr, "ToneProducer::GetLatency\n");
    *latency = EventLatency() + SchedulingLatency();
    return B_OK;
}

status_t VexaToneProducer::PrepareToConnect(const media_source& what,
                                            const media_destination& where, media_format* format,
                                            media_source* source, char* name) {
    FPRINTF(stderr, "ToneProducer::PrepareToConnect\n");
    if (what != output.source)
        return B_MEDIA_BAD_SOURCE;
    if (output.destination != media_destination::null)
        return B_MEDIA_ALREADY_CONNECTED;
    if (format->type != B_MEDIA_RAW_AUDIO) {
        FPRINTF(stderr, "\tnon-raw-audio format?!\n");
        return B_MEDIA_BAD_FORMAT;
    }
    media_raw_audio_format& raw = format->u.raw_audio;
    if (raw.format != B_AUDIO_FLOAT) {
        FPRINTF(stderr, "\tnon-float-audio format?!\n");
        return B_MEDIA_BAD_FORMAT;
    }
    if (raw.buffer_size == media_raw_audio_format::wildcard.buffer_size) {
        raw.buffer_size = kDefaultFrames * sizeof(float) * raw.channel_count;
        FPRINTF(stderr, "\tno buffer size provided, suggesting %lu\n",
                static_cast<unsigned long>(raw.buffer_size));
    } else {
        FPRINTF(stderr, "\tconsumer suggested buffer_size %lu\n",
                static_cast<unsigned long>(raw.buffer_size));
    }
    output.destination = where;
    output.format = *format;
    *source = output.source;
    CopyName(name, output.name);
    return B_OK;
}

void VexaToneProducer::Connect(status_t error, const media_source&,
                               const media_destination& destination, const media_format& format,
                               char* name) {
    FPRINTF(stderr, "ToneProducer::Connect\n");
    if (error != B_OK) {
        BeUnconnected();
        return;
    }
    output.destination = destination;
    output.format = format;
    CopyName(name, output.name);
    oversampler.SetFrameRate(FrameRate());
    tap.SetRate(FrameRate());

    media_node_id ignored = -1;
    if (FindLatencyFor(destination, &downstreamLatency, &ignored) != B_OK)
        downstreamLatency = 0;
    FPRINTF(stderr, "\tdownstream latency = %lld\n", static_cast<long long>(downstreamLatency));
    const auto frames = static_cast<bigtime_t>(FramesPerBuffer());
    internalLatency = static_cast<bigtime_t>(kAllowance / FrameRate()) * frames;
    leastInternalLatency = internalLatency;
    FPRINTF(stderr, "\tbuffer-filling took %lld usec on this machine\n",
            static_cast<long long>(internalLatency));
    SetEventLatency(downstreamLatency + internalLatency);
    SetBufferDuration(frames * 1000000 / static_cast<bigtime_t>(FrameRate()));
    if (!buffers)
        AllocateBuffers();
}

void VexaToneProducer::AllocateBuffers() {
    const std::size_t size = output.format.u.raw_audio.buffer_size;
    FPRINTF(stderr, "\tlatency = %lld, buffer duration = %lld\n",
            static_cast<long long>(downstreamLatency), static_cast<long long>(BufferDuration()));
    FPRINTF(stderr, "\tcreating group of %ld buffers, size = %lu\n",
            static_cast<long>(BuffersNeeded()), static_cast<unsigned long>(size));
    buffers = std::make_unique<BBufferGroup>(size, BuffersNeeded(), B_ANY_ADDRESS, B_FULL_LOCK);
}

/// The buffers in transit, one being played and one being filled.
int32 VexaToneProducer::BuffersNeeded() const {
    return static_cast<int32>(downstreamLatency / std::max<bigtime_t>(BufferDuration(), 1) + 2);
}

void VexaToneProducer::Disconnect(const media_source& what, const media_destination& where) {
    FPRINTF(stderr, "ToneProducer::Disconnect\n");
    if (where != output.destination || what != output.source) {
        FPRINTF(stderr,
                "\tDisconnect() called with wrong source/destination (%ld/%ld), ours is "
                "(%ld/%ld)\n",
                static_cast<long>(what.id), static_cast<long>(where.id),
                static_cast<long>(output.source.id), static_cast<long>(output.destination.id));
        return;
    }
    BeUnconnected();
    buffers.reset();
}

void VexaToneProducer::BeUnconnected() {
    output.destination = media_destination::null;
    output.format = preferred;
}

void VexaToneProducer::LateNoticeReceived(const media_source& what, bigtime_t howMuch, bigtime_t) {
    trace.Put("ToneProducer::LateNoticeReceived\n");
    if (what != output.source || RunMode() == B_RECORDING)
        return;
    if (RunMode() == B_INCREASE_LATENCY) {
        internalLatency += howMuch;
        SetEventLatency(downstreamLatency + internalLatency);
        trace.Put("\tincreasing latency to %lld\n", EventLatency());
    } else {
        framesSent += FramesPerBuffer();
        trace.Put("\tskipping a buffer to try to catch up\n");
    }
}

/// The sound continues without a gap: the next buffers follow those already sent, but are rendered
/// later.
void VexaToneProducer::EarlyNoticeReceived(const media_source& what, bigtime_t howMuch) {
    trace.Put("ToneProducer::EarlyNoticeReceived\n");
    if (what != output.source || RunMode() != B_INCREASE_LATENCY)
        return;
    internalLatency = std::max(internalLatency - howMuch, leastInternalLatency);
    SetEventLatency(downstreamLatency + internalLatency);
    trace.Put("\tdecreasing latency to %lld\n", EventLatency());
}

void VexaToneProducer::EnableOutput(const media_source& what, bool enabled, int32*) {
    FPRINTF(stderr, "ToneProducer::EnableOutput\n");
    if (what == output.source)
        outputEnabled = enabled;
}

status_t VexaToneProducer::SetPlayRate(int32, int32) {
    FPRINTF(stderr, "ToneProducer::SetPlayRate\n");
    return B_ERROR;
}

void VexaToneProducer::AdditionalBufferRequested(const media_source&, media_buffer_id, bigtime_t,
                                                 const media_seek_tag*) {
    FPRINTF(stderr, "ToneProducer::AdditionalBufferRequested\n");
}

void VexaToneProducer::LatencyChanged(const media_source& source,
                                      const media_destination& destination, bigtime_t latency,
                                      uint32) {
    if (source != output.source || destination != output.destination)
        return;
    downstreamLatency = latency;
    SetEventLatency(downstreamLatency + internalLatency);
}

void VexaToneProducer::HandleEvent(const media_timed_event* event, bigtime_t, bool) {
    switch (event->type) {
    case media_timed_event::B_START:
        if (RunState() == B_STARTED)
            break;
        framesSent = 0;
        startTime = event->event_time;
        EventQueue()->AddEvent({startTime, media_timed_event::B_HANDLE_BUFFER});
        break;
    case media_timed_event::B_STOP:
        FPRINTF(stderr, "Handling B_STOP event\n");
        EventQueue()->FlushEvents(media_timed_event::B_HANDLE_BUFFER);
        break;
    case media_timed_event::B_HANDLE_BUFFER:
        if (RunState() == B_STARTED && output.destination != media_destination::null)
            HandleBuffer(event->event_time);
        break;
    }
}

void VexaToneProducer::HandleBuffer(bigtime_t eventTime) {
    const RealtimeSection realtime;
    if (BBuffer* buffer = FillNextBuffer(eventTime)) {
        if (!outputEnabled || SendBuffer(buffer, output.destination) != B_OK)
            buffer->Recycle();
    }
    framesSent += FramesPerBuffer();
    EventQueue()->AddEvent({TimeOfNextFrame(), media_timed_event::B_HANDLE_BUFFER});
}

BBuffer* VexaToneProducer::FillNextBuffer(bigtime_t eventTime) {
    const std::size_t size = output.format.u.raw_audio.buffer_size;
    BBuffer* buffer = buffers ? buffers->RequestBuffer(size, BufferDuration()) : nullptr;
    if (!buffer)
        return nullptr;
    FillSineBuffer(static_cast<float*>(buffer->Data()), FramesPerBuffer());
    media_header& header = *buffer->Header();
    header.type = B_MEDIA_RAW_AUDIO;
    header.size_used = size;
    header.time_source = TimeSource()->ID();
    header.start_time = RunMode() == B_RECORDING ? eventTime : TimeOfNextFrame();
    return buffer;
}

std::size_t VexaToneProducer::FramesPerBuffer() const {
    return output.format.u.raw_audio.buffer_size / (sizeof(float) * Channels());
}

bigtime_t VexaToneProducer::TimeOfNextFrame() const {
    return startTime + static_cast<bigtime_t>(static_cast<double>(framesSent) / FrameRate() * 1e6);
}

void VexaToneProducer::FillSineBuffer(float* buffer, std::size_t count) noexcept {
    const bigtime_t start = system_time();
    Render(buffer, count);
    tap.Put(buffer, count, Channels());
    const bigtime_t elapsed = system_time() - start;
    const bigtime_t budget =
        static_cast<bigtime_t>(kOverload / FrameRate()) * static_cast<bigtime_t>(count);
    const float duration = static_cast<float>(count) / FrameRate();
    const float share = static_cast<float>(elapsed) * 1e-6F / duration;
    load = std::max(share, load * std::max(0.0F, 1 - duration / kLoadFades));
    if (elapsed >= budget && !TimeSource()->Waits())
        ReduceVoxByOne();
}

/// The renderer takes up an event at the beginning of a stretch.
void VexaToneProducer::Render(float* buffer, std::size_t count) noexcept {
    std::size_t done = 0;
    if (events) {
        // An event may happen at the end of a buffer that is rendered as soon as it has happened.
        renderDelay = EventLatency() + SchedulingLatency() + BufferDuration() + kDelivery;
        eventDelay = renderDelay + static_cast<bigtime_t>(static_cast<double>(oversampler.Delay()) *
                                                          1e6 / FrameRate());
        kits::EventGate::Turn turn(*events);
        while (const kits::MidiEvent* event = turn.Next()) {
            const std::size_t at = FrameOf(*event, count);
            if (at >= count)
                break;
            if (at > done) {
                RenderStretch(buffer + done * Channels(), at - done);
                done = at;
            }
            turn.Play();
        }
    }
    if (done < count)
        RenderStretch(buffer + done * Channels(), count - done);
}

void VexaToneProducer::RenderStretch(float* buffer, std::size_t count) noexcept {
    if (Channels() == 1)
        return oversampler.Render(buffer, nullptr, count);
    std::array<float, kStretch> left, right;
    for (std::size_t done = 0; done < count;) {
        const std::size_t n = std::min(kStretch, count - done);
        oversampler.Render(left.data(), right.data(), n);
        for (std::size_t i = 0; i < n; i++) {
            *buffer++ = left[i];
            *buffer++ = right[i];
        }
        done += n;
    }
}

/// Returns the event's frame in the next buffer; 0 if it is late, `count` if it belongs to a later
/// one.
std::size_t VexaToneProducer::FrameOf(const kits::MidiEvent& event,
                                      std::size_t count) const noexcept {
    if (event.time == 0)
        return 0;
    const bigtime_t due = TimeSource()->PerformanceTimeFor(event.time) + renderDelay;
    const bigtime_t from = due - TimeOfNextFrame();
    // No event is known so long in advance; the clock has jumped.
    if (from <= 0 || from > kMostAhead)
        return 0;
    const double frame = std::round(static_cast<double>(from) * FrameRate() / 1e6);
    return std::min(static_cast<std::size_t>(frame), count);
}

void VexaToneProducer::ReduceVoxByOne() noexcept {
    trace.Put("ToneProducer: ReduceVoxByOne");
    if (ReduceVoicesByOne(voices))
        dropped = dropped + 1;
}

} // namespace vexa
