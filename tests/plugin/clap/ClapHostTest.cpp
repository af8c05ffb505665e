// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/clap/ClapHost.h"

#include "documents/SoundDocument.h"
#include "support/Command.h"
#include "support/Environment.h"
#include "support/RealtimeWatch.h"
#include "support/TemporaryFolder.h"

#include <functional>
#include <limits>
#include <memory>
#include <thread>
#include <tuple>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace vexa;
using test::ClapHost;
using test::Factory;
using test::Name;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr uint16_t kOn = CLAP_EVENT_NOTE_ON, kOff = CLAP_EVENT_NOTE_OFF;

/// A circle of radius 1 with quick ends, so that f = x is a sine; pressure drives controller 2.
/// After the release it has the radius `end`.
std::string Circle(const std::string& expression, float end = 0) {
    Sound sound;
    sound.function.expression = expression;
    sound.envelopes[2] =
        sound.envelopes[3] = {{0, false, 0}, {0.01F, false, 1}, {0.05F, true, end}};
    sound.playing.emplace().Of("pressure") = "2";
    return SoundText(sound);
}

double Level(const std::vector<float>& samples) {
    double sum = 0;
    for (const float sample : samples)
        sum += std::isfinite(sample) ? double(sample) * sample : 1e18;
    return samples.empty() ? 0 : std::sqrt(sum / static_cast<double>(samples.size()));
}

/// Returns the frequency of a sine in Hz, from its first and last rise through 0.
double Pitch(const std::vector<float>& samples, double rate) {
    double first = -1, last = -1;
    int turns = -1;
    for (std::size_t i = 1; i < samples.size(); i++) {
        if (samples[i - 1] >= 0 || samples[i] < 0)
            continue;
        const double from = samples[i - 1], to = samples[i];
        last = static_cast<double>(i) - to / (to - from);
        first = turns++ < 0 ? last : first;
    }
    return turns / (last - first) * rate;
}

double Cents(double hertz) {
    return 1200 * std::log2(hertz / 440);
}

class ClapPlugin : public testing::Test {
  protected:
    void TearDown() override { EXPECT_EQ(watch.Faults(), 0) << "in the audio thread"; }

  private:
    test::RealtimeWatch watch;
};

TEST_F(ClapPlugin, NotesOfOneKeyHaveTheirOwnPitches) {
    ClapHost host;
    // For a sound with pitch bend and one without.
    Sound plain;
    plain.function.expression = "x";
    plain.envelopes[2] = plain.envelopes[3] = {{0, false, 0}, {0.01F, false, 1}};
    for (const std::string& sound : {Circle("x"), SoundText(plain)}) {
        ASSERT_TRUE(host.Load(sound));
        for (int id : {1, 2}) {
            host.Note(kOn, 0, {id, 0, 69});
            host.Express(0, CLAP_NOTE_EXPRESSION_PAN, {id}, id - 1);
        }
        host.Express(0, CLAP_NOTE_EXPRESSION_TUNING, {1, -1, -1}, 0.3721);
        host.Run(4800);
        // The same later, within a block.
        host.Express(100, CLAP_NOTE_EXPRESSION_TUNING, {2, -1, -1}, -1.503);
        host.Run(4800);
        const std::vector<float> left = host.Run(48000);
        EXPECT_NEAR(Cents(Pitch(left, 48000)), 37.21, 0.1);
        EXPECT_NEAR(Cents(Pitch(host.right, 48000)), -150.3, 0.1);
        RecordProperty("cents", std::to_string(Cents(Pitch(left, 48000))));
        host.Reset();
        EXPECT_EQ(Level(host.Run(480)), 0);
    }
    // As with MIDI, on a channel of the note's own (MPE), whose wheel covers 48 semitones.
    host.Load(Circle("x"));
    for (const auto& [controller, value] : {std::pair{101, 0}, {100, 6}, {6, 15}})
        host.Midi(0, {0xB0, uint8_t(controller), uint8_t(value)});
    host.Midi(0, {0xE1, 0, 0x60});
    host.Midi(0, {0x91, 69, 100});
    host.Run(4800);
    EXPECT_NEAR(Cents(Pitch(host.Run(48000), 48000)), 4800 * 4096 / 8191.0, 0.1);
}

TEST_F(ClapPlugin, NotesHaveTheirOwnMacrosAndExpressions) {
    struct Case {
        const char* what;
        std::function<void(ClapHost&)> apply;
        double left, right;
    };
    const auto express = [](clap_note_expression which, double value, const Name& name = {1}) {
        return [=](ClapHost& host) { host.Express(0, which, name, value); };
    };
    const auto set = [](double value, const Name& name) {
        return [=](ClapHost& host) { host.Set(0, "Macro a", value, name); };
    };
    const auto modulate = [](double amount, const Name& name) {
        return [=](ClapHost& host) { host.Modulate(0, "Macro a", amount, name); };
    };
    const Case cases[] = {
        {"nothing", [](ClapHost&) {}, 1, 1},
        {"volume", express(CLAP_NOTE_EXPRESSION_VOLUME, 0.5), 0.5, 0.5},
        {"volume beyond", express(CLAP_NOTE_EXPRESSION_VOLUME, 9), 4, 4},
        {"volume that is none", express(CLAP_NOTE_EXPRESSION_VOLUME, kNaN), 1, 1},
        {"expression", express(CLAP_NOTE_EXPRESSION_EXPRESSION, 0.25), 0.25, 0.25},
        {"left", express(CLAP_NOTE_EXPRESSION_PAN, 0), 1, 0},
        {"half right", express(CLAP_NOTE_EXPRESSION_PAN, 0.75), 0.5, 1},
        {"brightness", express(CLAP_NOTE_EXPRESSION_BRIGHTNESS, 0.5), 0.5, 0.5},
        {"pressure", express(CLAP_NOTE_EXPRESSION_PRESSURE, 0.25), 0.25, 0.25},
        {"vibrato", express(CLAP_NOTE_EXPRESSION_VIBRATO, 1), 1, 1},
        {"by key", express(CLAP_NOTE_EXPRESSION_VOLUME, 0.5, {-1, -1, 69}), 0.5, 0.5},
        {"by channel", express(CLAP_NOTE_EXPRESSION_VOLUME, 0.5, {-1, 3, -1}), 0.5, 0.5},
        {"for all", express(CLAP_NOTE_EXPRESSION_VOLUME, 0.5, {}), 0.5, 0.5},
        {"another id", express(CLAP_NOTE_EXPRESSION_VOLUME, 0.5, {2, 3, 69}), 1, 1},
        {"another key", express(CLAP_NOTE_EXPRESSION_VOLUME, 0.5, {1, 3, 68}), 1, 1},
        {"another channel", express(CLAP_NOTE_EXPRESSION_VOLUME, 0.5, {1, 4, 69}), 1, 1},
        {"a channel that is none", express(CLAP_NOTE_EXPRESSION_VOLUME, 0.5, {-1, 77, -1}), 1, 1},
        {"macro", set(0.25, {1}), 0.25, 0.25},
        {"macro of another", set(0.25, {2}), 1, 1},
        {"common macro", set(0.25, {}), 0.25, 0.25},
        {"macro of none", set(kNaN, {1}), 1, 1},
        {"modulation", modulate(-0.75, {-1, -1, 69}), 0.25, 0.25},
        {"modulation beyond", modulate(3, {1}), 1, 1},
        {"common modulation", modulate(-0.75, {}), 0.25, 0.25},
        {"both modulations",
         [](ClapHost& host) {
             host.Modulate(0, "Macro a", -0.9);
             host.Modulate(0, "Macro a", -0.5, {1});
         },
         0.5, 0.5},
        {"what is no macro", [](ClapHost& host) { host.Set(0, "Volume", -40, {1}); }, 1, 1},
    };
    double whole = 0;
    for (const Case& c : cases) {
        ClapHost host;
        ASSERT_TRUE(host.Load(Circle("a*ctl(74)*ctl(2)*x")));
        host.Midi(0, {0xB0, 74, 127});
        host.Midi(0, {0xB0, 2, 127});
        host.Set(0, "Macro a", 1);
        host.Run(4800);
        host.Note(kOn, 0, {1, 3, 69});
        c.apply(host);
        host.Run(9600);
        const double left = Level(host.Run(4800)), right = Level(host.right);
        whole = whole > 0 ? whole : left;
        EXPECT_GT(whole, 0.01);
        EXPECT_NEAR(left / whole, c.left, 1e-4) << c.what;
        EXPECT_NEAR(right / whole, c.right, 1e-4) << c.what;
    }
}

TEST_F(ClapPlugin, ANoteBeginsWithWhatItHasForItself) {
    std::vector<float> heard[2];
    for (const bool own : {false, true}) {
        ClapHost host;
        host.Load(Circle("x+a"));
        host.Set(0, "Macro a", own ? 1 : 0.25);
        host.Run(4800);
        host.Note(kOn, 7, {1, 0, 69});
        host.Set(7, "Macro a", 0.25, own ? Name{1} : Name{});
        heard[own] = host.Run(4800);
    }
    EXPECT_EQ(heard[0], heard[1]);
    EXPECT_GT(Level(heard[0]), 0.01);
}

TEST_F(ClapPlugin, EventsAreHeardFromTheirFramesOn) {
    const auto play = [](int at, bool inBlock) {
        ClapHost host;
        host.Load(Circle("x"));
        host.Note(kOn, 0, {1, 0, 69});
        host.Run(4800);
        if (at >= 0 && inBlock)
            host.Set(static_cast<uint32_t>(at), "Volume", -20);
        std::vector<float> heard = host.Run(inBlock ? 4096 : 1000);
        if (!inBlock) {
            host.Set(0, "Volume", -20);
            const std::vector<float> rest = host.Run(3096);
            heard.insert(heard.end(), rest.begin(), rest.end());
        }
        return heard;
    };
    const std::vector<float> without = play(-1, true), within = play(1000, true);
    EXPECT_EQ(within, play(0, false));
    const auto first = std::ranges::mismatch(without, within).in1 - without.begin();
    EXPECT_GE(first, 1000);
    EXPECT_LE(first, 1001);
}

TEST_F(ClapPlugin, TheHostIsToldOnceThatANoteHasEnded) {
    ClapHost host;
    const auto polyphony = [&](double voices, double mode) {
        host.Set(0, "Polyphony", voices);
        host.Set(0, "Mode", mode);
    };
    // The first note never comes to rest. If f is not 0 where a note does, its filter settles
    // slightly beside 0.
    for (const auto& [formula, end] :
         {std::pair{"x*exp(-99*t)", 1}, {"x", 0}, {"x*(1+0*t)", 0}, {"x+9", 0}}) {
        host.Load(Circle(formula, static_cast<float>(end)));
        polyphony(0, -1);
        host.ended.clear();
        host.Note(kOn, 0, {5, 2, 60});
        host.Note(kOn, 0, {6, 2, 60});
        host.Run(4800);
        host.Note(kOff, 0, {5, -1, -1});
        host.Run(64);
        EXPECT_THAT(host.ended, IsEmpty()) << "it is released and heard still";
        EXPECT_EQ(host.status, CLAP_PROCESS_CONTINUE);
        for (int i = 0; i < 101; i++)
            host.Run(4800);
        EXPECT_THAT(host.ended, ElementsAre(Name{5, 2, 60})) << formula;
        host.Note(kOff, 0, {-1, 2, -1});
        for (int i = 0; i < 101; i++)
            host.Run(4800);
        EXPECT_THAT(host.ended, ElementsAre(Name{5, 2, 60}, Name{6, 2, 60})) << formula;
        EXPECT_EQ(host.status, CLAP_PROCESS_SLEEP) << formula;
    }
    // A voice that is stolen by another note.
    host.ended.clear();
    polyphony(1, -1);
    host.Note(kOn, 0, {1, 0, 60});
    host.Note(kOn, 0, {2, 0, 61});
    host.Run(64);
    EXPECT_THAT(host.ended, ElementsAre(Name{1, 0, 60}));
    host.Reset();
    host.Run(1);
    EXPECT_THAT(host.ended, ElementsAre(Name{1, 0, 60}, Name{2, 0, 61}));
    // A key that is struck again without a note id is the same note.
    host.ended.clear();
    polyphony(0, -1);
    host.Note(kOn, 0, {-1, 0, 60});
    host.Note(kOn, 0, {-1, 0, 60});
    host.Run(64);
    EXPECT_THAT(host.ended, IsEmpty());
    host.Note(CLAP_EVENT_NOTE_CHOKE, 0, {});
    host.Run(64);
    EXPECT_THAT(host.ended, ElementsAre(Name{-1, 0, 60}));
    // With one voice, the note returns to a key that is still down.
    host.ended.clear();
    polyphony(0, 1);
    host.Note(kOn, 0, {1, 0, 69});
    host.Note(kOn, 10, {2, 0, 81});
    host.Note(kOff, 2000, {2, 0, 81});
    host.Run(4800);
    EXPECT_THAT(host.ended, ElementsAre(Name{2, 0, 81}));
    EXPECT_NEAR(Cents(Pitch(host.Run(9600), 48000)), 0, 1);
    host.Note(kOn, 0, {3, 0, 70});
    host.Note(kOff, 5, {1, 0, 69});
    host.Run(64);
    EXPECT_THAT(host.ended, ElementsAre(Name{2, 0, 81}, Name{1, 0, 69}));
    host.Note(kOff, 0, {3, 0, 70});
    for (int i = 0; i < 100; i++)
        host.Run(4800);
    EXPECT_THAT(host.ended, ElementsAre(Name{2, 0, 81}, Name{1, 0, 69}, Name{3, 0, 70}));
    // Invalid notes neither sound nor end.
    host.Reset();
    for (const Name& none :
         {Name{1}, {1, -1, 60}, {1, 0, -1}, {1, 77, 60}, {1, 0, 200}, {-9, 0, 60}})
        host.Note(kOn, 0, none);
    host.Note(kOn, 0, {1, 0, 60}, kNaN);
    EXPECT_EQ(Level(host.Run(4800)), 0);
    EXPECT_EQ(host.ended.size(), 3);
}

/// Plays in blocks of all lengths, appended to both ears.
void Play(ClapHost& host, std::size_t count, std::array<std::vector<float>, 2>& ears) {
    constexpr std::size_t kBlocks[] = {0, 1, 8192, 333, 64};
    for (std::size_t done = 0, i = 0; done < count; i++) {
        const std::size_t n = std::min(kBlocks[i % std::size(kBlocks)], count - done);
        const std::vector<float> left = host.Run(static_cast<uint32_t>(n));
        ears[0].insert(ears[0].end(), left.begin(), left.end());
        ears[1].insert(ears[1].end(), host.right.begin(), host.right.end());
        done += n;
    }
}

/// The state that a host keeps is a sound document. vexa-render must give the same samples for it.
TEST_F(ClapPlugin, EightInstancesPlayWhatVexaRenderPlays) {
    const test::TemporaryFolder folder;
    // Two keys, a quarter of a second: 480 ticks of half a second each.
    constexpr char kMidi[] = "MThd\0\0\0\6\0\0\0\1\1\xE0MTrk\0\0\0\x15\0\x90\x3C\x64\0\x90\x43\x50"
                             "\x81\x70\x80\x3C\0\0\x80\x43\0\0\xFF\x2F";
    const std::string midi = folder.Write("notes.mid", {kMidi, sizeof kMidi}).string();
    std::vector<std::unique_ptr<ClapHost>> hosts;
    for (int i = 0; i < 8; i++) {
        Sound sound = *ReadSound(VEXA_SOURCE_FOLDER "/benchmarks/twin-hills.xml");
        sound.function.kind = i == 4  ? FunctionKind::Picture
                              : i % 2 ? FunctionKind::Sample
                                      : FunctionKind::Expression;
        sound.function.expression = "sin(x*" + std::to_string(i + 1) + ")*cos(y)";
        // Both find the pictures in the folder beside them.
        sound.function.pictureFile = "rose.png";
        sound.function.sampleFile = i % 4 == 1 ? "pluck.wav" : "voice.wav";
        hosts.push_back(std::make_unique<ClapHost>());
        ASSERT_TRUE(hosts.back()->Load(SoundText(sound)));
    }
    double worst = 0;
    for (const int rate : {8000, 48000, 384000}) {
        for (std::size_t i = 0; i < hosts.size(); i++) {
            const std::string out = (folder.Path() / "out.wav").string();
            const test::CommandResult run =
                test::RunCommand({VEXA_PROGRAM_FOLDER "/vexa-render", midi, out, "--sound",
                                  folder.Write("sound.xml", hosts[i]->Save()).string(), "--rate",
                                  std::to_string(rate), "--tail", "0.1", "--quiet"});
            ASSERT_EQ(run.exitCode, 0) << run.text;
            // The samples are 32-bit floats.
            const std::string bytes = test::Contents(out);
            const std::size_t data = bytes.find("data") + 8;
            std::vector<float> expected((bytes.size() - data) / sizeof(float));
            std::memcpy(expected.data(), &bytes[data], expected.size() * sizeof(float));

            ClapHost& host = *hosts[i];
            const auto channels = static_cast<std::size_t>(bytes[22]);
            std::array<std::vector<float>, 2> ears;
            host.plugin->deactivate(host.plugin);
            ASSERT_TRUE(host.Activate(rate));
            for (const int key : {60, 67})
                host.Note(kOn, 0, {key, 0, key}, (key == 60 ? 0x64 : 0x50) / 127.0);
            Play(host, static_cast<std::size_t>(rate / 4), ears);
            for (const int key : {60, 67})
                host.Note(kOff, 0, {key, 0, key});
            Play(host, expected.size() / channels - ears[0].size(), ears);
            EXPECT_GT(Level(ears[0]), 1e-3);
            EXPECT_FALSE(host.beyond);
            // The end of the file fades.
            const std::size_t faded = channels * static_cast<std::size_t>(rate / 100);
            for (std::size_t s = 0; s < expected.size() - faded; s++) {
                const double difference =
                    std::abs(double(expected[s]) - ears[s % channels][s / channels]);
                worst = std::max(worst, difference);
                ASSERT_LT(difference, 1e-6) << rate << " Hz, " << i << ", " << s;
            }
        }
    }
    RecordProperty("worst", std::to_string(worst * 1e9) + "e-9");
}

TEST_F(ClapPlugin, AStateIsTheSoundAndTheKnobs) {
    ClapHost host, other;
    const std::string sound = Circle("a*sin(3*x)*cos(2*y)");
    ASSERT_TRUE(host.Load(sound));
    EXPECT_EQ(host.Save(), sound) << "as it is in all other hosts and programs";
    EXPECT_EQ(host.rescans, 1);
    host.Set(0, "Macro a", 0.125);
    host.Set(0, "Volume", -7.3);
    host.Flush();
    const std::string state = host.Save();
    const kits::Result<Sound> read = SoundOfText(state);
    ASSERT_TRUE(read) << read.Fault().text;
    EXPECT_EQ(SoundText(*read), sound);
    ASSERT_TRUE(other.Load(state));
    EXPECT_EQ(other.Save(), state);
    EXPECT_EQ(other.Value("Volume"), -7.3);
    for (ClapHost* each : {&host, &other})
        each->Note(kOn, 3, {1, 0, 60});
    EXPECT_EQ(host.Run(8192), other.Run(8192));
    EXPECT_GT(Level(host.Run(64)), 1e-4);
    // Controls missing in a state leave their settings to the sound.
    ASSERT_TRUE(other.Load(sound));
    EXPECT_EQ(other.Save(), sound);

    std::string hostile = state;
    hostile.replace(hostile.find("volume=-7.3"), 11, "volume=1e99");
    ASSERT_TRUE(other.Load(hostile));
    EXPECT_EQ(other.Value("Volume"), 12);
    std::string newer = state;
    newer.replace(newer.find(" volume="), 8, " loudness=");
    newer.replace(newer.find("</vexasound>"), 0, "<new/>");
    ASSERT_TRUE(other.Load(newer));
    EXPECT_EQ(other.Value("Volume"), -41);
    EXPECT_EQ(other.Value("Macro a"), 0.125);
    for (const std::string& bad :
         {std::string(), state.substr(0, state.size() / 2), std::string("\0\1\2", 3),
          std::string("<other/>"), std::string(1 << 20, '<'), Circle("system(1)")}) {
        EXPECT_FALSE(host.Load(bad)) << bad.substr(0, 200);
        EXPECT_EQ(host.Save(), state);
    }
    EXPECT_FALSE(host.Load(sound, true)) << "the stream has failed";
    EXPECT_EQ(host.Save(), state);
}

TEST_F(ClapPlugin, SaysWhatItIs) {
    const clap_plugin_descriptor& what = *Factory().get_plugin_descriptor(&Factory(), 0);
    EXPECT_EQ(Factory().get_plugin_descriptor(&Factory(), 1), nullptr);
    EXPECT_EQ(Factory().create_plugin(&Factory(), nullptr, what.id), nullptr);
    EXPECT_THAT(std::vector<std::string>(what.features, what.features + 3),
                ElementsAre("instrument", "synthesizer", "stereo"));
    ClapHost host;
    EXPECT_EQ(host.plugin->get_extension(host.plugin, "clap.nothing"), nullptr);
    const auto& audio = host.Extension<clap_plugin_audio_ports>(CLAP_EXT_AUDIO_PORTS);
    const auto& notes = host.Extension<clap_plugin_note_ports>(CLAP_EXT_NOTE_PORTS);
    clap_audio_port_info ears{};
    clap_note_port_info keys{};
    EXPECT_EQ(audio.count(host.plugin, true) + notes.count(host.plugin, false), 0);
    EXPECT_TRUE(audio.get(host.plugin, 0, false, &ears));
    EXPECT_FALSE(audio.get(host.plugin, 1, false, &ears));
    EXPECT_EQ(ears.channel_count, 2);
    EXPECT_TRUE(notes.get(host.plugin, 0, true, &keys));
    EXPECT_FALSE(notes.get(host.plugin, 0, false, &keys));
    EXPECT_EQ(keys.preferred_dialect, CLAP_NOTE_DIALECT_CLAP);
    EXPECT_EQ(keys.supported_dialects,
              CLAP_NOTE_DIALECT_CLAP | CLAP_NOTE_DIALECT_MIDI | CLAP_NOTE_DIALECT_MIDI_MPE);
}

TEST_F(ClapPlugin, KnobsHaveTextsAndNoOtherValues) {
    ClapHost host;
    const auto& params = host.Extension<clap_plugin_params>(CLAP_EXT_PARAMS);
    clap_param_info info{};
    for (uint32_t i = 0; params.get_info(host.plugin, i, &info); i++) {
        SCOPED_TRACE(info.name);
        EXPECT_EQ(host.Value(info.name), info.default_value);
        EXPECT_EQ(info.default_value, info.min_value);
        EXPECT_TRUE(info.flags & CLAP_PARAM_IS_AUTOMATABLE);
        EXPECT_EQ(bool(info.flags & CLAP_PARAM_IS_MODULATABLE_PER_NOTE_ID),
                  std::string(info.module) == "Macros");
        const bool stepped = info.flags & CLAP_PARAM_IS_STEPPED;
        for (int step = 0; step <= 8; step++) {
            double value = info.min_value + (info.max_value - info.min_value) * step / 8;
            value = stepped ? std::round(value) : value;
            char text[64];
            double back = kNaN, again = kNaN;
            char same[64];
            ASSERT_TRUE(params.value_to_text(host.plugin, info.id, value, text, sizeof text));
            ASSERT_TRUE(params.text_to_value(host.plugin, info.id, text, &back)) << text;
            params.value_to_text(host.plugin, info.id, back, same, sizeof same);
            EXPECT_STREQ(same, text);
            host.Set(0, info.name, value);
            host.Run(8);
            again = host.Value(info.name);
            EXPECT_TRUE(again == value || again == info.min_value) << value;
        }
        for (const double value : {kNaN, -1e300, 1e300, double(INFINITY)}) {
            host.Set(0, info.name, value);
            host.Note(kOn, 0, {1, 0, 60});
            EXPECT_LT(Level(host.Run(64)), 100);
            EXPECT_EQ(host.Value(info.name), value > 0 ? info.max_value : info.min_value);
        }
        double none = 5;
        for (const char* text : {"", "x", "1 parsec", "nan", "1e99", "-1e99"})
            EXPECT_FALSE(params.text_to_value(host.plugin, info.id, text, &none)) << text;
        host.Set(0, info.name, info.min_value);
    }
    const std::pair<const char*, std::pair<double, const char*>> texts[] = {
        {"Volume", {-6, "-6 dB"}},
        {"Volume", {-41, "as the sound"}},
        {"Mode", {2, "legato"}},
        {"Oversampling", {4, "4"}},
        {"Bend range", {2, "2 semitones"}},
        {"Macro a", {0.25, "0.25"}},
        {"MPE", {1, "on"}},
        {"MPE", {0, "as configured by its message"}},
    };
    for (const auto& [name, row] : texts) {
        char text[64];
        params.value_to_text(host.plugin, host.Info(name).id, row.first, text, sizeof text);
        EXPECT_STREQ(text, row.second);
    }
    double typed = 0;
    const clap_id volume = host.Info("Volume").id;
    for (const auto& [text, value] : {std::pair{"+3 dB", 3}, {"-6 db", -6}, {" +0.0 ", 0}}) {
        EXPECT_TRUE(params.text_to_value(host.plugin, volume, text, &typed)) << text;
        EXPECT_EQ(typed, value) << text;
    }
    EXPECT_FALSE(params.text_to_value(host.plugin, volume, "+-3", &typed));
    double ignored = 0;
    EXPECT_FALSE(params.get_value(host.plugin, 12345, &ignored));
    EXPECT_FALSE(params.get_info(host.plugin, params.count(host.plugin), &info));
}

TEST_F(ClapPlugin, ActivationsAndLatenciesMayComeInAnyOrder) {
    const test::TemporaryFolder folder;
    folder.Write("vexa/sounds/default.xml", Circle("x"));
    const test::EnvironmentVariable user("XDG_DATA_HOME", folder.Path().c_str());
    ClapHost host, fresh;
    for (ClapHost* each : {&host, &fresh})
        ASSERT_TRUE(each->Load(Circle("x")));
    const auto latency = [&] { return host.Latency(); };
    EXPECT_EQ(latency(), 0);
    EXPECT_EQ(host.callbacks.exchange(0), 1) << "what was before the sound is let go";
    host.Note(kOn, 0, {1, 0, 60});
    host.Set(0, "Oversampling", 4);
    host.Run(64);
    EXPECT_GT(latency(), 0);
    EXPECT_EQ(host.callbacks, 1);
    host.Run(64);
    EXPECT_EQ(host.callbacks, 1) << "told once";
    host.plugin->on_main_thread(host.plugin);
    EXPECT_EQ(host.restarts, 1);
    host.plugin->deactivate(host.plugin);
    host.plugin->on_main_thread(host.plugin);
    EXPECT_EQ(host.restarts, 1);
    host.Activate(48000);
    EXPECT_EQ(host.latencies, 1);
    // A latency that changed back before the host looked is reported again when it returns.
    host.callbacks = 0;
    for (const double factor : {1, 4, 1}) {
        host.Set(0, "Oversampling", factor);
        host.Run(64);
    }
    EXPECT_EQ(host.callbacks, 2);
    host.Set(0, "Oversampling", 4);
    host.Run(64);
    EXPECT_EQ(Level(host.Run(64)), 0) << "nothing is left of the note";
    // Behaves like a new instance, whatever happened before.
    host.Set(0, "Oversampling", 0);
    for (ClapHost* each : {&host, &fresh}) {
        ASSERT_TRUE(each->Load(Circle("x*(0.2+a+b+ctl(2)+ctl(7)+ctl(20))")));
        each->Set(0, "Glide", 0.3);
        each->Set(0, "Bend range", 2);
    }
    fresh.Run(64);
    for (const double rate : {kNaN, 0.0, -1.0})
        EXPECT_FALSE(host.Activate(rate));
    // Channel 0 receives a range of its wheel, and channel 15 a zone of MPE.
    const auto live = [&] {
        host.Modulate(0, "Macro b", 0.4);
        for (const auto& [channel, controller, value] : {std::tuple{0, 7, 30},
                                                         {0, 11, 50},
                                                         {0, 16, 127},
                                                         {0, 20, 5},
                                                         {0, 64, 127},
                                                         {0, 66, 127},
                                                         {0, 101, 0},
                                                         {0, 100, 0},
                                                         {0, 6, 24},
                                                         {15, 101, 0},
                                                         {15, 100, 6},
                                                         {15, 6, 3}})
            host.Midi(0, {uint8_t(0xB0 + channel), uint8_t(controller), uint8_t(value)});
        host.Midi(0, {0xE0, 0, 0x70});
        host.Midi(0, {0xD0, 90, 0});
        host.Note(kOn, 0, {1, 0, 84});
        host.Note(kOn, 0, {2, 13, 84});
        host.Run(333);
    };
    for (const double rate : {384000.0, 8000.0, 8000.0, 48000.0}) {
        host.Activate(rate);
        host.Reset();
        host.Run(1);
        live();
        if (rate > 10000)
            host.plugin->deactivate(host.plugin);
        host.plugin->start_processing(host.plugin);
        host.plugin->stop_processing(host.plugin);
    }
    const auto played = [](ClapHost& each) {
        for (const int channel : {0, 13})
            each.Note(kOn, 5, {1, channel, 60});
        for (const int channel : {0, 13})
            each.Midi(700, {uint8_t(0xE0 + channel), 0, 0x50});
        each.Note(kOff, 1000, {});
        return each.Run(8192);
    };
    const std::vector<float> expected = played(fresh);
    EXPECT_GT(Level(expected), 1e-3);
    host.plugin->deactivate(host.plugin);
    host.plugin->deactivate(host.plugin);
    host.Activate(48000);
    EXPECT_EQ(played(host), expected);
    live();
    host.Reset();
    EXPECT_EQ(played(host), expected);
}

TEST_F(ClapPlugin, NamesTheFaultOfADefaultSoundForWhichAnotherPlays) {
    const test::TemporaryFolder folder;
    const test::EnvironmentVariable user("XDG_DATA_HOME", folder.Path().c_str());
    EXPECT_EQ(ClapHost(48000, test::Factory(), true).log, "") << "the shipped one has no fault";
    const auto broken = folder.Write("vexa/sounds/default.xml", "<vexasound");
    testing::internal::CaptureStderr();
    const ClapHost logging(48000, test::Factory(), true);
    EXPECT_THAT(logging.log, HasSubstr(broken.string() + ":1:1: "));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    testing::internal::CaptureStderr();
    ClapHost host;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "vexa: " + logging.log + "\n");
    host.Note(kOn, 0, {1, 0, 60});
    EXPECT_GT(Level(host.Run(4800)), 1e-3);
}

TEST_F(ClapPlugin, HasAWindowWhereItsLibraryAndTheHostsTimersAre) {
    const test::TemporaryFolder folder;
    const std::string copy = folder.Write("vexa.clap", test::Contents(VEXA_CLAP)).string();
    const auto supports = [](ClapHost& host, const char* api, bool isFloating) {
        return host.Extension<clap_plugin_gui>(CLAP_EXT_GUI)
            .is_api_supported(host.plugin, api, isFloating);
    };
    // A plug-in without its library, and one with a library that is none.
    for (const char* said : {"", "vexa: "}) {
        ClapHost host(48000, test::FactoryOf(copy.c_str()));
        testing::internal::CaptureStderr();
        EXPECT_FALSE(supports(host, CLAP_WINDOW_API_X11, false));
        EXPECT_THAT(testing::internal::GetCapturedStderr(), StartsWith(said));
        EXPECT_FALSE(host.timer);
        folder.Write("vexa/vexa-window.so", "nothing");
    }
    ClapHost host;
    const auto& gui = host.Extension<clap_plugin_gui>(CLAP_EXT_GUI);
    EXPECT_EQ(supports(host, CLAP_WINDOW_API_X11, false), VEXA_HAS_WINDOW);
    EXPECT_FALSE(supports(host, CLAP_WINDOW_API_X11, true));
    EXPECT_FALSE(supports(host, CLAP_WINDOW_API_WAYLAND, false));
    host.hasTimers = false;
    EXPECT_EQ(supports(host, CLAP_WINDOW_API_X11, false), VEXA_HAS_WINDOW) << "as in a scan";
    EXPECT_FALSE(gui.create(host.plugin, CLAP_WINDOW_API_X11, false));
    host.hasTimers = true;
    for (int i = 0; i < 2; i++) {
        uint32_t width = 0, height = 0;
        EXPECT_EQ(gui.create(host.plugin, CLAP_WINDOW_API_X11, false), VEXA_HAS_WINDOW);
        EXPECT_EQ(host.timer.has_value(), VEXA_HAS_WINDOW);
        EXPECT_FALSE(gui.create(host.plugin, CLAP_WINDOW_API_X11, false)) << "it exists";
        EXPECT_EQ(gui.get_size(host.plugin, &width, &height), VEXA_HAS_WINDOW);
        EXPECT_EQ(width > 0 && height > 0, VEXA_HAS_WINDOW);
        EXPECT_FALSE(gui.show(host.plugin)) << "it has no parent";
        host.Idle();
        gui.destroy(host.plugin);
        gui.destroy(host.plugin);
        EXPECT_FALSE(host.timer);
        EXPECT_FALSE(gui.get_size(host.plugin, &width, &height));
    }
}

TEST_F(ClapPlugin, OthersPlayWhileInstancesComeAndGoAndStatesAreLoaded) {
    ClapHost host;
    host.Note(kOn, 0, {1, 0, 60});
    std::jthread maker([] {
        for (int i = 0; i < 64; i++)
            ClapHost(44100).Run(1);
    });
    const std::string sounds[] = {Circle("x"), Circle("a*y"), Circle("sin(x*t)")};
    std::jthread player([&](const std::stop_token& stop) {
        for (int i = 0; !stop.stop_requested(); i++) {
            host.Set(0, "Macro a", i % 10 / 10.0);
            host.Express(0, CLAP_NOTE_EXPRESSION_TUNING, {1}, i % 3);
            host.Note(kOn, 1, {i % 40, 0, 40 + i % 40});
            EXPECT_LT(Level(host.Run(i % 2 ? 1 : 512)), 100);
        }
    });
    for (int i = 0; i < 60; i++) {
        EXPECT_TRUE(host.Load(sounds[i % 3]));
        EXPECT_THAT(host.Save(), EndsWith(sounds[i % 3].substr(sounds[i % 3].find("<vexasound>"))));
    }
}

} // namespace
