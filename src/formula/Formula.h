// SPDX-License-Identifier: GPL-3.0-or-later
// A formula that is computed by the program itself, without a compiler.
#pragma once

#include "formula/ExpressionFault.h"
#include "formula/Program.h"
#include "kits/support/RealtimeMark.h"
#include "synth/PlaneFunction.h"

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>
#include <utility>

namespace vexa {

/// f(x, y) as a text has it, with C's types and conversions, but that
///
/// - a long double is a double, and long has 64 bits;
/// - what C leaves undefined is defined (formula/Operations.h);
/// - the macros a to d, vel, key, t and ctl(n) may stand beside x and y; only those that do are
///   inputs.
///
/// The values are the same bits on every x86-64 and 64-bit Arm machine, NaNs being all the same,
/// and those of a block are those of its points. Maths functions are within 4 ulp of their type,
/// but for
///
/// - j0, j1, jn, y0, y1 and yn, whose error is below 1e-13 of the larger of the value and 1 /
///   sqrt(1 + |x|);
/// - lgamma left of 0, near whose zeros the error is below 1e-15;
/// - tgamma where it is subnormal, which may be 0.
class Formula final : public PlaneSource {
  public:
    Formula(formula::Program program, bool definedInC)
        : program(std::move(program)), definedInC(definedInC) {}

    /// Returns the estimated time in nanoseconds per point on this machine's instruction set.
    double Cost() const noexcept override { return program.Cost(); }
    /// Returns how many operations the formula takes for each point.
    std::size_t Length() const { return program.Length(); }
    /// True where a compiler makes the same values of the text, as nothing is computed that C
    /// leaves undefined, but for a division of whole numbers by 0 (functions/ExpressionCheck.h).
    bool IsDefinedInC() const { return definedInC; }

    VEXA_REALTIME std::span<const FunctionInput> Inputs() const noexcept override {
        return program.Inputs();
    }
    VEXA_REALTIME float At(float x, float y, const float* inputs) const noexcept override;
    VEXA_REALTIME void Evaluate(const float* x, const float* y, const float* const* inputs,
                                float* values, std::size_t count) const noexcept override;

  private:
    const formula::Program program;
    const bool definedInC;
};

/// A formula, or what is wrong with its text.
struct FormulaOutcome {
    std::shared_ptr<const Formula> formula;
    ExpressionFault fault;

    explicit operator bool() const { return formula != nullptr; }
};

/// Makes a formula of the text. Everything that CheckExpression accepts is a formula, but for what
/// needs more intermediate values at a time than there is room for. It takes time proportional to
/// the text's length, and bounded stack. Any thread that may allocate.
FormulaOutcome CompileFormula(std::string_view text);

/// Does the same, with a formula that is computed by the loops of one instruction set.
FormulaOutcome CompileFormula(std::string_view text, const formula::FormulaLoops& loops);

} // namespace vexa
