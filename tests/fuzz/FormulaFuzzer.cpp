// SPDX-License-Identifier: GPL-3.0-or-later
// Fails if a text gives neither a formula nor a fault, in bounded time and memory; if a text that
// passes the check for the compiler is not a formula; or if a block's values differ from those of
// its points.

#include "formula/Formula.h"
#include "functions/ExpressionCheck.h"
#include "fuzz/Fuzzing.h"

#include <array>
#include <cmath>
#include <cstring>

namespace {

constexpr std::size_t kPoints = 37;

bool Same(float a, float b) {
    return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8* data, std::size_t size) {
    const std::string_view text = fuzz::Text(data, size);
    const vexa::FormulaOutcome outcome = vexa::CompileFormula(text);
    if (!outcome) {
        const vexa::ExpressionFault& fault = outcome.fault;
        fuzz::Require(fault.position <= size && !fault.reason.empty(), "a fault has its place");
        const bool open = fault.reason.find("too many intermediate") != std::string::npos ||
                          fault.reason.find("whole numbers only") != std::string::npos;
        fuzz::Require(open || vexa::CheckExpression(text).has_value(),
                      "what the check admits is a formula");
        return 0;
    }
    const vexa::Formula& formula = *outcome.formula;
    fuzz::Require(formula.Cost() >= 0 && formula.Length() <= 2 * size + 4,
                  "a formula has its cost");
    std::array<float, kPoints> x, y, values;
    std::array<std::array<float, kPoints>, vexa::kMostInputs> inputs;
    std::array<const float*, vexa::kMostInputs> arrays;
    for (std::size_t i = 0; i < kPoints; i++) {
        const auto here = static_cast<float>(i);
        x[i] = i % 9 == 8 ? 1e30F : here * 0.37F - 5;
        y[i] = i % 13 == 12 ? NAN : 4 - here * 0.23F;
        for (std::size_t k = 0; k < inputs.size(); k++)
            inputs[k][i] = here / static_cast<float>(kPoints + k);
    }
    for (std::size_t k = 0; k < inputs.size(); k++)
        arrays[k] = inputs[k].data();
    formula.Evaluate(x.data(), y.data(), arrays.data(), values.data(), kPoints);
    for (std::size_t i = 0; i < kPoints; i += 6) {
        std::array<float, vexa::kMostInputs> here;
        for (std::size_t k = 0; k < inputs.size(); k++)
            here[k] = inputs[k][i];
        fuzz::Require(Same(values[i], formula.At(x[i], y[i], here.data())),
                      "a block's values are those of its points");
    }
    return 0;
}
