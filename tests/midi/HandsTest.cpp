// SPDX-License-Identifier: GPL-3.0-or-later
// What wheel, pedals, pressure and held keys do to the notes, where the sound says that they do.
#include "support/Sounds.h"
#include "support/Spectrum.h"

#include <random>

#include <gtest/gtest.h>

namespace {

using test::Peak;
using test::Render;
using vexa::Engine;
using vexa::PlayMode;

constexpr double kRate = 44100;

class Hands : public testing::Test {
  protected:
    Hands() {
        test::MakeSine(instrument);
        instrument.playing.given = true;
    }

    void On(uchar note, uchar channel = 0) { instrument.consumer.NoteOn(channel, note, 100, 0); }
    void Off(uchar note, uchar channel = 0) { instrument.consumer.NoteOff(channel, note, 0, 0); }
    void Control(uchar controller, uchar value, uchar channel = 0) {
        instrument.consumer.ControlChange(channel, controller, value, 0);
    }
    void Bend(int value, uchar channel = 0) {
        const int bits = value + 8192;
        instrument.consumer.PitchBend(channel, uchar(bits & 127), uchar(bits >> 7), 0);
    }
    void Be(PlayMode mode) { instrument.playing.mode = float(int(mode)); }

    /// The frequency of a slot's note over the next samples, Hz.
    double Hertz(std::size_t slot = 0, std::size_t samples = 1) {
        const double before = vexa::Look(instrument.voices[slot]).phasex;
        Render(instrument, samples);
        return (vexa::Look(instrument.voices[slot]).phasex - before) / 6.28318530718 * kRate /
               double(samples);
    }
    static double Cents(double hertz, double expected) {
        return 1200 * std::log2(hertz / expected);
    }
    /// The notes that sound: their number, negative once released.
    std::vector<int> Notes() const {
        std::vector<int> notes;
        for (const vexa::voice& v : instrument.voices) {
            const int note = static_cast<int>(std::lround(v.key * 127));
            if (v.state.Look().Active())
                notes.push_back(v.released ? -note : note);
        }
        return notes;
    }
    using Are = std::vector<int>;

    Engine instrument;
};

TEST_F(Hands, TheWheelBendsByTheRangeThatTheSoundOrRpn0Says) {
    instrument.playing.bend = 2;
    Bend(8191); // before any note
    On(69);
    EXPECT_NEAR(Cents(Hertz(0, 1000), 493.8833), 0, 0.01) << "from its first sample on";
    Bend(-8192);
    Render(instrument, 441);
    EXPECT_NEAR(Cents(Hertz(0, 1000), 391.9954), 0, 0.01);

    // Half of a parameter's number, another parameter, and none: their data change nothing.
    const std::vector<std::pair<int, int>> harmless[] = {{{101, 0}, {6, 24}},
                                                         {{101, 0}, {100, 1}, {6, 24}},
                                                         {{99, 0}, {98, 0}, {6, 24}},
                                                         {{101, 0}, {100, 0}, {101, 127}, {6, 24}}};
    for (const auto& events : harmless) {
        for (const auto& [controller, value] : events)
            Control(uchar(controller), uchar(value));
        Control(98, 0);
    }
    Render(instrument, 441);
    EXPECT_NEAR(Cents(Hertz(0, 1000), 391.9954), 0, 0.01);
    for (const auto& [controller, value] : {std::pair{101, 0}, {100, 0}, {6, 12}, {38, 50}})
        Control(uchar(controller), uchar(value));
    Render(instrument, 441);
    EXPECT_NEAR(Cents(Hertz(0, 1000), 440), -1250, 0.01) << "hundredths count too";

    instrument.playing.loads = 1; // another sound
    Bend(8191);
    Render(instrument, 441);
    EXPECT_NEAR(Cents(Hertz(0, 1000), 493.8833), 0, 0.01);
    instrument.playing.given = false;
    Render(instrument, 441);
    EXPECT_NEAR(Cents(Hertz(0, 1000), 440), 0, 0.01);
    Bend(-8192);
    On(69);
    EXPECT_NEAR(Cents(Hertz(0, 1000), 440), 0, 0.01);
}

TEST_F(Hands, ASweepOfTheWheelHasNoSteps) {
    instrument.playing.bend = 12;
    On(69);
    Render(instrument, 4410);
    std::vector<float> samples;
    for (int value = -8192; value < 8192; value += 128) { // as coarse as a wheel of seven bits
        Bend(value);
        const std::vector<float> more = Render(instrument, 344);
        samples.insert(samples.end(), more.begin(), more.end());
    }
    EXPECT_GT(Peak(samples), 0.9F);
    double most = 0;
    for (double hertz = 2000; hertz < 20000; hertz += 97)
        most = std::max(most, test::Amplitude(samples, hertz, kRate));
    EXPECT_LT(20 * std::log10(most), -120) << "a pitch that steps leaves -105";
}

TEST_F(Hands, AControllerThatIsSmoothedHasNoSteps) {
    instrument.parameters.Ax3 = 1;
    instrument.parameters.Ax4 = 1;
    const auto loudestAbove2000 = [this] {
        std::vector<float> samples;
        for (int value = 0; value < 128; value++) {
            Control(1, uchar(value));
            const std::vector<float> more = Render(instrument, 344);
            samples.insert(samples.end(), more.begin(), more.end());
        }
        double most = 0;
        for (double hertz = 2000; hertz < 20000; hertz += 97)
            most = std::max(most, test::Amplitude(samples, hertz, kRate));
        return 20 * std::log10(most);
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
    EXPECT_NEAR(Cents(Hertz(1), 220 * std::exp2(1 / 22050.0)), 0, 1e-4);
    Render(instrument, 11025 - 2);
    EXPECT_NEAR(Cents(Hertz(1), 220 * std::sqrt(2)), 0, 1e-4);
    Render(instrument, 11024);
    EXPECT_NEAR(Cents(Hertz(1), 440), 0, 1e-6);

    // On the way to another note the one voice comes from where it is.
    Be(PlayMode::legato);
    Off(57);
    On(81);
    Render(instrument, 11025);
    On(69);
    EXPECT_NEAR(Cents(Hertz(1), 440 * std::sqrt(2)), 0, 0.2);
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
        EXPECT_NEAR(Cents(Hertz(0, 500), 329.6276), 0, 0.01);
        Off(64);
        EXPECT_EQ(Notes(), (Are{-64, -67}));
        Render(instrument, 441);
        On(65);
        EXPECT_EQ(vexa::Look(instrument.voices[0]).t, 0) << "after a release it begins anew";
        // Keys that were down at a panic, or in another mode, leave nothing behind.
        On(66);
        instrument.consumer.AllNotesOff(false, 0);
        Off(66);
        EXPECT_EQ(Notes(), Are{});
        Off(65);
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

    instrument.consumer.AllNotesOff(false, 0);
    const auto sustainOne = [this] {
        Control(64, 127);
        On(60);
        Off(60);
        EXPECT_EQ(Notes(), Are{60});
    };
    sustainOne();
    instrument.consumer.SourceEnded(0, 0);
    EXPECT_EQ(Notes(), Are{-60}) << "its source has gone";
    instrument.consumer.AllNotesOff(false, 0);
    sustainOne();
    instrument.consumer.AllNotesOff(false, 0);
    EXPECT_EQ(Notes(), Are{});
    sustainOne();
    instrument.consumer.SetChannel(5);
    Control(64, 0);
    EXPECT_EQ(Notes(), Are{-60}) << "another channel is listened to";
    instrument.consumer.SetChannel(-1);
    instrument.consumer.AllNotesOff(false, 0);
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
    instrument.consumer.ChannelPressure(0, 127, 0);
    EXPECT_EQ(instrument.controllers[2], 1);
    Control(121, 0);
    EXPECT_EQ(instrument.controllers[2], 0);
    Render(instrument, 4410);
    EXPECT_NEAR(level(523.2511), 0.511, 0.005) << "all is reset";
    instrument.playing.given = false;
    instrument.consumer.ChannelPressure(0, 127, 0);
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
    instrument.playing.volume = 6;
    EXPECT_NEAR(level() / full, std::pow(64 / 127.0, 2) * 1.99526, 1e-3);
    instrument.playing.given = false;
    instrument.playing.volume = 0;
    EXPECT_GT(level(), 1.5 * full) << "as if they had never come";
}

TEST_F(Hands, WhatIsCutOffFadesWithinFiveMilliseconds) {
    for (uchar note = 60; note < 70; note++)
        On(note);
    const float loud = test::LargestStep(Render(instrument, 44100));
    instrument.consumer.AllNotesOff(true, 0);
    EXPECT_EQ(instrument.consumer.CountVox(), 0) << "their slots are free at once";
    std::vector<float> end = Render(instrument, 110);
    EXPECT_LT(test::LargestStep(end), 1.1F * loud);
    EXPECT_GT(Peak(end), 0.1F);
    On(64); // takes a slot in the middle of its fade
    const std::vector<float> more = Render(instrument, 4410);
    end.insert(end.end(), more.begin(), more.end());
    EXPECT_LT(test::LargestStep(end), 1.1F * loud);
    instrument.consumer.AllNotesOff(true, 0);
    Render(instrument, 221);
    EXPECT_EQ(Peak(Render(instrument, 441)), 0);
}

TEST_F(Hands, WhatIsHeardDoesNotDependOnHowItIsCut) {
    std::vector<float> heard[2];
    for (const std::size_t most : {64, 37}) {
        Engine cut;
        test::MakeRich(cut);
        cut.playing.given = true;
        cut.playing.bend = 3;
        cut.playing.glide = 0.03F;
        cut.playing.smooth = 7;
        cut.playing.pressure = 2;
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
                const std::size_t count = std::min(left, most);
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
