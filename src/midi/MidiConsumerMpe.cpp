// SPDX-License-Identifier: GPL-3.0-or-later
// Notes with channels of their own: MPE.
#include "midi/MidiConsumer.h"

#include <algorithm>

namespace vexa {

namespace {

/// The bend ranges, in semitones, that MPE prescribes: of a member, and of a master if the sound
/// has no range of its own.
constexpr float kMemberRange = 48, kMasterRange = 2;
/// The largest number of members of the lower zone.
constexpr uchar kAllMembers = 15;

} // namespace

void VexaMidiConsumer::ExpectMpe(bool whether) {
    playing.mpe = whether;
    ConfigureZone(0, whether ? kAllMembers : 0);
}

/// Returns the master of the zone of which the channel is a member. Zones have no effect if neither
/// the sound nor an option lets the wheel bend notes.
std::optional<uchar> VexaMidiConsumer::MasterOf(uchar from) const {
    return playing.Bends() ? zones.MasterOf(from) : std::nullopt;
}

/// Returns true if the channel is a member, which carries a single note.
bool VexaMidiConsumer::IsOwn(uchar from) const {
    return MasterOf(from).has_value();
}

/// Returns the channel that keeps the keys, the glide and the single voice of mono and legato mode.
/// For a member this is its master.
MidiChannel& VexaMidiConsumer::HandOf(uchar from) {
    return channels[MasterOf(from).value_or(from)];
}

/// Returns true if messages on channel `from` apply to the notes of channel `to`, as those on a
/// master apply to its members.
bool VexaMidiConsumer::Concerns(uchar from, uchar to) const {
    return from == to || MasterOf(to) == from;
}

/// Returns true if the name may be that of the slot's note. A host's note must have the same name.
/// Between MIDI notes the channel matters only if one of them has a channel of its own.
bool VexaMidiConsumer::IsThatNote(std::size_t index, const NoteName& name) const {
    const NoteName& own = holders[index].name;
    if (own.id != NoteName::kOfMidi || name.id != NoteName::kOfMidi)
        return own == name;
    const uchar of = holders[index].channel, from = static_cast<uchar>(name.channel);
    return of == from || !(IsOwn(of) || IsOwn(from));
}

OwnValues VexaMidiConsumer::OwnOf(uchar from) const {
    return IsOwn(from) ? channels[from].own : kNoOwnValues;
}

/// Returns the range of the wheel, in semitones, that applies until the channel receives one.
float VexaMidiConsumer::UsualRange(uchar from) const {
    if (IsOwn(from))
        return kMemberRange;
    const float sounds = playing.given ? float(playing.bend) : 0;
    return zones.IsMaster(from) && sounds == 0 ? kMasterRange : sounds;
}

/// Returns the channel's bend in semitones; a master's bend is added to that of its members.
float VexaMidiConsumer::BendOf(uchar from) const {
    if (!playing.Bends())
        return 0;
    const float own = channels[from].Bend(UsualRange(from));
    const std::optional<uchar> master = MasterOf(from);
    return master ? own + channels[*master].Bend(UsualRange(*master)) : own;
}

/// Sets the value for the channel and its notes, except for `bygone` ones.
void VexaMidiConsumer::SetOwn(uchar from, std::size_t which, float value) {
    channels[from].own[which] = value;
    for (std::size_t i = 0; i < voices.size(); i++) {
        if (holders[i].channel == from && !holders[i].bygone)
            voices[i].own[which] = value;
    }
}

/// Applies one of OwnControllers to the notes of member channels. A member's value is for its own
/// notes alone; the result is then true. A master's value replaces those of all members: they take
/// its pressure or timbre, and follow the common macros again.
bool VexaMidiConsumer::GiveOwn(uchar from, std::size_t which, float value) {
    for (uchar to = 0; which < kOwnControllers && to < channels.size(); to++) {
        if (IsOwn(to) && Concerns(from, to))
            SetOwn(to, which, to == from || which < kOwnMacros ? value : kNoOwnValues[which]);
    }
    return which < kOwnControllers && IsOwn(from);
}

/// Clears the notes' own values of the macros' controllers, which belonged to the previous sound or
/// to another macro.
void VexaMidiConsumer::ForgetMacros() {
    for (MidiChannel& channel : channels)
        channel.ForgetMacros();
    for (voice& slot : voices)
        std::fill(slot.own.begin() + kOwnMacros, slot.own.end(), kNoOwnValues.back());
}

/// Configures a zone. The master, its previous and new members and the channels that the other zone
/// loses are reset, and their notes end.
void VexaMidiConsumer::ConfigureZone(uchar master, uchar members) {
    const MpeZones before = zones;
    if (!zones.Configure(master, members))
        return;
    const auto changes = [&](uchar from) {
        return from == master || before.MasterOf(from) == master ||
               zones.MasterOf(from) == master || before.MasterOf(from) != zones.MasterOf(from);
    };
    for (std::size_t i = 0; i < voices.size(); i++) {
        if (changes(holders[i].channel))
            voices[i].state.Silence();
    }
    for (uchar from = 0; from < channels.size(); from++) {
        if (!changes(from))
            continue;
        channels[from].Reset();
        channels[from].ForgetRange();
        channels[from].ForgetMacros();
        channels[from].keys.Release({}, [this](const NoteName& name) { AddEnded(name); });
        ApplyVolume(from);
    }
}

} // namespace vexa
