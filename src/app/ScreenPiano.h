// SPDX-License-Identifier: GPL-3.0-or-later
// Plays the piano in the window, with its wheels and its hold.
#pragma once

#include "app/HandSource.h"

#include <set>

namespace vexa {

/// A source that is connected whichever source the user has chosen. It ends every note that it
/// begins. Window thread.
class ScreenPiano {
  public:
    ~ScreenPiano() { ReleaseAll(); }

    /// Does what HandSource::SendTo does.
    void SendTo(HandSource::Player next) { source.SendTo(std::move(next)); }
    /// Does what ReleaseAll does, and sets the channel of the coming events.
    void SetChannel(uchar next);

    void Press(uchar key, uchar velocity);
    void Release(uchar key);
    bool IsDown(uchar key) const { return down.contains(key); }
    /// Sets the hold. While it is on, released keys sound on: keys of this piano with every sound,
    /// other keys on its channel with sounds that have a pedal.
    void SetHold(bool on);
    bool Holds() const { return hold; }
    /// Moves the pitch wheel to a position, -1..1.
    void Bend(float amount);
    float Bent() const { return bent; }
    /// Moves the modulation wheel to a position, 0..1.
    void Modulate(float amount);

    /// Releases the keys, the hold and the pitch wheel.
    void ReleaseAll();

  private:
    HandSource source{"Piano in the window", HandSource::Place::AlwaysHeard};
    /// The keys that are down, and the released keys that the hold keeps.
    std::set<uchar> down, kept;
    bool hold = false;
    float bent = 0;
};

} // namespace vexa
