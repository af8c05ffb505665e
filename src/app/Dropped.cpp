// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Dropped.h"

#include "documents/DocumentKind.h"
#include "documents/FunctionDocument.h"
#include "kits/pictures/PictureFile.h"
#include "tuning/Keymap.h"
#include "tuning/Scale.h"

#include <algorithm>
#include <string>

namespace vexa {

namespace {

constexpr const char* kScaleEnding = ".scl";
constexpr const char* kKeymapEnding = ".kbm";

bool IsUsable(const std::filesystem::path& file) {
    const std::string ending = EndingOf(file);
    if (ending == kScaleEnding)
        return bool(ReadScale(file));
    return ending == kKeymapEnding ? bool(ReadKeymap(file)) : IsOfAKind(file);
}

/// Reads a function or a picture as a whole, and returns whether that succeeds. Of a sample the
/// header has been read. A damaged sound keeps its place, because without it the terrain that was
/// dropped with it belongs to no sound.
bool CanBeRead(const std::filesystem::path& file) {
    switch (KindOf(file)) {
    case DocumentKind::Function:
        return bool(ReadFunction(file, Function()));
    case DocumentKind::Picture:
        return bool(kits::ReadPicture(file));
    case DocumentKind::Sound:
    case DocumentKind::Sample:
        break;
    }
    return true;
}

} // namespace

std::string EndingOf(const std::filesystem::path& file) {
    std::string ending = file.extension();
    std::ranges::transform(ending, ending.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; });
    return ending;
}

DroppedFiles SortDropped(std::span<const std::filesystem::path> files) {
    DroppedFiles sorted;
    for (const std::filesystem::path& file : files) {
        if (files.size() > 1 && !IsUsable(file)) {
            sorted.unusable.push_back(file);
            continue;
        }
        const std::string ending = EndingOf(file);
        auto& place = ending == kScaleEnding                ? sorted.scale
                      : ending == kKeymapEnding             ? sorted.keymap
                      : KindOf(file) == DocumentKind::Sound ? sorted.sound
                                                            : sorted.terrain;
        if (place)
            sorted.others.push_back(file);
        else if (files.size() > 1 && !CanBeRead(file))
            sorted.unusable.push_back(file);
        else
            place = file;
    }
    return sorted;
}

} // namespace vexa
