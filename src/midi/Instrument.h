// A whole instrument without devices: MIDI events in, samples out.
#pragma once

#include "midi/MidiConsumer.h"
#include "synth/Envelope.h"
#include "synth/ParameterTable.h"
#include "synth/SoundParam.h"
#include "synth/Voice.h"
#include "synth/VoiceRenderer.h"

namespace vexa {

/// The shared records of a sound with its four envelopes, and the two that work on them. A window
/// keeps the records among its own members; a program without one keeps an Instrument.
struct Instrument {
    Instrument() {
        for (std::size_t i = 0; i < envelopes.size(); i++)
            parameters.*EnvelopePlaces()[i].target = &envelopes[i];
    }
    Instrument(const Instrument&) = delete;
    Instrument& operator=(const Instrument&) = delete;

    /// The plane function from the next sample and the next note on. Window thread.
    void SetFunction(const PlaneFunction& f) {
        renderer.SetFunction(f);
        consumer.SetFunction(f);
    }

    static Envelope NewEnvelope(const EnvelopePlace& place) {
        return {place.minimum, place.maximum, kEnvelopeTimeRange};
    }

    ControllerTable controllers;
    /// In the order of EnvelopePlaces().
    std::array<Envelope, 4> envelopes{
        NewEnvelope(EnvelopePlaces()[0]), NewEnvelope(EnvelopePlaces()[1]),
        NewEnvelope(EnvelopePlaces()[2]), NewEnvelope(EnvelopePlaces()[3])};
    sound_param parameters;
    VoiceTable voices;
    VexaMidiConsumer consumer{"Vexa midi in", controllers, parameters, voices};
    VoiceRenderer renderer{controllers, parameters, voices};
};

} // namespace vexa
