// SPDX-License-Identifier: GPL-3.0-or-later
// The strip for playing, below the main view.
#pragma once

#include "kits/interface/Ticker.h"
#include "kits/interface/View.h"

#include <chrono>

namespace vexa {

class Latch;
class LevelMeter;
class MacroKnobs;
class Piano;
class PlayingControls;
class Scope;
class TuningControls;
class VexaView;
class Wheel;

/// The strip has scope, level, macros, how the sound is played, and tuning, and below these the
/// piano with its wheels and its hold. It looks thirty times a second at what plays, while it is
/// seen, and draws what has changed. Window thread.
class Strip : public BView {
  public:
    /// Shows and edits what the main view plays, which outlives it.
    Strip(BRect frame, VexaView& mainView);
    ~Strip() override;

    /// Return the size in pixels, as BRect::Height and BRect::Width count it.
    static float PreferredHeight();
    static float LeastWidth();

    TuningControls& Tuning() { return *tuning; }
    Scope& Curve() { return *scope; }

    /// Shows what there is now.
    void Refresh();

    void AttachedToWindow() override;
    void Draw(BRect update) override;
    void ColorsChanged() override;
    void FrameResized(float width, float height) override;
    void Pulse() override;

  private:
    void Arrange();
    void ShowHands();

    VexaView& mainView;
    // Views, which go with this one.
    Scope* scope;
    LevelMeter* meter;
    MacroKnobs* macros;
    PlayingControls* playing;
    TuningControls* tuning;
    Wheel* bend;
    Wheel* modulation;
    Latch* hold;
    Piano* piano;
    std::chrono::steady_clock::time_point before;
    kits::Ticker ticker;
};

} // namespace vexa
