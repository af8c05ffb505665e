// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/Mutation.h"

#include "documents/SoundDocument.h"
#include "instrument/PlayableFormula.h"
#include "instrument/SoundText.h"
#include "kits/support/NumberText.h"
#include "synth/ParameterTable.h"

#include <cmath>
#include <filesystem>

#include <gtest/gtest.h>

namespace {

using test::Text;
using vexa::Loudness;
using vexa::ParameterId;
using vexa::Sound;

/// A ring on the plane f = x, with all values that may change and all that may not.
Sound Ring() {
    Sound sound;
    sound.author = sound.function.author = "Anna";
    sound.function.expression = "x";
    sound.envelopes[2] = sound.envelopes[3] = {
        {0, false, 0}, {0.1F, false, 1}, {6.6F, false, 0.5F}, {0.4F, true, 0}};
    sound.envelopes[0] = {{0, false, -1}, {1, false, 0.001F}, {0.9F, false, 5}};
    Text(sound, ParameterId::Cx0) = "abc";
    Text(sound, ParameterId::Ax1) = "-0.5";
    Text(sound, ParameterId::Ax3) = "0.25";
    Text(sound, ParameterId::Ax4) = "7";
    sound.function.macros[2].value = "1";
    sound.playing.emplace().Of("polyphony") = "3";
    return sound;
}

void ExpectWithinRanges(const Sound& sound) {
    for (const std::size_t i : {1, 2, 3}) {
        const auto& points = sound.envelopes[i];
        const vexa::EnvelopePlace& place = vexa::EnvelopePlaces()[i];
        for (std::size_t k = 0; k < points.size(); k++) {
            EXPECT_GE(points[k].val, place.minimum);
            EXPECT_LE(points[k].val, place.maximum);
            EXPECT_LE(points[k].t, points[k].fku ? 10 / 3.0F : 20 / 3.0F);
            if (k > 0 && points[k].fku == points[k - 1].fku) {
                EXPECT_GE(points[k].t, points[k - 1].t);
            }
        }
    }
    for (const auto& macro : sound.function.macros) {
        const double value = kits::NumberOf(macro.value);
        EXPECT_TRUE(value >= 0 && value <= 1) << macro.value;
    }
}

TEST(Mutation, ChangesByLittleWhatItMay) {
    const vexa::PlaneFunction f = vexa::ReadPlayable("x").formula;
    const Sound before = Ring();
    bool first = false, time = false, level = false, macro = false, ratio = false;
    for (std::uint64_t seed = 0; seed < 40; seed++) {
        const Sound after = vexa::Mutate(before, f, seed);
        EXPECT_EQ(after, vexa::Mutate(before, f, seed));
        EXPECT_NE(after, before);
        ExpectWithinRanges(after);
        EXPECT_EQ(after.author, vexa::kDefaultAuthor);
        EXPECT_EQ(after.function.expression, "x");
        EXPECT_EQ(after.playing, before.playing);
        EXPECT_EQ(after.envelopes[0], before.envelopes[0]) << "a list out of order";
        for (const vexa::Parameter& row : vexa::Parameters()) {
            const std::string& now = after.texts[static_cast<std::size_t>(row.id)];
            const std::string& was = before.texts[static_cast<std::size_t>(row.id)];
            if (row.controller || was == "0" || was == "abc")
                EXPECT_EQ(now, was) << row.field;
            else
                EXPECT_NEAR(kits::NumberOf(now) / kits::NumberOf(was), 1, 0.36) << row.field;
        }
        const double fx = kits::NumberOf(after.texts[std::size_t(ParameterId::Fx)]);
        const double fy = kits::NumberOf(after.texts[std::size_t(ParameterId::Fy)]);
        EXPECT_NEAR(fx, 1, 0.007);
        EXPECT_NEAR(fy, 1, 0.007);
        EXPECT_TRUE(fx == 1 || fy == 1) << "both were another pitch";
        ratio = ratio || fx != 1 || fy != 1;
        EXPECT_EQ(after.envelopes[2].front(), before.envelopes[2].front());
        EXPECT_EQ(after.envelopes[2].back().val, 0) << "the note ends";
        first = first || Text(const_cast<Sound&>(after), ParameterId::Ax1) != "-0.5";
        time = time || after.envelopes[2][1].t != before.envelopes[2][1].t;
        level = level || after.envelopes[2][2].val != before.envelopes[2][2].val;
        macro = macro || after.function.macros[0].value != "0.5";
        for (std::size_t i = 0; i < vexa::kMacros; i++)
            EXPECT_EQ(after.function.macros[i].controller, before.function.macros[i].controller);
    }
    EXPECT_TRUE(first && time && level && macro && ratio);
}

/// A ridge that the ring just touches: many neighbouring sounds are silent, and as many are too
/// loud.
TEST(Mutation, IsNeitherSilentNorDeafening) {
    const vexa::PlaneFunction f = vexa::ReadPlayable("x > 0.8 ? exp(20*(x-0.8)) : 0").formula;
    Sound before = Ring();
    before.envelopes[0] = {{0, false, 0}};
    for (const auto id : {ParameterId::Ax1, ParameterId::Ax3})
        Text(before, id) = "0";
    const Loudness was = vexa::MeasureLoudness(before, f);
    ASSERT_GT(was.mean, 0.001);
    for (std::uint64_t seed = 0; seed < 40; seed++) {
        const Loudness now = vexa::MeasureLoudness(vexa::Mutate(before, f, seed), f);
        EXPECT_LE(now.peak, 1.42F * was.peak);
        EXPECT_GE(now.mean, 0.49F * was.mean);
    }
    // A sound with nothing to lose.
    Text(before, ParameterId::Ax0) = "0.1";
    EXPECT_EQ(vexa::MeasureLoudness(before, f).peak, 0);
    EXPECT_NE(vexa::Mutate(before, f, 1), before);
}

/// With a sine of amplitude 1 the loudness is known: a note is a circle's x, times the gain.
TEST(Mutation, LoudnessIsThatOfHeldNotes) {
    Sound sound;
    sound.envelopes[2] = sound.envelopes[3] = {{0, false, 1}, {0.001F, true, 0}};
    const Loudness sine = vexa::MeasureLoudness(sound, vexa::ReadPlayable("x").formula);
    EXPECT_NEAR(sine.mean, 0.25 * std::sqrt(0.5 * 2 / 2.5), 0.01);
    // A note starts at 0, wherever the circle does.
    EXPECT_NEAR(sine.peak, 0.5, 0.01);
    EXPECT_FALSE(sine.bounded);
    EXPECT_TRUE(vexa::MeasureLoudness(sound, vexa::ReadPlayable("1e35*x").formula).bounded);
}

} // namespace
