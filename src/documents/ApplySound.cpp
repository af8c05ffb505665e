// SPDX-License-Identifier: GPL-3.0-or-later
#include "documents/ApplySound.h"

#include "kits/support/NumberText.h"
#include "synth/Envelope.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace vexa {

namespace {

TextFault ApplyController(const std::string& text, kits::Shared<int32>& target) {
    // strtol clamps a number to the range of long, so one beyond that range is rejected too.
    const long number = std::strtol(text.c_str(), nullptr, 10);
    if (number < 0 || number > 127)
        return TextFault::ControllerNumber;
    target = static_cast<int32>(number);
    return TextFault::None;
}

} // namespace

TextFault ApplyText(const Parameter& row, const std::string& text, sound_param& target) {
    if (row.controller)
        return ApplyController(text, target.*row.controller);
    const auto number = static_cast<float>(kits::NumberOf(text));
    if (std::isnan(number))
        return TextFault::NotANumber;
    target.*row.value = number;
    return TextFault::None;
}

TextFault ApplyMacroValue(const std::string& text, Macro& target) {
    const auto number = static_cast<float>(kits::NumberOf(text));
    if (std::isnan(number))
        return TextFault::NotANumber;
    target.value = std::clamp(number, 0.0F, 1.0F);
    return TextFault::None;
}

TextFault ApplyMacroController(const std::string& text, Macro& target) {
    return ApplyController(text, target.controller);
}

void ApplyParameters(const Sound& sound, sound_param& target) {
    for (std::size_t i = 0; i < Parameters().size(); i++)
        ApplyText(Parameters()[i], sound.texts[i], target);
}

void ApplyMacros(const Function& function, Macros& target) {
    for (std::size_t i = 0; i < target.size(); i++) {
        const Function::MacroTexts& texts = function.macros[i];
        if (ApplyMacroValue(texts.value, target[i]) != TextFault::None)
            target[i].value = kInitialMacro;
        if (ApplyMacroController(texts.controller, target[i]) != TextFault::None)
            target[i].controller = kFirstMacroController + static_cast<int32>(i);
    }
}

void ApplyPlaying(const Sound& sound, const PlayingTexts& choices, Playing& target) {
    bool given = sound.playing.has_value();
    for (std::size_t i = 0; i < PlayingRows().size(); i++) {
        const PlayingRow& row = PlayingRows()[i];
        std::optional<float> value;
        if (choices.texts[i])
            value = PlayingValue(row, *choices.texts[i]);
        // Oversampling concerns only the computation, so it does not count as a setting of playing.
        given = given || (value && row.target != &Playing::oversample);
        if (!value && sound.playing && sound.playing->texts[i])
            value = PlayingValue(row, *sound.playing->texts[i]);
        target.*row.target = value.value_or(row.absent);
    }
    target.given = given;
}

void ApplyEnvelopes(const Sound& sound, sound_param& target) {
    for (std::size_t i = 0; i < EnvelopePlaces().size(); i++) {
        Envelope* envelope = target.*EnvelopePlaces()[i].target;
        envelope->Points() = sound.envelopes[i];
        envelope->ProduceCalcPts();
    }
}

} // namespace vexa
