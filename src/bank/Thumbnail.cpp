// SPDX-License-Identifier: GPL-3.0-or-later
#include "bank/Thumbnail.h"

#include "documents/ApplySound.h"
#include "functions/PictureFunction.h"
#include "functions/SampleFunction.h"
#include "instrument/Instrument.h"
#include "instrument/PlaneFollower.h"
#include "instrument/PlayableFormula.h"
#include "instrument/ShownFunction.h"
#include "kits/support/NumberText.h"
#include "kits/support/ThreadTime.h"
#include "synth/Coefficients.h"
#include "synth/EnvelopeCurve.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <utility>
#include <vector>

namespace vexa {

namespace {

/// The maximum time for a fine picture, in CPU time of the thread, so that the load of other
/// threads does not make pictures coarse.
constexpr auto kMostTime = std::chrono::milliseconds(20);
/// The longest sample that is drawn, in frames; its decoding takes a few tenths of a second.
constexpr int64 kMostFrames = 120 * 48000;
/// The side, in pixels, of the squares with one value in a coarse picture.
constexpr std::size_t kCoarse = 4;
/// The exponent of the brightness: a value of 0.1 is shown with a quarter of the full brightness.
constexpr float kBrightness = 0.6F;
/// The maximum number of drawn turns of one oscillator; more of them would fill a small picture.
constexpr float kMostTurns = 12;
constexpr float kOrbit[] = {64, 224, 80};

/// Returns the function of a sample, or a silent function if the sample is too long.
kits::Result<PlaneFunction> SampleFunctionOf(const Function& function,
                                             const kits::ProgramFolders& folders) {
    const std::filesystem::path path = FileOf(function, folders).value_or("");
    const kits::Result<int64> length = SampleLength(path);
    if (!length)
        return length.Fault();
    if (*length < 0 || *length > kMostFrames)
        return PlaneFunction(nullfunc);
    const kits::Result<LoadedSample> loaded = LoadSample(path);
    if (!loaded)
        return loaded.Fault();
    const auto winding =
        WindingFor(loaded->frames->size(), loaded->frameRate, kits::NumberOf(function.frequency));
    return PlaneFunction(
        std::make_shared<SampleSpiral>(loaded->frames, winding.value_or(Winding())));
}

kits::Result<PlaneFunction> PictureFunctionOf(const Function& function,
                                              const kits::ProgramFolders& folders) {
    const kits::Result<Picture> loaded = LoadPicture(FileOf(function, folders).value_or(""));
    if (!loaded)
        return loaded.Fault();
    return PlaneFunction(std::make_shared<PictureTerrain>(*loaded));
}

kits::Result<PlaneFunction> ExpressionFunctionOf(const Sound& sound,
                                                 const ControllerTable& controllers) {
    const Function& function = sound.function;
    const PlayableFormula read = ReadPlayable(function.expression);
    if (!read.formula)
        return kits::Error{"formula: " + read.reason};
    const PlaneFunction f = read.formula;
    if (f.Source().Inputs().empty())
        return f;
    Macros macros;
    ApplyMacros(function, macros);
    for (Macro& macro : macros)
        macro.now = float(macro.value);
    Playing playing;
    ApplyPlaying(sound, {}, playing);
    return PlaneFunction(std::make_shared<ShownFunction>(
        f, InputsOf(f.Source(), kShownNote, macros, controllers, {playing, macros})));
}

kits::Result<PlaneFunction> FunctionOf(const Sound& sound, const kits::ProgramFolders& folders,
                                       const ControllerTable& controllers) {
    switch (sound.function.kind) {
    case FunctionKind::Sample:
        return SampleFunctionOf(sound.function, folders);
    case FunctionKind::Picture:
        return PictureFunctionOf(sound.function, folders);
    case FunctionKind::Expression:
        break;
    }
    return ExpressionFunctionOf(sound, controllers);
}

/// The position of a picture of size by size pixels on the plane, as in PlaneArea: the plane's
/// units per pixel, and the coordinates of the left and the top edge.
struct Area {
    Area(const Function& function, std::size_t size)
        : scale(WidthIn(function.width).value_or(Number(Function().width)) /
                static_cast<float>(size)),
          left(Number(function.linkFunction.x) - Number(function.linkScreen.x) * Extent(size)),
          top(Number(function.linkFunction.y) +
              (1 - Number(function.linkScreen.y)) * Extent(size)) {}

    static float Number(const std::string& text) {
        return static_cast<float>(kits::NumberOf(text));
    }
    float Extent(std::size_t size) const { return scale * static_cast<float>(size); }

    float scale, left, top;
};

/// Returns f at the centre of each square of `step` by `step` pixels, row after row.
std::vector<float> Values(const PlaneFunction& f, const Area& area, std::size_t size,
                          std::size_t step) {
    const std::size_t columns = size / step;
    std::vector<float> x(columns), y(columns), values(columns * columns);
    const auto place = [step](std::size_t i) {
        return static_cast<float>(i * step) + static_cast<float>(step - 1) / 2;
    };
    for (std::size_t c = 0; c < columns; c++)
        x[c] = area.left + place(c) * area.scale;
    for (std::size_t r = 0; r < columns; r++) {
        std::fill(y.begin(), y.end(), area.top - place(r) * area.scale);
        f.Evaluate(x.data(), y.data(), &values[r * columns], columns);
    }
    return values;
}

void DrawTerrain(const PlaneFunction& f, const Area& area, std::size_t size, uint8* pixels) {
    const std::chrono::nanoseconds start = kits::ThreadTime();
    std::size_t step = kCoarse;
    std::vector<float> values = Values(f, area, size, step);
    if ((kits::ThreadTime() - start) * (kCoarse * kCoarse) < kMostTime)
        values = Values(f, area, size, step = 1);
    const std::size_t columns = size / step;
    for (std::size_t i = 0; i < size * size; i++) {
        const std::size_t row = std::min(i / size / step, columns - 1);
        const std::size_t column = std::min(i % size / step, columns - 1);
        const float value = values[row * columns + column];
        if (!std::isfinite(value))
            continue;
        const float light = std::pow(std::min(std::abs(value), 1.0F), kBrightness);
        pixels[i * 4 + (value > 0 ? 0 : 2)] = static_cast<uint8>(255 * light);
    }
}

struct Orbit {
    float centreX, centreY, radiusX, radiusY, turnsX, turnsY;
};

/// Returns the largest absolute value of envelope number `place` while the key is down, times
/// `sum`, the weighted sum of a radius.
float Largest(const std::vector<EnvPoint>& points, std::size_t place, float sum) {
    const EnvelopePlace& row = EnvelopePlaces()[place];
    const EnvelopeCurve curve(points, std::max(row.minimum, 0.0F));
    float most = std::abs(curve.Value(0, false, 0));
    for (const EnvPoint& point : points) {
        if (!point.fku)
            most = std::max(most, std::abs(curve.Value(point.t, false, 0)));
    }
    return most * sum;
}

Orbit OrbitOf(const Sound& sound, const ControllerTable& controllers) {
    sound_param p;
    ApplyParameters(sound, p);
    const auto sum = [&](const CoefficientGroup& group) {
        const Weights weights = group.For(p, controllers, kShownNote.vel, kShownNote.key);
        return static_cast<float>(weights.c0 + weights.rest);
    };
    return {sum(kCx0),
            sum(kCy0),
            Largest(sound.envelopes[2], 2, sum(kAx)),
            Largest(sound.envelopes[3], 3, sum(kAy)),
            p.Fx,
            p.Fy};
}

/// Returns the number of periods of the note after which the orbit closes; 1 if these would be more
/// than kMostTurns allows.
float PeriodsOf(const Orbit& orbit) {
    constexpr float kNear = 0.02F;
    const auto closes = [](float turns) { return std::abs(turns - std::round(turns)) < kNear; };
    const float most = std::max(std::abs(orbit.turnsX), std::abs(orbit.turnsY));
    for (float periods = 1; periods * most < kMostTurns && periods < kMostTurns; periods++) {
        if (closes(periods * orbit.turnsX) && closes(periods * orbit.turnsY))
            return periods;
    }
    return 1;
}

void DrawOrbit(const Orbit& orbit, const Area& area, std::size_t size, uint8* pixels) {
    // The share of each pixel that the line, about one pixel wide, covers.
    std::vector<float> covered(size * size);
    const auto mark = [&](std::size_t column, std::size_t row, float share) {
        if (column < size && row < size)
            covered[row * size + column] = std::max(covered[row * size + column], share);
    };
    const float end = 2 * std::numbers::pi_v<float> * PeriodsOf(orbit);
    const float length =
        end * (std::abs(orbit.radiusX * orbit.turnsX) + std::abs(orbit.radiusY * orbit.turnsY)) /
        area.scale;
    if (!std::isfinite(length))
        return;
    const int steps = static_cast<int>(std::clamp(2 * length, 64.0F, 20000.0F));
    for (int i = 0; i < steps; i++) {
        const float angle = end * static_cast<float>(i) / static_cast<float>(steps);
        const float x = orbit.centreX + orbit.radiusX * std::cos(orbit.turnsX * angle);
        const float y = orbit.centreY + orbit.radiusY * std::sin(orbit.turnsY * angle);
        const float column = (x - area.left) / area.scale;
        const float row = (area.top - y) / area.scale;
        const auto edge = static_cast<float>(size);
        if (!(column >= 0 && column < edge && row >= 0 && row < edge))
            continue;
        const auto c = static_cast<std::size_t>(column);
        const auto r = static_cast<std::size_t>(row);
        const float right = column - static_cast<float>(c);
        const float below = row - static_cast<float>(r);
        mark(c, r, (1 - right) * (1 - below));
        mark(c + 1, r, right * (1 - below));
        mark(c, r + 1, (1 - right) * below);
        mark(c + 1, r + 1, right * below);
    }
    for (std::size_t i = 0; i < covered.size(); i++) {
        // A point between four pixels marks only a quarter of each, although the line through them
        // covers more, hence the factor.
        const float share = std::min(1.0F, 1.6F * covered[i]);
        for (std::size_t k = 0; k < 3; k++) {
            uint8& byte = pixels[i * 4 + k];
            const float colour = kOrbit[2 - k];
            byte = static_cast<uint8>(static_cast<float>(byte) * (1 - share) + colour * share);
        }
    }
}

} // namespace

Thumbnail DrawThumbnail(const Sound& sound, const kits::ProgramFolders& folders, int size) {
    const ControllerTable controllers;
    const kits::Result<PlaneFunction> f = FunctionOf(sound, folders, controllers);
    if (!f)
        return {nullptr, f.Fault().text};
    const auto side = static_cast<float>(size - 1);
    auto picture = std::make_shared<BBitmap>(BRect{0, 0, side, side}, B_RGB32);
    if (!picture->IsValid())
        return {};
    const auto pixels = static_cast<std::size_t>(size);
    const Area area(sound.function, pixels);
    auto* const bits = static_cast<uint8*>(picture->Bits());
    DrawTerrain(*f, area, pixels, bits);
    DrawOrbit(OrbitOf(sound, controllers), area, pixels, bits);
    return {std::move(picture), ""};
}

} // namespace vexa
