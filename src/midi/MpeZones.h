// SPDX-License-Identifier: GPL-3.0-or-later
// These zones tell which MIDI channels are one note's own, by MPE (MIDI Polyphonic Expression, MIDI
// Association 2018).
#pragma once

#include "kits/support/RealtimeMark.h"
#include "kits/support/SupportDefs.h"

#include <optional>

namespace vexa {

/// The lower zone has channel 0 as its master and members from 1 upwards, the upper one channel 15
/// and members from 14 downwards. A channel of a note's own is a member; what comes on the master
/// is for all of them. At first there are no zones. MIDI thread.
class VEXA_REALTIME MpeZones {
  public:
    /// Takes the configuration message, which comes on a master: the zone has so many members,
    /// 0..15; 0 ends it. The other zone gives away what it had of them. False, and nothing changes,
    /// where the channel is no master or the number is too large.
    bool Configure(uchar master, int members);

    /// Returns the master of a member; nothing for other channels.
    std::optional<uchar> MasterOf(uchar channel) const;
    /// True where the channel is the master of a zone that has members.
    bool IsMaster(uchar channel) const;

    bool operator==(const MpeZones&) const = default;

  private:
    /// How many member channels each zone has, 0..15.
    int lower = 0, upper = 0;
};

} // namespace vexa
