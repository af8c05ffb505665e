// SPDX-License-Identifier: GPL-3.0-or-later
// The function that the plane shows, from moment to moment, if the sound's function has more inputs
// than x and y.
#pragma once

#include "synth/NoteInputs.h"
#include "synth/PlaneFunction.h"
#include "synth/SoundRecords.h"

#include <array>
#include <cstddef>
#include <optional>

namespace vexa {

/// The note that is shown if none sounds.
inline constexpr NoteMoment kShownNote{0.8F, 60.0F / 127, 0};

/// Returns the sounding note that began last; nothing if none sounds. Any thread.
std::optional<NoteMoment> NewestNote(const VoiceTable& voices);

/// Provides a function of x and y for the view: the followed function with its other inputs as the
/// newest note has them, with the present controllers and macros. If no note sounds, the inputs are
/// those of kShownNote at its beginning. A function of x and y alone stays as it is. Window thread.
class PlaneFollower {
  public:
    /// Follows the notes of `records`, which outlive it.
    explicit PlaneFollower(const SoundRecords& records) : records(records) {}

    /// Follows this function from now on.
    void Take(const PlaneFunction& next);
    /// Returns the function of x and y to be shown now; nothing if it is still the one that an
    /// earlier call returned.
    std::optional<PlaneFunction> Next();
    /// Returns the function that is followed.
    const PlaneFunction& Function() const { return f; }

  private:
    const SoundRecords& records;
    PlaneFunction f{nullfunc};
    bool changed = true;
    /// The values of the function's inputs in the last result of Next.
    std::array<float, kMostInputs> inputs{};
};

} // namespace vexa
