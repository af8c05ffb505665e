// SPDX-License-Identifier: GPL-3.0-or-later
// The sound with which an instrument begins unless another one is asked for.
#pragma once

#include "documents/SoundDocument.h"
#include "kits/storage/ProgramFolder.h"

#include <filesystem>
#include <string>

namespace vexa {

constexpr const char* kDefaultSoundName = "default";

struct DefaultSound {
    Sound sound;
    /// The file of the sound; empty if it is the initial sound.
    std::filesystem::path path;
    /// The warnings of the file.
    Warnings warnings;
    /// The faults of the files that take precedence and cannot be read, and what plays instead, a
    /// line each; empty if there are none.
    std::string fault;
};

/// Reads the sound "default": the file that takes precedence or, if it cannot be read, the shipped
/// one. Without either it is the initial sound, so that notes are heard in any case. Any thread.
DefaultSound ReadDefaultSound(const kits::ProgramFolders& folders);

} // namespace vexa
