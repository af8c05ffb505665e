// SPDX-License-Identifier: GPL-3.0-or-later
// A project: the state of the program that a session keeps.
#pragma once

#include "app/AppOptions.h"
#include "documents/Sound.h"
#include "kits/support/Result.h"
#include "tuning/TuningChoice.h"

#include <filesystem>
#include <string>

namespace vexa {

/// A project lies in a folder of its own: the sound as "sound.xml", the rest as options in lines
/// "option = value" of the file "session", and copies of the Scala files that tune the keys.
struct Project {
    Sound sound;
    /// The name of the file that the sound came from, without the ending.
    std::string soundName;
    bool windowShown = true;
    /// The options that are kept: the MIDI source and channel, the voices, the tuning, `mpe`,
    /// `programs` and `playing`. Options without a value are not kept.
    AppOptions options;
    /// The files of the tuning as they play, which the named ones need not be any more.
    TuningFiles tuningFiles;
};

/// True if the folder holds a project: it has the sound, which is the last file that WriteProject
/// puts there. What is left of a first save that failed is none.
bool ProjectExists(const std::filesystem::path& folder);
/// Reads a project. Options that the project does not say are taken from `options`. In the result
/// the option `sound` is the project's sound file, and `file` is not set. The files of the tuning
/// are named but not read. The error names file, line and fault.
kits::Result<Project> ReadProject(const std::filesystem::path& folder, const AppOptions& options);
/// Writes a project and creates its folder if there is none. If anything fails, the files are as
/// before; the folder may be there.
kits::Result<void> WriteProject(const std::filesystem::path& folder, const Project& project);

/// True if WriteProject would write the same for both, apart from authors and from whether the
/// window is shown.
bool AreAlike(Project a, const Project& b);

} // namespace vexa
