// SPDX-License-Identifier: GPL-3.0-or-later
// This tells where the keys of a piano lie.
#pragma once

#include "kits/support/Geometry.h"

#include <optional>

namespace vexa {

inline constexpr int kKeysInOctave = 12;

/// A piano of some white keys in a row in a rectangle of any size. MIDI's 128 keys
/// have 75 white ones.
class PianoKeys {
  public:
    static constexpr int kWhiteKeys = 75;

    PianoKeys() = default;
    /// `first` is the number of the first white key, from 0 on.
    PianoKeys(BRect area, int first, int count) : area(area), first(first), count(count) {}

    static bool IsBlack(int key);
    /// Returns the number of the white key, or of the one below a black one, counted from MIDI's
    /// key 0.
    static int WhiteOf(int key);

    int First() const { return first; }
    int Count() const { return count; }
    /// True where the key is seen.
    bool Has(int key) const;
    /// Returns the place of the key; black keys lie upon the white ones.
    BRect FrameOf(int key) const;
    /// Returns the key at a point; nothing beside the piano.
    std::optional<int> KeyAt(BPoint where) const;

  private:
    float Edge(int white) const;

    BRect area;
    int first = 0;
    int count = 0;
};

} // namespace vexa
