// SPDX-License-Identifier: GPL-3.0-or-later
// The meter shows how loud the output is, in the strip.
#pragma once

#include "audio/OutputLevel.h"
#include "kits/interface/View.h"

#include <array>
#include <optional>

namespace vexa {

/// The meter has two bars with their held peaks, from -48 dB of full scale up, and above them the
/// light for clipping, which a click puts out. Window thread.
class LevelMeter : public BView {
  public:
    /// The tap outlives it; null where the output is somebody else's.
    explicit LevelMeter(OutputTap* tap);

    /// Takes what has come since the last call, so many seconds ago.
    void Refresh(double seconds);
    /// Is told whether anybody sees the meter; while nobody does, it leaves the output alone.
    void Listen(bool on);

    void Draw(BRect update) override;
    void MouseDown(BPoint where) override;
    bool KeyDown(const kits::KeyPress& press) override;
    void FocusChanged() override { Invalidate(); }
    kits::AccessibleThing Describe() const override;
    void Activate(std::optional<std::size_t>) override { PutOut(); }

  private:
    float HeightOf(float decibels) const;
    void PutOut();

    OutputTap* const tap;
    std::optional<OutputLevel> level;
    /// What is drawn: the heights of bars and peaks in pixels, and the light.
    std::array<float, 5> shown{};
};

} // namespace vexa
