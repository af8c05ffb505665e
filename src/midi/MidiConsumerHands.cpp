// SPDX-License-Identifier: GPL-3.0-or-later
// Wheel, pedals, pressure and controllers: what a player's hands and feet do besides striking keys.
#include "kits/midi/ControllerNumbers.h"
#include "kits/support/RealtimeMark.h"
#include "midi/MidiConsumer.h"

#include <algorithm>

namespace vexa {

namespace {

using enum kits::ControllerNumber;

/// A pedal is down from here on.
constexpr uchar kDown = 64;

} // namespace

/// What other threads have done since the event before. MIDI thread.
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
            // What the members bend by is the controller's.
            if (!zones.MasterOf(from))
                channels[from].ForgetRange();
            ApplyBend(from);
            ApplyVolume(from);
            // No pedal of this sound will end what the one before has sustained.
            if (!playing.Pedal())
                LiftPedals(from);
        }
    }
}

/// True where a slot, which may be none, has a note of the channel's zone, or of the channel.
bool VexaMidiConsumer::Plays(int index, uchar from) const {
    if (index < 0)
        return false;
    const auto i = static_cast<std::size_t>(index);
    return voices[i].state.Look().Active() &&
           Concerns(MasterOf(from).value_or(from), holders[i].channel);
}

/// A pedal holds the slot's note, whose key is up.
bool VexaMidiConsumer::Sustains(std::size_t index) const {
    const uchar from = holders[index].channel;
    return channels[from].sustain || channels[MasterOf(from).value_or(from)].sustain ||
           holders[index].sostenuto;
}

/// Releases the channel's notes that neither a key nor a pedal holds any more.
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

/// Keys that do not sound, as another has their one voice, are held when they come back.
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

/// What the pedal 64 holds goes on.
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
    // Whatever is listened to by now, a pedal that goes up ends what it has held.
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
    // What a channel is told is kept for sounds that heed it.
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
        // What one member is told holds for all.
        for (uchar other = 0; IsOwn(from) && other < channels.size(); other++) {
            if (MasterOf(other) == MasterOf(from))
                channels[other].TakeRange(channel);
        }
        return ApplyBend(MasterOf(from).value_or(from));
    case MidiChannel::Change::Volume:
        return ApplyVolume(from);
    case MidiChannel::Change::Zone:
        // Notes of a sound that heeds no zones go on.
        if (playing.Bends())
            ConfigureZone(from, value);
        else
            zones.Configure(from, value);
        return;
    case MidiChannel::Change::None:
        return;
    }
}

/// Resets what the MIDI association's recommended practice (RP-015) says: volume and sound
/// controllers stay.
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

/// Gives the channel's bend to all of its notes that sound, released ones too.
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

void VexaMidiConsumer::SourceEnded(uchar from, bigtime_t) {
    TakeUpSound();
    LiftPedals(from);
    channels[from].CentreBend();
    ApplyBend(from);
}

} // namespace vexa
