// SPDX-License-Identifier: GPL-3.0-or-later
// Catches wrong effects of wheel, pedals, pressure and held keys on the notes, as the sound sets
// them.
#include "midi/HandsStage.h"
#include "support/Spectrum.h"

#include <functional>
#include <random>

#include <gtest/gtest.h>

namespace {

using test::kRate;
using test::Peak;
using test::Render;
using vexa::Engine;
using vexa::PlayMode;

class Hands : public test::HandsStage {
  protected:
    Hands() { instrument.playing.given = true; }

    /// Returns the frequency of a slot's note.
    double Hertz(std::size_t samples = 1, std::size_t slot = 0) {
        return HandsStage::Hertz(slot + 1, samples)[slot];
    }
    /// Returns the greatest level above 2000 Hz, in decibels relative to full volume.
    static double LoudestAbove2000(std::span<const float> samples) {
        double most = 0;
        for (double hertz = 2000; hertz < 20000; hertz += 97)
            most = std::max(most, test::Amplitude(samples, hertz, kRate));
        return 20 * std::log10(most);
    }
    /// Renders 344 samples after each of some events.
    std::vector<float> Sweep(int first, int last, int step, const std::function<void(int)>& event) {
        std::vector<float> samples;
        for (int value = first; value < last; value += step) {
            event(value);
            const std::vector<float> more = Render(instrument, 344);
            samples.insert(samples.end(), more.begin(), more.end());
        }
        return samples;
    }
};

TEST_F(Hands, TheWheelBendsByTheRangeThatTheSoundOrRpn0Says) {
    instrument.playing.bend = 2;
    Bend(8191); // before any note
    On(69);
    EXPECT_NEAR(Cents(Hertz(1000), 493.8833), 0, 0.01) << "from its first sample on";
    Bend(-8192);
    Render(instrument, 441);
    EXPECT_NEAR(Cents(Hertz(1000), 391.9954), 0, 0.01);

    // Half of a parameter's number, another parameter, and none: their data have no effect.
    const std::vector<std::pair<int, int>> harmless[] = {{{101, 0}, {6, 24}},
                                                         {{101, 0}, {100, 1}, {6, 24}},
                                                         {{99, 0}, {98, 0}, {6, 24}},
                                                         {{101, 0}, {100, 0}, {101, 127}, {6, 24}}};
    for (const auto& events : harmless) {
        Controls(events);
        Control(98, 0);
    }
    Render(instrument, 441);
    EXPECT_NEAR(Cents(Hertz(1000), 391.9954), 0, 0.01);
    const std::pair<std::vector<std::pair<int, int>>, double> ranges[] = {
        {{{101, 0}, {100, 0}, {38, 50}}, 250}, // hundredths alone leave the semitones
        {{{38, 127}}, 299},
        {{{6, 12}}, 1200},
        {{{38, 50}}, 1250},
        {{{6, 0}}, 0},
        {{{6, 127}, {38, 20}}, 9600},
        {{{96, 0}}, 9600}, // as wide as it gets
        {{{97, 0}, {97, 127}}, 9400},
        {{{6, 1}, {38, 50}, {96, 0}}, 250},
        {{{97, 0}, {97, 0}, {97, 0}}, 50},
        {{{101, 127}, {96, 0}}, 50}, // for no parameter
        {{{101, 0}, {96, 0}}, 150}};
    for (const auto& [events, cents] : ranges) {
        Controls(events);
        Render(instrument, 441);
        EXPECT_NEAR(Cents(Hertz(1000), 440), -cents, 0.01);
    }

    instrument.playing.loads = 1; // another sound
    Control(96, 0);
    Bend(8191);
    Render(instrument, 441);
    EXPECT_NEAR(Cents(Hertz(1000), 440), 300, 0.01) << "a step from what the sound says";
    Control(97, 0);
    Render(instrument, 441);
    EXPECT_NEAR(Cents(Hertz(1000), 493.8833), 0, 0.01);
    instrument.playing.given = false;
    Render(instrument, 441);
    EXPECT_NEAR(Cents(Hertz(1000), 440), 0, 0.01);
    Bend(-8192);
    On(69);
    EXPECT_NEAR(Cents(Hertz(1000), 440), 0, 0.01);
    instrument.playing.given = true;
    instrument.playing.loads = 2;
    On(69);
    EXPECT_NEAR(Cents(Hertz(1000), 391.9954), 0, 0.01) << "where the wheel was left meanwhile";
}

TEST_F(Hands, ASweepOfTheWheelHasNoSteps) {
    instrument.playing.bend = 12;
    On(69);
    Render(instrument, 4410);
    // In the coarse steps of a seven-bit wheel.
    const std::vector<float> samples = Sweep(-8192, 8192, 128, [this](int value) { Bend(value); });
    EXPECT_GT(Peak(samples), 0.9F);
    EXPECT_LT(LoudestAbove2000(samples), -120) << "a pitch that steps leaves -105";
}

TEST_F(Hands, AControllerThatIsSmoothedHasNoSteps) {
    instrument.parameters.Ax3 = 1;
    instrument.parameters.Ax4 = 1;
    const auto loudestAbove2000 = [this] {
        return LoudestAbove2000(Sweep(0, 128, 1, [this](int value) { Control(1, uchar(value)); }));
    };
    On(69);
    Render(instrument, 4410);
    EXPECT_GT(loudestAbove2000(), -90) << "steps";
    instrument.playing.smooth = 10;
    Control(1, 0);
    Render(instrument, 4410);
    EXPECT_LT(loudestAbove2000(), -100);
}

TEST_F(Hands, AGlideIsExponentialAndExactAtBothEnds) {
    instrument.playing.glide = 0.5F;
    On(57);
    EXPECT_EQ(Cents(Hertz(), 220), 0) << "the first note has nowhere to come from";
    On(69);
    Render(instrument, 1); // taken up
    EXPECT_NEAR(Cents(Hertz(1, 1), 220 * std::exp2(1 / 22050.0)), 0, 1e-4);
    Render(instrument, 11025 - 2);
    EXPECT_NEAR(Cents(Hertz(1, 1), 220 * std::sqrt(2)), 0, 1e-4);
    Render(instrument, 11024);
    EXPECT_NEAR(Cents(Hertz(1, 1), 440), 0, 1e-6);

    // The single voice glides to another note from its present pitch.
    Be(PlayMode::legato);
    Off(57);
    On(81);
    Render(instrument, 11025);
    On(69);
    EXPECT_NEAR(Cents(Hertz(1, 1), 440 * std::sqrt(2)), 0, 0.2);
}

TEST_F(Hands, OneVoiceFollowsTheLastKeyThatIsDown) {
    for (const PlayMode mode : {PlayMode::mono, PlayMode::legato}) {
        SCOPED_TRACE(int(mode));
        Be(mode);
        On(60);
        Render(instrument, 4410);
        On(64);
        On(67, 3); // another channel has a voice of its own
        const std::vector<float> change = Render(instrument, 4410);
        EXPECT_LT(test::LargestStep(change), 0.15) << "no click";
        EXPECT_EQ(Notes(), (Are{64, 67}));
        const bool attacked = mode == PlayMode::mono;
        EXPECT_NEAR(vexa::Look(instrument.voices[0]).t, attacked ? 0.1 : 0.2, 1e-6);
        Off(67, 3);
        Off(60);
        On(60);
        On(72);
        Off(60); // a key that does not sound
        EXPECT_EQ(Notes(), (Are{72, -67}));
        Off(72);
        EXPECT_EQ(Notes(), (Are{64, -67})) << "back to the key still held";
        EXPECT_NEAR(Cents(Hertz(500), 329.6276), 0, 0.01);
        Off(64);
        EXPECT_EQ(Notes(), (Are{-64, -67}));
        Render(instrument, 441);
        On(65);
        EXPECT_EQ(vexa::Look(instrument.voices[0]).t, 0) << "after a release it begins anew";
        // Keys that were down at a panic, or in another mode, have no further effect.
        On(66);
        Panic();
        Off(66);
        EXPECT_EQ(Notes(), Are{});
        Off(65);
        Render(instrument, 441);

        // The pedal holds only the key during which it was pressed, also when that key returns.
        instrument.playing.pedal = 1;
        On(60);
        Control(66, 127);
        On(62);
        Off(62);
        Off(60);
        EXPECT_EQ(Notes(), Are{60});
        Control(66, 0);
        EXPECT_EQ(Notes(), Are{-60});
        On(60);
        On(62);
        Control(66, 127);
        Control(66, 0);
        Off(62);
        Off(60);
        EXPECT_EQ(Notes(), Are{-60}) << "it is up again";
        instrument.playing.pedal = 0;
        Render(instrument, 441);

        // A key without a frequency has no voice, even if it had one when it was struck.
        vexa::Tuning gaps = vexa::EqualTemperament();
        gaps[61] = 0;
        instrument.consumer.SetTuning(gaps);
        On(60);
        On(61);
        Off(60);
        EXPECT_EQ(Notes(), Are{-60});
        Off(61);
        On(62);
        On(64);
        gaps[62] = 0;
        instrument.consumer.SetTuning(gaps);
        Off(64);
        EXPECT_EQ(Notes(), Are{-64});
        Off(62);
        instrument.consumer.SetTuning(vexa::EqualTemperament());
        Panic();
        Render(instrument, 441);
    }
}

TEST_F(Hands, PedalsHoldNotesAndNothingHangs) {
    instrument.playing.pedal = 1;
    On(60);
    Control(66, 127); // holds this one alone
    On(62);
    Control(64, 64);
    Off(60);
    Off(62);
    On(62); // struck again in its own slot
    Off(62);
    EXPECT_EQ(Notes(), (Are{60, 62}));
    Control(64, 63);
    EXPECT_EQ(Notes(), (Are{60, -62}));
    Control(64, 127, 1);
    Control(66, 0);
    EXPECT_EQ(Notes(), (Are{-60, -62})) << "the pedal of another channel holds nothing here";

    Panic();
    const auto sustainOne = [this] {
        Control(64, 127);
        On(60);
        Off(60);
        EXPECT_EQ(Notes(), Are{60});
    };
    sustainOne();
    Control(66, 127);
    Control(66, 0);
    EXPECT_EQ(Notes(), Are{60}) << "the pedal that is still down holds it";
    Control(64, 0);
    EXPECT_EQ(Notes(), Are{-60});
    Panic();
    sustainOne();
    instrument.consumer.SourceEnded(0, 0);
    EXPECT_EQ(Notes(), Are{-60}) << "its source has gone";
    Panic();
    sustainOne();
    Panic();
    EXPECT_EQ(Notes(), Are{});
    sustainOne();
    instrument.consumer.SetChannel(5);
    Control(64, 0);
    EXPECT_EQ(Notes(), Are{-60}) << "another channel is listened to";
    instrument.consumer.SetChannel(-1);
    Panic();
    sustainOne();
    instrument.playing.given = false; // another sound
    instrument.playing.loads = 1;
    On(72);
    EXPECT_EQ(Notes(), (Are{-60, 72}));
    Control(64, 127);
    Off(72);
    EXPECT_EQ(Notes(), (Are{-60, -72})) << "it has no pedal";
}

TEST_F(Hands, PressureDrivesItsControllerAndAKeysOwnVoiceAlone) {
    instrument.playing.pressure = 2;
    instrument.parameters.Ax0 = 0.5F;
    instrument.parameters.Ax3 = 0.5F;
    instrument.parameters.Ax4 = 2;
    On(60);
    On(72);
    Render(instrument, 4410);
    instrument.consumer.KeyPressure(0, 72, 127, 0);
    Render(instrument, 4410);
    const auto level = [this](double hertz) {
        return test::Amplitude(Render(instrument, 22050), hertz, kRate);
    };
    EXPECT_NEAR(level(261.6256), 0.511, 0.005);
    EXPECT_NEAR(level(523.2511), 1.022, 0.005);
    EXPECT_EQ(instrument.controllers[2], 0);
    Press(127);
    EXPECT_EQ(instrument.controllers[2], 1);
    Control(121, 0);
    EXPECT_EQ(instrument.controllers[2], 0);
    Render(instrument, 4410);
    EXPECT_NEAR(level(523.2511), 0.511, 0.005) << "all is reset";
    instrument.playing.given = false;
    Press(127);
    EXPECT_EQ(instrument.controllers[2], 0);
}

TEST_F(Hands, VolumeAndExpressionAreFactorsOfTheirChannel) {
    const auto level = [this] {
        Render(instrument, 4410);
        return Peak(Render(instrument, 4410));
    };
    On(69);
    const float full = level();
    On(57, 1);
    Control(7, 0, 1);
    EXPECT_NEAR(level(), full, 1e-5);
    Control(7, 64);
    Control(11, 100);
    EXPECT_NEAR(level() / full, std::pow(64 * 100 / (127.0 * 127), 2), 1e-3);
    Control(121, 0); // expression goes back, volume stays
    EXPECT_NEAR(level() / full, std::pow(64 / 127.0, 2), 1e-3);
    std::vector<float> samples;
    for (const float volume : {0.0F, -12.0F, 6.0F, -40.0F, 6.0F}) {
        instrument.playing.volume = volume;
        const std::vector<float> more = Render(instrument, 1013);
        samples.insert(samples.end(), more.begin(), more.end());
    }
    EXPECT_LT(test::LargestStep(samples), 0.8 * 2 * M_PI * 440 / kRate);
    EXPECT_NEAR(level() / full, std::pow(64 / 127.0, 2) * 1.99526, 1e-3);
    instrument.playing.given = false;
    instrument.playing.volume = 0;
    EXPECT_GT(level(), 1.5 * full) << "as if they had never come";
    Control(11, 0);
    Control(121, 0);
    Control(7, 32);
    EXPECT_GT(level(), 1.5 * full);
    instrument.playing.given = true;
    instrument.playing.loads = 1; // another sound
    On(69);
    EXPECT_NEAR(level() / full, std::pow(32 / 127.0, 2), 1e-3) << "what came meanwhile";
}

TEST_F(Hands, WhatIsCutOffFadesWithinFiveMilliseconds) {
    for (uchar note = 60; note < 70; note++)
        On(note);
    const float loud = test::LargestStep(Render(instrument, 44100));
    Panic(true);
    EXPECT_EQ(instrument.consumer.CountVox(), 0) << "their slots are free at once";
    std::vector<float> end = Render(instrument, 110);
    EXPECT_LT(test::LargestStep(end), 1.1F * loud);
    EXPECT_GT(Peak(end), 0.1F);
    On(64); // takes a slot in the middle of its fade
    const std::vector<float> more = Render(instrument, 4410);
    end.insert(end.end(), more.begin(), more.end());
    EXPECT_LT(test::LargestStep(end), 1.1F * loud);
    Panic(true);
    Render(instrument, 221);
    EXPECT_EQ(Peak(Render(instrument, 441)), 0);
}

TEST_F(Hands, ANoteGoesOnFromWhatIsHeardOfTheOneWhoseVoiceItTakes) {
    instrument.consumer.ReduceToMaxVox(1);
    Control(7, 30, 1);
    std::vector<float> samples;
    for (int i = 0; i < 40; i++) {
        // In the same frame all sound may be cut off, and the channel may have the soft pedal down.
        if (i % 3 == 0)
            Control(i % 2 ? 120 : 123, 0, uchar((i + 1) % 2));
        On(69, uchar(i % 2), 127);
        const std::vector<float> more =
            Render(instrument, i % 5 == 0 ? 101 : std::size_t(1500 + 7 * i));
        samples.insert(samples.end(), more.begin(), more.end());
    }
    EXPECT_LT(test::LargestStep(samples), 1.5 * 2 * M_PI * 440 / kRate);
    EXPECT_GT(Peak(samples), 0.9F);
}

TEST_F(Hands, WhatIsHeardDoesNotDependOnHowItIsCut) {
    std::vector<float> heard[2];
    for (const auto& [most, mpe] : {std::pair{64, false}, {37, false}, {64, true}, {37, true}}) {
        Engine cut;
        test::MakeRich(cut);
        cut.playing.given = true;
        cut.playing.bend = 3;
        cut.playing.glide = 0.03F;
        cut.playing.smooth = 7;
        cut.playing.pressure = 2;
        if (mpe)
            cut.consumer.ExpectMpe();
        std::mt19937 random(7);
        const auto data = [&random] { return uchar(random() % 128); };
        std::vector<float>& samples = heard[most == 37 ? 1 : 0];
        for (int event = 0; event < 300; event++) {
            const uchar channel = random() % 3;
            const uchar note = 40 + random() % 40;
            cut.playing.mode = float(event / 100);
            if (event % 4 == 0)
                cut.consumer.NoteOn(channel, note, data(), 0);
            else if (event % 4 == 1)
                cut.consumer.PitchBend(channel, data(), data(), 0);
            else if (event % 4 == 2)
                cut.consumer.ControlChange(channel, event % 8 == 2 ? 7 : 11, data(), 0);
            else
                cut.consumer.KeyPressure(channel, note, data(), 0);
            if (event % 50 == 49)
                cut.consumer.AllNotesOff(true, 0);
            for (std::size_t left = 1 + random() % 400; left > 0;) {
                const std::size_t count = std::min(left, std::size_t(most));
                const std::vector<float> more = Render(cut, count);
                samples.insert(samples.end(), more.begin(), more.end());
                left -= count;
            }
        }
    }
    EXPECT_GT(Peak(heard[0]), 0.05F);
    EXPECT_TRUE(heard[0] == heard[1]);
}

} // namespace
