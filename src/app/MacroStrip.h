// SPDX-License-Identifier: GPL-3.0-or-later
// The macros of the sound below the main view.
#pragma once

#include "kits/interface/View.h"
#include "synth/Macros.h"
#include "synth/PlaneFunction.h"

#include <array>
#include <cstddef>
#include <string>

class BSlider;
class BTextControl;

namespace vexa {

class Instrument;
class VexaView;

/// For each macro its value, as a number and as a slider, and the number of the controller that
/// moves it. Those that the function on the plane does not use are dimmed. Window thread.
class MacroStrip : public BView {
  public:
    /// Edits the instrument of the main view, which outlives it, from `left` to `right` below
    /// `top`, as high as PreferredHeight says.
    MacroStrip(float left, float top, float right, VexaView& mainView);

    /// As BRect::Height and BRect::Width count them.
    static float PreferredHeight();
    static float LeastWidth();

    /// Shows what loading, controllers and typing have changed.
    void Pulse() override;
    void ColorsChanged() override;
    void Draw(BRect update) override;
    void MessageReceived(BMessage* message) override;

  private:
    struct Cell {
        float left = 0;
        BTextControl* value = nullptr;
        BSlider* slider = nullptr;
        BTextControl* controller = nullptr;
        bool used = true;
    };

    void AddCell(std::size_t macro, float left, float slider);
    BMessage* MessageOf(uint32 code, std::size_t macro) const;
    void ShowUse();
    void ShowValues();
    void MarkFields(std::size_t macro);

    VexaView& mainView;
    std::array<Cell, kMacros> cells;
    float baseline = 0;
    /// The function that the cells show the use of.
    PlaneFunction function{nullfunc};
};

} // namespace vexa
