// SPDX-License-Identifier: GPL-3.0-or-later
// The controls in the strip for the player's tuning.
#pragma once

#include "app/strip/CellGrid.h"
#include "kits/interface/FilePanel.h"
#include "tuning/TuningChoice.h"

#include <memory>

class BMenu;
class BMenuField;

namespace vexa {

class NumberField;
class VexaView;

/// A menu of the scale and the keyboard map, and the frequency of A4. If a file cannot be read, an
/// alert says why, with the line, and the tuning stays. Window thread.
class TuningControls : public CellGrid {
  public:
    /// Makes controls that tune the MIDI consumer of the main view, which outlives them. If a
    /// plug-in plays, they are disabled and show no tuning, as the host tunes and tells it only to
    /// the plug-in.
    explicit TuningControls(VexaView& mainView);
    ~TuningControls() override;

    /// Shows the main view's tuning.
    void Refresh();
    const TuningChoice& Choice() const { return choice; }
    /// Changes the tuning and shows it (KeyTuning::Choose).
    bool Choose(const TuningChoice& change);

    void MessageReceived(BMessage* message) override;

  private:
    void FillMenu();
    void OpenPanel(uint32 result, const char* title, const char* extension);

    VexaView& mainView;
    TuningChoice choice;
    BMenu* menu;
    BMenuField* field;
    NumberField* a4;
    class OfExtension;
    std::unique_ptr<OfExtension> filter;
    std::unique_ptr<BFilePanel> panel;
};

} // namespace vexa
