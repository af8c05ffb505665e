// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/Controls.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace vexa {

namespace {

Control OfPlaying(const char* name, const char* label, const char* unit, float asSound) {
    const PlayingRow& row = PlayingRowNamed(name);
    return {name,
            label,
            unit,
            asSound,
            static_cast<float>(row.minimum),
            static_cast<float>(row.maximum),
            row.whole,
            row.target};
}

/// The control shows the oversampling factor itself; the record stores its power of two.
Control OfOversampling() {
    Control control = OfPlaying("oversample", "Oversampling", nullptr, 0);
    control.minimum = 1;
    control.maximum = static_cast<float>(1U << static_cast<unsigned>(control.maximum));
    return control;
}

Control OfMacro(const char* symbol, const char* label) {
    return {symbol, label, nullptr, -0.1F, 0, 1, false, nullptr};
}

} // namespace

float Control::Bounded(float value) const {
    const float bounded = std::clamp(value, minimum, maximum);
    if (target == &Playing::oversample)
        return static_cast<float>(std::bit_width(static_cast<unsigned>(bounded)) - 1);
    return whole ? std::round(bounded) : bounded;
}

const std::array<Control, kControls>& Controls() {
    static const std::array<Control, kControls> controls{
        OfPlaying("volume", "Volume", "db", -41),
        OfMacro("macro_a", "Macro a"),
        OfMacro("macro_b", "Macro b"),
        OfMacro("macro_c", "Macro c"),
        OfMacro("macro_d", "Macro d"),
        OfPlaying("spread", "Spread", "degree", -1),
        OfPlaying("glide", "Glide", "s", -0.1F),
        OfPlaying("bend", "Bend range", "semitone12TET", -1),
        OfPlaying("polyphony", "Polyphony", nullptr, 0),
        OfPlaying("mode", "Mode", nullptr, -1),
        OfOversampling(),
        Control{"mpe", "MPE", nullptr, 0, 1, 1, true, nullptr},
    };
    return controls;
}

std::vector<ControlPoint> Points(const Control& control) {
    if (&control == &Controls()[kMpeControl])
        return {{control.asSound, "as configured by its message"}, {control.minimum, "on"}};
    std::vector<ControlPoint> points{{control.asSound, "as the sound"}};
    for (const PlayingRow& row : PlayingRows()) {
        for (std::size_t i = 0; row.target == control.target && i < row.words.size(); i++) {
            const std::string word(row.words[i]);
            const bool isFactor = row.target == &Playing::oversample;
            points.push_back({isFactor ? std::stof(word) : static_cast<float>(i), word});
        }
    }
    return points;
}

} // namespace vexa
