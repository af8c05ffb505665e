// SPDX-License-Identifier: GPL-3.0-or-later
// What a sound document says of the player and of the listener: "playing", and more in "info".
#pragma once

#include "documents/DocumentFile.h"
#include "documents/Sound.h"

namespace vexa {

/// The name of the element that says how a sound is played.
constexpr const char* kPlaying = "playing";
/// The elements of "info" that are a sound's own, in the order in which they are written.
constexpr std::string_view kSoundInfoNames[] = {"name", "category", "tags", "comment"};

/// Makes the element "playing" of the texts that there are. Any thread, as all here.
std::unique_ptr<MXFragment> ConstructPlayingElement(const PlayingTexts& playing);
/// Returns the texts of the children of an element "playing". A text that means no value is kept,
/// and told to `remarks`.
PlayingTexts ReadPlaying(const MXFragment& element, Remarks& remarks);

/// Appends to an element "info" what the sound says there.
void AdoptSoundInfo(MXFragment& element, const SoundInfo& info);
/// Returns the texts of the children of an element "info". An unknown category is kept, and told to
/// `remarks`.
SoundInfo ReadSoundInfo(const MXFragment& element, Remarks& remarks);

} // namespace vexa
