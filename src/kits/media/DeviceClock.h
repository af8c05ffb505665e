// SPDX-License-Identifier: GPL-3.0-or-later
// The clock of an audio device: the number of frames that it has played, also between its periods.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "kits/support/Shared.h"
#include "kits/support/SupportDefs.h"

#include <array>

namespace kits {

/// Performance time is the device's frame count in microseconds, so it runs at the device's speed
/// instead of the system clock's. Between two periods it is extrapolated from the beginning of the
/// last one.
class DeviceClock {
  public:
    /// `smoothing` is the fraction, 0..1, of the deviation from the expected moment that each
    /// period adopts: 1 for steady moments, less for moments at which a thread woke up.
    explicit DeviceClock(double rate, double smoothing = 0.05) : rate(rate), smoothing(smoothing) {}

    /// Records that a period begins with the device's frame `frame` at `realTime`, in microseconds.
    /// The device's thread.
    VEXA_REALTIME void Period(int64 frame, bigtime_t realTime) noexcept;

    /// Returns the number of the first frame of the present period. Any thread.
    int64 Frame() const noexcept { return Latest().frame; }
    /// Returns the performance time of a moment of the system's clock, both in microseconds. It is
    /// computed from the period that was under way at that moment, so an event that arrived with a
    /// period is at that period's frame however late the call comes. Wait-free, any thread.
    VEXA_REALTIME bigtime_t PerformanceTimeFor(bigtime_t realTime) const noexcept;
    bigtime_t RealTimeFor(bigtime_t performanceTime) const noexcept;

    /// Returns true if the device has begun a period in the half second before `realTime`. Any
    /// thread.
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

    /// The number of latest moments that may be read. The others may be overwritten, as a period or
    /// two may begin during a read.
    static constexpr uint32 kReadable = 6;

    double rate;
    double smoothing;
    /// A ring. The latest moment is complete and is not overwritten before as many further periods
    /// have begun as the ring has places, so no reader has to retry.
    std::array<Moment, 8> moments;
    Shared<uint32> latest{0};
    /// The device's thread only: whether a period has begun.
    bool running = false;
};

} // namespace kits
