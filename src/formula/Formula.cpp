// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/Formula.h"

#include "formula/Advice.h"
#include "formula/ExpressionGrammar.h"
#include "formula/FormulaActions.h"

#include <algorithm>
#include <array>

namespace vexa {

float Formula::At(float x, float y, const float* values) const noexcept {
    std::array<const float*, kMostInputs> here;
    for (std::size_t k = 0; k < Inputs().size(); k++)
        here[k] = values + k;
    float value;
    Evaluate(&x, &y, here.data(), &value, 1);
    return value;
}

void Formula::Evaluate(const float* x, const float* y, const float* const* others, float* values,
                       std::size_t count) const noexcept {
    std::array<const float*, 2 + kMostInputs> all = {x, y};
    std::copy_n(others, Inputs().size(), all.begin() + 2);
    program.Run(all.data(), values, count);
}

FormulaOutcome CompileFormula(std::string_view text) {
    return CompileFormula(text, formula::RunnableFormulaLoops().back());
}

FormulaOutcome CompileFormula(std::string_view text, const formula::FormulaLoops& loops) {
    using namespace formula;
    Refusals refusals;
    Graph graph;
    FormulaActions actions(graph, refusals);
    const FormulaActions::Part whole = ExpressionGrammar(text, actions, refusals).Run();
    std::optional<Program> program;
    if (!refusals) {
        program = Program::Of(graph, graph.Convert(whole.value, Type::Float), loops);
        if (!program)
            refusals.At(0, "the formula needs too many intermediate values at a time",
                        "write it as a sum of smaller parts, one after the other");
    }
    if (std::optional<ExpressionFault> fault = std::move(refusals).First()) {
        if (fault->advice.empty())
            fault->advice = AdviceFor(text, *fault);
        return {nullptr, std::move(*fault)};
    }
    return {std::make_shared<const Formula>(std::move(*program), graph.IsDefinedInC()),
            actions.Doubt().value_or(ExpressionFault())};
}

} // namespace vexa
