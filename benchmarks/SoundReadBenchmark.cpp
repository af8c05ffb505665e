// SPDX-License-Identifier: GPL-3.0-or-later
// What does it cost to extract a sound from a document's tree, compared with reading the tree? The
// documents have 1, 8 and 64 MB; one consists of points only, and in the other every search for an
// element fails only after it has looked everywhere.
#include "documents/SoundDocument.h"

#include <benchmark/benchmark.h>

namespace {

using namespace vexa;

MXString WithPoints(std::size_t size) {
    Sound sound;
    sound.envelopes[0].resize(size / 60);
    return ConstructSoundElement(sound)->AssembleString("", "  ");
}

/// Returns a document in which each group contains all following ones, and none contains its proper
/// elements.
MXString Nothing(std::size_t size) {
    std::string text = "<vexasound><vexafunction/><info><display>";
    for (const char* group : {"dcxdt", "dcydt", "ax", "ay", "cx0", "cy0", "vexafunction"})
        text.append("<").append(group).append(">");
    while (text.size() < size)
        text += "<a><b>x</b></a>\n";
    return MXString(std::string_view(text));
}

void Tree(benchmark::State& state, MXString (*make)(std::size_t)) {
    const MXString text = make(static_cast<std::size_t>(state.range(0)) << 20);
    for (auto _ : state) {
        MXString given = text;
        const MXFragment root(given);
        benchmark::DoNotOptimize(root.Type());
    }
    state.SetBytesProcessed(state.iterations() * text.Length());
}

void SoundOfTree(benchmark::State& state, MXString (*make)(std::size_t)) {
    MXString text = make(static_cast<std::size_t>(state.range(0)) << 20);
    const int64 size = text.Length();
    const MXFragment root(text);
    for (auto _ : state) {
        Sound sound;
        Remarks remarks;
        benchmark::DoNotOptimize(bool(InterpretSound(root, sound, remarks)));
    }
    state.SetBytesProcessed(state.iterations() * size);
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(1)->Arg(8)->Arg(64)->Unit(benchmark::kMillisecond)->MinWarmUpTime(1)->MinTime(2);
}

BENCHMARK_CAPTURE(Tree, Points, WithPoints)->Apply(Sizes);
BENCHMARK_CAPTURE(SoundOfTree, Points, WithPoints)->Apply(Sizes);
BENCHMARK_CAPTURE(Tree, Nothing, Nothing)->Apply(Sizes);
BENCHMARK_CAPTURE(SoundOfTree, Nothing, Nothing)->Apply(Sizes);

} // namespace
