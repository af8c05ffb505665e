// SPDX-License-Identifier: GPL-3.0-or-later
#include "midi/MidiChannel.h"

#include "kits/midi/ControllerNumbers.h"
#include "kits/support/RealtimeMark.h"

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

using enum kits::ControllerNumber;
using enum kits::RegisteredParameter;

/// Both bytes of the parameter number that selects no parameter.
constexpr uchar kNone = 127;
/// The widest range of the bend wheel, in semitones (MPE, MIDI Association 2018), and the largest
/// number of hundredths of a semitone.
constexpr float kWidestRange = 96;
constexpr uchar kMostHundredths = 99;
/// The 14-bit value of a centred wheel.
constexpr int kCentre = 0x2000;

VEXA_REALTIME float Squared(uchar value) {
    const float part = static_cast<float>(value) / 127;
    return part * part;
}

} // namespace

void HeldKeys::Press(const Key& key) {
    const auto ignored = [](const NoteName&) {};
    Release(key.name, ignored);
    if (count == keys.size())
        Release(keys.front().name, ignored);
    keys[count++] = key;
}

void HeldKeys::Hold(const NoteName& pattern, bool sostenuto) {
    for (std::size_t i = 0; i < count; i++) {
        if (keys[i].name.Fits(pattern))
            keys[i].sostenuto = sostenuto;
    }
}

bool HeldKeys::Has(const NoteName& name) const {
    return std::any_of(keys.begin(), keys.begin() + count,
                       [&](const Key& key) { return key.name == name; });
}

std::optional<HeldKeys::Key> HeldKeys::Last() const {
    if (count == 0)
        return std::nullopt;
    return keys[count - 1];
}

MidiChannel::Change MidiChannel::Control(uchar controller, uchar value, float usualRange) {
    switch (controller) {
    case kVolume:
        volume = Squared(value);
        return Change::Volume;
    case kExpression:
        expression = Squared(value);
        return Change::Volume;
    case kOtherLsb:
    case kOtherMsb:
        parameterMsb = parameterLsb = kNone;
        return Change::None;
    case kParameterLsb:
        parameterLsb = value;
        return Change::None;
    case kParameterMsb:
        parameterMsb = value;
        return Change::None;
    case kDataMsb:
    case kDataLsb:
        if (IsFor(kZoneParameter) && controller == kDataMsb)
            return Change::Zone;
        if (!IsFor(kRangeParameter))
            return Change::None;
        // The most significant byte comes first and clears the hundredths of an earlier range.
        if (controller == kDataMsb)
            range = {value, {}};
        else
            range.hundredths = value;
        return Change::Bend;
    case kIncrement:
    case kDecrement:
        if (!IsFor(kRangeParameter))
            return Change::None;
        range.Step(controller == kIncrement ? 1 : -1, usualRange);
        return Change::Bend;
    default:
        return Change::None;
    }
}

float MidiChannel::Range::Of(float otherwise) const {
    if (!semitones && !hundredths)
        return otherwise;
    const float whole = semitones ? static_cast<float>(*semitones) : std::floor(otherwise);
    const float rest = static_cast<float>(std::min(hundredths.value_or(0), kMostHundredths)) / 100;
    return std::min(whole + rest, kWidestRange);
}

void MidiChannel::Range::Step(int steps, float otherwise) {
    const float now = Of(otherwise), whole = std::floor(now);
    semitones =
        static_cast<uchar>(std::clamp(whole + static_cast<float>(steps), 0.0F, kWidestRange));
    hundredths = static_cast<uchar>(std::lround((now - whole) * 100));
}

void MidiChannel::SetBend(uchar lsb, uchar msb) {
    const int value = (msb << 7 | lsb) - kCentre;
    // Both ends of the wheel bend by the whole range, although the upper half has one step less.
    bend = static_cast<float>(value) / static_cast<float>(value > 0 ? kCentre - 1 : kCentre);
}

void MidiChannel::Reset() {
    bend = 0;
    expression = 1;
    parameterMsb = parameterLsb = kNone;
    sustain = sostenuto = false;
    std::copy_n(kNoteBegins.begin(), kOwnMacros, own.begin());
}

} // namespace vexa
