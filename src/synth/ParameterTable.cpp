#include "synth/ParameterTable.h"

#include <algorithm>

namespace vexa {

namespace {

using P = sound_param;

// field, group, element, initial text, message, float target, controller target
constexpr Parameter kParameters[] = {
    {"Cx0", "dcxdt", "env", "1", FourCC("Cx0_"), &P::Cx0},
    {"Cx1", "dcxdt", "vel", "0", FourCC("Cx1_"), &P::Cx1},
    {"Cx2", "dcxdt", "key", "0", FourCC("Cx2_"), &P::Cx2},
    {"Cx3", "dcxdt", "ctl", "0", FourCC("Cx3_"), &P::Cx3},
    {"Cx4", "dcxdt", "ctlnum", "0", FourCC("Cx4_"), nullptr, &P::Cx4},

    {"Cy0", "dcydt", "env", "1", FourCC("Cy0_"), &P::Cy0},
    {"Cy1", "dcydt", "vel", "0", FourCC("Cy1_"), &P::Cy1},
    {"Cy2", "dcydt", "key", "0", FourCC("Cy2_"), &P::Cy2},
    {"Cy3", "dcydt", "ctl", "0", FourCC("Cy3_"), &P::Cy3},
    {"Cy4", "dcydt", "ctlnum", "0", FourCC("Cy4_"), nullptr, &P::Cy4},

    {"Ax0", "ax", "env", "1", FourCC("Ax0_"), &P::Ax0},
    {"Ax1", "ax", "vel", "0", FourCC("Ax1_"), &P::Ax1},
    {"Ax2", "ax", "key", "0", FourCC("Ax2_"), &P::Ax2},
    {"Ax3", "ax", "ctl", "0", FourCC("Ax3_"), &P::Ax3},
    {"Ax4", "ax", "ctlnum", "0", FourCC("Ax4_"), nullptr, &P::Ax4},

    {"Ay0", "ay", "env", "1", FourCC("Ay0_"), &P::Ay0},
    {"Ay1", "ay", "vel", "0", FourCC("Ay1_"), &P::Ay1},
    {"Ay2", "ay", "key", "0", FourCC("Ay2_"), &P::Ay2},
    {"Ay3", "ay", "ctl", "0", FourCC("Ay3_"), &P::Ay3},
    {"Ay4", "ay", "ctlnum", "0", FourCC("Ay4_"), nullptr, &P::Ay4},

    {"C0x0", "cx0", "one", "0", FourCC("C0x0"), &P::C0x0},
    {"C0x1", "cx0", "vel", "0", FourCC("C0x1"), &P::C0x1},
    {"C0x2", "cx0", "key", "0", FourCC("C0x2"), &P::C0x2},
    {"C0x3", "cx0", "ctl", "0", FourCC("C0x3"), &P::C0x3},
    {"C0x4", "cx0", "ctlnum", "0", FourCC("C0x4"), nullptr, &P::C0x4},

    {"C0y0", "cy0", "one", "0", FourCC("C0y0"), &P::C0y0},
    {"C0y1", "cy0", "vel", "0", FourCC("C0y1"), &P::C0y1},
    {"C0y2", "cy0", "key", "0", FourCC("C0y2"), &P::C0y2},
    {"C0y3", "cy0", "ctl", "0", FourCC("C0y3"), &P::C0y3},
    {"C0y4", "cy0", "ctlnum", "0", FourCC("C0y4"), nullptr, &P::C0y4},

    {"Fx", "fx", "", "1", FourCC("FRQx"), &P::Fx},
    {"Fy", "fy", "", "1", FourCC("FRQy"), &P::Fy},
};

constexpr EnvelopePlace kEnvelopes[4] = {
    {"EnvCx", "dcxdt", -1, 1, &P::EnvCx},
    {"EnvCy", "dcydt", -1, 1, &P::EnvCy},
    {"EnvAx", "ax", 0, 1, &P::EnvAx},
    {"EnvAy", "ay", 0, 1, &P::EnvAy},
};

} // namespace

std::span<const Parameter> Parameters() {
    return kParameters;
}

std::span<const Parameter> ParametersOf(std::string_view group) {
    const auto inGroup = [group](const Parameter& row) { return row.group == group; };
    const auto* first = std::find_if(std::begin(kParameters), std::end(kParameters), inGroup);
    const auto* last = std::find_if_not(first, std::end(kParameters), inGroup);
    return {first, last};
}

std::span<const EnvelopePlace, 4> EnvelopePlaces() {
    return kEnvelopes;
}

} // namespace vexa
