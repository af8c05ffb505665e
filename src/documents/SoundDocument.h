// SPDX-License-Identifier: GPL-3.0-or-later
// The sound document: a Sound as an XML tree and as a file.
#pragma once

#include "documents/DocumentFile.h"
#include "documents/Sound.h"

namespace vexa {

/// Makes the element that holds the whole sound, and what was kept of the document it came from.
std::unique_ptr<MXFragment> ConstructSoundElement(const Sound& sound);
/// Makes the element "envdata" with an element for each point of an envelope.
std::unique_ptr<MXFragment> ConstructEnvdataElement(const std::vector<EnvPoint>& points);

/// The name of the element of a sound.
constexpr const char* kSoundElement = "vexasound";

/// The alert for a document that has no sound.
constexpr const char* kInvalidSound = "This is not a valid sound.";

/// Takes the function, the texts and the points of a sound element over, each from the first
/// element of its name, wherever it stands, and what else is kept of it. What the element lacks
/// stays as it is in `sound` and is a remark, and so is a text that is not the number that it
/// should be. An element without a function is refused, with kInvalidSound; nothing is changed
/// then.
kits::Result<void> InterpretSound(const MXFragment& root, Sound& sound, Remarks& remarks);

/// Replaces the points by those of an element "envdata", in its order. A time or a value that is
/// missing or not a finite number is read as 0, and what is not "true" as a point of the key that
/// is down. All that a person can hardly have meant is a remark.
void InterpretEnvdataElement(const MXFragment& envdata, std::vector<EnvPoint>& points,
                             Remarks& remarks);

/// Reads the sound at `path`, that of a new Sound for what it lacks, whatever was loaded before.
/// What is to be said about a sound that is taken replaces `warnings`, where there are any. Any
/// thread.
kits::Result<Sound> ReadSound(const std::filesystem::path& path, Warnings* warnings = nullptr);

/// Writes the sound as the document at `path`, or leaves the file as it was. Any thread.
kits::Result<void> WriteSound(const std::filesystem::path& path, const Sound& sound);

/// Reads the sound of a document's text, as ReadSound does; a text that ends early or has another
/// fault is refused as a whole. Any thread.
kits::Result<Sound> SoundOfText(const std::string& text);

/// Returns what WriteSound writes. Any thread.
std::string SoundText(const Sound& sound);

} // namespace vexa
