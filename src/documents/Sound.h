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
    /// What lists show in place of the file's name.
    std::optional<std::string> name;
    /// One of kCategories, or a word that this version does not know.
    std::optional<std::string> category;
    /// Words that are separated by commas.
    std::optional<std::string> tags;
    std::optional<std::string> comment;

    bool operator==(const SoundInfo&) const = default;
};

/// The categories in which lists sort sounds.
constexpr std::string_view kCategories[] = {"bass",  "lead",       "pad",     "keys",  "bell",
                                            "pluck", "percussion", "texture", "effect"};

/// The content of the element "playing".
struct PlayingTexts {
    PlayingTexts();

    /// A text for each row of PlayingRows(); nothing for a row that the element does not have.
    std::vector<std::optional<std::string>> texts;
    /// Elements that this version does not know, as XML.
    std::string kept;

    bool operator==(const PlayingTexts&) const = default;
};

/// A sound. Its texts are as they were typed, and none of them is known to be valid. A new sound
/// holds what a fresh window does.
struct Sound {
    Sound();

    std::string author = kDefaultAuthor;
    SoundInfo info;
    Function function;
    /// The coefficients' texts, one for each row of Parameters().
    std::vector<std::string> texts;
    /// The envelopes' points, in the order of EnvelopePlaces().
    std::array<std::vector<EnvPoint>, 4> envelopes;
    /// How the sound is played, where it says so itself.
    std::optional<PlayingTexts> playing;
    KeptElements kept;

    bool operator==(const Sound&) const = default;
};

} // namespace vexa
