// SPDX-License-Identifier: GPL-3.0-or-later
// This computes the plane function along an orbit.
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

/// Returns the orbit of the newest note that sounds, as it is heard now, from where its period
/// begins. Where none sounds it is that of a note of velocity 0.8 and key 60, at the moment of its
/// first second at which it is widest. Window thread, or inside a section of a reader.
OrbitPath NewestOrbit(const SoundRecords& records);

/// values[i] is f, a function of x and y alone, at i / count of the revolution, as it is heard. The
/// same threads as f.
void FollowOrbit(const PlaneFunction& f, const OrbitPath& path, std::span<float> values);

} // namespace vexa
