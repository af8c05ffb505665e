// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ScreenPiano.h"

#include "kits/midi/ControllerNumbers.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vexa {

namespace {

constexpr uchar kReleaseVelocity = 64;
constexpr int kMiddle = 8192;

} // namespace

void ScreenPiano::SetChannel(uchar next) {
    ReleaseAll();
    source.SetChannel(next);
}

void ScreenPiano::Press(uchar key, uchar velocity) {
    if (!down.insert(key).second)
        return;
    if (kept.erase(key) > 0)
        source.NoteOff(key, kReleaseVelocity);
    source.NoteOn(key, velocity);
}

void ScreenPiano::Release(uchar key) {
    if (down.erase(key) == 0)
        return;
    if (hold)
        kept.insert(key);
    else
        source.NoteOff(key, kReleaseVelocity);
}

void ScreenPiano::SetHold(bool on) {
    if (on == hold)
        return;
    hold = on;
    source.ControlChange(kits::kSustain, on ? 127 : 0);
    if (on)
        return;
    for (const uchar key : std::exchange(kept, {}))
        source.NoteOff(key, kReleaseVelocity);
}

void ScreenPiano::Bend(float amount) {
    const float next = std::clamp(amount, -1.0F, 1.0F);
    if (next == bent)
        return;
    bent = next;
    const int value = kMiddle + static_cast<int>(std::lround(next * float(kMiddle)));
    source.PitchBend(std::min(value, 2 * kMiddle - 1));
}

void ScreenPiano::Modulate(float amount) {
    source.ControlChange(kits::kModulation,
                         static_cast<uchar>(std::lround(std::clamp(amount, 0.0F, 1.0F) * 127)));
}

void ScreenPiano::ReleaseAll() {
    SetHold(false);
    for (const uchar key : std::exchange(down, {}))
        source.NoteOff(key, kReleaseVelocity);
    Bend(0);
}

} // namespace vexa
