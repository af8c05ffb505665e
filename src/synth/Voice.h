// SPDX-License-Identifier: GPL-3.0-or-later
// The sounding notes: the table that the MIDI thread fills and the media thread plays.
//
// Every field has one writing thread, so nobody's store can undo another's. The MIDI thread writes
// a note into a slot and takes note of its release; the media thread runs the note in a record of
// its own (VoiceRenderer) and shows in the slot how far it has come. Only `active` is everybody's.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "kits/support/Shared.h"
#include "kits/support/SupportDefs.h"
#include "synth/Macros.h"
#include "synth/OwnControllers.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <optional>

namespace vexa {

/// The number of values that a note's orbit formulas come to. For x and y each, x first in every
/// pair, these are the weight of the drift's envelope, the rest of the drift, and the radius
/// without its envelope.
constexpr std::size_t kOrbitSums = 6;
using OrbitSums = std::array<double, kOrbitSums>;

/// Tells whether a slot sounds, and how often its note has changed, in one word, so that silencing
/// the note that one looked at cannot silence its successor. Wait-free.
class VEXA_REALTIME VoiceState {
  public:
    /// The word at one moment.
    class VEXA_REALTIME Seen {
      public:
        VEXA_REALTIME explicit Seen(uint32 word) : word(word) {}
        /// True where the slot sounds.
        bool Active() const { return word & kActive; }
        /// The MIDI thread is rewriting the slot at this moment.
        bool Changing() const { return word & kChanging; }
        /// Returns a number that differs after every change of the note; it wraps around.
        uint32 Changes() const { return word >> 2; }
        bool operator==(const Seen&) const = default;

      private:
        friend class VoiceState;
        uint32 word;
    };

    /// Reads the word. It is sequentially consistent with every change. Any thread.
    Seen Look() const noexcept { return Seen(word.load()); }

    /// Ends the note that was seen, at once. False, and nothing happens, if the slot has changed
    /// since or is changing now. Any thread.
    bool Silence(Seen seen) noexcept {
        return !seen.Changing() && word.compare_exchange_strong(seen.word, seen.word & ~kActive);
    }

    /// MIDI thread: begins to rewrite the slot's note. Answers what the slot was.
    Seen BeginChange() noexcept { return Seen(word.fetch_or(kChanging)); }
    /// MIDI thread: the note is complete; all that was written since BeginChange is visible to
    /// whoever sees the new count of changes.
    void EndChange(bool active) noexcept {
        const uint32 changes = (word.load(std::memory_order_relaxed) >> 2) + 1;
        word.store(changes << 2 | (active ? kActive : 0));
    }
    /// MIDI thread: ends whatever note the slot has.
    void Silence() noexcept { word.fetch_and(~kActive); }

  private:
    static constexpr uint32 kActive = 1;
    static constexpr uint32 kChanging = 2;
    std::atomic<uint32> word{0};
};

/// One slot for a sounding note.
struct voice {
    VoiceState state;

    // Written by the MIDI thread between BeginChange and EndChange, read by all.

    /// Counts the notes that the slot has had; it tells a new note from a release.
    kits::Shared<uint32> notes;
    /// f at the orbit's start, which the filter is charged with so that the note begins at 0.
    kits::Shared<float> start;
    /// The note took over a slot that sounded: it begins at that slot's last output instead.
    kits::Shared<bool> continues;
    /// The orbit's centre at note-on.
    kits::Shared<float> startcx, startcy;
    /// The frequency of the key in Hz.
    kits::Shared<float> freq;
    /// The velocity divided by 127.
    kits::Shared<float> vel;
    /// The note number divided by 127, which is also the note's identity, compared exactly.
    kits::Shared<float> key;
    /// Counts the pitches that the slot has had; one that is not a new note's is taken without an
    /// attack.
    kits::Shared<uint32> tunes;
    /// The channel of the note, 0..15.
    kits::Shared<int32> channel;
    /// The pitch comes, within so many seconds, from where the slot's voice is, or from a
    /// frequency (Hz; 0 for nowhere).
    kits::Shared<float> glide;
    kits::Shared<bool> glideson;
    kits::Shared<float> glidefrom;
    /// The key has been let go.
    kits::Shared<bool> released;
    /// Written at note-off: the seconds since note-on, and the values of the four envelopes then
    /// (EnvelopePlaces).
    kits::Shared<float> heldfor;
    std::array<kits::Shared<float>, 4> rellevel;

    // Written by the MIDI thread at any time, read by all.

    /// The bend of the note in semitones.
    kits::Shared<float> bend;
    /// The values of OwnValues.
    std::array<kits::Shared<float>, kOwnControllers> own;
    std::array<kits::Shared<OwnMacro>, kMacros> macros;
    /// Semitones on top, however the sound is played.
    kits::Shared<float> tuning;
    /// The factors on what the left and the right ear hear of it.
    std::array<kits::Shared<float>, 2> gains{1.0F, 1.0F};
    /// Counts the changes of macros, tuning and gains; it is written after them.
    kits::Shared<uint32> expressed;

    // Written by the media thread after each stretch that it has rendered, read by all.

    /// state.Changes() of the note that the following fields are about, written after them.
    kits::Shared<uint32> rendered;
    /// The count `notes` of that note.
    kits::Shared<uint32> renderednotes;
    /// Seconds since note-on or, once released, since note-off.
    kits::Shared<double> t;
    /// The phases in radians, 0 at note-on and never wrapped.
    kits::Shared<double> phasex, phasey;
    kits::Shared<double> cx, cy;
    /// The frequency that is heard in Hz, with glide and bend.
    kits::Shared<float> pitch;
    /// The values of OrbitSums.
    std::array<kits::Shared<double>, kOrbitSums> sums;
    /// The last sample, after the filter.
    kits::Shared<float> out;
    /// It is released, its point has come to a stand for good, and nothing more is heard of it.
    kits::Shared<bool> over;
};

/// Slots for one note more than may ever sound, so that a free one is always found.
constexpr int kVoiceSlots = 21;
/// The most voices that a user may ask for.
constexpr int kMostVoices = kVoiceSlots - 1;
using VoiceTable = std::array<voice, kVoiceSlots>;

/// A sounding note as the media thread will go on with it.
struct VoiceView {
    bool released;
    double t, phasex, phasey, cx, cy;
    /// Hz, as it is heard.
    float freq;
    float vel, key;
    /// The sums as they are heard; nothing where the note has not been heard yet.
    std::optional<OrbitSums> sums;
    std::array<float, 4> rellevel;
};

/// Reads the slot's own controllers, as they are now. Any thread.
VEXA_REALTIME OwnValues OwnOf(const voice& slot);

/// Reads a slot. Where the media thread has not taken a new note or a release up yet, the note is
/// where it will start, at t = 0. Where the note changes meanwhile, fields of the old and the new
/// may mix. Any thread.
VoiceView Look(const voice& slot);

/// Returns the seconds since note-on or note-off, as Look gives them.
VEXA_REALTIME double Seconds(const voice& slot, VoiceState::Seen seen);

/// True where the slot's note does not sound or is over, as far as the media thread has come. Any
/// thread.
VEXA_REALTIME bool IsOver(const voice& slot, VoiceState::Seen seen);

/// True where IsOver is true of all slots. Any thread.
bool IsSilent(const VoiceTable& voices);

/// Counts the slots of which IsOver is not true. Any thread.
int CountHeard(const VoiceTable& voices);

/// Counts the slots that sound, also those that are over. Any thread.
VEXA_REALTIME int CountActive(const VoiceTable& voices);

/// The voice that is given up first: among the released ones that sound, the longest released,
/// else the longest held; of equal ones the highest slot. `seen` is the state it was chosen by.
struct Choice {
    int slot;
    VoiceState::Seen seen;
};
/// slot is -1 when nothing sounds. Any thread, wait-free.
VEXA_REALTIME Choice LongestVoice(const VoiceTable& voices);

/// Silences LongestVoice. Where that note has just been replaced it chooses again, at most once per
/// slot. False if nothing was silenced. Any thread, wait-free.
VEXA_REALTIME bool ReduceVoicesByOne(VoiceTable& voices);

/// Silences the notes whose keys have been let go, at once. Any thread, wait-free.
void SilenceReleased(VoiceTable& voices);

} // namespace vexa
