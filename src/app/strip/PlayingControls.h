// SPDX-License-Identifier: GPL-3.0-or-later
// These controls set how the sound is played, in the strip.
#pragma once

#include "app/strip/CellGrid.h"
#include "synth/Playing.h"

#include <array>

class BMenuField;

namespace vexa {

class Instrument;
class NumberField;
class VexaView;

/// There is a menu or a number for each row of PlayingRows(). What the sound does not say is shown
/// as it is all the same, quietly; what the command line says stands before and cannot be changed
/// here. Window thread.
class PlayingControls : public CellGrid {
  public:
    /// Edits the instrument of the main view, which outlives it.
    explicit PlayingControls(VexaView& mainView);

    /// Shows what has changed.
    void Refresh();
    void MessageReceived(BMessage* message) override;

  private:
    /// A row's control, a menu or a field; one of the two is there.
    struct Control {
        NumberField* number = nullptr;
        BMenuField* menu = nullptr;
    };

    Control NewControl(std::size_t row);
    void Show(std::size_t row);
    double ValueOf(std::size_t row) const;

    VexaView& mainView;
    std::array<Control, kPlayingRows> controls;
    /// The changes of the instrument that are shown, and its voice limit.
    uint64 shown = ~uint64{0};
    int32 shownLimit = 0;
};

} // namespace vexa
