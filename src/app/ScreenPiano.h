// SPDX-License-Identifier: GPL-3.0-or-later
// This plays what a person plays on the piano in the window, with its wheels and its hold.
#pragma once

#include "app/HandSource.h"

#include <set>

namespace vexa {

/// It ends every note that it begins, and is heard whichever source is chosen. Window thread.
class ScreenPiano {
  public:
    ~ScreenPiano() { ReleaseAll(); }

    /// Does what HandSource::SendTo does.
    void SendTo(HandSource::Player next) { source.SendTo(std::move(next)); }
    /// Sets the channel of what is played from now on, and lets go of all.
    void SetChannel(uchar next);

    void Press(uchar key, uchar velocity);
    void Release(uchar key);
    /// Sets the hold. While it is on, keys that are let go sound on: those of the piano whatever
    /// the sound says, and others on its channel where the sound has a pedal.
    void SetHold(bool on);
    bool Holds() const { return hold; }
    /// Puts the pitch wheel to a place, -1..1.
    void Bend(float amount);
    float Bent() const { return bent; }
    /// Puts the modulation wheel to a place, 0..1.
    void Modulate(float amount);

    /// Lets go of keys, hold and the bend wheel.
    void ReleaseAll();

  private:
    HandSource source{"Piano in the window", HandSource::Place::AlwaysHeard};
    /// Keys that are down, and those that only the hold keeps.
    std::set<uchar> down, kept;
    bool hold = false;
    float bent = 0;
};

} // namespace vexa
