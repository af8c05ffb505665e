// SPDX-License-Identifier: GPL-3.0-or-later
// The plane functions that benchmarks share, made as the program makes them.
#pragma once

#include "functions/ProgramFolder.h"
#include "functions/SampleFunction.h"

#include <cmath>
#include <stdexcept>

namespace bench {

/// The expression with which the program starts, a rational function.
inline constexpr const char* kDefault = "(5*(x*y*y-y*x*x)-3*(x-y))/((1+x*x+y*y)*(1+x*x+y*y))";
inline constexpr const char* kTranscendental = "sin(3*x)*cos(2*y)+exp(-x*x-y*y)";
inline constexpr const char* kBranches = "x>y ? sin(x)*y : (x<-1 ? x*x : y-x)";

/// Returns the function of an expression, compiled by the product's compiler.
inline vexa::PlaneFunction Compiled(const char* expression) {
    static const test::ProgramFolder folder;
    vexa::CompileOutcome outcome = vexa::FunctionCompiler(folder.Path()).Compile(expression);
    if (!outcome)
        throw std::runtime_error(outcome.text);
    return outcome.addon;
}

/// Returns the sample function of ten seconds of a tone of 220 Hz with partials.
inline vexa::PlaneFunction LoadedSample() {
    constexpr int kRate = 44100;
    std::vector<float> tone(10 * kRate);
    for (std::size_t i = 0; i < tone.size(); i++) {
        const double turn = 2 * M_PI * 220 * double(i) / kRate;
        tone[i] = static_cast<float>(std::sin(turn) + 0.5 * std::sin(2.01 * turn) +
                                     0.2 * std::sin(7 * turn));
    }
    const auto winding = vexa::WindingFor(tone.size(), kRate, 220);
    return std::make_shared<vexa::SampleSpiral>(
        std::make_shared<const std::vector<float>>(std::move(tone)), *winding);
}

} // namespace bench
