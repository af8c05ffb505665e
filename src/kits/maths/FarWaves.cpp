// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/maths/FarWaves.h"

#include "kits/maths/VectorMaths.h"

namespace kits {

namespace {

double First(VectorMaths::OfOne f, double x) {
    alignas(64) double numbers[VectorMaths::kGroup] = {x};
    alignas(64) double values[VectorMaths::kGroup];
    f(numbers, values, VectorMaths::kGroup);
    return values[0];
}

} // namespace

double FarSine(double x) {
    return First(AllVectorMaths().front()->sin, x);
}

double FarCosine(double x) {
    return First(AllVectorMaths().front()->cos, x);
}

} // namespace kits
