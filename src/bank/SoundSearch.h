// SPDX-License-Identifier: GPL-3.0-or-later
// The search for sounds in a list.
#pragma once

#include "bank/SoundEntry.h"

#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace vexa {

/// Sounds in the order of a list. Entries are immutable: a changed sound has a new entry.
using SoundList = std::vector<std::shared_ptr<const SoundEntry>>;

/// The file names of the favourite sounds.
using Favourites = std::set<std::string, std::less<>>;

/// The conditions of a search, which must all hold.
struct SoundQuery {
    /// Words, each of which occurs in the shown texts or the formula of the sound, regardless of
    /// case and accents.
    std::string text{};
    /// The category; empty for any.
    std::string category{};
    bool favourite = false;
    /// True for the user's own sounds only.
    bool own = false;

    bool operator==(const SoundQuery&) const = default;
};

bool IsFavourite(const SoundEntry& entry, const Favourites& favourites);

/// Returns the indices in `sounds` of the sounds that match, in order. Any thread.
std::vector<std::size_t> Search(const SoundList& sounds, const SoundQuery& query,
                                const Favourites& favourites);

} // namespace vexa
