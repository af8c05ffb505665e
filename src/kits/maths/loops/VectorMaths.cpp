// SPDX-License-Identifier: GPL-3.0-or-later
// VectorMaths for the instruction set that this file is compiled for.
//
// No function template of the standard library is used here: an instance compiled for wide vectors
// could be linked into code that must run on any machine.
#include "kits/maths/VectorMaths.h"

#include <sleef.h>

namespace kits {

extern const VectorMaths VEXA_LOOPS_TABLE;

namespace {

// SLEEF's name of a function, which includes the vector width and the instruction set.
#if defined(__AVX512F__)
using Vector = __m512d;
#define FORM(name, precision) Sleef_cinz_##name##d8_##precision##avx512fnofma
#elif defined(__AVX__)
using Vector = __m256d;
#define FORM(name, precision) Sleef_cinz_##name##d4_##precision##avx
#elif defined(__x86_64__)
using Vector = __m128d;
#define FORM(name, precision) Sleef_cinz_##name##d2_##precision##sse2
#elif defined(__aarch64__)
using Vector = float64x2_t;
#define FORM(name, precision) Sleef_cinz_##name##d2_##precision##advsimdnofma
#else
#error "SLEEF's deterministic forms are known for x86-64 and 64-bit Arm."
#endif

constexpr std::size_t kLanes = sizeof(Vector) / sizeof(double);
static_assert(VectorMaths::kGroup % kLanes == 0);

inline Vector Load(const double* from) {
    Vector vector;
    __builtin_memcpy(&vector, from, sizeof vector);
    return vector;
}

inline void Store(const Vector& vector, double* to) {
    __builtin_memcpy(to, &vector, sizeof vector);
}

// The loop of a function. A macro, because the compiler rejects a function of vector types as a
// template argument.
#define OF_ONE(name, precision)                                                                    \
    [](const double* x, double* values, std::size_t count) {                                       \
        for (std::size_t i = 0; i < count; i += kLanes)                                            \
            Store(FORM(name, precision)(Load(x + i)), values + i);                                 \
    }
#define OF_TWO(name, precision)                                                                    \
    [](const double* x, const double* y, double* values, std::size_t count) {                      \
        for (std::size_t i = 0; i < count; i += kLanes)                                            \
            Store(FORM(name, precision)(Load(x + i), Load(y + i)), values + i);                    \
    }

} // namespace

constinit const VectorMaths VEXA_LOOPS_TABLE = {
    .sin = OF_ONE(sin, u10),
    .cos = OF_ONE(cos, u10),
    .tan = OF_ONE(tan, u10),
    .asin = OF_ONE(asin, u10),
    .acos = OF_ONE(acos, u10),
    .sinh = OF_ONE(sinh, u10),
    .cosh = OF_ONE(cosh, u10),
    .asinh = OF_ONE(asinh, u10),
    .acosh = OF_ONE(acosh, u10),
    .atanh = OF_ONE(atanh, u10),
    .exp2 = OF_ONE(exp2, u10),
    .expm1 = OF_ONE(expm1, u10),
    .log2 = OF_ONE(log2, u10),
    .log10 = OF_ONE(log10, u10),
    .log1p = OF_ONE(log1p, u10),
    .cbrt = OF_ONE(cbrt, u10),
    .erf = OF_ONE(erf, u10),
    .erfc = OF_ONE(erfc, u15),
    .tgamma = OF_ONE(tgamma, u10),
    .lgamma = OF_ONE(lgamma, u10),
    .pow = OF_TWO(pow, u10),
    .hypot = OF_TWO(hypot, u05),
};

} // namespace kits
