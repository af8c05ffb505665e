// What does a voice cost per sample, in the product and in the plain reference?
#include "support/ScalarReference.h"
#include "support/Sounds.h"

#include <benchmark/benchmark.h>

namespace {

constexpr std::size_t kBlock = 64;

void StrikeChord(int voices, const std::function<void(int note)>& strike) {
    for (int i = 0; i < voices; i++)
        strike(40 + 2 * i);
}

/// Time per voice and sample, as an inverted rate.
void Report(benchmark::State& state) {
    state.counters["per_voice_sample"] =
        benchmark::Counter(double(state.iterations()) * kBlock * double(state.range(0)),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void Product(benchmark::State& state) {
    vexa::Instrument instrument;
    test::MakeRich(instrument);
    StrikeChord(int(state.range(0)),
                [&](int note) { instrument.consumer.NoteOn(0, uchar(note), 100, 0); });
    std::array<float, kBlock> buffer;
    for (auto _ : state) {
        instrument.renderer.Render(buffer.data(), kBlock);
        benchmark::DoNotOptimize(buffer);
    }
    Report(state);
}

void Reference(benchmark::State& state) {
    vexa::Instrument instrument;
    test::MakeRich(instrument);
    test::ScalarReference reference(instrument.parameters, vexa::dummyfunction);
    StrikeChord(int(state.range(0)), [&](int note) { reference.NoteOn(note, 100); });
    std::array<float, kBlock> buffer;
    for (auto _ : state) {
        reference.Fill(buffer.data(), kBlock);
        benchmark::DoNotOptimize(buffer);
    }
    Report(state);
}

BENCHMARK(Reference)->Arg(1)->Arg(5)->Arg(20);
BENCHMARK(Product)->Arg(1)->Arg(5)->Arg(20);

} // namespace
