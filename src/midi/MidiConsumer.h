// SPDX-License-Identifier: GPL-3.0-or-later
// Notes in: turns MIDI events into changes of the voice and controller tables.
#pragma once

#include "kits/midi/MidiLocalConsumer.h"
#include "kits/support/Bitmap.h"
#include "kits/support/Published.h"
#include "midi/MidiChannel.h"
#include "midi/MpeZones.h"
#include "synth/Macros.h"
#include "synth/PlaneFunction.h"
#include "synth/Playing.h"
#include "synth/SoundParam.h"
#include "synth/Voice.h"
#include "tuning/Tuning.h"

#include <array>
#include <atomic>

namespace vexa {

/// The program's MIDI input. It decides which note takes which voice slot and computes what a voice
/// starts with; the renderer plays what it has set up. An event takes effect when its hook runs,
/// its time argument is not looked at.
class VexaMidiConsumer : public BMidiLocalConsumer {
  public:
    /// The records are shared and outlive the consumer. Starts with all channels, a voice limit of
    /// 1, dummyfunction and equal temperament. Window thread.
    VexaMidiConsumer(const char* name, ControllerTable& controllers, Macros& macros,
                     const sound_param& parameters, Playing& playing, ChannelVolumes& volumes,
                     VoiceTable& voices);
    ~VexaMidiConsumer() override { Unregister(); }

    /// MIDI thread. A velocity of 0 is a velocity like others: only NoteOff releases.
    void NoteOff(uchar channel, uchar note, uchar velocity, bigtime_t time) override;
    void NoteOn(uchar channel, uchar note, uchar velocity, bigtime_t time) override;
    void ControlChange(uchar channel, uchar controller, uchar value, bigtime_t time) override;
    void KeyPressure(uchar channel, uchar note, uchar pressure, bigtime_t time) override;
    void ChannelPressure(uchar channel, uchar pressure, bigtime_t time) override;
    void PitchBend(uchar channel, uchar lsb, uchar msb, bigtime_t time) override;
    void SourceEnded(uchar channel, bigtime_t time) override;
    /// Silences every slot at once, whatever the channel. Any thread.
    void AllNotesOff(bool justChannel, bigtime_t time) override;

    /// The channel that is listened to, 0..15, or -1 for all. Any thread.
    int32 Channel() const { return channel; }
    /// A change releases the notes that have come in by the endpoint's connections and are held.
    /// Window thread.
    void SetChannel(int32 next);

    /// All channels but the first are those of one note each from the beginning on (MPE), and bend,
    /// whether a sound says how it is played or not. Before the first event. Window thread.
    void ExpectMpe();

    /// The function that new voices are charged with; as VoiceRenderer::SetFunction. Window thread.
    void SetFunction(const PlaneFunction& next) { function.Publish(next); }

    /// The frequencies of the notes from the next one on; a key with none starts no note and takes
    /// no voice. Window thread.
    void SetTuning(const Tuning& next) { tuning.Publish(next); }

    /// Silences voices until at most `limit` sound, which then is the voice limit. Window thread.
    void ReduceToMaxVox(int32 limit);
    /// Notes that sound and are not released. Any thread.
    int32 CountHeld() const;
    /// Voices that sound. Any thread.
    int32 CountVox() const { return CountActive(voices); }
    /// Silences the voice that the next stolen note would take. Any thread.
    void ReduceVoxByOne() { ReduceVoicesByOne(voices); }
    /// Notes since the start that took the slot of another. Any thread.
    int64 StolenVox() const { return stolen; }

    /// Copies the program's own icons into 32 x 32 and 16 x 16 B_CMAP8 bitmaps; they stay as they
    /// are where it has none.
    static void GetIcons(BBitmap* large, BBitmap* mini);
    /// Puts the icons into an endpoint's properties, in place of those that are there.
    static void AddIcons(BMessage* message, const BBitmap& large, const BBitmap& mini);

  private:
    bool Accepts(uchar from) const {
        return channel == -1 || channel == from || channel == MasterOf(from);
    }
    int ChooseSlot(float key, uchar from);
    void KeepToLimit();
    void Strike(uchar from, uchar note, uchar velocity);
    void Release(std::size_t index);

    void TakeUpSound();
    std::optional<uchar> MasterOf(uchar from) const;
    bool IsOwn(uchar from) const;
    MidiChannel& HandOf(uchar from);
    bool Concerns(uchar from, uchar to) const;
    bool IsThatNote(std::size_t index, uchar from) const;
    OwnValues OwnOf(uchar from) const;
    float BendOf(uchar from) const;
    void ConfigureZone(uchar master, uchar members);
    void SetOwn(uchar from, std::size_t which, float value);
    bool Plays(int index, uchar from) const;
    bool Sustains(std::size_t index) const;
    void ReleaseUnheld(uchar from);
    void HoldSostenuto(uchar from);
    void LiftPedals(uchar from);
    void SetController(uchar controller, float value);
    void ApplyBend(uchar from);
    void ApplyVolume(uchar from);
    void ResetControllers(uchar from);
    void PublishIcons();

    ControllerTable& controllers;
    Macros& macros;
    const sound_param& parameters;
    Playing& playing;
    ChannelVolumes& volumes;
    VoiceTable& voices;
    kits::Shared<int32> channel{-1};
    /// What holds a slot's note. MIDI thread.
    struct Holder {
        /// Where the note came on; its end is listened to there, whatever the channel is by then.
        uchar channel = 0;
        /// The key is down.
        bool key = false;
        /// The pedal 66 holds it.
        bool sostenuto = false;
        /// It was released before another began on the channel of its own.
        bool bygone = false;
    };
    std::array<Holder, kVoiceSlots> holders{};
    std::array<MidiChannel, 16> channels{};
    MpeZones zones;
    /// What TakeUpSound has taken up: of Playing::loads and `panics`. MIDI thread.
    uint32 loads = 0, panicked = 0;
    std::atomic<uint32> panics{0};
    kits::Published<PlaneFunction> function{dummyfunction};
    kits::Published<Tuning> tuning{EqualTemperament()};
    std::atomic<int32> voiceLimit{1};
    kits::Shared<int64> stolen{0};
    kits::Reader reader;
};

} // namespace vexa
