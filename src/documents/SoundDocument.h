// The sound document: a Sound as an XML tree and as a file.
#pragma once

#include "documents/DocumentFile.h"
#include "documents/Sound.h"

namespace vexa {

std::unique_ptr<MXFragment> ConstructSoundElement(const Sound& sound);
std::unique_ptr<MXFragment> ConstructEnvdataElement(const std::vector<EnvPoint>& points);

/// Takes the function, the texts and the points of a sound element over, each from the first
/// element of its name, wherever it stands. What the element lacks stays as it is in `sound` and is
/// a warning. The error, for an element without a function, is kInvalidFunction; nothing is changed
/// then.
kits::Result<void> InterpretSound(const MXFragment& root, Sound& sound, Warnings& warnings);

/// Replaces the points by those of an element "envdata", in its order. A time or a value that is
/// not a finite number is read as 0 with a warning, which names `group`.
void InterpretEnvdataElement(const MXFragment& envdata, std::string_view group,
                             std::vector<EnvPoint>& points, Warnings& warnings);

/// The sound at `path`, `startFrom` for what it lacks. The error is the text for the window's
/// alert; see ReadReport for the terminal's.
kits::Result<Sound> ReadSound(const std::filesystem::path& path, const Sound& startFrom,
                              ReadReport& report);

/// The error names the path and the reason.
kits::Result<void> WriteSound(const std::filesystem::path& path, const Sound& sound);

} // namespace vexa
