// SPDX-License-Identifier: GPL-3.0-or-later
// A fault tells what is wrong with an expression.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>

namespace vexa {

/// The reason why an expression is refused, in words, and the byte at which it lies, from 0.
struct ExpressionFault {
    std::size_t position = 0;
    std::string reason;
    /// What the author may have meant, as a sentence that tells how to write it; often empty.
    std::string advice{};
};

/// The place, as a person counts characters, and the reason; the advice on a line of its own.
inline std::string Text(const ExpressionFault& fault) {
    return "character " + std::to_string(fault.position + 1) + ": " + fault.reason +
           (fault.advice.empty() ? "" : "\n" + fault.advice);
}

/// Collects the faults of an expression, of which it keeps the first.
class Refusals {
  public:
    void At(std::size_t position, std::string reason, std::string advice = "") {
        if (!first)
            first = {position, std::move(reason), std::move(advice)};
    }
    explicit operator bool() const { return first.has_value(); }
    std::optional<ExpressionFault> First() && { return std::move(first); }

  private:
    std::optional<ExpressionFault> first;
};

} // namespace vexa
