// SPDX-License-Identifier: GPL-3.0-or-later
// A small LV2 host. It loads the plug-in from the bundle with lilv, or from the test program
// itself, where the real-time watch and the sanitizers see it.
#pragma once

#include "plugin/lv2/Ports.h"

#include <array>
#include <atomic>
#include <cmath>
#include <cstring>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <lilv/lilv.h>
#include <lv2/atom/forge.h>
#include <lv2/atom/util.h>
#include <lv2/log/log.h>
#include <lv2/midi/midi.h>
#include <lv2/patch/patch.h>
#include <lv2/state/state.h>
#include <lv2/worker/worker.h>

namespace test {

/// Maps URIs to numbers, for all instances.
inline LV2_URID Id(const std::string& uri) {
    static std::mutex mutex;
    static std::map<std::string, LV2_URID> ids;
    const std::lock_guard lock(mutex);
    return ids.try_emplace(uri, static_cast<LV2_URID>(ids.size() + 1)).first->second;
}

/// Returns the lilv world with the bundle loaded.
inline LilvWorld* World() {
    static LilvWorld* const world = [] {
        LilvWorld* made = lilv_world_new();
        LilvNode* bundle = lilv_new_file_uri(made, nullptr, VEXA_BUNDLE "/");
        lilv_world_load_bundle(made, bundle);
        lilv_node_free(bundle);
        return made;
    }();
    return world;
}

inline const LilvPlugin* InBundle() {
    LilvNode* uri = lilv_new_uri(World(), vexa::lv2::kUri);
    const LilvPlugin* plugin = lilv_plugins_get_by_uri(lilv_world_get_all_plugins(World()), uri);
    lilv_node_free(uri);
    return plugin;
}

class Lv2Host {
  public:
    enum Kind { Own, WithWorker, FromBundle };
    static constexpr uint32_t kNotificationBytes = vexa::lv2::kEventBytes;

    explicit Lv2Host(double rate = 48000, Kind kind = Own) : rate(rate) {
        if (kind == WithWorker)
            features = {&mapFeature, &logFeature, &workerFeature, nullptr};
        if (kind == FromBundle && (instance = lilv_plugin_instantiate(InBundle(), rate, nullptr)))
            throw std::runtime_error("instantiated without the feature that it requires");
        if (kind == FromBundle &&
            (instance = lilv_plugin_instantiate(InBundle(), rate, features.data()))) {
            descriptor = lilv_instance_get_descriptor(instance);
            handle = lilv_instance_get_handle(instance);
        } else if (kind != FromBundle) {
            descriptor = lv2_descriptor(0);
            handle = descriptor->instantiate(descriptor, rate, VEXA_BUNDLE "/", features.data());
        }
        if (!handle)
            throw std::runtime_error("no instance");
        lv2_atom_forge_init(&forge, &map);
        controls.fill(-100);
        for (std::size_t i = 0; i < controls.size(); i++)
            Connect(static_cast<uint32_t>(vexa::lv2::kFirstControl + i), &controls[i]);
        Connect(vexa::lv2::kEvents, events.data());
        Connect(vexa::lv2::kNotifications, notifications.data());
        Connect(vexa::lv2::kFreewheel, &freewheel);
        Connect(vexa::lv2::kLatency, &latency);
        Clear();
        Activate();
    }
    ~Lv2Host() {
        Deactivate();
        instance ? lilv_instance_free(instance) : descriptor->cleanup(handle);
    }
    Lv2Host(const Lv2Host&) = delete;
    Lv2Host& operator=(const Lv2Host&) = delete;

    void Connect(uint32_t port, void* data) { descriptor->connect_port(handle, port, data); }
    void Activate() { descriptor->activate(handle); }
    void Deactivate() {
        if (descriptor->deactivate)
            descriptor->deactivate(handle);
    }

    /// Adds an event to the next block; events are given in the order of their frames.
    void Midi(int64_t at, const std::vector<uint8_t>& bytes) {
        lv2_atom_forge_frame_time(&forge, at);
        lv2_atom_forge_atom(&forge, static_cast<uint32_t>(bytes.size()), Id(LV2_MIDI__MidiEvent));
        lv2_atom_forge_write(&forge, bytes.data(), static_cast<uint32_t>(bytes.size()));
    }
    /// Adds a patch message of that kind, with the content that `body` writes.
    void Patch(const char* kind, const std::function<void(LV2_Atom_Forge&)>& body, int64_t at = 0) {
        LV2_Atom_Forge_Frame object;
        lv2_atom_forge_frame_time(&forge, at);
        lv2_atom_forge_object(&forge, &object, 0, Id(kind));
        body(forge);
        lv2_atom_forge_pop(&forge, &object);
    }
    void Set(const std::string& property, const std::string& value) {
        Patch(LV2_PATCH__Set, [&](LV2_Atom_Forge& f) {
            lv2_atom_forge_key(&f, Id(LV2_PATCH__property));
            lv2_atom_forge_urid(&f, Id(vexa::lv2::kUri + ("#" + property)));
            lv2_atom_forge_key(&f, Id(LV2_PATCH__value));
            lv2_atom_forge_string(&f, value.data(), static_cast<uint32_t>(value.size()));
        });
    }

    /// Renders the next block and returns the left ear; `right` receives the other one.
    std::vector<float> Run(uint32_t count, std::vector<float>* right = nullptr) {
        std::vector<float> ears[2];
        for (uint32_t ear = 0; ear < 2; ear++) {
            ears[ear].assign(count + 1, 7);
            Connect(vexa::lv2::kLeft + ear, ears[ear].data());
        }
        auto* out = reinterpret_cast<LV2_Atom_Sequence*>(notifications.data());
        out->atom = {notificationBytes, Id(LV2_ATOM__Chunk)};
        descriptor->run(handle, count);
        if (out->atom.type != Id(LV2_ATOM__Sequence))
            out->atom.size = sizeof out->body;
        LV2_ATOM_SEQUENCE_FOREACH(out, event) {
            Hear(reinterpret_cast<const LV2_Atom_Object&>(event->body));
        }
        Clear();
        for (std::vector<float>& ear : ears) {
            EXPECT_EQ(ear.back(), 7) << "written beyond the block";
            ear.pop_back();
        }
        if (right)
            *right = ears[1];
        return ears[0];
    }
    /// Runs blocks and the worker until the condition holds; returns false after 10 s.
    bool RunUntil(const std::function<bool()>& is) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!is()) {
            if (std::chrono::steady_clock::now() > end)
                return false;
            Run(64);
            Work();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }
    /// Does the work that was scheduled, if any.
    void Work() {
        while (scheduled.exchange(0) > 0)
            WorkerInterface().work(handle, nullptr, nullptr, 0, nullptr);
    }

    /// Values by the part of the property's URI after "#".
    using Values = std::map<std::string, std::string>;
    Values Save() {
        saved.clear();
        EXPECT_EQ(State().save(handle, Store, this, 0, nullptr), LV2_STATE_SUCCESS);
        return saved;
    }
    LV2_State_Status Restore(const Values& values, const char* type = LV2_ATOM__String) {
        restored = values;
        restoredType = type;
        return State().restore(handle, Retrieve, this, 0, nullptr);
    }

    const double rate;
    std::array<float, vexa::kControls> controls{};
    float latency = -1, freewheel = 0;
    /// The values sent in notifications, their number, and the host's log.
    Values told;
    int tellings = 0;
    std::string logged;
    /// True if the host's worker queue is full.
    std::atomic<bool> full{false};
    std::vector<uint64_t> events = std::vector<uint64_t>(300000);
    std::vector<uint64_t> notifications = std::vector<uint64_t>(kNotificationBytes / 8 + 1);
    uint32_t notificationBytes = kNotificationBytes;

  private:
    void Clear() {
        lv2_atom_forge_set_buffer(&forge, reinterpret_cast<uint8_t*>(events.data()),
                                  events.size() * sizeof(uint64_t));
        lv2_atom_forge_sequence_head(&forge, &frame, 0);
    }
    void Hear(const LV2_Atom_Object& object) {
        const LV2_Atom* property = nullptr;
        const LV2_Atom* value = nullptr;
        lv2_atom_object_get(&object, Id(LV2_PATCH__property), &property, Id(LV2_PATCH__value),
                            &value, 0);
        ASSERT_TRUE(property && value && object.body.otype == Id(LV2_PATCH__Set));
        tellings++;
        for (const vexa::lv2::Property& row : vexa::lv2::kProperties) {
            if (Id(row.uri) == reinterpret_cast<const LV2_Atom_URID*>(property)->body)
                told[std::strchr(row.uri, '#') + 1] = reinterpret_cast<const char*>(value + 1);
        }
    }
    template<class Type>
    const Type& Extension(const char* uri) {
        return *static_cast<const Type*>(descriptor->extension_data(uri));
    }
    const LV2_State_Interface& State() {
        return Extension<LV2_State_Interface>(LV2_STATE__interface);
    }
    const LV2_Worker_Interface& WorkerInterface() {
        return Extension<LV2_Worker_Interface>(LV2_WORKER__interface);
    }
    static constexpr const char* kKeys[] = {"document", "samplefile", "tuning", "keymap"};
    static std::string KeyOf(uint32_t id) {
        for (const char* key : kKeys) {
            if (Id(vexa::lv2::kUri + ("#" + std::string(key))) == id)
                return key;
        }
        return "";
    }
    static LV2_State_Status Store(LV2_State_Handle to, uint32_t key, const void* value, size_t size,
                                  uint32_t, uint32_t) {
        EXPECT_EQ(size, std::strlen(static_cast<const char*>(value)) + 1);
        static_cast<Lv2Host*>(to)->saved[KeyOf(key)] = static_cast<const char*>(value);
        return LV2_STATE_SUCCESS;
    }
    static const void* Retrieve(LV2_State_Handle from, uint32_t key, size_t* size, uint32_t* type,
                                uint32_t* flags) {
        auto& host = *static_cast<Lv2Host*>(from);
        const auto found = host.restored.find(KeyOf(key));
        if (found == host.restored.end())
            return nullptr;
        *size = found->second.size();
        *type = Id(host.restoredType);
        *flags = LV2_STATE_IS_POD;
        return found->second.data();
    }
    static LV2_Worker_Status Schedule(LV2_Worker_Schedule_Handle handle, uint32_t, const void*) {
        auto& host = *static_cast<Lv2Host*>(handle);
        if (host.full)
            return LV2_WORKER_ERR_NO_SPACE;
        host.scheduled++;
        return LV2_WORKER_SUCCESS;
    }
    static int Print(LV2_Log_Handle handle, LV2_URID, const char* format, ...) {
        va_list arguments;
        va_start(arguments, format);
        const int length = PrintV(handle, 0, format, arguments);
        va_end(arguments);
        return length;
    }
    static int PrintV(LV2_Log_Handle handle, LV2_URID, const char* format, va_list arguments) {
        std::array<char, 4096> text;
        const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
        static_cast<Lv2Host*>(handle)->logged += text.data();
        return length;
    }

    LV2_URID_Map map{nullptr, [](LV2_URID_Map_Handle, const char* uri) { return Id(uri); }};
    LV2_Log_Log log{this, Print, PrintV};
    LV2_Worker_Schedule worker{this, Schedule};
    LV2_Feature mapFeature{LV2_URID__map, &map};
    LV2_Feature logFeature{LV2_LOG__log, &log};
    LV2_Feature workerFeature{LV2_WORKER__schedule, &worker};
    std::array<const LV2_Feature*, 4> features{&mapFeature, &logFeature, nullptr, nullptr};
    std::atomic<int> scheduled{0};
    LilvInstance* instance = nullptr;
    const LV2_Descriptor* descriptor = nullptr;
    LV2_Handle handle = nullptr;
    LV2_Atom_Forge forge{};
    LV2_Atom_Forge_Frame frame{};
    Values saved, restored;
    std::string restoredType;
};

} // namespace test
