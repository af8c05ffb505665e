// SPDX-License-Identifier: GPL-3.0-or-later
#include "midi/MidiChannel.h"

#include <algorithm>

namespace vexa {

namespace {

/// Controllers of the MIDI standard.
enum : uchar {
    kDataMsb = 6,
    kVolume = 7,
    kExpression = 11,
    kDataLsb = 38,
    kOtherLsb = 98,
    kOtherMsb = 99,
    kParameterLsb = 100,
    kParameterMsb = 101,
};
constexpr uchar kNone = 127;
/// Registered parameters, with a most significant byte of 0.
enum : uchar { kRangeParameter = 0, kZoneParameter = 6 };
/// A bend of 0, of 14 bits.
constexpr int kCentre = 0x2000;

float Squared(uchar value) {
    const float part = static_cast<float>(value) / 127;
    return part * part;
}

} // namespace

void HeldKeys::Press(const Key& key) {
    Release(key.note, key.channel);
    if (count == keys.size())
        Release(keys.front().note, keys.front().channel);
    keys[count++] = key;
}

void HeldKeys::Release(uchar note, uchar channel) {
    auto* const end = keys.begin() + count;
    count = static_cast<std::size_t>(
        std::remove_if(keys.begin(), end,
                       [=](const Key& key) { return key.note == note && key.channel == channel; }) -
        keys.begin());
}

std::optional<HeldKeys::Key> HeldKeys::Last() const {
    if (count == 0)
        return std::nullopt;
    return keys[count - 1];
}

MidiChannel::Change MidiChannel::Control(uchar controller, uchar value) {
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
        if (parameterMsb == 0 && parameterLsb == kZoneParameter && controller == kDataMsb)
            return Change::Zone;
        if (parameterMsb != 0 || parameterLsb != kRangeParameter)
            return Change::None;
        if (controller == kDataMsb) {
            dataMsb = value;
            dataLsb = 0;
        } else {
            dataLsb = value;
        }
        // Semitones, and hundredths of one.
        range = static_cast<float>(dataMsb) + static_cast<float>(dataLsb) / 100;
        return Change::Bend;
    default:
        return Change::None;
    }
}

void MidiChannel::SetBend(uchar lsb, uchar msb) {
    const int value = (msb << 7 | lsb) - kCentre;
    // Either end of the wheel is the whole range.
    bend = static_cast<float>(value) / static_cast<float>(value > 0 ? kCentre - 1 : kCentre);
}

void MidiChannel::Reset() {
    bend = 0;
    expression = 1;
    parameterMsb = parameterLsb = kNone;
    sustain = sostenuto = false;
    own = kNoteBegins;
}

} // namespace vexa
