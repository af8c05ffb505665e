// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/PlayableFormula.h"

#include "functions/ExpressionCheck.h"
#include "functions/FunctionCost.h"

#include <new>
#include <utility>

namespace vexa {

PlayableFormula ReadPlayable(std::string_view text) try {
    FormulaOutcome outcome = CompileFormula(text);
    if (!outcome)
        return {nullptr, Text(outcome.fault), outcome.fault.position};
    if (auto tooCostly = TooCostly(outcome.formula->Cost()))
        return {nullptr, *std::move(tooCostly)};
    if (outcome.fault.reason.empty())
        return {std::move(outcome.formula)};
    return {std::move(outcome.formula), Text(outcome.fault), outcome.fault.position};
} catch (const std::bad_alloc&) {
    return {nullptr, "there is not enough memory"};
}

std::string WhyNoAddon(const Formula& formula, std::string_view text) {
    if (!formula.Inputs().empty())
        return "it uses more than x and y";
    return formula.IsDefinedInC() && !CheckExpression(text) ? ""
                                                            : "C does not define all of its values";
}

std::string WhyNoAddon(const Function& function) {
    switch (function.kind) {
    case FunctionKind::Sample:
        return "it is a sample";
    case FunctionKind::Picture:
        return "it is a picture";
    case FunctionKind::Expression:
        break;
    }
    const PlayableFormula read = ReadPlayable(function.expression);
    return read.formula ? WhyNoAddon(*read.formula, function.expression) : "";
}

} // namespace vexa
