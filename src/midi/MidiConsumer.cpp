// SPDX-License-Identifier: GPL-3.0-or-later
#include "midi/MidiConsumer.h"

#include "kits/application/AppFileInfo.h"
#include "kits/support/RealtimeMark.h"
#include "synth/Coefficients.h"
#include "synth/Envelope.h"
#include "synth/ParameterTable.h"

#include <algorithm>

namespace vexa {

namespace {

void PutIcon(BMessage* message, const char* name, type_code type, const BBitmap& icon) {
    const auto size = static_cast<std::size_t>(icon.BitsLength());
    if (message->ReplaceData(name, type, 0, icon.Bits(), size) != B_OK)
        message->AddData(name, type, icon.Bits(), size);
}

} // namespace

VexaMidiConsumer::VexaMidiConsumer(const char* name, SoundRecords& records)
    : BMidiLocalConsumer(name),
      controllers(records.controllers),
      macros(records.macros),
      parameters(records.parameters),
      playing(records.playing),
      volumes(records.volumes),
      voices(records.voices) {
    PublishIcons();
}

void VexaMidiConsumer::NoteOn(uchar from, uchar note, uchar velocity, bigtime_t) {
    Begin({NoteName::kOfMidi, from, note}, Normalised(velocity));
}

void VexaMidiConsumer::Begin(const NoteName& name, float velocity) {
    const auto from = static_cast<uchar>(name.channel);
    if (!Accepts(from))
        return AddEnded(name);
    TakeUpSound();
    const HeldKeys::Key struck{name, velocity};
    if (!Strike(struck))
        AddEnded(name);
    else if (playing.Mode() != PlayMode::poly)
        HandOf(from).keys.Press(struck);
}

/// Returns the orbit's centre and the value of f with which a voice of the note begins.
VexaMidiConsumer::Start VexaMidiConsumer::StartOf(const NoteMoment& note) const {
    const OwnControllers own(playing, macros);
    const float cx = CentreOf(kCx0, parameters, controllers, own, note);
    const float cy = CentreOf(kCy0, parameters, controllers, own, note);
    const auto x = static_cast<float>(double(parameters.EnvAx->Value(0, false, 0)) + cx);
    const PlaneSource& f = function.Get().Source();
    const std::array<float, kMostInputs> inputs = InputsOf(f, note, macros, controllers, own);
    return {cx, cy, Heard(f.At(x, cy, inputs.data()))};
}

/// Gives the key a voice of its own or, in mono and legato mode, the single voice of its channel.
/// Returns false, without effect, if the key has no frequency or no slot.
bool VexaMidiConsumer::Strike(const HeldKeys::Key& struck) {
    const kits::Reader::Section reading(reader);
    const NoteName& name = struck.name;
    const auto from = static_cast<uchar>(name.channel), note = static_cast<uchar>(name.key);
    const float freq = tuning.Get()[note & 127];
    if (freq == 0)
        return false;
    const float vel = struck.velocity;
    const float key = Normalised(note);
    const NoteMoment moment{vel, key, 0, OwnOf(from)};
    const Start start = StartOf(moment);

    SpareHeldOnly();
    MidiChannel& hand = HandOf(from);
    const PlayMode mode = playing.Mode();
    const bool takesOver = mode != PlayMode::poly && Plays(hand.voice, from);
    const int index = takesOver ? hand.voice : ChooseSlot(key, name);
    if (index < 0)
        return false;
    hand.voice = index;
    for (std::size_t i = 0; i < voices.size(); i++)
        holders[i].bygone = holders[i].bygone || (holders[i].channel == from && !holders[i].key);
    voice& slot = voices[index];
    Holder& holder = holders[static_cast<std::size_t>(index)];
    const VoiceState::Seen before = slot.state.BeginChange();
    const bool attacks =
        !(takesOver && mode == PlayMode::legato && before.Active() && !slot.released);
    // If a key is struck again, the pedal 66 continues to hold it.
    const bool again = before.Active() && slot.key == key;
    AddEnded(holder.name);
    holder = {from, true, struck.sostenuto || (again && holder.sostenuto), false, name};
    slot.key = key;
    slot.freq = freq;
    slot.channel = from;
    slot.tunes = slot.tunes + 1;
    slot.glide = playing.given ? float(playing.glide) : 0.0F;
    slot.glideson = takesOver;
    slot.glidefrom = hand.frequency;
    hand.frequency = freq;
    if (attacks || IsOwn(from)) {
        slot.bend = BendOf(from);
        std::copy(moment.own.begin(), moment.own.end(), slot.own.begin());
    }
    std::copy(moment.macros.begin(), moment.macros.end(), slot.macros.begin());
    slot.tuning = 0;
    ShowGains(static_cast<std::size_t>(index));
    slot.expressed = slot.expressed + 1;
    if (attacks) {
        slot.vel = vel;
        slot.startcx = start.cx;
        slot.startcy = start.cy;
        slot.start = start.out;
        slot.continues = before.Active();
        slot.released = false;
        slot.notes = slot.notes + 1;
    }
    slot.state.EndChange(true);
    KeepToLimit();
    return true;
}

void VexaMidiConsumer::SetChannel(int32 next) {
    if (channel == next)
        return;
    channel = next;
    EndNotes();
}

/// Silences voices until the limit is met. A note that is being changed cannot be silenced, so both
/// the thread that changes a note and the thread that sets the limit call this afterwards. If they
/// do so at the same time, at least one of them sees the other's change.
void VexaMidiConsumer::KeepToLimit() {
    while (CountVox() > Limit() && ReduceVoicesByOne(voices)) {
    }
}

/// Returns the slot for a new note: the one that plays the same key, else a free one, else a stolen
/// one; -1 if nothing sounds and the voice limit is below 1.
int VexaMidiConsumer::ChooseSlot(float key, const NoteName& name) {
    for (int i = 0; i < kVoiceSlots; i++) {
        if (voices[i].state.Look().Active() && !voices[i].released && voices[i].key == key &&
            IsThatNote(static_cast<std::size_t>(i), name))
            return i;
    }
    if (CountVox() < Limit()) {
        for (int i = 0; i < kVoiceSlots; i++) {
            if (!voices[i].state.Look().Active())
                return i;
        }
    }
    const int longest = LongestVoice(voices).slot;
    if (longest >= 0)
        stolen = stolen + 1;
    return longest;
}

void VexaMidiConsumer::NoteOff(uchar from, uchar note, uchar, bigtime_t) {
    TakeUpSound();
    const NoteName name{NoteName::kOfMidi, from, note};
    const bool accepted = Accepts(from);
    const float key = Normalised(note);
    HandOf(from).keys.Release(name, [](const NoteName&) {});
    for (std::size_t index = 0; index < voices.size(); index++) {
        const voice& slot = voices[index];
        if (slot.state.Look().Active() && !slot.released && slot.key == key &&
            IsThatNote(index, name) && (accepted || holders[index].channel == from))
            LetGo(index, from);
    }
    KeepToLimit();
}

/// Handles the release of a slot's key, which arrived on channel `from`. In mono and legato mode
/// the single voice goes back to another key that is still down. Otherwise the note is released
/// unless a pedal holds it.
void VexaMidiConsumer::LetGo(std::size_t index, uchar from) {
    const MidiChannel& hand = HandOf(from);
    const std::optional<HeldKeys::Key> last = hand.keys.Last();
    if (last && playing.Mode() != PlayMode::poly && hand.voice == static_cast<int>(index) &&
        Plays(hand.voice, from) && Strike(*last))
        return;
    holders[index].key = false;
    if (!Sustains(index))
        Release(index);
}

void VexaMidiConsumer::Release(std::size_t index) {
    const kits::Reader::Section reading(reader);
    voice& slot = voices[index];
    const VoiceState::Seen before = slot.state.BeginChange();
    const auto held = static_cast<float>(Seconds(slot, before));
    const auto places = EnvelopePlaces();
    for (std::size_t i = 0; i < places.size(); i++)
        slot.rellevel[i] = (parameters.*places[i].target)->Value(held, false, 0);
    slot.heldfor = held;
    slot.released = true;
    slot.state.EndChange(before.Active());
}

void VexaMidiConsumer::AllNotesOff(bool, bigtime_t) {
    for (voice& slot : voices)
        slot.state.Silence();
    panics++;
}

int32 VexaMidiConsumer::CountHeld() const {
    return static_cast<int32>(std::ranges::count_if(
        voices, [](const voice& slot) { return slot.state.Look().Active() && !slot.released; }));
}

void VexaMidiConsumer::ReduceToMaxVox(int32 limit) {
    voiceLimit = limit;
    spared = 0;
    KeepToLimit();
}

void VexaMidiConsumer::LimitNewVox(int32 limit) {
    // Written first, because the MIDI thread may read both at any time.
    spared = CountHeld();
    voiceLimit = limit;
    KeepToLimit();
}

/// Reduces the number of spared voices to the number of held ones: those that were released since
/// the limit was set count against it again.
void VexaMidiConsumer::SpareHeldOnly() {
    const int32 held = CountHeld();
    int32 before = spared;
    while (before > held && !spared.compare_exchange_weak(before, held)) {
    }
}

void VexaMidiConsumer::PublishIcons() {
    BBitmap large(BRect{0, 0, 31, 31}, B_CMAP8);
    BBitmap mini(BRect{0, 0, 15, 15}, B_CMAP8);
    GetIcons(&large, &mini);
    BMessage properties;
    if (GetProperties(&properties) != B_OK)
        return;
    AddIcons(&properties, large, mini);
    SetProperties(&properties);
}

void VexaMidiConsumer::GetIcons(BBitmap* large, BBitmap* mini) {
    app_info info;
    if (GetAppInfo(&info) != B_OK)
        return;
    const BAppFileInfo file(info.file);
    file.GetIcon(large, B_LARGE_ICON);
    file.GetIcon(mini, B_MINI_ICON);
}

void VexaMidiConsumer::AddIcons(BMessage* message, const BBitmap& large, const BBitmap& mini) {
    PutIcon(message, "be:large_icon", FourCC("ICON"), large);
    PutIcon(message, "be:mini_icon", FourCC("MICN"), mini);
}

} // namespace vexa
