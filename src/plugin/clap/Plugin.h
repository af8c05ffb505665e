// SPDX-License-Identifier: GPL-3.0-or-later
// This is one instance of the CLAP plug-in.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "plugin/HostedInstrument.h"
#include "plugin/clap/State.h"

#include <atomic>

#include <clap/events.h>
#include <clap/plugin.h>
#include <clap/process.h>

namespace vexa::clap {

/// Calls come on the threads that CLAP's header names; those of the main thread and of the audio
/// thread may come at the same time.
class Plugin {
  public:
    /// `content` is the folder in which shipped samples lie.
    Plugin(const clap_host& host, const std::filesystem::path& content);
    /// Returns the record that the host holds of the instance.
    const clap_plugin* Face() const { return &face; }

    /// These are called on the main thread.
    bool Activate(double rate) noexcept;
    void Deactivate() noexcept { active = false; }
    void OnMainThread() noexcept;
    VEXA_REALTIME uint32_t Latency() const noexcept {
        return static_cast<uint32_t>(instrument.Delay());
    }
    double Knob(std::size_t index) const noexcept { return knobs[index]; }
    bool Save(const clap_ostream& stream) noexcept;
    bool Load(const clap_istream& stream) noexcept;

    /// These are called on the audio thread; Flush on the main thread where the instance is not
    /// active.
    VEXA_REALTIME void Reset() noexcept;
    VEXA_REALTIME clap_process_status Process(const clap_process& process) noexcept;
    VEXA_REALTIME void Flush(const clap_input_events& in) noexcept;

  private:
    VEXA_REALTIME void Take(const clap_event_header& event) noexcept;
    VEXA_REALTIME void TakeNote(const clap_event_note& note) noexcept;
    VEXA_REALTIME void TakeExpression(const clap_event_note_expression& event) noexcept;
    VEXA_REALTIME void TakeValue(const clap_event_param_value& event) noexcept;
    VEXA_REALTIME void TakeModulation(const clap_event_param_mod& event) noexcept;
    VEXA_REALTIME void TellEnded(const clap_output_events* out, uint32_t time) noexcept;
    VEXA_REALTIME void TakeKnobs() noexcept;
    void Tell(const char* message) const noexcept;

    const clap_host& host;
    /// The frames per second; this many until a host says another number.
    double rate = 48000;
    HostedInstrument instrument;
    clap_plugin face;
    std::array<std::atomic<double>, kControls> knobs;
    std::atomic<bool> active{false};
    /// The latency that the host knows; on the audio thread, that of the last block, for which it
    /// has been asked to come where that is another.
    std::atomic<uint32_t> told{0};
    uint32_t asked = 0;
    /// How many frames have passed since something was heard. Audio thread.
    uint64_t quiet = 0;
};

} // namespace vexa::clap
