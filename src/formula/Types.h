// SPDX-License-Identifier: GPL-3.0-or-later
// The types in which a formula is computed.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vexa::formula {

/// C's arithmetic types after the integer promotions, as on 64-bit Linux: int has 32 bits, long and
/// long long have 64. A long double is treated as a double.
enum class Type : unsigned char { Int, Unsigned, Long, UnsignedLong, Float, Double };
constexpr std::size_t kTypes = 6;

constexpr bool IsFloating(Type type) {
    return type >= Type::Float;
}

constexpr bool IsWide(Type type) {
    return type == Type::Long || type == Type::UnsignedLong || type == Type::Double;
}

/// Returns the common type to which C converts two operands of these types: the later one in the
/// order of Type.
constexpr Type Common(Type a, Type b) {
    return a > b ? a : b;
}

/// The C++ type of a lane of each type in the loops.
template<Type type>
struct LaneOf;
template<>
struct LaneOf<Type::Int> {
    using T = std::int32_t;
};
template<>
struct LaneOf<Type::Unsigned> {
    using T = std::uint32_t;
};
template<>
struct LaneOf<Type::Long> {
    using T = std::int64_t;
};
template<>
struct LaneOf<Type::UnsignedLong> {
    using T = std::uint64_t;
};
template<>
struct LaneOf<Type::Float> {
    using T = float;
};
template<>
struct LaneOf<Type::Double> {
    using T = double;
};
template<Type type>
using Lane = typename LaneOf<type>::T;

} // namespace vexa::formula
