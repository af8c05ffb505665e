// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/Mutation.h"

#include "documents/ApplySound.h"
#include "documents/NumberDoubt.h"
#include "kits/maths/Functions.h"
#include "kits/support/NumberText.h"
#include "midi/Engine.h"
#include "synth/Envelope.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>

namespace vexa {

namespace {

// The notes by which loudness is measured, with their durations in seconds.

constexpr uchar kTriedKeys[] = {36, 60, 84};
constexpr uchar kTriedVelocity = 100;
constexpr double kHeld = 2, kReleased = 0.5;
/// The limits of the sample rate in Hz. Loudness needs no treble, and fewer points are computed
/// faster.
constexpr double kMostRate = 8000, kLeastRate = 500;
/// The time, in nanoseconds, that the evaluation of all points may take.
constexpr double kPatience = 2e7;

// The limits of an accepted mutation, and the number of tries.

constexpr float kLouder = 1.41F, kQuieter = 0.5F;
/// A sound whose mean is below this counts as silent. Its mutations may have any loudness up to
/// full scale.
constexpr float kSilent = 1e-4F;
constexpr int kTries = 20, kTriesOfAStrength = 4;

// The standard deviations of the changes at strength 1: relative ones of a value, a time and a
// ratio, and the absolute one of a macro.

constexpr double kOfValue = 0.1, kOfTime = 0.15, kOfMacro = 0.08, kOfRatio = 0.002;

bool IsAcceptable(const Loudness& now, const Loudness& before) {
    if (now.bounded && !before.bounded)
        return false;
    if (before.mean < kSilent)
        return now.peak <= 1;
    return now.peak <= kLouder * before.peak && now.mean <= kLouder * before.mean &&
           now.mean >= kQuieter * before.mean && now.peak >= kQuieter * before.peak;
}

/// The random numbers of one mutation.
class Dice {
  public:
    Dice(std::uint64_t seed, double strength) : generator(seed), strength(strength) {}

    bool Coin() { return generator() >> 63 != 0; }
    /// Returns a number that is about normally distributed, with `strength` as its standard
    /// deviation and 3 times that as its limit.
    double Amount() {
        double sum = 0;
        for (int i = 0; i < 12; i++)
            sum += double(generator() >> 11) * 0x1p-53;
        return std::clamp(sum - 6, -3.0, 3.0) * strength;
    }
    double Factor(double amount) { return kits::maths::Exponential(amount * Amount()); }

  private:
    std::mt19937_64 generator;
    double strength;
};

/// Multiplies the number in a text, unless the text is no finite number, or the number or the
/// product is 0.
void Scale(std::string& text, double factor) {
    const double number = kits::NumberOf(text);
    if (!NumberDoubt(text, false).empty() || !std::isfinite(number) || number == 0)
        return;
    const std::string next = kits::ShortText(number * factor);
    if (kits::NumberOf(next) != 0)
        text = next;
}

void ScaleCoefficients(Sound& sound, Dice& dice) {
    for (const Parameter& row : Parameters()) {
        const bool isRatio = row.id == ParameterId::Fx || row.id == ParameterId::Fy;
        if (!row.controller && !isRatio && dice.Coin())
            Scale(sound.texts[static_cast<std::size_t>(row.id)], dice.Factor(kOfValue));
    }
    // Only one of the two ratios changes, because a change of both would change the pitch.
    if (dice.Coin()) {
        const ParameterId id = dice.Coin() ? ParameterId::Fx : ParameterId::Fy;
        Scale(sound.texts[static_cast<std::size_t>(id)], dice.Factor(kOfRatio));
    }
}

bool IsInOrder(const std::vector<EnvPoint>& points) {
    return std::is_sorted(points.begin(), points.end(), [](const auto& a, const auto& b) {
        return a.fku != b.fku ? !a.fku : a.t < b.t;
    });
}

void MovePoints(std::vector<EnvPoint>& points, const Envelope& range, Dice& dice) {
    if (!IsInOrder(points))
        return;
    float before = 0, moved = 0;
    bool released = false;
    for (EnvPoint& point : points) {
        if (point.fku && !released)
            before = moved = 0;
        released = point.fku;
        const float end = released ? range.TimeRange() - range.Split() : range.Split();
        const float distance = point.t - before;
        before = point.t;
        // A point that lies outside the range in the document may stay there.
        moved = std::clamp(moved + distance * float(dice.Factor(kOfTime)), moved,
                           std::max({end, point.t, moved}));
        point.t = moved;
        if (dice.Coin() && point.val >= range.Minimum() && point.val <= range.Maximum())
            point.val = std::clamp(point.val * float(dice.Factor(kOfValue)), range.Minimum(),
                                   range.Maximum());
    }
}

void MoveMacros(Function& function, Dice& dice) {
    for (Function::MacroTexts& macro : function.macros) {
        const double value = kits::NumberOf(macro.value);
        const double amount = kOfMacro * dice.Amount();
        if (NumberDoubt(macro.value, false).empty() && value >= 0 && value <= 1)
            macro.value = kits::ShortText(std::clamp(value + amount, 0.0, 1.0));
    }
}

Sound Change(Sound sound, Dice dice) {
    ScaleCoefficients(sound, dice);
    for (std::size_t i = 0; i < EnvelopePlaces().size(); i++) {
        const EnvelopePlace& place = EnvelopePlaces()[i];
        MovePoints(sound.envelopes[i], Envelope(place.minimum, place.maximum, kEnvelopeTimeRange),
                   dice);
    }
    MoveMacros(sound.function, dice);
    sound.author = sound.function.author = kDefaultAuthor;
    return sound;
}

} // namespace

Loudness MeasureLoudness(const Sound& sound, const PlaneFunction& f) {
    const auto engine = std::make_unique<Engine>();
    ApplyParameters(sound, engine->parameters);
    ApplyEnvelopes(sound, engine->parameters);
    ApplyMacros(sound.function, engine->macros);
    ApplyPlaying(sound, PlayingTexts(), engine->playing);
    engine->SetFunction(f);
    const double seconds = std::size(kTriedKeys) * (kHeld + kReleased);
    const double cost = std::max(f.Source().Cost(), 1.0);
    const double rate = std::clamp(kPatience / (cost * seconds), kLeastRate, kMostRate);
    engine->renderer.SetSampleRate(rate);
    engine->renderer.SetGain(VoiceRenderer::kUsualGain);
    std::vector<float> samples(static_cast<std::size_t>(kHeld * rate));
    Loudness loudness;
    double squares = 0;
    std::size_t count = 0;
    const auto listen = [&](double length) {
        const auto piece = std::span(samples).first(static_cast<std::size_t>(length * rate));
        engine->renderer.Render(piece.data(), piece.size());
        for (const float sample : piece) {
            loudness.peak = std::max(loudness.peak, std::abs(sample));
            squares += double(sample) * double(sample);
        }
        count += piece.size();
    };
    for (const uchar key : kTriedKeys) {
        engine->consumer.NoteOn(0, key, kTriedVelocity, 0);
        listen(kHeld);
        engine->consumer.NoteOff(0, key, kTriedVelocity, 0);
        listen(kReleased);
        engine->consumer.AllNotesOff(false, 0);
    }
    loudness.mean = static_cast<float>(std::sqrt(squares / double(count)));
    loudness.bounded = engine->renderer.HasBounded();
    return loudness;
}

Sound Mutate(const Sound& sound, const PlaneFunction& f, std::uint64_t seed) {
    const Loudness before = MeasureLoudness(sound, f);
    double strength = 1;
    for (int i = 0; i < kTries; i++) {
        if (i > 0 && i % kTriesOfAStrength == 0)
            strength /= 2;
        const Sound next =
            Change(sound, Dice(seed + std::uint64_t(i) * 0x9e3779b97f4a7c15U, strength));
        if (IsAcceptable(MeasureLoudness(next, f), before))
            return next;
    }
    return sound;
}

} // namespace vexa
