// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/midi/EventGate.h"

#include "support/MidiLog.h"

#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using kits::EventGate;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(EventGate, HandsOnAtOnceOrWhenAsked) {
    test::MidiLog log;
    EventGate gate(log);
    gate.NoteOn(1, 60, 100, 0);
    EXPECT_THAT(log.calls, ElementsAre("on 1 60 100"));

    log.calls.clear();
    log.times.clear();
    gate.SetTimed(true);
    gate.NoteOff(1, 60, 64, 10);
    gate.KeyPressure(2, 61, 5, 11);
    gate.ControlChange(3, 7, 90, 12);
    gate.ProgramChange(4, 8, 13);
    gate.ChannelPressure(5, 9, 14);
    gate.PitchBend(6, 1, 64, 15);
    gate.SourceEnded(7, 16);
    gate.AllNotesOff(true, 17);
    EXPECT_THAT(log.calls, IsEmpty());
    {
        EventGate::Turn turn(gate);
        for (bigtime_t time = 10; time < 17; time++) {
            ASSERT_EQ(turn.Next()->time, time);
            turn.Play();
        }
        EXPECT_EQ(turn.Next()->time, 17) << "that may wait for another turn";
        EXPECT_EQ(EventGate::Turn(gate).Next(), nullptr) << "one has it already";
    }
    EXPECT_THAT(log.calls, ElementsAre("off 1 60 64", "key 2 61 5", "control 3 7 90", "program 4 8",
                                       "pressure 5 9", "bend 6 1 64", "ended 7"));
    gate.SetTimed(false);
    EXPECT_EQ(EventGate::Turn(gate).Next(), nullptr);
    EXPECT_EQ(log.calls.size(), 8U);
    EXPECT_EQ(log.calls.back(), "alloff 1");
    EXPECT_EQ(log.times, (std::vector<bigtime_t>{10, 11, 12, 13, 14, 15, 16, 17}));
}

TEST(EventGate, EventsOfSeveralSourcesComeInTheOrderOfTheirTimes) {
    test::MidiLog log;
    EventGate gate(log);
    gate.SetTimed(true);
    gate.NoteOn(0, 60, 100, 10);
    gate.NoteOn(0, 61, 100, 30);
    gate.NoteOff(0, 61, 64, 30);
    gate.NoteOn(1, 70, 100, 5);
    gate.NoteOn(1, 71, 100, 20);
    gate.NoteOff(1, 71, 64, 30);
    gate.NoteOff(0, 60, 64, 0);
    gate.NoteOn(2, 80, 100, 15);
    gate.SetTimed(false);
    EXPECT_THAT(log.calls, ElementsAre("on 1 70 100", "on 0 60 100", "on 1 71 100", "on 0 61 100",
                                       "off 0 61 64", "off 1 71 64", "off 0 60 64", "on 2 80 100"))
        << "without a time, behind all that came before";
}

/// A consumer that checks the order of events, and that no two calls overlap.
class Counter : public BMidiLocalConsumer {
  public:
    Counter() : BMidiLocalConsumer("counter") {}
    void ControlChange(uchar, uchar, uchar, bigtime_t time) override {
        inside += inside.exchange(1) != 0 ? 1000 : 0;
        disorder += time != next;
        next = time + 1;
        inside = 0;
    }
    bigtime_t next = 1;
    int disorder = 0;
    std::atomic<int> inside{0};
};

TEST(EventGate, WhoeverPlaysThemEventsStayInOrderAndNoneIsLost) {
    constexpr bigtime_t kEvents = 300000;
    Counter counter;
    EventGate gate(counter);
    std::jthread renderer([&](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            EventGate::Turn turn(gate);
            for (int i = 0; i < 50 && turn.Next(); i++)
                turn.Play();
        }
    });
    std::jthread window([&](const std::stop_token& stop) {
        for (bool timed = true; !stop.stop_requested(); timed = !timed)
            gate.SetTimed(timed);
    });
    for (bigtime_t i = 1; i <= kEvents; i++)
        gate.ControlChange(0, 1, 2, i);
    window.request_stop();
    window.join();
    gate.SetTimed(false);
    EXPECT_EQ(counter.next, kEvents + 1);
    EXPECT_EQ(counter.disorder, 0);
    EXPECT_EQ(counter.inside, 0);
}

/// More events than any cable carries, while nothing renders.
TEST(EventGate, AFullGateHandsOn) {
    Counter counter;
    EventGate gate(counter);
    gate.SetTimed(true);
    for (bigtime_t i = 1; i <= 100000; i++)
        gate.ControlChange(0, 1, 2, i);
    EXPECT_GT(counter.next, 50000);
    EXPECT_EQ(counter.disorder, 0);
}

} // namespace
