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

} // namespace
