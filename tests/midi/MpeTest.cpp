// SPDX-License-Identifier: GPL-3.0-or-later
// Notes with channels of their own, as MPE has them.
#include "support/Sounds.h"
#include "support/Spectrum.h"

#include <gtest/gtest.h>

namespace {

using test::Render;

constexpr double kRate = 44100;

class Mpe : public testing::Test {
  protected:
    Mpe() {
        test::MakeSine(instrument);
        instrument.playing.given = true;
    }

    void On(uchar channel, uchar note) { instrument.consumer.NoteOn(channel, note, 100, 0); }
    void Off(uchar channel, uchar note) { instrument.consumer.NoteOff(channel, note, 0, 0); }
    void Control(uchar channel, uchar controller, uchar value) {
        instrument.consumer.ControlChange(channel, controller, value, 0);
    }
    void Press(uchar channel, uchar value) {
        instrument.consumer.ChannelPressure(channel, value, 0);
    }
    void Bend(uchar channel, int value) {
        const int bits = value + 8192;
        instrument.consumer.PitchBend(channel, uchar(bits & 127), uchar(bits >> 7), 0);
    }
    void Parameter(uchar channel, uchar number, uchar value) {
        Control(channel, 101, 0);
        Control(channel, 100, number);
        Control(channel, 6, value);
    }
    void Zone(uchar master, uchar members) { Parameter(master, 6, members); }

    /// By how many cents the pitch of each slot's note is above a key, over the next 2000 samples.
    std::vector<double> Cents(const std::vector<int>& keys) {
        Render(instrument, 882);
        std::vector<double> cents;
        for (std::size_t i = 0; i < keys.size(); i++)
            cents.push_back(-vexa::Look(instrument.voices[i]).phasex);
        Render(instrument, 2000);
        for (std::size_t i = 0; i < keys.size(); i++) {
            const double turns =
                (cents[i] + vexa::Look(instrument.voices[i]).phasex) / (2 * M_PI) / 2000 * kRate;
            cents[i] = 1200 * std::log2(turns / 440) - 100 * (keys[i] - 69);
        }
        return cents;
    }
    void ExpectCents(const std::vector<int>& keys, const std::vector<double>& expected) {
        const std::vector<double> cents = Cents(keys);
        for (std::size_t i = 0; i < keys.size(); i++)
            EXPECT_NEAR(cents[i], expected[i], 0.02) << keys[i];
    }
    std::vector<double> Levels(const std::vector<double>& hertz) {
        Render(instrument, 4410);
        const std::vector<float> samples = Render(instrument, 44100);
        std::vector<double> levels;
        for (const double h : hertz)
            levels.push_back(test::Amplitude(samples, h, kRate));
        return levels;
    }
    int Held() const {
        return int(std::ranges::count_if(instrument.voices, [](const vexa::voice& v) {
            return v.state.Look().Active() && !v.released;
        }));
    }

    vexa::Engine instrument;
};

TEST_F(Mpe, EachNoteBendsByItsOwnChannelAndAllByTheMaster) {
    Zone(0, 15);
    Bend(1, 8191); // before the note
    On(1, 60);
    On(2, 64);
    On(3, 67);
    Bend(2, -1024);
    Bend(3, 43);
    const auto part = [](int value) { return value / (value > 0 ? 8191.0 : 8192.0); };
    ExpectCents({60, 64, 67}, {4800, 4800 * part(-1024), 4800 * part(43)});
    Bend(0, 8191);
    ExpectCents({60, 64, 67}, {5000, 4800 * part(-1024) + 200, 4800 * part(43) + 200});
    instrument.playing.bend = 12;
    Bend(0, -8192);
    Parameter(2, 0, 24); // one member tells it for all
    ExpectCents({60, 64, 67}, {1200, 2400 * part(-1024) - 1200, 2400 * part(43) - 1200});
    Control(0, 121, 0);
    ExpectCents({60, 64, 67}, {0, 0, 0});

    // A note that was let go goes on with its channel until that has another one.
    instrument.envelopes[2].Points().back().t = 100;
    instrument.envelopes[2].ProduceCalcPts();
    Off(1, 60);
    Bend(1, 8191);
    ExpectCents({60}, {2400});
    On(1, 72);
    Bend(1, 0);
    ExpectCents({60, 64, 67, 72}, {2400, 0, 0, 0});
}

TEST_F(Mpe, PressureAndTimbreAreThoseOfTheNote) {
    instrument.parameters.Ax0 = 0;
    instrument.parameters.Ax3 = 1;
    instrument.playing.pressure = 2;
    Zone(15, 14);
    for (const bool timbre : {false, true}) {
        instrument.parameters.Ax4 = timbre ? 74 : 2;
        const auto set = [&](uchar channel, uchar value) {
            timbre ? Control(channel, 74, value) : Press(channel, value);
        };
        set(14, 127); // before the note
        On(14, 69);
        On(13, 81);
        EXPECT_NEAR(Levels({440})[0], 1, 0.03);
        EXPECT_NEAR(Levels({880})[0], timbre ? 64 / 127.0 : 0, 0.03) << "before there is any";
        set(14, 32);
        set(13, 96);
        set(12, 1);
        EXPECT_NEAR(Levels({440})[0], 32 / 127.0, 0.03);
        EXPECT_NEAR(Levels({880})[0], 96 / 127.0, 0.03);
        // Outside of the zone it is everybody's, of whom these have their own.
        set(0, 127);
        EXPECT_NEAR(Levels({440})[0], 32 / 127.0, 0.03);
        Zone(15, 14);
    }
}

TEST_F(Mpe, AKeyOfAnotherChannelIsAnotherNote) {
    Zone(0, 7);
    Zone(15, 7);
    On(1, 60);
    On(2, 60);
    On(14, 60);
    On(1, 60); // struck again
    EXPECT_EQ(Held(), 3);
    Off(2, 60);
    EXPECT_EQ(Held(), 2);
    instrument.consumer.SetChannel(15);
    On(13, 62);
    On(3, 62); // of the other zone
    EXPECT_EQ(Held(), 3) << "a master's channel is its zone";
    instrument.consumer.SetChannel(-1);

    instrument.playing.pedal = true;
    On(1, 60);
    On(3, 64);
    Control(0, 64, 127);
    Off(1, 60);
    Off(3, 64);
    Off(13, 62);
    EXPECT_EQ(Held(), 3) << "the pedal is that of its zone";
    Control(0, 64, 0);
    EXPECT_EQ(Held(), 1);
    Off(14, 60);

    instrument.consumer.AllNotesOff(false, 0);
    instrument.playing.mode = float(int(vexa::PlayMode::mono));
    On(1, 60);
    On(2, 60);
    On(3, 64);
    On(14, 70);
    EXPECT_EQ(Held(), 2) << "one of each zone";
    Off(3, 64);
    Bend(2, 8191);
    ExpectCents({60}, {4800});
    instrument.playing.mode = float(int(vexa::PlayMode::legato));
    Bend(4, 4096); // before the note
    On(4, 62);
    ExpectCents({62}, {4800 * 4096 / 8191.0});
}

TEST_F(Mpe, AConfigurationEndsTheNotesOfTheChannelsThatChange) {
    for (uchar channel = 0; channel < 16; channel++)
        On(channel, uchar(40 + channel));
    Zone(0, 5);
    EXPECT_EQ(Held(), 10) << "0 to 5 are silenced";
    Zone(15, 12); // takes 3, 4 and 5 over
    EXPECT_EQ(Held(), 0);
    On(2, 60);
    On(3, 60);
    EXPECT_EQ(Held(), 2);
    Zone(7, 3);         // no master
    Zone(15, 16);       // too many
    Control(15, 99, 0); // not registered
    Control(15, 98, 6);
    Control(15, 6, 0);
    Control(15, 101, 0); // half of it
    Control(15, 6, 0);
    EXPECT_EQ(Held(), 2);
    Zone(15, 0);
    EXPECT_EQ(Held(), 1) << "2 is the lower zone's";
    On(4, 60);
    On(5, 60);
    EXPECT_EQ(Held(), 2) << "of channels of no zone a key is one note";
}

TEST_F(Mpe, IsThereWhereTheSoundSaysHowItIsPlayedOrItWasAskedFor) {
    instrument.playing.given = false;
    Zone(0, 15);
    On(1, 69);
    Bend(1, 8191);
    On(2, 69);
    EXPECT_EQ(Held(), 1);
    ExpectCents({69}, {0});
    instrument.consumer.AllNotesOff(false, 0);
    instrument.consumer.ExpectMpe();
    On(1, 69);
    Bend(1, 8191);
    On(2, 69);
    EXPECT_EQ(Held(), 2);
    ExpectCents({69, 69}, {4800, 0});
}

} // namespace
