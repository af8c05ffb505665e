// SPDX-License-Identifier: GPL-3.0-or-later
// Sound out: the node that renders a buffer each time one is due.
#pragma once

#include "audio/OutputTap.h"
#include "kits/media/MediaEventLooper.h"
#include "kits/midi/EventGate.h"
#include "kits/support/RealtimeMark.h"
#include "kits/support/TraceLater.h"
#include "synth/Oversampler.h"

#include <memory>

namespace vexa {

/// The program's audio source in the media graph, with one float output, of one channel by default.
/// Unless noted a method is a hook that runs in the node's own thread, the media thread. Each hook
/// writes a trace line; those that run while a buffer is made leave this to TellTrace.
class VexaToneProducer : public BMediaEventLooper, public BBufferProducer {
  public:
    /// Makes a node that plays the voices through the renderer, oversampled if the sound asks for
    /// it. Both must outlive the node, and nothing else may use the renderer. Window thread.
    VexaToneProducer(VoiceRenderer& renderer, VoiceTable& voices);

    /// Sets the renderer's gain (any thread) and its function (window thread).
    void SetGain(float gain) { renderer.SetGain(gain); }
    void SetFunction(const PlaneFunction& f) { renderer.SetFunction(f); }

    /// Sets the number of channels: one, or two, left and right interleaved in a buffer, for sounds
    /// that have a spread. The node must not be connected. Window thread.
    void SetChannels(uint32 channels);

    /// Plays the events waiting at the gate from now on, each `EventDelay` after it has happened.
    /// Null detaches the gate and is required before its destruction: when the call returns, the
    /// previous gate is no longer used. Window thread.
    void SetEvents(kits::EventGate* gate);
    /// Returns the microseconds from an event to the moment at which the device plays its effect.
    /// It is the same for all events as long as the latency is constant, and includes the delay of
    /// oversampling. Any thread.
    bigtime_t EventDelay() const { return eventDelay; }

    /// Returns the tap, from which the output can be read. Window thread.
    OutputTap& Tap() { return tap; }

    /// Renders `count` frames, then drops a voice if this took 80 % of their playing time. Media
    /// thread.
    VEXA_REALTIME void FillSineBuffer(float* buffer, std::size_t count) noexcept;
    VEXA_REALTIME void ReduceVoxByOne() noexcept;
    /// Returns the recent peak of the rendering load, which fades within a second; 1 means that
    /// rendering takes all of the available time. Any thread.
    float Load() const { return load; }
    /// Writes the trace lines of the media thread's work since the last call. Window thread.
    void TellTrace() { trace.Tell(); }
    /// Returns the number of voices dropped because rendering took too long. Any thread.
    int64 DroppedVoices() const { return dropped; }

    void* AddOn(int32* id) const override;
    void SetRunMode(run_mode mode) override;
    status_t HandleMessage(int32 message, const void* data, std::size_t size) override;
    void NodeRegistered() override;

    status_t FormatSuggestionRequested(media_type type, int32 quality,
                                       media_format* format) override;
    status_t FormatProposal(const media_source& source, media_format* format) override;
    status_t FormatChangeRequested(const media_source& source, const media_destination& destination,
                                   media_format* format, int32* deprecated) override;
    status_t GetNextOutput(int32* cookie, media_output* into) override;
    status_t DisposeOutputCookie(int32 cookie) override;
    status_t SetBufferGroup(const media_source& source, BBufferGroup* group) override;
    status_t GetLatency(bigtime_t* latency) override;
    status_t PrepareToConnect(const media_source& what, const media_destination& where,
                              media_format* format, media_source* source, char* name) override;
    void Connect(status_t error, const media_source& source, const media_destination& destination,
                 const media_format& format, char* name) override;
    void Disconnect(const media_source& what, const media_destination& where) override;
    VEXA_REALTIME void LateNoticeReceived(const media_source& what, bigtime_t howMuch,
                                          bigtime_t performanceTime) override;
    VEXA_REALTIME void EarlyNoticeReceived(const media_source& what, bigtime_t howMuch) override;
    void EnableOutput(const media_source& what, bool enabled, int32* deprecated) override;
    status_t SetPlayRate(int32 numerator, int32 denominator) override;
    void AdditionalBufferRequested(const media_source& source, media_buffer_id buffer,
                                   bigtime_t time, const media_seek_tag* tag) override;
    VEXA_REALTIME void LatencyChanged(const media_source& source,
                                      const media_destination& destination, bigtime_t latency,
                                      uint32 flags) override;
    void HandleEvent(const media_timed_event* event, bigtime_t lateness,
                     bool realTimeEvent) override;

    /// Returns the number of buffers in the group, 0 without a group.
    int32 CountBuffers() const { return buffers ? buffers->CountBuffers() : 0; }

  protected:
    ~VexaToneProducer() override;

  private:
    void AllocateBuffers();
    int32 BuffersNeeded() const;
    VEXA_REALTIME BBuffer* FillNextBuffer(bigtime_t eventTime);
    VEXA_REALTIME void HandleBuffer(bigtime_t eventTime);
    void BeUnconnected();

    VEXA_REALTIME void Render(float* buffer, std::size_t count) noexcept;
    VEXA_REALTIME void RenderStretch(float* buffer, std::size_t count) noexcept;
    VEXA_REALTIME std::size_t FrameOf(const kits::MidiEvent& event,
                                      std::size_t count) const noexcept;

    VEXA_REALTIME std::size_t Channels() const { return output.format.u.raw_audio.channel_count; }
    VEXA_REALTIME std::size_t FramesPerBuffer() const;
    VEXA_REALTIME float FrameRate() const { return output.format.u.raw_audio.frame_rate; }
    /// Returns the performance time, in microseconds, of the next frame to send.
    VEXA_REALTIME bigtime_t TimeOfNextFrame() const;

    std::unique_ptr<BBufferGroup> buffers;
    bigtime_t downstreamLatency = 0;
    /// The time that rendering needs, in microseconds; late notices increase it.
    bigtime_t internalLatency = 0;
    bigtime_t leastInternalLatency = 0;
    media_output output;
    bool outputEnabled = true;
    media_format preferred;
    uint64 framesSent = 0;
    bigtime_t startTime = 0;

    kits::EventGate* events = nullptr;
    /// The microseconds from an event to the frame that is rendered with its effect.
    bigtime_t renderDelay = 0;
    kits::Shared<bigtime_t> eventDelay{0};

    kits::TraceLater trace;
    VoiceTable& voices;
    VoiceRenderer& renderer;
    Oversampler oversampler{renderer};
    kits::Shared<int64> dropped{0};
    kits::Shared<float> load{0};
    OutputTap tap;
};

} // namespace vexa
