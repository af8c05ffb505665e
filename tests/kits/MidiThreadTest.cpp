// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/midi/MidiThread.h"

#include "support/MidiLog.h"

#include <chrono>
#include <memory>
#include <semaphore>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using Bytes = std::vector<uint8>;
constexpr auto kLimit = 60s;

/// Records its threads; can be blocked at its first call.
class Slow : public test::MidiLog {
  public:
    std::set<std::thread::id> threads;
    std::binary_semaphore entered{0};
    std::binary_semaphore goOn{0};
    bool holdUp = false;
    bool timedOut = false;

  private:
    void Added() override {
        threads.insert(std::this_thread::get_id());
        if (holdUp && calls.size() == 1) {
            entered.release();
            timedOut = !goOn.try_acquire_for(kLimit);
        }
    }
};

TEST(MidiThread, DeliversEachInletInOrderByOneThread) {
    constexpr int kInlets = 4;
    constexpr int kNotes = 5000;
    Slow log;
    auto thread = std::make_unique<kits::MidiThread>(log);
    std::vector<kits::MidiThread::Inlet*> inlets;
    for (int i = 0; i < kInlets; i++)
        inlets.push_back(&thread->NewInlet());
    thread->Start();
    std::vector<std::thread> writers;
    for (int i = 0; i < kInlets; i++) {
        writers.emplace_back([&inlet = *inlets[std::size_t(i)], i] {
            for (int n = 0; n < kNotes; n++)
                inlet.Put(Bytes{uint8(0x90 + i), uint8(n & 127), uint8(1 + (n >> 7))}, n);
        });
    }
    for (std::thread& writer : writers)
        writer.join();
    thread.reset(); // delivers the remaining bytes

    std::array<int, kInlets> next{};
    for (std::size_t k = 0; k < log.calls.size(); k++) {
        const auto inlet = static_cast<std::size_t>(log.calls[k][3] - '0');
        const int n = next[inlet]++;
        ASSERT_EQ(log.calls[k], "on " + std::to_string(inlet) + ' ' + std::to_string(n & 127) +
                                    ' ' + std::to_string(1 + (n >> 7)));
        ASSERT_EQ(log.times[k], n);
    }
    EXPECT_THAT(next, testing::Each(kNotes));
    EXPECT_EQ(log.threads.size(), 1U);
    EXPECT_FALSE(log.threads.contains(std::this_thread::get_id()));
}

TEST(MidiThread, TheTimeOfASourceNeverGoesBack) {
    Slow log;
    auto thread = std::make_unique<kits::MidiThread>(log);
    kits::MidiThread::Inlet& inlet = thread->NewInlet();
    thread->Start();
    for (const bigtime_t time : {5, 3, 0, 4, 7})
        inlet.Put(Bytes{0x90, 60, 100}, time);
    thread.reset();
    EXPECT_EQ(log.times, (std::vector<bigtime_t>{5, 5, 0, 5, 7}));
}

TEST(MidiThread, AFloodEndsTheNotesInsteadOfLeavingThemOn) {
    Slow log;
    log.holdUp = true;
    auto thread = std::make_unique<kits::MidiThread>(log);
    kits::MidiThread::Inlet& inlet = thread->NewInlet();
    thread->Start();
    inlet.Put(Bytes{0x90, 60, 100}, 1);
    ASSERT_TRUE(log.entered.try_acquire_for(kLimit));
    for (uint8 i = 0; i < 100; i++) // two million bytes while the thread hangs
        inlet.Put(Bytes(20000, 0xFE), 2);
    inlet.Put(Bytes(20000, 0x80), 3);
    const int64 lost = thread->LostPieces();
    log.goOn.release();
    thread.reset();
    EXPECT_FALSE(log.timedOut);
    EXPECT_EQ(log.calls.front(), "on 0 60 100");
    EXPECT_EQ(log.calls.back(), "off 0 60 64");
    EXPECT_EQ(std::count(log.calls.begin(), log.calls.end(), "off 0 60 64"), 1);
    const auto kept = std::count(log.calls.begin(), log.calls.end(), "realtime 254");
    EXPECT_GT(kept, 1000000) << "what there was room for";
    EXPECT_LT(kept, 2000000);
    EXPECT_EQ(kept % 20000, 0) << "pieces are whole or not there";
    EXPECT_EQ(lost, 101 - kept / 20000);
}

TEST(MidiThread, OnlySystemExclusiveDataGoOnInTheNextPiece) {
    Slow log;
    log.holdUp = true;
    auto thread = std::make_unique<kits::MidiThread>(log);
    kits::MidiThread::Inlet& inlet = thread->NewInlet();
    thread->Start();
    inlet.Put(Bytes{0xFE}, 1);
    ASSERT_TRUE(log.entered.try_acquire_for(kLimit));
    inlet.Put(Bytes{0xF0, 1}, 1);
    inlet.Put(Bytes(2000000, 0xFE), 1); // never fits
    inlet.Put(Bytes{2, 0xF7, 0x80, 61, 9}, 1);
    inlet.Put(Bytes{0xF0, 1}, 1);
    inlet.Lose(); // as for bytes that cannot be put
    inlet.Put(Bytes{2, 0xF7, 0x80, 62, 9}, 1);
    for (const Bytes& piece : {Bytes{0xF0, 3}, Bytes{0xFE}, Bytes{4}, Bytes{5, 0xF7}})
        inlet.Put(piece, 1);
    // Another source's note comes in between.
    for (const Bytes& piece : {Bytes{0xF0, 6}, Bytes{0x80, 63, 9}, Bytes{7, 8, 9, 10, 0xF7}})
        inlet.Put(piece, 1);
    log.goOn.release();
    thread.reset();
    EXPECT_EQ(log.calls, (std::vector<std::string>{"realtime 254", "off 0 61 9", "off 0 62 9",
                                                   "realtime 254", "sysex 3 4 5", "off 0 63 9"}));
}

TEST(MidiThread, AVanishedSourceEndsItsOwnNotesOnly) {
    Slow log;
    auto thread = std::make_unique<kits::MidiThread>(log);
    kits::MidiThread::Inlet& vanishes = thread->NewInlet();
    kits::MidiThread::Inlet& stays = thread->NewInlet();
    thread->Start();
    stays.Put(Bytes{0x90, 50, 100}, 1);
    // Held: 60 and 64 on channel 0, and 60 on channel 15.
    vanishes.Put(Bytes{0x90, 60, 100, 61, 100, 62, 100, 64, 100, 61, 0, 0x80, 62, 9}, 1);
    vanishes.Put(Bytes{0x91, 70, 1, 0xB1, 123, 0, 0x9F, 60, 100, 0xEF, 0, 9}, 1);
    vanishes.EndNotes();
    vanishes.EndNotes();
    thread.reset();
    std::vector<std::string> ended;
    for (const std::string& call : log.calls) {
        if (call.ends_with(" 64") || call.starts_with("ended"))
            ended.push_back(call);
    }
    EXPECT_THAT(ended,
                testing::ElementsAre("off 0 60 64", "off 0 64 64", "off 15 60 64", "ended 15"))
        << "and lets go of what it bent";
}

} // namespace
