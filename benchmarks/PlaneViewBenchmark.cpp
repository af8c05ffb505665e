// How long does the plane view take for a pulse?
#include "kits/interface/Application.h"
#include "midi/Instrument.h"
#include "views/R2RFView.h"

#include <cstdlib>
#include <memory>

#include <benchmark/benchmark.h>

namespace {

constexpr BRect kFrame = {10, 10, 310, 310};

BApplication& Application() {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    static BApplication application("application/x-vnd.orvo-Benchmark");
    return application;
}

/// A pulse with so many voices; with none it only asks.
void Pulse(benchmark::State& state) {
    Application();
    vexa::R2RFView view(kFrame, "view", {0, 0}, {0.5F, 0.5F}, 0.05F, B_FOLLOW_NONE);
    vexa::Instrument instrument;
    instrument.consumer.ReduceToMaxVox(20);
    view.SetSoundParam(&instrument.controllers, &instrument.parameters, &instrument.voices);
    for (int i = 0; i < state.range(0); i++)
        instrument.consumer.NoteOn(0, static_cast<uchar>(40 + i), 100, 0);
    for (auto _ : state)
        view.Pulse();
}
BENCHMARK(Pulse)->Arg(0)->Arg(1)->Arg(20)->Unit(benchmark::kMicrosecond);

} // namespace
