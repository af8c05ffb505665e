// SpiralLoops for the instruction set that this file is compiled for.
//
// No function of the standard library's templates is used here: an instance that uses wide vectors
// could be linked into code that runs on any machine.
#include "functions/SpiralLoops.h"

namespace vexa {

extern const SpiralLoops VEXA_LOOPS_TABLE;

namespace {

constexpr float kLargest = 0x1.fffffep127F;
constexpr double kHalfPi = 0x1.921fb54442d18p0;

/// atan2f(y, x), rounded from double precision.
inline float Angle(float y, float x) {
    const float xsize = __builtin_fabsf(x);
    const float ysize = __builtin_fabsf(y);
    // Infinity as the largest number, so that two of them have a quotient.
    const double across = xsize > kLargest ? kLargest : xsize;
    const double up = ysize > kLargest ? kLargest : ysize;
    const bool steep = up > across;
    const double small = steep ? across : up;
    const double large = steep ? up : across;
    // From the nearer one of the axis and the diagonal: |t| <= tan(pi / 8).
    const bool diagonal = small > large * 0x1.a827999fcef32p-2;
    const double nominator = diagonal ? small - large : small;
    const double denominator = diagonal ? small + large : large;
    const double t = nominator / (denominator == 0 ? 1 : denominator);
    // An odd polynomial that interpolates the arcus tangent at Chebyshev's points up to there;
    // its error is 5e-17.
    const double q = t * t;
    double sum = 0.022734660289432312;
    sum = sum * q - 0.04482174587127949;
    sum = sum * q + 0.057359799104905136;
    sum = sum * q - 0.06649556219483789;
    sum = sum * q + 0.0769104971487617;
    sum = sum * q - 0.09090852255728335;
    sum = sum * q + 0.11111109627206857;
    sum = sum * q - 0.1428571426595293;
    sum = sum * q + 0.1999999999989756;
    sum = sum * q - 0.3333333333333324;
    const double near = (diagonal ? kHalfPi / 2 : 0) + (t + t * q * sum);
    const double first = steep ? kHalfPi - near : near;
    const double upper = __builtin_signbitf(x) ? 2 * kHalfPi - first : first;
    return __builtin_copysignf(static_cast<float>(upper), y);
}

/// `index`, a whole number or NaN, limited to 0..last.
inline int Limit(float index, int last) {
    const float end = static_cast<float>(last);
    const bool inside = index > 0 && index < end;
    const int whole = static_cast<int>(inside ? index : 0.0F);
    return index >= end ? last : whole;
}

constexpr std::size_t kPiece = 64;

/// The formulas of sampler2rfun, each as a loop of its own. count <= kPiece.
void Piece(const SpiralTurns& turns, const float* __restrict x, const float* __restrict y,
           float* __restrict values, std::size_t count) {
    const float* const sample = turns.sample;
    const int last = turns.last;
    const float T = turns.T;
    const float alphap = turns.alphap;
    const float end = static_cast<float>(last);
    float phi[kPiece];
    float w[kPiece];
    float p[2][kPiece];
    for (std::size_t i = 0; i < count; i++)
        phi[i] = static_cast<float>(Angle(-y[i], -x[i]) / 6.28318530718 + 0.5);
    for (std::size_t i = 0; i < count; i++) {
        const float r = __builtin_sqrtf(x[i] * x[i] + y[i] * y[i]);
        const float u = r / alphap - phi[i];
        const float n = __builtin_floorf(u);
        w[i] = u - n;
        p[0][i] = (n + phi[i]) * T;
        p[1][i] = p[0][i] + T;
    }
    float level[2][kPiece];
    for (int turn = 0; turn < 2; turn++) {
        for (std::size_t i = 0; i < count; i++) {
            const float whole = __builtin_floorf(p[turn][i]);
            const float f = p[turn][i] - whole;
            level[turn][i] =
                (1 - f) * sample[Limit(whole, last)] + f * sample[Limit(whole + 1, last)];
        }
    }
    const float outside = sample[last];
    for (std::size_t i = 0; i < count; i++) {
        const float mix = (1 - w[i]) * level[0][i] + w[i] * level[1][i];
        values[i] = p[0][i] >= end ? outside : mix;
    }
}

void Values(const SpiralTurns& turns, const float* x, const float* y, float* values,
            std::size_t count) {
    for (; count > kPiece; count -= kPiece) {
        Piece(turns, x, y, values, kPiece);
        x += kPiece;
        y += kPiece;
        values += kPiece;
    }
    Piece(turns, x, y, values, count);
}

} // namespace

const SpiralLoops VEXA_LOOPS_TABLE = {Values, VEXA_LOOPS_NAME};

} // namespace vexa
