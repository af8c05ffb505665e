// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/OutputLevel.h"

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

constexpr double kFall = 20 / 1.7;
constexpr double kHold = 2;

float Decibels(float peak) {
    return peak > 0 ? std::max(20 * std::log10(peak), OutputLevel::kSilence)
                    : OutputLevel::kSilence;
}

} // namespace

void OutputLevel::Look(double seconds) {
    const uint64 end = listener.Count();
    // After a long time only the end is still there, of which the oldest frames may go at any
    // moment.
    constexpr uint64 kMost = OutputTap::kFrames / 2;
    next = std::max(next, end > kMost ? end - kMost : 0);
    frames.resize(end - next);
    float left = 0, right = 0;
    if (listener.Copy(next, frames)) {
        for (const OutputFrame& frame : frames) {
            left = std::max(left, std::abs(frame.left));
            right = std::max(right, std::abs(frame.right));
        }
    }
    next = end;
    clipped = clipped || left > 1 || right > 1;
    Follow(channels[0], Decibels(left), seconds);
    Follow(channels[1], Decibels(right), seconds);
}

void OutputLevel::Follow(Channel& channel, float peak, double seconds) {
    const auto fallen = static_cast<float>(channel.level - kFall * seconds);
    channel.level = std::max({peak, fallen, kSilence});
    channel.age += seconds;
    if (peak >= channel.held)
        channel.age = 0;
    if (peak >= channel.held || channel.age > kHold)
        channel.held = channel.level;
}

} // namespace vexa
