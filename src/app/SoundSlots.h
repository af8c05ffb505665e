// SPDX-License-Identifier: GPL-3.0-or-later
// The two slots for sounds, and whether the present sound is saved.
#pragma once

#include "instrument/History.h"
#include "kits/support/SupportDefs.h"

#include <array>
#include <cstddef>
#include <functional>
#include <optional>

namespace vexa {

/// The slots A and B, each with a sound, its steps, file and name. The present one is played and
/// edited. Window thread.
class SoundSlots {
  public:
    /// Begins the present slot with a sound that belongs to `file`, and empties the other one. Must
    /// be called before anything else.
    void Begin(const Sound& sound, SoundFile file);

    History& Present() { return *slots[present]; }
    const History& Present() const { return *slots[present]; }
    /// Returns the other slot; null if it is empty.
    const History* Other() const { return slots[1 - present] ? &*slots[1 - present] : nullptr; }
    /// Returns the name of the present slot, 'A' or 'B'.
    char Letter() const { return static_cast<char>('A' + present); }

    // The following end the gesture of the present slot. `sound` is its sound.

    /// Makes the other slot the present one. If it is empty, it gets a copy of the sound first.
    void Switch(const Sound& sound);
    /// Copies the sound and its file to the other slot, as one step there.
    void CopyToOther(const Sound& sound);

    /// Takes the sound as the one that the file of the present slot holds.
    void TakeAsSaved(const Sound& sound);
    /// Notices that a sound of the same file in the other slot is no longer the one in the file.
    void ShareSaved();
    /// Notices whether the files of both slots are still there.
    void LookForFiles();
    /// Returns whether the present slot's file does not hold `sound()`. `edits` is a count that
    /// grows with each possible change of the sound, so that it is compared only if need be.
    bool Differs(uint64 edits, const std::function<Sound()>& sound) const;

  private:
    History& OpenOther(const Sound& sound);

    /// The present slot always has a history.
    std::array<std::optional<History>, 2> slots;
    std::size_t present = 0;
    /// The result of the last comparison with the saved sound, and the number of edits at which it
    /// was made.
    mutable bool differs = false;
    mutable std::optional<uint64> comparedAt;
};

} // namespace vexa
