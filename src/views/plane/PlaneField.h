// SPDX-License-Identifier: GPL-3.0-or-later
// The values of a plane function over a part of the plane.
#pragma once

#include "synth/PlanePicture.h"

#include <chrono>
#include <memory>
#include <vector>

namespace vexa {

/// Holds values of the plane function, computed in parts, as PlaneDrawing does; what is not
/// computed yet is 0. Window thread.
class PlaneField {
  public:
    /// Drops what it has and begins with these.
    void Begin(const PlaneFunction& f, const PlaneArea& area);
    /// Computes for about so long; true if there are new values.
    bool Continue(std::chrono::steady_clock::duration time);
    bool IsComplete() const { return !drawing; }

    /// Returns the values, one row after the other from the top.
    const std::vector<float>& Values() const { return values; }
    const PlaneArea& Area() const { return area; }

  private:
    PlaneFunction function{nullfunc};
    PlaneArea area{};
    std::vector<float> values;
    // It stands last, as it computes the others.
    std::unique_ptr<PlaneDrawing> drawing;
};

} // namespace vexa
