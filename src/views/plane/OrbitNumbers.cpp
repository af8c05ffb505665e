// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/plane/OrbitNumbers.h"

#include "kits/support/NumberText.h"
#include "synth/Orbit.h"
#include "views/plane/PlaneHost.h"

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

const OrbitNumberRow kRows[] = {
    {OrbitNumber::StartX, "start of centre x", kCx0, ParameterId::C0x0},
    {OrbitNumber::StartY, "start of centre y", kCy0, ParameterId::C0y0},
    {OrbitNumber::RadiusX, "radius x", kAx, ParameterId::Ax0},
    {OrbitNumber::RadiusY, "radius y", kAy, ParameterId::Ay0},
    {OrbitNumber::DriftX, "drift of centre x", kDcxdt, ParameterId::Cx0},
    {OrbitNumber::DriftY, "drift of centre y", kDcydt, ParameterId::Cy0},
};

/// The number of time steps in which ReachOf follows the key-down part.
constexpr int kMoments = 400;

} // namespace

std::span<const OrbitNumberRow> OrbitNumbers() {
    return kRows;
}

OrbitNote NoteInHand(const SoundRecords& records) {
    const int slot = NewestSlot(records.voices);
    if (slot < 0)
        return {kPreviewVelocity / 127.0F, kPreviewKey / 127.0F};
    const voice& note = records.voices[static_cast<std::size_t>(slot)];
    return {note.vel, note.key};
}

double NumberFor(const OrbitNumberRow& row, const SoundRecords& records, const OrbitNote& note) {
    const Weights weights =
        row.sum.For(records.parameters, records.controllers, note.vel, note.key);
    return weights.c0 + weights.rest;
}

double ConstantFor(const OrbitNumberRow& row, const SoundRecords& records, const OrbitNote& note,
                   double value) {
    return value - row.sum.For(records.parameters, records.controllers, note.vel, note.key).rest;
}

double TidyStep(double most) {
    const double ten = std::pow(10, std::floor(std::log10(most)));
    for (const double step : {5.0, 2.0}) {
        if (step * ten <= most)
            return step * ten;
    }
    return ten;
}

std::string TidyText(double value, double step) {
    const double tidy = std::round(value / step) * step;
    // Texts of fields have at most six decimals, as in documents, unless the step is smaller.
    if (step >= 1e-6)
        return kits::ShortText(tidy == 0 ? 0 : tidy);
    return kits::RoundedText(tidy, 9);
}

Reach ReachOf(const SoundRecords& records, const OrbitNote& note) {
    const sound_param& p = records.parameters;
    const auto number = [&](OrbitNumber id) {
        return NumberFor(kRows[static_cast<std::size_t>(id)], records, note);
    };
    const auto weights = [&](OrbitNumber id) {
        return kRows[static_cast<std::size_t>(id)].sum.For(p, records.controllers, note.vel,
                                                           note.key);
    };
    double x = number(OrbitNumber::StartX), y = number(OrbitNumber::StartY);
    Reach reach{x, y, x, y};
    const double held = double(p.EnvAx->Split());
    const double step = held / kMoments;
    for (int i = 0; i <= kMoments && std::isfinite(x) && std::isfinite(y); i++) {
        const auto t = static_cast<float>(step * i);
        const auto at = [t](const Envelope* curve) { return double(curve->Value(t, false, 0)); };
        const double rx = std::abs(at(p.EnvAx) * number(OrbitNumber::RadiusX));
        const double ry = std::abs(at(p.EnvAy) * number(OrbitNumber::RadiusY));
        reach = {std::min(reach.left, x - rx), std::min(reach.bottom, y - ry),
                 std::max(reach.right, x + rx), std::max(reach.top, y + ry)};
        const Weights driftx = weights(OrbitNumber::DriftX), drifty = weights(OrbitNumber::DriftY);
        x += step * (at(p.EnvCx) * driftx.c0 + driftx.rest);
        y += step * (at(p.EnvCy) * drifty.c0 + drifty.rest);
    }
    return reach;
}

} // namespace vexa
