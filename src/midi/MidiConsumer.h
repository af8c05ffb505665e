// SPDX-License-Identifier: GPL-3.0-or-later
// Notes in: turns MIDI events into changes of the voice and controller tables.
#pragma once

#include "kits/midi/MidiLocalConsumer.h"
#include "kits/support/Bitmap.h"
#include "kits/support/Published.h"
#include "kits/support/RealtimeMark.h"
#include "midi/MidiChannel.h"
#include "midi/MpeZones.h"
#include "midi/NoteName.h"
#include "synth/Macros.h"
#include "synth/NoteInputs.h"
#include "synth/PlaneFunction.h"
#include "synth/Playing.h"
#include "synth/SoundParam.h"
#include "synth/Voice.h"
#include "tuning/Tuning.h"

#include <algorithm>
#include <array>
#include <atomic>

namespace vexa {

/// The program's MIDI input. It decides which note takes which voice slot and computes what a voice
/// starts with; the renderer plays what it has set up. An event takes effect when its hook runs,
/// its time argument is not looked at.
class VexaMidiConsumer : public BMidiLocalConsumer {
  public:
    /// Makes a consumer that hears all channels, with a voice limit of 1, dummyfunction and equal
    /// temperament. The records are shared and outlive it. Window thread.
    VexaMidiConsumer(const char* name, ControllerTable& controllers, Macros& macros,
                     const sound_param& parameters, Playing& playing, ChannelVolumes& volumes,
                     VoiceTable& voices);
    ~VexaMidiConsumer() override { Unregister(); }

    /// A velocity of 0 is a velocity like others: only NoteOff releases. MIDI thread, as all hooks
    /// unless noted.
    VEXA_REALTIME void NoteOff(uchar channel, uchar note, uchar velocity, bigtime_t time) override;
    VEXA_REALTIME void NoteOn(uchar channel, uchar note, uchar velocity, bigtime_t time) override;
    VEXA_REALTIME void ControlChange(uchar channel, uchar controller, uchar value,
                                     bigtime_t time) override;
    VEXA_REALTIME void KeyPressure(uchar channel, uchar note, uchar pressure,
                                   bigtime_t time) override;
    VEXA_REALTIME void ChannelPressure(uchar channel, uchar pressure, bigtime_t time) override;
    VEXA_REALTIME void PitchBend(uchar channel, uchar lsb, uchar msb, bigtime_t time) override;
    VEXA_REALTIME void SourceEnded(uchar channel, bigtime_t time) override;
    /// Silences every slot at once, whatever the channel. Any thread.
    VEXA_REALTIME void AllNotesOff(bool justChannel, bigtime_t time) override;

    /// Notes that a host names, of which those with other names are others even on the same key.
    /// Real-time safe, MIDI thread, as all here with names.
    ///
    /// Begins one; the velocity is 0..1.
    VEXA_REALTIME void Begin(const NoteName& name, float velocity);
    /// Lets the keys go of those that fit, or silences them at once.
    VEXA_REALTIME void End(const NoteName& pattern);
    VEXA_REALTIME void Choke(const NoteName& pattern);
    /// Each says something of the notes that fit and sound, be they of MIDI, until they end. Macros
    /// are 0..1, their modulation is -1..1 in place of the common one (Macro::modulation). What is
    /// beyond its range is bounded; what is no number is ignored.
    VEXA_REALTIME void Express(const NoteName& pattern, Expression which, float value);
    VEXA_REALTIME void SetMacro(const NoteName& pattern, std::size_t macro, float value);
    VEXA_REALTIME void ModulateMacro(const NoteName& pattern, std::size_t macro, float amount);
    /// Tells the names of the named notes that have ended since the last call, once for each
    /// beginning: their keys are up, and nothing is heard of them any more.
    template<class Told>
    VEXA_REALTIME void TakeEnded(Told told) {
        FindEnded();
        for (std::size_t i = 0; i < endedCount; i++) {
            if (HasEnded(i))
                told(ended[i]);
        }
        endedCount = 0;
    }
    /// Returns whether nothing sounds, or only notes that are over.
    VEXA_REALTIME bool IsSilent() const;

    /// Returns the channel that is listened to, 0..15, or -1 for all. Any thread.
    int32 Channel() const { return channel; }
    /// Sets the channel that is listened to. A change releases the notes that have come in by the
    /// endpoint's connections and are held. Window thread.
    void SetChannel(int32 next);

    /// Takes all channels but the first for those of one note each (MPE), which bend, whether a
    /// sound says how it is played or not; with false no longer so. Where that changes anything the
    /// notes of these channels end. MIDI thread, or before the first event.
    VEXA_REALTIME void ExpectMpe(bool whether = true);

    /// Sets the function that new voices are charged with, in the way of
    /// VoiceRenderer::SetFunction. Window thread.
    void SetFunction(const PlaneFunction& next) { function.Publish(next); }

    /// Sets the frequencies of the notes from the next one on; a key with none starts no note and
    /// takes no voice. Window thread.
    void SetTuning(const Tuning& next) { tuning.Publish(next); }

    /// Silences voices until at most `limit` sound, which then is the voice limit. Any thread.
    VEXA_REALTIME void ReduceToMaxVox(int32 limit);
    /// Sets the voice limit without cutting off what is held: as many voices may sound, until a
    /// note begins while fewer are held. Any thread.
    VEXA_REALTIME void LimitNewVox(int32 limit);
    /// Returns how many notes sound and are not released. Any thread.
    VEXA_REALTIME int32 CountHeld() const;
    /// Returns how many voices sound. Any thread.
    VEXA_REALTIME int32 CountVox() const { return CountActive(voices); }
    /// Silences the voice that the next stolen note would take. Any thread.
    void ReduceVoxByOne() { ReduceVoicesByOne(voices); }
    /// Counts the notes since the start that took the slot of another. Any thread.
    int64 StolenVox() const { return stolen; }

    /// Copies the program's own icons into 32 x 32 and 16 x 16 B_CMAP8 bitmaps; they stay as they
    /// are where it has none.
    static void GetIcons(BBitmap* large, BBitmap* mini);
    /// Puts the icons into an endpoint's properties, in place of those that are there.
    static void AddIcons(BMessage* message, const BBitmap& large, const BBitmap& mini);

  private:
    /// What a message's byte is from 0 to 1.
    VEXA_REALTIME static float Normalised(uchar value) { return static_cast<float>(value / 127.0); }
    VEXA_REALTIME bool Accepts(uchar from) const {
        return channel == -1 || channel == from || channel == MasterOf(from);
    }
    VEXA_REALTIME int ChooseSlot(float key, const NoteName& name);
    VEXA_REALTIME int32 Limit() const { return std::max(int32(voiceLimit), int32(spared)); }
    VEXA_REALTIME void KeepToLimit();
    VEXA_REALTIME void SpareHeldOnly();
    VEXA_REALTIME bool Strike(const HeldKeys::Key& struck);
    struct Start {
        float cx, cy, out;
    };
    VEXA_REALTIME Start StartOf(const NoteMoment& note) const;
    VEXA_REALTIME void LetGo(std::size_t index, uchar from);
    VEXA_REALTIME void Release(std::size_t index);
    template<class Change>
    VEXA_REALTIME void ChangeNotes(const NoteName& pattern, Change change);
    VEXA_REALTIME void Charge(std::size_t index);
    VEXA_REALTIME void ShowGains(std::size_t index);
    VEXA_REALTIME void FindEnded();
    VEXA_REALTIME void AddEnded(const NoteName& name);
    VEXA_REALTIME bool HasEnded(std::size_t which) const;

    VEXA_REALTIME void TakeUpSound();
    VEXA_REALTIME std::optional<uchar> MasterOf(uchar from) const;
    VEXA_REALTIME bool IsOwn(uchar from) const;
    VEXA_REALTIME MidiChannel& HandOf(uchar from);
    VEXA_REALTIME bool Concerns(uchar from, uchar to) const;
    VEXA_REALTIME bool IsThatNote(std::size_t index, const NoteName& name) const;
    VEXA_REALTIME OwnValues OwnOf(uchar from) const;
    VEXA_REALTIME float UsualRange(uchar from) const;
    VEXA_REALTIME float BendOf(uchar from) const;
    VEXA_REALTIME void ConfigureZone(uchar master, uchar members);
    VEXA_REALTIME void SetOwn(uchar from, std::size_t which, float value);
    VEXA_REALTIME bool GiveOwn(uchar from, std::size_t which, float value);
    VEXA_REALTIME void ForgetMacros();
    VEXA_REALTIME bool Plays(int index, uchar from) const;
    VEXA_REALTIME bool Sustains(std::size_t index) const;
    VEXA_REALTIME void ReleaseUnheld(uchar from);
    VEXA_REALTIME void HoldSostenuto(uchar from);
    VEXA_REALTIME void HoldKeys(uchar from, bool sostenuto);
    VEXA_REALTIME void LiftPedals(uchar from);
    VEXA_REALTIME void LiftSostenuto(uchar from);
    VEXA_REALTIME void SetController(uchar controller, float value);
    VEXA_REALTIME void ApplyBend(uchar from);
    VEXA_REALTIME void ApplyVolume(uchar from);
    VEXA_REALTIME void ResetControllers(uchar from);
    void PublishIcons();

    ControllerTable& controllers;
    Macros& macros;
    const sound_param& parameters;
    Playing& playing;
    ChannelVolumes& volumes;
    VoiceTable& voices;
    kits::Shared<int32> channel{-1};
    /// Who holds a slot's note: a key of a channel, or a host. MIDI thread.
    struct Holder {
        /// The channel that the note came on. Its end is listened to there, whatever the consumer's
        /// channel is by then.
        uchar channel = 0;
        /// The key is down.
        bool key = false;
        /// The pedal 66 holds the note.
        bool sostenuto = false;
        /// Its key was up before another note began on the channel of its own.
        bool bygone = false;
        /// The note's name. Its id is kOfMidi for a note of MIDI, and also from when the host has
        /// been told of the note's end.
        NoteName name{NoteName::kOfMidi, -1, -1};
        /// What the host says of the note, in the units of Expression.
        float volume = 1, loudness = 1, pan = 0.5F;
    };
    std::array<Holder, kVoiceSlots> holders{};
    /// The names of notes that may have ended since TakeEnded.
    std::array<NoteName, 256> ended{};
    std::size_t endedCount = 0;
    std::array<MidiChannel, 16> channels{};
    MpeZones zones;
    /// The values that TakeUpSound has taken up: of Playing::loads and `panics`, and the macros'
    /// controllers. MIDI thread.
    uint32 loads = 0, panicked = 0;
    std::array<int32, kMacros> macroControllers{};
    std::atomic<uint32> panics{0};
    kits::Published<PlaneFunction> function{dummyfunction};
    kits::Published<Tuning> tuning{EqualTemperament()};
    std::atomic<int32> voiceLimit{1};
    /// So many voices may sound whatever the limit is, as they were held when that was set.
    std::atomic<int32> spared{0};
    kits::Shared<int64> stolen{0};
    kits::Reader reader;
};

} // namespace vexa
