// SPDX-License-Identifier: GPL-3.0-or-later
// A whole sound as a document stores it.
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

/// The optional children of the element "info" besides the author. An absent child is std::nullopt,
/// which differs from an empty text.
struct SoundInfo {
    /// The name that lists show instead of the file's name.
    std::optional<std::string> name;
    /// One of kCategories, or a word that this version does not know.
    std::optional<std::string> category;
    /// Words separated by commas.
    std::optional<std::string> tags;
    std::optional<std::string> comment;

    bool operator==(const SoundInfo&) const = default;
};

/// The categories of sounds in lists.
constexpr std::string_view kCategories[] = {"bass",  "lead",       "pad",     "keys",  "bell",
                                            "pluck", "percussion", "texture", "effect"};

/// The content of the element "playing".
struct PlayingTexts {
    PlayingTexts();

    /// A text for each row of PlayingRows(); std::nullopt if the element lacks the row.
    std::vector<std::optional<std::string>> texts;
    /// Returns the text of the row with that name, which must be one of them.
    std::optional<std::string>& Of(std::string_view name);
    const std::optional<std::string>& Of(std::string_view name) const;
    /// The children that this version does not know, as XML.
    std::string kept;

    bool operator==(const PlayingTexts&) const = default;
};

/// A sound. Its texts are kept as typed and may be invalid. A new sound has the values of a new
/// window.
struct Sound {
    Sound();

    std::string author = kDefaultAuthor;
    SoundInfo info;
    Function function;
    /// The coefficients' texts, one for each row of Parameters().
    std::vector<std::string> texts;
    /// The envelopes' points, in the order of EnvelopePlaces().
    std::array<std::vector<EnvPoint>, 4> envelopes;
    /// The settings of how the sound is played; std::nullopt if the sound has none.
    std::optional<PlayingTexts> playing;
    KeptElements kept;

    bool operator==(const Sound&) const = default;
};

} // namespace vexa
