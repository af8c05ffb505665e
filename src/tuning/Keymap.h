// SPDX-License-Identifier: GPL-3.0-or-later
// Keyboard maps: which degree of a scale each key plays, and what it is tuned from.
#pragma once

#include "kits/support/Result.h"
#include "tuning/Tuning.h"

#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

namespace vexa {

/// Keys are MIDI's, 0 to 127. Without a file every key plays the next degree, key 60 degree 0, and
/// key 69 is tuned to 440 Hz.
struct Keymap {
    /// The keys outside of these sound nothing.
    int first = 0, last = kKeys - 1;
    /// The key of the pattern's first entry.
    int middle = 60;
    /// The key that is tuned to so many Hz.
    int reference = kA4;
    double hertz = kA4Hertz;
    /// The degree by whose pitch the pattern's repetitions are apart.
    int octave = 0;
    /// A degree per key, which repeat themselves up and down the keyboard; a key without one sounds
    /// nothing. Empty: key middle + n plays degree n.
    std::vector<std::optional<int>> pattern;

    /// A key's degree is found by this: so many repetitions of the pattern above the middle, and in
    /// that the degree.
    struct Place {
        int repetitions;
        int degree;
    };
    /// Whatever `first` and `last` are; without a value where the pattern leaves the key out.
    std::optional<Place> PlaceOf(int key) const;
};

/// Reads a file in Scala's format "kbm": the pattern's size, first, last, middle and reference key,
/// the reference's frequency, the degree of the octave, and an entry per line, a degree or "x"; the
/// last entries may be missing and are "x" then. A reference that the pattern leaves out is an
/// error, as nothing else could be tuned from it. Errors have the form of ReadScale's. Any thread.
kits::Result<Keymap> ReadKeymap(const std::filesystem::path& path);
/// Reads a map from a file's bytes; messages call the file `name`.
kits::Result<Keymap> ParseKeymap(std::string_view bytes, const std::string& name);

} // namespace vexa
