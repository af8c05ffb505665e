// SPDX-License-Identifier: GPL-3.0-or-later
// A whole sound as a document holds it.
#pragma once

#include "documents/Function.h"
#include "synth/EnvelopeCurve.h"
#include "synth/Playing.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vexa {

/// What the element "info" may say of a sound besides its author. An element that is not there is
/// no text, not an empty one.
struct SoundInfo {
    std::optional<std::string> name;
    /// One of kCategories.
    std::optional<std::string> category;
    /// Separated by commas.
    std::optional<std::string> tags;
    std::optional<std::string> comment;

    bool operator==(const SoundInfo&) const = default;
};

constexpr std::string_view kCategories[] = {"bass",  "lead",       "pad",     "keys",  "bell",
                                            "pluck", "percussion", "texture", "effect"};

/// The element "playing": a text for each row of PlayingRows() that it has.
struct PlayingTexts {
    PlayingTexts();

    std::vector<std::optional<std::string>> texts;
    /// Elements that this version does not know, as XML.
    std::string kept;

    bool operator==(const PlayingTexts&) const = default;
};

/// The texts are as they were typed, and none of them is known to be valid. A new one holds what a
/// fresh window does.
struct Sound {
    Sound();

    std::string author = kDefaultAuthor;
    SoundInfo info;
    Function function;
    /// The coefficients' texts, one for each row of Parameters().
    std::vector<std::string> texts;
    /// The envelopes' points, in the order of EnvelopePlaces().
    std::array<std::vector<EnvPoint>, 4> envelopes;
    /// How it is played, where the sound says so.
    std::optional<PlayingTexts> playing;
    KeptElements kept;

    bool operator==(const Sound&) const = default;
};

} // namespace vexa
