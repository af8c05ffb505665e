// SPDX-License-Identifier: GPL-3.0-or-later
// The state of the keys, pedals and other controls of one MIDI channel.
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

/// The keys that are down, in the order of their note-ons.
class VEXA_REALTIME HeldKeys {
  public:
    struct Key {
        NoteName name;
        /// The velocity, 0..1.
        float velocity = 0;
        /// True if the pedal 66 (sostenuto) was pressed while the key was down.
        bool sostenuto = false;
    };
    /// A key that is already down moves to the end; if there are too many, the first is dropped.
    void Press(const Key& key);
    /// Reports the names of the matching keys that were down.
    template<class Take>
    void Release(const NoteName& pattern, Take take) {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < count; i++) {
            if (keys[i].name.Fits(pattern))
                take(keys[i].name);
            else
                keys[kept++] = keys[i];
        }
        count = kept;
    }
    /// Sets whether the pedal 66 holds the matching keys.
    void Hold(const NoteName& pattern, bool sostenuto);
    bool Has(const NoteName& name) const;
    /// Returns the most recent key that is still down; nothing if there is none.
    std::optional<Key> Last() const;

  private:
    std::array<Key, 128> keys{};
    std::size_t count = 0;
};

/// The controls of one channel, as they were last received. MIDI thread.
class VEXA_REALTIME MidiChannel {
  public:
    /// The state that a control message has changed.
    enum class Change { None, Bend, Volume, Zone };
    /// Takes up volume, expression and two registered parameters: the range of the bend wheel (0),
    /// of semitones and hundredths, each of which may come alone, at most 96 semitones; and the MPE
    /// zone (6), whose number of members is the value. Other parameters have no effect. Data
    /// increment and decrement, whatever their value, step the range by a semitone, starting from
    /// `usualRange` if none was received.
    Change Control(uchar controller, uchar value, float usualRange);
    void SetBend(uchar lsb, uchar msb);
    /// Resets the controls that controller 121 resets by the MIDI Association's recommended
    /// practice, as far as they are kept here: bend, expression, parameter, pedals.
    void Reset();
    /// Clears the channel's own values of the macros' controllers, which Reset leaves.
    void ForgetMacros() { std::fill(own.begin() + kOwnMacros, own.end(), -1.0F); }
    /// Centres the wheel.
    void CentreBend() { bend = 0; }
    /// Clears the range of the wheel, in semitones, or copies the one that another channel
    /// received.
    void ForgetRange() { range = {}; }
    void TakeRange(const MidiChannel& other) { range = other.range; }

    /// Returns the bend in semitones; `otherwise` is the range if none was received.
    float Bend(float otherwise) const { return bend * range.Of(otherwise); }
    /// Returns the channel's gain from volume and expression.
    float Volume() const { return volume * expression; }

    /// True while the pedals 64 (sustain) and 66 (sostenuto) are down.
    bool sustain = false, sostenuto = false;
    /// The values of the single note on an MPE member channel; until some arrive they are the
    /// initial values of MPE.
    OwnValues own = kNoteBegins;
    HeldKeys keys;
    /// The frequency of the last note in Hz, 0 before there was one.
    float frequency = 0;
    /// The slot of the single voice in a monophonic mode; -1 before the first.
    int voice = -1;

  private:
    static constexpr OwnValues kNoteBegins{0, 64.0F / 127, -1, -1, -1, -1};

    /// The wheel's range in semitones, if one was received.
    struct Range {
        std::optional<uchar> semitones;
        std::optional<uchar> hundredths;
        VEXA_REALTIME float Of(float otherwise) const;
        /// Moves the range by `steps` semitones, within 0 to 96.
        VEXA_REALTIME void Step(int steps, float otherwise);
    };

    /// Returns whether data messages apply to that registered parameter.
    VEXA_REALTIME bool IsFor(uchar parameter) const {
        return parameterMsb == 0 && parameterLsb == parameter;
    }

    /// The wheel's position, -1..1, with 0 in the middle.
    float bend = 0;
    float volume = 1, expression = 1;
    /// The registered parameter to which data messages apply; 127, 127 means none.
    uchar parameterMsb = 127, parameterLsb = 127;
    Range range;
};

} // namespace vexa
