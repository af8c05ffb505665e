// SPDX-License-Identifier: GPL-3.0-or-later
// The sound document: a Sound as an XML tree and as a file.
#pragma once

#include "documents/DocumentFile.h"
#include "documents/Sound.h"

namespace vexa {

/// Makes the element of the whole sound, including the unknown elements that were kept.
std::unique_ptr<MXFragment> ConstructSoundElement(const Sound& sound);
/// Makes the element "envdata" with an element for each point of an envelope.
std::unique_ptr<MXFragment> ConstructEnvdataElement(const std::vector<EnvPoint>& points);

/// The name of the element of a sound.
constexpr const char* kSoundElement = "vexasound";

/// The alert for a document without a sound.
constexpr const char* kInvalidSound = "This is not a valid sound.";

/// Reads the function, the texts, the points and the unknown elements of a sound element into
/// `sound`. The function, the groups of coefficients and "info" are each read from the first
/// element of that name at any depth. A missing element leaves its values in `sound` unchanged and
/// adds a remark; optional texts ("playing" and those of SoundInfo and the macros) are reset
/// instead. A text that should be a number and is not adds a remark. An element without a function,
/// or one that is itself a function, is refused with kInvalidSound, and `sound` remains unchanged.
kits::Result<void> InterpretSound(const MXFragment& root, Sound& sound, Remarks& remarks);

/// Replaces the points by those of an element "envdata", in document order. A time or value that is
/// missing or not a finite number is read as 0. A point is a release point if its attribute "fku"
/// is "true", else a key-down point. Each probable mistake adds a remark.
void InterpretEnvdataElement(const MXFragment& envdata, std::vector<EnvPoint>& points,
                             Remarks& remarks);

/// Reads the sound at `path`. Texts and points that it lacks are those of a new Sound, regardless
/// of any sound that was loaded before. `warnings` is that of ReadValue. A sample or a picture is
/// refused by that name, whatever the bytes look like as a text. Any thread.
kits::Result<Sound> ReadSound(const std::filesystem::path& path, Warnings* warnings = nullptr);

/// Writes the sound as the document at `path`; an error leaves the file unchanged. Any thread.
kits::Result<void> WriteSound(const std::filesystem::path& path, const Sound& sound);

/// Reads a sound from a document's text, like ReadSound, but refuses a text that is incomplete or
/// that the parser cannot read to its end. Any thread.
kits::Result<Sound> SoundOfText(const std::string& text);

/// Returns the text that WriteSound writes. Any thread.
std::string SoundText(const Sound& sound);

} // namespace vexa
