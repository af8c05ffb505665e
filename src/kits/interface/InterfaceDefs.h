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

/// As a view's colour: nothing is painted behind what the view draws itself.
constexpr rgb_color B_TRANSPARENT_COLOR = {119, 116, 119, 0};

/// Which colour a drawing operation takes.
enum pattern { B_SOLID_HIGH, B_SOLID_LOW };

// How a view follows its parent when that is resized: one value for each direction, added up.

constexpr uint32 B_FOLLOW_NONE = 0;
constexpr uint32 B_FOLLOW_LEFT = 0x0000;
constexpr uint32 B_FOLLOW_RIGHT = 0x0001;
constexpr uint32 B_FOLLOW_LEFT_RIGHT = 0x0002;
constexpr uint32 B_FOLLOW_TOP = 0x0000;
constexpr uint32 B_FOLLOW_BOTTOM = 0x0010;
constexpr uint32 B_FOLLOW_TOP_BOTTOM = 0x0020;
constexpr uint32 B_FOLLOW_ALL_SIDES = B_FOLLOW_LEFT_RIGHT | B_FOLLOW_TOP_BOTTOM;

// What a view wants, added up.

/// Its Draw is called.
constexpr uint32 B_WILL_DRAW = 1U << 0;
/// Its FrameResized is called.
constexpr uint32 B_FRAME_EVENTS = 1U << 1;
/// Its Pulse is called.
constexpr uint32 B_PULSE_NEEDED = 1U << 2;
/// The keyboard can reach it: it gets KeyDown while it has the focus.
constexpr uint32 B_NAVIGABLE = 1U << 3;
/// While a button is held that was pressed inside, it hears of the pointer outside too, and of the
/// release wherever that is.
constexpr uint32 B_KEEPS_POINTER = 1U << 4;
/// What lies behind is seen where it paints nothing.
constexpr uint32 B_SEE_THROUGH = 1U << 5;

// Mouse buttons, added up.

constexpr uint32 B_PRIMARY_MOUSE_BUTTON = 1;
constexpr uint32 B_SECONDARY_MOUSE_BUTTON = 2;
constexpr uint32 B_TERTIARY_MOUSE_BUTTON = 4;

// Keys that are held beside another key or a button, added up.

constexpr uint32 B_SHIFT_KEY = 1;
constexpr uint32 B_CONTROL_KEY = 2;
constexpr uint32 B_ALT_KEY = 4;

/// Where the pointer has come from, in MouseMoved.
enum : uint32 { B_ENTERED_VIEW, B_INSIDE_VIEW, B_EXITED_VIEW };

/// Ends a looper or the application.
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
    /// Of Key::Character: what it writes without modifiers, a letter as a capital; else 0.
    char32_t character = 0;
    /// What it writes, in UTF-8; empty for keys that write nothing and beside Ctrl or Alt.
    std::string text;
    /// B_SHIFT_KEY and so on, added up.
    uint32 modifiers = 0;
    /// It has been down before.
    bool repeat = false;
};

} // namespace kits

/// The window lost or got the focus: int32 "active" is 0 or 1. Comes at once, as the keys do.
constexpr uint32 B_WINDOW_ACTIVATED = FourCC("_ACT");
/// What a window gets at its pulse rate, be it shown or not, and also while an alert is.
constexpr uint32 B_PULSE = FourCC("_PUL");
