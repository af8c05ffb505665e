// SPDX-License-Identifier: GPL-3.0-or-later
// The follower finds what the plane shows, from moment to moment, of a function that hears more
// than x and y.
#pragma once

#include "synth/NoteInputs.h"
#include "synth/PlaneFunction.h"
#include "synth/SoundRecords.h"

#include <array>
#include <cstddef>
#include <optional>

namespace vexa {

/// The note that is shown where none sounds.
inline constexpr NoteMoment kShownNote{0.8F, 60.0F / 127, 0};

/// Returns the note of those that sound which has begun last; nothing where none sounds. Any
/// thread.
std::optional<NoteMoment> NewestNote(const VoiceTable& voices);

/// Shows a function as the newest note hears it, with the controllers and the macros as they are;
/// where none sounds, as one of velocity 0.8 and key 60 does when it begins. What is a function of
/// x and y alone is shown as it is. Window thread.
class PlaneFollower {
  public:
    /// Follows the notes of `records`, which outlive it.
    explicit PlaneFollower(const SoundRecords& records) : records(records) {}

    /// Shows this one from now on.
    void Take(const PlaneFunction& next);
    /// Returns what is to be shown now, a function of x and y alone; nothing if that is what the
    /// last call has given.
    std::optional<PlaneFunction> Next();
    /// Returns the function that is followed.
    const PlaneFunction& Function() const { return f; }

  private:
    const SoundRecords& records;
    PlaneFunction f{nullfunc};
    bool changed = true;
    /// The values of the function's inputs with which the last call has shown it.
    std::array<float, kMostInputs> inputs{};
};

} // namespace vexa
