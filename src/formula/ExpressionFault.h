// SPDX-License-Identifier: GPL-3.0-or-later
// The reason and the position of an error in an expression.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>

namespace vexa {

/// The reason for which an expression is refused, or what is doubtful in it, in words, and the
/// index of the byte at fault.
struct ExpressionFault {
    std::size_t position = 0;
    std::string reason;
    /// A sentence that says how to write what the author probably meant; often empty.
    std::string advice{};
};

/// Returns the position, as characters are counted from 1, and the reason. The advice follows on a
/// line of its own.
inline std::string Text(const ExpressionFault& fault) {
    return "character " + std::to_string(fault.position + 1) + ": " + fault.reason +
           (fault.advice.empty() ? "" : "\n" + fault.advice);
}

/// Receives the faults of an expression and keeps only the first.
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
