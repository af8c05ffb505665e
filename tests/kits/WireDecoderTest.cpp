// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/midi/WireDecoder.h"

#include "support/MidiLog.h"

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<uint8>;
using Calls = std::vector<std::string>;

Calls Decoded(const Bytes& bytes) {
    test::MidiLog log;
    kits::WireDecoder(log).Decode(bytes, 0);
    return log.calls;
}

TEST(WireDecoder, ReadsEveryMessageAndKeepsTheRunningStatus) {
    EXPECT_EQ(Decoded({0x93, 60, 100, 61, 101, 60, 0, 0x83, 61, 7, 62, 8}),
              (Calls{"on 3 60 100", "on 3 61 101", "off 3 60 0", "off 3 61 7", "off 3 62 8"}));
    EXPECT_EQ(Decoded({0xA1, 1, 2, 0xB2, 7, 3, 0xC4, 5, 6, 0xD5, 9, 0xEF, 0, 64}),
              (Calls{"key 1 1 2", "control 2 7 3", "program 4 5", "program 4 6", "pressure 5 9",
                     "bend 15 0 64"}));
    test::MidiLog log;
    kits::WireDecoder decoder(log);
    decoder.Decode(Bytes{0x90, 60}, 5);
    decoder.Decode(Bytes{100}, 7);
    EXPECT_EQ(log.times, std::vector<bigtime_t>{7}) << "a message is there with its last byte";
}

TEST(WireDecoder, ModeMessagesEndAllNotes) {
    for (uint8 number = 118; number < 128; number++) {
        const bool mode = number == 120 || number >= 123;
        const std::string change = "control 0 " + std::to_string(number) + " 0";
        EXPECT_EQ(Decoded({0xB0, number, 0}), Calls{mode ? "alloff 1" : change});
    }
}

TEST(WireDecoder, RealTimeBytesInterruptNothing) {
    const Bytes messages[] = {
        {0x90, 60, 100, 61, 101}, {0xC0, 5, 6}, {0xF2, 1, 2},           {0xF3, 1},
        {0xF0, 1, 2, 0xF7},       {0xF1, 3},    {0xF0, 1, 0x90, 60, 1}, {0x90, 60, 0xB0, 1},
    };
    for (const Bytes& message : messages) {
        const Calls plain = Decoded(message);
        for (std::size_t at = 0; at <= message.size(); at++) {
            Bytes mixed = message;
            mixed.insert(mixed.begin() + static_cast<std::ptrdiff_t>(at), 0xFE);
            Calls calls = Decoded(mixed);
            EXPECT_EQ(std::erase(calls, "realtime 254"), 1U);
            EXPECT_EQ(calls, plain) << "message " << int(message[0]) << " at " << at;
        }
    }
    EXPECT_EQ(Decoded({0xF8, 0xF9, 0xFA, 0xFB, 0xFC, 0xFD, 0xFE, 0xFF}),
              (Calls{"realtime 248", "realtime 250", "realtime 251", "realtime 252", "realtime 254",
                     "realtime 255"}))
        << "F9 and FD have no meaning";
}

TEST(WireDecoder, SystemExclusiveIsWholeOrNothing) {
    EXPECT_EQ(Decoded({0xF0, 1, 2, 0xF7, 0xF0, 0xF7}), (Calls{"sysex 1 2", "sysex"}));
    EXPECT_EQ(Decoded({0xF0, 1, 2, 0x90, 60, 100, 0xF7, 3}), Calls{"on 0 60 100"});
    EXPECT_EQ(Decoded({0xF0, 1, 0xF0, 2, 0xF7, 3, 4}), Calls{"sysex 2"});

    test::MidiLog log;
    kits::WireDecoder decoder(log);
    const auto decode = [&](std::size_t length) {
        Bytes bytes(length + 2, 5);
        bytes.front() = 0xF0;
        bytes.back() = 0xF7;
        decoder.Decode(bytes, 0);
    };
    decode(kits::WireDecoder::kLongestSysex + 1);
    EXPECT_EQ(log.calls, Calls{});
    decode(kits::WireDecoder::kLongestSysex);
    decode(1);
    ASSERT_EQ(log.calls.size(), 2U);
    EXPECT_EQ(log.calls[0].size(), 5 + 2 * kits::WireDecoder::kLongestSysex);
    EXPECT_EQ(log.calls[1], "sysex 5");
}

TEST(WireDecoder, WhatHasNoMeaningCallsNothing) {
    EXPECT_EQ(Decoded({1, 2, 3, 0xF7, 4}), Calls{}) << "data without a status";
    for (const uint8 undefined : {0xF4, 0xF5, 0xF7})
        EXPECT_EQ(Decoded({0x90, undefined, 60, 100, 60, 100}), Calls{}) << int(undefined);
    EXPECT_EQ(Decoded({0x90, 60, 0x80, 61, 5}), Calls{"off 0 61 5"}) << "a message cut short";
    // System common messages end the running status, also that of their own kind.
    EXPECT_EQ(Decoded({0x90, 60, 100, 0xF6, 61, 100}), (Calls{"on 0 60 100", "common 246 0 0"}));
    EXPECT_EQ(Decoded({0x90, 60, 100, 0xF3, 9, 61, 100, 0xF2, 1, 2, 3, 4}),
              (Calls{"on 0 60 100", "common 243 9 0", "common 242 1 2"}));
}

} // namespace
