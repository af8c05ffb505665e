// MathsLoops for the instruction set that this file is compiled for.
//
// No function of the standard library's templates is used here: an instance that uses wide vectors
// could be linked into code that runs on any machine.
#include "formula/FormulaLoops.h"
#include "formula/loops/Bessel.h"
#include "kits/maths/FarWaves.h"
#include "kits/maths/Functions.h"
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

/// asinh and acosh, for which the library squares: what that makes infinite is log(2 |x|).
template<VectorMaths::OfOne VectorMaths::*f>
void Area(const void* a, const void*, const void*, void* to, std::size_t count) {
    const double* __restrict const x = Numbers(a);
    double* __restrict const values = static_cast<double*>(to);
    (kits::MATHS.*f)(x, values, count);
    for (std::size_t i = 0; i < (count & ~(kLanes - 1)); i++) {
        const double size = __builtin_fabs(x[i]);
        const bool lost = __builtin_fabs(values[i]) == kInfinity && size < kInfinity;
        const double area = Logarithm(size) + 0x1.62e42fefa39efp-1;
        values[i] = lost ? __builtin_copysign(area, x[i]) : values[i];
    }
}

template<bool cosine, double (*far)(double)>
void Waves(const void* a, const void*, const void*, void* to, std::size_t count) {
    const double* __restrict const x = Numbers(a);
    double* __restrict const values = static_cast<double*>(to);
    std::int64_t beyond = 0;
    for (std::size_t i = 0; i < (count & ~(kLanes - 1)); i++) {
        beyond |= __builtin_fabs(x[i]) <= kLongestWave ? 0 : 1;
        values[i] = Wave<cosine>(x[i]);
    }
    if (beyond == 0)
        return;
    for (std::size_t i = 0; i < count; i++) {
        if (!(__builtin_fabs(x[i]) <= kLongestWave))
            values[i] = far(x[i]);
    }
}

void Exponentials(const void* a, const void*, const void*, void* to, std::size_t count) {
    const double* __restrict const x = Numbers(a);
    double* __restrict const values = static_cast<double*>(to);
    std::int64_t beyond = 0;
    for (std::size_t i = 0; i < (count & ~(kLanes - 1)); i++) {
        const double kept = x[i] < kNoExponential ? 0 : x[i];
        beyond |= __builtin_fabs(kept) <= kMostExponential ? 0 : 1;
        values[i] = NearExponential(x[i]);
    }
    if (beyond == 0)
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
    // What the C library computes here is exact, and so the same everywhere.
    for (std::size_t i = 0; i < count; i++) {
        if (!isNear(x[i], y[i]))
            values[i] = __builtin_fmod(x[i], y[i]);
    }
}

double SineOf(double x) {
    return x <= kLongestWave ? Wave<false>(x) : kits::FarSine(x);
}
double CosineOf(double x) {
    return x <= kLongestWave ? Wave<true>(x) : kits::FarCosine(x);
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
    row(Op::Sin) = Waves<false, kits::FarSine>;
    row(Op::Cos) = Waves<true, kits::FarCosine>;
    row(Op::Exp) = Exponentials;
    row(Op::Log) = OfOne<Logarithm>;
    row(Op::Pow) = Library2<&VectorMaths::pow>;
    row(Op::Tanh) = OfOne<HyperbolicTangent>;
    row(Op::Atan) = OfOne<ArcTangent>;
    row(Op::Atan2) = OfTwo<ArcTangent2>;
    row(Op::Tan) = Library<&VectorMaths::tan>;
    row(Op::Asin) = Library<&VectorMaths::asin>;
    row(Op::Acos) = Library<&VectorMaths::acos>;
    row(Op::Sinh) = Library<&VectorMaths::sinh>;
    row(Op::Cosh) = Library<&VectorMaths::cosh>;
    row(Op::Asinh) = Area<&VectorMaths::asinh>;
    row(Op::Acosh) = Area<&VectorMaths::acosh>;
    row(Op::Atanh) = Library<&VectorMaths::atanh>;
    row(Op::Exp2) = Library<&VectorMaths::exp2>;
    row(Op::Expm1) = Library<&VectorMaths::expm1>;
    row(Op::Log2) = Library<&VectorMaths::log2>;
    row(Op::Log10) = Library<&VectorMaths::log10>;
    row(Op::Log1p) = Library<&VectorMaths::log1p>;
    row(Op::Cbrt) = Library<&VectorMaths::cbrt>;
    row(Op::Hypot) = Library2<&VectorMaths::hypot>;
    row(Op::Erf) = Library<&VectorMaths::erf>;
    row(Op::Erfc) = Library<&VectorMaths::erfc>;
    row(Op::TGamma) = Library<&VectorMaths::tgamma>;
    row(Op::LGamma) = Library<&VectorMaths::lgamma>;
    row(Op::BesselJ) = Bessel<BesselJOf>;
    row(Op::BesselY) = Bessel<BesselYOf>;
    return table;
}

} // namespace

constinit const MathsLoops VEXA_LOOPS_TABLE = Filled();

} // namespace vexa::formula
