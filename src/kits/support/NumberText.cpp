// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/support/NumberText.h"

#include <charconv>
#include <cmath>
#include <cstdlib>

#include <locale.h>

namespace kits {

double NumberOf(const std::string& text, std::size_t* length) {
    static const locale_t cLocale = ::newlocale(LC_ALL_MASK, "C", nullptr);
    char* end = nullptr;
    const double number = ::strtod_l(text.c_str(), &end, cLocale);
    if (length)
        *length = static_cast<std::size_t>(end - text.c_str());
    return number;
}

std::string FixedText(double number) {
    // 309 digits before the point, six after it, sign and point.
    char text[320];
    const auto end = std::to_chars(text, text + sizeof text, number, std::chars_format::fixed, 6);
    return {text, end.ptr};
}

std::string ShortText(double number) {
    std::string text = FixedText(number);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.')
        text.pop_back();
    return text;
}

std::string RoundedText(double number, int digits) {
    // The sign, point and exponent besides the digits, or zeroes after the point instead of the
    // exponent.
    char text[32];
    const auto end =
        std::to_chars(text, text + sizeof text, number, std::chars_format::general, digits);
    return {text, end.ptr};
}

} // namespace kits
