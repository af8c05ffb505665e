// SPDX-License-Identifier: GPL-3.0-or-later
// One instance of the plug-in in an LV2 host.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "plugin/HostedInstrument.h"
#include "plugin/WakingThread.h"
#include "plugin/lv2/News.h"
#include "plugin/window/Windows.h"

#include <array>
#include <atomic>
#include <mutex>
#include <optional>
#include <string>

#include <lv2/state/state.h>
#include <lv2/worker/worker.h>

namespace vexa::lv2 {

/// Documents, formulas and samples are processed in the host's worker if it has one, else in a
/// thread of the instance's own. State may be saved and restored while it runs.
class Plugin {
  public:
    /// Makes an instance. The features of the host outlive it. `log` and `schedule` may be null.
    Plugin(double rate, const char* bundle, LV2_URID_Map& map, LV2_Log_Log* log,
           LV2_Worker_Schedule* schedule);

    void Connect(uint32_t port, void* data);
    void Activate() { instrument.Restart(rate); }
    VEXA_REALTIME void Run(uint32_t count) noexcept;
    /// Processes the requests, in the host's worker or in the thread that replaces it.
    void Work() noexcept;
    /// Opens a window as WindowInterface::open does.
    int OpenWindow(char* fault, std::size_t room);

    LV2_State_Status Save(LV2_State_Store_Function store, LV2_State_Handle handle,
                          const LV2_State_Map_Path* paths, const LV2_State_Free_Path* freePath);
    LV2_State_Status Restore(LV2_State_Retrieve_Function retrieve, LV2_State_Handle handle,
                             const LV2_State_Map_Path* paths, const LV2_State_Free_Path* freePath);

  private:
    template<class Type>
    VEXA_REALTIME Type* Port(uint32_t port) const noexcept {
        return static_cast<Type*>(ports[port]);
    }
    VEXA_REALTIME void Take(const LV2_Atom_Object& message) noexcept;
    VEXA_REALTIME void TellEdit(LV2_Atom_Sequence& out, uint32_t room) noexcept;
    VEXA_REALTIME bool Post(std::size_t property, const LV2_Atom& value) noexcept;
    VEXA_REALTIME void Wake() noexcept;
    void Tell(const std::string& text);
    void TellChanges(uint32_t wanted);

    const double rate;
    const Urids urids;
    HostedInstrument instrument;
    LV2_Log_Log* const log;
    LV2_Worker_Schedule* const schedule;
    std::array<void*, kPorts> ports{};
    ControlValues controls;
    News news{urids};
    /// True if the host's worker queue was full when work was last scheduled.
    bool refused = false;
    /// The running thread sets these for the working thread: whether requests could not be queued,
    /// and the properties that the host has asked for, a bit each.
    std::atomic<bool> lost{false};
    std::atomic<uint32_t> asked{0};
    /// The working thread holds this mutex. It guards the following: the values of the properties
    /// that the host knows.
    std::mutex working;
    std::array<std::string, std::size(kProperties)> reported;
    std::string message;
    Windows windows;
    /// The last member, so that it is destroyed, and thus ended, first.
    std::optional<WakingThread> thread;
};

} // namespace vexa::lv2
