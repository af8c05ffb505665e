// SPDX-License-Identifier: GPL-3.0-or-later
// The output level, in the logo bar.
#pragma once

#include "audio/OutputLevel.h"
#include "kits/interface/Ticker.h"
#include "kits/interface/View.h"

#include <array>
#include <chrono>
#include <optional>

namespace vexa {

/// Two bars with their held peaks, left above right, from -48 to 0 dB of full scale. The clip light
/// at their right end stays on until a click, Enter or Space resets it. The meter moves thirty
/// times a second. Window thread.
class LevelMeter : public BView {
  public:
    /// Makes a meter of `tap`, which outlives it.
    explicit LevelMeter(OutputTap& tap);

    /// Measures the output since the last call. To be called about ten times a second even while
    /// the meter is not visible, so that no clipping is missed.
    void Refresh();
    /// Starts or stops listening to the output. While stopped, the tap has no listener.
    void Listen(bool on);

    void Draw(BRect update) override;
    void MouseDown(BPoint where) override;
    bool KeyDown(const kits::KeyPress& press) override;
    void FocusChanged() override { Invalidate(); }
    kits::AccessibleThing Describe() const override;
    void Activate(std::optional<std::size_t>) override { PutOut(); }

  private:
    float LengthOf(float decibels) const;
    void PutOut();

    OutputTap& tap;
    std::optional<OutputLevel> level;
    std::chrono::steady_clock::time_point before;
    /// The drawn state: the lengths of both bars and of both peaks in pixels, and 1 for a lit clip
    /// light.
    std::array<float, 5> shown{};
    kits::Ticker ticker;
};

} // namespace vexa
