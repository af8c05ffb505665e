// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/MidiFile.h"
#include "support/Command.h"
#include "support/SoundFiles.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <set>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using Kind = vexa::MidiEvent::Kind;

const std::map<int, std::string> kPlayers{
    {1, "melody"}, {2, "chords"}, {3, "pad"}, {4, "bass"}, {10, "drums"}};

/// Catches a demo tune that needs more voices than there are, leaves notes on, or strikes a key on
/// a channel where it is held.
TEST(DemoTune, IsPlayableByFive) {
    const auto tune = vexa::ReadMidiFile(VEXA_SOURCE_FOLDER "/data/demo.mid");
    ASSERT_TRUE(tune) << tune.Fault().text;
    EXPECT_THAT(tune->warnings, testing::IsEmpty());
    EXPECT_NEAR(tune->duration, 50, 10);

    std::map<int, std::set<int>> sounding;
    std::set<int> controllers, bent;
    std::map<int, std::pair<int, int>> velocities;
    for (const vexa::MidiEvent& event : tune->events) {
        const int channel = event.channel + 1;
        if (event.kind == Kind::NoteOn) {
            EXPECT_TRUE(sounding[channel].insert(event.number).second) << "key held twice";
            auto& [least, most] = velocities.try_emplace(channel, 127, 1).first->second;
            least = std::min<int>(least, event.value);
            most = std::max<int>(most, event.value);
        } else if (event.kind == Kind::NoteOff) {
            EXPECT_EQ(sounding[channel].erase(event.number), 1U) << "end without a note";
        } else if (event.kind == Kind::ControlChange) {
            controllers.insert(event.number);
        } else if (event.kind == Kind::PitchBend) {
            bent.insert(channel);
        }
        EXPECT_LE(sounding[channel].size(), 10U) << "fingers";
    }
    for (const auto& [channel, player] : kPlayers) {
        SCOPED_TRACE(player);
        EXPECT_THAT(sounding[channel], testing::IsEmpty());
        EXPECT_GT(velocities[channel].second - velocities[channel].first, 15);
    }
    EXPECT_EQ(velocities.size(), kPlayers.size());
    EXPECT_THAT(controllers, testing::ElementsAre(1, 7, 64));
    EXPECT_THAT(bent, testing::ElementsAre(1));
}

/// Returns the options of a command in a file, found between two texts.
std::vector<std::string> OptionsIn(const char* file, const char* from, const char* to) {
    const std::string text = test::Contents(std::string(VEXA_SOURCE_FOLDER "/") + file);
    const std::size_t begin = text.find(from) + std::string(from).size();
    std::istringstream words(text.substr(begin, text.find(to, begin) - begin));
    std::vector<std::string> options{std::istream_iterator<std::string>(words), {}};
    std::erase(options, "\\");
    return options;
}

/// Checks the command of ./run, which the README names too: all five parts are heard, there is no
/// silence, and nothing is clipped.
TEST(DemoTune, IsAnArrangementInWhichEachIsHeard) {
    const std::vector<std::string> sounds = OptionsIn("run", "demo.mid\" \"$demo\"", "\nfi");
    EXPECT_EQ(sounds.size(), 10U);
    EXPECT_EQ(OptionsIn("README.md", "demo.mid demo.flac", "```"), sounds);

    const test::TemporaryFolder folder;
    const std::string wav = folder.Path() / "a.wav";
    std::vector<double> mix;
    std::map<std::string, double> power;
    const auto square = [](double sum, double sample) { return sum + sample * sample; };
    for (const auto& [channel, player] : kPlayers) {
        std::vector<std::string> command{VEXA_PROGRAM_FOLDER "/vexa-render",
                                         VEXA_SOURCE_FOLDER "/data/demo.mid",
                                         wav,
                                         "--rate",
                                         "16000",
                                         "--channel",
                                         std::to_string(channel)};
        command.insert(command.end(), sounds.begin(), sounds.end());
        const test::CommandResult result = test::RunCommand(command);
        ASSERT_EQ(result.exitCode, 0) << result.text;
        const test::DecodedSound sound = test::ReadSound(wav, 0);
        mix.resize(2 * sound.values.size() / sound.channels);
        for (std::size_t i = 0; i < mix.size(); i++)
            mix[i] += sound.values[sound.channels == 2 ? i : i / 2];
        power[player] = std::accumulate(sound.values.begin(), sound.values.end(), 0.0, square) * 2 /
                        sound.channels;
    }
    const double whole = std::accumulate(mix.begin(), mix.end(), 0.0, square);
    for (const auto& [player, own] : power)
        EXPECT_GT(10 * std::log10(own / whole), -15) << player;
    const auto [least, most] = std::ranges::minmax(mix);
    EXPECT_LT(20 * std::log10(std::max(-least, most)), -1);
    // Looks at each tenth of a second up to the final decay.
    for (std::size_t begin = 0; begin < 2 * 52 * 16000; begin += 3200) {
        const auto at = mix.begin() + static_cast<std::ptrdiff_t>(begin);
        ASSERT_GT(std::accumulate(at, at + 3200, 0.0, square) / 3200, 1e-3) << begin / 32000.0;
    }
}

} // namespace
