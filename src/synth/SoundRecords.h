// SPDX-License-Identifier: GPL-3.0-or-later
// The records that a sound's notes, its renderer and its views share.
#pragma once

#include "synth/Envelope.h"
#include "synth/Macros.h"
#include "synth/ParameterTable.h"
#include "synth/Playing.h"
#include "synth/SoundParam.h"
#include "synth/Voice.h"

namespace vexa {

/// The shared records of a sound. Initially the parameters refer to the record's own envelopes; a
/// window makes them refer to its envelope editors.
struct SoundRecords {
    SoundRecords() {
        for (std::size_t i = 0; i < envelopes.size(); i++)
            parameters.*EnvelopePlaces()[i].target = &envelopes[i];
    }
    SoundRecords(const SoundRecords&) = delete;
    SoundRecords& operator=(const SoundRecords&) = delete;

    ControllerTable controllers;
    /// The envelopes in the order of EnvelopePlaces().
    std::array<Envelope, 4> envelopes{NewEnvelope(0), NewEnvelope(1), NewEnvelope(2),
                                      NewEnvelope(3)};
    sound_param parameters;
    Macros macros;
    Playing playing;
    ChannelVolumes volumes;
    VoiceTable voices;

  private:
    static Envelope NewEnvelope(std::size_t place) {
        const EnvelopePlace& row = EnvelopePlaces()[place];
        return {row.minimum, row.maximum, kEnvelopeTimeRange};
    }
};

} // namespace vexa
