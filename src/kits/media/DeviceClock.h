// SPDX-License-Identifier: GPL-3.0-or-later
// The clock of an audio device: how many frames it has played, told between its periods.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "kits/support/Shared.h"
#include "kits/support/SupportDefs.h"

#include <array>

namespace kits {

/// Performance time is the device's frames as microseconds: it runs at the device's speed, not at
/// that of the system's clock. Between two periods it is told from the last one's beginning.
class DeviceClock {
  public:
    /// `smoothing` is the share of the deviation from the expected moment that is taken over in
    /// each period: 1 where the moments are steady, less where they are those at which a thread
    /// woke up.
    explicit DeviceClock(double rate, double smoothing = 0.05) : rate(rate), smoothing(smoothing) {}

    /// Tells that a period begins with the device's frame `frame`, at that real time in
    /// microseconds. The device's thread.
    VEXA_REALTIME void Period(int64 frame, bigtime_t realTime) noexcept;

    /// Returns the number of the first frame of the present period. Any thread.
    int64 Frame() const noexcept { return Latest().frame; }
    /// Returns the performance time of a moment of the system's clock, both in microseconds. It is
    /// told from the period that was under way at that moment, so that what came in with a period
    /// is at its frame however late one asks. Wait-free, any thread.
    VEXA_REALTIME bigtime_t PerformanceTimeFor(bigtime_t realTime) const noexcept;
    bigtime_t RealTimeFor(bigtime_t performanceTime) const noexcept;

    /// True where the device has begun a period in the last half second. Any thread.
    bool IsRunning(bigtime_t realTime) const noexcept;

    VEXA_REALTIME bigtime_t TimeOf(int64 frame) const noexcept {
        return static_cast<bigtime_t>(static_cast<double>(frame) * 1e6 / rate);
    }
    VEXA_REALTIME int64 FrameAt(bigtime_t performanceTime) const noexcept;
    VEXA_REALTIME double Rate() const { return rate; }

  private:
    struct Moment {
        Shared<int64> frame{0};
        /// The system's time at the beginning of the period, in microseconds, smoothed.
        Shared<double> realTime{0};
    };
    VEXA_REALTIME const Moment& Latest() const noexcept { return moments[latest]; }

    /// How many of the latest moments may be read: the others may be overwritten, as a period or
    /// two may begin meanwhile.
    static constexpr uint32 kReadable = 6;

    double rate;
    double smoothing;
    /// The latest is complete, and is not written again for as many periods as there are places:
    /// no reader has to try twice.
    std::array<Moment, 8> moments;
    Shared<uint32> latest{0};
    /// The device's thread only: whether a period has been seen.
    bool running = false;
};

} // namespace kits
