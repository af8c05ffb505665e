// SPDX-License-Identifier: GPL-3.0-or-later
// These controls set the player's tuning, in the strip.
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

/// There are a menu of scale and keyboard map, and the frequency of A4. What cannot be read is told
/// with its line, and the tuning before stays. Window thread.
class TuningControls : public CellGrid {
  public:
    /// Makes controls that tune the consumer of the main view, which outlives them. Where a plug-in
    /// plays the host tunes.
    explicit TuningControls(VexaView& mainView);
    ~TuningControls() override;

    /// Shows what the main view is tuned to.
    void Refresh();
    const TuningChoice& Choice() const { return choice; }
    /// Reads it and has it heard; false, with an alert, where that fails.
    bool Choose(const TuningChoice& next);

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
