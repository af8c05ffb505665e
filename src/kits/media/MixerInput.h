// SPDX-License-Identifier: GPL-3.0-or-later
// An input of the mixer: converts one producer's sound to the device's rate and keeps it until it
// is played.
#pragma once

#include "kits/media/DeviceClock.h"
#include "kits/media/MediaDefs.h"
#include "kits/media/RateConverter.h"
#include "kits/support/RealtimeMark.h"
#include "kits/support/Ring.h"

#include <atomic>
#include <memory>
#include <span>
#include <vector>

namespace kits {

/// Counts of the faults that the mixer has noticed at one input since it was connected.
struct MixerCounts {
    /// Buffers of which at least a part arrived after its moment had passed.
    int64 late = 0;
    /// Periods in which the input had too few frames to play, or none.
    int64 missing = 0;
};

/// Takes floats of one or two interleaved channels. The producer's media thread writes, the
/// device's thread reads; neither waits or allocates.
class MixerInput {
  public:
    /// `rate` is the producer's sample rate; `longest` is the maximum number of frames in one of
    /// its buffers.
    MixerInput(const DeviceClock& clock, double rate, std::size_t longest, unsigned channels = 1);

    /// The time, in microseconds, by which a buffer should arrive before the device's thread
    /// fetches it: the delay that a producer's real-time thread may have without harm.
    static constexpr bigtime_t kMargin = 1000;

    /// Takes frames to be heard from the performance time `start` on. Values that are not finite
    /// become 0. Returns the change of latency, in microseconds, that the producer should make. A
    /// positive value means that this buffer arrived after the device had fetched its frames;
    /// within a run of late buffers only the increase over the worst so far is returned, because
    /// the later ones were already scheduled before the producer could react to the first. A
    /// negative value means that every buffer of the last two seconds arrived earlier than
    /// necessary by at least that much. The producer's thread.
    VEXA_REALTIME bigtime_t Write(std::span<const float> frames, bigtime_t start) noexcept;

    /// Returns true if the frames before `frame` have been written, or if none are expected, so
    /// that there is nothing to wait for. Any thread.
    VEXA_REALTIME bool Reaches(int64 frame) const noexcept { return !playing || written >= frame; }

    VEXA_REALTIME std::size_t Channels() const { return channels; }
    /// Adds the frames from `frame` on: the first channel to `left`, the second to `right`, which
    /// is as long. An input of one channel leaves `right` unchanged. The device's thread.
    VEXA_REALTIME void AddTo(std::span<float> left, float* right, int64 frame) noexcept;

    /// Notes that the producer has stopped: missing frames are not counted until it writes again.
    void Stopped() noexcept { playing = false; }

    /// Returns how many microseconds of input the conversion needs ahead of its output.
    VEXA_REALTIME bigtime_t Lookahead() const { return lookahead; }
    /// Returns the faults noticed so far. Any thread.
    MixerCounts Counts() const noexcept { return {late, missing}; }

  private:
    /// A run of `count` consecutive frames in the ring, from the device's frame `frame` on.
    struct Stretch {
        int64 frame;
        uint32 count;
    };

    VEXA_REALTIME std::span<const float> Convert(std::span<const float> frames) noexcept;
    VEXA_REALTIME bigtime_t LatencyChange(bigtime_t slack, double duration) noexcept;
    VEXA_REALTIME bool NextStretch(int64 frame) noexcept;
    VEXA_REALTIME void Pass(std::size_t frames) noexcept;

    const DeviceClock& clock;
    double rate;
    std::size_t channels;
    /// The rate converter; null where both rates are the same.
    std::unique_ptr<RateConverter> converter;
    bigtime_t lookahead = 0;

    // The following members belong to the producer's thread.
    std::vector<float> finite;
    std::vector<float> converted;
    /// The row is the sequence of buffers so far that follow one another without a gap: the
    /// performance time at which the first began, and the frames in them. The next buffer's time is
    /// computed from both, as a sum of durations would be off by half a buffer after some days.
    bigtime_t rowStart = -1;
    int64 rowFrames = 0;
    /// The device's frame number of the next converted frame.
    int64 nextFrame = 0;
    /// The lateness in microseconds that has been reported to the producer since it was last in
    /// time.
    bigtime_t reported = 0;
    /// The microseconds of consecutive sound that arrived in time, and the smallest slack within
    /// it.
    double inTime = 0;
    bigtime_t leastSlack = 0;

    Ring<float> samples;
    Ring<Stretch> stretches;

    // The following members belong to the device's thread.
    Stretch stretch{0, 0};
    std::vector<float> piece;
    bool lateCounted = false;

    /// The frame up to which the device's thread has fetched.
    std::atomic<int64> fetched{0};
    /// The frame up to which the producer's thread has written.
    std::atomic<int64> written{0};
    std::atomic<bool> playing{false};
    std::atomic<int64> late{0};
    std::atomic<int64> missing{0};
};

} // namespace kits
