// SPDX-License-Identifier: GPL-3.0-or-later
// What does a voice cost per sample, in the product and in the plain reference?
//
// Both compute the same compiled add-on; the reference calls its point function.
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

/// Reports the time per voice and sample, as an inverted rate.
void Report(benchmark::State& state, int voices, std::size_t count = kBlock) {
    state.counters["per_voice_sample"] =
        benchmark::Counter(double(state.iterations()) * double(count) * voices,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void Product(benchmark::State& state, const vexa::PlaneFunction& function, int voices) {
    vexa::Engine instrument;
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
    vexa::Engine instrument;
    test::MakeRich(instrument);
    test::ScalarReference reference(instrument.parameters, function);
    StrikeChord(voices, [&](int note) { reference.NoteOn(note, 100); });
    std::array<float, kBlock> buffer;
    for (auto _ : state) {
        reference.Fill(buffer.data(), kBlock);
        benchmark::DoNotOptimize(buffer);
    }
    Report(state, voices);
}

/// Renders 20 voices of the default expression, `count` samples at a time; `prepare` is called once
/// their notes are on.
void Render20(
    benchmark::State& state, std::size_t count,
    const std::function<void(vexa::Engine&)>& prepare = [](auto&) {}) {
    static const vexa::PlaneFunction function = bench::Compiled(bench::kDefault);
    vexa::Engine instrument;
    test::MakeRich(instrument);
    instrument.SetFunction(function);
    StrikeChord(20, [&](int note) { instrument.consumer.NoteOn(0, uchar(note), 100, 0); });
    prepare(instrument);
    std::vector<float> buffer(count);
    for (auto _ : state) {
        instrument.renderer.Render(buffer.data(), buffer.size());
        benchmark::DoNotOptimize(buffer.data());
    }
    Report(state, 20, count);
}

/// Four envelopes with the given number of points over ten minutes, of which a run plays only the
/// start.
void EnvelopePoints(benchmark::State& state) {
    Render20(state, kBlock, [&state](vexa::Engine& instrument) {
        test::Points points;
        for (int i = 0; i < state.range(0); i++)
            points.push_back(
                {600 * float(i) / float(state.range(0) - 1), false, float(1 + i % 2) / 2});
        for (vexa::Envelope& envelope : instrument.envelopes)
            test::SetEnvelope(envelope, points);
    });
}
BENCHMARK(EnvelopePoints)->Arg(2)->Arg(8)->Arg(64);

/// Blocks of the given number of samples.
void BlockLength(benchmark::State& state) {
    Render20(state, static_cast<std::size_t>(state.range(0)));
}
BENCHMARK(BlockLength)->RangeMultiplier(4)->Range(16, 1024);

/// Notes that have sounded for the given number of hours, which pass in one block.
void NoteHours(benchmark::State& state) {
    Render20(state, kBlock, [&state](vexa::Engine& instrument) {
        if (state.range(0) == 0)
            return;
        std::array<float, kBlock> skipped;
        instrument.renderer.SetSampleRate(kBlock / (3600.0 * double(state.range(0))));
        instrument.renderer.Render(skipped.data(), skipped.size());
        instrument.renderer.SetSampleRate(44100);
    });
}
BENCHMARK(NoteHours)->Arg(0)->Arg(10);

/// Voices whose keys are held (0), and released ones that have become silent (1).
void Released(benchmark::State& state) {
    Render20(state, kBlock, [&state](vexa::Engine& instrument) {
        vexa::sound_param& p = instrument.parameters;
        p.Cx1 = p.Cx3 = p.Cy2 = p.Ay2 = 0;
        test::SetEnvelope(instrument.envelopes[0],
                          {{0, false, 0}, {0.4F, false, 1}, {0.3F, true, 0}});
        if (state.range(0) == 0)
            return;
        StrikeChord(20, [&](int note) { instrument.consumer.NoteOff(0, uchar(note), 0, 0); });
        std::vector<float> skipped(10 * 44100);
        instrument.renderer.Render(skipped.data(), skipped.size());
    });
}
BENCHMARK(Released)->Arg(0)->Arg(1);

/// One ear (-1), and two ears the given number of degrees apart.
void Spread(benchmark::State& state) {
    const vexa::PlaneFunction function = bench::Compiled(bench::kDefault);
    vexa::Engine instrument;
    test::MakeRich(instrument);
    instrument.SetFunction(function);
    instrument.playing.given = true;
    instrument.playing.spread = float(std::max<std::int64_t>(0, state.range(0)));
    StrikeChord(20, [&](int note) { instrument.consumer.NoteOn(0, uchar(note), 100, 0); });
    std::array<float, kBlock> left, right;
    for (auto _ : state) {
        instrument.renderer.Render(left.data(), state.range(0) < 0 ? nullptr : right.data(),
                                   kBlock);
        benchmark::DoNotOptimize(left);
        benchmark::DoNotOptimize(right);
    }
    Report(state, 20);
}
BENCHMARK(Spread)->Arg(-1)->Arg(0)->Arg(60);

/// Runs reference and product in turns, so that both see the machine in the same state.
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
