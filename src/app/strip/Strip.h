// SPDX-License-Identifier: GPL-3.0-or-later
// The strip for playing, below the main view.
#pragma once

#include "kits/interface/Ticker.h"
#include "kits/interface/View.h"

#include <functional>

namespace vexa {

class Latch;
class MacroKnobs;
class Piano;
class PlayingControls;
class Scope;
class TuningControls;
class VexaView;
class Wheel;

/// The strip has scope, macros, how the sound is played, and tuning, and below these the piano with
/// its wheels and its hold. In a low window it shows one of the two rows, and a button turns it to
/// the other one. It looks thirty times a second at what plays, while it is seen, and draws what
/// has changed. Window thread.
class Strip : public BView {
  public:
    /// Shows and edits what the main view plays, which outlives it. `turned` is called when another
    /// row is shown, which may need another height.
    Strip(BRect frame, VexaView& mainView, std::function<void()> turned);
    ~Strip() override;

    /// Return the size in pixels, as BRect::Height and BRect::Width count it: of both rows, and of
    /// the one that is shown where there is but one.
    static float PreferredHeight();
    float LeastHeight() const;
    static float LeastWidth();

    /// Whether there is room for one row only.
    void SetLow(bool next);

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
    void Turn(bool toControls);
    void Arrange();
    void ArrangeControls(float left, float top, float bottom);
    void ArrangeHands(float top, float bottom);
    void ShowHands();

    VexaView& mainView;
    const std::function<void()> turned;
    bool low = false;
    /// Which of the rows a low one shows: the upper one.
    bool showsControls = false;
    // Views, which go with this one.
    Scope* scope;
    MacroKnobs* macros;
    PlayingControls* playing;
    TuningControls* tuning;
    Wheel* bend;
    Wheel* modulation;
    Latch* hold;
    /// Of a low strip.
    Latch* other;
    Piano* piano;
    kits::Ticker ticker;
};

} // namespace vexa
