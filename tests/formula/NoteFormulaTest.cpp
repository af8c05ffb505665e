// SPDX-License-Identifier: GPL-3.0-or-later
// Catches wrong values of formulas that use inputs of the note, played by twenty voices.

#include "formula/Formula.h"
#include "support/AgainstReference.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using test::Event;
using test::Hearing;

/// Ten seconds of notes, releases, steals and controllers, while the voice limit falls and rises.
std::vector<Event> PieceWithLimits(std::size_t samples) {
    constexpr int kControllers[] = {1, 2, 16, 17, 18, 19, 74};
    std::vector<Event> events = test::Piece(samples, 5, kControllers);
    const int limits[] = {12, 20, 6, 20, 17, 9, 20};
    for (std::size_t i = 0; i < std::size(limits); i++)
        events.push_back({(i + 1) * samples / 8 + i, Event::Kind::VoiceLimit, 0, limits[i]});
    std::ranges::stable_sort(events, {}, &Event::at);
    return events;
}

/// Each voice uses its own velocity, key and time; the time continues after a release and restarts
/// with the note that steals a voice.
TEST(NoteFormula, EachVoiceIsTheScalarReference) {
    const auto opening = [](float x, float y, const Hearing& h) {
        return float((0.2 + 0.8 * h.vel) * std::sin(3 * x + 2 * h.t) * std::cos(double(y)));
    };
    const auto all = [](float x, float y, const Hearing& h) {
        const auto& [a, b, c, d] = h.macros;
        return float((x + h.t * y) / (1 + x * x + y * y + h.t) * h.key * h.vel +
                     a * b / (1 + x * x) * h.ctl[74] - c * d * h.ctl[1] / (2 + y * y));
    };
    const std::size_t samples = 441000;
    const std::vector<Event> events = PieceWithLimits(samples);
    const auto expect = [&](const char* text, const auto& plain, std::size_t blockLimit) {
        vexa::Engine instrument;
        test::MakeRich(instrument);
        instrument.SetFunction(vexa::CompileFormula(text).formula);
        test::ScalarReference reference(instrument.parameters, plain);
        EXPECT_LE(test::Difference(instrument, reference, events, samples, blockLimit), 1e-6F)
            << text;
        EXPECT_GT(instrument.consumer.StolenVox(), 20);
    };
    expect("(0.2+0.8*vel)*sin(3*x+2*t)*cos(y)", opening, samples);
    expect("(0.2+0.8*vel)*sin(3*x+2*t)*cos(y)", opening, 37);
    expect("(x+t*y)/(1+x*x+y*y+t)*key*vel+a*b/(1+x*x)*ctl(74)-c*d*ctl(1)/(2+y*y)", all, samples);
}

/// After half a minute the time as a float would be off by 2 microseconds.
TEST(NoteFormula, TheTimeOfALongNoteMovesAsFinelyAsThatOfAShortOne) {
    constexpr std::size_t kSamples = 36 * 44100;
    vexa::Engine instrument;
    test::MakeRich(instrument);
    instrument.SetFunction(vexa::CompileFormula("0.1*x+0.4*sin(2000*t)").formula);
    const auto plain = [](float x, float, const Hearing& h) {
        return float(0.1 * x + 0.4 * std::sin(2000 * h.t));
    };
    test::ScalarReference reference(instrument.parameters, plain);
    const std::vector<Event> events = {{0, Event::Kind::Note, 60, 100},
                                       {9999, Event::Kind::Note, 67, 100}};
    EXPECT_LE(test::Difference(instrument, reference, events, kSamples, 441), 1e-6F);
}

/// With MPE a note's macros follow the controllers of its own channel, pressure and 74 included,
/// until the master's apply to all.
TEST(NoteFormula, MacrosOfANoteAreThoseOfItsChannel) {
    constexpr int kPressure = 2;
    constexpr int kControllers[] = {16, 74, kPressure, 19};
    const std::size_t samples = 220500;
    std::vector<Event> events = test::Piece(samples, 3, kControllers);
    for (std::size_t i = 0; i < events.size(); i++) {
        Event& event = events[i];
        // Each key has one channel, which several keys share; one in three controllers applies to
        // all.
        event.channel = event.kind == Event::Kind::Note ? 1 + event.number % 15
                        : i % 3 == 0                    ? 0
                                                        : 1 + int(i % 15);
        if (event.number == kPressure)
            event.kind = Event::Kind::Pressure;
    }
    const auto plain = [](float x, float y, const Hearing& h) {
        const auto& [a, b, c, d] = h.macros;
        return float(std::sin(double(3 * x + 2 * a)) * std::cos(double(y + 3 * b)) * (0.2 + c)) +
               d * x / (1 + x * x + y * y);
    };
    for (const std::size_t blockLimit : {samples, std::size_t(37)}) {
        vexa::Engine instrument;
        test::MakeRich(instrument);
        instrument.SetFunction(
            vexa::CompileFormula("sin(3*x+2*a)*cos(y+3*b)*(0.2+c)+d*x/(1+x*x+y*y)").formula);
        instrument.parameters.Ax4 = 1;
        instrument.playing.given = true;
        instrument.playing.pressure = kPressure;
        instrument.consumer.ExpectMpe();
        test::ScalarReference reference(instrument.parameters, plain);
        for (std::size_t m = 0; m < std::size(kControllers); m++) {
            instrument.macros[m].controller = kControllers[m];
            reference.macroControllers[m] = kControllers[m];
        }
        reference.begins[1] = 64.0F / 127;
        reference.begins[2] = 0.0F;
        EXPECT_LE(test::Difference(instrument, reference, events, samples, blockLimit), 1e-6F);
    }
}

/// A note begins, or a legato key takes it over, while inputs of the formula are changing.
TEST(NoteFormula, ANoteBeginsAndGoesOnWithoutAClickWhileWhatItHearsMoves) {
    const struct {
        const char* text;
        int controller;
        vexa::PlayMode mode;
    } cases[] = {{"2*ctl(1)+sin(x)", 1, vexa::PlayMode::poly},
                 {"2*a+sin(x)", 16, vexa::PlayMode::poly},
                 {"3*key+sin(x)", 1, vexa::PlayMode::legato}};
    for (const auto& row : cases) {
        for (const float smooth : {20.0F, 100.0F}) {
            vexa::Engine instrument;
            test::MakeSine(instrument);
            instrument.SetFunction(vexa::CompileFormula(row.text).formula);
            instrument.playing.given = true;
            instrument.playing.smooth = smooth;
            instrument.playing.spread = smooth < 50 ? 90.0F : 0.0F;
            instrument.playing.mode = float(int(row.mode));
            instrument.macros[0].value = 0.1F;
            instrument.renderer.SetSampleRate(44100);
            instrument.consumer.NoteOn(0, 45, 127, 0);
            std::vector<float> left(4000), right(left.size());
            std::size_t at = 0;
            const auto play = [&](std::size_t count) {
                instrument.renderer.Render(&left[at], &right[at], count);
                at += count;
            };
            play(1000);
            // In the frame in which the change begins, and during the change.
            for (const int value : {127, 0}) {
                instrument.consumer.ControlChange(0, uchar(row.controller), uchar(value), 0);
                instrument.consumer.NoteOn(0, uchar(value ? 52 : 43), 127, 0);
                play(200);
                instrument.consumer.NoteOn(0, uchar(value ? 93 : 47), 127, 0);
                play(1300);
            }
            for (const std::vector<float>& ear : {left, right})
                EXPECT_LT(test::LargestStep(ear) + std::abs(ear[0]), 0.3F)
                    << row.text << ' ' << smooth;
        }
    }
}

/// A formula that counts the points at which it is computed.
class Counted : public vexa::PlaneSource {
  public:
    explicit Counted(std::shared_ptr<const vexa::PlaneSource> f) : f(std::move(f)) {}
    std::span<const vexa::FunctionInput> Inputs() const noexcept override { return f->Inputs(); }
    float At(float x, float y, const float* inputs) const noexcept override {
        return f->At(x, y, inputs);
    }
    void Evaluate(const float* x, const float* y, const float* const* inputs, float* values,
                  std::size_t count) const noexcept override {
        points += count;
        f->Evaluate(x, y, inputs, values, count);
    }
    mutable std::size_t points = 0;

  private:
    std::shared_ptr<const vexa::PlaneSource> f;
};

/// Released, silent notes cost nothing, but respond as ever to controllers that change their
/// inputs. Time passes without a controller: a formula that uses it rests only after ten seconds
/// without a change.
TEST(NoteFormula, ReleasedNotesThatAreSilentRestUntilAHandMoves) {
    constexpr std::size_t kSecond = 44100, kSeconds = 40;
    using Kind = Event::Kind;
    std::vector<Event> events;
    for (const int key : {50, 57})
        events.push_back({0, Kind::Note, key, 100});
    for (const int key : {50, 57})
        events.push_back({kSecond / 2, Kind::Note, key, 0});
    events.push_back({25 * kSecond, Kind::Controller, 1, 127});
    events.push_back({25 * kSecond + 9999, Kind::Controller, 16, 127});
    events.push_back({38 * kSecond, Kind::Note, 62, 100});
    const auto setUp = [](vexa::Engine& instrument, const std::string& text) {
        test::MakeRich(instrument);
        // Finally without drift; each note stands at another place.
        vexa::sound_param& p = instrument.parameters;
        p.Cx1 = p.Cx3 = p.Cy2 = p.Ay2 = 0;
        test::SetEnvelope(instrument.envelopes[0],
                          {{0, false, 0}, {0.4F, false, 1}, {0.3F, true, 0}});
        auto counted = std::make_shared<Counted>(vexa::CompileFormula(text).formula);
        instrument.SetFunction(counted);
        return counted;
    };
    const auto plain = [](float x, float y, const Hearing& h) {
        return (x + 0.3F) * (1 + h.macros[0]) + y * h.ctl[1];
    };
    const std::string text = "(x+0.3f)*(1+a)+y*ctl(1)";
    // `more` is the term that uses the time, `late` the difference that may remain of it.
    const auto expectSeconds = [&](const char* more, const auto& moves, float late, double least,
                                   double most) {
        for (const std::size_t blockLimit : {kSecond, std::size_t(37)}) {
            vexa::Engine instrument;
            const auto counted = setUp(instrument, text + more);
            const auto whole = [&](float x, float y, const Hearing& h) {
                return float(double(plain(x, y, h)) + moves(h.t));
            };
            test::ScalarReference reference(instrument.parameters, whole);
            EXPECT_LE(
                test::Difference(instrument, reference, events, kSeconds * kSecond, blockLimit),
                late)
                << more;
            const double seconds = double(counted->points) / double(kSecond);
            EXPECT_GT(seconds, least) << more;
            EXPECT_LT(seconds, most) << more << ", computed although nothing is heard";
        }
    };
    expectSeconds(
        "", [](double) { return 0.0; }, 1e-6F, 3, 12);
    expectSeconds(
        "+0.3*exp(-2*t)", [](double t) { return 0.3 * std::exp(-2 * t); }, 1e-6F, 22, 30);
    // Changes too slow to be audible are left out, others continue.
    expectSeconds(
        "+0.02*sin(6.0*t)", [](double t) { return 0.02 * std::sin(6 * t); }, 1e-3F, 22, 30);
    expectSeconds(
        "+0.1*sin(60.0*t)", [](double t) { return 0.1 * std::sin(60 * t); }, 1e-4F, 80, 90);

    // If controllers are smoothed, a note that rested equals one that never did, for which a
    // controller moves all the time without an effect.
    std::vector<std::vector<float>> heard;
    for (const bool rests : {true, false}) {
        vexa::Engine instrument;
        const auto counted = setUp(instrument, text + "+0*b");
        instrument.playing.given = true;
        instrument.playing.smooth = 50;
        std::vector<float>& samples = heard.emplace_back();
        for (const Event& event : events) {
            if (event.number == 62)
                break;
            while (samples.size() < event.at + 999) {
                const std::size_t n = std::min(event.at + 999 - samples.size(), kSecond / 100);
                samples.resize(samples.size() + n);
                instrument.renderer.Render(&*samples.end() - n, n);
                if (!rests)
                    instrument.consumer.ControlChange(0, 17, uchar(samples.size() / n % 128), 0);
            }
            test::ScalarReference unheard(instrument.parameters, plain);
            test::Take(event, instrument, unheard);
        }
        samples.resize(samples.size() + kSecond);
        instrument.renderer.Render(&*samples.end() - kSecond, kSecond);
        EXPECT_EQ(counted->points < 10 * kSecond, rests);
    }
    EXPECT_GT(test::Peak({heard[0].end() - kSecond, heard[0].end()}), 0.001F);
    for (std::size_t i = 0; i < heard[0].size(); i++)
        ASSERT_NEAR(heard[0][i], heard[1][i], 1e-6) << i;
}

} // namespace
