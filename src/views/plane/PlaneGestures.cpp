// SPDX-License-Identifier: GPL-3.0-or-later
// The gestures on the plane by mouse and keyboard.
#include "kits/interface/Menu.h"
#include "kits/support/NumberText.h"
#include "views/R2RFView.h"
#include "views/plane/PlaneOverlay.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vexa {

namespace {

/// The number of steps of the wheel or of a key that halve or double the width.
constexpr float kStepsToHalf = 4;
/// The least and the greatest width that can be shown, in plane units.
constexpr double kNarrowest = 1e-3;
constexpr double kWidest = 1e6;
/// The factor by which the fitted view exceeds the reach of the orbit.
constexpr double kMargin = 1.3;
/// The width that a new window shows, in plane units.
constexpr double kUsualWidth = 15;

/// The steps of an arrow key: pixels by which it moves the plane, and radians by which it turns the
/// landscape. A drag turns it by kPixelTurn per pixel, and the elevation stays between kLowest and
/// kHighest.
constexpr float kKeyPixels = 30;
constexpr float kKeyTurn = 0.1F;
constexpr float kPixelTurn = 0.01F;
constexpr float kLowest = 0.12F;
constexpr float kHighest = std::numbers::pi_v<float> / 2;

/// The step of an arrow key that changes a number, in units of PixelStep.
constexpr double kKeyStep = 4;
/// The least distance of the other handles from that of the start of the centre, in pixels, however
/// small their numbers are.
constexpr float kApart = 18;
/// In seconds: the least time between two starts of a preview, and the time from the last key press
/// to the end of a preview that a key has started.
constexpr float kBetweenStrikes = 0.15F;
constexpr float kKeyPreview = 0.5F;

float Weight(uint32 modifiers, float finer, float coarser) {
    if (modifiers & B_SHIFT_KEY)
        return finer;
    return modifiers & B_CONTROL_KEY ? coarser : 1;
}

bool IsAudition(const PlanePress& press) {
    constexpr uint32 kBoth = B_CONTROL_KEY | B_SHIFT_KEY;
    return press.buttons == B_PRIMARY_MOUSE_BUTTON && (press.modifiers & kBoth) == kBoth;
}

} // namespace

// The view of the plane.

/// Sets the width and the point at the link's place, each rounded to a fraction of a pixel.
void PlaneOverlay::SetView(double width, double linkX, double linkY) {
    width = std::clamp(width, kNarrowest, kWidest);
    const double step = TidyStep(width / double(Bounds().Width()) / 5);
    // A coordinate that is not finite becomes 0, so that the user can leave such a view.
    for (double* link : {&linkX, &linkY})
        *link = std::isfinite(*link) ? *link : 0;
    host.SetView(TidyText(width, TidyStep(width / 2000)), TidyText(linkX, step),
                 TidyText(linkY, step));
    PlaceHandles();
    StartAnimation();
}

void PlaneOverlay::Zoom(BPoint where, float steps) {
    const double side = double(Bounds().Width());
    const double scale = double(plane.Scale());
    const double wanted =
        std::clamp(scale * side * std::exp2(-double(steps / kStepsToHalf)), kNarrowest, kWidest);
    // The width as the field will show it, rounded.
    const double width = kits::NumberOf(TidyText(wanted, TidyStep(wanted / 2000)));
    if (relief)
        where = {Bounds().Width() / 2, Bounds().Height() / 2};
    const BPoint point = plane.ToPlane(where);
    const double next = width / side;
    const BPoint place = plane.LinkScreen();
    SetView(width, double(point.x) - (double(where.x) - side * double(place.x)) * next,
            double(point.y) +
                (double(where.y) - double(Bounds().Height()) * (1 - double(place.y))) * next);
}

/// Moves the plane by a distance in pixels from its place in the view `from`.
void PlaneOverlay::ShiftBy(const View& from, BPoint pixels) {
    BPoint by = {pixels.x * from.scale, -pixels.y * from.scale};
    if (relief) {
        const float away = by.y / std::max(std::sin(look.height), 0.2F);
        by = {by.x * std::cos(look.turn) + away * std::sin(look.turn),
              away * std::cos(look.turn) - by.x * std::sin(look.turn)};
    }
    SetView(double(from.scale) * double(Bounds().Width()), double(from.link.x - by.x),
            double(from.link.y - by.y));
}

void PlaneOverlay::TurnBy(float right, float up) {
    look.turn = std::remainder(look.turn + right, 2 * std::numbers::pi_v<float>);
    look.height = std::clamp(look.height + up, kLowest, kHighest);
    repaint = true;
    if (trace)
        trace->Clear();
    Invalidate();
}

void PlaneOverlay::Fit() {
    const SoundRecords& records = host.Records();
    const Reach reach = ReachOf(records, NoteInHand(records));
    double width = kMargin * std::max(reach.right - reach.left, reach.top - reach.bottom);
    double x = (reach.left + reach.right) / 2, y = (reach.bottom + reach.top) / 2;
    if (!(width > kNarrowest && width < kWidest)) {
        width = kUsualWidth;
        x = std::isfinite(x) ? x : 0;
        y = std::isfinite(y) ? y : 0;
    }
    const BPoint place = plane.LinkScreen();
    SetView(width, x + (double(place.x) - 0.5) * width, y + (double(place.y) - 0.5) * width);
}

// The mouse.

bool PlaneOverlay::IsForOverlay(const PlanePress& press) const {
    return IsAudition(press) || IsHeld(' ');
}

void PlaneOverlay::MouseDown(BPoint where) {
    uint32 buttons = 0;
    GetMouse(&where, &buttons, true);
    Press({where, buttons, Modifiers(), Clicks()});
}

void PlaneOverlay::Press(const PlanePress& press) {
    ShowFocus(false);
    if (gesture != Gesture::None)
        return;
    pressed = press.where;
    pressedView = {plane.Scale(), plane.LinkFunction(), plane.LinkScreen()};
    last = press.where;
    if (press.buttons == B_SECONDARY_MOUSE_BUTTON) {
        plane.ShowSavePanel();
    } else if (press.buttons == B_TERTIARY_MOUSE_BUTTON ||
               (press.buttons == B_PRIMARY_MOUSE_BUTTON && IsHeld(' '))) {
        gesture = Gesture::Move;
    } else if (IsAudition(press) && !relief) {
        gesture = Gesture::Audition;
        Audition(press.where);
    } else if (press.buttons == B_PRIMARY_MOUSE_BUTTON && press.clicks == 2) {
        Fit();
    } else if (press.buttons == B_PRIMARY_MOUSE_BUTTON && relief) {
        gesture = Gesture::Turn;
    }
}

void PlaneOverlay::MouseMoved(BPoint where, uint32 transit, const BMessage*) {
    Hover(where, transit != B_EXITED_VIEW);
    Move(where);
}

void PlaneOverlay::Hover(BPoint where, bool over) {
    inside = over;
    pointer = where;
    InvalidateLegend();
    ShowHandles();
}

void PlaneOverlay::Move(BPoint where) {
    switch (gesture) {
    case Gesture::None:
        break;
    case Gesture::Move:
        ShiftBy(pressedView, {where.x - pressed.x, where.y - pressed.y});
        break;
    case Gesture::Turn:
        TurnBy((where.x - last.x) * kPixelTurn, (where.y - last.y) * kPixelTurn);
        break;
    case Gesture::Audition:
        auditioned = plane.ToPlane(where);
        anew = anew || where != last;
        break;
    }
    last = where;
}

void PlaneOverlay::MouseUp(BPoint where) {
    Release(where);
}

void PlaneOverlay::Release(BPoint) {
    if (gesture == Gesture::Audition)
        EndPreview();
    gesture = Gesture::None;
}

bool PlaneOverlay::WheelMoved(BPoint where, BPoint steps) {
    // The wheel is ignored during another gesture.
    if (gesture == Gesture::None && steps.y != 0)
        Zoom(where, steps.y);
    return true;
}

// The keyboard.

bool PlaneOverlay::KeyDown(const kits::KeyPress& press) {
    ShowFocus(IsFocus());
    const BPoint middle = {Bounds().Width() / 2, Bounds().Height() / 2};
    const float weight = Weight(press.modifiers, 0.1F, 4);
    const View now = {plane.Scale(), plane.LinkFunction(), plane.LinkScreen()};
    const auto arrow = [&](float right, float up) {
        if (relief)
            TurnBy(right * weight * kKeyTurn, up * weight * kKeyTurn);
        else
            ShiftBy(now, {-right * weight * kKeyPixels, up * weight * kKeyPixels});
    };
    switch (press.key) {
    case kits::Key::Left:
        arrow(-1, 0);
        return true;
    case kits::Key::Right:
        arrow(1, 0);
        return true;
    case kits::Key::Up:
        arrow(0, 1);
        return true;
    case kits::Key::Down:
        arrow(0, -1);
        return true;
    case kits::Key::Home:
        Fit();
        return true;
    case kits::Key::Character:
        if (press.text == "+" || press.text == "-") {
            Zoom(middle, press.text == "+" ? 1.0F : -1.0F);
            return true;
        }
        // Space is taken, because the first button moves the plane while it is held.
        return press.character == ' ';
    default:
        return false;
    }
}

void PlaneOverlay::FocusChanged() {
    ShowFocus(IsFocusByKeys());
}

/// Shows or hides the mark of the plane's focus, which is not shown after a click.
void PlaneOverlay::ShowFocus(bool show) {
    if (std::exchange(focusShown, show) != show)
        Invalidate();
}

// The handles.

void PlaneOverlay::HandleFocus(const PlaneHandle* handle) {
    focused = handle != nullptr;
    Notice(handle);
    ShowHandles();
    Invalidate();
}

void PlaneOverlay::Notice(const PlaneHandle* handle) {
    noticed = handle;
    InvalidateLegend();
}

void PlaneOverlay::ShowHandles() {
    // Only the menu's button is hidden here. An open menu stays: the pointer is on the menu then,
    // no longer on the plane.
    const bool show = inside;
    if (show == menuField->IsHidden())
        show ? menuField->Show() : menuField->Hide();
    for (PlaneHandle* handle : handles) {
        if (relief != handle->IsHidden())
            relief ? handle->Hide() : handle->Show();
    }
    if (ShowsHandles() != handlesShown) {
        handlesShown = ShowsHandles();
        Invalidate();
    }
}

double PlaneOverlay::Number(OrbitNumber id) const {
    const SoundRecords& records = host.Records();
    return NumberFor(OrbitNumbers()[static_cast<std::size_t>(id)], records, NoteInHand(records));
}

void PlaneOverlay::MoveNumber(OrbitNumber id, double value, double tidy) {
    const OrbitNumberRow& row = OrbitNumbers()[static_cast<std::size_t>(id)];
    const SoundRecords& records = host.Records();
    host.SetCoefficient(row.constant,
                        TidyText(ConstantFor(row, records, NoteInHand(records), value), tidy));
    // The start of the centre takes effect only when a note begins.
    if (id == OrbitNumber::StartX || id == OrbitNumber::StartY)
        anew = true;
    PlaceHandles();
    InvalidateLegend();
}

void PlaneOverlay::StepNumber(OrbitNumber id, int way, uint32 modifiers) {
    const double step = kKeyStep * PixelStep() * double(Weight(modifiers, 0.1F, 10));
    Grip();
    MoveNumber(id, Number(id) + way * step, std::min(step / 4, PixelStep()));
    moving = false;
    keyPreview = kKeyPreview;
}

kits::AccessibleThing PlaneOverlay::Describe() const {
    kits::AccessibleThing thing;
    thing.role = kits::AccessibleRole::Picture;
    thing.description = std::string(relief ? "landscape" : "picture") + ", brightness: " +
                        std::string(BrightnessCurves()[static_cast<std::size_t>(brightness)].label);
    return thing;
}

kits::AccessibleThing PlaneOverlay::DescribePart(std::size_t index) const {
    const OrbitNumberRow& row = OrbitNumbers()[index];
    kits::AccessibleThing thing;
    thing.role = kits::AccessibleRole::Slider;
    thing.name = row.name;
    thing.description = TidyText(Number(row.id), PixelStep() / 10);
    thing.number = {Number(row.id), -kWidest, kWidest, kKeyStep * PixelStep()};
    for (const PlaneHandle* handle : handles) {
        if (handle->Row().x == row.id || handle->Row().y == row.id)
            thing.frame = handle->Frame();
    }
    return thing;
}

void PlaneOverlay::SetNumber(std::optional<std::size_t> part, double value) {
    if (part)
        MoveNumber(OrbitNumbers()[*part].id, value, PixelStep() / 10);
}

BPoint PlaneOverlay::ByPixels(BPoint pixels) const {
    return {pixels.x * plane.Scale(), -pixels.y * plane.Scale()};
}

double PlaneOverlay::PixelStep() const {
    return TidyStep(double(plane.Scale()) / 2);
}

void PlaneOverlay::PlaceHandles() {
    const auto number = [this](OrbitNumber id) { return static_cast<float>(Number(id)); };
    const auto apart = [](float length) {
        return std::copysign(std::max(std::abs(length), kApart), length);
    };
    const float scale = plane.Scale();
    const BPoint start = plane.ToView(number(OrbitNumber::StartX), number(OrbitNumber::StartY));
    bool moved = false;
    for (PlaneHandle* handle : handles) {
        BPoint by;
        switch (handle->Row().First()) {
        case OrbitNumber::StartX:
        case OrbitNumber::StartY:
            break;
        case OrbitNumber::RadiusX:
            by = {apart(number(OrbitNumber::RadiusX) / scale), 0};
            break;
        case OrbitNumber::RadiusY:
            by = {0, -apart(number(OrbitNumber::RadiusY) / scale)};
            break;
        case OrbitNumber::DriftX:
        case OrbitNumber::DriftY:
            by = {number(OrbitNumber::DriftX) / scale, -number(OrbitNumber::DriftY) / scale};
            if (std::hypot(by.x, by.y) < kApart)
                by = {kApart / std::numbers::sqrt2_v<float>, kApart / std::numbers::sqrt2_v<float>};
            break;
        }
        moved |= handle->CenterAt({start.x + by.x, start.y + by.y});
        handle->DescriptionChanged();
    }
    // Redraws the whole view, because of the lines between the handles.
    if (moved && ShowsHandles())
        Invalidate();
}

// Previews.

void PlaneOverlay::Grip() {
    moving = true;
    keyPreview = 0;
    if (!previewing && IsSilent(host.Records().voices)) {
        auditioned.reset();
        Strike();
    }
    StartAnimation();
}

void PlaneOverlay::LetGo() {
    moving = false;
    EndPreview();
    ShowHandles();
}

void PlaneOverlay::Audition(BPoint where) {
    EndPreview();
    auditioned = plane.ToPlane(where);
    Strike();
}

void PlaneOverlay::Strike() {
    host.Strike(auditioned);
    previewing = true;
    anew = false;
    sinceStrike = 0;
    StartAnimation();
}

void PlaneOverlay::EndPreview() {
    if (std::exchange(previewing, false))
        host.LetGo();
    keyPreview = 0;
}

void PlaneOverlay::AnimatePreview(float seconds) {
    if (!previewing)
        return;
    host.Watch();
    sinceStrike += seconds;
    if (anew && sinceStrike >= kBetweenStrikes)
        Strike();
    if (keyPreview > 0 && (keyPreview -= seconds) <= 0)
        EndPreview();
}

} // namespace vexa
