// SPDX-License-Identifier: GPL-3.0-or-later
// The zones of MPE (MIDI Polyphonic Expression, MIDI Association 2018), in which each member
// channel carries a single note.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "kits/support/SupportDefs.h"

#include <optional>

namespace vexa {

/// The lower zone has channel 0 as its master and members from 1 upwards, the upper one channel 15
/// and members from 14 downwards. A member carries one note; messages on the master apply to all
/// members. Initially there are no zones. MIDI thread.
class VEXA_REALTIME MpeZones {
  public:
    /// Applies the configuration message, which arrives on a master: it sets the zone's number of
    /// members, 0..15; 0 removes the zone. The other zone loses the channels that overlap. Returns
    /// false, without effect, if the channel is no master or the number is too large.
    bool Configure(uchar master, int members);

    /// Returns the master of a member; nothing for other channels.
    std::optional<uchar> MasterOf(uchar channel) const;
    /// Returns true if the channel is the master of a zone with members.
    bool IsMaster(uchar channel) const;

    bool operator==(const MpeZones&) const = default;

  private:
    /// The number of member channels of each zone, 0..15.
    int lower = 0, upper = 0;
};

} // namespace vexa
