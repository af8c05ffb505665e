// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/Voice.h"

#include <gtest/gtest.h>

namespace {

using vexa::VoiceTable;

void Sound(VoiceTable& voices, int slot, double seconds, bool released) {
    vexa::voice& v = voices[std::size_t(slot)];
    v.state.BeginChange();
    v.released = released;
    v.state.EndChange(true);
    v.t = seconds;
    v.rendered = v.state.Look().Changes();
}

TEST(Voice, ReleasedVoicesGoFirstThenTheLongestAndOfEqualsTheHighest) {
    VoiceTable voices;
    EXPECT_EQ(vexa::LongestVoice(voices).slot, -1);
    EXPECT_FALSE(vexa::ReduceVoicesByOne(voices));
    Sound(voices, 1, 9, false);
    Sound(voices, 2, 7, false);
    Sound(voices, 4, 1, true);
    Sound(voices, 6, 3, true);
    Sound(voices, 8, 3, true);
    std::vector<int> order;
    while (true) {
        const int slot = vexa::LongestVoice(voices).slot;
        if (!vexa::ReduceVoicesByOne(voices))
            break;
        order.push_back(slot);
    }
    EXPECT_EQ(order, (std::vector{8, 6, 4, 1, 2}));
}

TEST(Voice, OnlyWhatIsReleasedIsSilenced) {
    VoiceTable voices;
    Sound(voices, 1, 9, false);
    Sound(voices, 4, 1, true);
    vexa::SilenceReleased(voices, vexa::Released::All);
    EXPECT_EQ(vexa::CountActive(voices), 1);
    EXPECT_EQ(vexa::LongestVoice(voices).slot, 1);
}

TEST(Voice, WhatIsOverIsHeardNoMoreButTakesItsSlot) {
    VoiceTable voices;
    Sound(voices, 1, 9, false);
    Sound(voices, 4, 1, true);
    voices[4].over = true;
    EXPECT_EQ(vexa::CountHeard(voices), 1);
    EXPECT_EQ(vexa::CountActive(voices), 2);
    voices[4].state.BeginChange(); // a new note that is not complete yet
    voices[4].state.EndChange(true);
    EXPECT_EQ(vexa::CountHeard(voices), 2);
}

TEST(Voice, ATimeOfTheNoteBeforeDoesNotCountForTheNoteNow) {
    VoiceTable voices;
    Sound(voices, 0, 100, false);
    Sound(voices, 1, 1, false);
    voices[0].state.BeginChange(); // a new note, not rendered yet
    voices[0].notes = 1;
    voices[0].state.EndChange(true);
    EXPECT_EQ(vexa::LongestVoice(voices).slot, 1);
    EXPECT_EQ(vexa::Look(voices[0]).t, 0);
}

TEST(Voice, SilencingWhatOneSawSparesItsSuccessor) {
    VoiceTable voices;
    Sound(voices, 0, 1, false);
    vexa::VoiceState& state = voices[0].state;
    const auto seen = state.Look();
    state.BeginChange();
    EXPECT_FALSE(state.Silence(seen)) << "it is being rewritten";
    EXPECT_FALSE(state.Silence(state.Look()));
    state.EndChange(true);
    EXPECT_FALSE(state.Silence(seen)) << "it is another note";
    EXPECT_TRUE(state.Look().Active());
    EXPECT_TRUE(state.Silence(state.Look()));
    EXPECT_FALSE(state.Look().Active());
}

} // namespace
