// SPDX-License-Identifier: GPL-3.0-or-later
// Makes a playable formula from an expression's text.
#pragma once

#include "formula/Formula.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vexa {

/// A formula that is cheap enough to be played, or the reason why there is none.
struct PlayableFormula {
    std::shared_ptr<const Formula> formula;
    /// The reason, for a person, with the place in words, and with advice on a line of its own;
    /// empty if there is a formula.
    std::string reason{};
    /// The index of the byte of the text to which the reason refers, if it refers to a place.
    std::optional<std::size_t> place{};
};

/// Parses the text; takes about as long as CompileFormula. Any thread that may allocate.
PlayableFormula ReadPlayable(std::string_view text);

} // namespace vexa
