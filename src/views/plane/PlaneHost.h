// SPDX-License-Identifier: GPL-3.0-or-later
// The interface through which the gestures on the plane change the sound.
#pragma once

#include "kits/support/Geometry.h"
#include "synth/ParameterTable.h"
#include "synth/SoundRecords.h"

#include <optional>
#include <string>

namespace vexa {

/// The owner of the plane's views. Window thread.
class PlaneHost {
  public:
    virtual ~PlaneHost() = default;

    /// Returns the records of the playing instrument.
    virtual const SoundRecords& Records() const = 0;

    // The following have the effect of the user entering the texts into the fields.

    virtual void SetCoefficient(ParameterId id, const std::string& text) = 0;
    /// Sets the shown width in plane units, and the point of the plane that is shown at the link's
    /// place.
    virtual void SetView(const std::string& width, const std::string& linkX,
                         const std::string& linkY) = 0;

    /// Starts or restarts the note of a preview. If `start` is given, its centre starts at that
    /// point, while the sound and its document stay unchanged; where that is impossible nothing
    /// happens.
    virtual void Strike(std::optional<BPoint> start) = 0;
    /// Ends the preview, as the release of a key does.
    virtual void LetGo() = 0;
    /// Called about sixty times a second between Strike and LetGo.
    virtual void Watch() = 0;
};

/// The note of previews, which the handles refer to if no note sounds: velocity and key, 0..127.
constexpr uint8 kPreviewVelocity = 102;
constexpr uint8 kPreviewKey = 60;

} // namespace vexa
