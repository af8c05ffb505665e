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

/// The view colour of a view without a background: only its own drawing is painted.
constexpr rgb_color B_TRANSPARENT_COLOR = {119, 116, 119, 0};

/// The colour of a drawing operation: the view's high or its low colour.
enum pattern { B_SOLID_HIGH, B_SOLID_LOW };

// The resizing modes of a view: how its frame follows when its parent is resized. A mode is the sum
// of one value for each direction.

constexpr uint32 B_FOLLOW_NONE = 0;
constexpr uint32 B_FOLLOW_LEFT = 0x0000;
constexpr uint32 B_FOLLOW_RIGHT = 0x0001;
constexpr uint32 B_FOLLOW_LEFT_RIGHT = 0x0002;
constexpr uint32 B_FOLLOW_TOP = 0x0000;
constexpr uint32 B_FOLLOW_BOTTOM = 0x0010;
constexpr uint32 B_FOLLOW_TOP_BOTTOM = 0x0020;
constexpr uint32 B_FOLLOW_ALL_SIDES = B_FOLLOW_LEFT_RIGHT | B_FOLLOW_TOP_BOTTOM;

// The flags of a view; several are given as their sum.

/// The view's Draw is called.
constexpr uint32 B_WILL_DRAW = 1U << 0;
/// The view's FrameResized is called.
constexpr uint32 B_FRAME_EVENTS = 1U << 1;
/// The view's Pulse is called.
constexpr uint32 B_PULSE_NEEDED = 1U << 2;
/// The keyboard can reach the view, which gets KeyDown while it has the focus.
constexpr uint32 B_NAVIGABLE = 1U << 3;
/// While a button that was pressed inside the view is held, the view also gets the moves of the
/// pointer outside it, and the release wherever that happens.
constexpr uint32 B_KEEPS_POINTER = 1U << 4;
/// Whatever lies behind the view shows through where it paints nothing.
constexpr uint32 B_SEE_THROUGH = 1U << 5;

// The mouse buttons; several are given as their sum.

constexpr uint32 B_PRIMARY_MOUSE_BUTTON = 1;
constexpr uint32 B_SECONDARY_MOUSE_BUTTON = 2;
constexpr uint32 B_TERTIARY_MOUSE_BUTTON = 4;

// The modifier keys; several are given as their sum.

constexpr uint32 B_SHIFT_KEY = 1;
constexpr uint32 B_CONTROL_KEY = 2;
constexpr uint32 B_ALT_KEY = 4;

/// The `transit` of MouseMoved: the pointer has just entered the view, was inside before, or has
/// left it.
enum : uint32 { B_ENTERED_VIEW, B_INSIDE_VIEW, B_EXITED_VIEW };

/// A message of this code carries the data dropped onto a window that takes drops: "refs", an
/// entry_ref for each file, or "text", a string.
constexpr uint32 B_SIMPLE_DATA = FourCC("DATA");

/// A message of this code ends a looper or the application.
constexpr uint32 B_QUIT_REQUESTED = FourCC("_QRQ");
/// The press and the release of a key that nothing in the window has used. int32 "key" is the key's
/// place on the keyboard in the numbering of the X keyboard extension (24 is Q on an English
/// keyboard); for the Escape key int32 "raw_char" is B_ESCAPE. The press goes to the window that
/// has the focus, once without repeats, and is delivered at once, even while an alert is shown. The
/// release goes to the window that got the press, wherever the focus is by then; a window that has
/// become inactive may miss it.
constexpr uint32 B_KEY_DOWN = FourCC("_KYD");
constexpr uint32 B_KEY_UP = FourCC("_KYU");
constexpr int32 B_ESCAPE = 0x1b;

namespace kits {

/// The kinds of keys: Character for all that write one, the others by name.
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

/// A press of a key, or a repeat while it is held.
struct KeyPress {
    Key key = Key::Other;
    /// The character that a key of kind Key::Character writes without modifiers, as a capital if it
    /// is a letter; 0 for other keys.
    char32_t character = 0;
    /// The text that the press writes, in UTF-8. It is empty for keys that write nothing and while
    /// Ctrl or Alt is held.
    std::string text;
    /// The held modifiers: the sum of B_SHIFT_KEY and the like.
    uint32 modifiers = 0;
    /// True for a repeat of a held key.
    bool repeat = false;
};

} // namespace kits

/// The window has lost or got the focus: int32 "active" is 0 or 1. The message is delivered at
/// once, as those of keys are.
constexpr uint32 B_WINDOW_ACTIVATED = FourCC("_ACT");
/// A window gets a message of this code at its pulse rate, also while it is hidden or an alert is
/// shown.
constexpr uint32 B_PULSE = FourCC("_PUL");
