// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/strip/PianoKeys.h"

#include "tuning/Tuning.h"

#include <array>
#include <cmath>

namespace vexa {

namespace {

/// For the keys of an octave from C on: whether each is black, and how many white keys lie below
/// it.
constexpr std::array<bool, kKeysInOctave> kBlack = {false, true,  false, true,  false, false,
                                                    true,  false, true,  false, true,  false};
constexpr std::array<int, kKeysInOctave> kBelow = {0, 0, 1, 1, 2, 3, 3, 4, 4, 5, 5, 6};

/// The size of a black key relative to a white one.
constexpr float kBlackWidth = 0.6F;
constexpr float kBlackHeight = 0.6F;

} // namespace

bool PianoKeys::IsBlack(int key) {
    return kBlack[static_cast<std::size_t>(key % kKeysInOctave)];
}

int PianoKeys::WhiteOf(int key) {
    return key / kKeysInOctave * 7 + kBelow[static_cast<std::size_t>(key % kKeysInOctave)];
}

bool PianoKeys::Has(int key) const {
    const int white = WhiteOf(key) - first;
    // A black key at the end would lie half outside the piano.
    return white >= 0 && white < count - (IsBlack(key) ? 1 : 0);
}

/// Returns the x coordinate of the left edge of a white key, counted from the first visible one.
float PianoKeys::Edge(int white) const {
    return std::round(area.left +
                      (area.Width() + 1) * static_cast<float>(white) / static_cast<float>(count));
}

BRect PianoKeys::FrameOf(int key) const {
    const int white = WhiteOf(key) - first;
    if (!IsBlack(key))
        return {Edge(white), area.top, Edge(white + 1) - 1, area.bottom};
    const float half = (area.Width() + 1) / static_cast<float>(count) * kBlackWidth / 2;
    const float middle = Edge(white + 1);
    return {std::round(middle - half), area.top, std::round(middle + half) - 1,
            std::round(area.top + area.Height() * kBlackHeight)};
}

std::optional<int> PianoKeys::KeyAt(BPoint where) const {
    std::optional<int> found;
    for (int key = 0; key < kKeys; key++) {
        if (!Has(key) || !FrameOf(key).InsetByCopy(-0.5F, -0.5F).Contains(where))
            continue;
        found = key;
        if (IsBlack(key))
            return key;
    }
    return found;
}

} // namespace vexa
