// SPDX-License-Identifier: GPL-3.0-or-later
// Compares random expressions node by node with the C compiler, and as a whole with plain
// evaluation.
//
// VEXA_FORMULA_MINUTES: runs for that many minutes, with one seed after the other.

#include "formula/ExpressionGrammar.h"
#include "formula/Formula.h"
#include "formula/FormulaActions.h"
#include "formula/NodeCompiler.h"

#include <bit>
#include <chrono>
#include <cmath>
#include <cstring>

namespace {

using vexa::formula::Graph;
using vexa::formula::IsWide;
using vexa::formula::Node;
using vexa::formula::Op;
using vexa::formula::Type;
using vexa::formula::Value;

constexpr std::size_t kPoints = 1024;
constexpr std::size_t kInputs = 2 + vexa::kMostInputs;

struct alignas(64) Lanes {
    std::array<std::byte, 8 * kPoints> bytes;

    template<class T>
    T At(std::size_t i) const {
        T value;
        std::memcpy(&value, bytes.data() + i * sizeof(T), sizeof(T));
        return value;
    }
    std::uint64_t Bits(Type type, std::size_t i) const {
        return IsWide(type) ? At<std::uint64_t>(i) : At<std::uint32_t>(i);
    }
    double Number(Type type, std::size_t i) const {
        return type == Type::Float ? double(At<float>(i)) : At<double>(i);
    }
    std::string Text(Type type, std::size_t i) const {
        std::ostringstream text;
        if (IsFloating(type))
            text << std::hexfloat << Number(type, i);
        else
            text << "0x" << std::hex << Bits(type, i);
        return text.str();
    }
};

/// The values of x, y and the other inputs at the points: mostly of usual size, some far from 0 or
/// near it, and special numbers.
struct RandomPoints {
    std::array<std::array<float, kPoints>, kInputs> values;

    explicit RandomPoints(unsigned seed) {
        std::mt19937 random(seed);
        const float special[] = {0,       -0.0F,    1,       -1,    INFINITY, -INFINITY,
                                 NAN,     1e-45F,   -1e-38F, 3e38F, -1e30F,   1e6F,
                                 0x1p31F, -0x1p31F, 0x1p63F, 0.5F,  -2.5F,    3.14159274F};
        for (auto& input : values) {
            for (float& value : input) {
                const float part = static_cast<float>(random()) * 0x1p-31F - 1;
                const unsigned kind = static_cast<unsigned>(random() % 16);
                value = kind < 10   ? 4 * part
                        : kind < 12 ? std::ldexp(part, int(random() % 40) - 20)
                        : kind < 13 ? std::ldexp(part, int(random() % 277) - 149)
                        : kind < 14 ? std::round(20 * part)
                                    : special[random() % std::size(special)];
            }
        }
    }
};

/// Returns all values of a graph at all points, computed by one loop after the other.
std::vector<Lanes> Evaluate(const Graph& graph, const RandomPoints& points) {
    const vexa::formula::FormulaLoops loops = vexa::formula::RunnableFormulaLoops().back();
    std::vector<Lanes> all(graph.Nodes().size());
    for (std::size_t n = 0; n < all.size(); n++) {
        const Node& node = graph.Nodes()[n];
        if (node.op == Op::Input) {
            std::memcpy(&all[n], points.values[std::size_t(node.a)].data(), 4 * kPoints);
        } else if (node.op == Op::Constant) {
            const std::size_t size = IsWide(node.type) ? 8 : 4;
            for (std::size_t i = 0; i < kPoints; i++)
                std::memcpy(all[n].bytes.data() + i * size, &graph.Constants()[std::size_t(node.a)],
                            size);
        } else {
            const auto at = [&](Value value) { return &all[std::size_t(std::max(value, 0))]; };
            loops.Find(node.op, node.type, vexa::formula::Constants::None)(
                at(node.a), at(node.b), at(node.c), &all[n], kPoints);
        }
    }
    return all;
}

/// Returns true if C allows only one value for a node that is not a function of long double.
bool IsExact(std::string_view name) {
    static constexpr std::string_view kExact[] = {
        "ceil",  "copysign", "fabs",      "fdim",      "floor",      "fma",       "fmax",
        "fmin",  "fmod",     "ilogb",     "ldexp",     "llrint",     "llround",   "logb",
        "lrint", "lround",   "nearbyint", "nextafter", "nexttoward", "remainder", "rint",
        "round", "scalbln",  "scalbn",    "sqrt",      "trunc"};
    const vexa::MathFunction* function = vexa::FindMathFunction(name);
    return !function || std::ranges::find(kExact, function->name) != std::end(kExact);
}

/// Returns true if a value equals that of the compiler's library, or is close enough.
bool Agrees(std::string_view pattern, Type type, double value, double expected) {
    if (value == expected || (std::isnan(value) && std::isnan(expected)))
        // C leaves open which zero fmin and fmax return.
        return std::signbit(value) == std::signbit(expected) || std::isnan(value) ||
               pattern.find("fm") != std::string_view::npos;
    const bool isLong = pattern.starts_with("(double)") && pattern.ends_with(")");
    pattern.remove_prefix(isLong ? 8 : 0);
    const std::string_view name = pattern.substr(0, pattern.find('('));
    if ((!isLong && IsExact(name)) || !std::isfinite(value) || !std::isfinite(expected))
        return false;
    const double size = std::fabs(expected), error = std::fabs(value - expected);
    const bool single = type == Type::Float;
    if (name[0] == 'j' || name[0] == 'y')
        // Float functions are no reference, as the library computes with floats.
        return error <= (single ? 1e-4 : 1e-13) * std::max(1.0, size);
    const int exponent = std::max(size == 0 ? -2000 : std::ilogb(size), single ? -126 : -1022);
    const double ulp = std::ldexp(1.0, exponent - (single ? 23 : 52));
    // The library's own gamma functions are off by up to 10 units (the glibc manual, "Known Maximum
    // Errors").
    const bool gamma = name.substr(1).starts_with("gamma");
    return error <= (gamma ? 14 : 4) * ulp || (name.starts_with("lgamma") && error <= 1e-15) ||
           (name.starts_with("tgamma") && size < 0x1p-1022);
}

/// An expression as a graph that contains each of its nodes.
struct Read {
    explicit Read(test::Tree whole) : tree(std::move(whole)) {
        vexa::Refusals refusals;
        vexa::formula::FormulaActions actions(graph, refusals);
        for (const std::string& text : tree.Texts()) {
            const auto part = vexa::ExpressionGrammar(text, actions, refusals).Run();
            if (refusals) {
                ADD_FAILURE() << text << "\n" << vexa::Text(*std::move(refusals).First());
                return;
            }
            values.push_back(part.value);
        }
        root = graph.Convert(values.back(), Type::Float);
    }

    const std::string& Text() const { return tree.Texts().back(); }
    /// The kind of node that the compiler computes; no value if the node is an input of the
    /// formula, or the time, which is the sum of two.
    std::optional<test::NodeKind> KindOf(std::size_t k) const {
        const test::TreeNode& node = tree.Nodes()[k];
        if (graph.Nodes()[std::size_t(values[k])].op == Op::Input || node.pattern == "t")
            return std::nullopt;
        test::NodeKind kind{node.pattern, node.demand, {}, graph.TypeOf(values[k])};
        for (const std::size_t operand : node.operands)
            kind.operands.push_back(graph.TypeOf(values[operand]));
        return kind;
    }

    const test::Tree tree;
    Graph graph;
    std::vector<Value> values;
    Value root = vexa::formula::kNone;
};

/// The number of values that agreed with the compiler's.
std::size_t CompareNodes(const Read& read, const std::vector<Lanes>& all,
                         const test::NodeCompiler& compiler) {
    std::size_t number = 0;
    Lanes expected;
    std::array<unsigned char, kPoints> holds;
    for (std::size_t k = 0; k < read.values.size(); k++) {
        const auto kind = read.KindOf(k);
        if (!kind)
            continue;
        std::array<const void*, 3> from{};
        for (std::size_t n = 0; n < kind->operands.size(); n++)
            from[n] = &all[std::size_t(read.values[read.tree.Nodes()[k].operands[n]])];
        compiler.Of (*kind)(from.data(), &expected, holds.data(), kPoints);
        const Lanes& is = all[std::size_t(read.values[k])];
        for (std::size_t i = 0; i < kPoints; i++) {
            if (!holds[i])
                continue;
            number++;
            const Type type = kind->result;
            if (is.Bits(type, i) == expected.Bits(type, i) ||
                (IsFloating(type) &&
                 Agrees(kind->pattern, type, is.Number(type, i), expected.Number(type, i))))
                continue;
            std::string operands;
            for (std::size_t n = 0; n < kind->operands.size(); n++)
                operands += " " + static_cast<const Lanes*>(from[n])->Text(kind->operands[n], i);
            ADD_FAILURE() << kind->pattern << " of" << operands << " is " << is.Text(type, i)
                          << " instead of " << expected.Text(type, i) << "\nin " << read.Text();
            return number;
        }
    }
    return number;
}

/// The program of every instruction set must give the same values as its single operations in
/// order.
void CompareWhole(const Read& read, const std::vector<Lanes>& all, const RandomPoints& points) {
    const Lanes& expected = all[std::size_t(read.root)];
    for (const vexa::formula::FormulaLoops& loops : vexa::formula::RunnableFormulaLoops()) {
        const auto formula = vexa::CompileFormula(read.Text(), loops).formula;
        ASSERT_TRUE(formula) << read.Text();
        std::vector<const float*> inputs;
        for (const vexa::FunctionInput& input : formula->Inputs()) {
            const auto place = std::ranges::find(read.graph.Inputs(), input);
            inputs.push_back(
                points.values[2 + std::size_t(place - read.graph.Inputs().begin())].data());
        }
        std::array<float, kPoints> is;
        formula->Evaluate(points.values[0].data(), points.values[1].data(), inputs.data(),
                          is.data(), kPoints);
        for (std::size_t i = 0; i < kPoints; i++) {
            ASSERT_TRUE(std::bit_cast<std::uint32_t>(is[i]) == expected.Bits(Type::Float, i) ||
                        (std::isnan(is[i]) && std::isnan(expected.Number(Type::Float, i))))
                << is[i] << " instead of " << expected.Number(Type::Float, i) << " by set "
                << &loops - vexa::formula::RunnableFormulaLoops().data() << "\nin " << read.Text();
        }
    }
}

/// Every function with every suffix, and others.
std::vector<std::unique_ptr<Read>> Expressions(unsigned seed, std::size_t count) {
    test::RandomTrees random(seed);
    std::vector<std::unique_ptr<Read>> all;
    const auto add = [&all](test::Tree tree) {
        all.push_back(std::make_unique<Read>(std::move(tree)));
    };
    for (const vexa::MathFunction& function : vexa::MathFunctions()) {
        for (const char* ending : {"", "f", "l"})
            add(random.CallOf(function, ending, 1 + int(seed % 3)));
    }
    for (const vexa::MathFunction& macro : vexa::MathMacros())
        add(random.CallOf(macro, "", 1));
    while (all.size() < count)
        add(random.Any(1 + int(all.size() % 6)));
    return all;
}

/// Exact operations agree bit for bit, maths functions within 4 units in the last place; values
/// that C leaves undefined are left out. A million points with each seed.
TEST(RandomFormula, IsNodeByNodeWhatTheCompilerMakesOfIt) {
    using Clock = std::chrono::steady_clock;
    const char* minutes = std::getenv("VEXA_FORMULA_MINUTES");
    const auto end = Clock::now() + std::chrono::minutes(minutes ? std::atoi(minutes) : 0);
    test::NodeCompiler compiler;
    std::size_t expressions = 0, values = 0;
    const testing::TestResult& faults =
        *testing::UnitTest::GetInstance()->current_test_info()->result();
    for (unsigned seed = 1; seed == 1 || (Clock::now() < end && faults.total_part_count() < 100);
         seed++) {
        const auto all = Expressions(seed, 1000);
        for (const auto& read : all) {
            for (std::size_t k = 0; k < read->values.size(); k++) {
                if (const auto kind = read->KindOf(k))
                    compiler.Want(*kind);
            }
        }
        ASSERT_TRUE(compiler.Compile());
        const RandomPoints points(seed);
        for (const auto& read : all) {
            const std::vector<Lanes> evaluated = Evaluate(read->graph, points);
            values += CompareNodes(*read, evaluated, compiler);
            CompareWhole(*read, evaluated, points);
        }
        expressions += all.size();
    }
    RecordProperty("expressions", std::to_string(expressions));
    RecordProperty("points", std::to_string(expressions * kPoints));
    RecordProperty("values", std::to_string(values));
    if (minutes)
        std::printf("%zu expressions, %zu points, %zu values, %zu kinds of nodes\n", expressions,
                    expressions * kPoints, values, compiler.Count());
}

} // namespace
