// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/History.h"

#include "documents/SoundDocument.h"
#include "instrument/SoundParts.h"
#include "instrument/SoundText.h"
#include "synth/ParameterTable.h"

#include <gtest/gtest.h>

namespace {

using std::chrono::milliseconds;
using test::Text;
using vexa::GestureMoment;
using vexa::History;
using vexa::ParameterId;
using vexa::Sound;

GestureMoment At(int ms, std::uint64_t number = 0, bool held = false) {
    return {number, held, std::chrono::steady_clock::time_point(milliseconds(ms))};
}

/// Changes one part of a sound to a value that the number determines.
using Change = void (*)(Sound& sound, int value);
const struct {
    const char* name;
    Change change;
} kChanges[] = {
    {"formula",
     [](Sound& s, int v) {
         s.function.kind = vexa::FunctionKind::Expression;
         s.function.expression = "x*" + std::to_string(v);
     }},
    {"sample",
     [](Sound& s, int v) {
         s.function.kind = vexa::FunctionKind::Sample;
         s.function.sampleFile = std::to_string(v);
     }},
    {"sample frequency",
     [](Sound& s, int v) {
         if (s.function.kind == vexa::FunctionKind::Sample)
             s.function.frequency = std::to_string(v);
     }},
    {"view of the plane",
     [](Sound& s, int v) { s.function.width = s.function.linkScreen.y = std::to_string(v); }},
    {"macro b", [](Sound& s, int v) { s.function.macros[1].value = std::to_string(v); }},
    {"controller of macro d",
     [](Sound& s, int v) { s.function.macros[3].controller = std::to_string(v); }},
    {"drift of centre x, velocity",
     [](Sound& s, int v) { Text(s, ParameterId::Cx1) = std::to_string(v); }},
    {"start of centre y, for every note",
     [](Sound& s, int v) { Text(s, ParameterId::C0y0) = std::to_string(v); }},
    {"turns in x, per period of the note",
     [](Sound& s, int v) { Text(s, ParameterId::Fx) = std::to_string(v); }},
    {"envelope of radius x",
     [](Sound& s, int v) {
         s.envelopes[2].push_back({float(v), true, 0});
     }},
    {"envelope of drift of centre y",
     [](Sound& s, int v) {
         s.envelopes[1] = {{0, false, float(v)}};
     }},
    {"playing", [](Sound& s, int v) { s.playing.emplace().kept = std::to_string(v); }},
    {"bend",
     [](Sound& s, int v) {
         if (s.playing)
             s.playing->Of("bend") = std::to_string(v);
     }},
    {"description", [](Sound& s, int v) { s.info.comment = std::to_string(v); }},
    {"author", [](Sound& s, int v) { s.author = std::to_string(v); }},
};

TEST(History, NamesWhatASoundDiffersIn) {
    for (const auto& [name, change] : kChanges) {
        Sound from;
        if (name == std::string("bend"))
            from.playing.emplace();
        if (name == std::string("sample frequency"))
            from.function.kind = vexa::FunctionKind::Sample;
        Sound to = from;
        change(to, 7);
        EXPECT_EQ(vexa::Difference(from, to), name);
        EXPECT_EQ(vexa::Difference(from, from), "");
    }
    Sound two, three;
    Text(two, ParameterId::Ax0) = Text(two, ParameterId::Ay0) = "3";
    three = two;
    three.function.expression = "x";
    EXPECT_EQ(vexa::Difference({}, two),
              "radius x, times the envelope and radius y, times the envelope");
    EXPECT_EQ(vexa::Difference({}, three), "several parts");
}

TEST(History, AGestureIsOneStep) {
    Sound sound;
    History history(sound, "");
    const auto take = [&](ParameterId id, const char* text, const GestureMoment& moment) {
        Text(sound, id) = text;
        history.Take(sound, moment);
        return history.Steps();
    };
    // The steps of the mouse wheel and of the arrow keys.
    EXPECT_EQ(take(ParameterId::Ax0, "1.1", At(0)), 1U);
    EXPECT_EQ(take(ParameterId::Ax0, "1.2", At(500)), 1U);
    EXPECT_EQ(take(ParameterId::Ax0, "1.3", At(1000)), 1U);
    EXPECT_EQ(take(ParameterId::Ax0, "1.4", At(2000)), 2U) << "after a pause";
    EXPECT_EQ(take(ParameterId::Ax1, "1.4", At(2010)), 3U) << "in another field";
    EXPECT_EQ(take(ParameterId::Ax1, "1.5", At(2020, 1)), 4U) << "confirmed one after the other";
    history.End();
    EXPECT_EQ(take(ParameterId::Ax1, "1.6", At(2030, 1)), 5U);
    // A drag may move several parts until it ends.
    EXPECT_EQ(take(ParameterId::Ax0, "2", At(3000, 2, true)), 6U);
    EXPECT_EQ(take(ParameterId::Ay0, "2", At(9000, 2, true)), 6U);
    EXPECT_EQ(take(ParameterId::Ay0, "3", At(9100, 2)), 6U) << "known after the button was let go";
    EXPECT_EQ(history.UndoName(), "radius x, times the envelope and radius y, times the envelope");
    EXPECT_EQ(take(ParameterId::Ay0, "4", At(9400, 2)), 7U) << "by the wheel, thereafter";
    EXPECT_EQ(take(ParameterId::Ay0, "5", At(9500, 3, true)), 8U);
    EXPECT_EQ(take(ParameterId::Ay0, "4", At(9600, 3, true)), 7U) << "and back";
    history.Undo();
    EXPECT_EQ(Text(sound = history.Present(), ParameterId::Ay0), "3");
    EXPECT_EQ(take(ParameterId::Ay0, "3.5", At(9610, 2)), 7U) << "a step that was come back to";
    EXPECT_FALSE(history.CanRedo());
}

/// Changes by controllers are no steps, and a step that did not make them does not undo them.
TEST(History, WhatControllersMoveStays) {
    Sound sound;
    History history(sound, "");
    const auto play = [&](const char* a, const char* b) {
        sound.function.macros[0].value = a;
        sound.function.macros[1].value = b;
        history.Play(sound);
    };
    const auto values = [](const Sound& s) {
        return s.function.macros[0].value + " " + s.function.macros[1].value;
    };
    sound.function.macros[1].value = "0.2";
    history.Take(sound, At(0));
    play("0.9", "0.2");
    sound.function.expression = "x";
    history.Take(sound, At(1000, 1, true));
    play("0.8", "0.3");
    sound.function.expression = "y";
    history.Take(sound, At(1500, 1, true));
    EXPECT_EQ(history.Steps(), 2U);
    EXPECT_EQ(history.UndoName(), "formula");
    play("0.7", "0.3");
    EXPECT_EQ(values(history.Undo()), "0.7 0.3");
    EXPECT_EQ(values(history.Undo()), "0.7 0.5") << "a person has moved the second";
    play("0.6", "0.5");
    EXPECT_EQ(values(history.Redo()), "0.6 0.2");
    EXPECT_EQ(history.Redo().function.expression, "y");
}

TEST(History, AnAuthorCountsAsAChangeOnlyIfThePersonHasEnteredIt) {
    Sound sound;
    sound.author = "Vexa";
    History history(sound, "default");
    const auto isSaved = [&] {
        return history.File().Match(history.Present(), history.File().saved);
    };
    sound.author = "set by an edit";
    history.Do(sound, "edit");
    EXPECT_TRUE(isSaved());
    sound.author = "Anna";
    history.File().author = "Anna";
    history.Do(sound, "author");
    EXPECT_FALSE(isSaved());
    History another = history;
    another.Load(Sound(), "bell", "sound bell");
    EXPECT_EQ(another.Left().size(), 1U);
    history.File().saved = sound;
    EXPECT_TRUE(isSaved());
    history.Undo();
    EXPECT_FALSE(isSaved()) << "the file has the author that was entered";
}

TEST(History, RenamesTheSoundsOfAFileWhereverTheyAre) {
    Sound sound;
    sound.info.name = "Default";
    sound.info.comment = "first";
    History history(Sound(), "other");
    const auto step = [&](const char* comment) {
        sound.info.comment = comment;
        history.Do(sound, comment);
    };
    history.Load(sound, "default", "sound default");
    step("second");
    sound.info.name = "Given";
    history.Do(sound, "name");
    sound.info.name = "Default";
    step("third");
    history.Undo();
    history.Rename("Default", "mine");
    EXPECT_EQ(history.Present().info.name, "Given");
    EXPECT_EQ(history.Redo().info.name, "mine");
    EXPECT_EQ(history.UndoTo(2).info.name, "mine");
    EXPECT_EQ(history.Undo().info.name, "mine");
    EXPECT_EQ(history.Present().info.comment, "first");
    EXPECT_EQ(history.Undo(), Sound()) << "it belongs to another file";
}

} // namespace
