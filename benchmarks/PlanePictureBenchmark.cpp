// SPDX-License-Identifier: GPL-3.0-or-later
// How long does it take to compute the picture of the plane, compared with computing it point by
// point?
#include "Expressions.h"
#include "synth/PlanePicture.h"

#include <algorithm>
#include <string>

#include <benchmark/benchmark.h>

namespace {

vexa::PlaneArea Area(std::size_t side) {
    return {0, 0, 0.5F, 0.5F, 15 / static_cast<float>(side), side, side};
}

void Product(benchmark::State& state, const vexa::PlaneFunction& function, std::size_t side) {
    std::vector<uint32> words(side * side);
    for (auto _ : state) {
        vexa::DrawPlane(function, Area(side), words.data());
        benchmark::DoNotOptimize(words.data());
    }
}

/// Computes the picture by its definition, one point after the other.
void Reference(benchmark::State& state, const vexa::PlaneFunction& function, std::size_t side) {
    std::vector<uint32> words(side * side);
    const vexa::PlaneArea area = Area(side);
    const float left = area.linkScreenX * float(side) * area.scale;
    const float top = (1 - area.linkScreenY) * float(side) * area.scale;
    for (auto _ : state) {
        for (std::size_t r = 0; r < side; r++) {
            const float y = area.linkFunctionY - float(r) * area.scale + top;
            for (std::size_t c = 0; c < side; c++) {
                const float value = function(area.linkFunctionX + float(c) * area.scale - left, y);
                constexpr float kMost = 2147483520.0F;
                const auto v = std::isfinite(value)
                                   ? static_cast<int32>(std::clamp(value * 255.0F, -kMost, kMost))
                                   : 0;
                words[r * side + c] =
                    v > 0 ? static_cast<uint32>(v) : static_cast<uint32>(-v) << 16;
            }
        }
        benchmark::DoNotOptimize(words.data());
    }
}

void Compare(const std::string& name, const vexa::PlaneFunction& function) {
    for (const std::size_t side : {std::size_t{301}, std::size_t{4096}}) {
        const std::string ending = "/" + name + "/" + std::to_string(side);
        benchmark::RegisterBenchmark(("Reference" + ending).c_str(), Reference, function, side)
            ->UseRealTime()
            ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark(("Product" + ending).c_str(), Product, function, side)
            ->UseRealTime()
            ->Unit(benchmark::kMicrosecond);
    }
}

[[maybe_unused]] const bool registered = [] {
    Compare("default", bench::Compiled(bench::kDefault));
    Compare("transcendental", bench::Compiled(bench::kTranscendental));
    Compare("sample", bench::LoadedSample());
    return true;
}();

} // namespace
