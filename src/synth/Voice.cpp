// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/Voice.h"

#include "kits/support/RealtimeMark.h"

#include <algorithm>

namespace vexa {

namespace {

/// Returns true if the published state belongs to the slot's note as it is now, or as it was before
/// its pitch changed. `rendered` is read first: the media thread writes it last, so a match
/// confirms the other values.
VEXA_REALTIME bool Rendered(const voice& slot, VoiceState::Seen seen) {
    return slot.rendered == seen.Changes() || (slot.renderednotes == slot.notes && !slot.released);
}

} // namespace

double Seconds(const voice& slot, VoiceState::Seen seen) {
    return Rendered(slot, seen) ? double(slot.t) : 0.0;
}

OwnValues OwnOf(const voice& slot) {
    OwnValues own;
    std::copy(slot.own.begin(), slot.own.end(), own.begin());
    return own;
}

bool IsOver(const voice& slot, VoiceState::Seen seen) {
    return !seen.Active() || (Rendered(slot, seen) && slot.over);
}

bool IsSilent(const VoiceTable& voices) {
    return CountHeard(voices) == 0;
}

int CountHeard(const VoiceTable& voices) {
    return static_cast<int>(std::count_if(voices.begin(), voices.end(), [](const voice& slot) {
        return !IsOver(slot, slot.state.Look());
    }));
}

VoiceView Look(const voice& slot) {
    const bool rendered = Rendered(slot, slot.state.Look());
    VoiceView view{};
    view.released = slot.released;
    // A release restarts the time, and the orbit continues from its place.
    view.t = rendered ? double(slot.t) : 0.0;
    if (rendered || view.released) {
        view.phasex = slot.phasex;
        view.phasey = slot.phasey;
        view.cx = slot.cx;
        view.cy = slot.cy;
    } else {
        view.cx = slot.startcx;
        view.cy = slot.startcy;
    }
    view.freq = rendered ? slot.pitch : slot.freq;
    if (rendered)
        std::copy(slot.sums.begin(), slot.sums.end(), view.sums.emplace().begin());
    view.vel = slot.vel;
    view.key = slot.key;
    std::copy(slot.rellevel.begin(), slot.rellevel.end(), view.rellevel.begin());
    return view;
}

int CountActive(const VoiceTable& voices) {
    return static_cast<int>(std::count_if(voices.begin(), voices.end(), [](const voice& slot) {
        return slot.state.Look().Active();
    }));
}

Choice LongestVoice(const VoiceTable& voices) {
    for (const bool released : {true, false}) {
        Choice choice{-1, VoiceState::Seen(0)};
        float longest = 0;
        for (int i = 0; i < kVoiceSlots; i++) {
            const VoiceState::Seen seen = voices[i].state.Look();
            if (!seen.Active() || voices[i].released != released)
                continue;
            const double seconds = Seconds(voices[i], seen);
            if (seconds >= longest) {
                longest = static_cast<float>(seconds);
                choice = {i, seen};
            }
        }
        if (choice.slot >= 0)
            return choice;
    }
    return {-1, VoiceState::Seen(0)};
}

void SilenceReleased(VoiceTable& voices, Released which) {
    for (voice& slot : voices) {
        const VoiceState::Seen seen = slot.state.Look();
        if (slot.released && (which == Released::All || IsOver(slot, seen)))
            slot.state.Silence(seen);
    }
}

bool ReduceVoicesByOne(VoiceTable& voices) {
    for (int attempt = 0; attempt < kVoiceSlots; attempt++) {
        const Choice choice = LongestVoice(voices);
        if (choice.slot < 0)
            return false;
        if (voices[choice.slot].state.Silence(choice.seen))
            return true;
    }
    return false;
}

} // namespace vexa
