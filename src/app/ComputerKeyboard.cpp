// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ComputerKeyboard.h"

#include <algorithm>
#include <array>

namespace vexa {

namespace {

/// All keys have the same velocity, as a computer keyboard measures none.
constexpr uchar kVelocity = 100;

// The key codes, in the order of the notes, and the note of the first.

/// Z S X D C V G B H N J M , L . ; / of an English keyboard.
constexpr std::array<int32, 17> kLowerRow = {52, 39, 53, 40, 54, 55, 42, 56, 43,
                                             57, 44, 58, 59, 46, 60, 47, 61};
constexpr uchar kLowerNote = 48;
/// Q 2 W 3 E R 5 T 6 Y 7 U I 9 O 0 P [ = ]
constexpr std::array<int32, 20> kUpperRow = {24, 11, 25, 12, 26, 27, 14, 28, 15, 29,
                                             16, 30, 31, 18, 32, 19, 33, 34, 21, 35};
constexpr uchar kUpperNote = 60;

template<class Row>
std::optional<uchar> Find(const Row& row, uchar first, int32 key) {
    const auto place = std::find(row.begin(), row.end(), key);
    if (place == row.end())
        return std::nullopt;
    return static_cast<uchar>(first + (place - row.begin()));
}

} // namespace

std::optional<uchar> ComputerKeyboard::NoteOf(int32 key) {
    const auto lower = Find(kLowerRow, kLowerNote, key);
    return lower ? lower : Find(kUpperRow, kUpperNote, key);
}

bool ComputerKeyboard::Take(const BMessage& message) {
    if (message.what == B_WINDOW_ACTIVATED) {
        // The release of a key can go to another window and would be missed here.
        ReleaseAll();
        return false;
    }
    int32 key = 0;
    message.FindInt32("key", &key);
    const std::optional<uchar> note = NoteOf(key);
    if (!note)
        return false;
    if (message.what == B_KEY_DOWN && held.emplace(key, *note).second)
        source.NoteOn(*note, kVelocity);
    else if (message.what == B_KEY_UP && held.erase(key) > 0)
        source.NoteOff(*note, kVelocity);
    return true;
}

void ComputerKeyboard::ReleaseAll() {
    for (const auto& [key, note] : held)
        source.NoteOff(note, kVelocity);
    held.clear();
}

void ComputerKeyboard::SetChannel(uchar next) {
    ReleaseAll();
    source.SetChannel(next);
}

} // namespace vexa
