// SPDX-License-Identifier: GPL-3.0-or-later
#include "tuning/Interval.h"

#include "kits/maths/VectorMaths.h"

#include <array>

namespace vexa {

namespace {

double Compute(kits::VectorMaths::OfOne kits::VectorMaths::*function, double x) {
    // The loops of the first instruction set run on every machine.
    const kits::VectorMaths& maths = *kits::AllVectorMaths().front();
    std::array<double, kits::VectorMaths::kGroup> arguments{};
    std::array<double, kits::VectorMaths::kGroup> values{};
    arguments.fill(x);
    (maths.*function)(arguments.data(), values.data(), values.size());
    return values[0];
}

} // namespace

double RatioOf(double cents) {
    return Compute(&kits::VectorMaths::exp2, cents / kOctave);
}

double CentsOf(double ratio) {
    return kOctave * Compute(&kits::VectorMaths::log2, ratio);
}

} // namespace vexa
