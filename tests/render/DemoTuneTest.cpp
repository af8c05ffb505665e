// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/MidiFile.h"

#include <algorithm>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using Kind = vexa::MidiEvent::Kind;

/// The demo tune shows the program at its best: it fits the voices, leaves none on, and no key is
/// held twice, which one voice would have to serve.
TEST(DemoTune, IsPlayableWithoutStealing) {
    const auto tune = vexa::ReadMidiFile(VEXA_SOURCE_FOLDER "/data/demo.mid");
    ASSERT_TRUE(tune) << tune.Fault().text;
    EXPECT_THAT(tune->warnings, testing::IsEmpty());
    EXPECT_NEAR(tune->duration, 60, 10);

    std::set<int> sounding;
    std::size_t most = 0;
    std::set<int> channels;
    std::set<int> controllers;
    for (const vexa::MidiEvent& event : tune->events) {
        if (event.kind == Kind::NoteOn) {
            EXPECT_TRUE(sounding.insert(event.number).second) << "key held twice";
            channels.insert(event.channel);
        } else if (event.kind == Kind::NoteOff) {
            EXPECT_EQ(sounding.erase(event.number), 1U) << "end without a note";
        } else if (event.kind == Kind::ControlChange) {
            controllers.insert(event.number);
        }
        most = std::max(most, sounding.size());
    }
    EXPECT_THAT(sounding, testing::IsEmpty());
    EXPECT_LE(most, 20U);
    EXPECT_GE(most, 4U);
    EXPECT_THAT(channels, testing::ElementsAre(0, 1, 2, 3));
    EXPECT_THAT(controllers, testing::ElementsAre(1, 2));
}

} // namespace
