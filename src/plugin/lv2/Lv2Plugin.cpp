// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/HostedInstrument.h"
#include "plugin/lv2/Ports.h"
#include "synth/Realtime.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iterator>
#include <limits>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include <lv2/atom/atom.h>
#include <lv2/atom/util.h>
#include <lv2/core/lv2.h>
#include <lv2/log/log.h>
#include <lv2/midi/midi.h>
#include <lv2/patch/patch.h>
#include <lv2/state/state.h>
#include <lv2/urid/urid.h>
#include <lv2/worker/worker.h>

namespace vexa::lv2 {

namespace {

/// How often a thread of ours looks for requests where the host has none to lend.
constexpr std::chrono::milliseconds kLook{5};

template<class Feature>
Feature* Find(const LV2_Feature* const* features, const char* uri) {
    for (; features && *features; features++) {
        if (std::strcmp((*features)->URI, uri) == 0)
            return static_cast<Feature*>((*features)->data);
    }
    return nullptr;
}

kits::ProgramFolders Folders(const char* bundle) {
    const char* data = std::getenv("XDG_DATA_HOME");
    const char* home = std::getenv("HOME");
    const std::filesystem::path own =
        data && *data == '/' ? std::filesystem::path(data) / "vexa"
                             : std::filesystem::path(home ? home : "/") / ".local/share/vexa";
    return {own, bundle};
}

class Plugin {
  public:
    Plugin(double rate, const char* bundle, LV2_URID_Map& map, LV2_Log_Log* log,
           LV2_Worker_Schedule* schedule)
        : instrument(Folders(bundle), rate), log(log), schedule(schedule) {
        const auto id = [&](const char* uri) { return map.map(map.handle, uri); };
        midiEvent = id(LV2_MIDI__MidiEvent);
        object = id(LV2_ATOM__Object);
        sequence = id(LV2_ATOM__Sequence);
        urid = id(LV2_ATOM__URID);
        path = id(LV2_ATOM__Path);
        string = id(LV2_ATOM__String);
        patchSet = id(LV2_PATCH__Set);
        patchProperty = id(LV2_PATCH__property);
        patchValue = id(LV2_PATCH__value);
        error = id(LV2_LOG__Error);
        soundState = id(kSoundState);
        sampleState = id(kSampleState);
        for (std::size_t i = 0; i < std::size(kWritables); i++)
            writables[i] = id(kWritables[i].uri);
        controls.fill(std::numeric_limits<float>::quiet_NaN());
        if (!schedule)
            worker = std::jthread([this](const std::stop_token& stop) { WorkUntil(stop); });
    }

    void Connect(uint32_t port, void* data) {
        if (port < kPorts)
            ports[port] = data;
    }
    void Run(uint32_t count) noexcept;
    void Work() noexcept try {
        Tell(instrument.Work());
        if (lost.exchange(false))
            Tell("a request was longer than 16 KiB, or there were too many at a time");
    } catch (const std::exception& fault) {
        Tell(fault.what());
    }
    LV2_State_Status Save(LV2_State_Store_Function store, LV2_State_Handle handle,
                          const LV2_State_Map_Path* paths, const LV2_State_Free_Path* freePath);
    LV2_State_Status Restore(LV2_State_Retrieve_Function retrieve, LV2_State_Handle handle,
                             const LV2_State_Map_Path* paths, const LV2_State_Free_Path* freePath);

  private:
    void WorkUntil(const std::stop_token& stop) {
        std::mutex mutex;
        std::condition_variable_any never;
        std::unique_lock lock(mutex);
        while (!never.wait_for(lock, stop, kLook, [&] { return stop.stop_requested(); }))
            Work();
    }
    void Take(const LV2_Atom_Object& message) noexcept;
    void Tell(const std::string& message) noexcept {
        if (message.empty())
            return;
        if (log)
            log->printf(log->handle, error, "vexa: %s\n", message.c_str());
        else
            std::fprintf(stderr, "vexa: %s\n", message.c_str());
    }

    HostedInstrument instrument;
    LV2_Log_Log* log;
    LV2_Worker_Schedule* schedule;
    std::array<void*, kPorts> ports{};
    ControlValues controls{};
    std::atomic<bool> lost{false};
    LV2_URID midiEvent, object, sequence, urid, path, string, patchSet, patchProperty, patchValue,
        error, soundState, sampleState;
    std::array<LV2_URID, std::size(kWritables)> writables{};
    /// The last one, so that it ends before all else does.
    std::jthread worker;
};

void Plugin::Run(uint32_t count) noexcept {
    const RealtimeSection realtime;
    if (auto* out = static_cast<LV2_Atom_Sequence*>(ports[kNotifications])) {
        out->atom.type = sequence;
        out->atom.size = sizeof(LV2_Atom_Sequence_Body);
        out->body = {};
    }
    if (auto* latency = static_cast<float*>(ports[kLatency]))
        *latency = static_cast<float>(instrument.Delay());
    for (std::size_t i = 0; i < kControls; i++) {
        if (const auto* port = static_cast<const float*>(ports[kFirstControl + i]))
            controls[i] = *port;
    }
    instrument.TakeControls(controls);
    auto* left = static_cast<float*>(ports[kLeft]);
    auto* right = static_cast<float*>(ports[kRight]);
    uint32_t done = 0;
    const auto renderTo = [&](uint32_t frame) {
        if (left && right && frame > done) {
            instrument.Render(left + done, right + done, frame - done);
            done = frame;
        }
    };
    if (const auto* in = static_cast<const LV2_Atom_Sequence*>(ports[kEvents])) {
        LV2_ATOM_SEQUENCE_FOREACH(in, event) {
            renderTo(static_cast<uint32_t>(std::clamp<int64_t>(event->time.frames, done, count)));
            const auto* body = reinterpret_cast<const uint8*>(&event->body + 1);
            if (event->body.type == midiEvent)
                instrument.Midi({body, event->body.size});
            else if (event->body.type == object && event->body.size >= sizeof(LV2_Atom_Object_Body))
                Take(reinterpret_cast<const LV2_Atom_Object&>(event->body));
        }
    }
    renderTo(count);
}

void Plugin::Take(const LV2_Atom_Object& message) noexcept {
    if (message.body.otype != patchSet)
        return;
    const LV2_Atom* property = nullptr;
    const LV2_Atom* value = nullptr;
    lv2_atom_object_get(&message, patchProperty, &property, patchValue, &value, 0);
    if (!property || !value || property->type != urid || property->size != sizeof(LV2_URID))
        return;
    const LV2_URID key = reinterpret_cast<const LV2_Atom_URID*>(property)->body;
    const auto place = std::find(writables.begin(), writables.end(), key) - writables.begin();
    if (place == std::ssize(writables) || (value->type != string && value->type != path))
        return;
    const auto* text = reinterpret_cast<const char*>(value + 1);
    if (!instrument.Post(static_cast<Request>(place), {text, strnlen(text, value->size)}))
        lost = true;
    if (schedule) {
        const uint8 nothing = 0;
        schedule->schedule_work(schedule->handle, 1, &nothing);
    }
}

LV2_State_Status Plugin::Save(LV2_State_Store_Function store, LV2_State_Handle handle,
                              const LV2_State_Map_Path* paths,
                              const LV2_State_Free_Path* freePath) {
    constexpr uint32_t flags = LV2_STATE_IS_POD | LV2_STATE_IS_PORTABLE;
    const std::string document = instrument.State();
    const LV2_State_Status stored =
        store(handle, soundState, document.c_str(), document.size() + 1, string, flags);
    const std::optional<std::string> sample = instrument.SampleFile();
    if (stored != LV2_STATE_SUCCESS || !sample || !paths)
        return stored;
    char* mapped = paths->abstract_path(paths->handle, sample->c_str());
    if (!mapped)
        return LV2_STATE_ERR_UNKNOWN;
    const LV2_State_Status done =
        store(handle, sampleState, mapped, std::strlen(mapped) + 1, path, flags);
    freePath ? freePath->free_path(freePath->handle, mapped) : std::free(mapped);
    return done;
}

LV2_State_Status Plugin::Restore(LV2_State_Retrieve_Function retrieve, LV2_State_Handle handle,
                                 const LV2_State_Map_Path* paths,
                                 const LV2_State_Free_Path* freePath) {
    std::size_t size = 0;
    uint32_t type = 0, flags = 0;
    const auto text = [&](LV2_URID key, LV2_URID wanted) -> std::optional<std::string> {
        const void* value = retrieve(handle, key, &size, &type, &flags);
        if (!value || type != wanted)
            return std::nullopt;
        const auto* characters = static_cast<const char*>(value);
        return std::string(characters, strnlen(characters, size));
    };
    const std::optional<std::string> document = text(soundState, string);
    // Hosts begin with a state in which there is nothing.
    if (!document && type == 0)
        return LV2_STATE_ERR_NO_PROPERTY;
    if (!document) {
        Tell("the state holds no sound of Vexa; what played before plays on");
        return LV2_STATE_ERR_NO_PROPERTY;
    }
    std::string sample = text(sampleState, path).value_or("");
    if (paths && !sample.empty()) {
        if (char* mapped = paths->absolute_path(paths->handle, sample.c_str())) {
            sample = mapped;
            freePath ? freePath->free_path(freePath->handle, mapped) : std::free(mapped);
        }
    }
    bool taken = false;
    Tell(instrument.Restore(*document, sample, taken));
    return taken ? LV2_STATE_SUCCESS : LV2_STATE_ERR_UNKNOWN;
}

LV2_Handle Instantiate(const LV2_Descriptor*, double rate, const char* bundle,
                       const LV2_Feature* const* features) {
    auto* log = Find<LV2_Log_Log>(features, LV2_LOG__log);
    auto* map = Find<LV2_URID_Map>(features, LV2_URID__map);
    try {
        if (map)
            return new Plugin(rate, bundle, *map, log,
                              Find<LV2_Worker_Schedule>(features, LV2_WORKER__schedule));
        std::fprintf(stderr, "vexa: the host has no urid:map\n");
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "vexa: %s\n", fault.what());
    }
    return nullptr;
}

Plugin& Of(LV2_Handle handle) {
    return *static_cast<Plugin*>(handle);
}

const void* Extension(const char* uri) {
    static const LV2_State_Interface state{
        [](LV2_Handle handle, LV2_State_Store_Function store, LV2_State_Handle to, uint32_t,
           const LV2_Feature* const* features) {
            return Of(handle).Save(store, to,
                                   Find<LV2_State_Map_Path>(features, LV2_STATE__mapPath),
                                   Find<LV2_State_Free_Path>(features, LV2_STATE__freePath));
        },
        [](LV2_Handle handle, LV2_State_Retrieve_Function retrieve, LV2_State_Handle from, uint32_t,
           const LV2_Feature* const* features) {
            return Of(handle).Restore(retrieve, from,
                                      Find<LV2_State_Map_Path>(features, LV2_STATE__mapPath),
                                      Find<LV2_State_Free_Path>(features, LV2_STATE__freePath));
        }};
    static const LV2_Worker_Interface worker{
        [](LV2_Handle handle, LV2_Worker_Respond_Function, LV2_Worker_Respond_Handle, uint32_t,
           const void*) {
            Of(handle).Work();
            return LV2_WORKER_SUCCESS;
        },
        [](LV2_Handle, uint32_t, const void*) { return LV2_WORKER_SUCCESS; }, nullptr};
    if (std::strcmp(uri, LV2_STATE__interface) == 0)
        return &state;
    return std::strcmp(uri, LV2_WORKER__interface) == 0 ? &worker : nullptr;
}

const LV2_Descriptor kDescriptor{
    kUri,
    Instantiate,
    [](LV2_Handle handle, uint32_t port, void* data) { Of(handle).Connect(port, data); },
    nullptr,
    [](LV2_Handle handle, uint32_t count) { Of(handle).Run(count); },
    nullptr,
    [](LV2_Handle handle) { delete static_cast<Plugin*>(handle); },
    Extension};

} // namespace

} // namespace vexa::lv2

LV2_SYMBOL_EXPORT const LV2_Descriptor* lv2_descriptor(uint32_t index) {
    return index == 0 ? &vexa::lv2::kDescriptor : nullptr;
}
