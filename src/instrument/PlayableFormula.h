// SPDX-License-Identifier: GPL-3.0-or-later
// Makes a playable formula from an expression's text.
#pragma once

#include "documents/Function.h"
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
    /// The reason, for a person, with the place in words, and with advice on a line of its own. If
    /// there is a formula, what its author has probably not meant; often empty.
    std::string reason{};
    /// The index of the byte of the text to which the reason refers, if it refers to a place.
    std::optional<std::size_t> place{};
};

/// Parses the text; takes about as long as CompileFormula. Any thread that may allocate.
PlayableFormula ReadPlayable(std::string_view text);

/// Returns why no add-on can take the place of the text's formula, whatever compiler there is;
/// empty if one can. Any thread that may allocate.
std::string WhyNoAddon(const Formula& formula, std::string_view text);
/// Returns the same for any function that can be played.
std::string WhyNoAddon(const Function& function);

} // namespace vexa
