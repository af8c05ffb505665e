// SPDX-License-Identifier: GPL-3.0-or-later
#include "tuning/Scale.h"

#include "kits/storage/ReadFile.h"
#include "tuning/Interval.h"
#include "tuning/ScalaLines.h"

#include <cmath>

namespace vexa {

namespace {

using kits::Error;
using kits::Result;

constexpr const char* kPitch = "a pitch: cents with a period (701.955) or a ratio (3/2)";
constexpr const char* kRatio = "a ratio above 0 of numbers that are not 0";
constexpr const char* kCents = "cents from -1000000 to 1000000";

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Removes a number from the front of the text and returns it: an optional sign and digits, with at
/// most one period if `withPeriod` is true.
std::string_view TakeNumber(std::string_view& text, bool withPeriod) {
    std::size_t end = text.starts_with('-') || text.starts_with('+') ? 1 : 0;
    bool period = !withPeriod;
    while (end < text.size() && (IsDigit(text[end]) || (text[end] == '.' && !period))) {
        period = period || text[end] == '.';
        end++;
    }
    const std::string_view number = text.substr(0, end);
    text.remove_prefix(end);
    return number;
}

void SkipBlanks(std::string_view& text) {
    while (text.starts_with(' ') || text.starts_with('\t'))
        text.remove_prefix(1);
}

/// Returns the value of a text from TakeNumber; NaN if it is not a number or out of range.
double ValueOf(std::string_view number) {
    if (number.starts_with('+'))
        number.remove_prefix(1);
    double value = 0;
    const char* end = number.data() + number.size();
    const auto [stop, fault] = std::from_chars(number.data(), end, value, std::chars_format::fixed);
    return fault == std::errc() && stop == end ? value : std::nan("");
}

/// Returns the cents of the pitch at the beginning of a line; the error is the expected content.
Result<double> ReadPitch(std::string_view text) {
    SkipBlanks(text);
    const std::string_view first = TakeNumber(text, true);
    if (first.find_first_of("0123456789") == std::string_view::npos)
        return Error{kPitch};
    const double upper = ValueOf(first);
    double cents = upper;
    if (first.find('.') == std::string_view::npos) {
        double lower = 1;
        SkipBlanks(text);
        if (text.starts_with('/')) {
            text.remove_prefix(1);
            SkipBlanks(text);
            lower = ValueOf(TakeNumber(text, false));
        }
        if (!(upper > 0 && lower > 0))
            return Error{kRatio};
        cents = CentsOf(upper) - CentsOf(lower);
    }
    // A decimal comma, a slash or another period is part of a malformed number, not of the text
    // after the pitch, which is ignored.
    const bool comma = text.size() > 1 && text[0] == ',' && IsDigit(text[1]);
    if (comma || text.starts_with('/') || text.starts_with('.'))
        return Error{kPitch};
    if (!(std::abs(cents) <= kWidestInterval))
        return Error{kCents};
    return cents;
}

} // namespace

double Scale::Cents(int64 degree) const {
    const auto count = static_cast<int64>(cents.size());
    const int64 step = (degree % count + count) % count;
    const int64 octaves = (degree - step) / count;
    return static_cast<double>(octaves) * cents.back() +
           (step > 0 ? cents[static_cast<std::size_t>(step - 1)] : 0);
}

Result<Scale> ParseScale(std::string_view bytes, const std::string& name) {
    ScalaLines lines(bytes, name);
    if (!lines.Next())
        return lines.Expected("the scale's description");
    lines.NextFilled();
    const auto count = NumberIn(lines.Text(), 1, kMostScaleNotes);
    if (!count)
        return lines.Expected("the number of notes, from 1 to " + std::to_string(kMostScaleNotes));
    Scale scale{{}};
    for (int note = 1; note <= *count; note++) {
        if (!lines.NextFilled())
            return lines.Expected("pitch " + std::to_string(note) + " of " +
                                  std::to_string(*count));
        const Result<double> cents = ReadPitch(lines.Text());
        if (!cents)
            return lines.Expected(cents.Fault().text);
        scale.cents.push_back(*cents);
    }
    while (lines.NextFilled()) {
        if (ReadPitch(lines.Text()))
            return lines.Expected("no pitch after number " + std::to_string(*count));
    }
    return scale;
}

Result<Scale> ReadScale(const std::filesystem::path& path) {
    const Result<std::string> bytes = kits::ReadFile(path);
    if (!bytes)
        return bytes.Fault();
    return ParseScale(*bytes, path.string());
}

} // namespace vexa
