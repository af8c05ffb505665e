// SPDX-License-Identifier: GPL-3.0-or-later
// The strip of controls for playing, below the main view.
#pragma once

#include "kits/interface/Ticker.h"
#include "kits/interface/View.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace vexa {

class Latch;
class MacroKnobs;
class Piano;
class PlayingControls;
class Scope;
class TuningControls;
class VexaView;
class Wheel;

/// The upper row has the scope, the macros, the controls for playing and the tuning; the lower row
/// has the piano with its wheels and the hold switch. In a low window the strip shows one row, and
/// a button switches to the other. While visible, the strip looks thirty times a second at the
/// sound that plays and draws the changes. Window thread.
class Strip : public BView {
  public:
    /// Makes a strip that shows and edits the sound of the main view, which outlives it. `turned`
    /// is called when the button has been used, as another row may need another height.
    Strip(BRect frame, VexaView& mainView, std::function<void()> turned);
    ~Strip() override;

    /// Return the size in pixels, as BRect::Height and BRect::Width count it. PreferredHeight is
    /// that of both rows, LeastHeight that of the row which a low strip shows.
    static float PreferredHeight();
    float LeastHeight() const;
    static float LeastWidth();

    /// Sets whether there is room for one row only.
    void SetLow(bool next);

    TuningControls& Tuning() { return *tuning; }
    Scope& Curve() { return *scope; }

    /// Shows the present state.
    void Refresh();

    void AttachedToWindow() override;
    void Draw(BRect update) override;
    void ColorsChanged() override;
    void FrameResized(float width, float height) override;
    void Pulse() override;

  private:
    /// What is shown at the same time.
    struct Page {
        /// The lower row.
        bool hands = false;
        /// The upper row: the controls for playing, and the scope, the macros and the tuning.
        bool playing = false;
        bool others = false;
    };

    std::vector<Page> Pages() const;
    Page Shown() const;
    void Turn();
    void Arrange();
    void ArrangeControls(const Page& page, float left, float top, float bottom);
    void ArrangeHands(float top, float bottom);
    void ShowHands();

    VexaView& mainView;
    const std::function<void()> turned;
    bool low = false;
    /// The index in Pages() of what is shown, or more if there are fewer now: then it is the last.
    std::size_t pageIndex = 0;
    // Views, which the strip owns as its children.
    Scope* scope;
    MacroKnobs* macros;
    PlayingControls* playingControls;
    TuningControls* tuning;
    Wheel* bend;
    Wheel* modulation;
    Latch* hold;
    /// The button that goes on to the next page, if there are several.
    Latch* other;
    Piano* piano;
    kits::Ticker ticker;
};

} // namespace vexa
