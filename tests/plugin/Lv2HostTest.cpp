// SPDX-License-Identifier: GPL-3.0-or-later
// A small host over lilv, and what it sees of the plug-in.
#include "documents/SoundDocument.h"
#include "instrument/Instrument.h"

#include <chrono>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <lilv/lilv.h>
#include <lv2/atom/atom.h>
#include <lv2/atom/forge.h>
#include <lv2/midi/midi.h>
#include <lv2/patch/patch.h>
#include <lv2/state/state.h>
#include <lv2/urid/urid.h>

namespace {

using namespace vexa;

constexpr const char* kUri = "urn:vexa:instrument";
constexpr std::size_t kControlPorts = 11, kFirst = 6;

/// Names and numbers, for all instances.
LV2_URID Id(const char* uri) {
    static std::mutex mutex;
    static std::map<std::string, LV2_URID> ids;
    const std::lock_guard lock(mutex);
    return ids.try_emplace(uri, static_cast<LV2_URID>(ids.size() + 1)).first->second;
}

LilvWorld* World() {
    static LilvWorld* const world = [] {
        LilvWorld* made = lilv_world_new();
        LilvNode* bundle = lilv_new_file_uri(made, nullptr, VEXA_BUNDLE "/");
        lilv_world_load_bundle(made, bundle);
        lilv_node_free(bundle);
        return made;
    }();
    return world;
}

/// An instance without a worker, so with a thread of its own.
class Host {
  public:
    explicit Host(double rate = 48000) : rate(rate) {
        LilvNode* uri = lilv_new_uri(World(), kUri);
        plugin = lilv_plugins_get_by_uri(lilv_world_get_all_plugins(World()), uri);
        lilv_node_free(uri);
        instance = lilv_plugin_instantiate(plugin, rate, features);
        if (!instance)
            throw std::runtime_error("no instance");
        lv2_atom_forge_init(&forge, &map);
        for (std::size_t i = 0; i < kControlPorts; i++)
            lilv_instance_connect_port(instance, static_cast<uint32_t>(kFirst + i), &controls[i]);
        lilv_instance_connect_port(instance, 0, events.data());
        lilv_instance_connect_port(instance, 1, notifications.data());
        lilv_instance_connect_port(instance, 5, &latency);
        controls.fill(-100);
        Clear();
        lilv_instance_activate(instance);
    }
    ~Host() {
        lilv_instance_deactivate(instance);
        lilv_instance_free(instance);
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    void Clear() {
        lv2_atom_forge_set_buffer(&forge, reinterpret_cast<uint8_t*>(events.data()),
                                  events.size() * sizeof(uint64_t));
        lv2_atom_forge_sequence_head(&forge, &frame, 0);
    }
    void Midi(int64_t at, std::array<uint8_t, 3> bytes) {
        lv2_atom_forge_frame_time(&forge, at);
        lv2_atom_forge_atom(&forge, 3, Id(LV2_MIDI__MidiEvent));
        lv2_atom_forge_write(&forge, bytes.data(), 3);
    }
    void Set(const char* property, const std::string& value, bool asNumber = false) {
        LV2_Atom_Forge_Frame object;
        lv2_atom_forge_frame_time(&forge, 0);
        lv2_atom_forge_object(&forge, &object, 0, Id(LV2_PATCH__Set));
        lv2_atom_forge_key(&forge, Id(LV2_PATCH__property));
        lv2_atom_forge_urid(&forge, Id(property));
        lv2_atom_forge_key(&forge, Id(LV2_PATCH__value));
        if (asNumber)
            lv2_atom_forge_float(&forge, 1);
        else
            lv2_atom_forge_string(&forge, value.data(), static_cast<uint32_t>(value.size()));
        lv2_atom_forge_pop(&forge, &object);
    }
    /// What the left port gives; the right one gives the same.
    std::vector<float> Run(uint32_t count) {
        std::vector<float> left(count + 1, 7), right(count + 1, 7);
        lilv_instance_connect_port(instance, 2, left.data());
        lilv_instance_connect_port(instance, 3, right.data());
        lilv_instance_run(instance, count);
        Clear();
        EXPECT_EQ(left, right);
        EXPECT_EQ(left.back(), 7) << "written beyond the block";
        left.pop_back();
        return left;
    }
    std::string Save() {
        saved.clear();
        State().save(Handle(), Store, this, 0, nullptr);
        return saved;
    }
    LV2_State_Status Restore(const std::string& document) {
        restored = document;
        return State().restore(Handle(), Retrieve, this, 0, nullptr);
    }

    std::array<float, kControlPorts> controls{};
    float latency = -1;

  private:
    LV2_Handle Handle() { return lilv_instance_get_handle(instance); }
    const LV2_State_Interface& State() {
        return *static_cast<const LV2_State_Interface*>(
            lilv_instance_get_extension_data(instance, LV2_STATE__interface));
    }
    static LV2_State_Status Store(LV2_State_Handle to, uint32_t, const void* value, size_t,
                                  uint32_t, uint32_t) {
        static_cast<Host*>(to)->saved = static_cast<const char*>(value);
        return LV2_STATE_SUCCESS;
    }
    static const void* Retrieve(LV2_State_Handle from, uint32_t key, size_t* size, uint32_t* type,
                                uint32_t* flags) {
        if (key != Id("urn:vexa:instrument#document"))
            return nullptr;
        const std::string& text = static_cast<Host*>(from)->restored;
        *size = text.size();
        *type = Id(LV2_ATOM__String);
        *flags = LV2_STATE_IS_POD;
        return text.data();
    }

    double rate;
    LV2_URID_Map map{nullptr, [](LV2_URID_Map_Handle, const char* uri) { return Id(uri); }};
    LV2_Feature mapFeature{LV2_URID__map, &map};
    const LV2_Feature* features[2] = {&mapFeature, nullptr};
    const LilvPlugin* plugin = nullptr;
    LilvInstance* instance = nullptr;
    LV2_Atom_Forge forge{};
    LV2_Atom_Forge_Frame frame{};
    std::vector<uint64_t> events = std::vector<uint64_t>(200000);
    std::vector<uint64_t> notifications = std::vector<uint64_t>(1024);
    std::string saved, restored;
};

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

/// A sound that is heard, with that function.
Sound WithFormula(const std::string& expression) {
    ReadReport report;
    Sound sound = *ReadSound(VEXA_SOURCE_FOLDER "/data/sounds/default.xml", report);
    sound.function.kind = FunctionKind::Expression;
    sound.function.expression = expression;
    return sound;
}

float Peak(const std::vector<float>& samples) {
    float peak = 0;
    for (const float sample : samples)
        peak = std::max(peak, std::isfinite(sample) ? std::abs(sample) : 1e9F);
    return peak;
}

TEST(Lv2Host, InstancesPlayTheirOwnFormulasAsTheEngineDoes) {
    for (const double rate : {8000.0, 48000.0, 384000.0}) {
        std::vector<std::unique_ptr<Host>> hosts;
        std::vector<Sound> sounds;
        for (std::size_t i = 0; i < 8; i++) {
            sounds.push_back(WithFormula("sin(x*" + std::to_string(i + 1) + ")*cos(y)"));
            hosts.push_back(std::make_unique<Host>(rate));
            ASSERT_EQ(hosts[i]->Restore(SoundText(sounds[i])), LV2_STATE_SUCCESS);
        }
        for (std::size_t i = 0; i < sounds.size(); i++) {
            const std::vector<float> expected = Expected(sounds[i], rate, 137, 8192);
            hosts[i]->Run(0);
            hosts[i]->Midi(137, {0x90, 60, 100});
            const std::vector<float> heard = hosts[i]->Run(8192);
            ASSERT_GT(Peak(heard), 1e-3F);
            for (std::size_t s = 0; s < heard.size(); s++)
                ASSERT_NEAR(heard[s], expected[s], 1e-6) << rate << " Hz, " << i << ", " << s;
        }
    }
}

TEST(Lv2Host, WhatCannotBeTakenLeavesAllAsItWas) {
    Host host;
    Sound sound = WithFormula("x*y/(1+x*x+y*y)");
    const std::string good = SoundText(sound);
    ASSERT_EQ(host.Restore(good), LV2_STATE_SUCCESS);
    const std::string before = host.Save();
    EXPECT_EQ(before, good);
    sound.function.expression = "system(1)";
    for (const std::string& bad :
         {std::string(), std::string("urn:other"), good.substr(0, good.size() / 2),
          std::string("<other/>"), std::string(1 << 20, '<'), SoundText(sound)}) {
        EXPECT_NE(host.Restore(bad), LV2_STATE_SUCCESS) << bad.substr(0, 200);
        EXPECT_EQ(host.Save(), before);
    }
    host.controls.fill(std::numeric_limits<float>::quiet_NaN());
    host.Set("urn:vexa:instrument#formula", "", true);
    host.Set("urn:vexa:instrument#formula", std::string(1 << 20, 'x'));
    host.Set("urn:vexa:instrument#other", "x");
    host.Midi(0, {0x90, 60, 100});
    EXPECT_GT(Peak(host.Run(4096)), 1e-4F);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(host.Save(), before);
}

TEST(Lv2Host, FormulasArriveAndKnobsStayOutOfTheDocument) {
    Host host;
    host.Restore(SoundText(WithFormula("sin(x)*cos(y)")));
    const std::string before = host.Save();
    host.controls[0] = -40;
    host.Midi(0, {0x90, 60, 100});
    const float quiet = Peak(host.Run(8192));
    host.controls[0] = -41;
    EXPECT_GT(Peak(host.Run(8192)), 20 * quiet);
    EXPECT_EQ(host.Save(), before);
    // A sound may say how finely it is computed, and a knob otherwise; the delay is told.
    Sound fine = WithFormula("sin(x)*cos(y)");
    fine.playing.emplace().texts[7] = "4";
    const std::pair<float, float> told[] = {{0, 32}, {1, 0}, {2, 32}, {0, 32}, {16, 32}, {-3, 32}};
    host.Restore(SoundText(fine));
    for (const auto& [knob, delay] : told) {
        host.controls[10] = knob;
        host.Run(64);
        host.Run(64);
        EXPECT_EQ(host.latency, delay) << knob;
    }
    host.Set("urn:vexa:instrument#formula", "x-y");
    host.Run(64);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (host.Save().find("x-y") == std::string::npos && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_NE(host.Save().find("x-y"), std::string::npos);
}

TEST(Lv2Host, OthersPlayWhileInstancesComeAndGo) {
    Host host;
    host.Midi(0, {0x90, 60, 100});
    std::jthread maker([] {
        for (int i = 0; i < 64; i++)
            Host(44100).Run(1);
    });
    for (int i = 0; i < 200; i++)
        ASSERT_LT(Peak(host.Run(i % 2 ? 1 : 512)), 100);
}

} // namespace
