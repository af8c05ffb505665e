// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/strip/Scope.h"

#include "app/VexaView.h"
#include "synth/Orbit.h"
#include "views/Theme.h"

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

constexpr std::size_t kSpectrumSize = 4096;
/// The frequencies in Hz at the left and right edge of a spectrum, and the level at its bottom, in
/// dB of a full-scale sine.
constexpr float kLowest = 20;
constexpr float kHighestHertz = 20000;
constexpr float kScopeFloor = -96;
/// The largest fall of a spectrum from one refresh to the next, as a share of its height.
constexpr float kFall = 0.04F;

/// The output's length in the picture: in seconds if no note gives a period, else in periods.
constexpr float kUsualTime = 0.02F;
constexpr float kPeriods = 3;
constexpr std::size_t kLeastFrames = 64;
constexpr std::size_t kMostFrames = 4096;
/// The picture begins at an upward zero crossing after the output was below minus this share of the
/// peak.
constexpr float kArming = 0.2F;

/// The largest enlargement of a curve, as a power of two.
constexpr int kMostZoom = 10;
/// A quieter peak counts as silence and is drawn as a line at 0.
constexpr float kSilence = 1e-4F;

constexpr float kScopeLabelSize = 9;

/// Returns the exponent of the power of two that scales the peak to above 0.5 and at most 1, as far
/// as `kMostZoom` allows; 0 for silence.
int ZoomFor(float peak) {
    return peak > kSilence
               ? std::clamp(-static_cast<int>(std::ceil(std::log2(peak))), -20, kMostZoom)
               : 0;
}

} // namespace

Scope::Scope(VexaView& mainView, OutputTap* tap)
    : BView({0, 0, 180, 63}, "scope", B_FOLLOW_NONE, B_WILL_DRAW | B_FRAME_EVENTS | B_NAVIGABLE),
      mainView(mainView),
      tap(tap),
      spectrum(kSpectrumSize),
      follower(mainView.Engine()) {
    SetViewColor(Colors().scope);
    BFont font = *be_plain_font();
    font.SetSize(kScopeLabelSize);
    SetFont(&font);
    SetToolTip(tap ? "f along the newest orbit, the output, or its spectrum: a click, or Space, "
                     "shows the next"
                   : "f along the newest orbit. The output is the host's");
}

std::size_t Scope::Columns() const {
    return static_cast<std::size_t>(std::max(Bounds().Width() - 5, 8.0F));
}

void Scope::Listen(bool on) {
    listens = on;
    const bool wanted = tap && on && mode != Mode::Orbit;
    if (wanted && !listener)
        listener.emplace(*tap);
    if (!wanted)
        listener.reset();
}

void Scope::SetMode(Mode next) {
    mode = tap ? next : Mode::Orbit;
    curve.clear();
    path = {};
    Listen(listens);
    Refresh();
    Invalidate();
}

void Scope::Refresh() {
    switch (mode) {
    case Mode::Orbit:
        return LookAtOrbit();
    case Mode::Output:
        return LookAtOutput();
    case Mode::Spectrum:
        return LookAtSpectrum();
    }
}

void Scope::Take(std::vector<float> next, const std::string& text) {
    if (next == curve && text == caption)
        return;
    curve = std::move(next);
    caption = text;
    Invalidate();
}

void Scope::TakeScaled(std::vector<float> next, const char* text) {
    float peak = 0;
    for (const float value : next)
        peak = std::max(peak, std::abs(value));
    const int zoom = ZoomFor(peak);
    for (float& value : next)
        value = peak > kSilence ? std::ldexp(value, zoom) : 0;
    std::string scale;
    if (zoom > 0)
        scale = "  \u00d7 " + std::to_string(1 << zoom);
    else if (zoom < 0)
        scale = "  \u00f7 " + std::to_string(1 << -zoom);
    Take(std::move(next), text + scale);
}

void Scope::LookAtOrbit() {
    const PlaneFunction& shown = mainView.ShownFunction();
    if (&shown.Source() != &function.Source()) {
        function = shown;
        follower.Take(shown);
    }
    const std::optional<PlaneFunction> next = follower.Next();
    const OrbitPath now = NewestOrbit(mainView.Engine());
    if (!next && now == path && curve.size() == Columns())
        return;
    heard = next.value_or(heard);
    path = now;
    std::vector<float> values(Columns());
    FollowOrbit(heard, path, values);
    TakeScaled(std::move(values), "f along the newest orbit");
}

/// Copies the newest `count` frames and the mean of both channels. Returns false if there are not
/// that many.
bool Scope::Newest(std::size_t count) {
    frames.resize(count);
    mono.resize(count);
    const uint64 end = listener ? listener->Count() : 0;
    if (end < count || !listener->Copy(end - count, frames))
        return false;
    std::transform(frames.begin(), frames.end(), mono.begin(),
                   [](const OutputFrame& frame) { return (frame.left + frame.right) / 2; });
    return true;
}

void Scope::LookAtOutput() {
    const VoiceTable& voices = mainView.Engine().voices;
    const int newest = NewestSlot(voices);
    const float rate = listener ? listener->Rate() : 0;
    const float pitch = newest >= 0 ? float(voices[static_cast<std::size_t>(newest)].pitch) : 0;
    const float time = pitch > 0 ? kPeriods / pitch : kUsualTime;
    const auto count = std::clamp(static_cast<std::size_t>(std::max(rate * time, 0.0F)),
                                  kLeastFrames, kMostFrames);
    std::vector<float> next(Columns());
    if (!Newest(2 * count))
        return Take(std::move(next), "output");
    // Begin where the wave rises through 0, so that the picture stands still.
    float peak = 0;
    for (const float value : mono)
        peak = std::max(peak, std::abs(value));
    std::size_t start = count;
    bool armed = false;
    for (std::size_t i = 0; i < count; i++) {
        armed = armed || mono[i] < -kArming * peak;
        if (armed && mono[i] >= 0) {
            start = i;
            armed = false;
        }
    }
    for (std::size_t i = 0; i < next.size(); i++) {
        // A column shows its first sample, as a mean over the column would blur the curve.
        next[i] = mono[start + i * count / next.size()];
    }
    TakeScaled(std::move(next), "output");
}

void Scope::LookAtSpectrum() {
    std::vector<float> next(Columns());
    const float rate = listener ? listener->Rate() : 0;
    if (Newest(kSpectrumSize) && rate > 0) {
        const std::span<const float> amplitudes = spectrum.Amplitudes(mono);
        const auto columns = static_cast<float>(next.size());
        const auto binAt = [&](float column) {
            const float hertz = kLowest * std::pow(kHighestHertz / kLowest, column / columns);
            return hertz * float(kSpectrumSize) / rate;
        };
        for (std::size_t i = 0; i < next.size(); i++) {
            const float from = binAt(static_cast<float>(i));
            const auto first = static_cast<std::size_t>(std::round(from));
            const auto last = std::max(
                first + 1, static_cast<std::size_t>(std::round(binAt(static_cast<float>(i + 1)))));
            float most = 0;
            for (std::size_t k = first; k < last && k < amplitudes.size(); k++)
                most = std::max(most, amplitudes[k]);
            const float decibels = 20 * std::log10(std::max(most, 1e-9F));
            next[i] = std::clamp(1 - decibels / kScopeFloor, 0.0F, 1.0F);
        }
    }
    for (std::size_t i = 0; i < next.size() && i < curve.size(); i++)
        next[i] = std::max(next[i], curve[i] - kFall);
    Take(std::move(next), "spectrum, 20 Hz to 20 kHz");
}

kits::AccessibleThing Scope::Describe() const {
    kits::AccessibleThing scope;
    scope.role = kits::AccessibleRole::Chart;
    scope.name = Name();
    scope.description = caption;
    scope.action = "Next";
    return scope;
}

void Scope::Activate(std::optional<std::size_t>) {
    SetMode(static_cast<Mode>((static_cast<int>(mode) + 1) % 3));
}

void Scope::MouseDown(BPoint) {
    Activate(std::nullopt);
}

bool Scope::KeyDown(const kits::KeyPress& press) {
    const bool back = press.key == kits::Key::Left || press.key == kits::Key::Up;
    const bool on = press.key == kits::Key::Right || press.key == kits::Key::Down ||
                    press.key == kits::Key::Enter || press.character == U' ';
    if (!back && !on)
        return false;
    SetMode(static_cast<Mode>((static_cast<int>(mode) + (back ? 2 : 1)) % 3));
    return true;
}

void Scope::FrameResized(float, float) {
    curve.clear();
    Refresh();
}

void Scope::Draw(BRect) {
    const Theme& colors = Colors();
    const BRect bounds = Bounds();
    const float left = 3;
    font_height height;
    GetFontHeight(&height);
    const float top = std::ceil(height.ascent) + 4;
    const float middle = std::round((top + bounds.bottom - 3) / 2);
    const float half = bounds.bottom - 4 - middle;
    const bool isSpectrum = mode == Mode::Spectrum;
    SetHighColor({60, 60, 66});
    if (!isSpectrum)
        StrokeLine({left, middle}, {bounds.right - left, middle});
    SetHighColor(colors.barQuietText);
    DrawString(CutToFit(caption, bounds.right - 2 * left - 2),
               {left + 2, std::ceil(height.ascent) + 2});
    std::vector<BPoint> points(curve.size());
    for (std::size_t i = 0; i < curve.size(); i++) {
        const float y =
            isSpectrum ? bounds.bottom - 3 - curve[i] * 2 * half : middle - curve[i] * half;
        points[i] = {left + static_cast<float>(i), y};
    }
    SetHighColor(colors.scopeLine);
    StrokePath(points, 1.25F);
    if (IsFocus()) {
        SetHighColor(colors.accent);
        StrokeRoundRect(bounds.InsetByCopy(0.5F, 0.5F), 1, 2);
    }
}

} // namespace vexa
