// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FormulaPanel.h"

#include "kits/interface/Control.h"
#include "kits/interface/View.h"
#include "views/Theme.h"

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

constexpr float kEnvelopeTops[4] = {10, 112, 218, 320};

/// Left edges of the plane view's column and of the formulas'.
constexpr float kPlaneColumn = 10;
constexpr float kFormulaColumn = 320;

// Room for a field, in pixels.
constexpr float kCoefficient = 30;
constexpr float kRatio = 40;
constexpr float kFrequency = 60;

/// Space between lines of a block.
constexpr float kLineSpace = 6;

// Baselines, counted from the font's ascent.
constexpr float kOrbitTop = 422;
constexpr float kWidthTop = 345;
constexpr float kLinkTop = 348;
/// The pixels from the link row down to the sample's frequency.
constexpr float kFrequencyBelowLink = 51;

} // namespace

std::span<const float, 4> EnvelopeTops() {
    return kEnvelopeTops;
}

FormulaPanel::FormulaPanel(const BFont& base) : font(base) {
    font.SetFace(B_ITALIC_FACE);
    font.SetSize(12);
    font.GetHeight(&height);
    lineHeight = height.ascent + height.descent + height.leading;
    pitch = lineHeight + kLineSpace;

    using Id = ParameterId;
    PutDriftBlock('x', Id::Cx0, 0);
    PutDriftBlock('y', Id::Cy0, 1);
    PutRadiusBlock('x', Id::Ax0, 2);
    PutRadiusBlock('y', Id::Ay0, 3);
    PutOrbitLine('x', Id::Fx, Id::C0x0, height.ascent + kOrbitTop);
    PutOrbitLine('y', Id::Fy, Id::C0y0, height.ascent + kOrbitTop + pitch);
    PutPlaneControls();
}

void FormulaPanel::Put(std::string_view text, float x, float baseline,
                       std::optional<std::size_t> envelope) {
    texts.push_back({std::string(text), {x, baseline}, envelope});
    right = std::max(right, x + Width(text));
}

void FormulaPanel::PutGap(FieldId field, float x, float baseline, float width) {
    gaps.push_back({field, {x, baseline}, width});
    right = std::max(right, x + width);
}

/// dCx / dt = [Cx0] * Env + [Cx1] * Vel + [Cx2] * Key + [Cx3] * Ctl [Cx4]
void FormulaPanel::PutDriftBlock(char axis, ParameterId first, std::size_t envelope) {
    const std::string name = std::string("dC") + axis;
    const float top = height.ascent + kEnvelopeTops[envelope];
    const float middle = top + lineHeight / 2;
    const float end = kFormulaColumn + Width(name);
    Put(name, kFormulaColumn, top);
    bars.push_back({{kFormulaColumn, top + 2}, {end, top + 2}});
    Put("dt", kFormulaColumn, top + lineHeight);
    Put(" = ", end, middle);
    const float field = end + Width(" = ");
    PutGap(first, field, middle, kCoefficient);
    Put(" * ", field + kCoefficient, middle);
    Put("Env", field + kCoefficient + Width(" * "), middle, envelope);
    PutSum(first, kEnvelopeTops[envelope], false);
}

/// Ax = Env * ([Ax0] + [Ax1] * Vel + [Ax2] * Key + [Ax3] * Ctl [Ax4])
void FormulaPanel::PutRadiusBlock(char axis, ParameterId first, std::size_t envelope) {
    const std::string name = std::string("A") + axis + " = ";
    const float middle = height.ascent + kEnvelopeTops[envelope] + lineHeight / 2;
    const float env = kFormulaColumn + Width(name);
    const float open = env + Width("Env");
    Put(name, kFormulaColumn, middle);
    Put("Env", env, middle, envelope);
    Put(" * (", open, middle);
    PutGap(first, open + Width(" * ("), middle, kCoefficient);
    PutSum(first, kEnvelopeTops[envelope], true);
}

/// The lines of a block below its first: + [1] * Vel, + [2] * Key, + [3] * Ctl [4].
void FormulaPanel::PutSum(ParameterId first, float top, bool closed) {
    constexpr std::string_view kFactors[] = {"* Vel", "* Key", "* Ctl"};
    const float field = kFormulaColumn + Width(" + ");
    const float factor = field + kCoefficient;
    float baseline = height.ascent + top - 7 + pitch;
    for (int i = 0; i < 3; i++) {
        baseline += pitch;
        Put("+", kFormulaColumn, baseline);
        PutGap(first + (i + 1), field, baseline, kCoefficient);
        Put(kFactors[i], factor, baseline);
    }
    PutGap(first + 4, factor + Width("* Ctl "), baseline, kCoefficient);
    if (closed)
        Put(")", factor + Width(" * Ctl ") + kCoefficient, baseline);
}

/// x(t) = Cx(t) + Ax(t) * cos(2*pi* [Fx] *f*t)  Cx(0) = [C0x0] + [C0x1] * Vel + ...
/// Both lines are placed by the widths of the one in x, so that their columns align.
void FormulaPanel::PutOrbitLine(char axis, ParameterId ratio, ParameterId start, float baseline) {
    const std::string orbit = std::string(1, axis) + "(t) = C" + axis + "(t) + A" + axis +
                              "(t) * " + (axis == 'x' ? "cos" : "sin") + "(2*pi*";
    const std::string p1 = "x(t) = Cx(t) + Ax(t) * cos(2*pi* ";
    const std::string p2 = p1 + "*f*t)  ";
    const std::string p3 = p2 + "Cx(0) =";
    const std::string p4 = p3 + "  + ";
    const std::string p5 = p4 + " * Vel + ";
    const std::string p6 = p5 + " * Key + ";
    Put(orbit, kFormulaColumn, baseline);
    PutGap(ratio, kFormulaColumn + Width(p1), baseline, kRatio);
    Put("*f*t)", Width(p1) + 360, baseline);
    Put(std::string("C") + axis + "(0) = ", Width(p2) + 380, baseline);
    PutGap(start, Width(p2) + 380 + Width("Cx(0) = "), baseline, kCoefficient);
    Put(" +", Width(p3) + 410, baseline);
    PutGap(start + 1, Width(p3) + 410 + Width(" + "), baseline, kCoefficient);
    Put(" * Vel +", Width(p4) + 440, baseline);
    PutGap(start + 2, Width(p4) + 440 + Width(" * Vel + "), baseline, kCoefficient);
    Put(" * Key +", Width(p5) + 470, baseline);
    PutGap(start + 3, Width(p5) + 470 + Width(" * Key + "), baseline, kCoefficient);
    Put(" * Ctl", Width(p6) + 500, baseline);
    PutGap(start + 4, Width(p6) + 500 + Width(" * Ctl "), baseline, kCoefficient);
}

/// displaywidth = [Sc], link ([LFx], [LFy]) to ([LSx], [LSy]), frequency: [SFreq] Hz
void FormulaPanel::PutPlaneControls() {
    const float width = height.ascent + kWidthTop;
    link = height.ascent + pitch + kLinkTop;
    const float frequency = link + kFrequencyBelowLink;
    Put("displaywidth =", kPlaneColumn, width);
    widthEnd = {kPlaneColumn + Width("displaywidth ="), width};
    // Each text, and the field behind it.
    constexpr std::string_view kPieces[] = {"link (", ",", ") to (", ",", ")"};
    constexpr FunctionField kFields[] = {FunctionField::LinkFunctionX, FunctionField::LinkFunctionY,
                                         FunctionField::LinkScreenX, FunctionField::LinkScreenY};
    std::string before;
    for (std::size_t i = 0; i < std::size(kPieces); i++) {
        const float x = kPlaneColumn + kCoefficient * float(i);
        Put(kPieces[i], x + Width(before), width + pitch + 3);
        before += kPieces[i];
        if (i < std::size(kFields))
            PutGap(kFields[i], x + Width(before), link, kCoefficient);
        before += ' ';
    }
    const float field = kPlaneColumn + Width("frequency: ");
    Put("frequency: ", kPlaneColumn, frequency);
    PutGap(FunctionField::Frequency, field, frequency, kFrequency);
    Put("Hz", field + kFrequency, frequency);
}

const FormulaPanel::Gap* FormulaPanel::FindGap(FieldId field) const {
    const auto gap = std::find_if(gaps.begin(), gaps.end(),
                                  [&](const Gap& candidate) { return candidate.field == field; });
    return gap == gaps.end() ? nullptr : &*gap;
}

float FormulaPanel::ClearOf(BPoint baseline) const {
    float clear = baseline.x;
    for (const Text& text : texts) {
        if (text.baseline.y == baseline.y && text.baseline.x < baseline.x)
            clear = std::max(clear, text.baseline.x + font.InkWidth(text.text));
    }
    return std::ceil(clear) + 1;
}

BRect FormulaPanel::FieldFrame(FieldId field) const {
    const Gap* gap = FindGap(field);
    if (!gap)
        return {};
    const float left = ClearOf(gap->baseline);
    const float last = std::floor(gap->baseline.x + gap->width) - 1;
    const float top = std::round(gap->baseline.y - BTextControl::BaselineOffset());
    return {left, top, last, top + BTextControl::PreferredHeight()};
}

void FormulaPanel::Draw(BView& view) const {
    view.SetFont(&font, B_FONT_ALL);
    view.SetLowColor(view.ViewColor());
    for (const Text& piece : texts) {
        view.SetHighColor(piece.envelope ? Colors().envelopes[*piece.envelope]
                                         : Colors().quietText);
        view.DrawString(piece.text, piece.baseline);
    }
    view.SetHighColor(Colors().quietText);
    for (const Bar& bar : bars)
        view.StrokeLine(bar.from, bar.to);
}

} // namespace vexa
