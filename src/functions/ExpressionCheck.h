// What may reach the compiler.
//
// An expression comes from whoever wrote the sound. It is compiled into this process, so everything
// that is not arithmetic is refused here, before the compiler sees it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace vexa {

/// Why an expression is refused, in words, and the byte at which the reason lies, from 0.
struct ExpressionFault {
    std::size_t position;
    std::string reason;
};

/// Longest expression, in bytes.
constexpr std::size_t kLongestExpression = 65536;
/// Deepest nesting of parentheses, calls, signs, casts and ?:, which the compiler follows with a
/// deeper stack.
constexpr int kDeepestExpression = 256;
/// Highest order of jn and yn, whose running time is proportional to it.
constexpr int kHighestOrder = 100;

/// Nothing if the expression is one of C that consists of: numbers, x and y; the operators
/// + - ! ~ of one operand; * / % + - << >> < > <= >= == != & ^ | && || ?:; parentheses and casts to
/// arithmetic types; calls of functions of the maths library that take and return numbers, and the
/// constants of its header. Blanks and tabs separate. Types are the compiler's business, with two
/// exceptions: a whole number may only be divided by a positive one that is written out, since
/// a division by 0 would end the program, and so must be the order of jn and yn.
///
/// Takes time proportional to the length, and bounded stack. Any thread.
std::optional<ExpressionFault> CheckExpression(std::string_view expression);

} // namespace vexa
