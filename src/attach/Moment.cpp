// SPDX-License-Identifier: GPL-3.0-or-later
#include "attach/Moment.h"

#include <algorithm>
#include <type_traits>

namespace vexa::attach {

static_assert(std::is_trivially_copyable_v<Moment>);
// There is no padding, which would send unrelated memory of the process over the wire.
static_assert(sizeof(VoiceMoment) == 20 * sizeof(float) + 11 * sizeof(double) &&
              sizeof(Moment) == kVoiceSlots * sizeof(VoiceMoment) + 144 * sizeof(float));

namespace {

/// Returns the value if it is in 0..1, else 0.
float Fraction(float value) {
    return value >= 0 && value <= 1 ? value : 0.0F;
}

} // namespace

Moment ReadMoment(std::string_view body) {
    Moment moment{};
    std::copy_n(body.data(), std::min(body.size(), sizeof moment),
                reinterpret_cast<char*>(&moment));
    return moment;
}

Moment MomentOf(const SoundRecords& records) {
    Moment moment{};
    for (std::size_t i = 0; i < moment.voices.size(); i++) {
        const voice& slot = records.voices[i];
        VoiceMoment& v = moment.voices[i];
        // An inactive slot is all zeros, so that the moments of a silent instrument are equal.
        if (!slot.state.Look().Active())
            continue;
        const VoiceView view = Look(slot);
        v.active = 1;
        v.released = IsOver(slot, slot.state.Look()) ? 2 : int32(view.released);
        v.channel = slot.channel;
        v.notes = slot.notes;
        v.freq = slot.freq;
        v.pitch = view.freq;
        v.rendered = view.sums.has_value();
        v.sums = view.sums.value_or(OrbitSums{});
        v.vel = view.vel;
        v.key = view.key;
        v.heldfor = slot.heldfor;
        v.rellevel = view.rellevel;
        std::copy(slot.own.begin(), slot.own.end(), v.own.begin());
        v.t = view.t;
        v.phasex = view.phasex;
        v.phasey = view.phasey;
        v.cx = view.cx;
        v.cy = view.cy;
    }
    std::copy(records.controllers.begin(), records.controllers.end(), moment.controllers.begin());
    for (std::size_t i = 0; i < kMacros; i++)
        moment.macros[i] = records.macros[i].value;
    return moment;
}

void Show(const Moment& moment, SoundRecords& records) {
    for (std::size_t i = 0; i < moment.voices.size(); i++) {
        const VoiceMoment& v = moment.voices[i];
        voice& slot = records.voices[i];
        slot.state.BeginChange();
        slot.released = v.released != 0;
        slot.over = v.released == 2;
        slot.channel = v.channel & 15;
        slot.notes = v.notes;
        const uint32 behind = v.rendered != 0 ? 0 : 1;
        slot.renderednotes = v.notes - behind;
        slot.freq = v.freq > 0 ? v.freq : 1.0F;
        slot.pitch = v.pitch > 0 ? v.pitch : 1.0F;
        slot.vel = Fraction(v.vel);
        slot.key = Fraction(v.key);
        slot.heldfor = v.heldfor;
        std::copy(v.rellevel.begin(), v.rellevel.end(), slot.rellevel.begin());
        std::copy(v.own.begin(), v.own.end(), slot.own.begin());
        slot.t = v.t;
        slot.phasex = v.phasex;
        slot.phasey = v.phasey;
        slot.cx = v.cx;
        slot.startcx = static_cast<float>(v.cx);
        slot.cy = v.cy;
        slot.startcy = static_cast<float>(v.cy);
        std::copy(v.sums.begin(), v.sums.end(), slot.sums.begin());
        slot.state.EndChange(v.active != 0);
        slot.rendered = slot.state.Look().Changes() - behind;
    }
    for (std::size_t i = 0; i < moment.controllers.size(); i++)
        records.controllers[i] = Fraction(moment.controllers[i]);
    for (std::size_t i = 0; i < kMacros; i++)
        records.macros[i].value = Fraction(moment.macros[i]);
}

} // namespace vexa::attach
