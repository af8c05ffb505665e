// SPDX-License-Identifier: GPL-3.0-or-later
// News is what the plug-in tells its host: values of properties, on their way to the notifications
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

/// News goes from the thread that works to the one that runs.
class News {
  public:
    explicit News(const Urids& urids);

    /// Puts in the value of a property in kProperties. False where the host has not fetched what
    /// was put before; what no port would hold is passed over. The working thread.
    bool Put(std::size_t property, std::string_view text);

    /// Writes a sequence of as much as there is room for, a message patch:Set for each. What does
    /// not fit into the whole port is dropped, the rest comes the next time. Real-time safe; the
    /// running thread.
    VEXA_REALTIME void Write(LV2_Atom_Sequence& port) noexcept;

  private:
    struct Header {
        std::uint32_t property, size;
    };

    const Urids& urids;
    LV2_Atom_Forge forge{};
    kits::Ring<char> ring{2 * HostedInstrument::kMostText};
    /// The running thread has these: a header whose text is still in the ring, and room for a text.
    std::optional<Header> next;
    std::vector<char> text = std::vector<char>(HostedInstrument::kMostText);
};

} // namespace vexa::lv2
