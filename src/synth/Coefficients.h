// SPDX-License-Identifier: GPL-3.0-or-later
// The weighted sums of the orbit formulas.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/SoundParam.h"

namespace vexa {

/// A sum c0 e + c1 Vel + c2 Key + c3 Ctl(c4) for one note, where e is an envelope's value or 1,
/// split into the weight of e and the rest.
struct Weights {
    double c0;
    /// The value of c1 Vel + c2 Key + c3 Ctl(c4).
    double rest;
};

/// The coefficients of one sum at one moment, with the controller.
struct Coefficients {
    double c0, c1, c2, c3;
    /// The value of the controller, 0..1, and its number c4.
    double control;
    int32 number;

    bool operator==(const Coefficients&) const = default;
    Weights For(float vel, float key) const noexcept { return For(vel, key, control); }
    /// Returns the weights for a note whose value of the controller is `own`.
    VEXA_REALTIME Weights For(float vel, float key, double own) const noexcept {
        return {c0, c1 * vel + c2 * key + c3 * own};
    }
};

/// The members of sound_param that hold the coefficients of one sum.
struct CoefficientGroup {
    kits::Shared<float> sound_param::*c0;
    kits::Shared<float> sound_param::*c1;
    kits::Shared<float> sound_param::*c2;
    kits::Shared<float> sound_param::*c3;
    kits::Shared<int32> sound_param::*c4;

    /// Reads the current coefficients. Any thread.
    VEXA_REALTIME Coefficients Now(const sound_param& p,
                                   const ControllerTable& controllers) const noexcept {
        const int32 number = p.*c4 & 127;
        return {p.*c0, p.*c1, p.*c2, p.*c3, controllers[static_cast<std::size_t>(number)], number};
    }
    /// Computes the current weights. Any thread.
    Weights For(const sound_param& p, const ControllerTable& controllers, float vel,
                float key) const noexcept {
        return Now(p, controllers).For(vel, key);
    }
};

/// For x and y each there are three groups: the drift speed of the orbit's centre, its radius, and
/// the centre at note-on.
inline constexpr CoefficientGroup kDcxdt{&sound_param::Cx0, &sound_param::Cx1, &sound_param::Cx2,
                                         &sound_param::Cx3, &sound_param::Cx4};
inline constexpr CoefficientGroup kDcydt{&sound_param::Cy0, &sound_param::Cy1, &sound_param::Cy2,
                                         &sound_param::Cy3, &sound_param::Cy4};
inline constexpr CoefficientGroup kAx{&sound_param::Ax0, &sound_param::Ax1, &sound_param::Ax2,
                                      &sound_param::Ax3, &sound_param::Ax4};
inline constexpr CoefficientGroup kAy{&sound_param::Ay0, &sound_param::Ay1, &sound_param::Ay2,
                                      &sound_param::Ay3, &sound_param::Ay4};
inline constexpr CoefficientGroup kCx0{&sound_param::C0x0, &sound_param::C0x1, &sound_param::C0x2,
                                       &sound_param::C0x3, &sound_param::C0x4};
inline constexpr CoefficientGroup kCy0{&sound_param::C0y0, &sound_param::C0y1, &sound_param::C0y2,
                                       &sound_param::C0y3, &sound_param::C0y4};

} // namespace vexa
