// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/clap/Extensions.h"

#include "plugin/clap/Parameters.h"

#include <cstdio>
#include <cstring>
#include <iterator>
#include <utility>

#include <clap/ext/audio-ports.h>
#include <clap/ext/gui.h>
#include <clap/ext/latency.h>
#include <clap/ext/note-ports.h>
#include <clap/ext/params.h>
#include <clap/ext/state.h>
#include <clap/ext/timer-support.h>

namespace vexa::clap {

namespace {

const char* kFeatures[] = {CLAP_PLUGIN_FEATURE_INSTRUMENT, CLAP_PLUGIN_FEATURE_SYNTHESIZER,
                           CLAP_PLUGIN_FEATURE_STEREO, nullptr};

Plugin& Of(const clap_plugin* face) {
    return *static_cast<Plugin*>(face->plugin_data);
}

template<std::size_t size>
void Copy(const char* text, char (&to)[size]) {
    std::snprintf(to, size, "%s", text);
}

constexpr clap_plugin_audio_ports kAudioPorts{
    [](const clap_plugin*, bool isInput) -> uint32_t { return isInput ? 0 : 1; },
    [](const clap_plugin*, uint32_t index, bool isInput, clap_audio_port_info* info) {
        if (isInput || index > 0)
            return false;
        *info = {};
        Copy("Output", info->name);
        info->flags = CLAP_AUDIO_PORT_IS_MAIN;
        info->channel_count = 2;
        info->port_type = CLAP_PORT_STEREO;
        info->in_place_pair = CLAP_INVALID_ID;
        return true;
    }};

constexpr clap_plugin_note_ports kNotePorts{
    [](const clap_plugin*, bool isInput) -> uint32_t { return isInput ? 1 : 0; },
    [](const clap_plugin*, uint32_t index, bool isInput, clap_note_port_info* info) {
        if (!isInput || index > 0)
            return false;
        *info = {};
        Copy("Notes", info->name);
        info->supported_dialects =
            CLAP_NOTE_DIALECT_CLAP | CLAP_NOTE_DIALECT_MIDI | CLAP_NOTE_DIALECT_MIDI_MPE;
        info->preferred_dialect = CLAP_NOTE_DIALECT_CLAP;
        return true;
    }};

constexpr clap_plugin_params kParams{
    [](const clap_plugin*) -> uint32_t { return kControls; },
    [](const clap_plugin*, uint32_t index, clap_param_info* info) {
        if (index >= kControls)
            return false;
        *info = InfoOf(index);
        return true;
    },
    [](const clap_plugin* face, clap_id id, double* value) {
        const std::optional<std::size_t> index = IndexOf(id);
        if (index)
            *value = Of(face).Knob(*index);
        return index.has_value();
    },
    [](const clap_plugin*, clap_id id, double value, char* display, uint32_t size) {
        const std::optional<std::size_t> index = IndexOf(id);
        if (index)
            std::snprintf(display, size, "%s", TextOf(Controls()[*index], value).c_str());
        return index.has_value();
    },
    [](const clap_plugin*, clap_id id, const char* display, double* value) {
        const std::optional<std::size_t> index = IndexOf(id);
        const auto read = index ? ValueOf(Controls()[*index], display) : std::nullopt;
        if (read)
            *value = *read;
        return read.has_value();
    },
    [](const clap_plugin* face, const clap_input_events* in, const clap_output_events*) {
        if (in)
            Of(face).Flush(*in);
    }};

constexpr clap_plugin_state kState{
    [](const clap_plugin* face, const clap_ostream* stream) { return Of(face).Save(*stream); },
    [](const clap_plugin* face, const clap_istream* stream) { return Of(face).Load(*stream); }};

constexpr clap_plugin_gui kGui{
    [](const clap_plugin* face, const char* api, bool isFloating) {
        return Of(face).Window().IsSupported(api, isFloating);
    },
    [](const clap_plugin*, const char** api, bool* isFloating) {
        *api = CLAP_WINDOW_API_X11;
        *isFloating = false;
        return true;
    },
    [](const clap_plugin* face, const char* api, bool isFloating) {
        return Of(face).Window().Create(api, isFloating);
    },
    [](const clap_plugin* face) { Of(face).DestroyWindow(); },
    // The program takes its scale from the desktop.
    [](const clap_plugin*, double) { return false; },
    [](const clap_plugin* face, uint32_t* width, uint32_t* height) {
        return Of(face).Window().GetSize(*width, *height);
    },
    [](const clap_plugin*) { return true; },
    [](const clap_plugin*, clap_gui_resize_hints* hints) {
        *hints = {};
        hints->can_resize_horizontally = hints->can_resize_vertically = true;
        return true;
    },
    [](const clap_plugin* face, uint32_t* width, uint32_t* height) {
        return Of(face).Window().Adjust(*width, *height);
    },
    [](const clap_plugin* face, uint32_t width, uint32_t height) {
        return Of(face).Window().SetSize(width, height);
    },
    [](const clap_plugin* face, const clap_window* parent) {
        return Of(face).Window().SetParent(*parent);
    },
    // The next two are for floating windows.
    [](const clap_plugin*, const clap_window*) { return false; },
    [](const clap_plugin*, const char*) {},
    [](const clap_plugin* face) { return Of(face).Window().Show(true); },
    [](const clap_plugin* face) { return Of(face).Window().Show(false); }};

constexpr clap_plugin_timer_support kTimer{
    [](const clap_plugin* face, clap_id id) { Of(face).OnTimer(id); }};

constexpr clap_plugin_latency kLatency{
    [](const clap_plugin* face) -> uint32_t { return Of(face).Latency(); }};

const void* Extension(const clap_plugin*, const char* id) {
    static constexpr std::pair<const char*, const void*> kExtensions[] = {
        {CLAP_EXT_AUDIO_PORTS, &kAudioPorts}, {CLAP_EXT_NOTE_PORTS, &kNotePorts},
        {CLAP_EXT_PARAMS, &kParams},          {CLAP_EXT_STATE, &kState},
        {CLAP_EXT_LATENCY, &kLatency},        {CLAP_EXT_GUI, &kGui},
        {CLAP_EXT_TIMER_SUPPORT, &kTimer},
    };
    for (const auto& [name, extension] : kExtensions) {
        if (std::strcmp(id, name) == 0)
            return extension;
    }
    return nullptr;
}

} // namespace

const clap_plugin_descriptor kDescriptor{CLAP_VERSION,
                                         "vexa.instrument",
                                         "Vexa",
                                         "Vexa",
                                         "",
                                         "",
                                         "",
                                         VEXA_VERSION,
                                         "Polyphonic wave-terrain synthesizer",
                                         kFeatures};

clap_plugin FaceOf(Plugin& plugin) {
    return {&kDescriptor,
            &plugin,
            [](const clap_plugin* face) { return Of(face).Init(); },
            [](const clap_plugin* face) { delete &Of(face); },
            [](const clap_plugin* face, double rate, uint32_t, uint32_t) {
                return Of(face).Activate(rate);
            },
            [](const clap_plugin* face) { Of(face).Deactivate(); },
            [](const clap_plugin*) { return true; },
            [](const clap_plugin*) {},
            [](const clap_plugin* face) { Of(face).Reset(); },
            [](const clap_plugin* face, const clap_process* process) {
                return Of(face).Process(*process);
            },
            Extension,
            [](const clap_plugin* face) { Of(face).OnMainThread(); }};
}

} // namespace vexa::clap
