// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/PlanePicture.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace {

/// Values of both signs, some beyond the range of a byte, and NaN.
float Waves(float x, float y) {
    if (std::abs(x - y) < 0.01F)
        return std::numeric_limits<float>::quiet_NaN();
    return 3 * std::sin(9 * x) * std::cos(7 * y) + (x > 1.5F ? 1e9F : 0.0F);
}

uint32 Word(float value) {
    if (!std::isfinite(value))
        return 0;
    const auto v = static_cast<int32>(std::clamp(value * 255.0F, -2147483520.0F, 2147483520.0F));
    return v > 0 ? static_cast<uint32>(v) : static_cast<uint32>(-v) << 16;
}

std::atomic<int> calls;
float CountedWaves(float x, float y) {
    calls++;
    return Waves(x, y);
}

/// Sizes from less than a band of rows up to rows of several pieces: some so small that one thread
/// computes them, some so large that all threads do.
TEST(PlanePicture, HasEveryPixelOnceWhateverItsSize) {
    const struct {
        std::size_t columns, rows;
    } sizes[] = {{1, 1}, {301, 301}, {7, 3}, {5000, 3}, {1023, 1200}, {0, 5}, {5, 0}};
    for (const auto& size : sizes) {
        const vexa::PlaneArea area{0.3F, -0.2F, 0.25F, 0.75F, 0.004F, size.columns, size.rows};
        std::vector<uint32> words(size.columns * size.rows + 1, 12345);
        calls = 0;
        vexa::DrawPlane({CountedWaves}, area, words.data());
        EXPECT_EQ(calls, int(size.columns * size.rows));
        EXPECT_EQ(words.back(), 12345U) << "behind the picture";
        int different = 0;
        for (std::size_t i = 0; i + 1 < words.size(); i++) {
            const auto c = float(i % size.columns);
            const auto r = float(i / size.columns);
            const float x = 0.3F + c * 0.004F - 0.25F * float(size.columns) * 0.004F;
            const float y = -0.2F - r * 0.004F + 0.25F * float(size.rows) * 0.004F;
            different += words[i] != Word(Waves(x, y));
        }
        EXPECT_EQ(different, 0) << size.columns << " x " << size.rows;
    }
}

} // namespace
