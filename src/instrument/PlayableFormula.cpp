// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/PlayableFormula.h"

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
    return {std::move(outcome.formula)};
} catch (const std::bad_alloc&) {
    return {nullptr, "there is not enough memory"};
}

} // namespace vexa
