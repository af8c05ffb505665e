// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Shortcuts.h"

#include "app/MessageCodes.h"

#include <algorithm>
#include <iterator>

namespace vexa {

namespace {

using kits::Key;

struct Shortcut {
    Key key;
    /// The character of a key of kind Character, else 0.
    char32_t character;
    uint32 modifiers;
    uint32 code;
};

constexpr Shortcut kShortcuts[] = {
    {Key::Character, U'I', B_CONTROL_KEY, kDescribeCode},
    {Key::Character, U'S', B_CONTROL_KEY, kSaveAgainCode},
    {Key::Character, U'Z', B_CONTROL_KEY, kUndoCode},
    {Key::Character, U'Z', B_CONTROL_KEY | B_SHIFT_KEY, kRedoCode},
    {Key::PageUp, 0, 0, kPreviousSoundCode},
    {Key::PageDown, 0, 0, kNextSoundCode},
    {Key::F1, 0, 0, kHelpCode},
    {Key::F9, 0, 0, kShowDrawerCode},
    {Key::F10, 0, 0, kShowStripCode},
    {Key::F11, 0, 0, kClassicCode},
};

} // namespace

std::optional<uint32> ShortcutCode(const kits::KeyPress& press) {
    const auto* const found = std::ranges::find_if(kShortcuts, [&](const Shortcut& shortcut) {
        return shortcut.key == press.key && shortcut.modifiers == press.modifiers &&
               (shortcut.character == 0 || shortcut.character == press.character);
    });
    return found == std::end(kShortcuts) ? std::nullopt : std::optional(found->code);
}

} // namespace vexa
