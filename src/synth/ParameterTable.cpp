#include "synth/ParameterTable.h"

#include <algorithm>

namespace vexa {

namespace {

using P = sound_param;
using Id = ParameterId;

// id, field, group, element, initial text, message, float target, controller target
constexpr Parameter kRows[] = {
    {Id::Cx0, "Cx0", "dcxdt", "env", "1", FourCC("Cx0_"), &P::Cx0},
    {Id::Cx1, "Cx1", "dcxdt", "vel", "0", FourCC("Cx1_"), &P::Cx1},
    {Id::Cx2, "Cx2", "dcxdt", "key", "0", FourCC("Cx2_"), &P::Cx2},
    {Id::Cx3, "Cx3", "dcxdt", "ctl", "0", FourCC("Cx3_"), &P::Cx3},
    {Id::Cx4, "Cx4", "dcxdt", "ctlnum", "0", FourCC("Cx4_"), nullptr, &P::Cx4},

    {Id::Cy0, "Cy0", "dcydt", "env", "1", FourCC("Cy0_"), &P::Cy0},
    {Id::Cy1, "Cy1", "dcydt", "vel", "0", FourCC("Cy1_"), &P::Cy1},
    {Id::Cy2, "Cy2", "dcydt", "key", "0", FourCC("Cy2_"), &P::Cy2},
    {Id::Cy3, "Cy3", "dcydt", "ctl", "0", FourCC("Cy3_"), &P::Cy3},
    {Id::Cy4, "Cy4", "dcydt", "ctlnum", "0", FourCC("Cy4_"), nullptr, &P::Cy4},

    {Id::Ax0, "Ax0", "ax", "env", "1", FourCC("Ax0_"), &P::Ax0},
    {Id::Ax1, "Ax1", "ax", "vel", "0", FourCC("Ax1_"), &P::Ax1},
    {Id::Ax2, "Ax2", "ax", "key", "0", FourCC("Ax2_"), &P::Ax2},
    {Id::Ax3, "Ax3", "ax", "ctl", "0", FourCC("Ax3_"), &P::Ax3},
    {Id::Ax4, "Ax4", "ax", "ctlnum", "0", FourCC("Ax4_"), nullptr, &P::Ax4},

    {Id::Ay0, "Ay0", "ay", "env", "1", FourCC("Ay0_"), &P::Ay0},
    {Id::Ay1, "Ay1", "ay", "vel", "0", FourCC("Ay1_"), &P::Ay1},
    {Id::Ay2, "Ay2", "ay", "key", "0", FourCC("Ay2_"), &P::Ay2},
    {Id::Ay3, "Ay3", "ay", "ctl", "0", FourCC("Ay3_"), &P::Ay3},
    {Id::Ay4, "Ay4", "ay", "ctlnum", "0", FourCC("Ay4_"), nullptr, &P::Ay4},

    {Id::C0x0, "C0x0", "cx0", "one", "0", FourCC("C0x0"), &P::C0x0},
    {Id::C0x1, "C0x1", "cx0", "vel", "0", FourCC("C0x1"), &P::C0x1},
    {Id::C0x2, "C0x2", "cx0", "key", "0", FourCC("C0x2"), &P::C0x2},
    {Id::C0x3, "C0x3", "cx0", "ctl", "0", FourCC("C0x3"), &P::C0x3},
    {Id::C0x4, "C0x4", "cx0", "ctlnum", "0", FourCC("C0x4"), nullptr, &P::C0x4},

    {Id::C0y0, "C0y0", "cy0", "one", "0", FourCC("C0y0"), &P::C0y0},
    {Id::C0y1, "C0y1", "cy0", "vel", "0", FourCC("C0y1"), &P::C0y1},
    {Id::C0y2, "C0y2", "cy0", "key", "0", FourCC("C0y2"), &P::C0y2},
    {Id::C0y3, "C0y3", "cy0", "ctl", "0", FourCC("C0y3"), &P::C0y3},
    {Id::C0y4, "C0y4", "cy0", "ctlnum", "0", FourCC("C0y4"), nullptr, &P::C0y4},

    {Id::Fx, "Fx", "fx", "", "1", FourCC("FRQx"), &P::Fx},
    {Id::Fy, "Fy", "fy", "", "1", FourCC("FRQy"), &P::Fy},
};

consteval bool IdsAreInOrder() {
    for (std::size_t i = 0; i < std::size(kRows); i++) {
        if (kRows[i].id != static_cast<Id>(i))
            return false;
    }
    return std::size(kRows) == kParameters;
}
static_assert(IdsAreInOrder());

constexpr EnvelopePlace kEnvelopes[4] = {
    {"EnvCx", "dcxdt", -1, 1, &P::EnvCx},
    {"EnvCy", "dcydt", -1, 1, &P::EnvCy},
    {"EnvAx", "ax", 0, 1, &P::EnvAx},
    {"EnvAy", "ay", 0, 1, &P::EnvAy},
};

} // namespace

std::span<const Parameter, kParameters> Parameters() {
    return kRows;
}

std::span<const Parameter> ParametersOf(std::string_view group) {
    const auto inGroup = [group](const Parameter& row) { return row.group == group; };
    const auto* first = std::find_if(std::begin(kRows), std::end(kRows), inGroup);
    const auto* last = std::find_if_not(first, std::end(kRows), inGroup);
    return {first, last};
}

std::span<const EnvelopePlace, 4> EnvelopePlaces() {
    return kEnvelopes;
}

} // namespace vexa
