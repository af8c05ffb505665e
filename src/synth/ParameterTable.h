// SPDX-License-Identifier: GPL-3.0-or-later
// The table of a sound's coefficients: one row per coefficient, with all that the program looks up
// by name.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/SoundParam.h"

#include <cstddef>
#include <span>
#include <string_view>

namespace vexa {

/// The coefficients by name, in the order of Parameters().
enum class ParameterId : unsigned char {
    // clang-format off
    Cx0, Cx1, Cx2, Cx3, Cx4,
    Cy0, Cy1, Cy2, Cy3, Cy4,
    Ax0, Ax1, Ax2, Ax3, Ax4,
    Ay0, Ay1, Ay2, Ay3, Ay4,
    C0x0, C0x1, C0x2, C0x3, C0x4,
    C0y0, C0y1, C0y2, C0y3, C0y4,
    Fx, Fy,
    // clang-format on
};
constexpr std::size_t kParameters = static_cast<std::size_t>(ParameterId::Fy) + 1;

/// Returns the coefficient `places` places after `first`, the first one of its group.
constexpr ParameterId operator+(ParameterId first, int places) {
    return static_cast<ParameterId>(static_cast<int>(first) + places);
}

/// A coefficient, with its message, its field in the window, its element in a document, and its
/// target.
struct Parameter {
    ParameterId id;
    /// The message that the field sends.
    uint32 code;
    /// The name of the text field, and of the sound_param member.
    std::string_view field;
    /// The group's element in a sound document, and the element inside the group; a parameter
    /// without a group of its own (Fx, Fy) is the element itself and has an empty `element`.
    std::string_view group;
    std::string_view element;
    /// Text of the field before anything was loaded or typed; it denotes the member's initial
    /// value.
    std::string_view initialText;
    /// The member that the text is for: a float, or (a controller's number, 0..127) an int32.
    kits::Shared<float> sound_param::*value = nullptr;
    kits::Shared<int32> sound_param::*controller = nullptr;
};

/// Returns all coefficients, in the order of a sound document: dcxdt, dcydt, ax, ay, cx0, cy0, fx,
/// fy.
std::span<const Parameter, kParameters> Parameters();
inline const Parameter& ParameterOf(ParameterId id) {
    return Parameters()[static_cast<std::size_t>(id)];
}

/// Returns the rows of one group, in order; empty for an unknown name.
std::span<const Parameter> ParametersOf(std::string_view group);

/// One of the four envelopes: its member of sound_param and its range of values.
struct EnvelopePlace {
    std::string_view name;
    /// The group whose element "envdata" holds its points.
    std::string_view group;
    float minimum;
    float maximum;
    Envelope* sound_param::*target;
};

/// Returns the places of EnvCx, EnvCy, EnvAx and EnvAy, which is also the order of a voice's levels
/// at note-off.
VEXA_REALTIME std::span<const EnvelopePlace, 4> EnvelopePlaces();

/// The seconds that an envelope covers: two thirds while the key is down, one third after.
constexpr float kEnvelopeTimeRange = 10.0F;

} // namespace vexa
