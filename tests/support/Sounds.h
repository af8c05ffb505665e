// SPDX-License-Identifier: GPL-3.0-or-later
// Instruments that tests play, and measurements of their samples.
#pragma once

#include "midi/Engine.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <vector>

namespace test {

using Points = std::vector<vexa::EnvPoint>;

inline void SetEnvelope(vexa::Envelope& envelope, Points points) {
    envelope.Points() = std::move(points);
    envelope.ProduceCalcPts();
}

/// f(x, y) = x: with a circle as its orbit a note is a pure sine.
inline float PlaneOfX(float x, float) {
    return x;
}

/// Sets a gain of 1, 20 voices, and circles of radius 1 with short releases.
inline void MakeSine(vexa::Engine& instrument) {
    instrument.SetFunction({PlaneOfX});
    instrument.renderer.SetGain(1);
    instrument.consumer.ReduceToMaxVox(20);
    const Points circle{{0, false, 0}, {0.01F, false, 1}, {0.05F, true, 0}};
    SetEnvelope(instrument.envelopes[2], circle);
    SetEnvelope(instrument.envelopes[3], circle);
}

/// Uses every feature of a sound: drift, envelopes of several points, Lissajous ratios,
/// controllers.
inline void MakeRich(vexa::Engine& instrument) {
    vexa::sound_param& p = instrument.parameters;
    p.Cx0 = 0.7F;
    p.Cx1 = 0.2F;
    p.Cx3 = -0.4F;
    p.Cx4 = 1;
    p.Cy0 = -0.5F;
    p.Cy2 = 0.3F;
    p.Ax0 = 0.4F;
    p.Ax1 = 1.2F;
    p.Ax3 = 0.5F;
    p.Ax4 = 2;
    p.Ay2 = -0.3F;
    p.C0x0 = -0.3F;
    p.C0x1 = 0.5F;
    p.C0y2 = 0.8F;
    p.C0y3 = 0.25F;
    p.C0y4 = 1;
    p.Fx = 1;
    p.Fy = 1.5F;
    SetEnvelope(instrument.envelopes[0],
                {{0, false, 0}, {0.4F, false, 1}, {1.3F, false, -0.6F}, {0.3F, true, 0.2F}});
    SetEnvelope(instrument.envelopes[1], {{0, false, 0.5F}, {0.9F, false, -1}, {1, true, 0}});
    SetEnvelope(instrument.envelopes[2],
                {{0, false, 0}, {0.02F, false, 1}, {0.5F, false, 0.6F}, {0.4F, true, 0}});
    SetEnvelope(instrument.envelopes[3],
                {{0, false, 0.2F}, {0.7F, false, 0.9F}, {0.1F, true, 0.3F}, {0.6F, true, 0}});
    instrument.SetFunction({vexa::dummyfunction});
    instrument.renderer.SetGain(0.25F);
    instrument.consumer.ReduceToMaxVox(20);
}

inline std::vector<float> Render(vexa::Engine& instrument, std::size_t count) {
    std::vector<float> samples(count);
    instrument.renderer.Render(samples.data(), count);
    return samples;
}

inline float Peak(std::span<const float> samples) {
    float peak = 0;
    for (const float s : samples)
        peak = std::max(peak, std::abs(s));
    return peak;
}

/// Returns the largest step from one sample to the next.
inline float LargestStep(std::span<const float> samples) {
    float step = 0;
    for (std::size_t i = 1; i < samples.size(); i++)
        step = std::max(step, std::abs(samples[i] - samples[i - 1]));
    return step;
}

} // namespace test
