// SPDX-License-Identifier: GPL-3.0-or-later
// Catches faults in the handling of MPE, where each note has a channel of its own.
#include "midi/HandsStage.h"
#include "support/Spectrum.h"

#include <gtest/gtest.h>

namespace {

using test::kRate;
using test::Render;

class Mpe : public test::HandsStage {
  protected:
    Mpe() { instrument.playing.given = true; }

    void Parameter(int number, int value, uchar channel) {
        Controls({{101, 0}, {100, number}, {6, value}}, channel);
    }
    void Zone(uchar master, int members) { Parameter(6, members, master); }

    /// Expects each slot's note to be that many cents above a key.
    void ExpectCents(const std::vector<int>& keys, const std::vector<double>& expected) {
        Render(instrument, 882);
        const std::vector<double> hertz = Hertz(keys.size(), 2000);
        for (std::size_t i = 0; i < keys.size(); i++)
            EXPECT_NEAR(Cents(hertz[i], 440 * std::exp2((keys[i] - 69) / 12.0)), expected[i], 0.02)
                << keys[i];
    }
    std::vector<double> Levels(const std::vector<double>& hertz) {
        Render(instrument, 4410);
        const std::vector<float> samples = Render(instrument, 44100);
        std::vector<double> levels;
        for (const double h : hertz)
            levels.push_back(test::Amplitude(samples, h, kRate));
        return levels;
    }
    int Held() const { return instrument.consumer.CountHeld(); }
};

TEST_F(Mpe, EachNoteBendsByItsOwnChannelAndAllByTheMaster) {
    Zone(0, 15);
    Bend(8191, 1); // before the note
    On(60, 1);
    On(64, 2);
    On(67, 3);
    Bend(-1024, 2);
    Bend(43, 3);
    const auto part = [](int value) { return value / (value > 0 ? 8191.0 : 8192.0); };
    ExpectCents({60, 64, 67}, {4800, 4800 * part(-1024), 4800 * part(43)});
    Bend(8191, 0);
    ExpectCents({60, 64, 67}, {5000, 4800 * part(-1024) + 200, 4800 * part(43) + 200});
    instrument.playing.bend = 12;
    Bend(-8192, 0);
    Parameter(0, 24, 2); // one member sets it for all
    ExpectCents({60, 64, 67}, {1200, 2400 * part(-1024) - 1200, 2400 * part(43) - 1200});
    Control(121, 0, 0);
    ExpectCents({60, 64, 67}, {0, 0, 0});

    // A released note follows its channel until the channel has another note.
    instrument.envelopes[2].Points().back().t = 100;
    instrument.envelopes[2].ProduceCalcPts();
    Off(60, 1);
    Bend(8191, 1);
    ExpectCents({60}, {2400});
    On(72, 1);
    Bend(0, 1);
    ExpectCents({60, 64, 67, 72}, {2400, 0, 0, 0});
    instrument.playing.pedal = true;
    Control(64, 127, 0); // holds it as well
    Off(64, 2);
    On(65, 2);
    Bend(8191, 2);
    ExpectCents({60, 64, 67, 72, 65}, {2400, 0, 0, 0, 2400});
}

TEST_F(Mpe, PressureAndTimbreAreThoseOfTheNote) {
    instrument.parameters.Ax0 = 0;
    instrument.parameters.Ax3 = 1;
    instrument.playing.pressure = 2;
    Zone(15, 14);
    for (const bool timbre : {false, true}) {
        instrument.parameters.Ax4 = timbre ? 74 : 2;
        const auto set = [&](uchar channel, uchar value) {
            timbre ? Control(74, value, channel) : Press(value, channel);
        };
        set(14, 127); // before the note
        On(69, 14);
        On(81, 13);
        EXPECT_NEAR(Levels({440})[0], 1, 0.03);
        EXPECT_NEAR(Levels({880})[0], timbre ? 64 / 127.0 : 0, 0.03) << "before there is any";
        set(14, 32);
        set(13, 96);
        set(12, 1);
        EXPECT_NEAR(Levels({440})[0], 32 / 127.0, 0.03);
        EXPECT_NEAR(Levels({880})[0], 96 / 127.0, 0.03);
        // Outside the zone it applies to all notes, but these have values of their own.
        set(0, 127);
        EXPECT_NEAR(Levels({440})[0], 32 / 127.0, 0.03);
        Zone(15, 14);
    }
}

TEST_F(Mpe, AKeyOfAnotherChannelIsAnotherNote) {
    Zone(0, 7);
    Zone(15, 7);
    On(60, 1);
    On(60, 2);
    On(60, 14);
    On(60, 1); // struck again
    EXPECT_EQ(Held(), 3);
    Off(60, 2);
    EXPECT_EQ(Held(), 2);
    instrument.consumer.SetChannel(15);
    On(62, 13);
    On(62, 3); // of the other zone
    EXPECT_EQ(Held(), 3) << "a master's channel is its zone";
    instrument.consumer.SetChannel(-1);

    instrument.playing.pedal = true;
    On(60, 1);
    On(64, 3);
    Control(64, 127, 0);
    Off(60, 1);
    Off(64, 3);
    Off(62, 13);
    EXPECT_EQ(Held(), 3) << "the pedal is that of its zone";
    Control(64, 0, 0);
    EXPECT_EQ(Held(), 1);
    Off(60, 14);

    Panic();
    Be(vexa::PlayMode::mono);
    On(60, 1);
    On(60, 2);
    On(64, 3);
    On(70, 14);
    EXPECT_EQ(Held(), 2) << "one of each zone";
    Off(64, 3);
    Bend(8191, 2);
    ExpectCents({60}, {4800});
    Be(vexa::PlayMode::legato);
    Bend(4096, 4); // before the note
    On(62, 4);
    ExpectCents({62}, {4800 * 4096 / 8191.0});

    // The volume is that of the key's channel, and is reached within 10 ms.
    Panic();
    Render(instrument, 441);
    On(69, 5);
    Control(7, 64, 6);
    Render(instrument, 4410);
    On(57, 6);
    const std::vector<float> change = Render(instrument, 4410);
    EXPECT_LT(test::LargestStep(change), 0.08);
    EXPECT_GT(test::Peak({change.data(), 110}), 0.8F);
    EXPECT_NEAR(test::Peak({change.data() + 441, 3969}), std::pow(64 / 127.0, 2), 0.01);
}

TEST_F(Mpe, AConfigurationEndsTheNotesOfTheChannelsThatChange) {
    for (uchar channel = 0; channel < 16; channel++)
        On(uchar(40 + channel), channel);
    Zone(0, 5);
    EXPECT_EQ(Held(), 10) << "0 to 5 are silenced";
    Zone(15, 12); // takes 3, 4 and 5 over
    EXPECT_EQ(Held(), 0);
    On(60, 2);
    On(60, 3);
    EXPECT_EQ(Held(), 2);
    Zone(7, 3);         // no master
    Zone(15, 16);       // too many
    Control(99, 0, 15); // not registered
    Control(98, 6, 15);
    Control(6, 0, 15);
    Control(101, 0, 15); // half of it
    Control(6, 0, 15);
    EXPECT_EQ(Held(), 2);
    Zone(15, 0);
    EXPECT_EQ(Held(), 1) << "2 is the lower zone's";
    On(60, 4);
    On(60, 5);
    EXPECT_EQ(Held(), 2) << "of channels of no zone a key is one note";
}

TEST_F(Mpe, IsThereWhereTheSoundSaysHowItIsPlayedOrItWasAskedFor) {
    instrument.playing.given = false;
    Zone(0, 15);
    On(69, 1);
    Bend(8191, 1);
    On(69, 2);
    EXPECT_EQ(Held(), 1);
    ExpectCents({69}, {0});
    Panic();

    // A controller's configuration stays valid after a sound without one was loaded and replaced.
    const auto load = [this](bool given) {
        instrument.playing.given = given;
        instrument.playing.loads = instrument.playing.loads + 1;
    };
    Parameter(0, 12, 1);
    load(false);
    Bend(0, 1);
    On(72, 1);
    load(true);
    Off(72, 1);
    EXPECT_EQ(Held(), 0);
    Panic();
    On(69, 1);
    Bend(8191, 1);
    ExpectCents({69}, {1200});
    load(false);
    Off(69, 1);
    EXPECT_EQ(Held(), 0);
    Panic();

    instrument.consumer.ExpectMpe();
    On(69, 1);
    Bend(8191, 1);
    On(69, 2);
    EXPECT_EQ(Held(), 2);
    ExpectCents({69, 69}, {4800, 0});
}

} // namespace
