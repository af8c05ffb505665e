// SPDX-License-Identifier: GPL-3.0-or-later
// How does the time to read a document grow with its size? Linear growth shows as equal bytes per
// second at 1, 8 and 64 MB, for each kind of document.
#include "xml/MXDocument.h"

#include <string>

#include <benchmark/benchmark.h>
#include <malloc.h>

namespace {

using vexa::MXDocument;
using vexa::MXString;

std::string Filled(std::size_t size, const std::string& begin, const std::string& piece,
                   const std::string& end) {
    std::string text = begin;
    text.reserve(size + piece.size() + end.size());
    while (text.size() < size)
        text += piece;
    return text + end;
}

void Parse(benchmark::State& state, const std::string& text) {
    const MXString original{std::string_view(text)};
    for (auto _ : state) {
        MXString given = original;
        const MXDocument document(given);
        benchmark::DoNotOptimize(document.root.get());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64>(text.size()));
}

std::size_t Size(const benchmark::State& state) {
    return static_cast<std::size_t>(state.range(0)) << 20;
}

/// A document like a sound with many points.
void Points(benchmark::State& state) {
    Parse(state,
          Filled(Size(state), "<vexasound>\n<envdata>\n",
                 "      <envpoint t=\"0.250000\" val=\"1.000000\" fku=\"true\"/>\n", "</envdata>"));
}

void Elements(benchmark::State& state) {
    Parse(state, Filled(Size(state), "<r>\n", "  <a>\n    <b>x &lt; y</b>\n  </a>\n", "</r>"));
}

/// Elements without end tags, which all end at the end of the text.
void NestedWithoutEnd(benchmark::State& state) {
    Parse(state, Filled(Size(state), "", "<a>", ""));
}

void OneText(benchmark::State& state) {
    Parse(state, Filled(Size(state), "<r>", "x &lt; y % z ", "</r>"));
}

/// Attributes that contain the opening marks of comments and processing instructions.
void OneTag(benchmark::State& state) {
    Parse(state, Filled(Size(state), "<r><a", " a=\"<!--<?<\"", "></a></r>"));
}

/// Freed memory stays with the process and is touched before measuring: the system's speed at
/// providing memory is not the subject.
void Sizes(benchmark::internal::Benchmark* benchmark) {
    ::mallopt(M_TRIM_THRESHOLD, -1);
    ::mallopt(M_MMAP_MAX, 0);
    benchmark->Arg(1)->Arg(8)->Arg(64)->Unit(benchmark::kMillisecond)->MinWarmUpTime(1)->MinTime(2);
}

BENCHMARK(Points)->Apply(Sizes);
BENCHMARK(Elements)->Apply(Sizes);
BENCHMARK(NestedWithoutEnd)->Apply(Sizes);
BENCHMARK(OneText)->Apply(Sizes);
BENCHMARK(OneTag)->Apply(Sizes);

} // namespace
