// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ControllerLearn.h"

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

/// The share of a controller's range that it must exceed: 2.5 of 127 steps, more than the jitter of
/// a controller that nobody touches.
constexpr float kJitter = 2.5F / 127;

} // namespace

ControllerLearn::ControllerLearn(const ControllerTable& controllers) : controllers(&controllers) {
    std::copy(controllers.begin(), controllers.end(), before.begin());
}

std::optional<int> ControllerLearn::Moved() const {
    float furthest = kJitter;
    std::optional<int> moved;
    for (std::size_t i = 0; i < before.size(); i++) {
        const float way = std::fabs(float((*controllers)[i]) - before[i]);
        if (way > furthest) {
            furthest = way;
            moved = static_cast<int>(i);
        }
    }
    return moved;
}

} // namespace vexa
