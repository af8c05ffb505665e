// SPDX-License-Identifier: GPL-3.0-or-later
// This makes a formula that may play of an expression's text.
#pragma once

#include "formula/Formula.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vexa {

/// A formula that is cheap enough to be played, or why there is none.
struct PlayableFormula {
    std::shared_ptr<const Formula> formula;
    /// The reason why there is none, for a person, with the place in words and advice on a line of
    /// its own; empty for a formula.
    std::string reason{};
    /// The byte of the text at which the reason lies, where it has a place.
    std::optional<std::size_t> place{};
};

/// Reads the text, in about the time of CompileFormula. Any thread that may allocate.
PlayableFormula ReadPlayable(std::string_view text);

} // namespace vexa
