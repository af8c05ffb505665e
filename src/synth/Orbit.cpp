// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/Orbit.h"

#include "synth/Coefficients.h"
#include "synth/Envelope.h"

#include <limits>

namespace vexa {

OrbitSums SumsOf(const VoiceView& v, const sound_param& p, const ControllerTable& controllers) {
    if (v.sums)
        return *v.sums;
    const auto weights = [&](const CoefficientGroup& group) {
        return group.For(p, controllers, v.vel, v.key);
    };
    const Weights driftx = weights(kDcxdt), drifty = weights(kDcydt);
    const Weights radiusx = weights(kAx), radiusy = weights(kAy);
    return {driftx.c0,
            drifty.c0,
            driftx.rest,
            drifty.rest,
            radiusx.c0 + radiusx.rest,
            radiusy.c0 + radiusy.rest};
}

Orbit OrbitOf(const VoiceView& v, const sound_param& p, const ControllerTable& controllers) {
    const OrbitSums sums = SumsOf(v, p, controllers);
    const auto radius = [&](const Envelope& curve, std::size_t place) {
        return curve.Value(static_cast<float>(v.t), v.released, v.rellevel[place]) *
               sums[place + 2];
    };
    return {v.cx, v.cy, radius(*p.EnvAx, 2), radius(*p.EnvAy, 3), v.phasex, v.phasey, p.Fx, p.Fy};
}

int NewestSlot(const VoiceTable& voices) {
    int newest = -1;
    double least = std::numeric_limits<double>::infinity();
    for (int i = 0; i < kVoiceSlots; i++) {
        const voice& slot = voices[static_cast<std::size_t>(i)];
        const VoiceState::Seen seen = slot.state.Look();
        if (IsOver(slot, seen))
            continue;
        const double t = (slot.released ? double(slot.heldfor) : 0.0) + Seconds(slot, seen);
        if (t >= least)
            continue;
        least = t;
        newest = i;
    }
    return newest;
}

} // namespace vexa
