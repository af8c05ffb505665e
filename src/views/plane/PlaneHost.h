// SPDX-License-Identifier: GPL-3.0-or-later
// The gestures on the plane reach the sound through a host.
#pragma once

#include "kits/support/Geometry.h"
#include "synth/ParameterTable.h"
#include "synth/SoundRecords.h"

#include <optional>
#include <string>

namespace vexa {

/// The owner of the plane. Window thread.
class PlaneHost {
  public:
    virtual ~PlaneHost() = default;

    /// Returns the records of what plays.
    virtual const SoundRecords& Records() const = 0;

    // The following do what a person does who puts the texts into the fields.

    virtual void SetCoefficient(ParameterId id, const std::string& text) = 0;
    /// Sets the width that is shown, in plane units, and the point that is shown at the link's
    /// place.
    virtual void SetView(const std::string& width, const std::string& linkX,
                         const std::string& linkY) = 0;

    /// Begins the note of a preview, or begins it anew; where a point is given its centre starts
    /// there, and the sound and what it is saved as stay as they are. Nothing happens where that
    /// cannot be.
    virtual void Strike(std::optional<BPoint> start) = 0;
    /// Ends the preview, as a key that is let go does.
    virtual void LetGo() = 0;
    /// Called some sixty times a second from Strike to LetGo.
    virtual void Watch() = 0;
};

/// The note of previews, which the handles are for where none sounds: velocity and key, each
/// divided by 127.
constexpr uint8 kPreviewVelocity = 102;
constexpr uint8 kPreviewKey = 60;

} // namespace vexa
