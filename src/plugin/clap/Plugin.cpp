// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/clap/Plugin.h"

#include "kits/support/Published.h"
#include "kits/support/RealtimeMark.h"
#include "plugin/HostedFolders.h"
#include "plugin/clap/Extensions.h"
#include "plugin/clap/HostExtension.h"
#include "plugin/clap/HostLog.h"
#include "plugin/clap/Parameters.h"
#include "synth/Realtime.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <utility>

#include <clap/ext/latency.h>
#include <clap/ext/params.h>
#include <clap/ext/state.h>

namespace vexa::clap {

namespace {

/// Returns the note that an event addresses; no value if the event is for another port.
template<class Event>
VEXA_REALTIME std::optional<NoteName> NameOf(const Event& event) noexcept {
    const NoteName name{event.note_id, event.channel, event.key};
    const bool isOurs = event.port_index == 0 || event.port_index == -1;
    if (!isOurs || name.id < -1 || name.channel < -1 || name.channel > 15 || name.key < -1 ||
        name.key > 127)
        return std::nullopt;
    return name;
}

/// The level below which the host may let the plug-in sleep, relative to full volume (1): half a
/// step of 16 bits. Where f is not 0, rounding leaves a constant of a note that is over.
constexpr float kQuiet = 1.0F / 65536;
/// The time after which all fades and the tail of the filter have ended.
constexpr double kFadeSeconds = 0.02;

VEXA_REALTIME bool IsQuiet(const float* samples, uint32_t count) noexcept {
    return std::all_of(samples, samples + count,
                       [](float sample) { return std::abs(sample) < kQuiet; });
}

} // namespace

Plugin::Plugin(const clap_host& host, const std::filesystem::path& content)
    : host(host),
      instrument(HostedFolders(content), rate, [&host] { host.request_process(&host); }),
      face(FaceOf(*this)),
      windows(instrument, [this](const std::string& line) { Tell(line); }),
      gui(host, windows, content, [this](const std::string& line) { Tell(line); }) {
    const Knobs untouched = UntouchedKnobs();
    std::copy(untouched.begin(), untouched.end(), knobs.begin());
}

bool Plugin::Init() noexcept {
    if (!instrument.StartFault().empty())
        Tell(instrument.StartFault());
    return true;
}

bool Plugin::Activate(double next) noexcept {
    if (!(next > 0))
        return false;
    rate = next;
    instrument.Restart(rate);
    quiet = 0;
    TakeKnobs();
    active = true;
    const uint32_t latency = Latency();
    if (reported.exchange(latency) != latency) {
        if (const auto* hosts = Find<clap_host_latency>(host, CLAP_EXT_LATENCY))
            hosts->changed(&host);
    }
    return true;
}

/// Runs after a sound was loaded, as its predecessor may be free by now, and after the audio thread
/// has seen another latency, which a host accepts only between two activations.
void Plugin::OnMainThread() noexcept {
    kits::CollectRetired();
    if (active && reported != Latency())
        host.request_restart(&host);
}

void Plugin::OnTimer(clap_id id) noexcept {
    gui.OnTimer(id);
    TellEdits();
}

void Plugin::DestroyWindow() noexcept {
    gui.Destroy();
    // The program has ended, but its last edits may still be in the socket.
    windows.Close();
    TellEdits();
}

/// Tells the host that its session has unsaved changes. What was replaced may be free by now.
void Plugin::TellEdits() noexcept {
    if (!instrument.TakeEdited())
        return;
    kits::CollectRetired();
    if (const auto* hosts = Find<clap_host_state>(host, CLAP_EXT_STATE))
        hosts->mark_dirty(&host);
}

bool Plugin::Save(const clap_ostream& stream) noexcept try {
    Knobs held;
    std::copy(knobs.begin(), knobs.end(), held.begin());
    return WriteAll(stream, WithKnobs(instrument.State(), held));
} catch (const std::exception& fault) {
    Tell(fault.what());
    return false;
}

bool Plugin::Load(const clap_istream& stream) noexcept try {
    const std::optional<std::string> state = ReadAll(stream);
    if (!state) {
        Tell("the host's state cannot be read, or is larger than 64 MiB");
        return false;
    }
    bool taken = false;
    const std::string said = instrument.Restore(*state, "", taken);
    if (!said.empty())
        Tell(said);
    if (!taken)
        return false;
    const Knobs next = KnobsOf(*state);
    std::copy(next.begin(), next.end(), knobs.begin());
    if (const auto* params = Find<clap_host_params>(host, CLAP_EXT_PARAMS))
        params->rescan(&host, CLAP_PARAM_RESCAN_VALUES);
    host.request_callback(&host);
    return true;
} catch (const std::exception& fault) {
    Tell(fault.what());
    return false;
}

void Plugin::Reset() noexcept {
    const RealtimeSection realtime;
    instrument.Restart(rate);
}

void Plugin::TakeKnobs() noexcept {
    ControlValues values;
    std::copy(knobs.begin(), knobs.end(), values.begin());
    instrument.TakeControls(values);
}

clap_process_status Plugin::Process(const clap_process& process) noexcept {
    const RealtimeSection realtime;
    const uint32_t count = process.frames_count;
    float* left = nullptr;
    float* right = nullptr;
    if (process.audio_outputs_count > 0 && process.audio_outputs[0].channel_count >= 2 &&
        process.audio_outputs[0].data32) {
        left = process.audio_outputs[0].data32[0];
        right = process.audio_outputs[0].data32[1];
        process.audio_outputs[0].constant_mask = 0;
    }
    const uint32_t last = std::max(count, 1U) - 1;
    uint32_t done = 0;
    const auto renderTo = [&](uint32_t frame) {
        if (left && right && frame > done)
            instrument.Render(left + done, right + done, frame - done);
        done = std::max(done, frame);
    };
    TakeKnobs();
    const uint32_t events = process.in_events ? process.in_events->size(process.in_events) : 0;
    for (uint32_t i = 0; i < events; i++) {
        if (const clap_event_header* event = process.in_events->get(process.in_events, i)) {
            renderTo(std::min(event->time, count));
            Take(*event);
            TellEnded(process.out_events, std::min(event->time, last));
        }
    }
    renderTo(count);
    TellEnded(process.out_events, last);
    if (const uint32_t latency = Latency(); std::exchange(asked, latency) != latency) {
        if (latency != reported)
            host.request_callback(&host);
    }
    const bool isQuiet = !left || !right || (IsQuiet(left, count) && IsQuiet(right, count));
    const bool rests = isQuiet && instrument.Audio().consumer.IsSilent() && !instrument.HasPosted();
    quiet = rests ? quiet + count : 0;
    return static_cast<double>(quiet) > rate * kFadeSeconds ? CLAP_PROCESS_SLEEP
                                                            : CLAP_PROCESS_CONTINUE;
}

void Plugin::Flush(const clap_input_events& in) noexcept {
    const RealtimeSection realtime;
    const uint32_t events = in.size(&in);
    for (uint32_t i = 0; i < events; i++) {
        if (const clap_event_header* event = in.get(&in, i))
            Take(*event);
    }
}

void Plugin::Take(const clap_event_header& event) noexcept {
    if (event.space_id != CLAP_CORE_EVENT_SPACE_ID)
        return;
    switch (event.type) {
    case CLAP_EVENT_NOTE_ON:
    case CLAP_EVENT_NOTE_OFF:
    case CLAP_EVENT_NOTE_CHOKE:
        return TakeNote(reinterpret_cast<const clap_event_note&>(event));
    case CLAP_EVENT_NOTE_EXPRESSION:
        return TakeExpression(reinterpret_cast<const clap_event_note_expression&>(event));
    case CLAP_EVENT_PARAM_VALUE:
        return TakeValue(reinterpret_cast<const clap_event_param_value&>(event));
    case CLAP_EVENT_PARAM_MOD:
        return TakeModulation(reinterpret_cast<const clap_event_param_mod&>(event));
    case CLAP_EVENT_MIDI:
        if (reinterpret_cast<const clap_event_midi&>(event).port_index == 0)
            instrument.Midi(reinterpret_cast<const clap_event_midi&>(event).data);
        return;
    default:
        return;
    }
}

void Plugin::TakeNote(const clap_event_note& note) noexcept {
    VexaMidiConsumer& consumer = instrument.Audio().consumer;
    const std::optional<NoteName> name = NameOf(note);
    if (!name)
        return;
    if (note.header.type == CLAP_EVENT_NOTE_OFF)
        return consumer.End(*name);
    if (note.header.type == CLAP_EVENT_NOTE_CHOKE)
        return consumer.Choke(*name);
    if (name->channel >= 0 && name->key >= 0 && !std::isnan(note.velocity))
        consumer.Begin(*name, static_cast<float>(std::clamp(note.velocity, 0.0, 1.0)));
}

void Plugin::TakeExpression(const clap_event_note_expression& event) noexcept {
    static constexpr std::pair<clap_note_expression, Expression> kExpressions[] = {
        {CLAP_NOTE_EXPRESSION_VOLUME, Expression::Volume},
        {CLAP_NOTE_EXPRESSION_PAN, Expression::Pan},
        {CLAP_NOTE_EXPRESSION_TUNING, Expression::Tuning},
        {CLAP_NOTE_EXPRESSION_EXPRESSION, Expression::Loudness},
        {CLAP_NOTE_EXPRESSION_BRIGHTNESS, Expression::Timbre},
        {CLAP_NOTE_EXPRESSION_PRESSURE, Expression::Pressure},
    };
    const std::optional<NoteName> name = NameOf(event);
    for (const auto& [id, which] : kExpressions) {
        if (name && id == event.expression_id)
            instrument.Audio().consumer.Express(*name, which, static_cast<float>(event.value));
    }
}

void Plugin::TakeValue(const clap_event_param_value& event) noexcept {
    const std::optional<std::size_t> index = IndexOf(event.param_id);
    const std::optional<NoteName> name = NameOf(event);
    if (!index || !name)
        return;
    const Control& control = Controls()[*index];
    const std::optional<std::size_t> macro = MacroOf(*index);
    if (*name == NoteName{}) {
        knobs[*index] = Held(control, event.value);
        TakeKnobs();
    } else if (const auto value = static_cast<float>(event.value);
               macro && !control.LeavesToSound(value)) {
        instrument.Audio().consumer.SetMacro(*name, *macro, value);
    }
}

void Plugin::TakeModulation(const clap_event_param_mod& event) noexcept {
    const std::optional<std::size_t> index = IndexOf(event.param_id);
    const std::optional<NoteName> name = NameOf(event);
    const std::optional<std::size_t> macro = index ? MacroOf(*index) : std::nullopt;
    const auto amount = static_cast<float>(event.amount);
    if (!macro || !name || std::isnan(amount))
        return;
    Engine& engine = instrument.Audio();
    if (*name == NoteName{})
        engine.macros[*macro].modulation = std::clamp(amount, -1.0F, 1.0F);
    else
        engine.consumer.ModulateMacro(*name, *macro, amount);
}

void Plugin::TellEnded(const clap_output_events* out, uint32_t time) noexcept {
    instrument.Audio().consumer.TakeEnded([&](const NoteName& name) {
        const clap_event_note end{
            {sizeof end, time, CLAP_CORE_EVENT_SPACE_ID, CLAP_EVENT_NOTE_END, 0},
            name.id,
            0,
            static_cast<int16_t>(name.channel),
            static_cast<int16_t>(name.key),
            0};
        if (out)
            out->try_push(out, &end.header);
    });
}

/// Writes a message into the host's log or, if it has none, to standard error. Any thread.
void Plugin::Tell(const std::string& message) noexcept {
    if (const auto* hosts = Find<HostLog>(host, kHostLogId))
        hosts->log(&host, kLogError, message.c_str());
    else
        std::fprintf(stderr, "vexa: %s\n", message.c_str());
}

} // namespace vexa::clap
