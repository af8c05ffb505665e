// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/drawer/SoundListView.h"

#include "views/Theme.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vexa {

namespace {

// In pixels.

constexpr float kRowHeight = 56;
constexpr float kListMargin = 8;
constexpr float kTextLeft = kListMargin + SoundListView::kPictureSize + kListMargin;
constexpr float kStar = 14;
constexpr float kBarWidth = 6;
constexpr float kSmallFont = 11;
constexpr float kNameBaseline = 20;
constexpr float kTagsBaseline = 36;
constexpr float kFaultBaseline = 48;
constexpr float kCorner = 3;

/// The rows that one notch of the wheel scrolls.
constexpr float kWheelRows = 1.5F;

/// Returns the corners of a star that points up.
std::vector<BPoint> Star(BPoint center, float radius) {
    constexpr int kCorners = 10;
    constexpr float kInner = 0.42F;
    std::vector<BPoint> points;
    for (int i = 0; i < kCorners; i++) {
        const float angle = float(i) * 3.14159265F * 2 / kCorners;
        const float r = i % 2 == 0 ? radius : radius * kInner;
        points.push_back({center.x + r * std::sin(angle), center.y - r * std::cos(angle)});
    }
    return points;
}

} // namespace

SoundListView::SoundListView(BRect frame, const Favourites& favourites, Callbacks callbacks)
    : BView(frame, "list of sounds", B_FOLLOW_ALL_SIDES,
            B_WILL_DRAW | B_FRAME_EVENTS | B_NAVIGABLE),
      favourites(favourites),
      callbacks(std::move(callbacks)),
      small(*be_plain_font()) {
    small.SetSize(kSmallFont);
    SetAccessibleName("sounds");
    SetHelp("Click a sound to load it");
}

void SoundListView::SetRows(SoundList next, std::string emptyText) {
    ifEmpty = std::move(emptyText);
    const std::filesystem::path before = cursor < rows.size() ? rows[cursor]->path : loaded;
    const float place = cursor < rows.size() ? RowFrame(cursor).top : 0;
    rows = std::move(next);
    Hover(std::nullopt);
    cursor = 0;
    for (std::size_t i = 0; i < rows.size(); i++) {
        if (rows[i]->path == before) {
            cursor = i;
            scroll += RowFrame(i).top - place;
        }
    }
    ScrollTo(scroll);
    if (pointer)
        Hover(RowAt(*pointer));
    DescriptionChanged();
    Invalidate();
}

void SoundListView::SetLoaded(const std::filesystem::path& path, bool changed) {
    if (path == loaded && changed == loadedChanged)
        return;
    const bool other = path != loaded;
    loaded = path;
    loadedChanged = changed;
    if (const auto row = LoadedRow(); row && other)
        MoveCursor(*row);
    Invalidate();
}

std::optional<std::size_t> SoundListView::LoadedRow() const {
    for (std::size_t i = 0; i < rows.size(); i++) {
        if (rows[i]->path == loaded)
            return i;
    }
    return std::nullopt;
}

void SoundListView::MoveCursor(std::size_t row) {
    if (row >= rows.size())
        return;
    cursor = row;
    const BRect frame = RowFrame(row);
    if (frame.top < 0)
        ScrollTo(scroll + frame.top);
    else if (frame.bottom > Bounds().bottom)
        ScrollTo(scroll + frame.bottom - Bounds().bottom);
    DescriptionChanged();
    Invalidate();
}

std::vector<std::filesystem::path> SoundListView::InSight() const {
    std::vector<std::filesystem::path> paths;
    for (std::size_t i = 0; i < rows.size(); i++) {
        if (RowFrame(i).Intersects(Bounds()))
            paths.push_back(rows[i]->path);
    }
    return paths;
}

BRect SoundListView::RowFrame(std::size_t row) const {
    const float top = float(row) * kRowHeight - scroll;
    return {0, top, Bounds().right - kBarWidth, top + kRowHeight - 1};
}

BRect SoundListView::StarFrame(std::size_t row) const {
    const BRect frame = RowFrame(row);
    const float right = frame.right - kListMargin;
    return {right - kStar, frame.top + kListMargin, right, frame.top + kListMargin + kStar};
}

std::optional<std::size_t> SoundListView::RowAt(BPoint where) const {
    const auto row = static_cast<std::size_t>(std::max(0.0F, (where.y + scroll) / kRowHeight));
    if (row >= rows.size() || !RowFrame(row).Contains(where))
        return std::nullopt;
    return row;
}

float SoundListView::Content() const {
    return float(rows.size()) * kRowHeight;
}

void SoundListView::ScrollTo(float next) {
    const float most = std::max(0.0F, Content() - Bounds().Height() - 1);
    next = std::round(std::clamp(next, 0.0F, most));
    if (next == scroll)
        return;
    scroll = next;
    Invalidate();
}

void SoundListView::Load(std::size_t row) {
    MoveCursor(row);
    // The callback may replace the rows.
    const std::shared_ptr<const SoundEntry> entry = rows[row];
    if (entry->fault.empty())
        callbacks.load(*entry);
}

void SoundListView::MouseDown(BPoint where) {
    const std::optional<std::size_t> row = RowAt(where);
    if (!row)
        return;
    if (HasStar(*row) && StarFrame(*row).InsetByCopy(-4, -4).Contains(where)) {
        callbacks.toggleFavourite(*rows[*row]);
        return;
    }
    // The second press of a double click has no further effect.
    if (Clicks() == 1)
        Load(*row);
}

void SoundListView::MouseMoved(BPoint where, uint32 transit, const BMessage*) {
    pointer = transit == B_EXITED_VIEW ? std::nullopt : std::optional(where);
    Hover(pointer ? RowAt(where) : std::nullopt);
}

void SoundListView::Hover(std::optional<std::size_t> row) {
    if (row == hovered)
        return;
    hovered = row;
    std::string tip;
    if (row) {
        const SoundEntry& entry = *rows[*row];
        tip = entry.fault.empty() ? entry.comment : entry.fault;
        if (entry.fault.empty() && !entry.author.empty())
            tip += (tip.empty() ? "by " : "\nby ") + entry.author;
    }
    SetToolTip(tip.c_str());
    Invalidate();
}

bool SoundListView::WheelMoved(BPoint where, BPoint steps) {
    ScrollTo(scroll - steps.y * kWheelRows * kRowHeight);
    Hover(RowAt(where));
    return true;
}

bool SoundListView::KeyDown(const kits::KeyPress& press) {
    using kits::Key;
    if (press.modifiers & B_CONTROL_KEY && press.character == U'D') {
        if (cursor < rows.size() && HasStar(cursor))
            callbacks.toggleFavourite(*rows[cursor]);
        return true;
    }
    if (press.modifiers & (B_CONTROL_KEY | B_ALT_KEY))
        return false;
    const std::size_t last = rows.empty() ? 0 : rows.size() - 1;
    switch (press.key) {
    case Key::Up:
        MoveCursor(cursor - (cursor > 0));
        return true;
    case Key::Down:
        MoveCursor(std::min(cursor + 1, last));
        return true;
    case Key::Home:
        MoveCursor(0);
        return true;
    case Key::End:
        MoveCursor(last);
        return true;
    case Key::Enter:
        if (cursor < rows.size())
            Load(cursor);
        return true;
    case Key::Character:
        // After a click on a sound the user wants to play it, so the keys are notes, not text.
        if (press.text.empty() || !IsFocusByKeys())
            return false;
        callbacks.type(press.text);
        return true;
    default:
        return false;
    }
}

void SoundListView::FrameResized(float, float) {
    ScrollTo(scroll);
    Invalidate();
}

void SoundListView::Draw(BRect update) {
    SetHighColor(Colors().list);
    FillRect(update);
    for (std::size_t i = 0; i < rows.size(); i++) {
        if (RowFrame(i).Intersects(update))
            DrawRow(i);
    }
    if (rows.empty()) {
        SetHighColor(Colors().quietText);
        SetFont(be_plain_font());
        DrawString(ifEmpty, {kListMargin, kNameBaseline});
    }
    DrawScrollBar();
    if (IsFocus()) {
        SetHighColor(Colors().accent);
        StrokeRoundRect(Bounds(), 0);
    }
}

void SoundListView::DrawRow(std::size_t row) {
    const Theme& colors = Colors();
    const SoundEntry& entry = *rows[row];
    const BRect frame = RowFrame(row);
    const bool plays = entry.path == loaded;
    if (plays || hovered == row) {
        SetHighColor(plays ? colors.rowChosen : colors.rowHover);
        FillRoundRect(frame.InsetByCopy(2, 1), kCorner);
    }
    if (IsFocus() && row == cursor) {
        SetHighColor(colors.accent);
        StrokeRoundRect(frame.InsetByCopy(2, 1), kCorner);
    }
    const float top = std::floor(frame.top + (kRowHeight - kPictureSize) / 2);
    const BRect picture = {kListMargin, top, kListMargin + kPictureSize - 1,
                           top + kPictureSize - 1};
    if (entry.picture) {
        DrawBitmap(entry.picture.get(), picture);
    } else {
        SetHighColor(colors.edge);
        FillRect(picture);
    }
    const bool broken = !entry.fault.empty();
    const float right = frame.right - kListMargin;
    SetFont(be_plain_font());
    SetHighColor(broken ? colors.dimText : colors.text);
    const std::string name = plays && loadedChanged ? entry.name + " •" : entry.name;
    DrawString(CutToFit(name, right - kStar - kListMargin - kTextLeft),
               {kTextLeft, frame.top + kNameBaseline});
    SetFont(&small);
    SetHighColor(colors.quietText);
    if (broken) {
        DrawString(CutToFit(entry.fault, right - kTextLeft),
                   {kTextLeft, frame.top + kTagsBaseline});
        return;
    }
    // Half of the width is enough for the drawer's own categories, but a document may name another
    // one.
    const std::string category = CutToFit(entry.category, (right - kTextLeft) / 2);
    const float categoryLeft = right - StringWidth(category);
    DrawString(category, {categoryLeft, frame.top + kTagsBaseline});
    DrawString(CutToFit(entry.tags, categoryLeft - kListMargin - kTextLeft),
               {kTextLeft, frame.top + kTagsBaseline});
    if (entry.own)
        DrawString("yours", {kTextLeft, frame.top + kFaultBaseline});
    DrawStar(entry, StarFrame(row));
}

void SoundListView::DrawStar(const SoundEntry& entry, BRect place) {
    const BPoint center = {(place.left + place.right) / 2, (place.top + place.bottom) / 2};
    const std::vector<BPoint> star = Star(center, kStar / 2);
    SetHighColor(Colors().star);
    if (IsFavourite(entry, favourites))
        FillPolygon(star);
    else
        StrokePath(star, 1, true);
}

void SoundListView::DrawScrollBar() {
    const float height = Bounds().Height() + 1;
    if (Content() <= height)
        return;
    const float size = std::max(20.0F, height * height / Content());
    const float top = (height - size) * scroll / (Content() - height);
    SetHighColor(Colors().quietText);
    FillRoundRect({Bounds().right - kBarWidth + 2, top, Bounds().right - 1, top + size - 1}, 2);
}

kits::AccessibleThing SoundListView::Describe() const {
    kits::AccessibleThing thing;
    thing.role = kits::AccessibleRole::List;
    thing.description = rows.empty() ? ifEmpty : std::to_string(rows.size()) + " sounds";
    return thing;
}

kits::AccessibleThing SoundListView::DescribePart(std::size_t index) const {
    const SoundEntry& entry = *rows[index];
    kits::AccessibleThing thing;
    thing.role = kits::AccessibleRole::ListItem;
    thing.name = entry.name;
    thing.description = entry.fault.empty() ? entry.category + ": " + entry.tags : entry.fault;
    if (IsFavourite(entry, favourites))
        thing.description += ", a favourite";
    thing.frame = RowFrame(index);
    thing.chosen = index == cursor;
    if (entry.fault.empty())
        thing.action = "Load";
    return thing;
}

void SoundListView::Activate(std::optional<std::size_t> part) {
    if (part && *part < rows.size())
        Load(*part);
}

} // namespace vexa
