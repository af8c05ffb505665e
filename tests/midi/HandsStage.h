// SPDX-License-Identifier: GPL-3.0-or-later
// An instrument that plays a sine, with helpers for its keys and controllers.
#pragma once

#include "support/Sounds.h"

#include <gtest/gtest.h>

namespace test {

constexpr double kRate = 44100;

/// Without a channel argument, messages go to the first channel.
class HandsStage : public testing::Test {
  protected:
    HandsStage() { MakeSine(instrument); }

    void On(uchar note, uchar channel = 0, uchar velocity = 100) {
        instrument.consumer.NoteOn(channel, note, velocity, 0);
    }
    void Off(uchar note, uchar channel = 0) { instrument.consumer.NoteOff(channel, note, 0, 0); }
    void Control(uchar controller, uchar value, uchar channel = 0) {
        instrument.consumer.ControlChange(channel, controller, value, 0);
    }
    /// Sends messages of several controllers, one after the other.
    void Controls(const std::vector<std::pair<int, int>>& messages, uchar channel = 0) {
        for (const auto& [controller, value] : messages)
            Control(uchar(controller), uchar(value), channel);
    }
    void Press(uchar value, uchar channel = 0) {
        instrument.consumer.ChannelPressure(channel, value, 0);
    }
    void Bend(int value, uchar channel = 0) {
        const int bits = value + 8192;
        instrument.consumer.PitchBend(channel, uchar(bits & 127), uchar(bits >> 7), 0);
    }
    void Panic(bool justChannel = false) { instrument.consumer.AllNotesOff(justChannel, 0); }
    void Be(vexa::PlayMode mode) { instrument.playing.mode = float(int(mode)); }

    /// Returns the frequencies in Hz of the first slots' notes over the next samples.
    std::vector<double> Hertz(std::size_t slots, std::size_t samples) {
        std::vector<double> hertz;
        for (std::size_t i = 0; i < slots; i++)
            hertz.push_back(-vexa::Look(instrument.voices[i]).phasex);
        Render(instrument, samples);
        for (std::size_t i = 0; i < slots; i++)
            hertz[i] = (hertz[i] + vexa::Look(instrument.voices[i]).phasex) / 6.28318530718 *
                       kRate / double(samples);
        return hertz;
    }
    static double Cents(double hertz, double expected) {
        return 1200 * std::log2(hertz / expected);
    }

    /// Returns the note that a slot plays: its number, negative once released, 0 if it is silent.
    int Note(std::size_t slot) const {
        const vexa::voice& v = instrument.voices[slot];
        const int note = static_cast<int>(std::lround(v.key * 127));
        return !v.state.Look().Active() ? 0 : v.released ? -note : note;
    }
    std::vector<int> Notes() const {
        std::vector<int> notes;
        for (std::size_t slot = 0; slot < vexa::kVoiceSlots; slot++) {
            if (Note(slot) != 0)
                notes.push_back(Note(slot));
        }
        return notes;
    }
    using Are = std::vector<int>;

    vexa::Engine instrument;
};

} // namespace test
