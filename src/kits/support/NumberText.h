// SPDX-License-Identifier: GPL-3.0-or-later
// Numbers as text in files and fields: the same in every locale.
#pragma once

#include <cstddef>
#include <string>

namespace kits {

/// Reads the number at the beginning of a text, as strtod does in the C locale: leading blanks and
/// whatever follows the number are ignored, "inf", "nan" and hexadecimal numbers are accepted, and
/// a text without a number gives 0. `length`, unless null, becomes the number of bytes up to the
/// number's end, 0 if there is no number. Any thread.
double NumberOf(const std::string& text, std::size_t* length = nullptr);

/// Writes a number as printf's "%f" does in the C locale, with six decimals.
std::string FixedText(double number);
/// Writes a number as FixedText does, without trailing zeroes: "0.5", "1".
std::string ShortText(double number);
/// Writes a number as printf's "%g" does in the C locale, with `digits` digits, at most 17.
std::string RoundedText(double number, int digits);

} // namespace kits
