// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/lv2/Plugin.h"

#include "kits/support/RealtimeMark.h"
#include "plugin/HostedFolders.h"
#include "synth/Realtime.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <limits>

#include <lv2/atom/util.h>

namespace vexa::lv2 {

namespace {

constexpr uint32_t kAll = (1U << std::size(kProperties)) - 1;

/// Returns the value of a property if it lies completely inside the object.
VEXA_REALTIME const LV2_Atom* ValueOf(const LV2_Atom_Object& object, LV2_URID key) {
    const auto* body = reinterpret_cast<const uint8*>(&object.body + 1);
    std::span<const uint8> rest(body, object.atom.size - sizeof object.body);
    while (rest.size() >= sizeof(LV2_Atom_Property_Body)) {
        const auto& property = *reinterpret_cast<const LV2_Atom_Property_Body*>(rest.data());
        const std::size_t size = sizeof property + std::size_t{property.value.size};
        if (size > rest.size())
            break;
        if (property.key == key)
            return &property.value;
        rest = rest.subspan(std::min(rest.size(), (size + 7) / 8 * 8));
    }
    return nullptr;
}

} // namespace

Plugin::Plugin(double rate, const char* bundle, LV2_URID_Map& map, LV2_Log_Log* log,
               LV2_Worker_Schedule* schedule)
    : rate(rate),
      urids(map),
      instrument(HostedFolders(bundle), rate),
      log(log),
      schedule(schedule),
      windows(instrument, [this](const std::string& line) {
          const std::lock_guard lock(working);
          Tell(line);
      }) {
    controls.fill(std::numeric_limits<float>::quiet_NaN());
    for (std::size_t i = 0; i < kRequests; i++)
        reported[i] = instrument.Text(static_cast<Request>(i));
    Tell(instrument.StartFault());
    if (!schedule)
        thread.emplace([this] { Work(); });
}

void Plugin::Connect(uint32_t port, void* data) {
    if (port < kPorts)
        ports[port] = data;
}

void Plugin::Run(uint32_t count) noexcept {
    const RealtimeSection realtime;
    for (std::size_t i = 0; i < kControls; i++) {
        if (const auto* port = Port<const float>(kFirstControl + static_cast<uint32_t>(i)))
            controls[i] = *port;
    }
    instrument.TakeControls(controls);
    if (refused)
        Wake();
    auto* left = Port<float>(kLeft);
    auto* right = Port<float>(kRight);
    uint32_t done = 0;
    const auto renderTo = [&](uint32_t frame) {
        if (left && right && frame > done) {
            instrument.Render(left + done, right + done, frame - done);
            done = frame;
        }
    };
    if (const auto* in = Port<const LV2_Atom_Sequence>(kEvents)) {
        LV2_ATOM_SEQUENCE_FOREACH(in, event) {
            renderTo(static_cast<uint32_t>(std::clamp<int64_t>(event->time.frames, done, count)));
            const auto* body = reinterpret_cast<const uint8*>(&event->body + 1);
            if (event->body.type == urids.midiEvent)
                instrument.Midi({body, event->body.size});
            else if (event->body.type == urids.object &&
                     event->body.size >= sizeof(LV2_Atom_Object_Body))
                Take(reinterpret_cast<const LV2_Atom_Object&>(event->body));
        }
    }
    renderTo(count);
    // A newly loaded sound may have another oversampling factor and thus another latency.
    if (auto* latency = Port<float>(kLatency))
        *latency = static_cast<float>(instrument.Delay());
    // This comes last, as a host may use one buffer for both sequences.
    if (auto* out = Port<LV2_Atom_Sequence>(kNotifications)) {
        const uint32_t room = out->atom.size;
        news.Write(*out);
        TellEdit(*out, room);
    }
}

int Plugin::OpenWindow(char* fault, std::size_t room) {
    const kits::Result<int> socket = windows.Open();
    if (!socket)
        std::snprintf(fault, room, "%s", socket.Fault().text.c_str());
    return socket ? *socket : -1;
}

/// Tells the host that its session has unsaved changes, and wakes the worker to send the new values
/// of the properties.
void Plugin::TellEdit(LV2_Atom_Sequence& out, uint32_t room) noexcept {
    struct {
        LV2_Atom_Event event;
        LV2_Atom_Object_Body body;
    } changed{{{0}, {sizeof changed.body, urids.object}}, {0, urids.stateChanged}};
    if (room < out.atom.size + sizeof changed || !instrument.TakeEdited())
        return;
    lv2_atom_sequence_append_event(&out, room, &changed.event);
    Wake();
}

void Plugin::Take(const LV2_Atom_Object& message) noexcept {
    const bool gets = message.body.otype == urids.get;
    if (!gets && message.body.otype != urids.set)
        return;
    const LV2_Atom* property = ValueOf(message, urids.property);
    if (!property && gets)
        asked |= kAll;
    if (property) {
        if (property->type != urids.urid || property->size != sizeof(LV2_URID))
            return;
        const LV2_URID key = reinterpret_cast<const LV2_Atom_URID*>(property)->body;
        const auto place = std::ranges::find(urids.properties, key) - urids.properties.begin();
        const auto index = static_cast<std::size_t>(place);
        const LV2_Atom* value = ValueOf(message, urids.value);
        if (index == urids.properties.size() || (!gets && !(value && Post(index, *value))))
            return;
        if (gets)
            asked |= 1U << index;
    } else if (!gets) {
        return;
    }
    Wake();
    // In an offline render a formula takes effect at the frame of its message.
    const auto* freewheel = Port<const float>(kFreewheel);
    if (thread && freewheel && *freewheel > 0)
        thread->Await();
}

/// Returns false if there is nothing to do.
bool Plugin::Post(std::size_t property, const LV2_Atom& value) noexcept {
    if (property >= kRequests || (value.type != urids.string && value.type != urids.path))
        return false;
    const auto* text = reinterpret_cast<const char*>(&value + 1);
    if (!instrument.Post(static_cast<Request>(property), {text, strnlen(text, value.size)}))
        lost = true;
    return true;
}

void Plugin::Wake() noexcept {
    const uint8 nothing = 0;
    if (thread)
        thread->Wake();
    else
        refused = schedule->schedule_work(schedule->handle, 1, &nothing) != LV2_WORKER_SUCCESS;
}

void Plugin::Work() noexcept try {
    const std::lock_guard lock(working);
    const uint32_t wanted = asked.exchange(0);
    if (instrument.Requested())
        Tell(instrument.Work());
    if (lost.exchange(false))
        Tell("A request was longer than 64 KiB, or there were too many at a time.");
    TellChanges(wanted);
} catch (const std::exception& fault) {
    std::fprintf(stderr, "vexa: %s\n", fault.what());
}

/// Reports the result of the last request; an empty text means success.
void Plugin::Tell(const std::string& text) {
    message = text;
    while (message.ends_with('\n'))
        message.pop_back();
    if (message.empty())
        return;
    // Forgets the last message, so that the same message is sent again.
    reported[kMessage].clear();
    if (log)
        log->printf(log->handle, urids.error, "vexa: %s\n", message.c_str());
    else
        std::fprintf(stderr, "vexa: %s\n", message.c_str());
}

/// Sends the properties that have changed, and those whose bits are set in `wanted`.
void Plugin::TellChanges(uint32_t wanted) {
    for (std::size_t i = 0; i < reported.size(); i++) {
        std::string now = i == kMessage ? message : instrument.Text(static_cast<Request>(i));
        if ((now != reported[i] || wanted >> i & 1) && news.Put(i, now))
            reported[i] = std::move(now);
    }
}

} // namespace vexa::lv2
