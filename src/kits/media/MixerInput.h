// SPDX-License-Identifier: GPL-3.0-or-later
// An input is one producer's way into the mix: its sound is converted to the device's rate, and
// kept until it is played.
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

/// These count what the mixer has noticed of one input since it was connected.
struct MixerCounts {
    /// Buffers of which something came when its moment was over.
    int64 late = 0;
    /// Periods in which there was nothing, or not enough, to play.
    int64 missing = 0;
};

/// It takes floats of one or two interleaved channels, is written by the producer's media thread
/// and read by the device's thread; neither waits or allocates.
class MixerInput {
  public:
    /// `rate` is the producer's; `longest` the most frames in one of its buffers.
    MixerInput(const DeviceClock& clock, double rate, std::size_t longest, unsigned channels = 1);

    /// The microseconds by which a buffer is to be there before the device's thread looks for it:
    /// what a producer's thread of real-time priority may be late without harm.
    static constexpr bigtime_t kMargin = 1000;

    /// The producer's thread: frames to be heard from a performance time on. Values that are not
    /// finite become 0. Answers by how many microseconds the producer's latency should change. More
    /// than 0 is by how much more than any since the last in time they came after the device had
    /// fetched what it played at that time: those that are late in a row were due before the
    /// producer could do anything about the first. Less than 0 is what all of the last two
    /// seconds came earlier than they had to.
    VEXA_REALTIME bigtime_t Write(std::span<const float> frames, bigtime_t start) noexcept;

    /// True where the frames before `frame` are there, or none are expected, so that there is
    /// nothing to wait for. Any thread.
    VEXA_REALTIME bool Reaches(int64 frame) const noexcept { return !playing || written >= frame; }

    VEXA_REALTIME std::size_t Channels() const { return channels; }
    /// Adds what belongs to the frames from `frame` on, one channel's to `left` and the other's to
    /// `right`, which is as long. An input of one channel has no right. The device's thread.
    VEXA_REALTIME void AddTo(std::span<float> left, float* right, int64 frame) noexcept;

    /// The producer has stopped: that nothing comes is not counted, until it writes again.
    void Stopped() noexcept { playing = false; }

    /// Returns how many microseconds the conversion looks ahead.
    VEXA_REALTIME bigtime_t Lookahead() const { return lookahead; }
    /// Tells what was noticed so far. Any thread.
    MixerCounts Counts() const noexcept { return {late, missing}; }

  private:
    /// The ring holds frames in a row: `count` of them, from the device's `frame` on.
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
    /// The converter of rates; there is none where both rates are the same.
    std::unique_ptr<RateConverter> converter;
    bigtime_t lookahead = 0;

    // What follows belongs to the producer's thread.
    std::vector<float> finite;
    std::vector<float> converted;
    /// The buffers so far that follow on one another without a gap: the performance time at which
    /// the first began, and the frames in them. The next one's time is computed from both, as a sum
    /// of durations would be off by half a buffer after some days.
    bigtime_t rowStart = -1;
    int64 rowFrames = 0;
    /// The device's frame that the next converted frame is.
    int64 nextFrame = 0;
    /// The microseconds of lateness that the producer knows of since it was last in time.
    bigtime_t told = 0;
    /// The microseconds of sound in a row that were in time, and the least that any of it was
    /// early.
    double inTime = 0;
    bigtime_t leastSlack = 0;

    Ring<float> samples;
    Ring<Stretch> stretches;

    // What follows belongs to the device's thread.
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
