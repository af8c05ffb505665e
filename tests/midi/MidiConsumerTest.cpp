// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/support/Message.h"
#include "midi/HandsStage.h"

#include <limits>

#include <gtest/gtest.h>

namespace {

using test::Render;
using vexa::Engine;

class MidiConsumer : public test::HandsStage {
  protected:
    void Limit(int voices) { instrument.consumer.ReduceToMaxVox(voices); }
    void Play(std::size_t samples = 441) { Render(instrument, samples); }
};

TEST_F(MidiConsumer, StartsWithAllChannelsAndOneVoice) {
    Engine fresh;
    EXPECT_EQ(fresh.consumer.Channel(), -1);
    EXPECT_EQ(fresh.consumer.Name(), "Vexa midi in");
    fresh.consumer.NoteOn(3, 60, 100, 0);
    fresh.consumer.NoteOn(15, 64, 0, 0); // a velocity like others
    EXPECT_EQ(fresh.consumer.CountVox(), 1);
    EXPECT_NEAR(fresh.voices[0].key, 64 / 127.0, 1e-7);
    EXPECT_EQ(fresh.voices[0].vel, 0);
    EXPECT_EQ(fresh.consumer.StolenVox(), 1);
}

TEST_F(MidiConsumer, ListensToItsChannelAlone) {
    instrument.consumer.SetChannel(9);
    On(60, 8);
    Control(1, 127, 8);
    EXPECT_EQ(Notes(), Are{});
    EXPECT_EQ(instrument.controllers[1], 0);
    On(60, 9);
    Control(1, 127, 9);
    Off(60, 8);
    EXPECT_EQ(Notes(), Are{60});
    EXPECT_EQ(instrument.controllers[1], 1);
    Off(60, 9);
    EXPECT_EQ(Notes(), Are{-60});
    Panic(true);
    EXPECT_EQ(Notes(), Are{}) << "whatever the channel";
}

TEST_F(MidiConsumer, ANoteEndsOnItsOwnChannelWhateverIsListenedToByThen) {
    On(60, 3);
    On(62, 5);
    instrument.consumer.SetChannel(5);
    Off(62, 3);
    EXPECT_EQ(Notes(), (Are{60, 62}));
    Off(60, 3);
    EXPECT_EQ(Notes(), (Are{-60, 62}));
}

TEST_F(MidiConsumer, TheSameKeyRetriggersItsSlotWhileItIsHeld) {
    On(60);
    On(62);
    Play();
    On(60);
    EXPECT_EQ(Notes(), (Are{60, 62}));
    EXPECT_EQ(vexa::Look(instrument.voices[0]).t, 0);
    Off(60);
    On(60);
    EXPECT_EQ(Notes(), (Are{-60, 62, 60})) << "a released key is another voice";
    EXPECT_EQ(instrument.consumer.StolenVox(), 0);
}

TEST_F(MidiConsumer, StealsTheLongestReleasedThenTheLongestHeld) {
    Limit(3);
    On(60);
    Play();
    On(61);
    Play();
    On(62);
    Off(61);
    Play();
    On(70); // takes the released one
    EXPECT_EQ(Notes(), (Are{60, 70, 62}));
    Play();
    On(71); // takes the one held longest
    EXPECT_EQ(Notes(), (Are{71, 70, 62}));
    EXPECT_EQ(instrument.consumer.StolenVox(), 2);
}

TEST_F(MidiConsumer, TheVoiceLimitSilencesReleasedVoicesFirst) {
    for (uchar note = 60; note < 65; note++) {
        On(note);
        Play();
    }
    Off(63);
    Play();
    Off(61);
    Play();
    Limit(2);
    EXPECT_EQ(Notes(), (Are{62, 64})) << "63 and 61 by release, then 60 as held longest";
    Limit(0);
    On(80);
    EXPECT_EQ(Notes(), Are{}) << "no voice is allowed";
}

TEST_F(MidiConsumer, ANoteThatCouldNotBeSilencedWhileItChangedIsWhenItHas) {
    On(60);
    // As the MIDI thread is in the midst of a release.
    vexa::VoiceState& state = instrument.voices[0].state;
    state.BeginChange();
    instrument.consumer.ReduceToMaxVox(0);
    EXPECT_EQ(instrument.consumer.CountVox(), 1);
    state.EndChange(true);
    Off(60);
    EXPECT_EQ(instrument.consumer.CountVox(), 0);
}

TEST_F(MidiConsumer, AFullTableOfHeldNotesIsReleasedNoteByNote) {
    for (uchar note = 40; note < 60; note++)
        On(note);
    EXPECT_EQ(instrument.consumer.CountVox(), 20);
    Off(99);
    EXPECT_EQ(Notes().front(), 40) << "a key that does not sound changes nothing";
    for (uchar note = 40; note < 60; note++)
        Off(note);
    EXPECT_EQ(instrument.consumer.CountVox(), 20) << "voices never end by themselves";
    for (const int note : Notes())
        EXPECT_LT(note, 0);
}

TEST_F(MidiConsumer, ReleaseBeginsAtTheLevelsOfNoteOff) {
    test::MakeRich(instrument);
    On(60);
    Play(22050);
    Off(60);
    const vexa::VoiceView view = vexa::Look(instrument.voices[0]);
    EXPECT_TRUE(view.released);
    EXPECT_EQ(view.t, 0);
    for (std::size_t i = 0; i < 4; i++)
        EXPECT_EQ(view.rellevel[i], instrument.envelopes[i].Value(0.5F, false, 0)) << i;
}

TEST_F(MidiConsumer, TheCentreStartsAtItsWeightedSum) {
    vexa::sound_param& p = instrument.parameters;
    p.C0x0 = 0.5F;
    p.C0x1 = 2;
    p.C0x2 = -1;
    p.C0x3 = 4;
    p.C0x4 = 7;
    instrument.consumer.ControlChange(0, 7, 64, 0);
    On(60, 0, 32);
    EXPECT_FLOAT_EQ(static_cast<float>(vexa::Look(instrument.voices[0]).cx),
                    static_cast<float>(0.5 + 2 * 32 / 127.0 - 60 / 127.0 + 4 * 64 / 127.0));
    EXPECT_EQ(vexa::Look(instrument.voices[0]).cy, 0);
}

TEST_F(MidiConsumer, AFunctionThatIsNotFiniteAtTheStartDoesNotSilenceTheNote) {
    instrument.consumer.SetFunction(
        {[](float, float) { return std::numeric_limits<float>::infinity(); }});
    On(69);
    Play(4410);
    EXPECT_NEAR(test::Peak(Render(instrument, 441)), 1, 0.1);
}

TEST_F(MidiConsumer, IconsReplaceThoseThatAreThere) {
    BMessage properties;
    ASSERT_EQ(instrument.consumer.GetProperties(&properties), B_OK);
    EXPECT_TRUE(properties.HasData("be:large_icon", FourCC("ICON")));
    EXPECT_TRUE(properties.HasData("be:mini_icon", FourCC("MICN")));

    BBitmap large({0, 0, 31, 31}, B_CMAP8);
    BBitmap mini({0, 0, 15, 15}, B_CMAP8);
    static_cast<uchar*>(large.Bits())[5] = 77;
    vexa::VexaMidiConsumer::AddIcons(&properties, large, mini);
    const void* data = nullptr;
    std::size_t size = 0;
    ASSERT_EQ(properties.FindData("be:large_icon", FourCC("ICON"), 0, &data, &size), B_OK);
    EXPECT_EQ(size, 1024U);
    EXPECT_EQ(static_cast<const uchar*>(data)[5], 77);
    EXPECT_FALSE(properties.HasData("be:large_icon", FourCC("ICON"), 1));
}

} // namespace
