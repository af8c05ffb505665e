// SPDX-License-Identifier: GPL-3.0-or-later
// A graph is what a formula computes: its operations, each once, and what each takes.
#pragma once

#include "formula/FormulaLoops.h"
#include "formula/Operations.h"
#include "synth/PlaneFunction.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

namespace vexa::formula {

/// The number, in the graph, of the result of an operation, of a constant or of an input.
using Value = std::int32_t;
constexpr Value kNone = -1;

/// A number that is not kNone, as arrays count.
constexpr std::size_t IndexOf(Value value) {
    return static_cast<std::size_t>(value);
}

/// A node takes values that were made before it.
struct Node {
    Op op;
    /// The type of the operands, or of a constant or an input itself.
    Type type;
    /// A constant's number in a, as an input's, where x is 0, y is 1 and the formula's own follow.
    Value a = kNone, b = kNone, c = kNone;

    bool operator==(const Node&) const = default;
};

/// Grows by one operation at a time. The same operation on the same values is there once, and one
/// on constants is a constant, computed by the loop that would compute it later.
class Graph {
  public:
    Graph();

    Value Constant(Type type, std::uint64_t bits);
    Value Constant(int number);
    Value Constant(float number);
    Value Constant(double number);
    Value X() { return Insert({Op::Input, Type::Float, 0}); }
    Value Y() { return Insert({Op::Input, Type::Float, 1}); }
    /// Returns the value of an input; nothing where there are kMostInputs others already.
    std::optional<Value> Input(FunctionInput input);
    /// `type` is that of the operands, as Op tells.
    Value Apply(Op op, Type type, Value a, Value b = kNone, Value c = kNone);
    /// Converts a value of any type to any type, as C does.
    Value Convert(Value value, Type to);

    Type TypeOf(Value value) const {
        const Node& node = nodes[static_cast<std::size_t>(value)];
        return ResultOf(node.op, node.type);
    }
    /// Returns the bits of a constant, those of 32 bits in the lower half; nothing for other
    /// values.
    std::optional<std::uint64_t> Known(Value value) const;
    /// True where the value is the constant `number`, converted to its type.
    bool Is(Value value, double number) const;

    /// False where something was applied that C leaves undefined for some operands and a compiler
    /// computes in its own way: a number with a fraction made a whole one, which it may be too
    /// large for, or a shift by a count that is not known to be below the number of bits.
    bool IsDefinedInC() const { return definedInC; }

    const std::vector<Node>& Nodes() const { return nodes; }
    const std::vector<std::uint64_t>& Constants() const { return constants; }
    const std::vector<FunctionInput>& Inputs() const { return inputs; }

  private:
    struct Hash {
        std::size_t operator()(const Node& node) const;
    };

    Value Insert(const Node& node);
    std::uint64_t Compute(const Node& node) const;

    const FormulaLoops loops;
    std::vector<Node> nodes;
    std::unordered_map<Node, Value, Hash> known;
    std::vector<std::uint64_t> constants;
    std::unordered_map<std::uint64_t, Value> constantOf;
    std::vector<FunctionInput> inputs;
    bool definedInC = true;
};

} // namespace vexa::formula
