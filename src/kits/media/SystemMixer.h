// SPDX-License-Identifier: GPL-3.0-or-later
// The last node of the graph: mixes its inputs into the audio device, whose clock is its time
// source.
#pragma once

#include "kits/media/DeviceClock.h"
#include "kits/media/MediaNode.h"
#include "kits/media/MixerInput.h"
#include "kits/media/Recording.h"
#include "kits/media/backends/AudioDevice.h"
#include "kits/support/Published.h"
#include "kits/support/RealtimeMark.h"

#include <array>
#include <atomic>
#include <memory>
#include <span>
#include <string>

namespace kits {

/// Takes up to kMostInputs producers of floats in one or two channels and of any rate. It converts
/// each to the device's rate in the producer's media thread; the device's thread sums them and
/// clamps the sum to -1..1. Samples pass between the threads through rings, in which neither thread
/// waits for the other.
class SystemMixer : public BBufferConsumer, public BTimeSource, private AudioSource {
  public:
    static constexpr std::size_t kMostInputs = 8;

    /// Opens a mixer that plays through the first of the systems that has a device. The error says
    /// for each system why it has none. Waits for as long as the systems take to answer. Any
    /// thread.
    static Result<std::unique_ptr<SystemMixer>> Open(std::span<const AudioSystem> systems);

    SystemMixer(AudioSystem system, std::unique_ptr<AudioDevice> device);
    ~SystemMixer() override;
    /// Starts the device, which begins to play.
    Result<void> StartDevice();
    /// Stops the device and returns it, for a new mixer at the rate that the device has now; this
    /// mixer is of no use afterwards. No producer may be connected.
    std::unique_ptr<AudioDevice> TakeDevice();

    /// Calls AudioDevice::Tend, and passes the device the latency, in microseconds, from an event
    /// to its audible effect. Window thread.
    void TendDevice(bigtime_t latency) {
        device->TellLatency(static_cast<uint32>(clock.FrameAt(latency)));
        device->Tend();
    }

    /// Also puts everything that is played from now on into the recording `next`, which may be
    /// null. When the call returns, the previous recording gets nothing any more. Window thread.
    void Record(Recording* next);

    /// Returns the sums of the counts of all inputs, including those no longer connected. Window
    /// thread.
    MixerCounts Counts() const;
    AudioSystem System() const { return system; }
    std::string DeviceName() const { return device->Name(); }
    double DeviceRate() const { return clock.Rate(); }
    /// Returns true if the device plays no more and another mixer is needed. Any thread.
    bool DeviceHasGone() const { return device->HasGone(); }
    bool DeviceHasNewRate() const { return device->HasNewRate(); }

    uint32 Kinds() const override;
    void* AddOn(int32*) const override { return nullptr; }

    status_t AcceptFormat(const media_destination& destination, media_format* format) override;
    status_t GetNextInput(int32* cookie, media_input* input) override;
    status_t Connected(BBufferProducer* producer, const media_source& source,
                       const media_destination& destination, const media_format& format) override;
    void Disconnected(const media_source& source, const media_destination& destination) override;
    VEXA_REALTIME void BufferReceived(BBuffer* buffer,
                                      const media_destination& destination) noexcept override;
    void ProducerStopped(const media_destination& destination) override;
    status_t GetLatencyFor(const media_destination& destination, bigtime_t* latency,
                           media_node_id* timeSource) override;

    VEXA_REALTIME bigtime_t PerformanceTimeFor(bigtime_t realTime) const noexcept override;
    bigtime_t RealTimeFor(bigtime_t performanceTime, bigtime_t latency) const noexcept override;
    bool IsRunning(bigtime_t realTime) const noexcept override { return clock.IsRunning(realTime); }
    VEXA_REALTIME bool Waits() const noexcept override { return waits; }

  private:
    struct Input {
        Input(const DeviceClock& clock, const media_format& format, BBufferProducer* producer,
              const media_source& source);
        MixerInput mix;
        BBufferProducer* producer;
        media_source source;
        /// The latency in microseconds that the producer was last told. It belongs to the
        /// producer's thread.
        bigtime_t latency = 0;
    };

    VEXA_REALTIME void Play(float* left, float* right, uint32 frames,
                            bigtime_t now) noexcept override;
    VEXA_REALTIME void Await(uint32 frames) noexcept override;
    VEXA_REALTIME bigtime_t FollowPeriod(Input& input,
                                         const media_destination& destination) noexcept;
    VEXA_REALTIME bigtime_t LatencyOf(const Input& input) const noexcept;
    VEXA_REALTIME std::atomic<Input*>* Slot(const media_destination& destination);

    AudioSystem system;
    std::unique_ptr<AudioDevice> device;
    DeviceClock clock;
    /// The number of frames that the device last asked for.
    std::atomic<uint32> period;
    std::array<std::atomic<Input*>, kMostInputs> inputs{};
    /// Of the device's thread: the frames played so far, and whether it has waited for the next
    /// ones.
    int64 frame = 0;
    bool awaited = false;
    /// True if the device's thread waited for the frames that it played last, or is waiting now.
    std::atomic<bool> waits{false};
    Reader reader;
    std::atomic<Recording*> recording{nullptr};
    /// The counts of the inputs that are no longer connected.
    MixerCounts past;
};

} // namespace kits
