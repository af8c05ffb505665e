// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/DeviceClock.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kits {

namespace {

/// A deviation of this many microseconds is no jitter: the device has paused or lost a period.
constexpr double kJump = 20000;

/// After this many microseconds without a period, several of the longest periods, the device counts
/// as standing still.
constexpr double kStandstill = 500000;

} // namespace

void DeviceClock::Period(int64 frame, bigtime_t realTime) noexcept {
    const Moment& before = Latest();
    double moment = static_cast<double>(realTime);
    if (running) {
        const double expected =
            before.realTime + static_cast<double>(frame - before.frame) * 1e6 / rate;
        const double deviation = moment - expected;
        if (std::abs(deviation) < kJump)
            moment = expected + smoothing * deviation;
    }
    running = true;
    const uint32 next = (latest + 1) % moments.size();
    moments[next].frame = frame;
    moments[next].realTime = moment;
    latest = next;
}

bigtime_t DeviceClock::PerformanceTimeFor(bigtime_t realTime) const noexcept {
    const auto time = static_cast<double>(realTime);
    const auto size = static_cast<uint32>(moments.size());
    uint32 at = latest;
    // The result is limited to the next period's first frame: while the device stands still, no
    // frames pass.
    bigtime_t end = std::numeric_limits<bigtime_t>::max();
    for (uint32 looked = 1; looked < kReadable && moments[at].realTime > time; looked++) {
        const uint32 before = (at + size - 1) % size;
        if (moments[before].realTime == 0)
            break;
        end = TimeOf(moments[at].frame);
        at = before;
    }
    const Moment& moment = moments[at];
    const auto since = static_cast<bigtime_t>(time - moment.realTime);
    return std::min(TimeOf(moment.frame) + since, end);
}

bigtime_t DeviceClock::RealTimeFor(bigtime_t performanceTime) const noexcept {
    const Moment& moment = Latest();
    return static_cast<bigtime_t>(moment.realTime) + performanceTime - TimeOf(moment.frame);
}

bool DeviceClock::IsRunning(bigtime_t realTime) const noexcept {
    return static_cast<double>(realTime) - Latest().realTime < kStandstill;
}

int64 DeviceClock::FrameAt(bigtime_t performanceTime) const noexcept {
    return std::llround(static_cast<double>(performanceTime) * rate / 1e6);
}

} // namespace kits
