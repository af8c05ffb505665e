// SPDX-License-Identifier: GPL-3.0-or-later
#include "documents/NumberDoubt.h"

#include "kits/support/NumberText.h"
#include "kits/support/Quoted.h"

#include <cmath>
#include <cstdlib>

namespace vexa {

std::string NumberDoubt(const std::string& text, bool controller) {
    constexpr const char* kBlanks = " \t\n\r";
    if (text.find_first_not_of(kBlanks) == text.npos)
        return "expected a number, found nothing, which counts as 0";
    std::size_t length = 0;
    if (controller) {
        char* end = nullptr;
        const long number = std::strtol(text.c_str(), &end, 10);
        length = static_cast<std::size_t>(end - text.c_str());
        if (number < 0 || number > 127)
            return kits::Quoted(text) + ": " + kInvalidController;
    } else if (std::isnan(kits::NumberOf(text, &length))) {
        return kits::Quoted(text) + " is not a number and changes nothing";
    }
    const std::string expected = std::string("expected a ") + (controller ? "whole " : "") +
                                 "number, found " + kits::Quoted(text);
    if (length == 0)
        return expected + ", which counts as 0";
    const std::size_t rest = text.find_first_not_of(kBlanks, length);
    if (rest == text.npos)
        return "";
    return expected + ", which counts as " + kits::Shown(text.substr(0, length)) +
           (text[rest] == ',' ? " (the decimal point is \".\")" : "");
}

std::string FrequencyDoubt(const std::string& text) {
    const auto number = static_cast<float>(kits::NumberOf(text));
    if (!std::isnormal(number) || number < 0)
        return "expected a frequency above 0, found " + kits::Quoted(text);
    return NumberDoubt(text, false);
}

std::optional<float> WidthIn(const std::string& text) {
    const auto number = static_cast<float>(kits::NumberOf(text));
    return number > 0 && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

std::string WidthDoubt(const std::string& text) {
    if (!WidthIn(text))
        return "expected a width above 0, found " + kits::Quoted(text) + ", which changes nothing";
    return NumberDoubt(text, false);
}

} // namespace vexa
