// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/AudioGraph.h"

#include "kits/kernel/OS.h"
#include "support/Attempts.h"
#include "support/Sounds.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace {

using Alerts = std::vector<std::string>;
using News = vexa::AudioGraph::DeviceNews;

/// A device of which the test says what becomes of it.
class Device : public kits::AudioDevice {
  public:
    struct State {
        double rate = 48000;
        bool gone = false;
        std::vector<double> started;
        kits::AudioSource* source = nullptr;
    };
    explicit Device(State& state) : state(state) {}
    std::string Name() const override { return "test"; }
    double SampleRate() const override { return rate; }
    uint32 Period() const override { return 128; }
    double Smoothing() const override { return 1; }
    kits::Result<void> Start(kits::AudioSource& source) override {
        state.source = &source;
        state.started.push_back(rate);
        return {};
    }
    void Stop() override { rate = state.rate; }
    bool HasGone() const override { return state.gone; }
    bool HasNewRate() const override { return rate != state.rate; }

  private:
    State& state;
    double rate = state.rate;
};

/// The roster has a mixer that plays through the device.
void PlayThrough(Device::State& device) {
    auto mixer = std::make_unique<kits::SystemMixer>(kits::AudioSystem::None,
                                                     std::make_unique<Device>(device));
    ASSERT_TRUE(mixer->StartDevice());
    ASSERT_EQ(BMediaRoster::Roster()->RegisterMixer(std::move(mixer)), B_OK);
}

TEST(AudioGraph, ADeviceMayChangeItsRateAndGo) {
    Device::State device;
    PlayThrough(device);
    vexa::Engine instrument;
    Alerts alerts;
    {
        vexa::AudioGraph graph(instrument,
                               [&alerts](const char* text) { alerts.emplace_back(text); });
        EXPECT_TRUE(graph.Start());
        EXPECT_EQ(graph.Watch(), News::None);
        device.rate = 44100;
        for (int look = 0; look < 2; look++)
            EXPECT_EQ(graph.Watch(), News::None);
        EXPECT_EQ(device.started, (std::vector<double>{48000, 44100}));
        EXPECT_EQ(graph.DeviceName(), "test");
        device.gone = true;
        EXPECT_EQ(graph.Watch(), News::Gone);
        EXPECT_EQ(graph.Watch(), News::None) << "told once";
        EXPECT_FALSE(graph.IsConnected());
        EXPECT_EQ(graph.DeviceName(), "");
    }
    EXPECT_EQ(alerts, Alerts{});
}

/// The device plays in the test's thread, in real time.
TEST(AudioGraph, ThePeriodOfTheDeviceIsFollowedAtOnce) {
    EXPECT_TRUE(test::SucceedsInTheEnd([] {
        Device::State device;
        PlayThrough(device);
        vexa::Engine instrument;
        vexa::AudioGraph graph(instrument, [](const char*) {});
        EXPECT_TRUE(graph.Start());
        std::vector<float> left(2048);
        std::vector<float> right(2048);
        bigtime_t next = system_time();
        const auto latencyAfter = [&](int periods, uint32 period) {
            for (int i = 0; i < periods; i++) {
                next += period * 1000000 / 48000;
                while (system_time() < next)
                    std::this_thread::sleep_for(std::chrono::microseconds(200));
                device.source->Play(left.data(), right.data(), period, next);
            }
            return double(graph.Producer().EventLatency());
        };
        // A busy machine may add to it.
        constexpr double kMost = 10000;
        constexpr double kGrowth = 1920 * 1e6 / 48000;
        const double before = latencyAfter(50, 128);
        const double grown = latencyAfter(6, 2048);
        const double after = latencyAfter(50, 128);
        std::printf("%.0f, %.0f and %.0f us\n", before, grown, after);
        return std::abs(grown - before - kGrowth) < kMost && std::abs(after - before) < kMost;
    }));
}

TEST(AudioGraph, WithoutAMixerItSaysSoAndAcceptsNotes) {
    kits::ChooseAudioSystem(kits::AudioSystem::None);
    vexa::Engine instrument;
    Alerts alerts;
    auto graph = std::make_unique<vexa::AudioGraph>(
        instrument, [&alerts](const char* text) { alerts.emplace_back(text); });
    EXPECT_EQ(alerts, Alerts{});
    EXPECT_FALSE(graph->Start());
    EXPECT_EQ(alerts, Alerts{"unable to get the system mixer"});
    EXPECT_FALSE(graph->IsConnected());

    EXPECT_EQ(graph->Consumer().Name(), "Vexa midi in");
    graph->Consumer().NoteOn(0, 69, 100, 0);
    EXPECT_EQ(graph->Consumer().CountVox(), 1);
    EXPECT_TRUE(instrument.voices[0].state.Look().Active());
    graph->Consumer().AllNotesOff(false, 0);
    EXPECT_EQ(graph->Consumer().CountVox(), 0);
    EXPECT_EQ(graph->DeviceName(), "");
    EXPECT_EQ(graph->DeviceFault(), "no audio system was asked for");
    EXPECT_EQ(graph->Watch(), News::None);

    alerts.clear();
    graph.reset();
    EXPECT_EQ(alerts, Alerts{"* Error disconnecting nodes"});
}

} // namespace
