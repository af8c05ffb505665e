// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/FormulaActions.h"

#include "formula/ExpressionLimits.h"
#include "formula/MathsCalls.h"
#include "formula/NumberValue.h"
#include "kits/support/Quoted.h"

#include <algorithm>
#include <array>
#include <bit>

namespace vexa::formula {

namespace {

struct InputName {
    std::string_view name;
    FunctionInput input;
};

constexpr auto kInputs = std::to_array<InputName>({
    {"a", {FunctionInput::Kind::Macro, 0}},
    {"b", {FunctionInput::Kind::Macro, 1}},
    {"c", {FunctionInput::Kind::Macro, 2}},
    {"d", {FunctionInput::Kind::Macro, 3}},
    {"vel", {FunctionInput::Kind::Velocity}},
    {"key", {FunctionInput::Kind::Key}},
    {"t", {FunctionInput::Kind::Time}},
});
constexpr MathFunction kController = {.name = "ctl"};
constexpr unsigned kControllers = 128;

struct Arithmetic {
    std::string_view text;
    Op op;
    /// True if the operator is not defined for floating-point numbers.
    bool integer = false;
};

/// The operators whose operands C converts to a common type.
constexpr auto kArithmetic = std::to_array<Arithmetic>({
    {"*", Op::Multiply},
    {"/", Op::Divide},
    {"%", Op::Remainder, true},
    {"+", Op::Add},
    {"-", Op::Subtract},
    {"<", Op::Less},
    {"<=", Op::LessEqual},
    {"==", Op::Equal},
    {"!=", Op::NotEqual},
    {"&", Op::And, true},
    {"^", Op::Xor, true},
    {"|", Op::Or, true},
});

} // namespace

std::vector<std::string_view> InputNames() {
    std::vector<std::string_view> names = {"x", "y", kController.name};
    for (const InputName& row : kInputs)
        names.push_back(row.name);
    return names;
}

FormulaActions::Part FormulaActions::Number(const Token& number) {
    const NumberValue value = ValueOf(number);
    return {graph.Constant(value.type, value.bits)};
}

std::optional<FormulaActions::Part> FormulaActions::Name(const Token& word) {
    if (word.text == "x")
        return Part{graph.X()};
    if (word.text == "y")
        return Part{graph.Y()};
    const auto row = std::find_if(kInputs.begin(), kInputs.end(), [&word](const InputName& input) {
        return input.name == word.text;
    });
    if (row != kInputs.end())
        return Input(word, row->input);
    if (FindMathConstant(word.text)) {
        const NumberValue value = ConstantValue(word.text);
        return Part{graph.Constant(value.type, value.bits)};
    }
    return std::nullopt;
}

FormulaActions::Part FormulaActions::Input(const Token& word, FunctionInput input) {
    const std::optional<Value> value = graph.Input(input);
    if (value && input.kind == FunctionInput::Kind::Time)
        return {WithRest(*value)};
    if (value)
        return {*value};
    refusals.At(word.position, "a formula may use " + std::to_string(kMostNamedInputs) +
                                   " different macros, controllers and values of the note at most");
    return {};
}

/// Returns the time as a double. As a float it would move in audible steps after a minute: at a
/// frequency of 100 Hz with an error of 0.2 %.
Value FormulaActions::WithRest(Value time) {
    const Value rest = *graph.Input({FunctionInput::Kind::TimeRest});
    return graph.Apply(Op::Add, Type::Double, graph.Convert(time, Type::Double),
                       graph.Convert(rest, Type::Double));
}

const MathFunction* FormulaActions::Function(std::string_view name) {
    return name == kController.name ? &kController : FindMathFunction(name);
}

void FormulaActions::Argument(const MathFunction& function, int index, const Part& argument,
                              std::size_t position) {
    const bool controller = &function == &kController;
    if (index > 0 || (!function.order && !controller))
        return;
    // A negative number is too large as well, because its high bits are set.
    const auto number = graph.Known(argument.value);
    const bool whole = number && !IsFloating(graph.TypeOf(argument.value));
    if (controller && (!whole || *number >= kControllers))
        refusals.At(position, "the number of a controller must be a whole number from 0 to 127, "
                              "written out");
    if (function.order && (!whole || *number > kHighestOrder))
        refusals.At(position, OrderFault(function));
}

FormulaActions::Part FormulaActions::Call(const MathFunction& function, const Token& name,
                                          const std::vector<Part>& arguments) {
    if (&function == &kController) {
        const auto number = static_cast<unsigned char>(*graph.Known(arguments[0].value));
        return Input(name, {FunctionInput::Kind::Controller, number});
    }
    std::vector<Value> values;
    values.reserve(arguments.size());
    for (const Part& argument : arguments)
        values.push_back(argument.value);
    return {CallMaths(graph, function, name.text, values)};
}

Value FormulaActions::Truth(Value value) {
    const Type type = graph.TypeOf(value);
    const Op op = graph.Nodes()[static_cast<std::size_t>(value)].op;
    if (op == Op::Less || op == Op::LessEqual || op == Op::Equal || op == Op::NotEqual)
        return value;
    return graph.Apply(Op::NotEqual, type, value, graph.Convert(graph.Constant(0), type));
}

FormulaActions::Part FormulaActions::Sign(const Token& sign, const Part& operand) {
    const Type type = graph.TypeOf(operand.value);
    switch (sign.text[0]) {
    case '-':
        return {graph.Apply(Op::Negate, type, operand.value)};
    case '!':
        return {
            graph.Apply(Op::Equal, type, operand.value, graph.Convert(graph.Constant(0), type))};
    case '~':
        if (IsFloating(type)) {
            refusals.At(sign.position, "\"~\" inverts the bits of whole numbers only",
                        "for the opposite write -, and for \"not\" write !");
            return {};
        }
        return {graph.Apply(Op::Not, type, operand.value)};
    default:
        return operand;
    }
}

FormulaActions::Part FormulaActions::Binary(const BinaryOperator& row, const Part& left,
                                            const Part& right, std::size_t position) {
    if (row.text == "&&" || row.text == "||")
        return {graph.Apply(row.text == "&&" ? Op::And : Op::Or, Type::Int, Truth(left.value),
                            Truth(right.value))};
    const Type common = Common(graph.TypeOf(left.value), graph.TypeOf(right.value));
    const bool shift = row.text == "<<" || row.text == ">>";
    const bool swapped = row.text == ">" || row.text == ">=";
    const std::string_view direct = row.text == ">" ? "<" : row.text == ">=" ? "<=" : row.text;
    const auto found =
        std::find_if(kArithmetic.begin(), kArithmetic.end(),
                     [direct](const Arithmetic& candidate) { return candidate.text == direct; });
    if (IsFloating(common) && (shift || found->integer)) {
        std::string advice;
        if (row.text == "^")
            advice = "for a power write pow(x, 2)";
        else if (row.text == "%")
            advice = "for the remainder of numbers with a fraction write fmod(x, 2)";
        else if (row.text == "|")
            advice = "for a magnitude write fabs(x), and for \"or\" write ||";
        else if (row.text == "&")
            advice = "for \"and\" write &&";
        refusals.At(position, kits::Quoted(row.text) + " is for whole numbers only", advice);
        return {};
    }
    if (shift) {
        const Value count = graph.Convert(right.value, Type::Int);
        const Op op = row.text == "<<" ? Op::ShiftLeft : Op::ShiftRight;
        return {graph.Apply(op, graph.TypeOf(left.value), left.value, count)};
    }
    const Value a = graph.Convert(left.value, common);
    const Value b = graph.Convert(right.value, common);
    if (found->op == Op::Divide)
        DoubtQuotient(common, a, b, position);
    return {graph.Apply(found->op, common, swapped ? b : a, swapped ? a : b)};
}

/// Doubts a division of constants if it drops a fraction.
void FormulaActions::DoubtQuotient(Type type, Value dividend, Value divisor, std::size_t position) {
    const auto whole = [&](Value value) -> std::int64_t {
        const std::uint64_t bits = graph.Known(value).value_or(0);
        return type == Type::Int        ? static_cast<std::int32_t>(bits)
               : type == Type::Unsigned ? static_cast<std::uint32_t>(bits)
                                        : static_cast<std::int64_t>(bits);
    };
    const std::int64_t over = whole(dividend), under = whole(divisor);
    // The least number cannot be divided by -1.
    if (IsFloating(type) || under == 0 || under == -1 || over % under == 0)
        return;
    const std::string above = std::to_string(over), below = std::to_string(under);
    doubts.At(position,
              above + "/" + below + " is " + std::to_string(over / under) +
                  ", because whole numbers divide to a whole number",
              "write " + above + ".0/" + below);
}

FormulaActions::Part FormulaActions::Choice(const Part& condition, const Part& ifTrue,
                                            const Part& ifFalse) {
    const Type common = Common(graph.TypeOf(ifTrue.value), graph.TypeOf(ifFalse.value));
    return {graph.Apply(Op::Select, common, Truth(condition.value),
                        graph.Convert(ifTrue.value, common), graph.Convert(ifFalse.value, common))};
}

FormulaActions::Part FormulaActions::Cast(const ArithmeticType& type, const Part& operand) {
    using Kind = ArithmeticType::Kind;
    if (type.kind == Kind::boolean)
        return {Truth(operand.value)};
    if (type.kind == Kind::floating)
        return {graph.Convert(operand.value, type.bits == 32 ? Type::Float : Type::Double)};
    if (type.bits == 64)
        return {graph.Convert(operand.value, type.isSigned ? Type::Long : Type::UnsignedLong)};
    if (type.bits == 32)
        return {graph.Convert(operand.value, type.isSigned ? Type::Int : Type::Unsigned)};
    const Value whole = graph.Convert(operand.value, Type::Int);
    const Op op = type.bits == 8 ? (type.isSigned ? Op::ToSignedChar : Op::ToUnsignedChar)
                                 : (type.isSigned ? Op::ToShort : Op::ToUnsignedShort);
    return {graph.Apply(op, Type::Int, whole)};
}

std::string FormulaActions::NameFault(const Token& word) {
    return kits::Quoted(word.text) +
           " is neither x or y, a, b, c, d, vel, key, t or ctl(n), nor a function or constant of "
           "the maths library that takes and gives numbers";
}

} // namespace vexa::formula
