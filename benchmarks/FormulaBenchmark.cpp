// SPDX-License-Identifier: GPL-3.0-or-later
// What does a point of the plane cost in the program's own blocks, in the compiler's add-on, and
// with the C library, near 0 and far from it, alone and as a sample of one of 20 voices ("Voice")?
// And what does each operation cost? The latter is the source of the table for estimating a
// formula's cost.
#include "Expressions.h"
#include "formula/Formula.h"
#include "support/Sounds.h"

#include <array>
#include <functional>
#include <random>
#include <string>

#include <benchmark/benchmark.h>

namespace {

constexpr std::size_t kBlock = 1280;

/// The points of 20 voices.
struct Points {
    std::array<float, kBlock> x, y, values;

    explicit Points(float centre) {
        std::mt19937 random(1);
        for (std::size_t i = 0; i < kBlock; i++) {
            x[i] = centre + static_cast<float>(random()) * 0x1p-30F - 2;
            y[i] = centre + static_cast<float>(random()) * 0x1p-30F - 2;
        }
    }
};

void Report(benchmark::State& state, std::size_t points) {
    state.counters["per_point"] =
        benchmark::Counter(double(state.iterations()) * double(points),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void Function(benchmark::State& state, const vexa::PlaneFunction& function, float centre) {
    Points points(centre);
    for (auto _ : state) {
        function.Evaluate(points.x.data(), points.y.data(), points.values.data(), kBlock);
        benchmark::DoNotOptimize(points);
    }
    Report(state, kBlock);
}

/// 20 voices that circle around their centres.
void Voices(benchmark::State& state, const vexa::PlaneFunction& function, float centre) {
    constexpr std::size_t kSamples = 64;
    vexa::Engine instrument;
    test::MakeRich(instrument);
    vexa::sound_param& p = instrument.parameters;
    p.Cx0 = p.Cx1 = p.Cx3 = p.Cy0 = p.Cy2 = 0;
    p.C0x0 = p.C0y0 = centre;
    instrument.SetFunction(function);
    for (int i = 0; i < 20; i++)
        instrument.consumer.NoteOn(0, uchar(40 + 2 * i), 100, 0);
    std::array<float, kSamples> buffer;
    for (auto _ : state) {
        instrument.renderer.Render(buffer.data(), kSamples);
        benchmark::DoNotOptimize(buffer);
    }
    Report(state, 20 * kSamples);
}

float DefaultByTheLibrary(float x, float y) {
    return (5 * (x * y * y - y * x * x) - 3 * (x - y)) /
           ((1 + x * x + y * y) * (1 + x * x + y * y));
}
float TranscendentalByTheLibrary(float x, float y) {
    return static_cast<float>(std::sin(double(3 * x)) * std::cos(double(2 * y)) +
                              std::exp(double(-x * x - y * y)));
}

/// Compiles a formula from its text to an installable function.
void Compile(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(vexa::CompileFormula(bench::kTranscendental));
}
BENCHMARK(Compile)->Unit(benchmark::kMicrosecond);

/// Measures one operation of a formula, in the lanes of its type.
void Operation(benchmark::State& state, vexa::formula::Op op, vexa::formula::Type type) {
    using namespace vexa::formula;
    constexpr std::size_t kPiece = 256;
    alignas(64) std::array<double, kPiece> a, b, c, to;
    std::mt19937 random(1);
    for (std::size_t i = 0; i < kPiece; i++) {
        const double one = random() * 0x1p-32, other = 0.1 + random() * 0x1p-32;
        a[i] =
            type == Type::Float ? std::bit_cast<double>(std::array{float(one), float(one)}) : one;
        b[i] = op == Op::Scale || op == Op::BesselJ || op == Op::BesselY
                   ? std::bit_cast<double>(std::array{3, 3})
               : type == Type::Float ? std::bit_cast<double>(std::array{float(other), float(other)})
                                     : other;
    }
    c = a;
    const Loop loop = RunnableFormulaLoops().back().Find(op, type, Constants::None);
    for (auto _ : state) {
        loop(a.data(), b.data(), c.data(), to.data(), kPiece);
        benchmark::DoNotOptimize(to);
    }
    Report(state, kPiece);
    state.counters["estimated"] = CostOf(op, type) * 1e-9;
}

[[maybe_unused]] const bool registered = [] {
    struct Terrain {
        const char* name;
        const char* expression;
        float (*library)(float, float);
    };
    for (const Terrain& terrain :
         {Terrain{"default", bench::kDefault, DefaultByTheLibrary},
          Terrain{"transcendental", bench::kTranscendental, TranscendentalByTheLibrary}}) {
        for (const auto& [place, centre] : {std::pair("near", 0.0F), std::pair("far", 1000.0F)}) {
            const std::string ending = std::string("/") + terrain.name + "/" + place;
            const vexa::FormulaOutcome outcome = vexa::CompileFormula(terrain.expression);
            const std::pair<const char*, vexa::PlaneFunction> ways[] = {
                {"Formula", outcome.formula},
                {"AddOn", bench::Compiled(terrain.expression)},
                {"Library", vexa::PlaneFunction(terrain.library)}};
            for (const auto& [way, function] : ways) {
                benchmark::RegisterBenchmark((way + ending).c_str(), Function, function, centre);
                benchmark::RegisterBenchmark(("Voice" + (way + ending)).c_str(), Voices, function,
                                             centre);
            }
        }
    }
    using vexa::formula::Op;
    for (int number = int(Op::Copy); number <= int(Op::BesselY); number++) {
        for (const auto type :
             {vexa::formula::Type::Int, vexa::formula::Type::Float, vexa::formula::Type::Double}) {
            const Op op = static_cast<Op>(number);
            const bool none = op >= vexa::formula::kFirstMaths
                                  ? type != vexa::formula::Type::Double
                                  : !vexa::formula::RunnableFormulaLoops().back().Find(
                                        op, type, vexa::formula::Constants::None);
            if (!none)
                benchmark::RegisterBenchmark(
                    ("Operation/" + std::to_string(number) + "/" + std::to_string(int(type)))
                        .c_str(),
                    Operation, op, type);
        }
    }
    return true;
}();

} // namespace
