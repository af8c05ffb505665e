// SPDX-License-Identifier: GPL-3.0-or-later
// The computer's keyboard is a piano here.
#pragma once

#include "app/HandSource.h"
#include "kits/interface/InterfaceDefs.h"
#include "kits/support/Message.h"

#include <map>
#include <optional>

namespace vexa {

/// Plays by two rows of keys: the lowest row of letters is the white keys from C3 on, with the
/// black ones in the row above it; the row below the digits starts at C4, with the black keys among
/// the digits. Keys go by their place, so every layout has the same piano. It is a source in the
/// MIDI roster. Window thread.
class ComputerKeyboard {
  public:
    static constexpr const char* kName = "Computer keyboard";

    ~ComputerKeyboard() { ReleaseAll(); }

    /// Takes a message B_KEY_DOWN, B_KEY_UP or B_WINDOW_ACTIVATED. True if it was about a key of
    /// the piano.
    bool Take(const BMessage& message);
    /// Lets go of all keys that are held.
    void ReleaseAll();
    /// Sets the channel, 0..15, that the coming notes are on, which is 0 at first, and lets go of
    /// all keys.
    void SetChannel(uchar next);
    uchar Channel() const { return source.Channel(); }

    /// Does what HandSource::SendTo does.
    void SendTo(HandSource::Player next) { source.SendTo(std::move(next)); }

    /// Returns the MIDI note number of a key, by its place as B_KEY_DOWN counts.
    static std::optional<uchar> NoteOf(int32 key);

  private:
    HandSource source{kName, HandSource::Place::Roster};
    /// Notes that sound, by the key that is held.
    std::map<int32, uchar> held;
};

} // namespace vexa
