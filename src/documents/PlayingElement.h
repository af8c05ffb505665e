// SPDX-License-Identifier: GPL-3.0-or-later
// The elements of a sound document that serve the player and the listener: "playing" with its
// children, and the children of "info" besides the author.
#pragma once

#include "documents/DocumentFile.h"
#include "documents/Sound.h"

namespace vexa {

/// The name of the element with the settings of how a sound is played.
constexpr const char* kPlaying = "playing";

// All functions below may be called in any thread.

/// Makes the element "playing", with a child for each text that is not absent.
std::unique_ptr<MXFragment> ConstructPlayingElement(const PlayingTexts& playing);
/// Returns the texts of the children of an element "playing". An invalid text is kept and adds a
/// remark, and so does an unknown child.
PlayingTexts ReadPlaying(const MXFragment& element, Remarks& remarks);

/// Appends the children of kSoundInfoNames to an element "info", except absent ones.
void AdoptSoundInfo(MXFragment& element, const SoundInfo& info);
/// Returns the texts of these children of an element "info". An unknown category is kept and adds a
/// remark.
SoundInfo ReadSoundInfo(const MXFragment& element, Remarks& remarks);

} // namespace vexa
