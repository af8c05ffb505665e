// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/R2RFView.h"

#include "kits/interface/Window.h"
#include "synth/Envelope.h"
#include "synth/Orbit.h"
#include "views/ImageExport.h"
#include "views/R2RFVTranslatorSavePanel.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vexa {

namespace {

/// The message code of the export panel's result.
constexpr uint32 kSaveImage = FourCC("SIMG");

/// Radians between the marks of an orbit: 51 of them in a revolution.
constexpr float kMarkStep = 0.1231997087597847F;
constexpr double kRevolution = 6.28318530718;
constexpr uint8 kMarkGreen = 200;
constexpr rgb_color kOrbitColor = {0, 200, 0, 255};
constexpr std::size_t kPixelBytes = 4;
/// The time for computing the picture before it is drawn, and at each of the ten pulses per second.
/// Both are short enough for the window to stay responsive.
constexpr auto kDrawTime = std::chrono::milliseconds(40);
constexpr auto kPulseTime = std::chrono::milliseconds(30);
/// The offset of the green byte within a pixel.
constexpr std::size_t kGreenByte = 1;

} // namespace

R2RFView::R2RFView(BRect frame, const char* name, BPoint linkFunction, BPoint linkScreen,
                   float scale, uint32 resizingMode)
    : BView(frame, name, resizingMode, B_WILL_DRAW | B_FRAME_EVENTS | B_PULSE_NEEDED),
      linkFunctionX(linkFunction.x),
      linkFunctionY(linkFunction.y),
      linkScreenX(linkScreen.x),
      linkScreenY(linkScreen.y),
      scale(scale) {
    marks.reserve(kMostMarks);
    SetViewColor(B_TRANSPARENT_COLOR);
    Compute(kPulseTime);
    BMessenger self(this);
    savePanel = std::make_unique<R2RFVTranslatorSavePanel>(
        "TranslatorSavePanel", &self, nullptr, B_FILE_NODE, false, new BMessage(kSaveImage),
        nullptr, false, true);
}

R2RFView::~R2RFView() = default;

void R2RFView::MessageReceived(BMessage* message) {
    if (message->what == kSaveImage)
        SaveImage(*message);
    else
        BView::MessageReceived(message);
}

void R2RFView::MouseDown(BPoint where) {
    uint32 buttons = 0;
    GetMouse(&where, &buttons, true);
    if (buttons == B_SECONDARY_MOUSE_BUTTON)
        ShowSavePanel();
}

void R2RFView::ShowSavePanel() {
    savePanel->SetTarget(BMessenger(this));
    savePanel->Window()->SetWorkspaces(B_CURRENT_WORKSPACE);
    savePanel->Show();
}

void R2RFView::SaveImage(const BMessage& message) {
    const std::optional<ImageRequest> request = ReadImageRequest(message);
    if (!request)
        return;
    ExportImage(*request, [this](int32 size) {
        const auto n = static_cast<float>(size);
        const float shown = std::max(Frame().Width(), Frame().Height()) * scale;
        // A picture of one pixel (size 0) shows all of it in that pixel.
        return MakeBitmap({0, 0, n, n}, shown / std::max(n, 1.0F));
    });
}

void R2RFView::SetFunction(const PlaneFunction& next) {
    function = next;
    Change();
}

void R2RFView::SetScale(float next) {
    scale = next;
    Change();
}

void R2RFView::SetLinkFunctionX(float x) {
    linkFunctionX = x;
    Change();
}

void R2RFView::SetLinkFunctionY(float y) {
    linkFunctionY = y;
    Change();
}

void R2RFView::SetLinkScreenX(float x) {
    linkScreenX = x;
    Change();
}

void R2RFView::SetLinkScreenY(float y) {
    linkScreenY = y;
    Change();
}

void R2RFView::Change() {
    SetupBitmap();
    Invalidate();
    // Child views that show the picture are redrawn at once too.
    for (BView* child : Children())
        child->Invalidate();
}

void R2RFView::SetupBitmap() {
    stale = true;
    changes++;
    // The next one begins anew: this one would go on with the new function below what it has drawn
    // of the old one.
    drawing.reset();
}

/// Continues an incomplete picture for about `time`.
void R2RFView::Compute(std::chrono::steady_clock::duration time) {
    if (stale) {
        stale = false;
        drawingTime = {};
        // The old picture stays visible until the new one replaces it part by part, so that there
        // is no gap while the user moves the plane.
        if (!bitmap || bitmap->Bounds() != Frame()) {
            marks.clear();
            bitmap = std::make_unique<BBitmap>(Frame(), B_RGB32);
        }
        EraseMarks();
        if (bitmap->IsValid())
            drawing = std::make_unique<PlaneDrawing>(function, Area(*bitmap, scale),
                                                     static_cast<uint32*>(bitmap->Bits()));
    }
    if (!drawing)
        return;
    computed++;
    const auto start = std::chrono::steady_clock::now();
    if (drawing->Continue(time))
        drawing.reset();
    drawingEnd = std::chrono::steady_clock::now();
    drawingTime += drawingEnd - start;
}

bool R2RFView::IsRested() const {
    return IsComplete() && std::chrono::steady_clock::now() - drawingEnd >= 3 * drawingTime;
}

void R2RFView::SetSoundParam(const ControllerTable* controllers, const sound_param* parameters,
                             const VoiceTable* table) {
    ctlvalue = controllers;
    soundParam = parameters;
    voices = table;
    hasSoundParam = true;
}

std::unique_ptr<BBitmap> R2RFView::MakeBitmap(BRect rect, float s) const {
    auto picture = std::make_unique<BBitmap>(rect, B_RGB32);
    if (!picture->IsValid())
        return picture;
    DrawPlane(function, Area(*picture, s), static_cast<uint32*>(picture->Bits()));
    return picture;
}

/// Returns the area of the plane that `picture` shows at `s` plane units per pixel.
PlaneArea R2RFView::Area(const BBitmap& picture, float s) const {
    const auto columns = static_cast<std::size_t>(picture.BytesPerRow()) / kPixelBytes;
    const auto rows = static_cast<std::size_t>(picture.Bounds().IntegerHeight()) + 1;
    return {linkFunctionX, linkFunctionY, linkScreenX, linkScreenY, s, columns, rows};
}

const BBitmap& R2RFView::Shown() {
    Compute(kDrawTime);
    return *bitmap;
}

void R2RFView::Draw(BRect) {
    DrawBitmap(&Shown(), Bounds(), true);
}

void R2RFView::FrameResized(float, float) {
    Change();
}

BPoint R2RFView::ToPlane(BPoint point) const {
    const BRect frame = Frame();
    return {linkFunctionX + (point.x - frame.Width() * linkScreenX) * scale,
            linkFunctionY - (point.y - frame.Height() * (1 - linkScreenY)) * scale};
}

void R2RFView::ShowMarks(bool on) {
    showsMarks = on;
}

BPoint R2RFView::ToView(float x, float y) const {
    const BRect frame = Frame();
    return {(x - linkFunctionX) / scale + frame.Width() * linkScreenX,
            (linkFunctionY - y) / scale + frame.Height() * (1 - linkScreenY)};
}

/// Returns an empty extent, which grows by std::min and std::max to the points added to it.
BRect R2RFView::EmptyRect() const {
    return {float(bitmap->BytesPerRow()), float(bitmap->Bounds().IntegerHeight() + 1), 0, 0};
}

void R2RFView::EraseMarks() {
    auto* bits = static_cast<uint8*>(bitmap->Bits());
    while (!marks.empty()) {
        bits[marks.back()] = 0;
        marks.pop_back();
    }
}

void R2RFView::Pulse() {
    if (!IsComplete()) {
        Compute(kPulseTime);
        Invalidate();
    }
    EraseMarks();
    prevDirty = dirty;
    dirty = EmptyRect();
    // An incomplete picture would be drawn over the marks.
    if (hasSoundParam && showsMarks && IsComplete()) {
        for (int32 slot = 0; slot < kVoiceSlots; slot++) {
            if ((*voices)[static_cast<std::size_t>(slot)].state.Look().Active())
                DrawSoundPath(slot, kMarkStep);
        }
    }
    const BRect both = {std::min(prevDirty.left, dirty.left), std::min(prevDirty.top, dirty.top),
                        std::max(prevDirty.right, dirty.right),
                        std::max(prevDirty.bottom, dirty.bottom)};
    // A vertical or horizontal orbit has an extent of zero width or height, which is not empty.
    if (both.right >= both.left && both.bottom >= both.top)
        Invalidate(both.InsetByCopy(-1, -1));
}

void R2RFView::MarkPixel(BPoint point) {
    dirty = {std::min(dirty.left, point.x), std::min(dirty.top, point.y),
             std::max(dirty.right, point.x), std::max(dirty.bottom, point.y)};
    // Coordinates are truncated toward zero, so a point less than a pixel outside counts as inside.
    // NaN fails every comparison.
    const int32 pixels = bitmap->BytesPerRow() / int32(kPixelBytes);
    const auto columns = static_cast<float>(pixels);
    const auto rows = static_cast<float>(bitmap->Bounds().IntegerHeight() + 1);
    if (!(point.x > -1 && point.x < columns && point.y > -1 && point.y < rows) ||
        marks.size() == kMostMarks)
        return;
    const auto offset = static_cast<std::size_t>(int32(point.y) * bitmap->BytesPerRow()) +
                        static_cast<std::size_t>(int32(point.x)) * kPixelBytes + kGreenByte;
    static_cast<uint8*>(bitmap->Bits())[offset] = kMarkGreen;
    marks.push_back(offset);
}

void R2RFView::DrawSoundPath(int32 slot, float step) {
    const VoiceView v = Look((*voices)[static_cast<std::size_t>(slot)]);
    const sound_param& p = *soundParam;
    const float dt = step * (1 / v.freq);
    auto cx = static_cast<float>(v.cx);
    auto cy = static_cast<float>(v.cy);
    auto phasex = static_cast<float>(v.phasex);
    auto phasey = static_cast<float>(v.phasey);
    auto t = static_cast<float>(v.t);
    const auto envelope = [&](const Envelope& curve, std::size_t i) {
        return curve.Value(t, v.released, v.rellevel[i]);
    };
    const auto [wcx, wcy, restx, resty, wax, way] = SumsOf(v, *soundParam, *ctlvalue);
    for (float a = 0; double(a) <= kRevolution; a += step) {
        t += dt;
        const double dCx = envelope(*p.EnvCx, 0) * wcx + restx;
        const double dCy = envelope(*p.EnvCy, 1) * wcy + resty;
        const double Ax = envelope(*p.EnvAx, 2) * wax;
        const double Ay = envelope(*p.EnvAy, 3) * way;
        const auto x = static_cast<float>(cx + Ax * std::cos(double(phasex)));
        const auto y = static_cast<float>(cy + Ay * std::sin(double(phasey)));
        MarkPixel(ToView(x, y));
        cx += dt * static_cast<float>(dCx);
        cy += dt * static_cast<float>(dCy);
        phasex += step * p.Fx;
        phasey += step * p.Fy;
    }
}

void R2RFView::DrawSoundPath(int32 slot, float from, float to, float step) {
    const VoiceView v = Look((*voices)[static_cast<std::size_t>(slot)]);
    const sound_param& p = *soundParam;
    const OrbitSums sums = SumsOf(v, *soundParam, *ctlvalue);
    const auto envelope = [&v](const Envelope& curve, std::size_t i) {
        return curve.Value(static_cast<float>(v.t), v.released, v.rellevel[i]);
    };
    const double Ax = envelope(*p.EnvAx, 2) * sums[4];
    const double Ay = envelope(*p.EnvAy, 3) * sums[5];
    SetHighColor(kOrbitColor);
    const auto steps = static_cast<int32>((to - from) / step);
    for (int32 k = 0; k <= steps; k++) {
        const float time = from + float(k) * step;
        const double angle = kRevolution * double(v.freq) * double(time);
        const BPoint point = ToView(static_cast<float>(v.cx + Ax * std::cos(angle * double(p.Fx))),
                                    static_cast<float>(v.cy + Ay * std::sin(angle * double(p.Fy))));
        if (k == 0)
            MovePenTo(point);
        else
            StrokeLine(point);
    }
}

void R2RFView::DrawLissajous(float startPhaseX, float startPhaseY, float centerX, float centerY,
                             float ratioX, float ratioY, float radiusX, float radiusY) {
    constexpr int kStrokes = 100;
    constexpr float kStep = 0.062831F;
    SetHighColor(kOrbitColor);
    for (int k = 0; k <= kStrokes; k++) {
        const float angle = kStep * float(k);
        const BPoint point = ToView(centerX + radiusX * std::cos(startPhaseX + angle * ratioX),
                                    centerY + radiusY * std::sin(startPhaseY + angle * ratioY));
        if (k == 0)
            MovePenTo(point);
        else
            StrokeLine(point);
    }
}

float R2RFView::f(float x, float y) {
    return std::clamp((x * x * y + x * y * y - x * y) / (x * x + y * y + 1), -1.0F, 1.0F);
}

} // namespace vexa
