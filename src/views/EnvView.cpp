// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/EnvView.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vexa {

namespace {

// Pixels between the edges of the view and the curve.
constexpr float kSideMargin = 9;
constexpr float kTopMargin = 3;
constexpr float kBottomMargin = 9;
/// A press this near to a point is one on it.
constexpr float kCatch = 2;
/// The key marker: distance of its ends from the edges, and how much it is raised with the key
/// down.
constexpr float kMarkerMargin = 3;
constexpr float kMarkerRise = 3;

} // namespace

EnvView::EnvView(BRect frame, const char* name, float minimum, float maximum, float timeRange,
                 uint32 resizingMode, rgb_color viewColor, rgb_color lineColor)
    : BView(frame, name, resizingMode, B_WILL_DRAW | B_FRAME_EVENTS),
      Envelope(minimum, maximum, timeRange),
      lineColor(lineColor) {
    SetViewColor(viewColor);
}

float EnvView::PixelsPerSecond() const {
    return (Frame().Width() - 2 * kSideMargin) / TimeRange();
}

float EnvView::ReleaseX() const {
    return kSideMargin + PixelsPerSecond() * Split();
}

BPoint EnvView::EnvPoint2View(const EnvPoint& point) const {
    const float height = Frame().Height() - kTopMargin - kBottomMargin;
    return {(point.fku ? ReleaseX() : kSideMargin) + PixelsPerSecond() * point.t,
            kTopMargin + height * (Maximum() - point.val) / (Maximum() - Minimum())};
}

EnvPoint EnvView::View2EnvPoint(BPoint where) const {
    const float height = Frame().Height() - kTopMargin - kBottomMargin;
    EnvPoint point;
    point.fku = where.x >= ReleaseX();
    const float t = (where.x - (point.fku ? ReleaseX() : kSideMargin)) / PixelsPerSecond();
    point.t = std::min(t, point.fku ? TimeRange() - Split() : Split());
    const float val = Maximum() - (where.y - kTopMargin) * (Maximum() - Minimum()) / height;
    point.val = std::clamp(val, Minimum(), Maximum());
    return point;
}

void EnvView::SetPoints(const std::vector<EnvPoint>& next) {
    Points() = next;
    Publish();
    Invalidate();
}

void EnvView::SetColors(rgb_color behind, rgb_color line) {
    SetViewColor(behind);
    lineColor = line;
}

/// Ends a drag and lets the points be heard.
void EnvView::Publish() {
    selected.reset();
    ProduceCalcPts();
}

EnvView::Drag EnvView::DragOf(std::size_t index) const {
    if (index == 0)
        return {0, 0, 0};
    const EnvPoint& point = Points()[index];
    const EnvPoint& before = Points()[index - 1];
    Drag drag{index, point.fku && !before.fku ? 0 : before.t, 0};
    if (index + 1 == Points().size()) {
        drag.maxT = point.fku ? TimeRange() - Split() : Split();
    } else {
        const EnvPoint& after = Points()[index + 1];
        drag.maxT = !point.fku && after.fku ? Split() : after.t;
    }
    return drag;
}

void EnvView::MouseDown(BPoint where) {
    uint32 buttons = 0;
    GetMouse(&where, &buttons, true);
    std::vector<EnvPoint>& points = Points();
    // Behind the last point at or left of the pointer.
    std::size_t place = 0;
    selected.reset();
    for (std::size_t i = 0; i < points.size(); i++) {
        const BPoint at = EnvPoint2View(points[i]);
        if (where.x >= at.x)
            place = i + 1;
        if (BRect{at.x, at.y, at.x, at.y}.InsetByCopy(-kCatch, -kCatch).Contains(where))
            selected = DragOf(i);
    }
    const auto at = [&](std::size_t i) { return points.begin() + static_cast<std::ptrdiff_t>(i); };
    if (buttons == B_PRIMARY_MOUSE_BUTTON) {
        if (selected)
            return;
        if (place > 0)
            points.insert(at(place), View2EnvPoint(where));
        else if (where.x > kSideMargin)
            points.push_back(View2EnvPoint(where));
        Invalidate();
    } else if (selected && selected->point > 0) {
        points.erase(at(selected->point));
        selected.reset();
        Invalidate();
    }
}

void EnvView::MouseMoved(BPoint where, uint32 transit, const BMessage*) {
    if (transit == B_EXITED_VIEW)
        Publish();
    if (!selected)
        return;
    EnvPoint& point = Points()[selected->point];
    const EnvPoint pointer = View2EnvPoint(where);
    point.val = pointer.val;
    if (pointer.fku == point.fku)
        point.t = std::min(std::max(pointer.t, selected->minT), selected->maxT);
    else
        point.t = point.fku ? selected->minT : selected->maxT;
    Invalidate(Band(*selected));
}

BRect EnvView::Band(const Drag& drag) const {
    const std::vector<EnvPoint>& points = std::as_const(*this).Points();
    const EnvPoint& point = points[drag.point];
    EnvPoint end{drag.maxT, point.fku, Minimum()};
    if (drag.point + 1 < points.size()) {
        const EnvPoint& after = points[drag.point + 1];
        if (drag.point == 0)
            end.t = after.t;
        if (after.fku && !point.fku) {
            end.t = after.t;
            end.fku = true;
        }
    } else if (!point.fku) {
        end.t = TimeRange() - Split();
        end.fku = true;
    }
    const BPoint from = EnvPoint2View({drag.minT, point.fku, Maximum()});
    const BPoint to = EnvPoint2View(end);
    return BRect{from.x, from.y, to.x, to.y}.InsetByCopy(-1, -1);
}

void EnvView::MouseUp(BPoint) {
    Publish();
}

void EnvView::FrameResized(float, float) {
    Invalidate();
}

void EnvView::Draw(BRect) {
    const float right = Frame().Width();
    const float bottom = Frame().Height();
    const float release = ReleaseX();
    SetHighColor(lineColor);
    SetLowColor(lineColor);
    BPoint last;
    const EnvPoint* previous = nullptr;
    for (const EnvPoint& point : std::as_const(*this).Points()) {
        const BPoint at = EnvPoint2View(point);
        if (previous) {
            // The last value with the key down is held until it is let go.
            if (point.fku && !previous->fku) {
                StrokeLine(last, {release, last.y});
                last.x = release;
            }
            StrokeLine(last, at);
        }
        FillRect(BRect{at.x, at.y, at.x, at.y}.InsetByCopy(-1, -1));
        last = at;
        previous = &point;
    }
    if (previous)
        StrokeLine(last, {right - kSideMargin, last.y});

    // Key marker: up while the key is down.
    const float low = bottom - kMarkerMargin;
    const float high = low - kMarkerRise;
    StrokeLine({kMarkerMargin, low}, {kSideMargin, low});
    StrokeLine({kSideMargin, high});
    StrokeLine({release, high});
    StrokeLine({release, low});
    StrokeLine({right - kMarkerMargin, low});
}

} // namespace vexa
