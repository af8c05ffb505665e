// SPDX-License-Identifier: GPL-3.0-or-later
// One instance of the CLAP plug-in.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "plugin/HostedInstrument.h"
#include "plugin/clap/Gui.h"
#include "plugin/clap/State.h"
#include "plugin/window/Windows.h"

#include <atomic>
#include <string>

#include <clap/events.h>
#include <clap/plugin.h>
#include <clap/process.h>

namespace vexa::clap {

/// Functions are called on the threads that CLAP's headers name. Calls of the main thread and of
/// the audio thread may overlap.
class Plugin {
  public:
    /// `content` is the folder of the shipped samples and pictures.
    Plugin(const clap_host& host, const std::filesystem::path& content);
    /// Returns the `clap_plugin` that the host holds for the instance.
    const clap_plugin* Face() const { return &face; }

    /// Main thread. Init is the first call after which the host may be asked for its extensions.
    bool Init() noexcept;
    bool Activate(double rate) noexcept;
    void Deactivate() noexcept { active = false; }
    void OnMainThread() noexcept;
    VEXA_REALTIME uint32_t Latency() const noexcept {
        return static_cast<uint32_t>(instrument.Delay());
    }
    double Knob(std::size_t index) const noexcept { return knobs[index]; }
    bool Save(const clap_ostream& stream) noexcept;
    bool Load(const clap_istream& stream) noexcept;
    /// The window, apart from what the next two do.
    Gui& Window() noexcept { return gui; }
    void OnTimer(clap_id id) noexcept;
    void DestroyWindow() noexcept;

    /// Audio thread; Flush is called on the main thread while the instance is inactive.
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
    void TellEdits() noexcept;
    void Tell(const std::string& message) noexcept;

    const clap_host& host;
    /// The sample rate, Hz; this value until the host gives another.
    double rate = 48000;
    HostedInstrument instrument;
    clap_plugin face;
    std::array<std::atomic<double>, kControls> knobs;
    std::atomic<bool> active{false};
    /// `reported` is the latency that the host knows. `asked` belongs to the audio thread: the
    /// latency of the last block, for which OnMainThread has been requested if it differs from
    /// `reported`.
    std::atomic<uint32_t> reported{0};
    uint32_t asked = 0;
    /// The number of frames since the output was last audible. Audio thread.
    uint64_t quiet = 0;
    Windows windows;
    Gui gui;
};

} // namespace vexa::clap
