// SPDX-License-Identifier: GPL-3.0-or-later
// The values of a plane function over a part of the plane.
#pragma once

#include "synth/PlanePicture.h"

#include <chrono>
#include <memory>
#include <vector>

namespace vexa {

/// The values of the plane function, computed in parts as by PlaneDrawing. Values that are not
/// computed yet are 0. Window thread.
class PlaneField {
  public:
    /// Drops the present values and starts with this function and area.
    void Begin(const PlaneFunction& f, const PlaneArea& area);
    /// Computes for about `time`. Returns true if there may be new values.
    bool Continue(std::chrono::steady_clock::duration time);
    bool IsComplete() const { return !drawing; }

    /// Returns the values, one row after the other from the top.
    const std::vector<float>& Values() const { return values; }
    const PlaneArea& Area() const { return area; }

  private:
    PlaneFunction function{nullfunc};
    PlaneArea area{};
    std::vector<float> values;
    // Declared last, because it writes to the others.
    std::unique_ptr<PlaneDrawing> drawing;
};

} // namespace vexa
