// SPDX-License-Identifier: GPL-3.0-or-later
// Formulas that hear the note, played by twenty voices.

#include "formula/Formula.h"
#include "support/AgainstReference.h"

#include <algorithm>
#include <cmath>
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

/// Each voice by its own velocity, key and time, which goes on after a release and begins anew with
/// the note that takes a voice over.
TEST(NoteFormula, EachVoiceIsTheScalarReference) {
    const auto opening = [](float x, float y, const Hearing& h) {
        return float((0.2 + 0.8 * h.vel) * std::sin(double(3 * x + 2 * h.t)) * std::cos(double(y)));
    };
    const auto all = [](float x, float y, const Hearing& h) {
        const auto& [a, b, c, d] = h.macros;
        return (x + h.t * y) / (1 + x * x + y * y + h.t) * h.key * h.vel +
               a * b / (1 + x * x) * h.ctl[74] - c * d * h.ctl[1] / (2 + y * y);
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

/// By MPE a note's macros are those of its own channel's controllers, pressure and 74 included,
/// until the master's are for all.
TEST(NoteFormula, MacrosOfANoteAreThoseOfItsChannel) {
    constexpr int kPressure = 2;
    constexpr int kControllers[] = {16, 74, kPressure, 19};
    const std::size_t samples = 220500;
    std::vector<Event> events = test::Piece(samples, 3, kControllers);
    for (std::size_t i = 0; i < events.size(); i++) {
        Event& event = events[i];
        // One key has one channel, which several share; of controllers one in three is for all.
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

} // namespace
