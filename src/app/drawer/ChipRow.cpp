// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/drawer/ChipRow.h"

#include "views/Theme.h"

#include <cmath>
#include <utility>

namespace vexa {

namespace {

// In pixels.

constexpr float kChipFontSize = 11;
constexpr float kChipHeight = 18;
constexpr float kChipGap = 4;
constexpr float kChipInset = 7;

} // namespace

ChipRow::ChipRow(BRect frame, const char* name, std::vector<std::string> words,
                 std::function<void(std::size_t index)> choose)
    : BView(frame, name, B_FOLLOW_LEFT_RIGHT | B_FOLLOW_TOP, B_WILL_DRAW | B_NAVIGABLE),
      words(std::move(words)),
      choose(std::move(choose)) {
    BFont font = *be_plain_font();
    font.SetSize(kChipFontSize);
    SetFont(&font);
    Place();
}

void ChipRow::Place() {
    float x = 0;
    float y = 0;
    for (const std::string& word : words) {
        const float width = std::ceil(StringWidth(word)) + 2 * kChipInset;
        if (x > 0 && x + width > Bounds().right) {
            x = 0;
            y += kChipHeight + kChipGap;
        }
        places.push_back({x, y, x + width, y + kChipHeight});
        x += width + kChipGap;
    }
}

float ChipRow::PreferredHeight() const {
    return places.empty() ? 0 : places.back().bottom;
}

void ChipRow::Choose(std::size_t index) {
    if (index >= words.size() || index == chosen)
        return;
    chosen = index;
    Invalidate();
    DescriptionChanged();
    choose(index);
}

void ChipRow::MouseDown(BPoint where) {
    for (std::size_t i = 0; i < places.size(); i++) {
        if (places[i].Contains(where))
            Choose(i);
    }
}

bool ChipRow::KeyDown(const kits::KeyPress& press) {
    if (press.modifiers != 0)
        return false;
    if (press.key == kits::Key::Left)
        Choose(chosen - (chosen > 0));
    else if (press.key == kits::Key::Right)
        Choose(chosen + 1);
    else
        return false;
    return true;
}

void ChipRow::Draw(BRect update) {
    const Theme& colors = Colors();
    SetHighColor(colors.list);
    FillRect(update);
    font_height height;
    GetFontHeight(&height);
    for (std::size_t i = 0; i < words.size(); i++) {
        const BRect& place = places[i];
        SetHighColor(i == chosen ? colors.controls.selection : colors.rowHover);
        FillRoundRect(place, kChipHeight / 2);
        if (i == chosen && IsFocus()) {
            SetHighColor(colors.text);
            StrokeRoundRect(place, kChipHeight / 2);
        }
        SetHighColor(i == chosen ? colors.controls.selectedText : colors.text);
        const float baseline =
            std::floor((place.top + place.bottom + height.ascent - height.descent) / 2);
        DrawString(words[i], {place.left + kChipInset, baseline});
    }
}

kits::AccessibleThing ChipRow::Describe() const {
    kits::AccessibleThing thing;
    thing.role = kits::AccessibleRole::List;
    thing.description = words[chosen];
    return thing;
}

kits::AccessibleThing ChipRow::DescribePart(std::size_t index) const {
    kits::AccessibleThing thing;
    thing.role = kits::AccessibleRole::ListItem;
    thing.name = words[index];
    thing.frame = places[index];
    thing.chosen = index == chosen;
    thing.action = "Choose";
    return thing;
}

void ChipRow::Activate(std::optional<std::size_t> part) {
    if (part)
        Choose(*part);
}

} // namespace vexa
