// SPDX-License-Identifier: GPL-3.0-or-later
// The last node of the graph: mixes what it gets into the audio device, whose clock it shows.
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

/// Takes any number of producers up to kMostInputs, of floats in one or two channels and of any
/// rate. It converts each to the device's rate in the producer's media thread; the device's thread
/// sums them and limits the sum to -1..1. Samples go from one thread to the other through rings, in
/// which neither waits for the other.
class SystemMixer : public BBufferConsumer, public BTimeSource, private AudioSource {
  public:
    static constexpr std::size_t kMostInputs = 8;

    /// Makes a mixer that plays through the first of the systems that has a device; the error says
    /// of each why it has none. It waits for as long as the systems take to answer. Any thread.
    static Result<std::unique_ptr<SystemMixer>> Open(std::span<const AudioSystem> systems);

    SystemMixer(AudioSystem system, std::unique_ptr<AudioDevice> device);
    ~SystemMixer() override;
    /// Starts the device, which begins to play.
    Result<void> StartDevice();
    /// Stops and gives the device away, to a mixer at the rate that it has now; of no use itself
    /// any more. No producer may be connected.
    std::unique_ptr<AudioDevice> TakeDevice();

    /// Calls AudioDevice::Tend, and tells the device how many microseconds pass from an event to
    /// its effect. Window thread.
    void TendDevice(bigtime_t latency) {
        device->TellLatency(static_cast<uint32>(clock.FrameAt(latency)));
        device->Tend();
    }

    /// Puts what is played into the recording too from now on. After a call with null, when that
    /// returns, the one before gets nothing any more. Window thread.
    void Record(Recording* next);

    /// Adds up what all inputs have noticed, those included that are no longer connected. Window
    /// thread.
    MixerCounts Counts() const;
    AudioSystem System() const { return system; }
    std::string DeviceName() const { return device->Name(); }
    double DeviceRate() const { return clock.Rate(); }
    /// True where the device plays no more, and another mixer is needed. Any thread.
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
        /// The latency in microseconds that the producer was told last. It belongs to the
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
    /// The device last asked for so many frames.
    std::atomic<uint32> period;
    std::array<std::atomic<Input*>, kMostInputs> inputs{};
    /// The device's thread: frames played so far, and whether it has waited for the next ones.
    int64 frame = 0;
    bool awaited = false;
    /// The device's thread waited for the frames that it played last, or waits now.
    std::atomic<bool> waits{false};
    Reader reader;
    std::atomic<Recording*> recording{nullptr};
    /// What was noticed of the inputs that are no longer connected.
    MixerCounts past;
};

} // namespace kits
