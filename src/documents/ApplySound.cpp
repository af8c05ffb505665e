#include "documents/ApplySound.h"

#include "kits/support/NumberText.h"
#include "synth/Envelope.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace vexa {

TextFault ApplyText(const Parameter& row, const std::string& text, sound_param& target) {
    if (row.controller) {
        // A number beyond the range of long comes as the end of that range, so it is refused too.
        const long number = std::strtol(text.c_str(), nullptr, 10);
        if (number < 0 || number > 127)
            return TextFault::ControllerNumber;
        target.*row.controller = static_cast<int32>(number);
    } else {
        const auto number = static_cast<float>(kits::NumberOf(text));
        if (std::isnan(number))
            return TextFault::NotANumber;
        target.*row.value = number;
    }
    return TextFault::None;
}

void ApplyParameters(const Sound& sound, sound_param& target) {
    for (std::size_t i = 0; i < Parameters().size(); i++)
        ApplyText(Parameters()[i], sound.texts[i], target);
}

void ApplyMacros(const Function& function, Macros& target) {
    for (std::size_t i = 0; i < target.size(); i++) {
        const auto value = static_cast<float>(kits::NumberOf(function.macros[i].value));
        target[i].value = std::isnan(value) ? kInitialMacro : std::clamp(value, 0.0F, 1.0F);
        const long number = std::strtol(function.macros[i].controller.c_str(), nullptr, 10);
        const bool known = number >= 0 && number <= 127;
        target[i].controller =
            known ? static_cast<int32>(number) : kFirstMacroController + static_cast<int32>(i);
    }
}

void ApplyPlaying(const Sound& sound, const PlayingTexts& choices, Playing& target) {
    bool given = sound.playing.has_value();
    for (std::size_t i = 0; i < PlayingRows().size(); i++) {
        const PlayingRow& row = PlayingRows()[i];
        std::optional<float> value;
        if (choices.texts[i])
            value = PlayingValue(row, *choices.texts[i]);
        given = given || value;
        if (!value && sound.playing && sound.playing->texts[i])
            value = PlayingValue(row, *sound.playing->texts[i]);
        target.*row.target = value.value_or(row.absent);
    }
    target.given = given;
    target.loads = target.loads + 1;
}

void ApplyEnvelopes(const Sound& sound, sound_param& target) {
    for (std::size_t i = 0; i < EnvelopePlaces().size(); i++) {
        Envelope* envelope = target.*EnvelopePlaces()[i].target;
        envelope->Points() = sound.envelopes[i];
        envelope->ProduceCalcPts();
    }
}

} // namespace vexa
