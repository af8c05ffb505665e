// SPDX-License-Identifier: GPL-3.0-or-later
// A small host built on CLAP's headers.
#pragma once

#include "plugin/clap/HostLog.h"
#include "synth/Realtime.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <clap/entry.h>
#include <clap/ext/audio-ports.h>
#include <clap/ext/gui.h>
#include <clap/ext/latency.h>
#include <clap/ext/note-ports.h>
#include <clap/ext/params.h>
#include <clap/ext/state.h>
#include <clap/ext/timer-support.h>
#include <clap/plugin-factory.h>
#include <dlfcn.h>

namespace test {

/// Loads a plug-in, which stays loaded.
inline const clap_plugin_factory& FactoryOf(const char* path) {
    void* file = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (!file)
        throw std::runtime_error(dlerror());
    const auto* entry = static_cast<const clap_plugin_entry*>(dlsym(file, "clap_entry"));
    if (!entry || !entry->init(path))
        throw std::runtime_error("no entry");
    return *static_cast<const clap_plugin_factory*>(entry->get_factory(CLAP_PLUGIN_FACTORY_ID));
}

inline const clap_plugin_factory& Factory() {
    static const clap_plugin_factory& factory = FactoryOf(VEXA_CLAP);
    return factory;
}

/// Any event.
union Event {
    clap_event_header header;
    clap_event_note note;
    clap_event_note_expression expression;
    clap_event_param_value value;
    clap_event_param_mod mod;
    clap_event_midi midi;
};

/// The address of a note; -1 is a wildcard.
struct Name {
    int id = -1, channel = -1, key = -1;
    bool operator==(const Name&) const = default;
};

/// One instance, and the requests that it makes to its host. It is active unless a test says
/// otherwise.
class ClapHost {
  public:
    explicit ClapHost(double rate = 48000, const clap_plugin_factory& factory = Factory(),
                      bool hasLog = false)
        : hasLog(hasLog) {
        plugin = factory.create_plugin(&factory, &host, "vexa.instrument");
        if (!plugin || !plugin->init(plugin))
            throw std::runtime_error("no instance");
        Activate(rate);
    }
    ~ClapHost() {
        plugin->deactivate(plugin);
        plugin->destroy(plugin);
    }
    ClapHost(const ClapHost&) = delete;
    ClapHost& operator=(const ClapHost&) = delete;

    void Reset() {
        const vexa::RealtimeSection realtime;
        plugin->reset(plugin);
    }
    bool Activate(double rate) { return plugin->activate(plugin, rate, 1, 8192); }

    /// Adds an event to the next block; events are given in the order of their times.
    void Note(uint16_t type, uint32_t time, const Name& name, double velocity = 100 / 127.0) {
        Event& e = Add(type, time, sizeof e.note);
        e.note.note_id = name.id;
        e.note.channel = static_cast<int16_t>(name.channel);
        e.note.key = static_cast<int16_t>(name.key);
        e.note.velocity = velocity;
    }
    void Express(uint32_t time, clap_note_expression which, const Name& name, double value) {
        Event& e = Add(CLAP_EVENT_NOTE_EXPRESSION, time, sizeof e.expression);
        e.expression.expression_id = which;
        Aim(e.expression, name);
        e.expression.value = value;
    }
    void Set(uint32_t time, const char* parameter, double value, const Name& name = {}) {
        Event& e = Add(CLAP_EVENT_PARAM_VALUE, time, sizeof e.value);
        e.value.param_id = Info(parameter).id;
        Aim(e.value, name);
        e.value.value = value;
    }
    void Modulate(uint32_t time, const char* parameter, double amount, const Name& name = {}) {
        Event& e = Add(CLAP_EVENT_PARAM_MOD, time, sizeof e.mod);
        e.mod.param_id = Info(parameter).id;
        Aim(e.mod, name);
        e.mod.amount = amount;
    }
    void Midi(uint32_t time, std::array<uint8_t, 3> bytes) {
        Event& e = Add(CLAP_EVENT_MIDI, time, sizeof e.midi);
        std::copy(bytes.begin(), bytes.end(), e.midi.data);
    }

    /// Renders a block and returns the left ear; the right one is in `right`.
    std::vector<float> Run(uint32_t count) {
        std::vector<float> left(count + 1, 7);
        right.assign(count + 1, 7);
        float* channels[] = {left.data(), right.data()};
        clap_audio_buffer out{channels, nullptr, 2, 0, 0};
        const clap_input_events in{this, CountIn, GetIn};
        const clap_output_events back{this, TakeBack};
        // An instrument ignores its input, so the host may pass the output buffer as input.
        const clap_process process{-1, count, nullptr, &out, &out, 1, 1, &in, &back};
        {
            const vexa::RealtimeSection realtime;
            status = plugin->process(plugin, &process);
        }
        beyond = beyond || left.back() != 7 || right.back() != 7;
        left.pop_back();
        right.pop_back();
        events.clear();
        return left;
    }
    /// Passes the events without rendering.
    void Flush() {
        const clap_input_events in{this, CountIn, GetIn};
        const clap_output_events back{this, TakeBack};
        Extension<clap_plugin_params>(CLAP_EXT_PARAMS).flush(plugin, &in, &back);
        events.clear();
    }

    template<class Table>
    const Table& Extension(const char* id) const {
        const auto* table = static_cast<const Table*>(plugin->get_extension(plugin, id));
        if (!table)
            throw std::runtime_error(id);
        return *table;
    }
    clap_param_info Info(const std::string& parameter) const {
        const auto& params = Extension<clap_plugin_params>(CLAP_EXT_PARAMS);
        clap_param_info info{};
        for (uint32_t i = 0; i < params.count(plugin); i++) {
            if (params.get_info(plugin, i, &info) && parameter == info.name)
                return info;
        }
        throw std::runtime_error(parameter);
    }
    double Value(const char* parameter) const {
        double value = NAN;
        Extension<clap_plugin_params>(CLAP_EXT_PARAMS)
            .get_value(plugin, Info(parameter).id, &value);
        return value;
    }
    uint32_t Latency() const {
        return Extension<clap_plugin_latency>(CLAP_EXT_LATENCY).get(plugin);
    }

    /// Does what a host's main thread does all the time.
    void Idle() {
        if (callbacks.exchange(0) > 0)
            plugin->on_main_thread(plugin);
        if (timer)
            Extension<clap_plugin_timer_support>(CLAP_EXT_TIMER_SUPPORT).on_timer(plugin, *timer);
    }

    /// Writes a few bytes at a time, as streams may.
    std::string Save() const {
        std::string text;
        const clap_ostream stream{
            &text, [](const clap_ostream* s, const void* data, uint64_t size) {
                const uint64_t count = std::min<uint64_t>(size, 1000);
                static_cast<std::string*>(s->ctx)->append(static_cast<const char*>(data), count);
                return static_cast<int64_t>(count);
            }};
        const bool saved = Extension<clap_plugin_state>(CLAP_EXT_STATE).save(plugin, &stream);
        return saved ? text : "not saved";
    }
    /// Loads a state; if `fails` is true the stream fails after its text.
    bool Load(std::string text, bool fails = false) const {
        struct Source {
            std::string left;
            bool fails;
        } source{std::move(text), fails};
        const clap_istream stream{
            &source, [](const clap_istream* s, void* to, uint64_t size) {
                auto& from = *static_cast<Source*>(s->ctx);
                const std::size_t count = std::min<std::size_t>({size, 1000, from.left.size()});
                if (count == 0 && from.fails)
                    return int64_t{-1};
                std::memcpy(to, from.left.data(), count);
                from.left.erase(0, count);
                return static_cast<int64_t>(count);
            }};
        return Extension<clap_plugin_state>(CLAP_EXT_STATE).load(plugin, &stream);
    }

    const clap_plugin* plugin = nullptr;
    std::vector<float> right;
    clap_process_status status = CLAP_PROCESS_ERROR;
    /// True if the plug-in has written beyond a block.
    bool beyond = false;
    std::atomic<int> restarts{0}, wakings{0}, callbacks{0};
    int rescans = 0, latencies = 0, edits = 0;
    /// Whether the host lends timers, of which Idle calls the one that is registered.
    bool hasTimers = true;
    std::optional<clap_id> timer;
    /// The size that the plug-in has asked for last, and whether the host grants it.
    std::pair<uint32_t, uint32_t> asked;
    bool grants = true;
    /// Whether the host has a log, and what is in it.
    const bool hasLog;
    std::string log;
    /// The notes whose end the plug-in has reported.
    std::vector<Name> ended = [] {
        std::vector<Name> names;
        names.reserve(1000);
        return names;
    }();

  private:
    Event& Add(uint16_t type, uint32_t time, std::size_t size) {
        Event& e = events.emplace_back();
        e = {};
        e.header = {static_cast<uint32_t>(size), time, CLAP_CORE_EVENT_SPACE_ID, type, 0};
        return e;
    }
    template<class Aimed>
    static void Aim(Aimed& e, const Name& name) {
        e.note_id = name.id;
        e.port_index = -1;
        e.channel = static_cast<int16_t>(name.channel);
        e.key = static_cast<int16_t>(name.key);
    }
    static uint32_t CountIn(const clap_input_events* list) {
        return static_cast<uint32_t>(static_cast<ClapHost*>(list->ctx)->events.size());
    }
    static const clap_event_header* GetIn(const clap_input_events* list, uint32_t index) {
        return &static_cast<ClapHost*>(list->ctx)->events[index].header;
    }
    static bool TakeBack(const clap_output_events* list, const clap_event_header* event) {
        const auto& note = *reinterpret_cast<const clap_event_note*>(event);
        if (event->type == CLAP_EVENT_NOTE_END)
            static_cast<ClapHost*>(list->ctx)->ended.push_back(
                {note.note_id, note.channel, note.key});
        return true;
    }
    static ClapHost& Of(const clap_host* host) { return *static_cast<ClapHost*>(host->host_data); }
    static const void* HostExtension(const clap_host* host, const char* id) {
        static const clap_host_params params{
            [](const clap_host* h, clap_param_rescan_flags) { Of(h).rescans++; },
            [](const clap_host*, clap_id, clap_param_clear_flags) {}, [](const clap_host*) {}};
        static const clap_host_latency latency{[](const clap_host* h) { Of(h).latencies++; }};
        static const clap_host_state state{[](const clap_host* h) { Of(h).edits++; }};
        static const clap_host_gui gui{[](const clap_host*) {},
                                       [](const clap_host* h, uint32_t width, uint32_t height) {
                                           Of(h).asked = {width, height};
                                           return Of(h).grants;
                                       },
                                       [](const clap_host*) { return false; },
                                       [](const clap_host*) { return false; },
                                       [](const clap_host*, bool) {}};
        static const clap_host_timer_support timers{
            [](const clap_host* h, uint32_t period, clap_id* timer) {
                // A host of its own has one window, which needs one timer.
                if (Of(h).timer || period < 10 || period > 100)
                    return false;
                Of(h).timer = *timer = 7;
                return true;
            },
            [](const clap_host* h, clap_id timer) {
                const bool isOurs = Of(h).timer == timer;
                Of(h).timer.reset();
                return isOurs;
            }};
        static const vexa::clap::HostLog log{
            [](const clap_host* h, int32_t, const char* message) { Of(h).log += message; }};
        const std::pair<const char*, const void*> extensions[] = {
            {vexa::clap::kHostLogId, Of(host).hasLog ? &log : nullptr},
            {CLAP_EXT_PARAMS, &params},
            {CLAP_EXT_LATENCY, &latency},
            {CLAP_EXT_STATE, &state},
            {CLAP_EXT_GUI, &gui},
            {CLAP_EXT_TIMER_SUPPORT, Of(host).hasTimers ? &timers : nullptr}};
        for (const auto& [name, extension] : extensions) {
            if (std::strcmp(id, name) == 0)
                return extension;
        }
        return nullptr;
    }

    clap_host host{CLAP_VERSION,
                   this,
                   "test",
                   "",
                   "",
                   "1",
                   HostExtension,
                   [](const clap_host* h) { Of(h).restarts++; },
                   [](const clap_host* h) { Of(h).wakings++; },
                   [](const clap_host* h) { Of(h).callbacks++; }};
    std::vector<Event> events;
};

} // namespace test
