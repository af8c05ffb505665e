// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/Decimator.h"

#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

namespace {

/// Returns `frames` frames of a sine with a period of `period` frames.
std::vector<float> Sine(double period, std::size_t frames) {
    std::vector<float> values(frames);
    for (std::size_t i = 0; i < frames; i++)
        values[i] =
            static_cast<float>(std::sin(2 * std::numbers::pi / period * static_cast<double>(i)));
    return values;
}

/// Decimates the stream in pieces of 1, 2, 3, ... frames.
std::vector<float> Decimate(int factor, const std::vector<float>& frames) {
    vexa::Decimator decimator(factor);
    std::vector<float> out;
    std::size_t piece = 1;
    for (std::size_t i = 0; i < frames.size(); i += piece++)
        decimator.Process(frames.data() + i, std::min(piece, frames.size() - i), out);
    decimator.Finish(out);
    return out;
}

TEST(Decimator, KeepsWhatTheLowerRateHoldsInItsPlace) {
    for (const int factor : {1, 2, 4, 8, 16}) {
        const std::vector<float> out = Decimate(factor, Sine(10.0 * factor, 20000));
        const std::vector<float> expected = Sine(10.0, out.size());
        // The filter extends some 200 frames of the lower rate to each side.
        float worst = 0;
        for (std::size_t i = 250; i + 250 < out.size(); i++)
            worst = std::max(worst, std::abs(out[i] - expected[i]));
        EXPECT_LT(worst, factor == 1 ? 1e-12F : 1e-5F) << factor;
    }
}

TEST(Decimator, RemovesWhatTheLowerRateCannotHold) {
    for (const int factor : {2, 4, 8, 16}) {
        const std::vector<float> out = Decimate(factor, Sine(1.6 * factor, 20000));
        float peak = 0;
        for (std::size_t i = 250; i + 250 < out.size(); i++)
            peak = std::max(peak, std::abs(out[i]));
        EXPECT_LT(peak, 1e-5F) << factor;
    }
}

TEST(Decimator, GivesOneFrameForEachWholeOrBegunGroup) {
    for (const int factor : {1, 2, 4, 8, 16}) {
        for (const std::size_t frames : {0, 1, 2, 15, 16, 17, 1000, 4095, 4096, 4097, 9999}) {
            const auto step = static_cast<std::size_t>(factor);
            EXPECT_EQ(Decimate(factor, std::vector<float>(frames, 1.0F)).size(),
                      (frames + step - 1) / step)
                << factor << " " << frames;
        }
    }
}

} // namespace
