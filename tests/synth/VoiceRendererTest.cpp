// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/AgainstReference.h"
#include "support/RealtimeWatch.h"

#include <functional>
#include <limits>

#include <gtest/gtest.h>

namespace {

using test::Peak;
using test::Render;
using vexa::Engine;

constexpr int kControllers[] = {1, 2};

/// Returns the greatest difference between product and reference over a piece.
float Difference(
    const std::vector<test::Event>& events, std::size_t samples, double rate,
    std::size_t blockLimit, const std::function<void(vexa::sound_param&)>& change = [](auto&) {},
    float smooth = 0, bool stereo = false) {
    Engine instrument;
    test::MakeRich(instrument);
    change(instrument.parameters);
    test::ScalarReference reference(instrument.parameters, vexa::dummyfunction);
    instrument.playing.given = smooth > 0;
    instrument.playing.smooth = smooth;
    reference.smooth = smooth / 1000.0;
    reference.stereo = stereo;
    instrument.renderer.SetSampleRate(rate);
    reference.sampleRate = rate;
    return test::Difference(instrument, reference, events, samples, blockLimit);
}

TEST(VoiceRenderer, IsTheScalarReferenceOverTenSecondsOfTwentyVoices) {
    const std::size_t samples = 441000;
    const auto unchanged = [](auto&) {};
    std::vector<test::Event> events = test::Piece(samples, 1, kControllers);
    EXPECT_LE(Difference(events, samples, 44100, samples), 1e-6F);
    // A point of an envelope is dragged back and forth, faster and slower than the smoothing.
    using Kind = test::Event::Kind;
    for (int i = 0; i < 40; i++)
        events.push_back(
            {10000 + std::size_t(i) * (i < 20 ? 501 : 9973), Kind::Envelope, i % 4, 7 * i % 100});
    std::ranges::stable_sort(events, {}, &test::Event::at);
    EXPECT_LE(Difference(events, samples, 48000, 37), 1e-6F);
    for (const std::size_t block : {std::size_t(100), samples})
        EXPECT_LE(Difference(events, samples, 44100, block, unchanged, 20), 1e-6F);
}

TEST(VoiceRenderer, IsTheScalarReferenceWithBothEarsWhereverTheyAre) {
    const std::size_t samples = 441000;
    const auto unchanged = [](auto&) {};
    using Kind = test::Event::Kind;
    std::vector<test::Event> events = test::Piece(samples, 1, kControllers);
    // The ears are apart from the start, change within a cell, coincide for a while, and change
    // again during a change.
    for (const auto& [at, degrees] : {std::pair<std::size_t, int>{0, 60},
                                      {100001, 137},
                                      {150000, 0},
                                      {250000, 180},
                                      {250300, 20}}) {
        const auto place = std::find_if(events.begin(), events.end(),
                                        [at = at](const auto& event) { return event.at >= at; });
        events.insert(place, {at, Kind::Spread, 0, degrees});
    }
    EXPECT_LE(Difference(events, samples, 44100, samples, unchanged, 0, true), 1e-6F);
    EXPECT_LE(Difference(events, samples, 48000, 37, unchanged, 20, true), 1e-6F);
}

TEST(VoiceRenderer, HearsTheSameWithBothEarsWhereTheyAreOne) {
    std::vector<std::vector<float>> heard;
    for (const bool stereo : {false, true}) {
        for (const float spread : {0.0F, 90.0F}) {
            Engine instrument;
            test::MakeRich(instrument);
            instrument.playing.given = true;
            instrument.playing.spread = spread;
            for (uchar note = 40; note < 60; note++)
                instrument.consumer.NoteOn(0, note, 100, 0);
            heard.resize(heard.size() + 2);
            for (std::vector<float>& ear : heard)
                ear.resize(45000);
            float* const left = heard[heard.size() - 2].data();
            float* const right = heard.back().data();
            instrument.renderer.Render(left, stereo ? right : nullptr, 15000);
            instrument.playing.spread = 0;
            instrument.renderer.Render(left + 15000, stereo ? right + 15000 : nullptr, 30000);
        }
    }
    const std::vector<float>& mono = heard[0];
    EXPECT_EQ(heard[2], mono) << "a single ear knows no spread";
    EXPECT_EQ(heard[4], mono);
    EXPECT_EQ(heard[5], mono);
    for (const std::size_t ear : {6, 7}) {
        EXPECT_NE(heard[ear], mono);
        EXPECT_TRUE(std::equal(heard[ear].end() - 100, heard[ear].end(), mono.end() - 100,
                               [](float a, float b) { return std::abs(a - b) < 1e-5F; }))
            << "and is one of a pair that came together";
    }
}

TEST(VoiceRenderer, MovesTheEarsWithoutAClick) {
    Engine instrument;
    test::MakeSine(instrument);
    instrument.playing.given = true;
    std::vector<float> left, right;
    const auto play = [&](float spread, std::size_t count) {
        instrument.playing.spread = spread;
        left.resize(left.size() + count);
        right.resize(left.size());
        instrument.renderer.Render(&*left.end() - count, &*right.end() - count, count);
    };
    play(0, 10);
    instrument.consumer.NoteOn(0, 69, 127, 0);
    play(0, 5001);
    play(180, 5003);
    instrument.consumer.NoteOn(0, 69, 127, 0);
    play(180, 5000);
    instrument.parameters.Fx = 0.5F;
    play(180, 100);
    instrument.parameters.Fx = 1;
    play(0, 3000);
    // A sine of 440 Hz moves by 2 pi 440 / 44100 a sample at most, the ears by pi / 2 in 441.
    const double most = 1.5 * (2 * M_PI * 440 / 44100 + M_PI / 882);
    EXPECT_LT(test::LargestStep(left), most);
    EXPECT_LT(test::LargestStep(right), most);
    EXPECT_EQ(Peak({left.data(), 11}), 0);
    // With the ears half a turn apart, one hears the negative of the other.
    for (std::size_t i = 8000; i < 10000; i++)
        ASSERT_NEAR(left[i], -right[i], 0.01);
}

TEST(VoiceRenderer, EnvelopesThatAreEditedTakeOverWithoutAStep) {
    const auto largestStep = [](float smooth) {
        Engine instrument;
        test::MakeSine(instrument);
        instrument.playing.given = true;
        instrument.playing.smooth = smooth;
        instrument.consumer.NoteOn(0, 40, 100, 0);
        std::vector<float> samples = Render(instrument, 20000);
        for (const float value : {0.4F, 0.7F, 0.1F, 1.0F}) {
            test::SetEnvelope(instrument.envelopes[2], {{0, false, value}});
            const std::vector<float> more = Render(instrument, 1000);
            samples.insert(samples.end(), more.begin(), more.end());
        }
        return test::LargestStep(samples);
    };
    // The sine moves by 2 pi 82.4 / 44100 a sample at most, its radius by 0.9 in 882.
    EXPECT_LT(largestStep(20), 1.1 * (2 * M_PI * 82.4 / 44100 + 0.9 / 882));
    EXPECT_GT(largestStep(0), 0.2) << "it is the smoothing";
}

TEST(VoiceRenderer, IsTheScalarReferenceOverTenMinutesOfOneVoice) {
    // Without drift, so that the orbit stays where the function has values.
    const auto stay = [](vexa::sound_param& p) {
        p.Cx0 = p.Cx1 = p.Cx3 = p.Cy0 = p.Cy2 = 0;
        p.C0x0 = 0.1F;
    };
    const test::Event note{0, test::Event::Kind::Note, 69, 100};
    EXPECT_LE(Difference({note}, 600 * 44100, 44100, 4410, stay), 1e-5F);
}

TEST(VoiceRenderer, RemovesTheConstantPartWhateverItIs) {
    Engine instrument;
    test::MakeSine(instrument);
    instrument.SetFunction({[](float, float) { return 0.9F; }});
    instrument.consumer.NoteOn(0, 60, 100, 0);
    EXPECT_LT(Peak(Render(instrument, 44100)), 2e-5F) << "charged to begin at 0, and stays there";

    // Another constant: a step, which the filter lets decay.
    instrument.SetFunction({[](float, float) { return -0.9F; }});
    EXPECT_GT(Peak(Render(instrument, 10)), 0.9F);
    Render(instrument, 44100);
    EXPECT_LT(Peak(Render(instrument, 1000)), 2e-5F);
}

TEST(VoiceRenderer, SilenceIsExactAndTheGainKeepsItsBounds) {
    Engine instrument;
    EXPECT_EQ(Peak(Render(instrument, 100)), 0);
    test::MakeSine(instrument);
    instrument.consumer.NoteOn(0, 69, 127, 0);
    for (const float refused : {1.5F, -0.1F, std::numeric_limits<float>::quiet_NaN()})
        instrument.renderer.SetGain(refused);
    Render(instrument, 2000);
    EXPECT_NEAR(Peak(Render(instrument, 2000)), 1, 0.15);
    instrument.renderer.SetGain(0);
    const double before = vexa::Look(instrument.voices[0]).t;
    EXPECT_EQ(Peak(Render(instrument, 441)), 0);
    EXPECT_NEAR(vexa::Look(instrument.voices[0]).t - before, 0.01, 1e-9) << "voices go on";
}

TEST(VoiceRenderer, DoesNotClip) {
    Engine instrument;
    test::MakeSine(instrument);
    for (uchar note = 60; note < 65; note++)
        instrument.consumer.NoteOn(0, note, 127, 0);
    EXPECT_GT(Peak(Render(instrument, 44100)), 3.0F);
}

TEST(VoiceRenderer, ValuesThatAreNotFiniteSoundAsZeroAndDoNotStay) {
    Engine instrument;
    test::MakeSine(instrument);
    instrument.SetFunction({[](float x, float) { return 1.0F / (x - x); }});
    instrument.consumer.NoteOn(0, 69, 127, 0);
    EXPECT_EQ(Peak(Render(instrument, 1000)), 0);
    instrument.SetFunction(
        {[](float x, float) { return x > 0 ? std::numeric_limits<float>::quiet_NaN() : x; }});
    EXPECT_LT(Peak(Render(instrument, 1000)), 3);
    instrument.SetFunction({test::PlaneOfX});
    Render(instrument, 4410);
    EXPECT_NEAR(Peak(Render(instrument, 441)), 1, 0.15);
}

TEST(VoiceRenderer, AFunctionThatOverflowsSilencesNothingAfterIt) {
    Engine instrument;
    test::MakeSine(instrument);
    // Note 0 has the filter with the largest sums.
    const auto overflows = [](float x, float) { return x > 0.5F ? 3e38F : x - 2e37F; };
    instrument.SetFunction({overflows});
    instrument.consumer.NoteOn(0, 0, 127, 0);
    for (const float sample : Render(instrument, 22050))
        ASSERT_TRUE(std::isfinite(sample));
    EXPECT_TRUE(instrument.renderer.HasBounded());
    instrument.SetFunction({test::PlaneOfX});
    instrument.consumer.ReduceToMaxVox(1);
    instrument.consumer.NoteOff(0, 0, 0, 0);
    instrument.consumer.NoteOn(0, 69, 127, 0); // takes the slot over, at its last output
    Render(instrument, 44100);
    EXPECT_NEAR(Peak(Render(instrument, 441)), 1, 0.15);
}

TEST(VoiceRenderer, ReleasedVoicesThatHaveGoneSilentRestUntilSomethingChanges) {
    static std::size_t points;
    points = 0;
    constexpr auto counted = [](float x, float y) {
        points++;
        return vexa::dummyfunction(x, y);
    };
    Engine instrument;
    test::MakeRich(instrument);
    // Finally without drift; each note stands at another place, where f is not 0.
    vexa::sound_param& p = instrument.parameters;
    p.Cx1 = p.Cx3 = p.Cy2 = p.Ay2 = 0;
    test::SetEnvelope(instrument.envelopes[0], {{0, false, 0}, {0.4F, false, 1}, {0.3F, true, 0}});
    instrument.SetFunction({counted});
    test::ScalarReference reference(p, vexa::dummyfunction);
    const auto expectTheReference = [&](double seconds) {
        const auto count = static_cast<std::size_t>(44100 * seconds);
        std::vector<float> should(count);
        reference.Fill(should.data(), count);
        const std::vector<float> is = Render(instrument, count);
        for (std::size_t i = 0; i < count; i++)
            ASSERT_NEAR(is[i], should[i], 1e-6) << i;
    };
    const auto strike = [&](bool on) {
        for (int note = 30; note < 108; note += 4) {
            if (on) {
                instrument.consumer.NoteOn(0, uchar(note), 100, 0);
                reference.NoteOn(note, 100);
            } else {
                instrument.consumer.NoteOff(0, uchar(note), 0, 0);
                reference.NoteOff(note);
            }
        }
    };
    strike(true);
    expectTheReference(0.5);
    strike(false);
    expectTheReference(4);
    const double before = vexa::Look(instrument.voices[0]).t;
    const std::size_t moved = points;
    expectTheReference(0.1);
    EXPECT_EQ(points, moved) << "nothing is computed";
    EXPECT_EQ(instrument.consumer.CountVox(), 20);
    EXPECT_NEAR(vexa::Look(instrument.voices[0]).t - before, 0.1, 1e-9);

    // A controller moves the centres again.
    p.Cx3 = 0.5F;
    instrument.consumer.ControlChange(0, 1, 100, 0);
    reference.ctl[1] = float(100 / 127.0);
    expectTheReference(0.3);
    EXPECT_GT(points, moved);
}

TEST(VoiceRenderer, NotesBeginReleaseAndChangeHandsWithoutAClick) {
    Engine instrument;
    test::MakeSine(instrument);
    instrument.consumer.ReduceToMaxVox(1);
    std::vector<float> samples;
    const auto play = [&](std::size_t count) {
        const std::vector<float> more = Render(instrument, count);
        samples.insert(samples.end(), more.begin(), more.end());
    };
    instrument.consumer.NoteOn(0, 69, 127, 0);
    play(3011);
    instrument.consumer.NoteOn(0, 69, 127, 0); // retriggered
    play(3017);
    instrument.consumer.NoteOn(0, 64, 127, 0); // stolen
    play(3023);
    instrument.consumer.NoteOff(0, 64, 0, 0);
    play(6000);
    // A sine of 440 Hz moves by 2 pi 440 / 44100 a sample at most; the attack and the filter's
    // response to the inherited level add a little. A click would be a step of the order of 1.
    EXPECT_LT(test::LargestStep(samples), 1.5 * 2 * M_PI * 440 / 44100);
    EXPECT_LT(std::abs(samples[0]), 0.01);
    EXPECT_LT(Peak({samples.end() - 1000, samples.end()}), 1e-3F) << "released to silence";
}

/// Every part of a sound changes while notes are held, one after the other.
TEST(VoiceRenderer, JoinsOneSoundToAnotherWithoutAClick) {
    const auto largestStep = [](bool joins, float spread) {
        Engine instrument;
        test::MakeSine(instrument);
        instrument.playing.given = true;
        instrument.playing.spread = spread;
        instrument.renderer.SetJoins(joins);
        for (const uchar note : {57, 64, 69})
            instrument.consumer.NoteOn(0, note, 100, 0);
        const std::function<void()> changes[] = {
            [&] { instrument.SetFunction({[](float x, float y) { return y - x; }}); },
            [&] { instrument.parameters.Ax0 = 0.3F; },
            [&] { instrument.playing.volume = -6; },
            [&] {
                test::SetEnvelope(instrument.envelopes[3], {{0, false, 0.25F}});
            },
            [&] { instrument.SetFunction({[](float x, float) { return 5 + x; }}); },
            [&] {
                instrument.parameters.Ax0 = 1;
                instrument.playing.volume = 0;
            },
        };
        std::vector<float> left(10000), right(10000);
        std::size_t at = 0;
        const auto play = [&](std::size_t count) {
            instrument.renderer.Render(&left[at], &right[at], count);
            at += count;
        };
        play(3000);
        for (const auto& change : changes) {
            change();
            play(937);
        }
        left.resize(at);
        right.resize(at);
        return std::max(test::LargestStep(left), test::LargestStep(right));
    };
    // Three sines, of amplitude sqrt(2) at most.
    const double most = 1.2 * std::sqrt(2) * 2 * M_PI * (220 + 330 + 440) / 44100;
    for (const float spread : {0.0F, 40.0F}) {
        EXPECT_LT(largestStep(true, spread), most) << spread;
        EXPECT_GT(largestStep(false, spread), 5 * most) << "it is the joining";
    }
}

/// x if computed in blocks, 0 at single points.
class BlockFormOnly : public vexa::PlaneSource {
  public:
    float At(float, float, const float*) const noexcept override { return 0; }
    void Evaluate(const float* x, const float*, const float* const*, float* values,
                  std::size_t count) const noexcept override {
        std::copy_n(x, count, values);
    }
};

TEST(VoiceRenderer, UsesTheBlockFormWhereThereIsOne) {
    Engine instrument;
    test::MakeSine(instrument);
    instrument.SetFunction(std::make_shared<BlockFormOnly>());
    instrument.consumer.NoteOn(0, 69, 127, 0);
    Render(instrument, 4410);
    EXPECT_NEAR(Peak(Render(instrument, 441)), 1, 0.1);
}

TEST(VoiceRenderer, NeitherAllocatesNorLocks) {
    Engine instrument;
    test::MakeRich(instrument);
    for (uchar note = 40; note < 60; note++)
        instrument.consumer.NoteOn(0, note, 100, 0);
    std::vector<float> samples(1000);
    test::RealtimeWatch watch;
    instrument.renderer.Render(samples.data(), samples.size());
    instrument.consumer.NoteOff(0, 45, 0, 0);
    instrument.renderer.Render(samples.data(), samples.size());
    EXPECT_EQ(watch.Faults(), 0);

    instrument.SetFunction(
        {[](float x, float) { return static_cast<float>(*std::vector<float>(1, x).data()); }});
    instrument.renderer.Render(samples.data(), 1);
    EXPECT_GT(watch.Faults(), 0) << "the watch itself must see an allocation";
}

} // namespace
