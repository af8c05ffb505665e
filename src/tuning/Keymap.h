// SPDX-License-Identifier: GPL-3.0-or-later
// Keyboard maps: the scale degree of each key, and the reference frequency.
#pragma once

#include "kits/support/Result.h"
#include "tuning/Tuning.h"

#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

namespace vexa {

/// Keys are MIDI keys, 0 to 127. By default consecutive keys play consecutive degrees, key 60 plays
/// degree 0, and key 69 is tuned to 440 Hz.
struct Keymap {
    /// The range of keys that sound; keys outside it are silent.
    int first = 0, last = kKeys - 1;
    /// The key of the pattern's first entry.
    int middle = 60;
    /// The reference key and its frequency in Hz.
    int reference = kA4;
    double hertz = kA4Hertz;
    /// The degree whose pitch is the interval between repetitions of the pattern.
    int octave = 0;
    /// One degree per key; the pattern repeats up and down the keyboard, and a key without a degree
    /// is silent. If it is empty, key middle + n plays degree n.
    std::vector<std::optional<int>> pattern;

    /// The position of a key: the number of repetitions of the pattern above the middle key, and
    /// the degree within the repetition.
    struct Place {
        int repetitions;
        int degree;
    };
    /// Returns a key's position regardless of `first` and `last`; nothing if the pattern omits the
    /// key.
    std::optional<Place> PlaceOf(int key) const;
};

/// Reads a file in Scala's format "kbm": the pattern's size, first, last, middle and reference key,
/// the reference's frequency, the degree of the octave, and an entry per line, a degree or "x"; the
/// last entries may be missing and are "x" then. A reference key that the pattern omits is an
/// error, because the other keys are tuned from it. Errors have the form of ReadScale's. Any
/// thread.
kits::Result<Keymap> ReadKeymap(const std::filesystem::path& path);
/// Reads a map from a file's bytes; messages call the file `name`.
kits::Result<Keymap> ParseKeymap(std::string_view bytes, const std::string& name);

} // namespace vexa
