// SPDX-License-Identifier: GPL-3.0-or-later
#include "documents/ApplySound.h"

#include "support/DecimalComma.h"
#include "synth/Envelope.h"

#include <cmath>

#include <gtest/gtest.h>

namespace {

using namespace vexa;

const Parameter& Row(std::string_view field) {
    for (const Parameter& row : Parameters()) {
        if (row.field == field)
            return row;
    }
    throw std::invalid_argument("no such field");
}

TEST(ApplyText, FloatsByRuleF) {
    const struct {
        const char* text;
        float value;
    } cases[] = {{"0.5", 0.5F}, {" -1e-3 s", -0.001F}, {"", 0},           {"abc", 0},
                 {"1,5", 1},    {"0x1p4", 16},         {"inf", INFINITY}, {"1e99", INFINITY}};
    for (const auto& [text, value] : cases) {
        sound_param target;
        EXPECT_EQ(ApplyText(Row("Cx1"), text, target), TextFault::None) << text;
        EXPECT_EQ(target.Cx1, value) << text;
    }
    sound_param target;
    for (const char* text : {"nan", "-NaN", "nan(1)"})
        EXPECT_EQ(ApplyText(Row("Fx"), text, target), TextFault::NotANumber);
    EXPECT_EQ(target.Fx, 1);
}

TEST(ApplyText, ControllerNumbersByRuleN) {
    const struct {
        const char* text;
        int32 number;
    } cases[] = {{"0", 0}, {"127", 127}, {" +7.9", 7}, {"", 0}, {"abc", 0}, {"0x10", 0}};
    for (const auto& [text, number] : cases) {
        sound_param target;
        target.C0y4 = 99;
        EXPECT_EQ(ApplyText(Row("C0y4"), text, target), TextFault::None) << text;
        EXPECT_EQ(target.C0y4, number) << text;
    }
    // The last four would be 0 to 127 if they were cut to 32 bits.
    for (const char* text : {"128", "-1", "99999999999999999999", "-99999999999999999999",
                             "4294967296", "4294967301", "-4294967295"}) {
        sound_param target;
        target.C0y4 = 99;
        EXPECT_EQ(ApplyText(Row("C0y4"), text, target), TextFault::ControllerNumber) << text;
        EXPECT_EQ(target.C0y4, 99);
    }
}

TEST(ApplyParameters, GivesEachTextToItsOwnTarget) {
    Sound sound;
    for (std::size_t i = 0; i < sound.texts.size(); i++)
        sound.texts[i] = std::to_string(i + 1);
    sound_param target;
    ApplyParameters(sound, target);
    for (std::size_t i = 0; i < sound.texts.size(); i++) {
        const Parameter& row = Parameters()[i];
        EXPECT_EQ(row.controller ? float(target.*row.controller) : float(target.*row.value),
                  float(i + 1))
            << row.field;
    }
    EXPECT_EQ(target.Ay3, 19) << "the names of the fields are those of the members";
}

TEST(NumberDoubt, TellsWhatATextCountsAs) {
    for (const char* text : {"0.5", " -1e-3 ", "inf", "0x1p4", ".5"})
        EXPECT_EQ(NumberDoubt(text, false), "") << text;
    for (const char* text : {"0", "127", " +7 "})
        EXPECT_EQ(NumberDoubt(text, true), "") << text;
    const struct {
        const char* text;
        bool controller;
        const char* doubt;
    } cases[] = {
        {"  ", false, "expected a number, found nothing, which counts as 0"},
        {"abc", false, "expected a number, found \"abc\", which counts as 0"},
        {"0,5", false,
         "expected a number, found \"0,5\", which counts as 0 (the decimal point is \".\")"},
        {"0.90.7", false, "expected a number, found \"0.90.7\", which counts as 0.90"},
        {"NaN", false, "\"NaN\" is not a number and changes nothing"},
        {"7.5", true, "expected a whole number, found \"7.5\", which counts as 7"},
        {"128\n", true, "\"128?\": Controller number must be between 0 and 127."},
    };
    const test::DecimalComma comma;
    for (const auto& [text, controller, doubt] : cases)
        EXPECT_EQ(NumberDoubt(text, controller), doubt);
}

TEST(ApplyEnvelopes, ReplacesAndPublishesThePoints) {
    Envelope envelopes[4] = {{-1, 1, 10}, {-1, 1, 10}, {0, 1, 10}, {0, 1, 10}};
    sound_param target;
    target.EnvCx = &envelopes[0];
    target.EnvCy = &envelopes[1];
    target.EnvAx = &envelopes[2];
    target.EnvAy = &envelopes[3];
    Sound sound;
    for (std::size_t i = 0; i < 4; i++)
        sound.envelopes[i] = {{0, false, 0}, {1, false, float(i + 1)}};
    sound.envelopes[1] = {};
    ApplyEnvelopes(sound, target);
    EXPECT_EQ(envelopes[0].Value(0.5F, false, 0), 0.5F);
    EXPECT_EQ(envelopes[1].Value(0.5F, false, 0), 0);
    EXPECT_TRUE(envelopes[1].Points().empty());
    EXPECT_EQ(envelopes[2].Value(0.5F, false, 0), 1.5F);
    EXPECT_EQ(envelopes[3].Value(0.5F, false, 0), 2);
}

} // namespace
