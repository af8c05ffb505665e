// SPDX-License-Identifier: GPL-3.0-or-later
// An entry is what a list of sounds tells of one of them.
#pragma once

#include "documents/SoundDocument.h"
#include "kits/storage/ProgramFolder.h"
#include "kits/support/Bitmap.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace vexa {

/// Texts are empty where the sound says nothing.
struct SoundEntry {
    std::filesystem::path path;
    /// True for a sound that the person has made; others came with the program.
    bool own = false;
    /// The name in its document, else that of its file without ".xml".
    std::string name;
    std::string category;
    std::string tags;
    std::string author;
    std::string comment;
    /// The expression, or the name of the sample or the picture.
    std::string formula;
    /// The reason why it cannot be loaded, in one line with the place, if there is one; empty if it
    /// can.
    std::string fault;
    /// All of the above that a person reads, as FoldedText folds it.
    std::string searched;
    /// The picture, null before it is drawn, and for a sound that cannot be loaded.
    std::shared_ptr<const BBitmap> picture;
};

/// What reading a sound's file gives: the entry without its picture, and the sound, unless its
/// document has a fault.
struct ReadEntry {
    SoundEntry entry;
    std::optional<Sound> sound;
};
ReadEntry ReadSoundEntry(const std::filesystem::path& path, bool own);

/// Puts a text of several lines into one, which names files in the folder of `path` without it.
std::string OneLine(std::string text, const std::filesystem::path& path);

} // namespace vexa
