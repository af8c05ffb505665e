// SPDX-License-Identifier: GPL-3.0-or-later
// The options, common to all programs, that override a sound's playing settings.
#pragma once

#include "documents/Sound.h"
#include "kits/application/CommandLine.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vexa {

/// Sets the text of row `index` in the member `playing` of the options. Returns false, without
/// effect, if the row does not allow it.
template<class Options, std::size_t index>
bool SetPlaying(Options& options, std::string_view text) {
    const std::string value(text);
    if (!PlayingValue(PlayingRows()[index], value))
        return false;
    options.playing.texts[index] = value;
    return true;
}

template<class Options, std::size_t... index>
std::vector<kits::OptionRow<Options>> AllPlayingOptions(std::index_sequence<index...>) {
    const auto row = [](const PlayingRow& r, bool (*set)(Options&, std::string_view)) {
        return kits::OptionRow<Options>{{r.name.data(), r.value, r.allowed, r.help}, set};
    };
    return {row(PlayingRows()[index], SetPlaying<Options, index>)...};
}

/// Returns a program's own rows, with those of PlayingRows() that are options inserted after the
/// row named `after`. `Options` has a member `playing` of the type PlayingTexts.
template<class Options>
std::vector<kits::OptionRow<Options>>
WithPlayingOptions(std::span<const kits::OptionRow<Options>> own, std::string_view after) {
    std::vector<kits::OptionRow<Options>> rows;
    for (const kits::OptionRow<Options>& row : own) {
        rows.push_back(row);
        if (row.name != after)
            continue;
        const auto all = AllPlayingOptions<Options>(std::make_index_sequence<kPlayingRows>());
        for (std::size_t i = 0; i < kPlayingRows; i++) {
            if (PlayingRows()[i].isOption)
                rows.push_back(all[i]);
        }
    }
    return rows;
}

} // namespace vexa
