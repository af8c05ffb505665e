// SPDX-License-Identifier: GPL-3.0-or-later
// This keeps what the hands hold on one MIDI channel.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "kits/support/SupportDefs.h"
#include "midi/NoteName.h"
#include "synth/OwnControllers.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>

namespace vexa {

/// The keys that are down, in the order in which they were struck.
class VEXA_REALTIME HeldKeys {
  public:
    struct Key {
        NoteName name;
        /// The velocity, 0..1.
        float velocity;
        /// The pedal 66 was pressed while the key was down.
        bool sostenuto = false;
    };
    /// A key that is down already becomes the last one; of too many the first is forgotten.
    void Press(const Key& key);
    /// Tells the names of the keys that fit and were down.
    template<class Told>
    void Release(const NoteName& pattern, Told told) {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < count; i++) {
            if (keys[i].name.Fits(pattern))
                told(keys[i].name);
            else
                keys[kept++] = keys[i];
        }
        count = kept;
    }
    /// Says of the keys that fit whether the pedal 66 holds them.
    void Hold(const NoteName& pattern, bool sostenuto);
    bool Has(const NoteName& name) const;
    /// Returns the last key that is still down.
    std::optional<Key> Last() const;

  private:
    std::array<Key, 128> keys;
    std::size_t count = 0;
};

/// The controls of one channel, as they were last received. MIDI thread.
class VEXA_REALTIME MidiChannel {
  public:
    /// What a control has changed.
    enum class Change { None, Bend, Volume, Zone };
    /// Volume, expression, and by registered parameters the range of the bend wheel (0: semitones
    /// and hundredths, each of which may come alone, 96 semitones at most) and the zone of MPE (6),
    /// whose members are the value; other parameters change nothing. Data increment and decrement,
    /// whatever their value, step the range by a semitone, from `usualRange` where none was told.
    Change Control(uchar controller, uchar value, float usualRange);
    void SetBend(uchar lsb, uchar msb);
    /// Resets what controller 121 resets by the MIDI association's practice, as far as it is kept
    /// here: bend, expression, parameter, pedals.
    void Reset();
    /// Forgets what the channel has of the macros' controllers, which Reset leaves.
    void ForgetMacros() { std::fill(own.begin() + kOwnMacros, own.end(), -1.0F); }
    /// Brings the wheel back to its middle.
    void CentreBend() { bend = 0; }
    /// The range of the wheel, in semitones, is forgotten, or is the one that another channel was
    /// told.
    void ForgetRange() { range = {}; }
    void TakeRange(const MidiChannel& other) { range = other.range; }

    /// Semitones; `otherwise` is the range where none was told.
    float Bend(float otherwise) const { return bend * range.Of(otherwise); }
    /// Returns the factor on the output, by volume and expression.
    float Volume() const { return volume * expression; }

    /// True while the pedals 64 (sustain) and 66 (sostenuto) are down.
    bool sustain = false, sostenuto = false;
    /// The values that a note alone on the channel has; before any came they are those with which
    /// MPE begins a note.
    OwnValues own = kNoteBegins;
    HeldKeys keys;
    /// The frequency of the last note in Hz, 0 before there was one.
    float frequency = 0;
    /// The slot of the one voice, while there may be one only; -1 before.
    int voice = -1;

  private:
    static constexpr OwnValues kNoteBegins{0, 64.0F / 127, -1, -1, -1, -1};

    /// The interval, in semitones, by which the wheel bends at most, as far as it was told.
    struct Range {
        std::optional<uchar> semitones;
        std::optional<uchar> hundredths;
        VEXA_REALTIME float Of(float otherwise) const;
        /// By so many semitones, as far as there are any.
        VEXA_REALTIME void Step(int steps, float otherwise);
    };

    /// Whether data are for that registered parameter.
    VEXA_REALTIME bool IsFor(uchar parameter) const {
        return parameterMsb == 0 && parameterLsb == parameter;
    }

    /// The wheel's place, -1..1, with 0 in the middle.
    float bend = 0;
    float volume = 1, expression = 1;
    /// The parameter that data are for; 127, 127 is none.
    uchar parameterMsb = 127, parameterLsb = 127;
    Range range;
};

} // namespace vexa
