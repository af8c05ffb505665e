// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/EnvView.h"

#include "kits/interface/Control.h"
#include "kits/support/NumberText.h"
#include "kits/support/Quoted.h"
#include "views/Theme.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vexa {

namespace {

// The margins between the edges of the view and the curve, in pixels.
constexpr float kSideMargin = 9;
constexpr float kTopMargin = 3;
constexpr float kBottomMargin = 9;
/// The greatest distance at which a press hits a point, with hairlines and with handles.
constexpr float kCatch = 2;
constexpr float kHandleCatch = 5;
/// Half the width of a handle, and of a handle under the pointer.
constexpr float kHandle = 2.5F;
constexpr float kLargeHandle = 4.5F;
constexpr float kCurveWidth = 1.5F;
/// The gap between a point and its label, and between the label's text and its edge.
constexpr float kLabelGap = 8;
constexpr float kLabelMargin = 3;
constexpr float kEntryWidth = 92;
/// The key marker: the distance of its ends from the edges, and the height by which it is raised
/// while the key is down.
constexpr float kMarkerMargin = 3;
constexpr float kMarkerRise = 3;

/// The steps of an arrow key: in seconds, and as a fraction of the range of values.
constexpr float kTimeStep = 0.05F;
constexpr float kValueStep = 0.02F;

constexpr uint32 kEntryCode = FourCC("EnvN");
constexpr uint32 kEntryEndCode = FourCC("EnvE");

bool DrawsHairlines() {
    return ChosenColors() == ColorSet::Classic;
}

/// Returns the number to three decimals.
std::string Rounded(float number) {
    return kits::ShortText(std::round(number * 1000.0) / 1000);
}

float Catch() {
    return DrawsHairlines() ? kCatch : kHandleCatch;
}

} // namespace

EnvView::EnvView(BRect frame, const char* name, float minimum, float maximum, float timeRange,
                 uint32 resizingMode, rgb_color viewColor, rgb_color lineColor)
    : BView(frame, name, resizingMode, B_WILL_DRAW | B_FRAME_EVENTS | B_NAVIGABLE),
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
    hovered.reset();
    asking = false;
    chosen = 0;
    CloseEntry();
    Publish();
    Invalidate();
}

void EnvView::SetColors(rgb_color behind, rgb_color line) {
    SetViewColor(behind);
    lineColor = line;
}

/// Ends a drag and publishes the points, so that they are heard.
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

std::optional<std::size_t> EnvView::PointAt(BPoint where) const {
    std::optional<std::size_t> found;
    for (std::size_t i = 0; i < Points().size(); i++) {
        const BPoint at = EnvPoint2View(Points()[i]);
        if (BRect{at.x, at.y, at.x, at.y}.InsetByCopy(-Catch(), -Catch()).Contains(where))
            found = i;
    }
    return found;
}

void EnvView::MouseDown(BPoint where) {
    uint32 buttons = 0;
    GetMouse(&where, &buttons, true);
    const std::optional<std::size_t> pressed = std::as_const(*this).PointAt(where);
    CloseEntry();
    selected.reset();
    if (pressed) {
        selected = DragOf(*pressed);
        chosen = *pressed;
        Invalidate();
    }
    if (buttons == B_PRIMARY_MOUSE_BUTTON) {
        // A second press, even on a point that the first one has just added, may also begin a drag.
        // Therefore the numbers are asked for only when it is released without a movement.
        asking = pressed && Clicks() == 2;
        if (pressed)
            return;
        std::vector<EnvPoint>& points = Points();
        // The new point is inserted after the last point at or left of the pointer.
        std::size_t place = 0;
        for (std::size_t i = 0; i < points.size(); i++) {
            if (where.x >= EnvPoint2View(points[i]).x)
                place = i + 1;
        }
        if (place == 0 && where.x > kSideMargin)
            place = points.size();
        else if (place == 0)
            return;
        points.insert(points.begin() + static_cast<std::ptrdiff_t>(place), View2EnvPoint(where));
        chosen = place;
        Hover(place);
        Invalidate();
    } else if (selected && selected->point > 0) {
        Remove(selected->point);
    }
}

void EnvView::Remove(std::size_t index) {
    Points().erase(Points().begin() + static_cast<std::ptrdiff_t>(index));
    selected.reset();
    hovered.reset();
    chosen = std::min(chosen, Points().size() - 1);
    Invalidate();
}

void EnvView::Hover(std::optional<std::size_t> point) {
    if (point == hovered)
        return;
    hovered = point;
    if (!DrawsHairlines())
        Invalidate();
}

void EnvView::MouseMoved(BPoint where, uint32 transit, const BMessage*) {
    if (transit == B_EXITED_VIEW)
        Publish();
    if (!selected) {
        Hover(transit == B_EXITED_VIEW ? std::nullopt : std::as_const(*this).PointAt(where));
        return;
    }
    asking = false;
    EnvPoint& point = Points()[selected->point];
    const EnvPoint pointer = View2EnvPoint(where);
    point.val = pointer.val;
    if (pointer.fku == point.fku)
        point.t = std::min(std::max(pointer.t, selected->minT), selected->maxT);
    else
        point.t = point.fku ? selected->minT : selected->maxT;
    Hover(selected->point);
    if (DrawsHairlines())
        Invalidate(Band(*selected));
    else
        Invalidate();
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
    if (std::exchange(asking, false))
        AskForNumbers(chosen);
}

void EnvView::MovePoint(std::size_t index, float t, float value) {
    const Drag limits = DragOf(index);
    EnvPoint& point = Points()[index];
    point.t = std::clamp(t, limits.minT, std::max(limits.minT, limits.maxT));
    point.val = std::clamp(value, Minimum(), Maximum());
    Publish();
    Invalidate();
}

bool EnvView::KeyDown(const kits::KeyPress& press) {
    using kits::Key;
    const std::size_t count = std::as_const(*this).Points().size();
    if (count == 0)
        return false;
    chosen = std::min(chosen, count - 1);
    const bool alt = press.modifiers & B_ALT_KEY;
    if (alt && (press.key == Key::Left || press.key == Key::Right)) {
        chosen = press.key == Key::Left ? chosen - (chosen > 0) : std::min(chosen + 1, count - 1);
    } else if (press.key == Key::Insert) {
        AddBehind(chosen);
    } else if (press.key == Key::Delete || press.key == Key::Backspace) {
        if (chosen == 0)
            return true;
        Remove(chosen);
        Publish();
    } else if (press.key == Key::Enter) {
        AskForNumbers(chosen);
    } else if (!Nudge(press)) {
        return false;
    }
    Invalidate();
    return true;
}

/// Moves the chosen point by an arrow key. Returns false for other keys.
bool EnvView::Nudge(const kits::KeyPress& press) {
    float t = 0;
    float value = 0;
    switch (press.key) {
    case kits::Key::Left:
    case kits::Key::Right:
        t = press.key == kits::Key::Right ? kTimeStep : -kTimeStep;
        break;
    case kits::Key::Up:
    case kits::Key::Down:
        value = (press.key == kits::Key::Up ? kValueStep : -kValueStep) * (Maximum() - Minimum());
        break;
    default:
        return false;
    }
    const float scale = press.modifiers & B_SHIFT_KEY     ? 0.1F
                        : press.modifiers & B_CONTROL_KEY ? 10
                                                          : 1;
    const EnvPoint point = std::as_const(*this).Points()[chosen];
    MovePoint(chosen, point.t + t * scale, point.val + value * scale);
    return true;
}

/// Adds a point half way to the next one, or to the end of the part if the point is its last.
void EnvView::AddBehind(std::size_t index) {
    std::vector<EnvPoint>& points = Points();
    EnvPoint added = points[index];
    const bool isLast = index + 1 == points.size() || points[index + 1].fku != added.fku;
    if (isLast) {
        const float end = added.fku ? TimeRange() - Split() : Split();
        added.t = (added.t + end) / 2;
    } else {
        added.t = (added.t + points[index + 1].t) / 2;
        added.val = (added.val + points[index + 1].val) / 2;
    }
    chosen = index + 1;
    points.insert(points.begin() + static_cast<std::ptrdiff_t>(chosen), added);
    Publish();
}

/// Opens the field for numbers beside the point.
void EnvView::AskForNumbers(std::size_t index) {
    CloseEntry();
    selected.reset();
    entryPoint = index;
    entryWrong = false;
    const EnvPoint& point = std::as_const(*this).Points()[index];
    const BPoint at = EnvPoint2View(point);
    const float left = std::clamp(at.x + kLabelGap, 0.0F, Bounds().right - kEntryWidth);
    const float top = std::clamp(at.y - BTextControl::PreferredHeight() / 2, 0.0F,
                                 Bounds().bottom - BTextControl::PreferredHeight());
    entry = new BTextControl({left, top, left + kEntryWidth, top}, "time and value", nullptr,
                             Numbers(index).c_str(), new BMessage(kEntryCode));
    entry->SetAccessibleName("time in seconds, and value");
    entry->SetTarget(this);
    entry->SetEndMessage(new BMessage(kEntryEndCode));
    entry->SetKeyboardTo(*this);
    AddChild(entry);
    entry->TabAfter(*this);
    entry->MakeFocus();
    entry->SelectAll();
}

/// Moves the point to the entered time and value. If one is missing or invalid, the point stays,
/// and the field is marked; after Enter it keeps the keyboard.
void EnvView::TakeNumbers() {
    const std::string text = entry->Text();
    entryWrong = false;
    if (entryPoint >= std::as_const(*this).Points().size() || text == Numbers(entryPoint))
        return;
    std::size_t first = 0;
    std::size_t second = 0;
    const double t = kits::NumberOf(text, &first);
    const std::string rest =
        text.substr(std::min(text.find_first_not_of(" ,;\ts", first), text.size()));
    const double value = kits::NumberOf(rest, &second);
    if (first > 0 && second > 0 && std::isfinite(t) && std::isfinite(value))
        return MovePoint(entryPoint, static_cast<float>(t), static_cast<float>(value));
    entryWrong = true;
    entry->MarkWrong(true);
    entry->SetToolTip((kits::Quoted(text) + " is not a time and a value").c_str());
    if (!IsFocus())
        return;
    entry->MakeFocus();
    entry->SelectAll();
}

void EnvView::CloseEntry() {
    if (!entry)
        return;
    RemoveChild(entry);
    delete std::exchange(entry, nullptr);
}

void EnvView::MessageReceived(BMessage* message) {
    if (message->what == kEntryCode && entry)
        TakeNumbers();
    else if (message->what == kEntryEndCode && entry && !entry->IsFocus() &&
             (!entryWrong || IsFocus()))
        CloseEntry();
    else
        BView::MessageReceived(message);
}

std::string EnvView::Label(std::size_t index) const {
    const EnvPoint& point = Points()[index];
    std::string text = point.fku ? "+" : "";
    return text.append(Rounded(point.t)).append(" s, ").append(Rounded(point.val));
}

/// Returns the point's time and value as the field for them shows them.
std::string EnvView::Numbers(std::size_t index) const {
    const EnvPoint& point = Points()[index];
    return Rounded(point.t) + ' ' + Rounded(point.val);
}

kits::AccessibleThing EnvView::Describe() const {
    kits::AccessibleThing thing;
    thing.role = kits::AccessibleRole::Chart;
    thing.description = std::to_string(Points().size()) + " points";
    return thing;
}

/// Describes a point as a slider for its value. Its time is only in the description.
kits::AccessibleThing EnvView::DescribePart(std::size_t index) const {
    kits::AccessibleThing thing;
    const EnvPoint& point = Points()[index];
    const BPoint at = EnvPoint2View(point);
    thing.role = kits::AccessibleRole::Slider;
    thing.name = "point " + std::to_string(index + 1) + (point.fku ? ", released" : "");
    thing.description = Label(index);
    thing.number = {point.val, Minimum(), Maximum(), kValueStep * (Maximum() - Minimum())};
    thing.frame = BRect{at.x, at.y, at.x, at.y}.InsetByCopy(-kLargeHandle, -kLargeHandle);
    thing.chosen = index == chosen;
    thing.action = "Choose";
    return thing;
}

void EnvView::Activate(std::optional<std::size_t> part) {
    if (!part)
        return;
    chosen = *part;
    MakeFocus();
    Invalidate();
}

void EnvView::SetNumber(std::optional<std::size_t> part, double value) {
    if (part)
        MovePoint(*part, std::as_const(*this).Points()[*part].t, static_cast<float>(value));
}

void EnvView::FrameResized(float, float) {
    CloseEntry();
    Invalidate();
}

void EnvView::Draw(BRect) {
    SetHighColor(lineColor);
    SetLowColor(lineColor);
    if (DrawsHairlines())
        DrawHairlines();
    else
        DrawSmooth();
    SetHighColor(lineColor);
    DrawKeyMarker();
    if (!DrawsHairlines())
        DrawHandles();
}

/// Returns the corners of the curve. The last value of the key-down part is held until the release,
/// and the last value of all until the end.
std::vector<BPoint> EnvView::Curve2View() const {
    std::vector<BPoint> corners;
    const EnvPoint* previous = nullptr;
    for (const EnvPoint& point : Points()) {
        if (previous && point.fku && !previous->fku)
            corners.push_back({ReleaseX(), corners.back().y});
        corners.push_back(EnvPoint2View(point));
        previous = &point;
    }
    if (previous)
        corners.push_back({Frame().Width() - kSideMargin, corners.back().y});
    return corners;
}

void EnvView::DrawHairlines() {
    const std::vector<BPoint> corners = Curve2View();
    for (std::size_t i = 1; i < corners.size(); i++)
        StrokeLine(corners[i - 1], corners[i]);
    for (const EnvPoint& point : std::as_const(*this).Points()) {
        const BPoint at = EnvPoint2View(point);
        FillRect(BRect{at.x, at.y, at.x, at.y}.InsetByCopy(-1, -1));
    }
}

void EnvView::DrawSmooth() {
    StrokePath(Curve2View(), kCurveWidth);
}

void EnvView::DrawHandles() {
    const std::vector<EnvPoint>& points = std::as_const(*this).Points();
    for (std::size_t i = 0; i < points.size(); i++) {
        const BPoint at = EnvPoint2View(points[i]);
        const float size = hovered == i ? kLargeHandle : kHandle;
        SetHighColor(lineColor);
        FillEllipse(at, size, size);
        if (IsFocus() && i == chosen) {
            SetHighColor(Colors().accent);
            StrokeEllipse(at, kLargeHandle + 2, kLargeHandle + 2);
        }
    }
    if (IsFocus()) {
        SetHighColor(Colors().accent);
        StrokeRoundRect(Bounds(), 0);
    }
    if (hovered && *hovered < points.size())
        DrawLabel(*hovered);
    else if (IsFocus() && chosen < points.size())
        DrawLabel(chosen);
}

/// Draws the label beside the point, on the side where there is room.
void EnvView::DrawLabel(std::size_t index) {
    font_height height;
    GetFontHeight(&height);
    const std::string text = Label(index);
    const BPoint at = EnvPoint2View(std::as_const(*this).Points()[index]);
    const float width = StringWidth(text) + 2 * kLabelMargin;
    const float tall = height.ascent + height.descent + kLabelMargin;
    const bool fits = at.x + kLabelGap + width < Bounds().right;
    const float left = fits ? at.x + kLabelGap : std::max(0.0F, at.x - kLabelGap - width);
    const float top = std::clamp(at.y - tall / 2, 1.0F, Bounds().bottom - tall - 1);
    SetHighColor(Colors().controls.tip);
    FillRoundRect({left, top, left + width, top + tall}, 3);
    SetHighColor(Colors().controls.tipText);
    DrawString(text, {left + kLabelMargin, std::floor(top + kLabelMargin / 2 + height.ascent)});
}

/// Draws the key marker, which is raised over the key-down part.
void EnvView::DrawKeyMarker() {
    const float right = Frame().Width();
    const float release = ReleaseX();
    const float low = Frame().Height() - kMarkerMargin;
    const float high = low - kMarkerRise;
    StrokeLine({kMarkerMargin, low}, {kSideMargin, low});
    StrokeLine({kSideMargin, high});
    StrokeLine({release, high});
    StrokeLine({release, low});
    StrokeLine({right - kMarkerMargin, low});
}

} // namespace vexa
