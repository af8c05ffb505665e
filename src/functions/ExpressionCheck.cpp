// SPDX-License-Identifier: GPL-3.0-or-later
#include "functions/ExpressionCheck.h"

#include "formula/ExpressionGrammar.h"

namespace vexa {

namespace {

/// Finds out which parts of an expression C computes in integers.
class CheckActions {
  public:
    struct Part {
        bool integer = false;
        /// The value of a whole number that is written out.
        std::optional<unsigned long long> written;
    };

    explicit CheckActions(Refusals& refusals) : refusals(refusals) {}

    Part Number(const Token& number) { return {number.integer, number.written}; }

    std::optional<Part> Name(const Token& word) {
        if (word.text == "x" || word.text == "y")
            return Part();
        if (const MathConstant* constant = FindMathConstant(word.text))
            return Part{constant->integer, {}};
        return std::nullopt;
    }
    const MathFunction* Function(std::string_view name) { return FindMathFunction(name); }

    void Argument(const MathFunction& function, int index, const Part& argument,
                  std::size_t position) {
        if (index == 0 && function.order &&
            argument.written.value_or(kHighestOrder + 1) > kHighestOrder)
            refusals.At(position, OrderFault(function));
    }
    Part Call(const MathFunction& function, const Token&, const std::vector<Part>&) {
        return {function.integer, {}};
    }
    Part Sign(const Token& sign, const Part& operand) {
        return {operand.integer || sign.text == "!", {}};
    }
    Part Binary(const BinaryOperator& row, const Part& left, const Part& right,
                std::size_t position) {
        const bool integers = left.integer && right.integer;
        if ((row.text == "/" || row.text == "%") && integers && right.written.value_or(0) == 0)
            refusals.At(position, "a whole number is divided by one that could be 0, which would "
                                  "end the program; write the divisor out, or cast one side to "
                                  "float");
        return {row.integer || integers, {}};
    }
    Part Choice(const Part&, const Part& ifTrue, const Part& ifFalse) {
        return {ifTrue.integer && ifFalse.integer, {}};
    }
    Part Cast(const ArithmeticType& type, const Part&) {
        return {type.kind != ArithmeticType::Kind::floating, {}};
    }
    std::string NameFault(const Token& word) { return UnknownName(word.text); }

  private:
    Refusals& refusals;
};

} // namespace

std::optional<ExpressionFault> CheckExpression(std::string_view expression) {
    Refusals refusals;
    CheckActions actions(refusals);
    ExpressionGrammar(expression, actions, refusals).Run();
    return std::move(refusals).First();
}

} // namespace vexa
