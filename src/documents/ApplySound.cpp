#include "documents/ApplySound.h"

#include "kits/support/NumberText.h"
#include "kits/support/Quoted.h"
#include "synth/Envelope.h"

#include <cmath>
#include <cstdlib>

namespace vexa {

namespace {

std::string Description(const Parameter& row) {
    std::string description = std::string(row.field) + " (";
    if (!row.element.empty())
        description += kits::Quoted(row.element) + " in ";
    return description + kits::Quoted(row.group) + ")";
}

} // namespace

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

std::vector<std::string> ApplyParameters(const Sound& sound, sound_param& target) {
    std::vector<std::string> faults;
    for (std::size_t i = 0; i < Parameters().size(); i++) {
        const Parameter& row = Parameters()[i];
        const std::string& text = sound.texts[i];
        const TextFault fault = ApplyText(row, text, target);
        if (fault == TextFault::ControllerNumber)
            faults.push_back(Description(row) + ": " + kits::Quoted(text) + ": " +
                             kInvalidController);
        else if (fault == TextFault::NotANumber)
            faults.push_back(Description(row) + ": " + kits::Quoted(text) + " is not a number.");
    }
    return faults;
}

void ApplyEnvelopes(const Sound& sound, sound_param& target) {
    for (std::size_t i = 0; i < EnvelopePlaces().size(); i++) {
        Envelope* envelope = target.*EnvelopePlaces()[i].target;
        envelope->Points() = sound.envelopes[i];
        envelope->ProduceCalcPts();
    }
}

} // namespace vexa
