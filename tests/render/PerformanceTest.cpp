#include "render/Performance.h"

#include "support/Sounds.h"

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
    file.duration = 1.5;
    return file;
}

/// One ear, or both, one after the other.
std::vector<float> Perform(const MidiFile& file, std::size_t block, bool both) {
    Engine instrument;
    test::MakeRich(instrument);
    instrument.playing.given = both;
    instrument.playing.spread = 60;
    Performance performance(instrument, file, 44100, 0.5);
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
    for (const bool both : {false, true}) {
        const std::vector<float> whole = Perform(file, 1000000, both);
        EXPECT_EQ(whole.size(), both ? 2 * 88200U : 88200U);
        EXPECT_GT(test::Peak(whole), 0.1F);
        for (const std::size_t block : {1, 63, 512})
            EXPECT_EQ(Perform(file, block, both), whole) << block;
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
