// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Dropped.h"

#include "documents/DocumentKind.h"

#include <algorithm>
#include <string>

namespace vexa {

std::string EndingOf(const std::filesystem::path& file) {
    std::string ending = file.extension();
    std::ranges::transform(ending, ending.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; });
    return ending;
}

DroppedFiles SortDropped(std::span<const std::filesystem::path> files) {
    DroppedFiles sorted;
    for (const std::filesystem::path& file : files) {
        const std::string ending = EndingOf(file);
        auto& place = ending == ".scl"                      ? sorted.scale
                      : ending == ".kbm"                    ? sorted.keymap
                      : KindOf(file) == DocumentKind::Sound ? sorted.sound
                                                            : sorted.terrain;
        if (place)
            sorted.others.push_back(file);
        else
            place = file;
    }
    return sorted;
}

} // namespace vexa
