// A whole sound as a document holds it.
#pragma once

#include "documents/Function.h"
#include "synth/EnvelopeCurve.h"

#include <array>
#include <string>
#include <vector>

namespace vexa {

/// The texts are as they were typed, and none of them is known to be valid. A new one holds what a
/// fresh window does.
struct Sound {
    Sound();

    std::string author = kDefaultAuthor;
    Function function;
    /// The coefficients' texts, one for each row of Parameters().
    std::vector<std::string> texts;
    /// The envelopes' points, in the order of EnvelopePlaces().
    std::array<std::vector<EnvPoint>, 4> envelopes;
    KeptElements kept;

    bool operator==(const Sound&) const = default;
};

} // namespace vexa
