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

/// What the sums of a note's orbit formulas come to, x and y by turns: the weight of the drift's
/// envelope, the rest of the drift, the radius without its envelope.
constexpr std::size_t kOrbitSums = 6;
using OrbitSums = std::array<double, kOrbitSums>;

/// Whether a slot sounds, and how often its note has changed, in one word, so that silencing the
/// note that one looked at cannot silence its successor. Wait-free.
class VEXA_REALTIME VoiceState {
  public:
    /// The word at one moment.
    class VEXA_REALTIME Seen {
      public:
        VEXA_REALTIME explicit Seen(uint32 word) : word(word) {}
        /// The slot sounds.
        bool Active() const { return word & kActive; }
        /// The MIDI thread is rewriting the slot at this moment.
        bool Changing() const { return word & kChanging; }
        /// Different after every change of the note; wraps around.
        uint32 Changes() const { return word >> 2; }
        bool operator==(const Seen&) const = default;

      private:
        friend class VoiceState;
        uint32 word;
    };

    /// Any thread. Sequentially consistent with every change.
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

    /// How many notes the slot has had; tells a new note from a release.
    kits::Shared<uint32> notes;
    /// f at the orbit's start, which the filter is charged with so that the note begins at 0.
    kits::Shared<float> start;
    /// The note took over a slot that sounded: it begins at that slot's last output instead.
    kits::Shared<bool> continues;
    /// The orbit's centre at note-on.
    kits::Shared<float> startcx, startcy;
    /// Hz.
    kits::Shared<float> freq;
    /// Velocity / 127.
    kits::Shared<float> vel;
    /// Note number / 127: also the note's identity, compared exactly.
    kits::Shared<float> key;
    /// How many pitches the slot has had; one that is not a new note's is taken without an attack.
    kits::Shared<uint32> tunes;
    /// 0..15.
    kits::Shared<int32> channel;
    /// The pitch comes, within so many seconds, from where the slot's voice is, or from a
    /// frequency (Hz; 0 for nowhere).
    kits::Shared<float> glide;
    kits::Shared<bool> glideson;
    kits::Shared<float> glidefrom;
    /// The key has been let go.
    kits::Shared<bool> released;
    /// At note-off: seconds since note-on, and the four envelopes' values then (EnvelopePlaces).
    kits::Shared<float> heldfor;
    std::array<kits::Shared<float>, 4> rellevel;

    // Written by the MIDI thread at any time, read by all.

    /// Semitones.
    kits::Shared<float> bend;
    /// As OwnValues.
    std::array<kits::Shared<float>, kOwnControllers> own;
    std::array<kits::Shared<OwnMacro>, kMacros> macros;
    /// Semitones on top, however the sound is played.
    kits::Shared<float> tuning;
    /// The factors on what the left and the right ear hear of it.
    std::array<kits::Shared<float>, 2> gains{1.0F, 1.0F};
    /// How often macros, tuning and gains have changed, written after them.
    kits::Shared<uint32> expressed;

    // Written by the media thread after each stretch that it has rendered, read by all.

    /// state.Changes() of the note that the following fields are about, written after them.
    kits::Shared<uint32> rendered;
    /// `notes` of that note.
    kits::Shared<uint32> renderednotes;
    /// Seconds since note-on or, once released, since note-off.
    kits::Shared<double> t;
    /// Radians, 0 at note-on, never wrapped.
    kits::Shared<double> phasex, phasey;
    kits::Shared<double> cx, cy;
    /// Hz, with glide and bend.
    kits::Shared<float> pitch;
    /// As OrbitSums.
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
    /// As they are heard; nothing where the note has not been.
    std::optional<OrbitSums> sums;
    std::array<float, 4> rellevel;
};

/// The slot's own controllers, as they are now. Any thread.
VEXA_REALTIME OwnValues OwnOf(const voice& slot);

/// Reads a slot. Where the media thread has not taken a new note or a release up yet, the note is
/// where it will start: at t = 0. Read while the note changes, fields of the old and the new may
/// mix. Any thread.
VoiceView Look(const voice& slot);

/// Seconds since note-on or note-off, as Look.
VEXA_REALTIME double Seconds(const voice& slot, VoiceState::Seen seen);

/// Whether the slot's note does not sound or is over, as far as the media thread has come. Any
/// thread.
VEXA_REALTIME bool IsOver(const voice& slot, VoiceState::Seen seen);

/// Whether that is so of all. Any thread.
bool IsSilent(const VoiceTable& voices);

/// Slots that sound. Any thread.
VEXA_REALTIME int CountActive(const VoiceTable& voices);

/// The voice that is given up first: among the released ones that sound, the longest released,
/// else the longest held; of equal ones the highest slot. `seen` is the state it was chosen by.
struct Choice {
    int slot;
    VoiceState::Seen seen;
};
/// slot is -1 when nothing sounds. Any thread, wait-free.
VEXA_REALTIME Choice LongestVoice(const VoiceTable& voices);

/// Silences LongestVoice. Where that note has just been replaced, chooses again, at most once per
/// slot; false if nothing was silenced. Any thread, wait-free.
VEXA_REALTIME bool ReduceVoicesByOne(VoiceTable& voices);

/// Silences the notes whose keys have been let go, at once. Any thread, wait-free.
void SilenceReleased(VoiceTable& voices);

} // namespace vexa
