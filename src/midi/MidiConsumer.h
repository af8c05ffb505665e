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
#include "synth/SoundRecords.h"
#include "synth/Voice.h"
#include "tuning/Tuning.h"

#include <algorithm>
#include <array>
#include <atomic>

namespace vexa {

/// The program's MIDI input. It assigns notes to voice slots and computes the starting values of a
/// voice; the renderer plays the slots. An event takes effect when its hook runs; its time argument
/// is ignored.
class VexaMidiConsumer : public BMidiLocalConsumer {
  public:
    /// Makes a consumer that listens to all channels, with a voice limit of 1, dummyfunction and
    /// equal temperament. The records are shared and must outlive it. Window thread.
    VexaMidiConsumer(const char* name, SoundRecords& records);
    ~VexaMidiConsumer() override { Unregister(); }

    /// A velocity of 0 starts a note like any other; only NoteOff releases. MIDI thread, like all
    /// hooks unless noted.
    VEXA_REALTIME void NoteOff(uchar channel, uchar note, uchar velocity, bigtime_t time) override;
    VEXA_REALTIME void NoteOn(uchar channel, uchar note, uchar velocity, bigtime_t time) override;
    VEXA_REALTIME void ControlChange(uchar channel, uchar controller, uchar value,
                                     bigtime_t time) override;
    VEXA_REALTIME void KeyPressure(uchar channel, uchar note, uchar pressure,
                                   bigtime_t time) override;
    VEXA_REALTIME void ChannelPressure(uchar channel, uchar pressure, bigtime_t time) override;
    VEXA_REALTIME void PitchBend(uchar channel, uchar lsb, uchar msb, bigtime_t time) override;
    VEXA_REALTIME void SourceEnded(uchar channel, bigtime_t time) override;
    /// Silences every slot at once, on all channels. Any thread.
    VEXA_REALTIME void AllNotesOff(bool justChannel, bigtime_t time) override;
    /// Silences every slot at once and forgets all events: keys, glides, wheels, pedals,
    /// controllers and the zones of MPE, except those of ExpectMpe. The names of the notes that end
    /// are still reported.
    VEXA_REALTIME void Restart();

    /// Notes that a host identifies by names; notes with different names are different even on the
    /// same key. Real-time safe, MIDI thread, like all functions here that take names.
    ///
    /// Begins a named note; the velocity is 0..1.
    VEXA_REALTIME void Begin(const NoteName& name, float velocity);
    /// Releases the matching notes, or silences them at once.
    VEXA_REALTIME void End(const NoteName& pattern);
    VEXA_REALTIME void Choke(const NoteName& pattern);
    /// Sets a value of the sounding notes that match, MIDI notes included, until they end. Macros
    /// are 0..1; their modulation, -1..1, replaces the common one (Macro::modulation). Values out
    /// of range are clamped; NaN is ignored.
    VEXA_REALTIME void Express(const NoteName& pattern, Expression which, float value);
    VEXA_REALTIME void SetMacro(const NoteName& pattern, std::size_t macro, float value);
    VEXA_REALTIME void ModulateMacro(const NoteName& pattern, std::size_t macro, float amount);
    /// Reports the names of the named notes that have ended since the last call, once for each
    /// beginning. A note has ended when its key is up and it is silent for good.
    template<class Take>
    VEXA_REALTIME void TakeEnded(Take take) {
        FindEnded();
        for (std::size_t i = 0; i < endedCount; i++) {
            if (HasEnded(i))
                take(ended[i]);
        }
        endedCount = 0;
    }
    /// Returns true if no note sounds, apart from notes that are over.
    VEXA_REALTIME bool IsSilent() const;

    /// Returns the channel to which the consumer listens, 0..15, or -1 for all. Any thread.
    int32 Channel() const { return channel; }
    /// Returns true if the consumer listens to the channel, or to that of its MPE zone's master.
    /// MIDI thread.
    VEXA_REALTIME bool Accepts(uchar from) const {
        return channel == -1 || channel == from || channel == MasterOf(from);
    }
    /// Sets the channel to which the consumer listens. A change releases the held notes that
    /// arrived by the endpoint's connections. Window thread.
    void SetChannel(int32 next);

    /// Switches MPE on or off: all channels but the first then carry one note each and bend it,
    /// regardless of the sound's settings. A change ends the notes of these channels. MIDI thread,
    /// or before the first event.
    VEXA_REALTIME void ExpectMpe(bool whether = true);

    /// Sets the function from which the filters of new voices are initialised, like
    /// VoiceRenderer::SetFunction. Window thread.
    void SetFunction(const PlaneFunction& next) { function.Publish(next); }

    /// Sets the frequencies of the keys from the next note on; a key without a frequency starts no
    /// note and takes no voice. Window thread.
    void SetTuning(const Tuning& next) { tuning.Publish(next); }

    /// Sets the voice limit and silences voices until at most `limit` sound. Any thread.
    VEXA_REALTIME void ReduceToMaxVox(int32 limit);
    /// Sets the voice limit without cutting off held notes: as many voices as are held may sound
    /// until a note begins while fewer are held. Any thread.
    VEXA_REALTIME void LimitNewVox(int32 limit);
    /// Returns the number of sounding notes that are not released. Any thread.
    VEXA_REALTIME int32 CountHeld() const;
    /// Returns the number of sounding voices. Any thread.
    VEXA_REALTIME int32 CountVox() const { return CountActive(voices); }
    /// Silences the voice that would be stolen next. Any thread.
    void ReduceVoxByOne() { ReduceVoicesByOne(voices); }
    /// Returns the number of notes since the start that stole another note's slot. Any thread.
    int64 StolenVox() const { return stolen; }

    /// Copies the program's own icons into 32 x 32 and 16 x 16 B_CMAP8 bitmaps; a bitmap stays
    /// unchanged if the program has no icon.
    static void GetIcons(BBitmap* large, BBitmap* mini);
    /// Puts the icons into an endpoint's properties and replaces existing ones.
    static void AddIcons(BMessage* message, const BBitmap& large, const BBitmap& mini);

  private:
    /// Converts a data byte to 0..1.
    VEXA_REALTIME static float Normalised(uchar value) { return static_cast<float>(value / 127.0); }
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
    /// The holder of a slot's note: a key of a channel, or a host. MIDI thread.
    struct Holder {
        /// The channel on which the note arrived. Its note-off is accepted there even if the
        /// consumer's channel has changed.
        uchar channel = 0;
        /// True while the key is down.
        bool key = false;
        /// True while the pedal 66 (sostenuto) holds the note.
        bool sostenuto = false;
        /// True if its key was up before another note began on the same channel. The controls of an
        /// MPE member channel then no longer apply to the note.
        bool bygone = false;
        /// The note's name. Its id is kOfMidi for a MIDI note, and also after the note's end was
        /// reported to the host.
        NoteName name{NoteName::kOfMidi, -1, -1};
        /// The host's values for the note, in the units of Expression.
        float volume = 1, loudness = 1, pan = 0.5F;
    };
    std::array<Holder, kVoiceSlots> holders{};
    /// The names of notes that may have ended since TakeEnded.
    std::array<NoteName, 256> ended{};
    std::size_t endedCount = 0;
    std::array<MidiChannel, 16> channels{};
    MpeZones zones;
    /// The values of Playing::loads, of `panics` and of the macros' controllers that TakeUpSound
    /// last took up. MIDI thread.
    uint32 loads = 0, panicked = 0;
    std::array<int32, kMacros> macroControllers{};
    std::atomic<uint32> panics{0};
    kits::Published<PlaneFunction> function{dummyfunction};
    kits::Published<Tuning> tuning{EqualTemperament()};
    std::atomic<int32> voiceLimit{1};
    /// The number of voices that may sound regardless of the limit, because they were held when it
    /// was set.
    std::atomic<int32> spared{0};
    kits::Shared<int64> stolen{0};
    kits::Reader reader;
};

} // namespace vexa
