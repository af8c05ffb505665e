// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/Ears.h"

#include <numbers>

namespace vexa {

namespace {

/// Returns half of the spread, in radians.
VEXA_REALTIME double Half(double spread) noexcept {
    return spread * (std::numbers::pi / 360);
}

} // namespace

void Ears::Begin(const sound_param& p, double spread, std::size_t ramp, std::size_t offset,
                 std::size_t count) noexcept {
    x.Begin(p.Fx * Half(spread), begun ? ramp : 0, offset, count);
    y.Begin(p.Fy * Half(spread), begun ? ramp : 0, offset, count);
    begun = true;
}

void Ears::Restart() noexcept {
    x.angle.Set(0);
    y.angle.Set(0);
    begun = false;
}

bool Ears::StayAt(const sound_param& p, double spread) const noexcept {
    return begun && x.angle.StaysAt(p.Fx * Half(spread)) && y.angle.StaysAt(p.Fy * Half(spread));
}

void Ears::Axis::Begin(double target, std::size_t ramp, std::size_t offset,
                       std::size_t count) noexcept {
    angle.Aim(target, ramp, offset);
    turn.angles = angle.Varies() ? angles.data() : nullptr;
    if (const double now = angle.Now(); now != turn.angle) {
        turn.angle = now;
        Loops().Waves(&turn.angle, &turn.sine, &turn.cosine, 1);
    }
    for (std::size_t i = 0; turn.angles && i < count; i++) {
        angles[i] = angle.Now();
        angle.Pass(1);
    }
}

} // namespace vexa
