// SPDX-License-Identifier: GPL-3.0-or-later
// Windows without a display: what tests of views need of the toolkit.
#pragma once

#include "kits/interface/Alert.h"
#include "kits/interface/View.h"
#include "kits/interface/Window.h"

#include <QImage>
#include <string>
#include <vector>

namespace test {

/// Delivers all messages and lets the toolkit do what is due.
void Settle();

// What a mouse does, at a point of the view, with one of the buttons of InterfaceDefs.h. The button
// stays down between Press and Release, and Drag moves with it.

void Press(BView& view, BPoint where, uint32 button = B_PRIMARY_MOUSE_BUTTON);
void Drag(BView& view, BPoint where, uint32 button = B_PRIMARY_MOUSE_BUTTON);
void Release(BView& view, BPoint where, uint32 button = B_PRIMARY_MOUSE_BUTTON);
void Click(BView& view, BPoint where, uint32 button = B_PRIMARY_MOUSE_BUTTON);
/// The second press of two.
void DoubleClick(BView& view, BPoint where);
/// Presses two buttons together.
void PressChord(BView& view, BPoint where);

/// Types into whatever has the focus in the window: a text, or one of the toolkit's keys.
void Type(BWindow& window, const char* text);
void TypeKey(BWindow& window, int key);
/// The same with modifiers of the toolkit's held.
void TypeKey(BWindow& window, int key, Qt::KeyboardModifiers modifiers);
/// Turns the wheel by so many steps over the middle of the view, or of the control in it.
void TurnWheel(BView& view, int steps, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

/// What the view and its children look like.
QImage Picture(BView& view);

/// Collects the texts of alerts and presses their last button, as long as it lives.
class AlertLog {
  public:
    AlertLog();
    ~AlertLog();
    AlertLog(const AlertLog&) = delete;
    AlertLog& operator=(const AlertLog&) = delete;

    std::vector<std::string> texts;
    /// Of the last one.
    std::string details;
    /// The button that is pressed; -1 for the last.
    int32 answer = -1;
};

/// A window on the stage that holds one view and goes with it.
class Stage {
  public:
    explicit Stage(BView* view, float width = 400, float height = 300);
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    BWindow& Window() { return *window; }

  private:
    BWindow* window;
};

} // namespace test
