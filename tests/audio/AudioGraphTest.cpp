#include "audio/AudioGraph.h"

#include "support/Sounds.h"

#include <memory>
#include <string>

#include <gtest/gtest.h>

namespace {

using Alerts = std::vector<std::string>;

TEST(AudioGraph, WithoutAMixerItSaysSoAndAcceptsNotes) {
    kits::ChooseAudioSystem(kits::AudioSystem::None);
    vexa::Instrument instrument;
    Alerts alerts;
    auto graph = std::make_unique<vexa::AudioGraph>(
        instrument.controllers, instrument.parameters, instrument.voices,
        [&alerts](const char* text) { alerts.emplace_back(text); });
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
    EXPECT_EQ(graph->Watch(), vexa::AudioGraph::DeviceNews::None);

    alerts.clear();
    graph.reset();
    EXPECT_EQ(alerts, Alerts{"* Error disconnecting nodes"});
}

} // namespace
