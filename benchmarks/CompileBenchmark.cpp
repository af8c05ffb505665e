// SPDX-License-Identifier: GPL-3.0-or-later
// How long does it take to install an expression, compared with the compiler's run alone?
#include "Expressions.h"
#include "kits/kernel/ChildProcess.h"
#include "midi/Engine.h"

#include <benchmark/benchmark.h>

namespace {

/// The compiler alone, run as FunctionCompiler runs it on its source.
void BareCompiler(benchmark::State& state) {
    const test::ProgramFolder folder;
    const vexa::FunctionCompiler compiler(folder.Path());
    compiler.MakeSourceFile(bench::kDefault, compiler.SourcePath());
    const kits::ChildProgram program{
        vexa::FunctionCompiler::Command("recent.c", "bare"), folder.Path() / "functions", {}};
    for (auto _ : state) {
        if (!kits::RunProgram(program).Succeeded())
            state.SkipWithError("the compiler failed");
    }
}
BENCHMARK(BareCompiler)->Unit(benchmark::kMillisecond)->UseRealTime();

/// An expression that is checked, compiled, loaded and installed.
void Installed(benchmark::State& state) {
    const test::ProgramFolder folder;
    vexa::Engine engine;
    for (auto _ : state) {
        vexa::CompileOutcome outcome =
            vexa::FunctionCompiler(folder.Path()).Compile(bench::kDefault);
        if (!outcome)
            state.SkipWithError("the expression failed");
        else
            engine.SetFunction(outcome.addon);
    }
}
BENCHMARK(Installed)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
