// SPDX-License-Identifier: GPL-3.0-or-later
// The controls in the strip for how the sound is played.
#pragma once

#include "app/strip/CellGrid.h"
#include "documents/Sound.h"
#include "synth/Playing.h"

#include <array>

class BMenuField;

namespace vexa {

class Instrument;
class NumberField;
class VexaView;

/// Each row of PlayingRows() has a menu or a number field. A value that the sound does not set is
/// shown all the same, with a quiet label. A value from the command line or from a host's
/// knob takes precedence and cannot be changed here. Window thread.
class PlayingControls : public CellGrid {
  public:
    /// Edits the instrument of the main view, which outlives it.
    explicit PlayingControls(VexaView& mainView);

    /// Shows changes since the last call.
    void Refresh();
    void MessageReceived(BMessage* message) override;

  private:
    /// A row's control: either `number` or `menu` is set, the other is null.
    struct Control {
        NumberField* number = nullptr;
        BMenuField* menu = nullptr;
    };

    Control NewControl(std::size_t row);
    void Show(std::size_t row);
    double ValueOf(std::size_t row) const;

    VexaView& mainView;
    std::array<Control, kPlayingRows> controls;
    /// The instrument's count of changes, its voice limit, and the values that take precedence, as
    /// the controls show them.
    uint64 shown = ~uint64{0};
    int32 shownLimit = 0;
    PlayingTexts shownPreferred;
};

} // namespace vexa
