// SPDX-License-Identifier: GPL-3.0-or-later
// The values of the plane function along an orbit.
#pragma once

#include "synth/PlaneFunction.h"
#include "synth/SoundRecords.h"

#include <span>

namespace vexa {

/// One revolution of an orbit: centre and radii of the ellipse, the phases at which it begins
/// (radians), and the turns of x and y.
struct OrbitPath {
    double cx, cy, ax, ay;
    double phasex, phasey;
    double turnsx, turnsy;

    bool operator==(const OrbitPath&) const = default;
};

/// Returns the present orbit of the newest sounding note, from the beginning of its period on. If
/// none sounds, it returns the orbit of a note of velocity 0.8 and key 60 at the moment, within its
/// first second, at which the orbit is widest. Window thread, or inside a section of a reader.
OrbitPath NewestOrbit(const SoundRecords& records);

/// Computes the values of f, a function of x and y alone, as they are heard: values[i] is the one
/// after the fraction i / values.size() of the revolution. Runs in the same threads as f.
void FollowOrbit(const PlaneFunction& f, const OrbitPath& path, std::span<float> values);

} // namespace vexa
