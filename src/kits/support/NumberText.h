// Numbers as texts in files and fields: the same in every locale.
#pragma once

#include <string>

namespace kits {

/// What strtod reads in the C locale: leading blanks and whatever follows the number are ignored,
/// "inf", "nan" and hexadecimal numbers are numbers, and a text that is none gives 0.
double NumberOf(const std::string& text);

/// The text is a number and nothing else but blanks around it.
bool IsNumber(const std::string& text);

/// As printf's "%f" in the C locale: six decimals.
std::string FixedText(double number);

} // namespace kits
