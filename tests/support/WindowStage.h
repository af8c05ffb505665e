// SPDX-License-Identifier: GPL-3.0-or-later
// Windows without a display: helpers for tests of views.
#pragma once

#include "kits/interface/Alert.h"
#include "kits/interface/View.h"
#include "kits/interface/Window.h"

#include <QImage>
#include <functional>
#include <string>
#include <vector>

namespace test {

/// Delivers all messages and lets the toolkit process its pending events.
void Settle();

// Actions of a mouse at a point of the view, with one of the buttons of InterfaceDefs.h. The button
// stays down between Press and Release; Drag moves the mouse while it is down, or none if it is 0.

void Press(BView& view, BPoint where, uint32 button = B_PRIMARY_MOUSE_BUTTON);
void Drag(BView& view, BPoint where, uint32 button = B_PRIMARY_MOUSE_BUTTON);
/// `held` stays down.
void Release(BView& view, BPoint where, uint32 button = B_PRIMARY_MOUSE_BUTTON, uint32 held = 0);
void Click(BView& view, BPoint where, uint32 button = B_PRIMARY_MOUSE_BUTTON);
/// The second press of a double click.
void DoubleClick(BView& view, BPoint where);
/// Presses two buttons together.
void PressChord(BView& view, BPoint where);

/// Types a text, or one of the toolkit's keys, into the focused view of the window.
void Type(BWindow& window, const char* text);
void TypeKey(BWindow& window, int key);
/// Types a key while modifiers of the toolkit are held.
void TypeKey(BWindow& window, int key, Qt::KeyboardModifiers modifiers);
/// Turns the wheel by `steps` over the middle of the view, or of the control in it.
void TurnWheel(BView& view, int steps, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

/// Returns the picture of the view and its children.
QImage Picture(BView& view);

/// Collects the texts of alerts and presses their last button, during its lifetime.
class AlertLog {
  public:
    AlertLog();
    ~AlertLog();
    AlertLog(const AlertLog&) = delete;
    AlertLog& operator=(const AlertLog&) = delete;

    std::vector<std::string> texts;
    /// The details and the heading of the last alert.
    std::string details, heading;
    /// The button that is pressed; -1 for the last.
    int32 answer = -1;
    /// Called while an alert waits for its answer, if set.
    std::function<void()> meanwhile;
};

/// A window on the stage that holds one view and destroys it.
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
