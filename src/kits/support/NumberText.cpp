#include "kits/support/NumberText.h"

#include <charconv>
#include <cmath>
#include <cstdlib>

#include <locale.h>

namespace kits {

namespace {

double Parse(const char* text, char** end) {
    static const locale_t cLocale = ::newlocale(LC_ALL_MASK, "C", nullptr);
    return ::strtod_l(text, end, cLocale);
}

} // namespace

double NumberOf(const std::string& text) {
    return Parse(text.c_str(), nullptr);
}

bool IsNumber(const std::string& text) {
    char* end = nullptr;
    const double number = Parse(text.c_str(), &end);
    if (end == text.c_str() || std::isnan(number))
        return false;
    return text.find_first_not_of(" \t", std::size_t(end - text.c_str())) == std::string::npos;
}

std::string FixedText(double number) {
    // 309 digits before the point, six after it, sign and point.
    char text[320];
    const auto end = std::to_chars(text, text + sizeof text, number, std::chars_format::fixed, 6);
    return {text, end.ptr};
}

} // namespace kits
