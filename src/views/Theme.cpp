// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/Theme.h"

namespace vexa {

namespace {

constexpr kits::ControlColors kDarkControls = {
    .panel = {43, 45, 50},
    .text = {230, 230, 232},
    .faintText = {130, 132, 138},
    .field = {28, 29, 33},
    .disabledField = {43, 45, 50},
    .disabledFrame = {110, 113, 122},
    .wrongField = {70, 30, 30},
    .wrongFrame = {230, 96, 96},
    .fieldFrame = {110, 113, 122},
    .buttonTop = {66, 69, 76},
    .buttonBottom = {54, 57, 63},
    .buttonHover = {76, 80, 88},
    .buttonPressed = {44, 62, 84},
    .buttonFrame = {110, 113, 122},
    .running = {255, 110, 100},
    .runningText = {24, 24, 24},
    .hoverFrame = {96, 160, 230},
    .defaultFrame = {96, 160, 230},
    .faintButton = {130, 132, 138},
    .arrow = {230, 230, 232},
    .accent = {96, 160, 230},
    .selection = {42, 96, 158},
    .selectedText = {255, 255, 255},
    .tip = {62, 62, 52},
    .tipText = {235, 235, 225},
    .sheet = {43, 45, 50},
    .list = {28, 29, 33},
    .otherRow = {35, 37, 41},
    .header = {54, 57, 63},
    .headerLine = {86, 89, 97},
};

constexpr Theme kClassic = {
    .panel = {204, 204, 204},
    .editor = {180, 180, 180},
    .text = {24, 24, 24},
    .quietText = {80, 80, 80},
    .dimText = {150, 150, 150},
    .edge = {180, 180, 180},
    .accent = {42, 96, 158},
    .list = {226, 226, 226},
    .rowHover = {214, 218, 226},
    .rowChosen = {196, 206, 232},
    .star = {150, 100, 0},
    .barText = {230, 230, 230},
    .barQuietText = {180, 186, 200},
    .good = {110, 210, 120},
    .warning = {240, 190, 80},
    .bad = {255, 110, 100},
    .knob = {246, 246, 246},
    .knobEdge = {110, 110, 110},
    .whiteKey = {252, 252, 252},
    .blackKey = {32, 32, 34},
    .soundingKey = {150, 220, 160},
    .soundingText = {24, 24, 24},
    .scope = {16, 16, 18},
    .scopeLine = {80, 230, 110},
    .envelopes = {{128, 0, 0}, {0, 0, 128}, {192, 64, 64}, {64, 64, 192}},
    .controls = {},
};

constexpr Theme Light() {
    Theme theme = kClassic;
    theme.edge = {168, 168, 168};
    theme.quietText = {64, 64, 64};
    theme.envelopes[2] = {160, 36, 36};
    theme.envelopes[3] = {44, 44, 176};
    return theme;
}

constexpr Theme kLight = Light();

constexpr Theme kDark = {
    .panel = {43, 45, 50},
    .editor = {30, 31, 35},
    .text = {230, 230, 232},
    .quietText = {176, 178, 184},
    .dimText = {118, 121, 128},
    .edge = {70, 73, 80},
    .accent = {96, 160, 230},
    .list = {36, 38, 42},
    .rowHover = {52, 56, 64},
    .rowChosen = {44, 66, 98},
    .star = {240, 190, 80},
    .barText = {230, 230, 230},
    .barQuietText = {180, 186, 200},
    .good = {110, 210, 120},
    .warning = {240, 190, 80},
    .bad = {255, 110, 100},
    .knob = {66, 69, 76},
    .knobEdge = {150, 154, 164},
    .whiteKey = {214, 214, 216},
    .blackKey = {20, 20, 22},
    .soundingKey = {110, 200, 124},
    .soundingText = {16, 20, 16},
    .scope = {16, 16, 18},
    .scopeLine = {80, 230, 110},
    .envelopes = {{240, 110, 110}, {120, 150, 255}, {255, 150, 140}, {150, 176, 255}},
    .controls = kDarkControls,
};

const Theme& SetOf(ColorSet set) {
    switch (set) {
    case ColorSet::Classic:
        return kClassic;
    case ColorSet::Dark:
        return kDark;
    case ColorSet::Light:
        break;
    }
    return kLight;
}

ColorSet chosen = ColorSet::Light;

} // namespace

const Theme& Colors() {
    return SetOf(chosen);
}

ColorSet ChosenColors() {
    return chosen;
}

void ChooseColors(ColorSet next) {
    chosen = next;
    kits::SetControlColors(Colors().controls);
}

} // namespace vexa
