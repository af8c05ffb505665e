// SPDX-License-Identifier: GPL-3.0-or-later
// What a sound document says of the player and of the listener: "playing", and more in "info".
#pragma once

#include "documents/DocumentFile.h"
#include "documents/Sound.h"

namespace vexa {

constexpr const char* kPlaying = "playing";
/// The elements of "info" that are a sound's own, in the order in which they are written.
constexpr std::string_view kSoundInfoNames[] = {"name", "category", "tags", "comment"};

/// The element "playing" with what the texts have.
std::unique_ptr<MXFragment> ConstructPlayingElement(const PlayingTexts& playing);
/// The texts of the children of an element "playing". One that means no value is a remark and kept.
PlayingTexts ReadPlaying(const MXFragment& element, Remarks& remarks);

/// Appends to an element "info" what the sound says there.
void AdoptSoundInfo(MXFragment& element, const SoundInfo& info);
/// The texts of the children of an element "info". An unknown category is a remark and kept.
SoundInfo ReadSoundInfo(const MXFragment& element, Remarks& remarks);

} // namespace vexa
