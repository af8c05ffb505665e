// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Sounds.h"
#include "support/Spectrum.h"
#include "support/TemporaryFolder.h"
#include "tuning/Keymap.h"
#include "tuning/Scale.h"
#include "tuning/TuningChoice.h"

#include <complex>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using vexa::kKeys;
using vexa::ParseKeymap;
using vexa::ParseScale;
using vexa::Tuning;

constexpr double kRate = 44100;

double CentsBetween(double hertz, double other) {
    return 1200 * std::log2(hertz / other);
}

/// Returns the difference in cents between the pitch of the key and the expected frequency, from
/// the phase between two stretches of at least forty periods or half a second; NaN if the note is
/// not found.
double CentsOff(const Tuning& tuning, int key, double hertz) {
    vexa::Engine instrument;
    test::MakeSine(instrument);
    instrument.consumer.SetTuning(tuning);
    instrument.consumer.NoteOn(0, uchar(key), 100, 0);
    const auto window = static_cast<std::size_t>(kRate * std::max(0.5, 40 / hertz));
    test::Render(instrument, window);
    const std::vector<float> samples = test::Render(instrument, window * 3 / 2);
    const std::size_t lag = window / 2;
    const auto first = test::Component(std::span(samples).first(window), hertz, kRate);
    const auto second = test::Component(std::span(samples).subspan(lag, window), hertz, kRate);
    if (std::abs(first) < 0.1)
        return std::nan("");
    const double phase =
        std::arg(second / first / std::polar(1.0, 2 * M_PI * hertz * double(lag) / kRate));
    return CentsBetween(hertz + phase * kRate / (2 * M_PI * double(lag)), hertz);
}

/// Plays and measures all audible keys, and checks the frequencies of the others.
void ExpectTuned(const Tuning& tuning, const std::function<double(int key)>& expected) {
    int measured = 0;
    for (int key = 0; key < kKeys; key++) {
        const double hertz = expected(key);
        const double found = tuning[std::size_t(key)];
        if (hertz < vexa::kLeastHertz || hertz > vexa::kMostHertz) {
            EXPECT_EQ(found, 0) << "key " << key << " is left out";
            continue;
        }
        EXPECT_LT(std::abs(CentsBetween(found, hertz)), 0.001) << "key " << key;
        if (hertz < 5 || hertz > 20000)
            continue;
        measured++;
        // Written so that NaN is a failure.
        EXPECT_TRUE(std::abs(CentsOff(tuning, key, hertz)) < 0.01) << "key " << key;
    }
    EXPECT_GT(measured, 10);
}

TEST(Tuning, WithoutAChoiceFrequenciesAreThoseOfSinglePrecisionThroughout) {
    const Tuning tuning = *vexa::ReadTuning({});
    const auto semitone = static_cast<float>(std::log(2.0) / 12.0);
    for (int key = 0; key < kKeys; key++)
        EXPECT_EQ(tuning[std::size_t(key)], std::exp(semitone * float(key - 69)) * 440.0F) << key;
    ExpectTuned(*vexa::ReadTuning({{}, {}, 415.3}),
                [](int key) { return 415.3 * std::exp2((key - 69) / 12.0); });
}

TEST(Tuning, NineteenEqualStepsHaveA4AtItsPlace) {
    const test::TemporaryFolder folder;
    std::string text = "! 19.scl\n19 equal\n 19\n!\n";
    for (int step = 1; step < 19; step++)
        text += std::to_string(1200.0 * step / 19) + "\n";
    const auto file = folder.Write("19.scl", text + "2/1\n");
    const auto nineteen = [](double hertz) {
        return [hertz](int key) { return hertz * std::exp2((key - 69) / 19.0); };
    };
    ExpectTuned(*vexa::ReadTuning({file, {}, {}}), nineteen(440));
    ExpectTuned(*vexa::ReadTuning({file, {}, 432}), nineteen(432));
}

TEST(Tuning, ARandomScaleOnARandomMapIsWhatItsRatiosSay) {
    std::mt19937 random(16);
    const auto draw = [&random](int low, int high) {
        return std::uniform_int_distribution(low, high)(random);
    };
    for (int round = 0; round < 4; round++) {
        const int notes = draw(5, 40);
        std::vector<double> ratios{1};
        std::string scl = "! a comment\nrandom\n" + std::to_string(notes) + "\n";
        for (int note = 1; note <= notes; note++) {
            const int lower = draw(100, 999);
            const int upper = lower + lower * note / notes;
            const int cents = draw(-50, 50) + 1200 * note / notes;
            ratios.push_back(note % 2 ? double(upper) / lower : std::pow(2, cents / 1200.0));
            scl += note % 2 ? std::to_string(upper) + "/" + std::to_string(lower) + " r\n"
                            : std::to_string(cents) + ". cents\n! between\n";
        }

        const int size = draw(5, 24);
        std::vector<int> pattern;
        std::string entries;
        for (int entry = 0; entry < size; entry++) {
            const bool none = entry > 0 && draw(0, 4) == 0;
            pattern.push_back(none ? -1 : draw(0, notes));
            entries += (none ? "x" : std::to_string(pattern.back())) + '\n';
        }
        const int first = draw(0, 20);
        const int last = draw(100, 127);
        const int middle = draw(30, 90);
        const double hertz = draw(200, 500) + 0.25;
        const int octave = draw(notes / 2, notes);
        std::string kbm = "! a map\n" + std::to_string(size) + "\n" + std::to_string(first) + "\n" +
                          std::to_string(last) + "\n" + std::to_string(middle) + "\n" +
                          std::to_string(middle - size) + "\n" + std::to_string(hertz) + " ! Hz\n" +
                          std::to_string(octave) + "\n" + entries;

        const auto scale = ParseScale(scl, "s");
        const auto keymap = ParseKeymap(kbm, "k");
        ASSERT_TRUE(scale) << scale.Fault().text << scl;
        ASSERT_TRUE(keymap) << keymap.Fault().text << kbm;
        SCOPED_TRACE(scl + kbm);
        ExpectTuned(vexa::TuningOf(*scale, *keymap), [&](int key) {
            // The reference is one pattern below the middle.
            double ratio = ratios[std::size_t(octave)] / ratios[std::size_t(pattern[0])];
            int entry = key - middle;
            for (; entry < 0; entry += size)
                ratio /= ratios[std::size_t(octave)];
            for (; entry >= size; entry -= size)
                ratio *= ratios[std::size_t(octave)];
            const int degree = pattern[std::size_t(entry)];
            return key < first || key > last || degree < 0
                       ? 0
                       : hertz * ratio * ratios[std::size_t(degree)];
        });
    }
}

TEST(Tuning, AKeyThatIsLeftOutTakesNobodysVoice) {
    vexa::Engine instrument;
    test::MakeSine(instrument);
    instrument.consumer.ReduceToMaxVox(1);
    const auto whiteKeys = ParseKeymap("12\n0\n127\n60\n69\n440\n12\n0\nx\n2\nx\n4\n5\nx\n7\nx\n9\n"
                                       "x\n11\n",
                                       "k");
    ASSERT_TRUE(whiteKeys);
    instrument.consumer.SetTuning(vexa::TuningOf({}, *whiteKeys));
    instrument.consumer.NoteOn(0, 60, 100, 0);
    instrument.consumer.NoteOn(0, 61, 100, 0);
    instrument.consumer.NoteOff(0, 61, 0, 0);
    EXPECT_EQ(instrument.consumer.CountVox(), 1);
    EXPECT_EQ(instrument.consumer.StolenVox(), 0);
    EXPECT_NEAR(CentsBetween(instrument.voices[0].freq, 261.6255653), 0, 0.001);
}

TEST(Tuning, TheLowestAndTheHighestThatCanBePlayedAreFinite) {
    for (const double hertz : {vexa::kLeastHertz, vexa::kMostHertz}) {
        Tuning tuning{};
        tuning[60] = float(hertz);
        for (const int oversample : {1, 16}) {
            vexa::Engine instrument;
            test::MakeSine(instrument);
            instrument.consumer.SetTuning(tuning);
            instrument.renderer.SetSampleRate(kRate, oversample);
            instrument.consumer.NoteOn(0, 60, 100, 0);
            const float peak = test::Peak(test::Render(instrument, 100000));
            EXPECT_TRUE(peak > 0 && peak < 3) << hertz << " Hz, " << oversample << " x: " << peak;
        }
    }
    // With an octave per key, the ends of the keyboard lie outside the playable range.
    const auto octaves = ParseScale("octaves\n1\n2\n", "s");
    ASSERT_TRUE(octaves);
    ExpectTuned(vexa::TuningOf(*octaves, {}), [](int key) { return 440 * std::exp2(key - 69); });
}

TEST(Scale, ReadsAllFormsOfAPitch) {
    const auto scale =
        ParseScale("\xEF\xBB\xBF! BOM\r\n\r\n 9 notes\r\n3/2\r\n\t4 / 3 fourth\r\n!\r\n"
                   "5\r\n408.\r\n-5.0\r\n.5\r\n100.0 cents\r\n\r\n5/4! third\r\n"
                   "4294967296/2147483648",
                   "s");
    ASSERT_TRUE(scale) << scale.Fault().text;
    const double expected[] = {701.9550009, 498.0449991, 2786.3137139, 408, -5,
                               0.5,         100,         386.3137139,  1200};
    ASSERT_EQ(scale->cents.size(), std::size(expected));
    for (std::size_t i = 0; i < std::size(expected); i++)
        EXPECT_NEAR(scale->cents[i], expected[i], 1e-6) << i;
    EXPECT_EQ(scale->Cents(0), 0);
    EXPECT_NEAR(scale->Cents(-1), 386.3137139 - 1200, 1e-6);
    EXPECT_NEAR(scale->Cents(19), 2400 + 701.9550009, 1e-6);
    EXPECT_TRUE(ParseScale("text after the pitches\n1\n2/1\nThe end.\n", "s"));
}

TEST(Scale, TellsTheLineAndWhatWasExpectedThere) {
    const std::string many = "d\n10000\n";
    const struct {
        std::string text;
        const char* fault;
    } rows[] = {
        {"", "s:1: expected the scale's description, but the file ends here"},
        {"! c\nd\n", "s:2: expected the number of notes, from 1 to 4096, but the file ends here"},
        {"d\n0\n", "s:2: expected the number of notes, from 1 to 4096, not \"0\""},
        {many, "s:2: expected the number of notes, from 1 to 4096, not \"10000\""},
        {"d\n-1\n", "s:2: expected the number of notes"},
        {"d\n2.5\n", "s:2: expected the number of notes"},
        {"d\n99999999999999999999\n", "s:2: expected the number of notes"},
        {"d\n2\n3/2\n", "s:3: expected pitch 2 of 2, but the file ends here"},
        {"d\n1\n2/1\n3/1\n", "s:4: expected no pitch after number 1, not \"3/1\""},
        {"d\n1\n! c\n0/1\n",
         "s:4: expected a ratio above 0 of numbers that are not 0, not \"0/1\""},
        {"! c\rd\r1\r\r\n0\r", "s:5: expected a ratio above 0"},
        {"d\n1\n1/0\n", "s:3: expected a ratio above 0"},
        {"d\n1\n-3/2\n", "s:3: expected a ratio above 0"},
        {"d\n1\n3/-2\n", "s:3: expected a ratio above 0"},
        {"d\n1\n-3/-2\n", "s:3: expected a ratio above 0"},
        {"d\n1\n3/\n", "s:3: expected a ratio above 0"},
        {"d\n1\n3/x\n", "s:3: expected a ratio above 0"},
        {"d\n1\n3/2/1\n", "s:3: expected a pitch"},
        {"d\n1\n3/2.5\n", "s:3: expected a pitch"},
        {"d\n1\n700,5\n", "s:3: expected a pitch"},
        {"d\n1\n1.2.3\n", "s:3: expected a pitch"},
        {"d\n1\n.\n", "s:3: expected a pitch"},
        {"d\n1\nnan\n", "s:3: expected a pitch"},
        {"d\n1\ninf.\n", "s:3: expected a pitch"},
        {"d\n1\n1000001.0\n", "s:3: expected cents from -1000000 to 1000000"},
        {"d\n1\n1" + std::string(400, '0') + "\n", "s:3: expected a ratio above 0"},
        {"d\n1\n1" + std::string(400, '0') + ".\n", "s:3: expected cents from"},
        {"d\n1\n\x1B[31m\n", "s:3: expected a pitch: cents with a period (701.955) or a ratio "
                             "(3/2), not \"?[31m\""},
    };
    for (const auto& row : rows) {
        const auto scale = ParseScale(row.text, "s");
        EXPECT_THAT(scale ? "read" : scale.Fault().text, testing::StartsWith(row.fault));
    }
}

TEST(Keymap, ReadsShortAndLinearMaps) {
    const auto keymap =
        ParseKeymap("! k\n4 ! size\n10\n20\n12\n13\n100.5\n7\n0\n3\nX\n\n\x1A", "k");
    ASSERT_TRUE(keymap) << keymap.Fault().text;
    const Tuning tuning = vexa::TuningOf({}, *keymap);
    EXPECT_EQ(tuning[9], 0);
    EXPECT_EQ(tuning[14], 0) << "x";
    EXPECT_EQ(tuning[15], 0) << "missing at the end";
    EXPECT_FLOAT_EQ(tuning[13], 100.5F);
    EXPECT_NEAR(CentsBetween(tuning[20], 100.5), 1400 - 300, 0.001);
    EXPECT_EQ(tuning[21], 0);

    const auto linear = ParseKeymap("0\n0\n127\n60\n60\n260\n0\n", "k");
    ASSERT_TRUE(linear) << linear.Fault().text;
    EXPECT_NEAR(CentsBetween(vexa::TuningOf({}, *linear)[72], 520), 0, 0.001);
}

TEST(Keymap, TellsTheLineAndWhatWasExpectedThere) {
    const struct {
        const char* text;
        const char* fault;
    } rows[] = {
        {"", "k:1: expected the size of the map, from 0 to 128, but the file ends here"},
        {"129\n", "k:1: expected the size of the map, from 0 to 128, not \"129\""},
        {"0\n-1\n", "k:2: expected the first key, from 0 to 127, not \"-1\""},
        {"0\n0\n128\n", "k:3: expected the last key, from 0 to 127, not \"128\""},
        {"0\n20\n19\n", "k:3: expected a last key that is not below the first, not \"19\""},
        {"0\n0\n127\n200\n", "k:4: expected the middle key"},
        {"0\n0\n127\n60\n1e9\n", "k:5: expected the reference key"},
        {"0\n0\n127\n60\n69\n0\n", "k:6: expected the reference's frequency, from 0.1 to 100000"},
        {"0\n0\n127\n60\n69\n-440\n", "k:6: expected the reference's frequency"},
        {"0\n0\n127\n60\n69\nnan\n", "k:6: expected the reference's frequency"},
        {"0\n0\n127\n60\n69\ninf\n", "k:6: expected the reference's frequency"},
        {"0\n0\n127\n60\n69\n440\nx\n", "k:7: expected the degree of the octave"},
        {"2\n0\n127\n60\n69\n440\n12\n0\n5000\n", "k:9: expected a degree from 0 to 4096, or x"},
        {"2\n0\n127\n60\n69\n440\n12\n0\nxx\n", "k:9: expected a degree from 0 to 4096, or x"},
        {"1\n0\n127\n60\n69\n440\n12\n0\n1\n", "k:9: expected no entry after number 1, not \"1\""},
        {"! c\n2\n0\n127\n60\n69\n440\n12\n0\nx\n",
         "k:6: expected a reference key that the map does not leave out, not 69"},
    };
    for (const auto& row : rows) {
        const auto keymap = ParseKeymap(row.text, "k");
        EXPECT_THAT(keymap ? "read" : keymap.Fault().text, testing::StartsWith(row.fault));
    }
}

TEST(Tuning, SaysWhatCannotBeTunedOrHeard) {
    const test::TemporaryFolder folder;
    const auto fault = [](const vexa::TuningChoice& choice) {
        const auto tuning = vexa::ReadTuning(choice);
        return tuning ? "none" : tuning.Fault().text;
    };
    const auto without = folder.Write("c.kbm", "2\n0\n127\n60\n60\n260\n12\n0\nx\n");
    EXPECT_EQ(fault({{}, without, 440}),
              without.string() + ": the map leaves out key 69, the A4 whose frequency is given");
    const auto far = folder.Write("far.scl", "d\n1\n100000.\n");
    const auto ends = folder.Write("ends.kbm", "0\n0\n10\n60\n60\n260\n0\n");
    EXPECT_EQ(fault({far, ends, {}}),
              ends.string() + ": no key would sound between 0.1 and 100000 Hz");
    EXPECT_THAT(fault({folder.Path(), {}, {}}), testing::HasSubstr("could not read"));
    EXPECT_THAT(fault({{}, "/dev/zero", {}}), testing::HasSubstr("could not read /dev/zero"));
}

} // namespace
