// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/ParameterTable.h"

#include <algorithm>

namespace vexa {

namespace {

using Param = sound_param;
using Id = ParameterId;

// id, message, field, group, element, initial text, float target, controller target
constexpr Parameter kParameterRows[] = {
    {Id::Cx0, FourCC("Cx0_"), "Cx0", "dcxdt", "env", "1", &Param::Cx0},
    {Id::Cx1, FourCC("Cx1_"), "Cx1", "dcxdt", "vel", "0", &Param::Cx1},
    {Id::Cx2, FourCC("Cx2_"), "Cx2", "dcxdt", "key", "0", &Param::Cx2},
    {Id::Cx3, FourCC("Cx3_"), "Cx3", "dcxdt", "ctl", "0", &Param::Cx3},
    {Id::Cx4, FourCC("Cx4_"), "Cx4", "dcxdt", "ctlnum", "0", nullptr, &Param::Cx4},

    {Id::Cy0, FourCC("Cy0_"), "Cy0", "dcydt", "env", "1", &Param::Cy0},
    {Id::Cy1, FourCC("Cy1_"), "Cy1", "dcydt", "vel", "0", &Param::Cy1},
    {Id::Cy2, FourCC("Cy2_"), "Cy2", "dcydt", "key", "0", &Param::Cy2},
    {Id::Cy3, FourCC("Cy3_"), "Cy3", "dcydt", "ctl", "0", &Param::Cy3},
    {Id::Cy4, FourCC("Cy4_"), "Cy4", "dcydt", "ctlnum", "0", nullptr, &Param::Cy4},

    {Id::Ax0, FourCC("Ax0_"), "Ax0", "ax", "env", "1", &Param::Ax0},
    {Id::Ax1, FourCC("Ax1_"), "Ax1", "ax", "vel", "0", &Param::Ax1},
    {Id::Ax2, FourCC("Ax2_"), "Ax2", "ax", "key", "0", &Param::Ax2},
    {Id::Ax3, FourCC("Ax3_"), "Ax3", "ax", "ctl", "0", &Param::Ax3},
    {Id::Ax4, FourCC("Ax4_"), "Ax4", "ax", "ctlnum", "0", nullptr, &Param::Ax4},

    {Id::Ay0, FourCC("Ay0_"), "Ay0", "ay", "env", "1", &Param::Ay0},
    {Id::Ay1, FourCC("Ay1_"), "Ay1", "ay", "vel", "0", &Param::Ay1},
    {Id::Ay2, FourCC("Ay2_"), "Ay2", "ay", "key", "0", &Param::Ay2},
    {Id::Ay3, FourCC("Ay3_"), "Ay3", "ay", "ctl", "0", &Param::Ay3},
    {Id::Ay4, FourCC("Ay4_"), "Ay4", "ay", "ctlnum", "0", nullptr, &Param::Ay4},

    {Id::C0x0, FourCC("C0x0"), "C0x0", "cx0", "one", "0", &Param::C0x0},
    {Id::C0x1, FourCC("C0x1"), "C0x1", "cx0", "vel", "0", &Param::C0x1},
    {Id::C0x2, FourCC("C0x2"), "C0x2", "cx0", "key", "0", &Param::C0x2},
    {Id::C0x3, FourCC("C0x3"), "C0x3", "cx0", "ctl", "0", &Param::C0x3},
    {Id::C0x4, FourCC("C0x4"), "C0x4", "cx0", "ctlnum", "0", nullptr, &Param::C0x4},

    {Id::C0y0, FourCC("C0y0"), "C0y0", "cy0", "one", "0", &Param::C0y0},
    {Id::C0y1, FourCC("C0y1"), "C0y1", "cy0", "vel", "0", &Param::C0y1},
    {Id::C0y2, FourCC("C0y2"), "C0y2", "cy0", "key", "0", &Param::C0y2},
    {Id::C0y3, FourCC("C0y3"), "C0y3", "cy0", "ctl", "0", &Param::C0y3},
    {Id::C0y4, FourCC("C0y4"), "C0y4", "cy0", "ctlnum", "0", nullptr, &Param::C0y4},

    {Id::Fx, FourCC("FRQx"), "Fx", "fx", "", "1", &Param::Fx},
    {Id::Fy, FourCC("FRQy"), "Fy", "fy", "", "1", &Param::Fy},
};

consteval bool IdsAreInOrder() {
    for (std::size_t i = 0; i < std::size(kParameterRows); i++) {
        if (kParameterRows[i].id != static_cast<Id>(i))
            return false;
    }
    return std::size(kParameterRows) == kParameters;
}
static_assert(IdsAreInOrder());

constexpr EnvelopePlace kEnvelopes[4] = {
    {"EnvCx", "dcxdt", -1, 1, &Param::EnvCx},
    {"EnvCy", "dcydt", -1, 1, &Param::EnvCy},
    {"EnvAx", "ax", 0, 1, &Param::EnvAx},
    {"EnvAy", "ay", 0, 1, &Param::EnvAy},
};

} // namespace

std::span<const Parameter, kParameters> Parameters() {
    return kParameterRows;
}

std::span<const Parameter> ParametersOf(std::string_view group) {
    const auto inGroup = [group](const Parameter& row) { return row.group == group; };
    const auto* first = std::find_if(std::begin(kParameterRows), std::end(kParameterRows), inGroup);
    const auto* last = std::find_if_not(first, std::end(kParameterRows), inGroup);
    return {first, last};
}

std::span<const EnvelopePlace, 4> EnvelopePlaces() {
    return kEnvelopes;
}

} // namespace vexa
