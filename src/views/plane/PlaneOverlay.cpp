// SPDX-License-Identifier: GPL-3.0-or-later
// The overlay's display of the plane and the orbits on it.
#include "views/plane/PlaneOverlay.h"

#include "kits/interface/Menu.h"
#include "kits/support/NumberText.h"
#include "views/R2RFView.h"
#include "views/Theme.h"
#include "views/plane/OrbitColors.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace vexa {

namespace {

/// The message code of the first brightness curve; those of the others follow.
constexpr uint32 kBrightnessCode = FourCC("Bri0");
constexpr uint32 kReliefCode = FourCC("Reli");

constexpr const char* kTip =
    "Blue is positive, red negative. Wheel: zoom. Middle button, or Space and drag: move. Double "
    "click: fit. Ctrl Shift click: hear the place. Right button: save the picture. F6: brightness. "
    "F7: landscape. Esc: silence.";

/// The time for computing values before they are drawn, and at each pulse, in addition to that of
/// R2RFView.
constexpr auto kOverlayDrawTime = std::chrono::milliseconds(20);
constexpr auto kOverlayPulseTime = std::chrono::milliseconds(15);

/// The width of an orbit's line in pixels of the view.
constexpr float kOrbitWidth = 1.5F;
/// The alpha of an orbit behind a hill, where 255 is opaque.
constexpr uint8 kBehind = 70;
/// The alpha of an orbit in a dash that belongs to another voice.
constexpr uint8 kOthers = 60;
/// Orbits that differ by no more than kClose, in pixels of the view, share one line, divided into
/// about kDashes dashes.
constexpr double kClose = 1.5;
constexpr int kDashes = 24;
/// The distance between two points of an orbit in pixels of the view, the least number of points
/// per turn, and the most points in total.
constexpr double kPointDistance = 7;
constexpr int kFewest = 24;
constexpr int kMost = 512;

constexpr float kMenuWidth = 64;
constexpr rgb_color kLegendBack = {0, 0, 0, 170};
constexpr rgb_color kLegendInk = {240, 240, 240};
constexpr float kLegendHeight = 18;
/// The radius of the marks at the points that the ears read, in pixels of the view.
constexpr float kEarRadius = 3.5F;
constexpr int kRingSides = 12;
/// The number of pulses for which the message about a key's choice is shown.
constexpr int kShownFor = 15;

/// Returns true if the two figures differ by at most `most` plane units.
bool AreClose(const Orbit& a, const Orbit& b, double most) {
    return std::abs(a.cx - b.cx) <= most && std::abs(a.cy - b.cy) <= most &&
           std::abs(a.rx - b.rx) <= most && std::abs(a.ry - b.ry) <= most;
}

/// Cosine and sine of a phase that advances in equal steps, accurate enough for kMost of them.
struct Wave {
    Wave(double phase, double step)
        : cosine(std::cos(phase)),
          sine(std::sin(phase)),
          stepCosine(std::cos(step)),
          stepSine(std::sin(step)) {}
    void Advance() {
        const double next = cosine * stepCosine - sine * stepSine;
        sine = sine * stepCosine + cosine * stepSine;
        cosine = next;
    }
    double cosine, sine;

  private:
    double stepCosine, stepSine;
};

/// Returns the brightness that F6 chooses after this one.
Brightness After(Brightness present) {
    return static_cast<Brightness>((static_cast<std::size_t>(present) + 1) %
                                   BrightnessCurves().size());
}

/// Returns a value of the function as a text for the user.
std::string ValueText(double value) {
    if (std::isnan(value))
        return "no value";
    if (std::isinf(value))
        return value < 0 ? "-infinite" : "infinite";
    return kits::RoundedText(value, 4);
}

uint32* Words(BBitmap& picture) {
    return static_cast<uint32*>(picture.Bits());
}

} // namespace

PlaneOverlay::PlaneOverlay(R2RFView& plane, PlaneHost& host)
    : BView(plane.Bounds(), "Plane", B_FOLLOW_ALL_SIDES,
            B_WILL_DRAW | B_NAVIGABLE | B_KEEPS_POINTER | B_PULSE_NEEDED),
      plane(plane),
      host(host) {
    SetViewColor(B_TRANSPARENT_COLOR);
    SetToolTip(kTip);
    SetAccessibleName("plane");
    for (const PlaneHandleRow& row : PlaneHandles()) {
        handles.push_back(new PlaneHandle(*this, row));
        AddChild(handles.back());
    }
    AddMenu();
    plane.AddChild(this);
    PlaceHandles();
}

PlaneOverlay::~PlaneOverlay() = default;

/// Adds the menu, which is shown while the pointer is over the plane. It takes no focus, because
/// that would pass on to some field when the menu is hidden. F6 and F7 do the same by keyboard.
void PlaneOverlay::AddMenu() {
    auto* menu = new BPopUpMenu("View", false, false);
    AddLooks(*menu);
    menu->SetOpening([this](BMenu& opened) {
        opened.RemoveAll();
        AddLooks(opened);
    });
    const BRect bounds = Bounds();
    menuField = new BMenuField(
        {bounds.right - kMenuWidth - 3, 4, bounds.right - 4, 4 + BMenuField::PreferredHeight()},
        "plane view", "", menu, B_FOLLOW_RIGHT | B_FOLLOW_TOP, B_WILL_DRAW);
    menuField->SetAccessibleName("how the plane is shown");
    menuField->SetToolTip("How the plane is shown: brightness (F6), landscape (F7)");
    menuField->Hide();
    AddChild(menuField);
}

void PlaneOverlay::AddLooks(BMenu& into) const {
    const auto add = [&](std::string_view label, uint32 code, bool marked, const char* keys) {
        auto* item = new BMenuItem(std::string(label).c_str(), new BMessage(code));
        into.AddItem(item);
        item->SetTarget(this);
        item->SetMarked(marked);
        item->SetKeys(keys);
    };
    for (const BrightnessRow& row : BrightnessCurves())
        add(row.label, kBrightnessCode + static_cast<uint32>(row.curve), row.curve == brightness,
            row.curve == After(brightness) ? "F6" : "");
    into.AddItem(new BSeparatorItem);
    add("Landscape", kReliefCode, relief, "F7");
}

void PlaneOverlay::MessageReceived(BMessage* message) {
    const uint32 curve = message->what - kBrightnessCode;
    if (message->what == kReliefCode)
        SetRelief(!relief);
    else if (curve < BrightnessCurves().size())
        SetBrightness(static_cast<Brightness>(curve));
    else
        BView::MessageReceived(message);
}

void PlaneOverlay::SetBrightness(Brightness next) {
    brightness = next;
    ChangeLook();
}

void PlaneOverlay::SetRelief(bool on) {
    relief = on;
    ShowHandles();
    ChangeLook();
}

void PlaneOverlay::ChangeLook() {
    stale = true;
    DescriptionChanged();
    Invalidate();
    if (lookChanged)
        lookChanged();
}

bool PlaneOverlay::TakeShortcut(const kits::KeyPress& press) {
    if (press.modifiers != 0 || IsHidden())
        return false;
    if (press.key == kits::Key::F6) {
        SetBrightness(After(brightness));
        Tell("brightness: " +
             std::string(BrightnessCurves()[static_cast<std::size_t>(brightness)].label));
        return true;
    }
    if (press.key != kits::Key::F7)
        return false;
    SetRelief(!relief);
    Tell(relief ? "landscape: drag to turn it" : "picture");
    return true;
}

/// Returns true if the base is computed here instead of copied from the plane view's picture.
bool PlaneOverlay::IsOwn() const {
    return relief || brightness != Brightness::Linear || density != 1;
}

/// Returns the area that the plane view shows, with this number of columns and rows.
PlaneArea PlaneOverlay::AreaOf(std::size_t columns, std::size_t rows) const {
    const float pixels = Bounds().Width() + 1;
    return {plane.LinkFunction().x,
            plane.LinkFunction().y,
            plane.LinkScreen().x,
            plane.LinkScreen().y,
            plane.Scale() * pixels / static_cast<float>(columns),
            columns,
            rows};
}

void PlaneOverlay::Allocate(int columns, int rows) {
    const BRect size = {0, 0, static_cast<float>(columns - 1), static_cast<float>(rows - 1)};
    base = std::make_unique<BBitmap>(size, B_RGB32);
    shown = std::make_unique<BBitmap>(size, B_RGB32);
    trace.emplace(columns, rows);
    stale = true;
}

/// Updates the shown picture from the plane view, as far as a short time allows.
void PlaneOverlay::Refresh() {
    density = Density();
    const auto pixels = [this](float length) {
        return static_cast<int>(std::lround((length + 1) * density));
    };
    const int columns = pixels(Bounds().Width()), rows = pixels(Bounds().Height());
    if (!base || base->Bounds().Width() != static_cast<float>(columns - 1) ||
        base->Bounds().Height() != static_cast<float>(rows - 1))
        Allocate(columns, rows);
    const View now = {plane.Scale(), plane.LinkFunction(), plane.LinkScreen()};
    if (now != view) {
        view = now;
        trace->Clear();
    }
    const bool changed = stale || seenChanges != plane.Changes();
    seenChanges = plane.Changes();
    if (IsOwn()) {
        if (changed) {
            constexpr std::size_t kCorners = Relief::kCells + 1;
            field.Begin(plane.Function(), relief ? AreaOf(kCorners, kCorners)
                                                 : AreaOf(static_cast<std::size_t>(columns),
                                                          static_cast<std::size_t>(rows)));
            field.Continue(kOverlayDrawTime);
        }
        repaint = repaint || changed;
    } else {
        plane.Shown();
        repaint = repaint || changed || seenComputed != plane.Computed();
        seenComputed = plane.Computed();
    }
    stale = false;
    if (!std::exchange(repaint, false))
        return;
    Paint();
    trace->ShowAll();
    trace->Show(Words(*base), Words(*shown));
}

/// Paints the base from the values computed so far.
void PlaneOverlay::Paint() {
    const auto columns = static_cast<int>(base->Bounds().Width()) + 1;
    const auto rows = static_cast<int>(base->Bounds().Height()) + 1;
    uint32* const words = Words(*base);
    const std::size_t count = static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows);
    if (relief) {
        land.Take(field, brightness);
        land.Draw(look, columns, rows, words);
        return;
    }
    if (IsOwn())
        ShowValues(brightness, field.Values(), words);
    else
        std::copy_n(static_cast<const uint32*>(plane.Shown().Bits()), count, words);
    std::for_each(words, words + count, [](uint32& word) { word |= 0xff000000; });
}

void PlaneOverlay::Pulse() {
    if (IsHidden())
        return;
    if (IsOwn() && field.Continue(kOverlayPulseTime)) {
        repaint = true;
        Invalidate();
    }
    if (stale || seenChanges != plane.Changes() || (!IsOwn() && seenComputed != plane.Computed()))
        Invalidate();
    if (!IsSilent(host.Records().voices) || (trace && !trace->IsDark()))
        StartAnimation();
    if (shownFor > 0 && --shownFor == 0)
        InvalidateLegend();
    PlaceHandles();
}

bool PlaneOverlay::Animate(float seconds) {
    AnimatePreview(seconds);
    if (moving)
        PlaceHandles();
    if (!base || view != View{plane.Scale(), plane.LinkFunction(), plane.LinkScreen()}) {
        // The next Draw starts with a new picture.
        Invalidate();
        return true;
    }
    trace->Fade(seconds);
    const bool sounds = DrawOrbits();
    const BRect extent = trace->Show(Words(*base), Words(*shown));
    if (extent.right >= extent.left)
        Invalidate({extent.left / density - 1, extent.top / density - 1, extent.right / density + 1,
                    extent.bottom / density + 1});
    return sounds || previewing || !trace->IsDark();
}

/// Draws the orbits and returns true if there is any. Orbits that nearly coincide share their line.
bool PlaneOverlay::DrawOrbits() {
    const SoundRecords& records = host.Records();
    std::array<Orbit, kVoiceSlots> orbits;
    std::vector<std::size_t> sounding;
    for (std::size_t i = 0; i < records.voices.size(); i++) {
        const voice& slot = records.voices[i];
        if (IsOver(slot, slot.state.Look()))
            continue;
        orbits[i] = OrbitOf(Look(slot), records.parameters, records.controllers);
        sounding.push_back(i);
    }
    const double spread = records.playing.Spread() * std::numbers::pi / 180;
    const double close = kClose * double(view.scale);
    for (const std::size_t i : sounding) {
        int sharers = 0, rank = 0;
        for (const std::size_t other : sounding) {
            // An orbit at infinity is not close even to itself, hence the comparison of indices.
            if (other != i && !AreClose(orbits[i], orbits[other], close))
                continue;
            sharers++;
            rank += other < i;
        }
        DrawOrbit(orbits[i], spread, kOrbitColors[i], sharers, rank);
        if (spread > 0)
            MarkEars(orbits[i], spread, kOrbitColors[i]);
    }
    return !sounding.empty();
}

/// Returns the position of a point of the plane in the view, in the screen's pixels.
std::optional<Relief::Place> PlaneOverlay::PlaceOf(double x, double y) const {
    if (relief)
        return land.PlaceOf(x, y);
    const double scale = double(view.scale);
    const double px =
        (x - double(view.link.x)) / scale + double(Bounds().Width()) * double(view.place.x) + 0.5;
    const double py = (double(view.link.y) - y) / scale +
                      double(Bounds().Height()) * (1 - double(view.place.y)) + 0.5;
    return Relief::Place{{static_cast<float>(px * double(density) - 0.5),
                          static_cast<float>(py * double(density) - 0.5)},
                         true};
}

/// Draws the part of the orbit that the two ears read in one period; they are `spread` radians
/// apart on it. `sharers` orbits share the line, and this one has the dashes whose number is `rank`
/// modulo `sharers`.
void PlaneOverlay::DrawOrbit(const Orbit& orbit, double spread, rgb_color color, int sharers,
                             int rank) {
    const double turns = std::max({std::abs(double(orbit.fx)), std::abs(double(orbit.fy)), 1.0});
    const double length = 2 * std::numbers::pi *
                          std::hypot(orbit.rx * double(orbit.fx), orbit.ry * double(orbit.fy)) /
                          double(view.scale);
    // If the length is NaN, the number of steps is kMost.
    const double wanted = std::max(length / kPointDistance, kFewest * turns);
    const int steps = wanted < kMost ? static_cast<int>(wanted) : kMost;
    const double step = (2 * std::numbers::pi + spread) / steps;
    const double beginx = orbit.phasex - double(orbit.fx) * spread / 2;
    const double beginy = orbit.phasey - double(orbit.fy) * spread / 2;
    // Dashes are fixed on the figure; they do not move with the point.
    const double dash = 2 * std::numbers::pi / (sharers * std::max(1, kDashes / sharers));
    Wave x(beginx, double(orbit.fx) * step), y(beginy, double(orbit.fy) * step);
    std::optional<Relief::Place> before;
    for (int k = 0; k <= steps; k++, x.Advance(), y.Advance()) {
        const double phasex = beginx + double(orbit.fx) * step * k;
        const bool own =
            sharers == 1 || static_cast<int64>(std::floor(phasex / dash)) % sharers == rank;
        const std::optional<Relief::Place> place =
            PlaceOf(orbit.cx + orbit.rx * x.cosine, orbit.cy + orbit.ry * y.sine);
        if (before && place) {
            const bool seen = before->visible && place->visible;
            color.alpha = !own ? kOthers : seen ? 255 : kBehind;
            trace->Line(before->point, place->point, color, kOrbitWidth * density);
        }
        before = place;
    }
}

/// Marks the points of both ears at the start of the note's next period, so that the marks stand
/// still on a closed orbit.
void PlaneOverlay::MarkEars(const Orbit& orbit, double spread, rgb_color color) {
    constexpr double kTurn = 2 * std::numbers::pi;
    const double done = orbit.fx != 0   ? orbit.phasex / (kTurn * double(orbit.fx))
                        : orbit.fy != 0 ? orbit.phasey / (kTurn * double(orbit.fy))
                                        : 0;
    const double rest = kTurn * (std::ceil(done) - done);
    const float radius = kEarRadius * density;
    for (const bool right : {false, true}) {
        const double ahead = rest + (right ? spread : -spread) / 2;
        const auto place =
            PlaceOf(orbit.cx + orbit.rx * std::cos(orbit.phasex + double(orbit.fx) * ahead),
                    orbit.cy + orbit.ry * std::sin(orbit.phasey + double(orbit.fy) * ahead));
        if (!place)
            continue;
        color.alpha = place->visible ? 255 : kBehind;
        const BPoint at = place->point;
        BPoint before = {at.x + radius, at.y};
        for (int i = 1; i <= kRingSides; i++) {
            const auto angle = static_cast<float>(kTurn * i / kRingSides);
            const BPoint next = {at.x + radius * std::cos(angle), at.y + radius * std::sin(angle)};
            trace->Line(before, next, color, density);
            if (!right)
                trace->Line(at, next, color, 2 * density);
            before = next;
        }
    }
}

void PlaneOverlay::Draw(BRect) {
    Refresh();
    DrawBitmap(shown.get(), Bounds());
    if (ShowsHandles()) {
        // Lines from the start of the centre to the other handles.
        SetHighColor({255, 255, 255, 110});
        for (std::size_t i = 1; i < handles.size(); i++) {
            const BPoint line[] = {handles.front()->Center(), handles[i]->Center()};
            StrokePath(line, 1);
        }
    }
    DrawLegend();
    if (focusShown) {
        SetHighColor(Colors().controls.accent);
        StrokeRoundRect(Bounds().InsetByCopy(1, 1), 2, 2);
    }
}

void PlaneOverlay::Tell(const std::string& text) {
    shownText = text;
    shownFor = kShownFor;
    InvalidateLegend();
}

std::string PlaneOverlay::TextOf(const PlaneHandleRow& row) const {
    const double step = PixelStep() / 10;
    std::string text = TidyText(Number(row.First()), step);
    if (row.x && row.y)
        text += ", " + TidyText(Number(*row.y), step);
    return text;
}

std::string PlaneOverlay::Legend() const {
    if (shownFor > 0)
        return shownText;
    if (noticed)
        return noticed->Row().name + (" = " + TextOf(noticed->Row()));
    if (!inside || relief)
        return "";
    const double step = PixelStep();
    const BPoint point = plane.ToPlane(pointer);
    std::string text = "x ";
    text += TidyText(double(point.x), step);
    text += "   y " + TidyText(double(point.y), step);
    text += "   f " + ValueText(double(plane.Function()(point.x, point.y)));
    return text;
}

/// Returns the place of the legend: the left bottom corner, or the top if the pointer would be on
/// it.
BRect PlaneOverlay::LegendFrame() const {
    const BRect bounds = Bounds();
    const bool below =
        inside && pointer.y > bounds.bottom - 2 * kLegendHeight && pointer.x < bounds.right * 0.7F;
    const float top = below ? 4 : bounds.bottom - 4 - kLegendHeight;
    return {4, top, bounds.right - 4, top + kLegendHeight};
}

void PlaneOverlay::InvalidateLegend() {
    Invalidate({0, 0, Bounds().right, kLegendHeight + 5});
    Invalidate({0, Bounds().bottom - kLegendHeight - 5, Bounds().right, Bounds().bottom});
}

void PlaneOverlay::DrawLegend() {
    const std::string text = Legend();
    if (text.empty())
        return;
    BRect frame = LegendFrame();
    frame.right = frame.left + StringWidth(text) + 12;
    SetHighColor(kLegendBack);
    FillRoundRect(frame, 4);
    SetHighColor(kLegendInk);
    DrawString(text, {frame.left + 6, frame.bottom - 5});
}

} // namespace vexa
