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

/// Returns the files of all sounds, the user's and the shipped ones together, in byte order of
/// their names; of two with the same name only the user's. Any thread.
std::vector<std::filesystem::path> Programs(const kits::ProgramFolders& folders);

/// Returns the file of the sound with this number, counted from 0 in the order of Programs. Fails
/// if there is none; the error states how many there are.
kits::Result<std::filesystem::path> FindProgram(const kits::ProgramFolders& folders, int32 number);

/// Reads a sound and tries its function; fails if the instrument could not install that.
/// `warnings` is as for ReadSound. Window thread.
kits::Result<Sound> ReadWhole(const std::filesystem::path& path, const Instrument& instrument,
                              Warnings& warnings);

} // namespace vexa
