// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/plane/PlaneHandle.h"

#include "views/Theme.h"
#include "views/plane/PlaneOverlay.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace vexa {

namespace {

// The plane looks the same in all sets of colours, and so do the handles.
constexpr rgb_color kInk = {255, 255, 255};
constexpr rgb_color kRim = {0, 0, 0, 200};

constexpr float kUsualSize = 4;
constexpr float kNoticedSize = 6;

#define VEXA_HANDLE_KEYS "\nDrag, or arrow keys; Shift finer, Ctrl coarser."
constexpr PlaneHandleRow kHandleRows[] = {
    {"start of centre", OrbitNumber::StartX, OrbitNumber::StartY,
     "Where the centre of the orbit starts" VEXA_HANDLE_KEYS},
    {"radius x", OrbitNumber::RadiusX, std::nullopt,
     "The orbit's radius in x, at the full height of its envelope" VEXA_HANDLE_KEYS},
    {"radius y", std::nullopt, OrbitNumber::RadiusY,
     "The orbit's radius in y, at the full height of its envelope" VEXA_HANDLE_KEYS},
    {"drift of centre", OrbitNumber::DriftX, OrbitNumber::DriftY,
     "How far the centre drifts in a second, at the full height of its envelopes" VEXA_HANDLE_KEYS},
};
#undef VEXA_HANDLE_KEYS

/// Returns 1 for an arrow key to the right or up, -1 for one to the left or down, and 0 for other
/// keys. Sets `upright` to true for up and down.
int Arrow(kits::Key key, bool& upright) {
    upright = key == kits::Key::Up || key == kits::Key::Down;
    if (key == kits::Key::Right || key == kits::Key::Up)
        return 1;
    return key == kits::Key::Left || key == kits::Key::Down ? -1 : 0;
}

/// The toolkit's coordinates are integers. A handle farther away than this, in pixels, or at NaN,
/// is put at this limit, which is far outside any window.
constexpr float kFarthestHandle = 1e6F;

float Bounded(float place) {
    return place >= -kFarthestHandle ? std::min(place, kFarthestHandle) : -kFarthestHandle;
}

} // namespace

std::span<const PlaneHandleRow> PlaneHandles() {
    return kHandleRows;
}

PlaneHandle::PlaneHandle(PlaneOverlay& overlay, const PlaneHandleRow& row)
    : BView({0, 0, 2 * kReach, 2 * kReach}, row.name, B_FOLLOW_NONE,
            B_WILL_DRAW | B_NAVIGABLE | B_KEEPS_POINTER | B_SEE_THROUGH),
      overlay(overlay),
      row(row) {
    SetViewColor(B_TRANSPARENT_COLOR);
    SetAccessibleName(row.name);
    SetToolTip(row.tip);
}

bool PlaneHandle::CenterAt(BPoint point) {
    const float x = Bounded(std::round(point.x - kReach)),
                y = Bounded(std::round(point.y - kReach));
    if (x == Frame().left && y == Frame().top)
        return false;
    MoveTo(x, y);
    return true;
}

kits::AccessibleThing PlaneHandle::Describe() const {
    kits::AccessibleThing thing;
    thing.role = kits::AccessibleRole::Group;
    thing.description = overlay.TextOf(row);
    return thing;
}

void PlaneHandle::Draw(BRect) {
    if (!overlay.ShowsHandles())
        return;
    const BPoint center = {kReach, kReach};
    const float size = IsNoticed() ? kNoticedSize : kUsualSize;
    const rgb_color ink = IsFocus() ? Colors().controls.accent : kInk;
    const float s = size;
    switch (row.First()) {
    case OrbitNumber::StartX:
    case OrbitNumber::StartY:
        SetHighColor(kRim);
        FillEllipse(center, s + 1.5F, s + 1.5F);
        SetHighColor(kInk);
        StrokeEllipse(center, s, s, 1.5F);
        SetHighColor(ink);
        FillEllipse(center, s - 2, s - 2);
        break;
    case OrbitNumber::RadiusX:
    case OrbitNumber::RadiusY: {
        const BRect square = {center.x - s, center.y - s, center.x + s, center.y + s};
        SetHighColor(kRim);
        FillRoundRect(square, 3);
        SetHighColor(ink);
        FillRoundRect(square.InsetByCopy(1.5F, 1.5F), 2);
        break;
    }
    case OrbitNumber::DriftX:
    case OrbitNumber::DriftY:
        for (const auto& [color, reach] : {std::pair(kRim, s + 2), std::pair(ink, s)}) {
            const BPoint diamond[] = {{center.x, center.y - reach},
                                      {center.x + reach, center.y},
                                      {center.x, center.y + reach},
                                      {center.x - reach, center.y}};
            SetHighColor(color);
            FillPolygon(diamond);
        }
        break;
    }
}

void PlaneHandle::MouseDown(BPoint where) {
    // Another button during a gesture.
    if (held || passed)
        return;
    uint32 buttons = 0;
    GetMouse(&where, &buttons, true);
    const PlanePress press{InOverlay(where), buttons, Modifiers(), Clicks()};
    passed = buttons != B_PRIMARY_MOUSE_BUTTON || overlay.IsForOverlay(press);
    if (passed) {
        overlay.MakeFocus();
        return overlay.Press(press);
    }
    held = true;
    grip = InOverlay(where);
    gripX = row.x ? overlay.Number(*row.x) : 0;
    gripY = row.y ? overlay.Number(*row.y) : 0;
    overlay.Grip();
}

void PlaneHandle::MouseMoved(BPoint where, uint32 transit, const BMessage*) {
    const BPoint point = InOverlay(where);
    const bool in = transit != B_EXITED_VIEW;
    if (in != hovered) {
        hovered = in;
        Invalidate();
    }
    overlay.Hover(point, in || held);
    if (passed) {
        overlay.Move(point);
    } else if (held) {
        const BPoint to = overlay.ByPixels({point.x - grip.x, point.y - grip.y});
        if (row.x)
            overlay.MoveNumber(*row.x, gripX + double(to.x), overlay.PixelStep());
        if (row.y)
            overlay.MoveNumber(*row.y, gripY + double(to.y), overlay.PixelStep());
    }
    overlay.Notice(IsNoticed() ? this : nullptr);
}

void PlaneHandle::MouseUp(BPoint where) {
    if (passed)
        overlay.Release(InOverlay(where));
    else if (held)
        overlay.LetGo();
    held = passed = false;
    Invalidate();
}

bool PlaneHandle::WheelMoved(BPoint where, BPoint steps) {
    return overlay.WheelMoved(InOverlay(where), steps);
}

bool PlaneHandle::KeyDown(const kits::KeyPress& press) {
    bool upright = false;
    const int way = Arrow(press.key, upright);
    if (way == 0)
        return overlay.KeyDown(press);
    // A handle with only one number changes it with both pairs of arrow keys.
    const std::optional<OrbitNumber> number =
        upright ? (row.y ? row.y : row.x) : (row.x ? row.x : row.y);
    overlay.StepNumber(*number, way, press.modifiers);
    overlay.Notice(this);
    return true;
}

void PlaneHandle::FocusChanged() {
    overlay.HandleFocus(IsFocus() ? this : nullptr);
    Invalidate();
}

} // namespace vexa
