// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/Graph.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace vexa::formula {

std::size_t Graph::Hash::operator()(const Node& node) const {
    std::uint64_t hash = static_cast<std::uint64_t>(node.op) << 8 | std::uint64_t(node.type);
    for (const Value operand : {node.a, node.b, node.c})
        hash = (hash ^ static_cast<std::uint32_t>(operand)) * 0x9e3779b97f4a7c15U;
    return hash ^ hash >> 32;
}

Graph::Graph() : loops(RunnableFormulaLoops().back()) {}

Value Graph::Insert(const Node& node) {
    const auto [place, added] = known.try_emplace(node, static_cast<Value>(nodes.size()));
    if (added)
        nodes.push_back(node);
    return place->second;
}

Value Graph::Constant(Type type, std::uint64_t bits) {
    const auto [place, added] = constantOf.try_emplace(bits, static_cast<Value>(constants.size()));
    if (added)
        constants.push_back(bits);
    return Insert({Op::Constant, type, place->second});
}

Value Graph::Constant(int number) {
    return Constant(Type::Int, static_cast<std::uint32_t>(number));
}
Value Graph::Constant(float number) {
    return Constant(Type::Float, std::bit_cast<std::uint32_t>(number));
}
Value Graph::Constant(double number) {
    return Constant(Type::Double, std::bit_cast<std::uint64_t>(number));
}

std::optional<Value> Graph::Input(FunctionInput input) {
    auto place = std::find(inputs.begin(), inputs.end(), input);
    if (place == inputs.end()) {
        const bool isNamed = input.kind != FunctionInput::Kind::TimeRest;
        if (isNamed && named == kMostNamedInputs)
            return std::nullopt;
        named += isNamed;
        inputs.push_back(input);
        place = inputs.end() - 1;
    }
    return Insert({Op::Input, Type::Float, static_cast<Value>(2 + (place - inputs.begin()))});
}

std::optional<std::uint64_t> Graph::Known(Value value) const {
    const Node& node = nodes[IndexOf(value)];
    if (node.op != Op::Constant)
        return std::nullopt;
    return constants[IndexOf(node.a)];
}

bool Graph::Is(Value value, double number) const {
    const auto bits = Known(value);
    if (!bits)
        return false;
    switch (TypeOf(value)) {
    case Type::Float:
        return std::bit_cast<float>(static_cast<std::uint32_t>(*bits)) == number;
    case Type::Double:
        return std::bit_cast<double>(*bits) == number;
    case Type::Int:
        return static_cast<std::int32_t>(*bits) == number;
    default:
        return static_cast<double>(*bits) == number;
    }
}

std::uint64_t Graph::Compute(const Node& node) const {
    alignas(64) std::array<std::byte, kLanes * sizeof(double)> operands[3], result;
    const std::array<Value, 3> values = {node.a, node.b, node.c};
    for (std::size_t k = 0; k < values.size(); k++) {
        if (values[k] == kNone)
            continue;
        const std::uint64_t bits = *Known(values[k]);
        const std::size_t size = IsWide(TypeOf(values[k])) ? 8 : 4;
        for (std::size_t i = 0; i < kLanes; i++)
            std::memcpy(operands[k].data() + i * size, &bits, size);
    }
    loops.Find(node.op, node.type, Constants::None)(operands[0].data(), operands[1].data(),
                                                    operands[2].data(), result.data(), kLanes);
    std::uint64_t bits = 0;
    std::memcpy(&bits, result.data(), IsWide(ResultOf(node.op, node.type)) ? 8 : 4);
    return bits;
}

Value Graph::Apply(Op op, Type type, Value a, Value b, Value c) {
    if (op >= Op::ToInt && op <= Op::ToUnsignedLong && IsFloating(type))
        definedInC = false;
    // A negative count is too large as well, because its high bits are set.
    if ((op == Op::ShiftLeft || op == Op::ShiftRight) &&
        Known(b).value_or(64) >= (IsWide(type) ? 64 : 32))
        definedInC = false;
    const auto isConstant = [this](Value value) { return value == kNone || Known(value); };
    if (isConstant(a) && isConstant(b) && isConstant(c))
        return Constant(ResultOf(op, type), Compute({op, type, a, b, c}));
    if (op == Op::Select) {
        if (const auto condition = Known(a))
            return *condition != 0 ? b : c;
        if (b == c)
            return b;
    }
    if ((op == Op::Multiply || op == Op::Divide) && Is(b, 1))
        return a;
    if (op == Op::Multiply && Is(a, 1))
        return b;
    if (Commutes(op) && (isConstant(a) || (!isConstant(b) && b < a)))
        std::swap(a, b);
    return Insert({op, type, a, b, c});
}

Value Graph::Convert(Value value, Type to) {
    constexpr std::array kOps = {Op::ToInt,          Op::ToUnsigned, Op::ToLong,
                                 Op::ToUnsignedLong, Op::ToFloat,    Op::ToDouble};
    const Type from = TypeOf(value);
    return from == to ? value : Apply(kOps[static_cast<std::size_t>(to)], from, value);
}

} // namespace vexa::formula
