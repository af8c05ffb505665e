// SPDX-License-Identifier: GPL-3.0-or-later
// PlainLoops for the instruction set that this file is compiled for.
//
// No function of the standard library's templates is used here: an instance that uses wide vectors
// could be linked into code that runs on any machine.
#include "formula/FormulaLoops.h"
#include "formula/loops/Arithmetic.h"
#include "formula/loops/Quotient.h"

namespace vexa::formula {

extern const PlainLoops VEXA_LOOPS_TABLE;

namespace {

template<class R, class A, R (*f)(A)>
void OfOne(const void* a, const void*, const void*, void* to, std::size_t count) {
    const A* __restrict const x = static_cast<const A*>(a);
    R* __restrict const values = static_cast<R*>(to);
    for (std::size_t i = 0; i < (count & ~(kLanes - 1)); i++)
        values[i] = f(x[i]);
}

/// Fills all lanes with one number.
template<class T>
void Spread(const void* a, const void*, const void*, void* to, std::size_t count) {
    const T number = *static_cast<const T*>(a);
    T* __restrict const values = static_cast<T*>(to);
    for (std::size_t i = 0; i < (count & ~(kLanes - 1)); i++)
        values[i] = number;
}

template<class R, class A, class B, R (*f)(A, B), Constants constants>
void OfTwo(const void* a, const void* b, const void*, void* to, std::size_t count) {
    const A* __restrict const x = static_cast<const A*>(a);
    const B* __restrict const y = static_cast<const B*>(b);
    R* __restrict const values = static_cast<R*>(to);
    const A first = x[0];
    const B second = y[0];
    for (std::size_t i = 0; i < (count & ~(kLanes - 1)); i++)
        values[i] = f(constants == Constants::First ? first : x[i],
                      constants == Constants::Second ? second : y[i]);
}

template<class R, class A, class B, class C, R (*f)(A, B, C), Constants constants = Constants::None>
void OfThree(const void* a, const void* b, const void* c, void* to, std::size_t count) {
    const A* __restrict const x = static_cast<const A*>(a);
    const B* __restrict const y = static_cast<const B*>(b);
    const C* __restrict const z = static_cast<const C*>(c);
    R* __restrict const values = static_cast<R*>(to);
    const B second = y[0];
    const C third = z[0];
    for (std::size_t i = 0; i < (count & ~(kLanes - 1)); i++)
        values[i] = f(x[i], constants == Constants::Second ? second : y[i],
                      constants == Constants::Third ? third : z[i]);
}

/// Fills in the loops of all operations for one type of lanes.
template<Type type>
struct Column {
    using T = Lane<type>;

    PlainLoops& table;

    constexpr Loop* Row(Op op) const {
        return table.loops[static_cast<std::size_t>(op)][static_cast<std::size_t>(type)];
    }
    template<class R, R (*f)(T)>
    constexpr void One(Op op) const {
        Row(op)[0] = OfOne<R, T, f>;
    }
    template<class R, class B, R (*f)(T, B)>
    constexpr void Two(Op op) const {
        Row(op)[0] = OfTwo<R, T, B, f, Constants::None>;
        Row(op)[1] = OfTwo<R, T, B, f, Constants::First>;
        Row(op)[2] = OfTwo<R, T, B, f, Constants::Second>;
    }

    template<class R, R (*f)(T, T, T)>
    constexpr void Three(Op op) const {
        Row(op)[0] = OfThree<R, T, T, T, f>;
        Row(op)[2] = OfThree<R, T, T, T, f, Constants::Second>;
        Row(op)[3] = OfThree<R, T, T, T, f, Constants::Third>;
    }

    constexpr void FillAny() const {
        One<T, Copied<T>>(Op::Copy);
        Row(Op::Copy)[1] = Spread<T>;
        Two<T, T, Added<T>>(Op::Add);
        Two<T, T, Subtracted<T>>(Op::Subtract);
        Two<T, T, Multiplied<T>>(Op::Multiply);
        Two<T, T, Divided<T>>(Op::Divide);
        One<T, Negated<T>>(Op::Negate);
        Two<int, T, LessThan<T>>(Op::Less);
        Two<int, T, AtMost<T>>(Op::LessEqual);
        Two<int, T, Same<T>>(Op::Equal);
        Two<int, T, Different<T>>(Op::NotEqual);
        Row(Op::Select)[0] = OfThree<T, int, T, T, Selected<T>>;
        One<std::int32_t, Converted<std::int32_t, T>>(Op::ToInt);
        One<std::uint32_t, Converted<std::uint32_t, T>>(Op::ToUnsigned);
        One<std::int64_t, Converted<std::int64_t, T>>(Op::ToLong);
        One<std::uint64_t, Converted<std::uint64_t, T>>(Op::ToUnsignedLong);
        One<float, Converted<float, T>>(Op::ToFloat);
        One<double, Converted<double, T>>(Op::ToDouble);
    }
    constexpr void FillInteger() const {
        Two<T, T, RemainderOf<T>>(Op::Remainder);
        Two<T, T, Both<T>>(Op::And);
        Two<T, T, Either<T>>(Op::Or);
        Two<T, T, OneOf<T>>(Op::Xor);
        One<T, Inverted<T>>(Op::Not);
        Two<T, int, ShiftedLeft<T>>(Op::ShiftLeft);
        Two<T, int, ShiftedRight<T>>(Op::ShiftRight);
    }
    constexpr void FillFloating() const {
        One<T, Magnitude<T>>(Op::Absolute);
        Two<T, T, WithSign<T>>(Op::CopySign);
        One<T, FloorOf<T>>(Op::Floor);
        One<T, CeilingOf<T>>(Op::Ceiling);
        One<T, Truncated<T>>(Op::Truncate);
        One<T, Rounded<T>>(Op::Round);
        One<T, RoundedEven<T>>(Op::RoundEven);
        One<T, Root<T>>(Op::SquareRoot);
        Two<T, T, Larger<T>>(Op::Maximum);
        Two<T, T, Smaller<T>>(Op::Minimum);
        Row(Op::FusedMultiplyAdd)[0] = OfThree<T, T, T, T, Fused<T>>;
        Three<T, ProductAndSumOf<T>>(Op::ProductAndSum);
        Three<T, ProductLessOf<T>>(Op::ProductLess);
        Three<T, NegativeLessOf<T>>(Op::NegativeLess);
        Three<T, LessProductOf<T>>(Op::LessProduct);
        Three<T, ProductOfThreeOf<T>>(Op::ProductOfThree);
        Two<T, double, Next>(Op::NextAfter);
        One<int, ClassOf<T>>(Op::Classify);
        One<int, SignOf<T>>(Op::SignBit);
    }
};

constexpr PlainLoops Filled() {
    PlainLoops table{};
    const Column<Type::Int> ints{table};
    ints.FillAny();
    ints.FillInteger();
    ints.One<int, Narrowed<signed char>>(Op::ToSignedChar);
    ints.One<int, Narrowed<unsigned char>>(Op::ToUnsignedChar);
    ints.One<int, Narrowed<short>>(Op::ToShort);
    ints.One<int, Narrowed<unsigned short>>(Op::ToUnsignedShort);
    const Column<Type::Unsigned> unsigneds{table};
    unsigneds.FillAny();
    unsigneds.FillInteger();
    const Column<Type::Long> longs{table};
    longs.FillAny();
    longs.FillInteger();
    const Column<Type::UnsignedLong> unsignedLongs{table};
    unsignedLongs.FillAny();
    unsignedLongs.FillInteger();
    const Column<Type::Float> floats{table};
    floats.FillAny();
    floats.FillFloating();
    floats.Row(Op::QuotientAsFloat)[static_cast<std::size_t>(Constants::Third)] = QuotientAsFloat;
    const Column<Type::Double> doubles{table};
    doubles.FillAny();
    doubles.FillFloating();
    doubles.Three<float, SumAsFloatOf>(Op::SumAsFloat);
    doubles.Two<double, double, IeeeRemainderOf>(Op::IeeeRemainder);
    doubles.Two<double, int, Scaled>(Op::Scale);
    doubles.One<double, ExponentOf>(Op::Exponent);
    return table;
}

} // namespace

constinit const PlainLoops VEXA_LOOPS_TABLE = Filled();

} // namespace vexa::formula
