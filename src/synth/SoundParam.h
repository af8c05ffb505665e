// SPDX-License-Identifier: GPL-3.0-or-later
// The parameters of a sound that all threads share.
#pragma once

#include "kits/support/Shared.h"
#include "kits/support/SupportDefs.h"

#include <array>

namespace vexa {

class Envelope;

/// The last value of each MIDI controller, 0..1, by controller number. Written by the MIDI thread,
/// read by all.
using ControllerTable = std::array<kits::Shared<float>, 128>;

/// One sound's coefficients. The drift speed of the orbit's centre, units per second, is
///   dCx/dt = Cx0 EnvCx(t) + Cx1 Vel + Cx2 Key + Cx3 Ctl(Cx4),
/// the radius of the orbit
///   Ax = EnvAx(t) (Ax0 + Ax1 Vel + Ax2 Key + Ax3 Ctl(Ax4)),
/// the centre's position at note-on
///   Cx(0) = C0x0 + C0x1 Vel + C0x2 Key + C0x3 Ctl(C0x4),
/// and the same in y. Vel and Key are the note's velocity and number divided by 127, Ctl(n) is
/// entry n of the controller table, n = 0..127. Fx and Fy are the turns of the orbit's x and y
/// oscillators per period of the note. Written by the window thread, read by all.
struct sound_param {
    kits::Shared<float> Cx0{1}, Cx1{0}, Cx2{0}, Cx3{0};
    kits::Shared<int32> Cx4{0};
    kits::Shared<float> Cy0{1}, Cy1{0}, Cy2{0}, Cy3{0};
    kits::Shared<int32> Cy4{0};
    kits::Shared<float> Ax0{1}, Ax1{0}, Ax2{0}, Ax3{0};
    kits::Shared<int32> Ax4{0};
    kits::Shared<float> Ay0{1}, Ay1{0}, Ay2{0}, Ay3{0};
    kits::Shared<int32> Ay4{0};
    kits::Shared<float> C0x0{0}, C0x1{0}, C0x2{0}, C0x3{0};
    kits::Shared<int32> C0x4{0};
    kits::Shared<float> C0y0{0}, C0y1{0}, C0y2{0}, C0y3{0};
    kits::Shared<int32> C0y4{0};
    kits::Shared<float> Fx{1}, Fy{1};

    /// The envelopes of the formulas; not owned, set before any other thread sees the record.
    Envelope* EnvCx = nullptr;
    Envelope* EnvCy = nullptr;
    Envelope* EnvAx = nullptr;
    Envelope* EnvAy = nullptr;
};

} // namespace vexa
