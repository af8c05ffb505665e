// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/Program.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace vexa::formula {

namespace {

constexpr std::size_t kLongestPiece = 640;

} // namespace

/// Translates a graph into instructions on registers. A register holds one value for all points of
/// a piece.
class Program::Writer {
  public:
    Writer(const Graph& graph, Value root, const FormulaLoops& loops)
        : graph(graph),
          root(root),
          loops(loops),
          nodes(graph.Nodes()),
          lastUse(nodes.size(), kNone),
          inputOf(2 + graph.Inputs().size()),
          registerOf(nodes.size()) {
        JoinConversions();
        JoinQuotients();
        JoinProducts();
        FindUses();
        FindInputs();
    }

    std::optional<Program> Write() {
        for (Value value = 0; value < root; value++) {
            if (lastUse[IndexOf(value)] != kNone)
                Translate(value);
        }
        WriteRoot();
        const std::size_t room = kWorkspace / (std::max<std::size_t>(registers, 1) * 8);
        program.piece = std::min(room, kLongestPiece) / kLanes * kLanes;
        if (program.piece == 0)
            return std::nullopt;
        for (Instruction& instruction : program.instructions) {
            for (Place* place : {&instruction.to, &instruction.a, &instruction.b, &instruction.c}) {
                if (place->base == kWork)
                    place->offset *= static_cast<std::uint32_t>(program.piece * 8);
            }
        }
        program.constants = graph.Constants();
        return std::move(program);
    }

  private:
    const Node& At(Value value) const { return nodes[IndexOf(value)]; }

    static std::array<Value, 3> OperandsOf(const Node& node) {
        if (node.op == Op::Constant || node.op == Op::Input)
            return {kNone, kNone, kNone};
        return {node.a, node.b, node.c};
    }

    bool IsConstant(Value value) const { return At(value).op == Op::Constant; }

    /// Counts the uses of each node that the root needs.
    std::vector<std::uint32_t> CountUses() const {
        std::vector<std::uint32_t> uses(nodes.size());
        uses[IndexOf(root)] = 1;
        for (Value value = root; value >= 0; value--) {
            if (uses[IndexOf(value)] == 0)
                continue;
            for (const Value operand : OperandsOf(At(value))) {
                if (operand != kNone)
                    uses[IndexOf(operand)]++;
            }
        }
        return uses;
    }

    /// Lets a maths function of a Float that is converted to Double read the Float itself, if such
    /// a loop exists.
    void JoinConversions() {
        for (Value value = 0; value <= root; value++) {
            Node& node = nodes[IndexOf(value)];
            if (node.op < kFirstMaths || !loops.Find(node.op, Type::Float, Constants::None))
                continue;
            const Node& inner = At(node.a);
            if (inner.op == Op::ToDouble && inner.type == Type::Float)
                node = {node.op, Type::Float, inner.a};
        }
    }

    /// Joins (c a) / b of Floats a and b, converted to Double, with a constant c and the result
    /// converted to Float, into one operation.
    void JoinQuotients() {
        const std::vector<std::uint32_t> uses = CountUses();
        const auto isFloat = [](const Node& node) {
            return node.op == Op::ToDouble && node.type == Type::Float;
        };
        for (Value value = 0; value <= root; value++) {
            Node& node = nodes[IndexOf(value)];
            if (node.op != Op::ToFloat || uses[IndexOf(value)] == 0 || uses[IndexOf(node.a)] != 1)
                continue;
            const Node& quotient = At(node.a);
            if (quotient.op != Op::Divide || quotient.type != Type::Double)
                continue;
            const Node &above = At(quotient.a), &below = At(quotient.b);
            if (above.op == Op::Multiply && IsConstant(above.b) && isFloat(At(above.a)) &&
                isFloat(below))
                node = {Op::QuotientAsFloat, Type::Float, At(above.a).a, below.a, above.b};
        }
    }

    /// Joins a product with the only sum, difference or product that uses it, and a joined sum of
    /// Doubles with its conversion to Float at the root.
    void JoinProducts() {
        const std::vector<std::uint32_t> uses = CountUses();
        for (Value value = 0; value <= root; value++) {
            Node& node = nodes[IndexOf(value)];
            const bool sum = node.op == Op::Add, product = node.op == Op::Multiply;
            if (!IsFloating(node.type) || !(sum || product || node.op == Op::Subtract))
                continue;
            const auto joins = [&](Value one, Value other) {
                const Node& inner = At(one);
                return uses[IndexOf(one)] == 1 && inner.op == Op::Multiply &&
                       !(IsConstant(inner.b) && IsConstant(other));
            };
            const bool first = joins(node.a, node.b);
            if (!first && !joins(node.b, node.a))
                continue;
            Node inner = At(first ? node.a : node.b);
            const Value other = first ? node.b : node.a;
            Op op = sum       ? Op::ProductAndSum
                    : product ? Op::ProductOfThree
                    : first   ? Op::ProductLess
                              : Op::LessProduct;
            // (-a) b has the same bits as -(a b).
            for (Value* factor : {&inner.a, &inner.b}) {
                if (op == Op::ProductLess && At(*factor).op == Op::Negate) {
                    op = Op::NegativeLess;
                    *factor = At(*factor).a;
                }
            }
            node = {op, node.type, inner.a, inner.b, other};
        }
        Node& last = nodes[IndexOf(root)];
        if (last.op != Op::ToFloat || uses[IndexOf(last.a)] != 1)
            return;
        if (Node sum = At(last.a); sum.op == Op::ProductAndSum && sum.type == Type::Double) {
            sum.op = Op::SumAsFloat;
            last = sum;
        }
    }

    void FindUses() {
        lastUse[IndexOf(root)] = root;
        for (Value value = root; value >= 0; value--) {
            if (lastUse[IndexOf(value)] == kNone)
                continue;
            for (const Value operand : OperandsOf(At(value))) {
                if (operand != kNone && lastUse[IndexOf(operand)] == kNone)
                    lastUse[IndexOf(operand)] = value;
            }
        }
    }

    void FindInputs() {
        inputOf[1] = 1;
        for (Value value = 0; value <= root; value++) {
            const Node& node = At(value);
            if (node.op != Op::Input || node.a < 2 || lastUse[IndexOf(value)] == kNone)
                continue;
            inputOf[IndexOf(node.a)] = static_cast<std::uint32_t>(2 + program.inputs.size());
            program.inputs.push_back(graph.Inputs()[IndexOf(node.a) - 2]);
        }
    }

    std::uint32_t Take() {
        if (free.empty())
            return registers++;
        const std::uint32_t taken = free.back();
        free.pop_back();
        return taken;
    }

    Place PlaceOf(Value value) const {
        const Node& node = At(value);
        if (node.op == Op::Constant)
            return {kConstant, static_cast<std::uint32_t>(node.a) * 8};
        if (node.op == Op::Input)
            return {kInput + inputOf[IndexOf(node.a)], 0};
        return {kWork, registerOf[IndexOf(value)]};
    }

    void Emit(Op op, Type type, Constants constants, const Place& to,
              const std::array<Place, 3>& from) {
        program.instructions.push_back(
            {loops.Find(op, type, constants), to, from[0], from[1], from[2]});
        program.cost += CostOf(op, type);
    }

    /// Returns a register that is filled with a constant.
    Place Spread(Value value) {
        const Type type = At(value).type;
        const Place zero = PlaceOf(value);
        const Place to{kWork, Take()};
        spread.push_back(to.offset);
        // In this form Copy fills `to` with the number at its first operand.
        Emit(Op::Copy, type, Constants::First, to, {zero, zero, zero});
        return to;
    }

    void Translate(Value value, const Place* result = nullptr) {
        const Node& node = At(value);
        if (node.op == Op::Constant || node.op == Op::Input)
            return;
        const std::array<Value, 3> operands = OperandsOf(node);
        std::array<Place, 3> from;
        Constants constants = Constants::None;
        for (std::size_t k = 0; k < operands.size(); k++) {
            if (operands[k] == kNone)
                continue;
            const bool constant = IsConstant(operands[k]);
            if (constant && TakesConstants(node.op)) {
                constants = static_cast<Constants>(k + 1);
                from[k] = PlaceOf(operands[k]);
            } else {
                from[k] = constant ? Spread(operands[k]) : PlaceOf(operands[k]);
            }
        }
        Place to;
        if (result) {
            to = *result;
        } else {
            registerOf[IndexOf(value)] = Take();
            to = PlaceOf(value);
        }
        // An operand that the operation does not take still points at readable memory.
        for (std::size_t k = 1; k < from.size(); k++) {
            if (operands[k] == kNone)
                from[k] = from[0];
        }
        Emit(node.op, node.type, constants, to, from);
        for (std::size_t k = 0; k < operands.size(); k++) {
            const bool again = std::find(operands.begin(), operands.begin() + k, operands[k]) !=
                               operands.begin() + k;
            if (operands[k] != kNone && !again && lastUse[IndexOf(operands[k])] == value &&
                At(operands[k]).op != Op::Constant && At(operands[k]).op != Op::Input)
                free.push_back(registerOf[IndexOf(operands[k])]);
        }
        free.insert(free.end(), spread.begin(), spread.end());
        spread.clear();
    }

    void WriteRoot() {
        const Place result{kResult, 0};
        const Place from = PlaceOfRoot();
        if (IsConstant(root))
            Emit(Op::Copy, Type::Float, Constants::First, result, {from, from, from});
        else if (At(root).op == Op::Input)
            Emit(Op::Copy, Type::Float, Constants::None, result, {from, from, from});
        else
            Translate(root, &result);
    }
    Place PlaceOfRoot() const {
        const bool leaf = At(root).op == Op::Constant || At(root).op == Op::Input;
        return leaf ? PlaceOf(root) : Place{};
    }

    const Graph& graph;
    const Value root;
    const FormulaLoops& loops;
    Program program;
    std::vector<Node> nodes;
    /// The last node that uses each value; kNone if none does.
    std::vector<Value> lastUse;
    /// The index in the program of each input of the graph.
    std::vector<std::uint32_t> inputOf;
    std::vector<std::uint32_t> registerOf;
    /// The free registers, and those that hold a constant for the current instruction only.
    std::vector<std::uint32_t> free, spread;
    std::uint32_t registers = 0;
};

std::optional<Program> Program::Of(const Graph& graph, Value root, const FormulaLoops& loops) {
    return Writer(graph, root, loops).Write();
}

void Program::RunPiece(void* const* bases, std::size_t count) const noexcept {
    const auto at = [bases](const Place& place) -> void* {
        return static_cast<std::byte*>(bases[place.base]) + place.offset;
    };
    for (const Instruction& instruction : instructions)
        instruction.loop(at(instruction.a), at(instruction.b), at(instruction.c),
                         at(instruction.to), count);
}

void Program::Run(const float* const* from, float* values, std::size_t count) const noexcept {
    alignas(64) std::byte work[kWorkspace];
    std::array<void*, kBases> bases;
    bases[kWork] = work;
    // The loops only read their operands.
    bases[kConstant] = const_cast<std::uint64_t*>(constants.data());
    const std::size_t number = 2 + inputs.size();
    std::size_t done = 0;
    while (count - done >= kLanes) {
        const std::size_t some = std::min(piece, (count - done) / kLanes * kLanes);
        for (std::size_t k = 0; k < number; k++)
            bases[kInput + k] = const_cast<float*>(from[k] + done);
        bases[kResult] = values + done;
        RunPiece(bases.data(), some);
        done += some;
    }
    if (done == count)
        return;
    // The remaining points are computed in a whole group, filled up with zeros.
    alignas(64) float rest[2 + kMostInputs][kLanes];
    alignas(64) float result[kLanes];
    for (std::size_t k = 0; k < number; k++) {
        std::fill_n(rest[k], kLanes, 0.0F);
        std::memcpy(rest[k], from[k] + done, (count - done) * sizeof(float));
        bases[kInput + k] = rest[k];
    }
    bases[kResult] = result;
    RunPiece(bases.data(), kLanes);
    std::memcpy(values + done, result, (count - done) * sizeof(float));
}

} // namespace vexa::formula
