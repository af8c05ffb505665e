// SPDX-License-Identifier: GPL-3.0-or-later
// A small picture of a sound: its plane with the orbit in it.
#pragma once

#include "documents/Sound.h"
#include "kits/storage/ProgramFolder.h"
#include "kits/support/Bitmap.h"

#include <memory>
#include <string>

namespace vexa {

/// A picture, or the reason why there is none.
struct Thumbnail {
    std::shared_ptr<const BBitmap> picture;
    /// The reason why the sound's function cannot be played; empty if there is a picture. It may
    /// have several lines.
    std::string fault;
};

/// Draws the part of the plane that the sound shows, in `size` by `size` pixels, at least 4. The
/// plane looks as in the plane view without notes, but brighter in its quiet parts. On it is the
/// orbit of the note kShownNote, around its starting point and at its largest size. A function that
/// would take longer than about 20 ms is drawn coarsely, and a sample of more than two minutes has
/// only the orbit. Waits for the disk if the function is a sample. Any thread.
Thumbnail DrawThumbnail(const Sound& sound, const kits::ProgramFolders& folders, int size);

} // namespace vexa
