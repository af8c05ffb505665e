// SPDX-License-Identifier: GPL-3.0-or-later
// How loud the output is, in the logo bar.
#pragma once

#include "audio/OutputLevel.h"
#include "kits/interface/Ticker.h"
#include "kits/interface/View.h"

#include <array>
#include <chrono>
#include <optional>

namespace vexa {

/// Two bars with their held peaks, left above right, from -48 dB of full scale on, and at their
/// right end the light for clipping, which stays on until a click, Enter or Space puts it out.
/// Moves thirty times a second. Window thread.
class LevelMeter : public BView {
  public:
    /// The tap outlives it.
    explicit LevelMeter(OutputTap& tap);

    /// Takes what has come since the last call. To be called some ten times a second also where
    /// nobody sees it, so that no clipping is missed.
    void Refresh();
    /// Whether the output is looked at; else it is left alone.
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
    /// What is drawn: lengths of bars and peaks in pixels, and the light.
    std::array<float, 5> shown{};
    kits::Ticker ticker;
};

} // namespace vexa
