// SPDX-License-Identifier: GPL-3.0-or-later
#include "tuning/Tuning.h"

#include "tuning/Interval.h"
#include "tuning/Keymap.h"
#include "tuning/Scale.h"

#include <numbers>
#include <optional>

namespace vexa {

namespace {

/// Returns the interval in cents from the map's middle key, as degree 0, to `key`; nothing if the
/// map omits the key.
std::optional<double> CentsOf(const Scale& scale, const Keymap& keymap, int key) {
    const std::optional<Keymap::Place> place = keymap.PlaceOf(key);
    if (!place)
        return std::nullopt;
    return place->repetitions * scale.Cents(keymap.octave) + scale.Cents(place->degree);
}

/// Returns the tuning's entry for a key with that frequency: 0 outside kLeastHertz to kMostHertz.
float Playable(double hertz) {
    return hertz >= kLeastHertz && hertz <= kMostHertz ? static_cast<float>(hertz) : 0.0F;
}

} // namespace

/// The step and the ratio are rounded to single precision, so that the default tuning gives the
/// same samples, bit for bit, as a computation in single precision; the error is below 0.001 cents.
Tuning EqualTemperament(double a4) {
    const auto semitone = static_cast<float>(std::numbers::ln2 / 12);
    Tuning tuning;
    for (int key = 0; key < kKeys; key++) {
        const double nepers = semitone * static_cast<float>(key - kA4);
        const auto ratio = static_cast<float>(RatioOf(nepers * std::numbers::log2e * kOctave));
        tuning[static_cast<std::size_t>(key)] = Playable(ratio * static_cast<float>(a4));
    }
    return tuning;
}

Tuning TuningOf(const Scale& scale, const Keymap& keymap) {
    Tuning tuning{};
    const double reference = CentsOf(scale, keymap, keymap.reference).value_or(0);
    for (int key = keymap.first; key <= keymap.last; key++) {
        const std::optional<double> cents = CentsOf(scale, keymap, key);
        if (cents)
            tuning[static_cast<std::size_t>(key)] =
                Playable(keymap.hertz * RatioOf(*cents - reference));
    }
    return tuning;
}

} // namespace vexa
