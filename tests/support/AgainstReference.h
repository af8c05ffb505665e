// SPDX-License-Identifier: GPL-3.0-or-later
// Plays a piece with the product and with the scalar reference, and compares them.
#pragma once

#include "support/ScalarReference.h"
#include "support/Sounds.h"

#include <random>
#include <span>
#include <vector>

#include <gtest/gtest.h>

namespace test {

struct Event {
    enum class Kind { Note, Controller, Pressure, VoiceLimit, Spread, Envelope };
    /// The sample at which the event happens.
    std::size_t at;
    Kind kind;
    /// The number of the key, the controller or the envelope.
    int number;
    /// The velocity (0 releases the note), the value of the controller, the controller that
    /// pressure drives, the maximum number of voices, degrees, or the level in hundredths that the
    /// envelope reaches after 0.2 seconds and from which it falls to half.
    int value;
    int channel = 0;
};

/// A seeded piece of `samples` samples that keeps about 20 voices sounding, with retriggers,
/// steals, releases and controllers at any sample.
inline std::vector<Event> Piece(std::size_t samples, unsigned seed,
                                std::span<const int> controllers) {
    using Kind = Event::Kind;
    std::mt19937 random(seed);
    const auto below = [&random](std::size_t n) { return static_cast<int>(random() % n); };
    std::vector<Event> events;
    for (int i = 0; i < 20; i++)
        events.push_back({0, Kind::Note, 40 + 2 * i, 60 + i});
    for (std::size_t at = 1; at < samples; at += 1 + std::size_t(below(4000))) {
        const int kind = below(10);
        if (kind < 5)
            events.push_back({at, Kind::Note, 30 + below(60), 1 + below(127)});
        else if (kind < 8)
            events.push_back({at, Kind::Note, 30 + below(60), 0});
        else
            events.push_back({at, Kind::Controller,
                              controllers[std::size_t(below(controllers.size()))], below(128)});
    }
    return events;
}

/// Passes the same event to both.
template<class F>
void Take(const Event& event, vexa::Engine& instrument, ScalarReference<F>& reference) {
    const auto number = static_cast<uchar>(event.number);
    const auto value = static_cast<uchar>(event.value);
    const auto channel = static_cast<uchar>(event.channel);
    switch (event.kind) {
    case Event::Kind::VoiceLimit:
        instrument.consumer.ReduceToMaxVox(event.value);
        reference.LimitVoices(event.value);
        break;
    case Event::Kind::Spread:
        instrument.playing.given = true;
        instrument.playing.spread = float(event.value);
        reference.SetSpread(event.value);
        break;
    case Event::Kind::Envelope:
        SetEnvelope(instrument.envelopes[number], {{0, false, 0},
                                                   {0.2F, false, float(event.value) / 100},
                                                   {1, false, float(event.value) / 200},
                                                   {0.3F, true, 0}});
        break;
    case Event::Kind::Controller:
        instrument.consumer.ControlChange(channel, number, value, 0);
        reference.Control(event.channel, event.number, event.value);
        break;
    case Event::Kind::Pressure:
        instrument.consumer.ChannelPressure(channel, value, 0);
        reference.Control(event.channel, event.number, event.value);
        break;
    case Event::Kind::Note:
        if (event.value > 0) {
            instrument.consumer.NoteOn(channel, number, value, 0);
            reference.NoteOn(event.number, event.value, event.channel);
        } else {
            instrument.consumer.NoteOff(channel, number, 0, 0);
            reference.NoteOff(event.number, event.channel);
        }
        break;
    }
}

/// Returns the greatest difference between product and reference over a piece, rendered in blocks
/// of at most a given length.
template<class F>
float Difference(vexa::Engine& instrument, ScalarReference<F>& reference,
                 std::span<const Event> events, std::size_t samples, std::size_t blockLimit) {
    // The right ear's samples follow the left ear's, if both are computed.
    const std::size_t ears = reference.stereo ? 2 : 1;
    std::vector<float> is(samples * ears);
    std::vector<float> should(samples * ears);
    std::size_t done = 0;
    const auto playTo = [&](std::size_t end) {
        while (done < end) {
            const std::size_t n = std::min(blockLimit, end - done);
            float* const right = ears == 2 ? &is[samples + done] : nullptr;
            instrument.renderer.Render(&is[done], right, n);
            reference.Fill(&should[done], n, right ? &should[samples + done] : nullptr);
            done += n;
        }
    };
    for (const Event& event : events) {
        playTo(event.at);
        Take(event, instrument, reference);
    }
    playTo(samples);
    EXPECT_GT(Peak({should.end() - 4410, should.end()}), 0.02F)
        << "a silent piece compares nothing";
    float difference = 0;
    for (std::size_t i = 0; i < is.size(); i++)
        difference = std::max(difference, std::abs(is[i] - should[i]));
    return difference;
}

} // namespace test
