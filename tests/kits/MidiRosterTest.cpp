// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/midi/MidiRoster.h"

#include "kits/midi/MidiLocalProducer.h"

#include <string>

#include <gtest/gtest.h>

namespace {

TEST(MidiRoster, FindsADeviceAgainThatHasAnotherAddressToday) {
    BMidiLocalProducer first("Keys:Keys MIDI 1 20:0"), twin("Keys:Keys MIDI 1 24:0"),
        other("bridge 9:x20:0");
    for (BMidiLocalProducer* source : {&first, &twin, &other})
        ASSERT_EQ(source->Register(), B_OK);
    BMidiRoster* roster = BMidiRoster::MidiRoster();
    ASSERT_TRUE(roster);
    const auto found = [roster](const char* name) {
        BMidiProducer* source = roster->FindProducer(std::string(name));
        std::string text = source ? source->Name() : "none";
        if (source)
            source->Release();
        return text;
    };
    EXPECT_EQ(found("Keys:Keys MIDI 1 24:0"), "Keys:Keys MIDI 1 24:0");
    EXPECT_EQ(found("Keys:Keys MIDI 1 28:0"), "Keys:Keys MIDI 1 20:0");
    EXPECT_EQ(found("Keys:Keys MIDI 1"), "Keys:Keys MIDI 1 20:0");
    for (const char* name :
         {"Keys:Keys MIDI", "Keys", "bridge", "bridge 9", "20:0", " 20:0", ":0", ""})
        EXPECT_EQ(found(name), "none") << name;
}

} // namespace
