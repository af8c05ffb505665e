// SPDX-License-Identifier: GPL-3.0-or-later
// A search finds the sounds that a person looks for.
#pragma once

#include "bank/SoundEntry.h"

#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace vexa {

/// Sounds in the order of their numbers. Entries never change: one that has is another one.
using SoundList = std::vector<std::shared_ptr<const SoundEntry>>;

/// The names of files of favourite sounds.
using Favourites = std::set<std::string, std::less<>>;

/// All that is asked for must hold.
struct SoundQuery {
    /// Words, each of which is somewhere in what a person reads of the sound or in its formula,
    /// without regard to case and accents.
    std::string text{};
    /// The category that is looked for; empty for any.
    std::string category{};
    bool favourite = false;
    /// True for those only that the person has made.
    bool own = false;

    bool operator==(const SoundQuery&) const = default;
};

bool IsFavourite(const SoundEntry& entry, const Favourites& favourites);

/// Returns the places in `sounds` of those that are looked for, in order. Any thread.
std::vector<std::size_t> Search(const SoundList& sounds, const SoundQuery& query,
                                const Favourites& favourites);

} // namespace vexa
