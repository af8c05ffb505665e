// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/Performance.h"

#include "support/Sounds.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace {

using vexa::Engine;
using vexa::MidiEvent;
using vexa::MidiFile;
using vexa::Performance;

MidiFile Tune() {
    MidiFile file;
    for (int i = 0; i < 200; i++) {
        const double seconds = 0.0071 * i;
        const auto note = static_cast<uint8>(40 + i * 7 % 50);
        file.events.push_back({seconds, MidiEvent::Kind::NoteOn, 0, note, 90});
        if (i % 3 == 0)
            file.events.push_back({seconds, MidiEvent::Kind::NoteOff, 0, note, 0});
        file.events.push_back({seconds, MidiEvent::Kind::ControlChange, 0, 1, uint8(i % 128)});
    }
    // Few events follow, so that the points move uniformly for long.
    for (int i = 0; i < 16; i++) {
        const double seconds = 1.6 + 0.2113 * i;
        file.events.push_back({seconds, MidiEvent::Kind::PitchBend, 0, uint8(i), uint8(90 - i)});
        file.events.push_back({seconds + 0.05, MidiEvent::Kind::ControlChange, 0,
                               uint8(i % 3 == 0 ? 7 : 2), uint8(120 - 3 * i)});
        for (int note = 40 + i; note < 90; note += 16)
            file.events.push_back({seconds + 0.1, MidiEvent::Kind::NoteOff, 0, uint8(note), 0});
    }
    file.duration = 5;
    return file;
}

/// How a sound is played: not at all, so that it comes to rest; with wheel, volumes and smooth
/// changes; in a way that comes to rest while coefficients are on their way; and with two ears, of
/// which the end cuts notes off.
enum class Way { plain, played, resting, stereo };

/// Returns one ear, or both ears one after the other.
std::vector<float> Perform(const MidiFile& file, std::size_t block, Way way) {
    Engine instrument;
    test::MakeRich(instrument);
    vexa::sound_param& p = instrument.parameters;
    if (way == Way::plain || way == Way::resting)
        p.Cx1 = p.Cx3 = p.Cy2 = p.Ay2 = 0;
    test::SetEnvelope(instrument.envelopes[0], {{0, false, 0}, {0.4F, false, 1}, {0.3F, true, 0}});
    const bool both = way == Way::stereo;
    instrument.playing.given = way != Way::plain;
    instrument.playing.bend = 2;
    instrument.playing.smooth = 30;
    instrument.playing.spread = both ? 60.0F : 0.0F;
    Performance performance(instrument, file, 44100, both ? 0 : 3);
    std::vector<float> all, others;
    std::vector<float> left(block), right(block);
    while (const auto n = performance.Render(left.data(), both ? right.data() : nullptr, block)) {
        all.insert(all.end(), left.data(), left.data() + n);
        others.insert(others.end(), right.data(), right.data() + (both ? n : 0));
    }
    all.insert(all.end(), others.begin(), others.end());
    EXPECT_EQ(performance.Position(), performance.Length());
    EXPECT_EQ(performance.MostVoices(), 20);
    return all;
}

TEST(Performance, DoesNotDependOnTheBlock) {
    const MidiFile file = Tune();
    for (const Way way : {Way::plain, Way::played, Way::resting, Way::stereo}) {
        const std::vector<float> whole = Perform(file, 1000000, way);
        EXPECT_EQ(whole.size(), (way == Way::stereo ? 2 * 5 : 8) * 44100U);
        EXPECT_GT(test::Peak(whole), 0.1F);
        for (const std::size_t block : {7, 64, 512}) {
            const std::vector<float> other = Perform(file, block, way);
            EXPECT_TRUE(std::ranges::equal(other, whole)) << block << ' ' << int(way);
        }
    }
}

TEST(Performance, EventsTakeEffectAtTheirSample) {
    Engine instrument;
    test::MakeSine(instrument);
    instrument.SetFunction({[](float x, float y) { return x + y; }});
    MidiFile file;
    file.events = {{0.01, MidiEvent::Kind::NoteOn, 0, 69, 127},
                   {0.02, MidiEvent::Kind::AllNotesOff, 0, 0, 0}};
    file.duration = 0.03;
    Performance performance(instrument, file, 44100, 0);
    std::vector<float> samples(2000);
    samples.resize(performance.Render(samples.data(), nullptr, samples.size()));
    EXPECT_EQ(samples.size(), 1323U);
    // The envelope begins at 0, so the sample of the event itself is the last one that is silent.
    const auto sounds = [](float sample) { return sample != 0; };
    const auto first = std::find_if(samples.begin(), samples.end(), sounds);
    EXPECT_EQ(first - samples.begin(), 442);
    const auto last = std::find_if(samples.rbegin(), samples.rend(), sounds);
    EXPECT_EQ(samples.rend() - last, 882);
}

} // namespace
