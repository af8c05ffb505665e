// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/Oversampler.h"

#include "support/RealtimeWatch.h"
#include "support/Sounds.h"
#include "support/Spectrum.h"

#include <gtest/gtest.h>

namespace {

using vexa::Oversampler;

/// Returns the next frames of the left ear, followed by those of the right one, rendered in pieces.
std::vector<float> Take(Oversampler& from, std::size_t count, std::size_t piece = 1000) {
    std::vector<float> frames(2 * count);
    for (std::size_t done = 0; done < count;) {
        const std::size_t n = std::min(piece, count - done);
        from.Render(&frames[done], &frames[count + done], n);
        done += n;
    }
    return frames;
}

/// Renders a note at 2 to the `power` times the rate.
std::vector<float> Note(int power, uchar note, std::size_t piece, float spread,
                        const vexa::PlaneFunction& f = {test::PlaneOfX}) {
    vexa::Engine instrument;
    test::MakeSine(instrument);
    instrument.SetFunction(f);
    instrument.playing.given = true;
    instrument.playing.spread = spread;
    instrument.playing.oversample = float(power);
    Oversampler oversampler(instrument.renderer);
    oversampler.SetFrameRate(44100);
    EXPECT_EQ(oversampler.Delay(), power > 0 ? 32U : 0U);
    instrument.consumer.NoteOn(0, note, 127, 0);
    return Take(oversampler, 6000, piece);
}

TEST(Oversampler, GivesTheSameSoundALittleLater) {
    vexa::Engine plain;
    test::MakeSine(plain);
    plain.consumer.NoteOn(0, 69, 127, 0);
    const std::vector<float> should = test::Render(plain, 6000);
    const std::vector<float> same = Note(0, 69, 1000, 0);
    EXPECT_TRUE(std::equal(should.begin(), should.end(), same.begin()));
    for (const int power : {1, 2, 3, 4}) {
        for (const float spread : {0.0F, 60.0F}) {
            const std::vector<float> is = Note(power, 69, 1000, spread);
            const std::vector<float> at1 = Note(0, 69, 1000, spread);
            // Compares only once the filter is full; the low-cut filter has the same corner
            // frequency.
            for (std::size_t i = 32; i < 5900; i++) {
                ASSERT_NEAR(is[i], at1[i - 32], 0.01) << power << ' ' << i;
                ASSERT_NEAR(is[6000 + i], at1[6000 + i - 32], 0.01) << power << ' ' << i;
            }
            for (const std::size_t piece : {1, 37})
                EXPECT_EQ(Note(power, 69, piece, spread), is) << power;
        }
    }
}

TEST(Oversampler, TakesAliasesAway) {
    // The 7th harmonic of note 108, 4186.009 Hz, lies at 29302 Hz and folds to 14798 Hz.
    const vexa::PlaneFunction square{[](float x, float) { return x < 0 ? -0.9F : 0.9F; }};
    const auto alias = [&](int power) {
        const std::vector<float> frames = Note(power, 108, 1000, 60, square);
        const std::span<const float> held(frames.data() + 7000, 4000);
        return test::Amplitude(held, 44100 - 7 * 4186.009, 44100) /
               test::Amplitude(held, 4186.009, 44100);
    };
    EXPECT_GT(alias(0), 0.05);
    EXPECT_LT(alias(4), 0.01);
}

TEST(Oversampler, GoesToAnotherMultipleWithoutAClickOrAnAllocation) {
    vexa::Engine instrument;
    test::MakeSine(instrument);
    instrument.playing.given = true;
    instrument.playing.spread = 60;
    Oversampler oversampler(instrument.renderer);
    oversampler.SetFrameRate(48000);
    instrument.consumer.NoteOn(0, 69, 127, 0);
    std::vector<float> left(24 * 1500), right(left.size());
    const auto play = [&](std::size_t from, std::size_t count) {
        oversampler.Render(&left[from], &right[from], count);
    };
    std::size_t at = 0;
    {
        const test::RealtimeWatch watch;
        for (const int power : {0, 2, 4, 3, 0, 1, 2, 1, 4, 0, 3, 0}) {
            instrument.playing.oversample = float(power);
            play(at, 3000);
            at += 3000;
        }
        EXPECT_EQ(watch.Faults(), 0);
    }
    const double step = 2 * M_PI * 440 / 48000;
    for (const std::vector<float>& ear : {left, right}) {
        EXPECT_LT(test::LargestStep(ear), 1.5 * step);
        // A click shows in the second difference, which is below step^2 for the sine.
        for (std::size_t i = 1000; i + 1 < ear.size(); i++)
            ASSERT_LT(std::abs(ear[i + 1] - 2 * ear[i] + ear[i - 1]), 3 * step * step) << i;
        EXPECT_NEAR(test::Peak({ear.end() - 1000, ear.end()}), 1, 0.05);
    }

    // A fade continues from its present level.
    instrument.consumer.AllNotesOff(false, 0);
    play(0, 100);
    instrument.playing.oversample = 4;
    play(100, 1000);
    EXPECT_LT(test::LargestStep({left.data(), 1000}), 1.5 * step);
    EXPECT_EQ(test::Peak({left.data() + 400, 600}), 0);

    // A glide takes the same time at any multiple.
    instrument.playing.glide = 0.1F;
    instrument.consumer.NoteOn(0, 57, 127, 0);
    play(0, 480);
    instrument.consumer.NoteOn(0, 69, 127, 0);
    const auto plays = [](const vexa::voice& slot) {
        return slot.state.Look().Active() && std::lround(slot.key * 127) == 69;
    };
    const auto slot = std::ranges::find_if(instrument.voices, plays);
    ASSERT_NE(slot, instrument.voices.end());
    for (const int power : {4, 0, 3, 1}) {
        instrument.playing.oversample = float(power);
        play(0, 1190);
        EXPECT_LT(slot->pitch, 439.5F);
    }
    play(0, 60);
    EXPECT_FLOAT_EQ(slot->pitch, 440);
}

} // namespace
