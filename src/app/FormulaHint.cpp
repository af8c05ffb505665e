// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FormulaHint.h"

#include "views/Theme.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace vexa {

namespace {

constexpr float kHintFontSize = 11;
constexpr float kHintMargin = 5;
/// The height in pixel rows of the mark, a triangle that points up.
constexpr int kMarkRows = 6;

} // namespace

FormulaHint::FormulaHint(float left, float top, float right)
    : BView({left, top, right, top}, "fault", B_FOLLOW_LEFT | B_FOLLOW_TOP, B_WILL_DRAW) {
    BFont small = *be_plain_font();
    small.SetSize(kHintFontSize);
    SetFont(&small);
    GetFontHeight(&height);
    SetViewColor(Colors().controls.tip);
    Hide();
}

void FormulaHint::ColorsChanged() {
    SetViewColor(Colors().controls.tip);
}

/// Breaks the line at blanks if it is too wide.
void FormulaHint::Wrap(const std::string& line) {
    const float room = Bounds().Width() - 2 * kHintMargin;
    std::istringstream words(line);
    std::string part;
    for (std::string word; words >> word;) {
        std::string longer = part;
        longer.append(part.empty() ? "" : " ").append(word);
        if (!part.empty() && StringWidth(longer) > room) {
            lines.push_back(part);
            part = word;
        } else {
            part = longer;
        }
    }
    lines.push_back(part);
}

void FormulaHint::Explain(const std::string& reason, std::optional<float> x) {
    lines.clear();
    std::istringstream whole(reason);
    for (std::string line; std::getline(whole, line);)
        Wrap(line);
    MoveMark(x);
    const float pitch = std::ceil(height.ascent + height.descent);
    ResizeTo(Bounds().Width(), kMarkRows + pitch * float(lines.size()) + kHintMargin);
    if (IsHidden())
        Show();
    Invalidate();
}

void FormulaHint::MoveMark(std::optional<float> x) {
    // A place that is scrolled out of the field is clamped to the hint's ends.
    if (x)
        x = std::clamp(std::round(*x - Frame().left), float(kMarkRows),
                       Bounds().right - float(kMarkRows));
    if (x == mark)
        return;
    mark = x;
    Invalidate();
}

void FormulaHint::Withdraw() {
    if (!IsHidden())
        Hide();
}

void FormulaHint::Draw(BRect) {
    const kits::ControlColors& colors = Colors().controls;
    const BRect edge = Bounds();
    SetHighColor(colors.fieldFrame);
    StrokeLine({edge.left, edge.top}, {edge.right, edge.top});
    StrokeLine({edge.right, edge.top}, {edge.right, edge.bottom});
    StrokeLine({edge.right, edge.bottom}, {edge.left, edge.bottom});
    StrokeLine({edge.left, edge.bottom}, {edge.left, edge.top});
    SetHighColor(colors.wrongFrame);
    for (int row = 0; mark && row < kMarkRows; row++)
        StrokeLine({*mark - float(row), float(row)}, {*mark + float(row), float(row)});
    SetHighColor(colors.tipText);
    float baseline = kMarkRows + std::ceil(height.ascent);
    for (const std::string& line : lines) {
        DrawString(line, {kHintMargin, baseline});
        baseline += std::ceil(height.ascent + height.descent);
    }
}

} // namespace vexa
