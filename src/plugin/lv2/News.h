// SPDX-License-Identifier: GPL-3.0-or-later
// News is the queue of property values that the plug-in sends to its host through the notifications
// port.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "kits/support/Ring.h"
#include "plugin/lv2/Urids.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include <lv2/atom/forge.h>

namespace vexa::lv2 {

/// Values pass from the working thread to the running (audio) thread.
class News {
  public:
    explicit News(const Urids& urids);

    /// Queues the value of a property, an index in kProperties. Returns false if the queue is full
    /// because the host has not fetched earlier values; a value too long for any port is dropped.
    /// Working thread.
    bool Put(std::size_t property, std::string_view text);

    /// Writes as many queued values as fit into the port, each as a patch:Set message. A value that
    /// does not even fit into an empty port is dropped; the others follow at the next call. Running
    /// thread, real-time safe.
    VEXA_REALTIME void Write(LV2_Atom_Sequence& port) noexcept;

  private:
    struct Header {
        std::uint32_t property, size;
    };

    const Urids& urids;
    LV2_Atom_Forge forge{};
    kits::Ring<char> ring{2 * HostedInstrument::kMostText};
    /// Of the running thread: a header whose text is still in the ring, and room for a text.
    std::optional<Header> next;
    std::vector<char> text = std::vector<char>(HostedInstrument::kMostText);
};

} // namespace vexa::lv2
