// SPDX-License-Identifier: GPL-3.0-or-later
// The actions that give a formula's text its meaning: each part of it becomes a value of a Graph,
// with its type in C.
#pragma once

#include "formula/ExpressionFault.h"
#include "formula/ExpressionOperators.h"
#include "formula/ExpressionTokens.h"
#include "formula/ExpressionWords.h"
#include "formula/Graph.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vexa::formula {

/// The actions of an ExpressionGrammar. In addition to the names of the maths library a formula may
/// use the macros a to d, vel, key, t and ctl(n).
class FormulaActions {
  public:
    struct Part {
        Value value = kNone;
    };

    FormulaActions(Graph& graph, Refusals& refusals) : graph(graph), refusals(refusals) {}

    Part Number(const Token& number);
    std::optional<Part> Name(const Token& word);
    const MathFunction* Function(std::string_view name);
    void Argument(const MathFunction& function, int index, const Part& argument,
                  std::size_t position);
    Part Call(const MathFunction& function, const Token& name, const std::vector<Part>& arguments);
    Part Sign(const Token& sign, const Part& operand);
    Part Binary(const BinaryOperator& row, const Part& left, const Part& right,
                std::size_t position);
    Part Choice(const Part& condition, const Part& ifTrue, const Part& ifFalse);
    Part Cast(const ArithmeticType& type, const Part& operand);
    std::string NameFault(const Token& word);

    /// Returns what the author of the formula so far has probably not meant, if there is anything.
    std::optional<ExpressionFault> Doubt() const { return Refusals(doubts).First(); }

  private:
    /// Returns an Int that is 1 if the value is not 0, and otherwise 0.
    Value Truth(Value value);
    Part Input(const Token& word, FunctionInput input);
    Value WithRest(Value time);
    void DoubtQuotient(Type type, Value dividend, Value divisor, std::size_t position);

    Graph& graph;
    Refusals& refusals;
    Refusals doubts;
};

/// Returns the names of all inputs of a formula, including x and y.
std::vector<std::string_view> InputNames();

} // namespace vexa::formula
