// SPDX-License-Identifier: GPL-3.0-or-later
// Plays notes with the computer's keyboard.
#pragma once

#include "app/HandSource.h"
#include "kits/interface/InterfaceDefs.h"
#include "kits/support/Message.h"

#include <map>
#include <optional>

namespace vexa {

/// A piano of two ranges. The lowest row of letters has the white keys from C3 on, and the row
/// above it the black ones. The row below the digits has the white keys from C4 on, and the digits
/// the black ones. Keys are known by their position, so the piano is the same in every keyboard
/// layout. It is a source in the MIDI roster. Window thread.
class ComputerKeyboard {
  public:
    static constexpr const char* kName = "Computer keyboard";

    ~ComputerKeyboard() { ReleaseAll(); }

    /// Takes a message B_KEY_DOWN, B_KEY_UP or B_WINDOW_ACTIVATED. Returns true if it concerned a
    /// key of the piano.
    bool Take(const BMessage& message);
    /// Releases all keys that are held.
    void ReleaseAll();
    /// Releases all keys and sets the channel of the coming notes, 0..15. It is 0 at first.
    void SetChannel(uchar next);
    uchar Channel() const { return source.Channel(); }

    /// Does what HandSource::SendTo does.
    void SendTo(HandSource::Player next) { source.SendTo(std::move(next)); }

    /// Returns the MIDI note number of a key, by its position as in B_KEY_DOWN; nothing if the key
    /// is not part of the piano.
    static std::optional<uchar> NoteOf(int32 key);

  private:
    HandSource source{kName, HandSource::Place::Roster};
    /// The notes that sound, by the keys that hold them.
    std::map<int32, uchar> held;
};

} // namespace vexa
