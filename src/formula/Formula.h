// SPDX-License-Identifier: GPL-3.0-or-later
// A formula that the program computes itself, without a compiler.
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

/// The function f(x, y) that a text defines, with C's types and conversions, except that
///
/// - a long double is a double, and long has 64 bits;
/// - operations that C leaves undefined are defined (formula/Operations.h);
/// - the macros a to d, vel, key, t and ctl(n) may be used beside x and y; those that are used are
///   the inputs.
///
/// The values have the same bits on every x86-64 and 64-bit Arm machine, where all NaNs count as
/// equal. A point has the same value in a block as alone. Maths functions are within 4 ulp of their
/// type, except for
///
/// - j0, j1, jn, y0, y1 and yn, whose error is below 1e-13 of the larger of the value and 1 /
///   sqrt(1 + |x|);
/// - lgamma left of 0, whose error near a zero is below 1e-15;
/// - tgamma where the result is subnormal, which may be returned as 0.
class Formula final : public PlaneSource {
  public:
    Formula(formula::Program program, bool definedInC)
        : program(std::move(program)), definedInC(definedInC) {}

    /// Returns the estimated time in nanoseconds per point on this machine's instruction set.
    double Cost() const noexcept override { return program.Cost(); }
    /// Returns the number of operations per point.
    std::size_t Length() const { return program.Length(); }
    /// Returns true if a compiled add-on of the text has the same values, because the formula
    /// computes nothing that C leaves undefined. The exception is a division of integers by 0,
    /// which functions/ExpressionCheck.h refuses.
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

/// A formula, or the fault of its text.
struct FormulaOutcome {
    std::shared_ptr<const Formula> formula;
    /// The fault or, if there is a formula, what its author has probably not meant; then the reason
    /// is often empty.
    ExpressionFault fault;

    explicit operator bool() const { return formula != nullptr; }
};

/// Makes a formula of the text. Every expression that CheckExpression accepts is a formula, unless
/// it needs more intermediate values at a time than the workspace holds (formula/Program.h). Takes
/// time proportional to the text's length, and bounded stack. Any thread that may allocate.
FormulaOutcome CompileFormula(std::string_view text);

/// Does the same for a formula that is computed by the loops of one given instruction set.
FormulaOutcome CompileFormula(std::string_view text, const formula::FormulaLoops& loops);

} // namespace vexa
