// SPDX-License-Identifier: GPL-3.0-or-later
#include "bank/SoundSearch.h"

#include "kits/text/FoldedText.h"

#include <algorithm>
#include <iterator>
#include <sstream>

namespace vexa {

bool IsFavourite(const SoundEntry& entry, const Favourites& favourites) {
    return favourites.contains(entry.path.filename().string());
}

std::vector<std::size_t> Search(const SoundList& sounds, const SoundQuery& query,
                                const Favourites& favourites) {
    std::istringstream folded(kits::Folded(query.text));
    const std::vector<std::string> words(std::istream_iterator<std::string>(folded), {});
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < sounds.size(); i++) {
        const SoundEntry& entry = *sounds[i];
        if ((query.category.empty() || query.category == entry.category) &&
            (!query.favourite || IsFavourite(entry, favourites)) && (!query.own || entry.own) &&
            std::all_of(words.begin(), words.end(), [&entry](const std::string& word) {
                return entry.searched.find(word) != std::string::npos;
            }))
            found.push_back(i);
    }
    return found;
}

} // namespace vexa
