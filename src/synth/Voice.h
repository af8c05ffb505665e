// SPDX-License-Identifier: GPL-3.0-or-later
// The sounding notes: the table that the MIDI thread fills and the media thread plays.
//
// Every field has one writing thread, so no thread's store can undo another's. The MIDI thread
// writes a note into a slot and records its release there; the media thread runs the note in a
// private record (VoiceRenderer) and publishes its progress in the slot. Only `state` may be
// written by all.
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

/// The number of values to which a note's orbit formulas reduce. For x and y each, x first in every
/// pair, these are the weight of the drift's envelope, the rest of the drift, and the radius
/// without its envelope.
constexpr std::size_t kOrbitSums = 6;
using OrbitSums = std::array<double, kOrbitSums>;

/// Holds in one word whether a slot sounds and how often its note has changed, so that an attempt
/// to silence a note cannot silence its successor. Wait-free.
class VEXA_REALTIME VoiceState {
  public:
    /// A snapshot of the word.
    class VEXA_REALTIME Seen {
      public:
        VEXA_REALTIME explicit Seen(uint32 word) : word(word) {}
        /// Returns true if the slot sounds.
        bool Active() const { return word & kActive; }
        /// Returns true if the MIDI thread is rewriting the slot.
        bool Changing() const { return word & kChanging; }
        /// Returns a count that every change of the note increases; it wraps around.
        uint32 Changes() const { return word >> 2; }
        bool operator==(const Seen&) const = default;

      private:
        friend class VoiceState;
        uint32 word;
    };

    /// Reads the word. It is sequentially consistent with every change. Any thread.
    Seen Look() const noexcept { return Seen(word.load()); }

    /// Ends the note of the snapshot at once. Returns false, without effect, if the slot has
    /// changed since or is changing now. Any thread.
    bool Silence(Seen seen) noexcept {
        return !seen.Changing() && word.compare_exchange_strong(seen.word, seen.word & ~kActive);
    }

    /// MIDI thread: begins to rewrite the slot's note. Returns the previous state.
    Seen BeginChange() noexcept { return Seen(word.fetch_or(kChanging)); }
    /// MIDI thread: completes the note. All writes since BeginChange are visible to a thread that
    /// reads the new count of changes.
    void EndChange(bool active) noexcept {
        const uint32 changes = (word.load(std::memory_order_relaxed) >> 2) + 1;
        word.store(changes << 2 | (active ? kActive : 0));
    }
    /// MIDI thread: ends the slot's current note, if any.
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

    /// Counts the slot's notes; this distinguishes a new note from a release.
    kits::Shared<uint32> notes;
    /// The value of f at the orbit's start. The filter is initialised with it so that the note
    /// begins at 0.
    kits::Shared<float> start;
    /// True if the note took over a sounding slot: it then begins at that slot's last output
    /// instead.
    kits::Shared<bool> continues;
    /// The orbit's centre at note-on.
    kits::Shared<float> startcx, startcy;
    /// The frequency of the key in Hz.
    kits::Shared<float> freq;
    /// The velocity divided by 127.
    kits::Shared<float> vel;
    /// The note number divided by 127, which is also the note's identity, compared exactly.
    kits::Shared<float> key;
    /// Counts the slot's pitches; a new pitch without a new note is taken without an attack.
    kits::Shared<uint32> tunes;
    /// The channel of the note, 0..15.
    kits::Shared<int32> channel;
    /// The glide to the pitch: its duration in seconds, and whether it starts at the pitch of the
    /// slot's voice or at a given frequency (Hz; 0 for no glide).
    kits::Shared<float> glide;
    kits::Shared<bool> glideson;
    kits::Shared<float> glidefrom;
    /// True after the key was released.
    kits::Shared<bool> released;
    /// Written at note-off: the seconds since note-on, and the four envelopes' values at that time
    /// (EnvelopePlaces).
    kits::Shared<float> heldfor;
    std::array<kits::Shared<float>, 4> rellevel;

    // Written by the MIDI thread at any time, read by all.

    /// The bend of the note in semitones.
    kits::Shared<float> bend;
    /// The values of OwnValues.
    std::array<kits::Shared<float>, kOwnControllers> own;
    std::array<kits::Shared<OwnMacro>, kMacros> macros;
    /// An additional tuning in semitones, which applies regardless of the sound's settings.
    kits::Shared<float> tuning;
    /// The gains of the note for the left and the right ear.
    std::array<kits::Shared<float>, 2> gains{1.0F, 1.0F};
    /// Counts the changes of macros, tuning and gains; written after them.
    kits::Shared<uint32> expressed;

    // Written by the media thread after each stretch that it has rendered, read by all.

    /// state.Changes() of the note to which the following fields belong, written after them.
    kits::Shared<uint32> rendered;
    /// The count `notes` of that note.
    kits::Shared<uint32> renderednotes;
    /// Seconds since note-on or, once released, since note-off.
    kits::Shared<double> t;
    /// The phases in radians, 0 at note-on and never wrapped.
    kits::Shared<double> phasex, phasey;
    kits::Shared<double> cx, cy;
    /// The sounding frequency in Hz, with glide and bend.
    kits::Shared<float> pitch;
    /// The values of OrbitSums.
    std::array<kits::Shared<double>, kOrbitSums> sums;
    /// The last sample, after the filter.
    kits::Shared<float> out;
    /// True if the note is released and will not be heard any more: its point has stopped for good
    /// and it stays silent, or the value of f has long changed too slowly to be heard.
    kits::Shared<bool> over;
};

/// One slot more than the notes that may sound at once, so that a free slot always exists.
constexpr int kVoiceSlots = 21;
/// The highest polyphony that a user may set.
constexpr int kMostVoices = kVoiceSlots - 1;
using VoiceTable = std::array<voice, kVoiceSlots>;

/// A sounding note in the state from which the media thread will continue.
struct VoiceView {
    bool released;
    double t, phasex, phasey, cx, cy;
    /// The sounding frequency in Hz.
    float freq;
    float vel, key;
    /// The sums in use; nothing if the note has not been rendered yet.
    std::optional<OrbitSums> sums;
    std::array<float, 4> rellevel;
};

/// Reads the current values of the slot's own controllers. Any thread.
VEXA_REALTIME OwnValues OwnOf(const voice& slot);

/// Reads a slot. If the media thread has not yet taken up a new note or a release, the result is
/// the note's starting state, at t = 0. If the note changes during the call, fields of the old and
/// the new note may mix. Any thread.
VoiceView Look(const voice& slot);

/// Returns the seconds since note-on or note-off, equal to those that Look returns.
VEXA_REALTIME double Seconds(const voice& slot, VoiceState::Seen seen);

/// Returns true if the slot's note does not sound, or if the media thread has published that it is
/// over. Any thread.
VEXA_REALTIME bool IsOver(const voice& slot, VoiceState::Seen seen);

/// Returns true if IsOver is true for all slots. Any thread.
bool IsSilent(const VoiceTable& voices);

/// Returns the number of slots for which IsOver is false. Any thread.
int CountHeard(const VoiceTable& voices);

/// Returns the number of sounding slots, including those that are over. Any thread.
VEXA_REALTIME int CountActive(const VoiceTable& voices);

/// The voice to steal first: of the sounding released voices the longest released, else the longest
/// held. Of times that are equal when rounded to floats the highest slot is chosen. `seen` is the
/// state by which it was chosen.
struct Choice {
    int slot;
    VoiceState::Seen seen;
};
/// `slot` is -1 if nothing sounds. Any thread, wait-free.
VEXA_REALTIME Choice LongestVoice(const VoiceTable& voices);

/// Silences LongestVoice. If that note has just been replaced, it chooses again, at most once per
/// slot. Returns false if nothing was silenced. Any thread, wait-free.
VEXA_REALTIME bool ReduceVoicesByOne(VoiceTable& voices);

/// All notes with released keys, or those of them that are over, which another sound could make
/// audible again.
enum class Released { All, Over };

/// Silences these notes at once. Any thread, wait-free.
void SilenceReleased(VoiceTable& voices, Released which);

} // namespace vexa
