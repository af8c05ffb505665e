// What does a voice cost per sample, in the product and in the plain reference?
//
// Both compute the same compiled add-on, the reference by its point function.
#include "Expressions.h"
#include "support/ScalarReference.h"
#include "support/Sounds.h"

#include <array>
#include <functional>
#include <string>

#include <benchmark/benchmark.h>

namespace {

constexpr std::size_t kBlock = 64;

void StrikeChord(int voices, const std::function<void(int note)>& strike) {
    for (int i = 0; i < voices; i++)
        strike(40 + 2 * i);
}

/// Time per voice and sample, as an inverted rate.
void Report(benchmark::State& state, int voices) {
    state.counters["per_voice_sample"] =
        benchmark::Counter(double(state.iterations()) * kBlock * voices,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void Product(benchmark::State& state, const vexa::PlaneFunction& function, int voices) {
    vexa::Instrument instrument;
    test::MakeRich(instrument);
    instrument.SetFunction(function);
    StrikeChord(voices, [&](int note) { instrument.consumer.NoteOn(0, uchar(note), 100, 0); });
    std::array<float, kBlock> buffer;
    for (auto _ : state) {
        instrument.renderer.Render(buffer.data(), kBlock);
        benchmark::DoNotOptimize(buffer);
    }
    Report(state, voices);
}

void Reference(benchmark::State& state, const vexa::PlaneFunction& function, int voices) {
    vexa::Instrument instrument;
    test::MakeRich(instrument);
    test::ScalarReference reference(instrument.parameters, function.point);
    StrikeChord(voices, [&](int note) { reference.NoteOn(note, 100); });
    std::array<float, kBlock> buffer;
    for (auto _ : state) {
        reference.Fill(buffer.data(), kBlock);
        benchmark::DoNotOptimize(buffer);
    }
    Report(state, voices);
}

/// 20 voices whose four envelopes have so many points, over ten minutes that no run reaches.
void EnvelopePoints(benchmark::State& state) {
    static const vexa::PlaneFunction function = bench::Compiled(bench::kDefault);
    vexa::Instrument instrument;
    test::MakeRich(instrument);
    test::Points points;
    for (int i = 0; i < state.range(0); i++)
        points.push_back({600 * float(i) / float(state.range(0) - 1), false, float(1 + i % 2) / 2});
    for (vexa::Envelope& envelope : instrument.envelopes)
        test::SetEnvelope(envelope, points);
    instrument.SetFunction(function);
    StrikeChord(20, [&](int note) { instrument.consumer.NoteOn(0, uchar(note), 100, 0); });
    std::array<float, kBlock> buffer;
    for (auto _ : state) {
        instrument.renderer.Render(buffer.data(), kBlock);
        benchmark::DoNotOptimize(buffer);
    }
    Report(state, 20);
}
BENCHMARK(EnvelopePoints)->Arg(2)->Arg(8)->Arg(64);

/// 20 voices, so many samples at a time.
void BlockLength(benchmark::State& state) {
    static const vexa::PlaneFunction function = bench::Compiled(bench::kDefault);
    vexa::Instrument instrument;
    test::MakeRich(instrument);
    instrument.SetFunction(function);
    StrikeChord(20, [&](int note) { instrument.consumer.NoteOn(0, uchar(note), 100, 0); });
    std::vector<float> buffer(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        instrument.renderer.Render(buffer.data(), buffer.size());
        benchmark::DoNotOptimize(buffer.data());
    }
    state.counters["per_voice_sample"] =
        benchmark::Counter(double(state.iterations()) * double(state.range(0)) * 20,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BlockLength)->RangeMultiplier(4)->Range(16, 1024);

/// Reference and product in turns, so that both meet the same machine.
void Compare(const std::string& name, const vexa::PlaneFunction& function) {
    for (const int voices : {1, 5, 20}) {
        const std::string ending = "/" + name + "/" + std::to_string(voices);
        benchmark::RegisterBenchmark(("Reference" + ending).c_str(), Reference, function, voices);
        benchmark::RegisterBenchmark(("Product" + ending).c_str(), Product, function, voices);
    }
}

[[maybe_unused]] const bool registered = [] {
    Compare("default", bench::Compiled(bench::kDefault));
    Compare("transcendental", bench::Compiled(bench::kTranscendental));
    Compare("branches", bench::Compiled(bench::kBranches));
    Compare("sample", bench::LoadedSample());
    return true;
}();

} // namespace
