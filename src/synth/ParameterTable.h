// One row per coefficient of a sound: all that the program knows about it by name.
#pragma once

#include "synth/SoundParam.h"

#include <span>
#include <string_view>

namespace vexa {

/// A coefficient: its field in the window, its message, its element in a document, its target.
struct Parameter {
    /// Name of the text field, and of the sound_param member.
    std::string_view field;
    /// The group's element in a sound document, and the element inside the group; a parameter
    /// without a group of its own (Fx, Fy) is the element itself and has an empty `element`.
    std::string_view group;
    std::string_view element;
    /// Text of the field before anything was loaded or typed; it means the member's initial value.
    std::string_view initialText;
    /// The message that the field sends.
    uint32 code;
    /// The member that the text is for: a float, or (a controller's number, 0..127) an int32.
    kits::Shared<float> sound_param::*value = nullptr;
    kits::Shared<int32> sound_param::*controller = nullptr;
};

/// All coefficients, in the order of a sound document: dcxdt, dcydt, ax, ay, cx0, cy0, fx, fy.
std::span<const Parameter> Parameters();

/// The rows of one group, in order; empty for an unknown name.
std::span<const Parameter> ParametersOf(std::string_view group);

/// Where each of the four envelopes belongs and what it may hold.
struct EnvelopePlace {
    std::string_view name;
    /// The group whose element "envdata" holds its points.
    std::string_view group;
    float minimum;
    float maximum;
    Envelope* sound_param::*target;
};

/// EnvCx, EnvCy, EnvAx, EnvAy: also the order of a voice's levels at note-off.
std::span<const EnvelopePlace, 4> EnvelopePlaces();

/// Seconds that an envelope covers: two thirds while the key is down, one third after.
constexpr float kEnvelopeTimeRange = 10.0F;

} // namespace vexa
