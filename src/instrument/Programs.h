// SPDX-License-Identifier: GPL-3.0-or-later
// Sounds by number, as program changes choose them.
#pragma once

#include "documents/SoundDocument.h"
#include "instrument/Instrument.h"
#include "kits/storage/ProgramFolder.h"
#include "kits/support/Result.h"
#include "kits/support/SupportDefs.h"

#include <filesystem>
#include <vector>

namespace vexa {

/// Returns all sounds, in byte order of file names, a person's own and those that came with the
/// program together; of two with one name it is the person's. Any thread.
std::vector<std::filesystem::path> Programs(const kits::ProgramFolders& folders);

/// Returns the sound with that number, from 0 in that order. The error says how many there are.
kits::Result<std::filesystem::path> FindProgram(const kits::ProgramFolders& folders, int32 number);

/// Reads a sound that the instrument will take whole: its function has been tried. `warnings` is as
/// for ReadSound. Window thread.
kits::Result<Sound> ReadWhole(const std::filesystem::path& path, const Instrument& instrument,
                              Warnings& warnings);

} // namespace vexa
