// SPDX-License-Identifier: GPL-3.0-or-later
// A project is what a session keeps of the program.
#pragma once

#include "app/AppOptions.h"
#include "documents/Sound.h"
#include "kits/support/Result.h"

#include <filesystem>
#include <string>

namespace vexa {

/// A project lies in a folder of its own: the sound as "sound.xml", what options say of all else as
/// lines "option = value" in the file "session", and copies of the Scala files that tune the keys.
struct Project {
    Sound sound;
    /// The name of the sound.
    std::string soundName;
    bool windowShown = true;
    /// The options that are kept: the MIDI source and channel, the voices, the tuning, `mpe`,
    /// `programs` and `playing`. Those that are not set are not kept.
    AppOptions options;
};

/// True where there is a project in the folder.
bool ProjectExists(const std::filesystem::path& folder);
/// Reads a project. What `options` say holds where the project says nothing of it; their `sound` is
/// the file of the project's. The error names file, line and fault.
kits::Result<Project> ReadProject(const std::filesystem::path& folder, const AppOptions& options);
/// Writes a project, and makes the folder where there is none. `copied` is the tuning that was
/// written there last: where its files can no longer be read the copies of them stay. Where it
/// fails the files are as before.
kits::Result<void> WriteProject(const std::filesystem::path& folder, const Project& project,
                                const TuningChoice& copied);

/// True where WriteProject would write the same, but for authors and whether the window is shown.
bool AreAlike(Project a, const Project& b);

} // namespace vexa
