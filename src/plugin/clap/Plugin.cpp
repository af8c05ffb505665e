#include "plugin/clap/Plugin.h"

#include "plugin/HostedFolders.h"
#include "plugin/clap/Extensions.h"
#include "plugin/clap/Parameters.h"
#include "synth/Realtime.h"

#include <algorithm>
#include <cstdio>
#include <exception>

#include <clap/ext/latency.h>
#include <clap/ext/params.h>

namespace vexa::clap {

namespace {

template<class Extension>
const Extension* Find(const clap_host& host, const char* id) {
    return static_cast<const Extension*>(host.get_extension(&host, id));
}

} // namespace

Plugin::Plugin(const clap_host& host, const std::filesystem::path& content)
    : host(host), instrument(HostedFolders(content), rate), face(FaceOf(*this)) {
    const Knobs untouched = UntouchedKnobs();
    std::copy(untouched.begin(), untouched.end(), knobs.begin());
}

bool Plugin::Activate(double next) noexcept {
    if (!(next > 0))
        return false;
    rate = next;
    instrument.Restart(rate);
    TakeKnobs();
    active = true;
    const uint32_t latency = Latency();
    if (told.exchange(latency) != latency) {
        if (const auto* hosts = Find<clap_host_latency>(host, CLAP_EXT_LATENCY))
            hosts->changed(&host);
    }
    return true;
}

/// The audio thread has seen another latency, which a host takes up between two activations.
void Plugin::OnMainThread() noexcept {
    if (active && told != Latency())
        host.request_restart(&host);
}

bool Plugin::Save(const clap_ostream& stream) noexcept try {
    Knobs held;
    std::copy(knobs.begin(), knobs.end(), held.begin());
    return WriteAll(stream, instrument.State() + KnobsText(held));
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
        Tell(said.c_str());
    if (!taken)
        return false;
    const Knobs next = KnobsOf(*state);
    std::copy(next.begin(), next.end(), knobs.begin());
    if (const auto* params = Find<clap_host_params>(host, CLAP_EXT_PARAMS))
        params->rescan(&host, CLAP_PARAM_RESCAN_VALUES);
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
        }
    }
    renderTo(count);
    if (const uint32_t latency = Latency(); latency != told && latency != asked) {
        asked = latency;
        host.request_callback(&host);
    }
    return CLAP_PROCESS_CONTINUE;
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
    case CLAP_EVENT_NOTE_OFF: {
        const auto& note = reinterpret_cast<const clap_event_note&>(event);
        const auto velocity = static_cast<uint8>(std::clamp(note.velocity, 0.0, 1.0) * 127 + 0.5);
        const uint8 kind = event.type == CLAP_EVENT_NOTE_ON ? 0x90 : 0x80;
        instrument.Midi(std::array<uint8, 3>{static_cast<uint8>(kind | (note.channel & 15)),
                                             static_cast<uint8>(note.key & 127), velocity});
        return;
    }
    case CLAP_EVENT_PARAM_VALUE: {
        const auto& param = reinterpret_cast<const clap_event_param_value&>(event);
        if (const std::optional<std::size_t> index = IndexOf(param.param_id)) {
            knobs[*index] = Held(Controls()[*index], param.value);
            TakeKnobs();
        }
        return;
    }
    case CLAP_EVENT_MIDI:
        return instrument.Midi(reinterpret_cast<const clap_event_midi&>(event).data);
    default:
        return;
    }
}

void Plugin::Tell(const char* message) const noexcept {
    std::fprintf(stderr, "vexa: %s\n", message);
}

} // namespace vexa::clap
