// SPDX-License-Identifier: GPL-3.0-or-later
// Wheel, pedals, pressure and controllers: everything that a player's hands and feet do besides
// striking keys. A channel concerns another one if it is the same or the master of its MPE zone.
#include "kits/midi/ControllerNumbers.h"
#include "kits/support/RealtimeMark.h"
#include "midi/MidiConsumer.h"

#include <algorithm>

namespace vexa {

namespace {

using enum kits::ControllerNumber;

/// The smallest controller value at which a pedal is down.
constexpr uchar kDown = 64;

} // namespace

/// Takes up the changes that other threads have made since the previous event: panics, macro
/// controllers and the loading of a sound. MIDI thread.
void VexaMidiConsumer::TakeUpSound() {
    if (const uint32 now = panics; now != panicked) {
        panicked = now;
        for (MidiChannel& channel : channels)
            channel.keys.Release({}, [this](const NoteName& name) { AddEnded(name); });
    }
    std::array<int32, kMacros> assigned;
    std::transform(macros.begin(), macros.end(), assigned.begin(),
                   [](const Macro& macro) { return int32(macro.controller); });
    if (playing.loads != loads || assigned != macroControllers)
        ForgetMacros();
    macroControllers = assigned;
    if (const uint32 now = playing.loads; now != loads) {
        loads = now;
        for (uchar from = 0; from < channels.size(); from++) {
            // The range of member channels belongs to the MPE controller, not to the sound.
            if (!zones.MasterOf(from))
                channels[from].ForgetRange();
            ApplyBend(from);
            ApplyVolume(from);
            // A sound that ignores pedals ends the notes that they sustained in the previous one.
            if (!playing.Pedal())
                LiftPedals(from);
        }
    }
}

/// Returns true if the slot sounds a note of the channel or of its zone; false for slot -1.
bool VexaMidiConsumer::Plays(int index, uchar from) const {
    if (index < 0)
        return false;
    const auto i = static_cast<std::size_t>(index);
    return voices[i].state.Look().Active() &&
           Concerns(MasterOf(from).value_or(from), holders[i].channel);
}

/// Returns true if a pedal holds the slot's note, whose key is up.
bool VexaMidiConsumer::Sustains(std::size_t index) const {
    const uchar from = holders[index].channel;
    return channels[from].sustain || channels[MasterOf(from).value_or(from)].sustain ||
           holders[index].sostenuto;
}

/// Releases the notes that the channel concerns and that neither a key nor a pedal holds any more.
void VexaMidiConsumer::ReleaseUnheld(uchar from) {
    for (std::size_t i = 0; i < voices.size(); i++) {
        if (voices[i].state.Look().Active() && Concerns(from, holders[i].channel) &&
            !voices[i].released && !holders[i].key && !Sustains(i))
            Release(i);
    }
    KeepToLimit();
}

void VexaMidiConsumer::HoldSostenuto(uchar from) {
    for (std::size_t i = 0; i < voices.size(); i++) {
        if (voices[i].state.Look().Active() && Concerns(from, holders[i].channel) &&
            !voices[i].released && holders[i].key)
            holders[i].sostenuto = true;
    }
    HoldKeys(from, true);
}

/// Marks the keys that are down, also those that do not sound because another key has their single
/// voice: the pedal 66 then holds them when they get it back.
void VexaMidiConsumer::HoldKeys(uchar from, bool sostenuto) {
    for (uchar to = 0; to < channels.size(); to++) {
        if (Concerns(from, to))
            HandOf(to).keys.Hold({-1, to, -1}, sostenuto);
    }
}

void VexaMidiConsumer::LiftPedals(uchar from) {
    channels[from].sustain = false;
    LiftSostenuto(from);
}

/// Lifts the pedal 66. Notes that the pedal 64 holds continue.
void VexaMidiConsumer::LiftSostenuto(uchar from) {
    channels[from].sostenuto = false;
    for (Holder& holder : holders)
        holder.sostenuto = holder.sostenuto && !Concerns(from, holder.channel);
    HoldKeys(from, false);
    ReleaseUnheld(from);
}

void VexaMidiConsumer::SetController(uchar controller, float value) {
    controllers[controller & 127] = value;
    for (Macro& macro : macros) {
        if (macro.controller == controller)
            macro.value = value;
    }
}

void VexaMidiConsumer::ControlChange(uchar from, uchar controller, uchar value, bigtime_t) {
    TakeUpSound();
    MidiChannel& channel = channels[from];
    // A pedal that goes up ends the notes that it held, even if the consumer no longer listens to
    // its channel.
    if (controller == kSustain && value < kDown) {
        channel.sustain = false;
        ReleaseUnheld(from);
    } else if (controller == kSostenuto && value < kDown) {
        LiftSostenuto(from);
    }
    if (!Accepts(from))
        return;
    const OwnControllers own(playing, macros);
    if (!GiveOwn(from, own.Which(controller), Normalised(value)))
        SetController(controller, Normalised(value));
    // The channel keeps all its controls, also those that the present sound ignores.
    if (controller == kResetControllers)
        return ResetControllers(from);
    if (playing.Pedal() && value >= kDown) {
        channel.sustain = channel.sustain || controller == kSustain;
        if (controller == kSostenuto && !channel.sostenuto) {
            channel.sostenuto = true;
            HoldSostenuto(from);
        }
    }
    switch (channel.Control(controller, value, UsualRange(from))) {
    case MidiChannel::Change::Bend:
        // A range that one member receives applies to all members of its zone.
        for (uchar other = 0; IsOwn(from) && other < channels.size(); other++) {
            if (MasterOf(other) == MasterOf(from))
                channels[other].TakeRange(channel);
        }
        return ApplyBend(MasterOf(from).value_or(from));
    case MidiChannel::Change::Volume:
        return ApplyVolume(from);
    case MidiChannel::Change::Zone:
        // A sound without bend ignores zones, so its notes continue.
        if (playing.Bends())
            ConfigureZone(from, value);
        else
            zones.Configure(from, value);
        return;
    case MidiChannel::Change::None:
        return;
    }
}

/// Resets the controls that the MIDI Association's recommended practice RP-015 names; volume and
/// sound controllers keep their values.
void VexaMidiConsumer::ResetControllers(uchar from) {
    for (uchar to = 0; to < channels.size(); to++) {
        if (Concerns(from, to))
            channels[to].Reset();
    }
    ApplyBend(from);
    ApplyVolume(from);
    if (!playing.Bends())
        return;
    SetController(kModulation, 0);
    SetController(kExpression, 1);
    for (uchar pedal = kSustain; pedal <= kLastPedal; pedal++)
        SetController(pedal, 0);
    LiftPedals(from);
    ChannelPressure(from, 0, 0);
    for (std::size_t i = 0; i < voices.size(); i++) {
        const OwnValues own = OwnOf(holders[i].channel);
        if (Concerns(from, holders[i].channel))
            std::copy(own.begin(), own.end(), voices[i].own.begin());
    }
}

void VexaMidiConsumer::PitchBend(uchar from, uchar lsb, uchar msb, bigtime_t) {
    if (!Accepts(from))
        return;
    TakeUpSound();
    channels[from].SetBend(lsb, msb);
    ApplyBend(from);
}

/// Applies the channel's bend to the notes that it concerns, including released ones, but not to
/// `bygone` notes of member channels.
void VexaMidiConsumer::ApplyBend(uchar from) {
    for (std::size_t i = 0; i < voices.size(); i++) {
        const uchar to = holders[i].channel;
        if (Concerns(from, to) && !(holders[i].bygone && IsOwn(to)))
            voices[i].bend = BendOf(to);
    }
}

void VexaMidiConsumer::ApplyVolume(uchar from) {
    for (uchar to = 0; to < channels.size(); to++) {
        const std::optional<uchar> master = MasterOf(to);
        if (Concerns(from, to))
            volumes[to] = channels[to].Volume() * (master ? channels[*master].Volume() : 1);
    }
}

void VexaMidiConsumer::ChannelPressure(uchar from, uchar pressure, bigtime_t) {
    if (!Accepts(from))
        return;
    TakeUpSound();
    if (!GiveOwn(from, kOwnPressure, Normalised(pressure)) && playing.Pressure() >= 0)
        SetController(static_cast<uchar>(playing.Pressure()), Normalised(pressure));
}

void VexaMidiConsumer::KeyPressure(uchar from, uchar note, uchar pressure, bigtime_t) {
    if (!Accepts(from) || playing.Pressure() < 0)
        return;
    for (std::size_t i = 0; i < voices.size(); i++) {
        if (voices[i].state.Look().Active() && holders[i].channel == from && holders[i].key &&
            voices[i].key == Normalised(note))
            voices[i].own[kOwnPressure] = Normalised(pressure);
    }
}

void VexaMidiConsumer::Restart() {
    AllNotesOff(false, 0);
    TakeUpSound();
    channels.fill({});
    zones = {};
    if (playing.mpe)
        ExpectMpe();
    std::fill(controllers.begin(), controllers.end(), 0.0F);
    std::fill(volumes.begin(), volumes.end(), 1.0F);
}

void VexaMidiConsumer::SourceEnded(uchar from, bigtime_t) {
    TakeUpSound();
    LiftPedals(from);
    channels[from].CentreBend();
    ApplyBend(from);
}

} // namespace vexa
