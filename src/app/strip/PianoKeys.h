// SPDX-License-Identifier: GPL-3.0-or-later
// The layout of a piano's keys.
#pragma once

#include "kits/support/Geometry.h"

#include <optional>

namespace vexa {

inline constexpr int kKeysInOctave = 12;

/// A piano of `count` adjacent white keys, and the black ones between them, in a rectangle of any
/// size. MIDI's 128 keys have 75 white ones.
class PianoKeys {
  public:
    static constexpr int kWhiteKeys = 75;

    PianoKeys() = default;
    /// Makes a piano of `count` white keys in `area`. `first` is the number of the first one,
    /// counted from 0.
    PianoKeys(BRect area, int first, int count) : area(area), first(first), count(count) {}

    static bool IsBlack(int key);
    /// Returns the number of a white key, counted from MIDI's key 0; for a black key that of the
    /// white key below it.
    static int WhiteOf(int key);

    int First() const { return first; }
    int Count() const { return count; }
    /// Returns whether the key is visible.
    bool Has(int key) const;
    /// Returns the key's rectangle. Those of black keys lie on top of the white ones.
    BRect FrameOf(int key) const;
    /// Returns the key at the point; nothing outside the piano.
    std::optional<int> KeyAt(BPoint where) const;

  private:
    float Edge(int white) const;

    BRect area;
    int first = 0;
    int count = 0;
};

} // namespace vexa
