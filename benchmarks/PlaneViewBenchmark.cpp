// SPDX-License-Identifier: GPL-3.0-or-later
// How long does the plane view take for a pulse, and for an exported picture?
#include "kits/interface/Application.h"
#include "midi/Engine.h"
#include "views/R2RFView.h"

#include <cstdlib>
#include <memory>

#include <benchmark/benchmark.h>
#include <sys/resource.h>

namespace {

constexpr BRect kFrame = {10, 10, 310, 310};

BApplication& Application() {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    static BApplication application("application/x-vnd.orvo-Benchmark");
    return application;
}

/// The initial expression, as the compiler makes it.
float Point(float x, float y) {
    return (5 * (x * y * y - y * x * x) - 3 * (x - y)) /
           ((1 + x * x + y * y) * (1 + x * x + y * y));
}

/// A source with a block form, as compiled functions have.
class Source final : public vexa::PlaneSource {
    float At(float x, float y, const float*) const noexcept override { return Point(x, y); }
    void Evaluate(const float* x, const float* y, const float* const*, float* values,
                  std::size_t count) const noexcept override {
        for (std::size_t i = 0; i < count; i++)
            values[i] = Point(x[i], y[i]);
    }
};

/// Draws an exported picture without writing it; `peak` is the process's greatest memory use as a
/// multiple of the picture's size.
void Export(benchmark::State& state) {
    Application();
    vexa::R2RFView view(kFrame, "view", {0, 0}, {0.5F, 0.5F}, 0.05F, B_FOLLOW_NONE);
    view.SetFunction(std::make_shared<Source>());
    const auto edge = static_cast<float>(state.range(0) - 1);
    double size = 0;
    for (auto _ : state) {
        const auto picture = view.MakeBitmap({0, 0, edge, edge}, 15 / edge);
        size = static_cast<double>(picture->BitsLength());
    }
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    state.counters["peak"] = static_cast<double>(usage.ru_maxrss) * 1024 / size;
}
BENCHMARK(Export)->Arg(8001)->Unit(benchmark::kMillisecond);

/// A pulse with the given number of voices; without any the view only checks for changes.
void Pulse(benchmark::State& state) {
    Application();
    vexa::R2RFView view(kFrame, "view", {0, 0}, {0.5F, 0.5F}, 0.05F, B_FOLLOW_NONE);
    vexa::Engine instrument;
    instrument.consumer.ReduceToMaxVox(20);
    view.SetSoundParam(&instrument.controllers, &instrument.parameters, &instrument.voices);
    for (int i = 0; i < state.range(0); i++)
        instrument.consumer.NoteOn(0, static_cast<uchar>(40 + i), 100, 0);
    for (auto _ : state)
        view.Pulse();
}
BENCHMARK(Pulse)->Arg(0)->Arg(1)->Arg(20)->Unit(benchmark::kMicrosecond);

} // namespace
