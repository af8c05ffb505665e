// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/strip/CellGrid.h"

#include "kits/interface/Menu.h"
#include "views/Theme.h"

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

// In pixels.

constexpr float kCellLabelSize = 10;
constexpr float kColumnGap = 8;
constexpr float kBelowLabel = 1;
constexpr float kBetweenRows = 5;

BFont CellFont() {
    BFont font = *be_plain_font();
    font.SetSize(kCellLabelSize);
    return font;
}

float LabelHeight() {
    font_height height;
    CellFont().GetHeight(&height);
    return std::ceil(height.ascent + height.descent);
}

float RowPitch() {
    return LabelHeight() + kBelowLabel + BMenuField::PreferredHeight() + 1 + kBetweenRows;
}

} // namespace

CellGrid::CellGrid(const char* name, std::size_t columns)
    : BView({0, 0, 0, 0}, name, B_FOLLOW_NONE, B_WILL_DRAW | B_FRAME_EVENTS), columns(columns) {
    const BFont font = CellFont();
    SetFont(&font);
    SetViewColor(Colors().panel);
}

float CellGrid::HeightOf(std::size_t rows) {
    return static_cast<float>(rows) * RowPitch() - kBetweenRows - 1;
}

void CellGrid::AddCell(const std::string& label, BView* control) {
    cells.push_back({label, control, false, {}});
    AddChild(control);
}

void CellGrid::SetQuiet(std::size_t cell, bool quiet) {
    if (cells[cell].quiet == quiet)
        return;
    cells[cell].quiet = quiet;
    Invalidate();
}

void CellGrid::ColorsChanged() {
    SetViewColor(Colors().panel);
}

void CellGrid::FrameResized(float width, float) {
    const float pitch = (width + 1 + kColumnGap) / static_cast<float>(columns);
    font_height height;
    GetFontHeight(&height);
    for (std::size_t i = 0; i < cells.size(); i++) {
        const float left = std::round(pitch * static_cast<float>(i % columns));
        const float right =
            std::round(pitch * static_cast<float>(i % columns + 1)) - kColumnGap - 1;
        const float top = static_cast<float>(i / columns) * RowPitch();
        BView& control = *cells[i].control;
        const float room = BMenuField::PreferredHeight() - control.Bounds().Height();
        cells[i].baseline = {left + 1, top + std::round(height.ascent)};
        control.MoveTo(left, top + LabelHeight() + kBelowLabel + std::floor(room / 2));
        control.ResizeTo(right - left, control.Bounds().Height());
    }
    Invalidate();
}

void CellGrid::Draw(BRect) {
    for (const Cell& cell : cells) {
        SetHighColor(cell.quiet ? Colors().quietText : Colors().text);
        DrawString(cell.label, cell.baseline);
    }
}

} // namespace vexa
