#include "plugin/clap/ClapHost.h"

#include "documents/SoundDocument.h"
#include "instrument/Instrument.h"
#include "support/RealtimeWatch.h"

#include <limits>
#include <memory>
#include <thread>

#include <gtest/gtest.h>

namespace {

using namespace vexa;
using test::ClapHost;
using test::Name;

/// A sound that is heard, with that function.
Sound WithFormula(const std::string& expression) {
    ReadReport report;
    Sound sound = *ReadSound(VEXA_SOURCE_FOLDER "/data/sounds/default.xml", report);
    sound.function.kind = FunctionKind::Expression;
    sound.function.expression = expression;
    return sound;
}

/// What the engine gives for a sound and one note at a frame.
std::vector<float> Expected(const Sound& sound, double rate, std::size_t at, std::size_t count) {
    Instrument instrument(std::filesystem::path("/nowhere"), Addons::None);
    instrument.SetUsualVoices(20);
    instrument.Load(sound);
    Engine& engine = instrument.Playing();
    engine.renderer.SetGain(0.25F);
    engine.renderer.SetSampleRate(rate);
    std::vector<float> samples(count);
    engine.renderer.Render(samples.data(), at);
    engine.consumer.NoteOn(0, 60, 100, 0);
    engine.renderer.Render(samples.data() + at, count - at);
    return samples;
}

float Peak(const std::vector<float>& samples) {
    float peak = 0;
    for (const float sample : samples)
        peak = std::max(peak, std::isfinite(sample) ? std::abs(sample) : 1e9F);
    return peak;
}

TEST(ClapHost, InstancesPlayTheirOwnFormulasAsTheEngineDoes) {
    for (const double rate : {8000.0, 48000.0, 384000.0}) {
        std::vector<std::unique_ptr<ClapHost>> hosts;
        std::vector<Sound> sounds;
        for (std::size_t i = 0; i < 8; i++) {
            sounds.push_back(WithFormula("sin(x*" + std::to_string(i + 1) + ")*cos(y)"));
            hosts.push_back(std::make_unique<ClapHost>(rate));
            ASSERT_TRUE(hosts[i]->Load(SoundText(sounds[i])));
        }
        for (std::size_t i = 0; i < sounds.size(); i++) {
            const std::vector<float> expected = Expected(sounds[i], rate, 137, 8192);
            hosts[i]->Run(0);
            hosts[i]->Note(CLAP_EVENT_NOTE_ON, 137, {1, 0, 60});
            const test::RealtimeWatch watch;
            const std::vector<float> heard = hosts[i]->Run(8192);
            EXPECT_EQ(watch.Faults(), 0);
            EXPECT_FALSE(hosts[i]->beyond);
            EXPECT_EQ(heard, hosts[i]->right);
            ASSERT_GT(Peak(heard), 1e-3F);
            for (std::size_t s = 0; s < heard.size(); s++)
                ASSERT_NEAR(heard[s], expected[s], 1e-6) << rate << " Hz, " << i << ", " << s;
        }
    }
}

} // namespace
