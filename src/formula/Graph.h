// SPDX-License-Identifier: GPL-3.0-or-later
// A graph holds the operations of a formula, each of them once, and their operands.
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

/// The index, in the graph, of the node of a constant, an input or an operation's result.
using Value = std::int32_t;
constexpr Value kNone = -1;

/// Returns a value other than kNone as an array index.
constexpr std::size_t IndexOf(Value value) {
    return static_cast<std::size_t>(value);
}

/// A constant, an input or an operation. Its operands are earlier nodes of the graph.
struct Node {
    Op op;
    /// The type of the operands; for a constant or an input, its own type.
    Type type;
    /// The operands. For a constant, `a` is its index in Constants(). For an input, `a` is 0 for x,
    /// 1 for y and 2 + the index in Inputs() for the others.
    Value a = kNone, b = kNone, c = kNone;

    bool operator==(const Node&) const = default;
};

/// A graph grows by one operation at a time. Applying an operation to the same values again returns
/// the existing node. An operation on constants becomes a constant, computed by the loop that would
/// otherwise compute it later.
class Graph {
  public:
    Graph();

    Value Constant(Type type, std::uint64_t bits);
    Value Constant(int number);
    Value Constant(float number);
    Value Constant(double number);
    Value X() { return Insert({Op::Input, Type::Float, 0}); }
    Value Y() { return Insert({Op::Input, Type::Float, 1}); }
    /// Returns the value of an input; nothing if the graph has kMostNamedInputs others already,
    /// TimeRest not counted.
    std::optional<Value> Input(FunctionInput input);
    /// Returns the value of an operation. `type` is the type of the operands, as Op defines it.
    Value Apply(Op op, Type type, Value a, Value b = kNone, Value c = kNone);
    /// Converts a value of any type to any type, as C does.
    Value Convert(Value value, Type to);

    Type TypeOf(Value value) const {
        const Node& node = nodes[static_cast<std::size_t>(value)];
        return ResultOf(node.op, node.type);
    }
    /// Returns the bits of a constant, where 32-bit types use the lower half; nothing for other
    /// values.
    std::optional<std::uint64_t> Known(Value value) const;
    /// Returns true if the value is a constant that equals `number`.
    bool Is(Value value, double number) const;

    /// Returns false if an operation was applied that C leaves undefined for some operands, so that
    /// a compiler may compute it otherwise: the conversion of a floating-point number to an
    /// integer, which may be out of range, or a shift by a count that is not known to be below the
    /// number of bits.
    bool IsDefinedInC() const { return definedInC; }
    /// Says that the formula uses something else that compilers treat in different ways.
    void LeaveC() { definedInC = false; }

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
    /// The number of inputs other than TimeRest.
    std::size_t named = 0;
    bool definedInC = true;
};

} // namespace vexa::formula
