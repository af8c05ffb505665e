// SPDX-License-Identifier: GPL-3.0-or-later
// Catches data races between the window, the MIDI and the media thread, which work at the same
// time. The thread sanitizer runs these tests too.
#include "support/Sounds.h"

#include <atomic>
#include <random>
#include <thread>

#include <gtest/gtest.h>

namespace {

using vexa::Engine;

float Slope(float x, float y) {
    return x - 0.5F * y;
}

/// Expects that the media thread has taken up all changes of each slot, so that no MIDI event was
/// missed.
void ExpectTakenUp(const Engine& instrument) {
    for (const vexa::voice& slot : instrument.voices) {
        if (slot.state.Look().Active()) {
            EXPECT_EQ(slot.rendered, slot.state.Look().Changes());
        }
    }
}

TEST(Threads, NoNoteAndNoReleaseIsLostWhileBuffersAreRendered) {
    Engine instrument;
    test::MakeSine(instrument);
    std::atomic<bool> stop = false;
    std::thread media([&] {
        std::vector<float> buffer(64);
        while (!stop)
            instrument.renderer.Render(buffer.data(), buffer.size());
    });
    std::vector<float> last(64);
    for (int round = 0; round < 3000; round++) {
        const auto note = static_cast<uchar>(40 + round % 20);
        instrument.consumer.NoteOn(0, note, 100, 0);
        instrument.consumer.NoteOff(0, note, 0, 0);
        if (round % 3 == 0)
            instrument.consumer.NoteOn(0, note, 100, 0);
    }
    stop = true;
    media.join();
    instrument.renderer.Render(last.data(), last.size());
    EXPECT_EQ(instrument.consumer.CountVox(), 20);
    ExpectTakenUp(instrument);
    // The last twenty notes; every third was struck again after its release.
    for (int round = 2980; round < 3000; round++) {
        const float key = static_cast<float>((40 + round % 20) / 127.0);
        int held = 0;
        for (const vexa::voice& slot : instrument.voices)
            held += slot.key == key && !slot.released;
        EXPECT_EQ(held, round % 3 == 0 ? 1 : 0) << round;
    }
}

TEST(Threads, EveryRecordMayChangeWhileItIsUsed) {
    Engine instrument;
    test::MakeRich(instrument);
    std::atomic<bool> stop = false;
    std::atomic<int> faults = 0;
    std::thread media([&] {
        std::vector<float> buffer(100);
        while (!stop) {
            instrument.renderer.Render(buffer.data(), buffer.size());
            for (const float sample : buffer)
                faults += !std::isfinite(sample) || std::abs(sample) > 100;
            vexa::ReduceVoicesByOne(instrument.voices);
        }
    });
    std::thread midi([&] {
        std::mt19937 random(5);
        while (!stop) {
            const auto data = static_cast<uchar>(random() % 128);
            const auto channel = static_cast<uchar>(random() % 2);
            switch (random() % 12) {
            case 0:
                instrument.consumer.ControlChange(0, data % 4, uchar(random() % 128), 0);
                break;
            case 1:
                if (data == 0)
                    instrument.consumer.AllNotesOff(false, 0);
                break;
            case 2:
            case 3:
            case 4:
                instrument.consumer.NoteOff(channel, data, 0, 0);
                break;
            case 5:
                instrument.consumer.PitchBend(channel, data, data, 0);
                break;
            case 6:
                instrument.consumer.KeyPressure(channel, data, 100, 0);
                break;
            case 7:
                instrument.consumer.ControlChange(channel, data % 2 ? 64 : 7, data, 0);
                break;
            default:
                instrument.consumer.NoteOn(channel, data, 100, 0);
            }
        }
    });
    for (int round = 0; round < 2000; round++) {
        test::SetEnvelope(
            instrument.envelopes[std::size_t(round % 4)],
            test::Points(std::size_t(round % 7), {0.1F * float(round % 5), false, 1}));
        instrument.SetFunction({round % 2 ? vexa::dummyfunction : Slope});
        instrument.parameters.Fx = float(round % 9);
        instrument.playing.given = round % 4 != 0;
        instrument.playing.mode = float(round % 3);
        instrument.playing.bend = float(round % 5);
        instrument.playing.glide = 0.1F;
        instrument.playing.pedal = float(round % 2);
        instrument.playing.pressure = 2;
        instrument.playing.loads = uint32(round);
        if (round % 50 == 0)
            instrument.consumer.AllNotesOff(false, 0);
        instrument.consumer.SetChannel(round % 3 == 0 ? 0 : -1);
        instrument.consumer.ReduceToMaxVox(1 + round % 20);
        for (const vexa::voice& slot : instrument.voices)
            faults += !(vexa::Look(slot).t >= 0);
    }
    instrument.consumer.ReduceToMaxVox(5);
    stop = true;
    media.join();
    midi.join();
    EXPECT_EQ(faults, 0);
    EXPECT_LE(instrument.consumer.CountVox(), 5);
    EXPECT_EQ(kits::CollectRetired(), 0U) << "what was replaced is freed";
}

} // namespace
