// SPDX-License-Identifier: GPL-3.0-or-later
// Measures the output level.
#pragma once

#include "audio/OutputTap.h"

#include <vector>

namespace vexa {

/// The peaks of both channels as a meter shows them: they rise at once and fall by 20 dB in 1.7 s
/// (IEC 60268-10, type I), with the highest peak of the last two seconds and a clip light. Each
/// view has its own object. Window thread.
class OutputLevel {
  public:
    /// The level in dB of full scale below which everything counts as silence.
    static constexpr float kSilence = -60;

    /// Begins to listen to the tap, which must outlive this object.
    explicit OutputLevel(OutputTap& tap) : listener(tap), next(listener.Count()) {}

    /// Takes the frames since the last call, which was `seconds` ago. To be called about ten times
    /// a second or more, so that no peak is missed.
    void Look(double seconds);

    /// Returns the level in dB of full scale, from kSilence on; channel 0 is left, 1 right.
    float Level(std::size_t channel) const { return channels[channel].level; }
    float Held(std::size_t channel) const { return channels[channel].held; }
    /// Returns true if a sample exceeded full scale since the start or the last Forgive.
    bool Clipped() const { return clipped; }
    void Forgive() { clipped = false; }

  private:
    struct Channel {
        float level = kSilence;
        float held = kSilence;
        /// The seconds since `held` was reached.
        double age = 0;
    };
    static void Follow(Channel& channel, float peak, double seconds);

    const OutputTap::Listener listener;
    /// The number of the first frame that has not been examined.
    uint64 next;
    std::vector<OutputFrame> frames;
    Channel channels[2];
    bool clipped = false;
};

} // namespace vexa
