// SPDX-License-Identifier: GPL-3.0-or-later
// A small picture of a sound: its plane with the orbit in it.
#pragma once

#include "documents/Sound.h"
#include "kits/storage/ProgramFolder.h"
#include "kits/support/Bitmap.h"

#include <memory>
#include <string>

namespace vexa {

/// A picture, or why there is none.
struct Thumbnail {
    std::shared_ptr<const BBitmap> picture;
    /// The reason why the sound's function cannot be played; empty for a picture. It may have
    /// several lines.
    std::string fault;
};

/// Draws `size` by `size` pixels, 4 at least, of what the sound shows of the plane, as the plane
/// view does where no note sounds, but brighter where it is quiet; and in it the orbit of the note
/// kShownNote, round where it begins and as wide as it becomes. A function that would take longer
/// than some 20 ms is drawn coarsely, and of a sample of more than two minutes there is only the
/// orbit. It waits for the disk where there is a sample. Any thread.
Thumbnail DrawThumbnail(const Sound& sound, const kits::ProgramFolders& folders, int size);

} // namespace vexa
