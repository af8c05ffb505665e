// SPDX-License-Identifier: GPL-3.0-or-later
// An entry of a list of sounds.
#pragma once

#include "documents/SoundDocument.h"
#include "kits/storage/ProgramFolder.h"
#include "kits/support/Bitmap.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace vexa {

/// The description of a sound. Texts that the sound does not have are empty.
struct SoundEntry {
    std::filesystem::path path;
    /// True for a sound of the user's own, false for one that came with the program.
    bool own = false;
    /// The name in the document, or the file's name without ".xml" if that is empty.
    std::string name;
    std::string category;
    std::string tags;
    std::string author;
    std::string comment;
    /// The expression, or the name of the sample or the picture.
    std::string formula;
    /// The reason why the sound cannot be loaded, in one line with the place, if there is one;
    /// empty if it can be loaded.
    std::string fault;
    /// All texts above that are shown, folded by FoldedText, for searches.
    std::string searched;
    /// The name, folded too, for the order of a list.
    std::string alphabetical;
    /// The picture; null until it is drawn, and for a sound that cannot be loaded.
    std::shared_ptr<const BBitmap> picture;
};

/// The result of reading a sound's file: the entry without its picture, and the sound unless its
/// document has a fault.
struct ReadEntry {
    SoundEntry entry;
    std::optional<Sound> sound;
};
ReadEntry ReadSoundEntry(const std::filesystem::path& path, bool own);

/// Joins the lines of a text, and removes the path of the folder of `path` from file names in it.
std::string OneLine(std::string text, const std::filesystem::path& path);

} // namespace vexa
