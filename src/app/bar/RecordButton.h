// SPDX-License-Identifier: GPL-3.0-or-later
// The button that begins and ends recordings, in the logo bar.
#pragma once

#include "kits/interface/Control.h"

#include <optional>
#include <string>

namespace vexa {

/// The button has the colour of a running recording as long as there is one, and shows its length
/// in minutes and seconds. Screen readers get both as its name and its description. Window thread.
class RecordButton : public BButton {
  public:
    /// Makes a button that sends `message`. `frame` is that of BButton.
    RecordButton(BRect frame, BMessage* message);

    /// Shows a recording of that length, in seconds, or that there is none. Redraws only if another
    /// second has begun.
    void Show(std::optional<double> seconds);
    /// Sets the tip for when nothing is recorded.
    void SetRestingTip(const std::string& text);

  private:
    std::string restingTip;
};

} // namespace vexa
