// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/NumberValue.h"

#include "kits/support/NumberText.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>

namespace vexa::formula {

namespace {

NumberValue Of(int number) {
    return {Type::Int, static_cast<std::uint32_t>(number)};
}
NumberValue Of(float number) {
    return {Type::Float, std::bit_cast<std::uint32_t>(number)};
}
NumberValue Of(double number) {
    return {Type::Double, std::bit_cast<std::uint64_t>(number)};
}

bool IsHexadecimal(std::string_view text) {
    return text.starts_with("0x") || text.starts_with("0X");
}

NumberValue Whole(std::string_view text, std::uint64_t value) {
    const bool isUnsigned = text.find_first_of("uU") != std::string_view::npos;
    const bool isLong = text.find_first_of("lL") != std::string_view::npos;
    // A decimal number without the suffix u is unsigned only if no signed type holds it.
    const bool mayBeUnsigned = isUnsigned || text.starts_with('0');
    const std::uint64_t half = std::uint64_t(1) << 63;
    Type type = Type::UnsignedLong;
    if (!isUnsigned && !isLong && value < half >> 32)
        type = Type::Int;
    else if (mayBeUnsigned && !isLong && value < half >> 31)
        type = Type::Unsigned;
    else if (!isUnsigned && value < half)
        type = Type::Long;
    return {type, value};
}

NumberValue Fractional(std::string_view text) {
    const bool hexadecimal = IsHexadecimal(text);
    const bool isFloat =
        (hexadecimal ? text.find_first_of("pP") != std::string_view::npos : true) &&
        (text.ends_with('f') || text.ends_with('F'));
    const double number = kits::NumberOf(std::string(text));
    if (!isFloat)
        return Of(number);
    const std::string_view digits = text.substr(hexadecimal ? 2 : 0);
    float rounded = static_cast<float>(number);
    // This rounds only once. It leaves `rounded` unchanged if the number is out of range.
    std::from_chars(digits.data(), digits.data() + digits.size(), rounded,
                    hexadecimal ? std::chars_format::hex : std::chars_format::general);
    return Of(rounded);
}

struct ConstantRow {
    std::string_view name;
    NumberValue value;
};

const std::array kRows = {
    ConstantRow{"FP_ILOGB0", Of(std::numeric_limits<int>::min())},
    ConstantRow{"FP_ILOGBNAN", Of(std::numeric_limits<int>::min())},
    ConstantRow{"FP_INFINITE", Of(1)},
    ConstantRow{"FP_NAN", Of(0)},
    ConstantRow{"FP_NORMAL", Of(4)},
    ConstantRow{"FP_SUBNORMAL", Of(3)},
    ConstantRow{"FP_ZERO", Of(2)},
    ConstantRow{"HUGE_VAL", Of(std::numeric_limits<double>::infinity())},
    ConstantRow{"HUGE_VALF", Of(std::numeric_limits<float>::infinity())},
    ConstantRow{"HUGE_VALL", Of(std::numeric_limits<double>::infinity())},
    ConstantRow{"INFINITY", Of(std::numeric_limits<float>::infinity())},
    ConstantRow{"M_1_PI", Of(M_1_PI)},
    ConstantRow{"M_2_PI", Of(M_2_PI)},
    ConstantRow{"M_2_SQRTPI", Of(M_2_SQRTPI)},
    ConstantRow{"M_E", Of(M_E)},
    ConstantRow{"M_LN10", Of(M_LN10)},
    ConstantRow{"M_LN2", Of(M_LN2)},
    ConstantRow{"M_LOG10E", Of(M_LOG10E)},
    ConstantRow{"M_LOG2E", Of(M_LOG2E)},
    ConstantRow{"M_PI", Of(M_PI)},
    ConstantRow{"M_PI_2", Of(M_PI_2)},
    ConstantRow{"M_PI_4", Of(M_PI_4)},
    ConstantRow{"M_SQRT1_2", Of(M_SQRT1_2)},
    ConstantRow{"M_SQRT2", Of(M_SQRT2)},
    ConstantRow{"NAN", Of(std::numeric_limits<float>::quiet_NaN())},
};

} // namespace

NumberValue ValueOf(const Token& number) {
    return number.integer ? Whole(number.text, *number.written) : Fractional(number.text);
}

NumberValue ConstantValue(std::string_view name) {
    for (const ConstantRow& row : kRows) {
        if (row.name == name)
            return row.value;
    }
    return Of(0);
}

} // namespace vexa::formula
