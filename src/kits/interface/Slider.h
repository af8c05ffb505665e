// SPDX-License-Identifier: GPL-3.0-or-later
// A slider for an integer.
#pragma once

#include "kits/interface/Control.h"

class QSlider;

/// A slider for an integer. It shows its label and its number above itself, or neither if the label
/// is empty. While the user moves it, by mouse or keyboard, it sends its message with the number as
/// int32 "be:value". Window thread.
class BSlider : public BControl {
  public:
    BSlider(BRect frame, const char* name, const char* label, BMessage* message, int32 minimum,
            int32 maximum, uint32 resizingMode = B_FOLLOW_LEFT | B_FOLLOW_TOP,
            uint32 flags = B_WILL_DRAW | B_NAVIGABLE);

    int32 Value() const;
    /// Sets the number without sending the message.
    void SetValue(int32 value);
    /// Sets the number and sends the message, as a move by the user does.
    void Move(int32 value);

  private:
    QSlider* slider;
    bool silent = false;
};
