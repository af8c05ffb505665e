// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/Playing.h"

#include "kits/support/NumberText.h"
#include "kits/support/Trimmed.h"

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

using P = Playing;

constexpr std::string_view kModes[] = {"poly", "mono", "legato"};
constexpr std::string_view kFlags[] = {"false", "true"};
/// The permitted factors of oversampling, which are powers of two.
constexpr std::string_view kFactors[] = {"1", "2", "4", "8", "16"};

// The columns are easier to compare than to wrap.
// clang-format off
// name, minimum, maximum, whole, words, absent, target, value, allowed, help, whether an option
constexpr PlayingRow kRows[kPlayingRows] = {
    {"polyphony", 1, 20, true, {}, 0, &P::polyphony,
     "N", "a whole number from 1 to 20", "most voices at once", false},
    {"mode", 0, 2, true, kModes, 0, &P::mode,
     "MODE", "poly, mono or legato", "what a key does while another is held", true},
    {"glide", 0, 5, false, {}, 0, &P::glide,
     "SECONDS", "a number from 0 to 5", "glide so long from the last note's pitch", true},
    {"bend", 0, 48, false, {}, 0, &P::bend,
     "SEMITONES", "a number from 0 to 48", "the range of the bend wheel", true},
    {"pedal", 0, 1, true, kFlags, 0, &P::pedal,
     "WHETHER", "true or false", "let the pedals 64 and 66 hold notes", true},
    {"pressure", 0, 127, true, {}, -1, &P::pressure,
     "N", "a whole number from 0 to 127", "the controller that pressure drives", true},
    {"spread", 0, 180, false, {}, 0, &P::spread,
     "DEGREES", "a number from 0 to 180", "how far apart the ears read the plane", true},
    {"oversample", 0, 4, true, kFactors, 0, &P::oversample,
     "N", "1, 2, 4, 8 or 16", "compute at this multiple of the rate", true},
    {"smooth", 0, 100, false, {}, 0, &P::smooth,
     "MS", "a number from 0 to 100", "let what is edited and controllers glide so long", true},
    {"volume", -40, 12, false, {}, 0, &P::volume,
     "DB", "a number from -40 to 12", "the volume on top of the gain", true},
};
// clang-format on

} // namespace

Playing::Playing() {
    for (const PlayingRow& row : kRows)
        this->*row.target = row.absent;
}

std::span<const PlayingRow, kPlayingRows> PlayingRows() {
    return kRows;
}

const PlayingRow& PlayingRowNamed(std::string_view name) {
    return *std::ranges::find(kRows, name, &PlayingRow::name);
}

std::optional<float> PlayingValue(const PlayingRow& row, const std::string& text) {
    const std::string trimmed(kits::Trimmed(text));
    if (!row.words.empty()) {
        const auto word = std::find(row.words.begin(), row.words.end(), trimmed);
        if (word == row.words.end())
            return std::nullopt;
        return static_cast<float>(word - row.words.begin());
    }
    std::size_t length = 0;
    const double number = kits::NumberOf(trimmed, &length);
    if (length == 0 || length != trimmed.size() ||
        !(number >= row.minimum && number <= row.maximum) ||
        (row.whole && number != std::floor(number)))
        return std::nullopt;
    return static_cast<float>(number);
}

} // namespace vexa
