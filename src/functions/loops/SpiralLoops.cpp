// SPDX-License-Identifier: GPL-3.0-or-later
// SpiralLoops for the instruction set that this file is compiled for.
//
// No function of the standard library's templates is used here: an instance that uses wide vectors
// could be linked into code that runs on any machine.
#include "functions/SpiralLoops.h"

#include "functions/loops/SpiralTurn.h"

namespace vexa {

extern const SpiralLoops VEXA_LOOPS_TABLE;

namespace {

/// Returns `index`, which is a whole number or NaN, limited to 0..last.
inline int Limit(float index, int last) {
    const float end = static_cast<float>(last);
    const bool inside = index > 0 && index < end;
    const int whole = static_cast<int>(inside ? index : 0.0F);
    return index >= end ? last : whole;
}

constexpr std::size_t kPiece = 64;

/// Computes the formulas of sampler2rfun, each in a loop of its own. `count` is at most kPiece.
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
        phi[i] = TurnOf(x[i], y[i]);
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
