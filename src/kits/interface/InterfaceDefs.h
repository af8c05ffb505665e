// SPDX-License-Identifier: GPL-3.0-or-later
// The colours, modes and codes that views and windows share.
#pragma once

#include "kits/support/SupportDefs.h"

#include <string>

struct rgb_color {
    uint8 red = 0;
    uint8 green = 0;
    uint8 blue = 0;
    uint8 alpha = 255;
    bool operator==(const rgb_color&) const = default;
};

/// A view with this colour paints nothing behind what it draws itself.
constexpr rgb_color B_TRANSPARENT_COLOR = {119, 116, 119, 0};

/// A drawing operation takes the view's high or its low colour.
enum pattern { B_SOLID_HIGH, B_SOLID_LOW };

// These say how a view follows when its parent is resized. A view takes the sum of one value for
// each direction.

constexpr uint32 B_FOLLOW_NONE = 0;
constexpr uint32 B_FOLLOW_LEFT = 0x0000;
constexpr uint32 B_FOLLOW_RIGHT = 0x0001;
constexpr uint32 B_FOLLOW_LEFT_RIGHT = 0x0002;
constexpr uint32 B_FOLLOW_TOP = 0x0000;
constexpr uint32 B_FOLLOW_BOTTOM = 0x0010;
constexpr uint32 B_FOLLOW_TOP_BOTTOM = 0x0020;
constexpr uint32 B_FOLLOW_ALL_SIDES = B_FOLLOW_LEFT_RIGHT | B_FOLLOW_TOP_BOTTOM;

// These flags say what a view wants; a view takes the sum of some.

/// The view's Draw is called.
constexpr uint32 B_WILL_DRAW = 1U << 0;
/// The view's FrameResized is called.
constexpr uint32 B_FRAME_EVENTS = 1U << 1;
/// The view's Pulse is called.
constexpr uint32 B_PULSE_NEEDED = 1U << 2;
/// The keyboard can reach it: it gets KeyDown while it has the focus.
constexpr uint32 B_NAVIGABLE = 1U << 3;
/// While a button is held that was pressed inside the view, the view hears of the pointer outside
/// too, and of the release wherever that is.
constexpr uint32 B_KEEPS_POINTER = 1U << 4;
/// What lies behind the view is seen where it paints nothing.
constexpr uint32 B_SEE_THROUGH = 1U << 5;

// The mouse buttons; several are given as their sum.

constexpr uint32 B_PRIMARY_MOUSE_BUTTON = 1;
constexpr uint32 B_SECONDARY_MOUSE_BUTTON = 2;
constexpr uint32 B_TERTIARY_MOUSE_BUTTON = 4;

// Keys that are held beside another key or a button, added up.

constexpr uint32 B_SHIFT_KEY = 1;
constexpr uint32 B_CONTROL_KEY = 2;
constexpr uint32 B_ALT_KEY = 4;

/// MouseMoved is told by these whether the pointer has just come in, was inside, or has left.
enum : uint32 { B_ENTERED_VIEW, B_INSIDE_VIEW, B_EXITED_VIEW };

/// A message of this code carries what was dropped onto a window that takes drops: "refs", an
/// entry_ref for each file, or "text", a string.
constexpr uint32 B_SIMPLE_DATA = FourCC("DATA");

/// A message of this code ends a looper or the application.
constexpr uint32 B_QUIT_REQUESTED = FourCC("_QRQ");
/// A key that no text field wanted, with int32 "key" (the key's place on the keyboard, as the X
/// keyboard extension counts: 24 is the Q of an English one); the Escape key has int32 "raw_char",
/// B_ESCAPE. They go to the window that has the focus, once for each press, and at once, also while
/// an alert is shown. The release goes to the window that got the press, wherever the focus is
/// then; a window that has become inactive may get none.
constexpr uint32 B_KEY_DOWN = FourCC("_KYD");
constexpr uint32 B_KEY_UP = FourCC("_KYU");
constexpr int32 B_ESCAPE = 0x1b;

namespace kits {

/// Keys that write no character.
enum class Key {
    Character,
    Up,
    Down,
    Left,
    Right,
    Home,
    End,
    PageUp,
    PageDown,
    Enter,
    Escape,
    Delete,
    Backspace,
    Insert,
    F1,
    F2,
    F3,
    F4,
    F5,
    F6,
    F7,
    F8,
    F9,
    F10,
    F11,
    F12,
    Other
};

/// A key that has gone down, or goes on while it is held.
struct KeyPress {
    Key key = Key::Other;
    /// The character that a key of kind Key::Character writes without modifiers, a letter as a
    /// capital; 0 for other keys.
    char32_t character = 0;
    /// The text that the press writes, in UTF-8. It is empty for keys that write nothing, and with
    /// Ctrl or Alt.
    std::string text;
    /// The modifiers that were held: the sum of B_SHIFT_KEY and the like.
    uint32 modifiers = 0;
    /// It has been down before.
    bool repeat = false;
};

} // namespace kits

/// The window lost or got the focus: int32 "active" is 0 or 1. Comes at once, as the keys do.
constexpr uint32 B_WINDOW_ACTIVATED = FourCC("_ACT");
/// A window gets a message of this code at its pulse rate, whether it is shown or not, and also
/// while an alert is.
constexpr uint32 B_PULSE = FourCC("_PUL");
