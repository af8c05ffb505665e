// SPDX-License-Identifier: GPL-3.0-or-later
// Notes that a host identifies by names.
#include "midi/MidiConsumer.h"

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

/// The largest tuning, in semitones, and the largest gain that a host may set.
constexpr float kMostTuning = 120, kMostVolume = 4;

} // namespace

void VexaMidiConsumer::End(const NoteName& pattern) {
    TakeUpSound();
    for (MidiChannel& channel : channels)
        channel.keys.Release(pattern, [this](const NoteName& name) { AddEnded(name); });
    for (std::size_t i = 0; i < voices.size(); i++) {
        if (voices[i].state.Look().Active() && !voices[i].released && holders[i].key &&
            holders[i].name.Fits(pattern))
            LetGo(i, holders[i].channel);
    }
    KeepToLimit();
}

void VexaMidiConsumer::Choke(const NoteName& pattern) {
    TakeUpSound();
    for (MidiChannel& channel : channels)
        channel.keys.Release(pattern, [this](const NoteName& name) { AddEnded(name); });
    for (std::size_t i = 0; i < voices.size(); i++) {
        if (holders[i].name.Fits(pattern))
            voices[i].state.Silence();
    }
}

/// Calls `change` with the slot of each sounding note that matches, to change the note's own
/// values. A note that has not been rendered yet begins with the new values.
template<class Change>
void VexaMidiConsumer::ChangeNotes(const NoteName& pattern, Change change) {
    for (std::size_t i = 0; i < voices.size(); i++) {
        if (!voices[i].state.Look().Active() || !holders[i].name.Fits(pattern))
            continue;
        change(i);
        voices[i].expressed = voices[i].expressed + 1;
        if (voices[i].renderednotes != voices[i].notes)
            Charge(i);
    }
}

void VexaMidiConsumer::Charge(std::size_t index) {
    const kits::Reader::Section reading(reader);
    voice& slot = voices[index];
    NoteMoment moment{slot.vel, slot.key, 0};
    std::copy(slot.own.begin(), slot.own.end(), moment.own.begin());
    std::copy(slot.macros.begin(), slot.macros.end(), moment.macros.begin());
    const Start start = StartOf(moment);
    const VoiceState::Seen before = slot.state.BeginChange();
    slot.startcx = start.cx;
    slot.startcy = start.cy;
    slot.start = start.out;
    slot.state.EndChange(before.Active());
}

/// Publishes the note's gains for the two ears. In the middle both ears have full gain; off the
/// middle one ear has less.
void VexaMidiConsumer::ShowGains(std::size_t index) {
    const Holder& holder = holders[index];
    const float level = holder.volume * holder.loudness;
    voices[index].gains[0] = level * std::min(1.0F, 2 * (1 - holder.pan));
    voices[index].gains[1] = level * std::min(1.0F, 2 * holder.pan);
}

void VexaMidiConsumer::Express(const NoteName& pattern, Expression which, float value) {
    if (std::isnan(value))
        return;
    const float part = std::clamp(value, 0.0F, 1.0F);
    ChangeNotes(pattern, [&](std::size_t index) {
        voice& slot = voices[index];
        Holder& holder = holders[index];
        switch (which) {
        case Expression::Tuning:
            slot.tuning = std::clamp(value, -kMostTuning, kMostTuning);
            return;
        case Expression::Pressure:
            slot.own[kOwnPressure] = part;
            return;
        case Expression::Timbre:
            slot.own[kOwnTimbre] = part;
            return;
        case Expression::Volume:
            holder.volume = std::clamp(value, 0.0F, kMostVolume);
            break;
        case Expression::Loudness:
            holder.loudness = part;
            break;
        case Expression::Pan:
            holder.pan = part;
            break;
        }
        ShowGains(index);
    });
}

void VexaMidiConsumer::SetMacro(const NoteName& pattern, std::size_t macro, float value) {
    if (std::isnan(value))
        return;
    ChangeNotes(pattern, [&](std::size_t index) {
        OwnMacro own = voices[index].macros[macro];
        own.value = std::clamp(value, 0.0F, 1.0F);
        voices[index].macros[macro] = own;
    });
}

void VexaMidiConsumer::ModulateMacro(const NoteName& pattern, std::size_t macro, float amount) {
    if (std::isnan(amount))
        return;
    ChangeNotes(pattern, [&](std::size_t index) {
        OwnMacro own = voices[index].macros[macro];
        own.modulation = std::clamp(amount, -1.0F, 1.0F);
        voices[index].macros[macro] = own;
    });
}

void VexaMidiConsumer::AddEnded(const NoteName& name) {
    if (name.id != NoteName::kOfMidi && endedCount < ended.size())
        ended[endedCount++] = name;
}

void VexaMidiConsumer::FindEnded() {
    for (std::size_t i = 0; i < voices.size(); i++) {
        if (holders[i].name.id == NoteName::kOfMidi || !IsOver(voices[i], voices[i].state.Look()))
            continue;
        AddEnded(holders[i].name);
        holders[i].name.id = NoteName::kOfMidi;
    }
}

/// Returns false if a slot still has the name, if a key has it that may get the single voice back,
/// or if the same name is earlier in the list and so has been reported.
bool VexaMidiConsumer::HasEnded(std::size_t which) const {
    const NoteName& name = ended[which];
    return std::ranges::none_of(holders, [&](const Holder& h) { return h.name == name; }) &&
           std::ranges::none_of(channels, [&](const MidiChannel& c) { return c.keys.Has(name); }) &&
           std::find(ended.begin(), ended.begin() + which, name) == ended.begin() + which;
}

bool VexaMidiConsumer::IsSilent() const {
    return std::ranges::all_of(voices,
                               [](const voice& slot) { return IsOver(slot, slot.state.Look()); });
}

} // namespace vexa
