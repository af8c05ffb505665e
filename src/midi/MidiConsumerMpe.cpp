// SPDX-License-Identifier: GPL-3.0-or-later
// Notes that have channels of their own.
#include "midi/MidiConsumer.h"

#include <algorithm>

namespace vexa {

namespace {

/// Semitones, by MPE: of a member, and of a master where the sound has no range of its own.
constexpr float kMemberRange = 48, kMasterRange = 2;
/// As many as the lower zone may have.
constexpr uchar kAllMembers = 15;

} // namespace

void VexaMidiConsumer::ExpectMpe(bool whether) {
    playing.mpe = whether;
    ConfigureZone(0, whether ? kAllMembers : 0);
}

/// The master of the zone that the channel is a member of. Where neither the sound nor an option
/// lets the wheel bend there are no zones.
std::optional<uchar> VexaMidiConsumer::MasterOf(uchar from) const {
    return playing.Bends() ? zones.MasterOf(from) : std::nullopt;
}

/// True where the channel is that of one note.
bool VexaMidiConsumer::IsOwn(uchar from) const {
    return MasterOf(from).has_value();
}

/// Where keys, glide and the one voice of the modes mono and legato are kept.
MidiChannel& VexaMidiConsumer::HandOf(uchar from) {
    return channels[MasterOf(from).value_or(from)];
}

/// True where what comes on a channel is for the notes of another, as a master's is for its
/// members'.
bool VexaMidiConsumer::Concerns(uchar from, uchar to) const {
    return from == to || MasterOf(to) == from;
}

/// True where a key may be that of the slot's note. A host's key with another name is not, and a
/// MIDI key on a channel of its own is another than on any other channel.
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

/// The range of the wheel where none is told, in semitones.
float VexaMidiConsumer::UsualRange(uchar from) const {
    if (IsOwn(from))
        return kMemberRange;
    const float sounds = playing.given ? float(playing.bend) : 0;
    return zones.IsMaster(from) && sounds == 0 ? kMasterRange : sounds;
}

/// Semitones. What a master bends comes on top.
float VexaMidiConsumer::BendOf(uchar from) const {
    if (!playing.Bends())
        return 0;
    const float own = channels[from].Bend(UsualRange(from));
    const std::optional<uchar> master = MasterOf(from);
    return master ? own + channels[*master].Bend(UsualRange(*master)) : own;
}

/// Sets the value for the notes of the channel, but for those that sounded out before another one
/// began.
void VexaMidiConsumer::SetOwn(uchar from, std::size_t which, float value) {
    channels[from].own[which] = value;
    for (std::size_t i = 0; i < voices.size(); i++) {
        if (holders[i].channel == from && !holders[i].bygone)
            voices[i].own[which] = value;
    }
}

/// A member's controller is for its notes alone, and then the answer is true. A master's is for the
/// notes of all members, whatever these have had: they follow a macro again, and have the value of
/// what else is theirs.
bool VexaMidiConsumer::GiveOwn(uchar from, std::size_t which, float value) {
    for (uchar to = 0; which < kOwnControllers && to < channels.size(); to++) {
        if (IsOwn(to) && Concerns(from, to))
            SetOwn(to, which, to == from || which < kOwnMacros ? value : kNoOwnValues[which]);
    }
    return which < kOwnControllers && IsOwn(from);
}

/// What notes have had of a macro's controller was another sound's, or meant for another macro.
void VexaMidiConsumer::ForgetMacros() {
    for (MidiChannel& channel : channels)
        channel.ForgetMacros();
    for (voice& slot : voices)
        std::fill(slot.own.begin() + kOwnMacros, slot.own.end(), kNoOwnValues.back());
}

/// The channels that come into a zone or leave one begin anew, and their notes end.
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
