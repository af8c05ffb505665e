// SPDX-License-Identifier: GPL-3.0-or-later
// MathsLoops for the instruction set that this file is compiled for.
//
// No function of the standard library's templates is used here: an instance that uses wide vectors
// could be linked into code that runs on any machine.
#include "formula/FormulaLoops.h"
#include "formula/loops/Bessel.h"
#include "formula/loops/Functions.h"
#include "kits/maths/VectorMaths.h"

#define JOINED(set) k##set##VectorMaths
#define MATHS_OF(set) JOINED(set)
#define MATHS MATHS_OF(VEXA_LOOPS_SET)

namespace kits {
extern const VectorMaths MATHS;
}

namespace vexa::formula {

extern const MathsLoops VEXA_LOOPS_TABLE;

namespace {

using kits::VectorMaths;

const double* Numbers(const void* from) {
    return static_cast<const double*>(from);
}

template<double (*f)(double)>
void OfOne(const void* a, const void*, const void*, void* to, std::size_t count) {
    const double* __restrict const x = Numbers(a);
    double* __restrict const values = static_cast<double*>(to);
    for (std::size_t i = 0; i < (count & ~(kLanes - 1)); i++)
        values[i] = f(x[i]);
}

template<double (*f)(double, double)>
void OfTwo(const void* a, const void* b, const void*, void* to, std::size_t count) {
    const double* __restrict const x = Numbers(a);
    const double* __restrict const y = Numbers(b);
    double* __restrict const values = static_cast<double*>(to);
    for (std::size_t i = 0; i < (count & ~(kLanes - 1)); i++)
        values[i] = f(x[i], y[i]);
}

template<VectorMaths::OfOne VectorMaths::*f>
void Library(const void* a, const void*, const void*, void* to, std::size_t count) {
    (kits::MATHS.*f)(Numbers(a), static_cast<double*>(to), count);
}

template<VectorMaths::OfTwo VectorMaths::*f>
void Library2(const void* a, const void* b, const void*, void* to, std::size_t count) {
    (kits::MATHS.*f)(Numbers(a), Numbers(b), static_cast<double*>(to), count);
}

/// Computes a function of the library. Where its result is infinite for a finite |x| above 1,
/// although the true one may be finite, the result is lost(|x|) with the sign of the infinity.
template<VectorMaths::OfOne VectorMaths::*f, double (*lost)(double)>
void Bounded(const void* a, const void*, const void*, void* to, std::size_t count) {
    const double* __restrict const x = Numbers(a);
    double* __restrict const values = static_cast<double*>(to);
    (kits::MATHS.*f)(x, values, count);
    for (std::size_t i = 0; i < (count & ~(kLanes - 1)); i++) {
        const double size = __builtin_fabs(x[i]);
        const bool isLost = __builtin_fabs(values[i]) == kInfinity && size > 1 && size < kInfinity;
        values[i] = isLost ? __builtin_copysign(lost(size), values[i]) : values[i];
    }
}
/// Returns log(2 x), which is asinh and acosh of an x whose square is infinite.
double Area(double x) {
    return Logarithm(x) + 0x1.62e42fefa39efp-1;
}
/// Returns exp(x) / 2, which is sinh and cosh of an x from 710 on, where exp(x) is infinite.
double HalfExponential(double x) {
    const double root = Exponential(0.5 * x);
    return 0.5 * root * root;
}

/// Computes tgamma. Even a result so small that it is 0 has a sign, which changes at each whole
/// number.
void Gamma(const void* a, const void*, const void*, void* to, std::size_t count) {
    const double* __restrict const x = Numbers(a);
    double* __restrict const values = static_cast<double*>(to);
    kits::MATHS.tgamma(x, values, count);
    for (std::size_t i = 0; i < (count & ~(kLanes - 1)); i++) {
        const double half = 0.5 * __builtin_floor(x[i]);
        const bool odd = __builtin_floor(half) != half;
        values[i] = values[i] == 0 && odd ? -0.0 : values[i];
    }
}

/// Computes pow. The library returns infinity for some results just below the largest number; these
/// are computed here as the square of pow(|x|, y / 2).
void Powers(const void* a, const void* b, const void*, void* to, std::size_t count) {
    const double* __restrict const x = Numbers(a);
    const double* __restrict const y = Numbers(b);
    double* __restrict const values = static_cast<double*>(to);
    kits::MATHS.pow(x, y, values, count);
    std::int64_t infinite = 0;
    for (std::size_t i = 0; i < (count & ~(kLanes - 1)); i++)
        infinite |= __builtin_fabs(values[i]) == kInfinity ? 1 : 0;
    if (infinite == 0)
        return;
    for (std::size_t i = 0; i < count; i++) {
        const double size = __builtin_fabs(x[i]);
        // Slightly more than the logarithm of the largest number.
        const bool fits = size < kInfinity && y[i] * Logarithm(size) < 709.78272;
        if (__builtin_fabs(values[i]) != kInfinity || !fits)
            continue;
        alignas(64) double base[VectorMaths::kGroup] = {size};
        alignas(64) double exponent[VectorMaths::kGroup] = {0.5 * y[i]};
        alignas(64) double root[VectorMaths::kGroup];
        kits::MATHS.pow(base, exponent, root, VectorMaths::kGroup);
        values[i] = y[i] == 1 ? x[i] : __builtin_copysign(root[0] * root[0], values[i]);
    }
}

/// Computes by the library, one by one, the values for which Wave is invalid.
template<VectorMaths::OfOne VectorMaths::*f>
double FarWave(double x) {
    alignas(64) double phases[VectorMaths::kGroup] = {x};
    alignas(64) double values[VectorMaths::kGroup];
    (kits::MATHS.*f)(phases, values, VectorMaths::kGroup);
    return values[0];
}

/// Computes sin or cos of floats or doubles.
template<class From, bool cosine, VectorMaths::OfOne VectorMaths::*far>
void Waves(const void* a, const void*, const void*, void* to, std::size_t count) {
    const From* __restrict const x = static_cast<const From*>(a);
    double* __restrict const values = static_cast<double*>(to);
    const auto beyond = [](auto phase, auto wave) {
        if constexpr (sizeof(From) == sizeof(float))
            return BeyondWave(phase);
        else
            return BeyondWave(phase) | WaveNearZero(phase, wave);
    };
    Words any{};
    for (std::size_t i = 0; i < (count & ~(kLanes - 1)); i += kNumbers) {
        const Lanes phase = Load(x + i);
        const Lanes wave = Wave<cosine>(phase);
        any = any | beyond(phase, wave);
        Store(wave, values + i);
    }
    if (!AnyHigh(any))
        return;
    for (std::size_t i = 0; i < count; i++) {
        const double phase = x[i];
        if (beyond(phase, values[i]) >> 63 != 0)
            values[i] = FarWave<far>(phase);
    }
}

template<class From>
void Exponentials(const void* a, const void*, const void*, void* to, std::size_t count) {
    const From* __restrict const x = static_cast<const From*>(a);
    double* __restrict const values = static_cast<double*>(to);
    Words beyond{};
    for (std::size_t i = 0; i < (count & ~(kLanes - 1)); i += kNumbers) {
        const Lanes exponent = Load(x + i);
        beyond = beyond | BeyondExponential(exponent);
        Store(NearExponential(exponent), values + i);
    }
    if (!AnyHigh(beyond))
        return;
    for (std::size_t i = 0; i < (count & ~(kLanes - 1)); i++)
        values[i] = Exponential(x[i]);
}

void Modulo(const void* a, const void* b, const void*, void* to, std::size_t count) {
    const double* __restrict const x = Numbers(a);
    const double* __restrict const y = Numbers(b);
    double* __restrict const values = static_cast<double*>(to);
    const auto isNear = [](double one, double other) {
        const double step = __builtin_fabs(other);
        return step >= 0x1p-1022 && step < kInfinity &&
               __builtin_fabs(one) < step * kLargestQuotient;
    };
    std::int64_t beyond = 0;
    for (std::size_t i = 0; i < (count & ~(kLanes - 1)); i++) {
        beyond |= isNear(x[i], y[i]) ? 0 : 1;
        values[i] = NearModulo(x[i], y[i]);
    }
    if (beyond == 0)
        return;
    // The C library's result is exact here, and therefore the same on every machine.
    for (std::size_t i = 0; i < count; i++) {
        if (!isNear(x[i], y[i]))
            values[i] = __builtin_fmod(x[i], y[i]);
    }
}

double SineOf(double x) {
    return x <= kLongestWave ? Wave<false>(x) : FarWave<&VectorMaths::sin>(x);
}
double CosineOf(double x) {
    return x <= kLongestWave ? Wave<true>(x) : FarWave<&VectorMaths::cos>(x);
}

template<double (*f)(int order, double x, double sine, double cosine)>
void Bessel(const void* a, const void* b, const void*, void* to, std::size_t count) {
    const double* __restrict const x = Numbers(a);
    const int order = *static_cast<const int*>(b);
    double* __restrict const values = static_cast<double*>(to);
    for (std::size_t i = 0; i < count; i++) {
        const double size = __builtin_fabs(x[i]);
        const bool far = size >= kFar;
        values[i] = f(order, x[i], far ? SineOf(size) : 0, far ? CosineOf(size) : 0);
    }
}

constexpr MathsLoops Filled() {
    MathsLoops table{};
    const auto row = [&table](Op op) -> Loop& {
        return table.loops[static_cast<std::size_t>(op) - kPlainOps];
    };
    row(Op::Modulo) = Modulo;
    row(Op::Sin) = Waves<double, false, &VectorMaths::sin>;
    row(Op::Cos) = Waves<double, true, &VectorMaths::cos>;
    row(Op::Exp) = Exponentials<double>;
    row(Op::Log) = OfOne<Logarithm>;
    row(Op::Pow) = Powers;
    row(Op::Tanh) = OfOne<HyperbolicTangent>;
    row(Op::Atan) = OfOne<ArcTangent>;
    row(Op::Atan2) = OfTwo<ArcTangent2>;
    row(Op::Tan) = Library<&VectorMaths::tan>;
    row(Op::Asin) = Library<&VectorMaths::asin>;
    row(Op::Acos) = Library<&VectorMaths::acos>;
    row(Op::Sinh) = Bounded<&VectorMaths::sinh, HalfExponential>;
    row(Op::Cosh) = Bounded<&VectorMaths::cosh, HalfExponential>;
    row(Op::Asinh) = Bounded<&VectorMaths::asinh, Area>;
    row(Op::Acosh) = Bounded<&VectorMaths::acosh, Area>;
    row(Op::Atanh) = Library<&VectorMaths::atanh>;
    row(Op::Exp2) = Library<&VectorMaths::exp2>;
    row(Op::Expm1) = Library<&VectorMaths::expm1>;
    row(Op::Log2) = Library<&VectorMaths::log2>;
    row(Op::Log10) = Library<&VectorMaths::log10>;
    row(Op::Log1p) = Bounded<&VectorMaths::log1p, Logarithm>;
    row(Op::Cbrt) = Library<&VectorMaths::cbrt>;
    row(Op::Hypot) = Library2<&VectorMaths::hypot>;
    row(Op::Erf) = Library<&VectorMaths::erf>;
    row(Op::Erfc) = Library<&VectorMaths::erfc>;
    row(Op::TGamma) = Gamma;
    row(Op::LGamma) = Library<&VectorMaths::lgamma>;
    row(Op::BesselJ) = Bessel<BesselJOf>;
    row(Op::BesselY) = Bessel<BesselYOf>;
    const auto ofFloats = [&table](Op op) -> Loop& {
        return table.ofFloats[static_cast<std::size_t>(op) - kPlainOps];
    };
    ofFloats(Op::Sin) = Waves<float, false, &VectorMaths::sin>;
    ofFloats(Op::Cos) = Waves<float, true, &VectorMaths::cos>;
    ofFloats(Op::Exp) = Exponentials<float>;
    return table;
}

} // namespace

constinit const MathsLoops VEXA_LOOPS_TABLE = Filled();

} // namespace vexa::formula
