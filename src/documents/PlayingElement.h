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

/// The longest text in bytes that a person may enter as a part of a sound's description. Whatever
/// its characters, a description of such texts leaves the sound small enough for lists and
/// plug-ins, which refuse larger files than the reader does.
constexpr std::size_t kLongestInfo = std::size_t{16} << 10;

/// Returns why a text should not become a part of a sound's description; empty if it may.
std::string InfoFault(std::string_view text);

/// Appends the children of kSoundInfoNames to an element "info", except absent ones.
void AdoptSoundInfo(MXFragment& element, const SoundInfo& info);
/// Returns the texts of these children of an element "info". An unknown category is kept and adds a
/// remark.
SoundInfo ReadSoundInfo(const MXFragment& element, Remarks& remarks);

} // namespace vexa
