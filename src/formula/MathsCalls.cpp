// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/MathsCalls.h"

#include <algorithm>
#include <array>
#include <limits>

namespace vexa::formula {

namespace {

/// A call that is being translated.
struct Call {
    Graph& graph;
    std::span<const Value> arguments;
    /// The type of the function's arguments and result.
    Type type;

    Value Argument(std::size_t index) const { return Argument(index, type); }
    Value Argument(std::size_t index, Type as) const { return graph.Convert(arguments[index], as); }
    Value Number(double number) const { return graph.Convert(graph.Constant(number), type); }
    Value Apply(Op op, Value a, Value b = kNone, Value c = kNone) const {
        return graph.Apply(op, type, a, b, c);
    }
    Value Or(Value a, Value b) const { return graph.Apply(Op::Or, Type::Int, a, b); }
};

/// Functions whose arguments and result are of one type.
struct Direct {
    std::string_view name;
    Op op;
    /// True if loops for float exist too.
    bool floats = false;
};

constexpr auto kDirect = std::to_array<Direct>({
    {"acos", Op::Acos},
    {"acosh", Op::Acosh},
    {"asin", Op::Asin},
    {"asinh", Op::Asinh},
    {"atan", Op::Atan},
    {"atan2", Op::Atan2},
    {"atanh", Op::Atanh},
    {"cbrt", Op::Cbrt},
    {"ceil", Op::Ceiling, true},
    {"copysign", Op::CopySign, true},
    {"cos", Op::Cos},
    {"cosh", Op::Cosh},
    {"erf", Op::Erf},
    {"erfc", Op::Erfc},
    {"exp", Op::Exp},
    {"exp2", Op::Exp2},
    {"expm1", Op::Expm1},
    {"fabs", Op::Absolute, true},
    {"floor", Op::Floor, true},
    {"fma", Op::FusedMultiplyAdd, true},
    {"fmax", Op::Maximum, true},
    {"fmin", Op::Minimum, true},
    {"fmod", Op::Modulo},
    {"hypot", Op::Hypot},
    {"lgamma", Op::LGamma},
    {"log", Op::Log},
    {"log10", Op::Log10},
    {"log1p", Op::Log1p},
    {"log2", Op::Log2},
    {"logb", Op::Exponent},
    {"nearbyint", Op::RoundEven, true},
    {"remainder", Op::IeeeRemainder},
    {"rint", Op::RoundEven, true},
    {"round", Op::Round, true},
    {"sin", Op::Sin},
    {"sinh", Op::Sinh},
    {"sqrt", Op::SquareRoot, true},
    {"tan", Op::Tan},
    {"tanh", Op::Tanh},
    {"tgamma", Op::TGamma},
    {"trunc", Op::Truncate, true},
});

Value InDouble(const Call& call, Op op, Value a, Value b = kNone) {
    return call.graph.Convert(call.graph.Apply(op, Type::Double, a, b), call.type);
}

/// The exponents 2, 3 and 4 become products, which are within 2 ulp.
Value Power(const Call& call) {
    const auto widened = [&call](std::size_t index) {
        return call.graph.Convert(call.Argument(index), Type::Double);
    };
    const auto square = [&call](Value value) {
        return call.graph.Apply(Op::Multiply, Type::Double, value, value);
    };
    const Value base = widened(0);
    const Value exponent = widened(1);
    if (call.graph.Is(exponent, 2))
        return call.graph.Convert(square(base), call.type);
    if (call.graph.Is(exponent, 3))
        return InDouble(call, Op::Multiply, square(base), base);
    if (call.graph.Is(exponent, 4))
        return call.graph.Convert(square(square(base)), call.type);
    return InDouble(call, Op::Pow, base, exponent);
}

/// Returns x > y ? x - y : 0, and NaN if an argument is NaN.
Value PositiveDifference(const Call& call) {
    const Value x = call.Argument(0);
    const Value y = call.Argument(1);
    return call.Apply(Op::Select, call.Apply(Op::LessEqual, x, y), call.Number(0),
                      call.Apply(Op::Subtract, x, y));
}

Value IntegerExponent(const Call& call) {
    const Value x = call.Argument(0);
    const Value exponent =
        call.graph.Apply(Op::Exponent, Type::Double, call.graph.Convert(x, Type::Double));
    return call.graph.Apply(Op::Select, Type::Int, call.Apply(Op::NotEqual, x, x),
                            call.graph.Constant(std::numeric_limits<int>::min()),
                            call.graph.Convert(exponent, Type::Int));
}

template<Op op>
Value Bessel(const Call& call) {
    return InDouble(call, op, call.graph.Convert(call.Argument(1), Type::Double),
                    call.Argument(0, Type::Int));
}
template<Op op, int order>
Value BesselOfOrder(const Call& call) {
    return InDouble(call, op, call.graph.Convert(call.Argument(0), Type::Double),
                    call.graph.Constant(order));
}

/// The conversion of a Long exponent to Double and then to Int limits it to the range of an Int.
Value Scaled(const Call& call) {
    const Value x = call.graph.Convert(call.Argument(0), Type::Double);
    return InDouble(call, Op::Scale, x, call.Argument(1, Type::Int));
}
Value ScaledByLong(const Call& call) {
    const Value x = call.graph.Convert(call.Argument(0), Type::Double);
    const Value exponent = call.graph.Convert(call.Argument(1, Type::Long), Type::Double);
    return InDouble(call, Op::Scale, x, call.graph.Convert(exponent, Type::Int));
}

template<Op op>
Value ToLong(const Call& call) {
    return call.graph.Convert(call.Apply(op, call.Argument(0)), Type::Long);
}

Value Next(const Call& call) {
    return call.Apply(Op::NextAfter, call.Argument(0),
                      call.graph.Convert(call.Argument(1), Type::Double));
}
Value NextToward(const Call& call) {
    return call.Apply(Op::NextAfter, call.Argument(0), call.Argument(1, Type::Double));
}

Value ClassOf(const Call& call) {
    return call.Apply(Op::Classify, call.Argument(0));
}
Value IsClass(const Call& call, int number) {
    return call.graph.Apply(Op::Equal, Type::Int, ClassOf(call), call.graph.Constant(number));
}
Value IsNormal(const Call& call) {
    return IsClass(call, 4);
}
Value IsFinite(const Call& call) {
    return call.graph.Apply(Op::Less, Type::Int, call.graph.Constant(1), ClassOf(call));
}
/// Returns -1 for minus infinity, as the C library does.
Value IsInfinite(const Call& call) {
    const Value infinite = IsClass(call, 1);
    const Value negative = call.Apply(Op::SignBit, call.Argument(0));
    return call.graph.Apply(Op::Select, Type::Int, negative,
                            call.graph.Apply(Op::Negate, Type::Int, infinite), infinite);
}
Value IsNoNumber(const Call& call) {
    return call.Apply(Op::NotEqual, call.Argument(0), call.Argument(0));
}
Value SignOf(const Call& call) {
    return call.Apply(Op::SignBit, call.Argument(0));
}

template<Op op, std::size_t first>
Value Compared(const Call& call) {
    return call.Apply(op, call.Argument(first), call.Argument(1 - first));
}
Value IsLessOrGreater(const Call& call) {
    return call.Or(Compared<Op::Less, 0>(call), Compared<Op::Less, 1>(call));
}
Value IsUnordered(const Call& call) {
    return call.Or(call.Apply(Op::NotEqual, call.Argument(0), call.Argument(0)),
                   call.Apply(Op::NotEqual, call.Argument(1), call.Argument(1)));
}

struct Special {
    std::string_view name;
    Value (*translate)(const Call&);
};

constexpr auto kSpecial = std::to_array<Special>({
    {"fdim", PositiveDifference},
    {"fpclassify", ClassOf},
    {"ilogb", IntegerExponent},
    {"isfinite", IsFinite},
    {"isgreater", Compared<Op::Less, 1>},
    {"isgreaterequal", Compared<Op::LessEqual, 1>},
    {"isinf", IsInfinite},
    {"isless", Compared<Op::Less, 0>},
    {"islessequal", Compared<Op::LessEqual, 0>},
    {"islessgreater", IsLessOrGreater},
    {"isnan", IsNoNumber},
    {"isnormal", IsNormal},
    {"isunordered", IsUnordered},
    {"j0", BesselOfOrder<Op::BesselJ, 0>},
    {"j1", BesselOfOrder<Op::BesselJ, 1>},
    {"jn", Bessel<Op::BesselJ>},
    {"ldexp", Scaled},
    {"llrint", ToLong<Op::RoundEven>},
    {"llround", ToLong<Op::Round>},
    {"lrint", ToLong<Op::RoundEven>},
    {"lround", ToLong<Op::Round>},
    {"nextafter", Next},
    {"nexttoward", NextToward},
    {"pow", Power},
    {"scalbln", ScaledByLong},
    {"scalbn", Scaled},
    {"signbit", SignOf},
    {"y0", BesselOfOrder<Op::BesselY, 0>},
    {"y1", BesselOfOrder<Op::BesselY, 1>},
    {"yn", Bessel<Op::BesselY>},
});

template<class Rows>
auto Find(const Rows& rows, std::string_view name) {
    return std::find_if(rows.begin(), rows.end(),
                        [name](const auto& row) { return row.name == name; });
}

/// Returns the type in which a call computes. For a macro it is the common type of the arguments,
/// where integers count as double, as C says. gcc refuses them, or compares in the other argument's
/// type.
Type TypeOfCall(Graph& graph, const MathFunction& function, std::string_view name,
                std::span<const Value> arguments) {
    const auto macros = MathMacros();
    if (Find(macros, function.name) == macros.end())
        return name.size() > function.name.size() && name.ends_with('f') ? Type::Float
                                                                         : Type::Double;
    Type type = Type::Float;
    for (const Value argument : arguments) {
        const Type one = graph.TypeOf(argument);
        if (!IsFloating(one))
            graph.LeaveC();
        type = Common(type, IsFloating(one) ? one : Type::Double);
    }
    return type;
}

} // namespace

Value CallMaths(Graph& graph, const MathFunction& function, std::string_view name,
                std::span<const Value> arguments) {
    const Call call{graph, arguments, TypeOfCall(graph, function, name, arguments)};
    const auto special = Find(kSpecial, function.name);
    if (special != kSpecial.end())
        return special->translate(call);
    const auto direct = Find(kDirect, function.name);
    if (direct->floats)
        return call.Apply(direct->op, call.Argument(0),
                          arguments.size() > 1 ? call.Argument(1) : kNone,
                          arguments.size() > 2 ? call.Argument(2) : kNone);
    const auto widened = [&call](std::size_t index) {
        return call.graph.Convert(call.Argument(index), Type::Double);
    };
    return InDouble(call, direct->op, widened(0), arguments.size() > 1 ? widened(1) : kNone);
}

} // namespace vexa::formula
