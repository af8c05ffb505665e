// SPDX-License-Identifier: GPL-3.0-or-later
// The macros of the sound, in the strip.
#pragma once

#include "app/ControllerLearn.h"
#include "kits/interface/View.h"
#include "synth/Macros.h"
#include "synth/PlaneFunction.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>

class BTextControl;

namespace vexa {

class Knob;
class VexaView;

/// Each macro has a knob, its value as a number, and the number of the controller that moves it.
/// While the controller's field has the keyboard focus, the next controller that moves is taken.
/// Macros that the function on the plane does not use are dimmed, and so are those that a host
/// sets, which cannot be changed here. Window thread.
class MacroKnobs : public BView {
  public:
    /// Edits the instrument of the main view, which outlives it.
    explicit MacroKnobs(VexaView& mainView);

    /// Return the size in pixels, as BRect::Height and BRect::Width count it.
    static float PreferredHeight();
    static float PreferredWidth();

    /// Shows changes made by loading, controllers and typing.
    void Refresh();
    void ColorsChanged() override;
    void Draw(BRect update) override;
    void MessageReceived(BMessage* message) override;

  private:
    struct Cell {
        float left = 0;
        Knob* knob = nullptr;
        BTextControl* value = nullptr;
        BTextControl* controller = nullptr;
        bool used = true;
        bool isHosts = false;
    };

    void AddCell(std::size_t macro);
    BMessage* MessageOf(uint32 code, std::size_t macro) const;
    void ShowUse();
    void ShowValues();
    void MarkFields(std::size_t macro);
    void Learn();

    VexaView& mainView;
    std::array<Cell, kMacros> cells;
    /// The function whose use of the macros the cells show.
    PlaneFunction function{nullfunc};
    /// The macro whose controller field has the keyboard focus (`kMacros` if none), and the
    /// detection of its controller, until one has moved.
    std::size_t learner = kMacros;
    std::optional<ControllerLearn> learn;
};

} // namespace vexa
