// SPDX-License-Identifier: GPL-3.0-or-later
// The engine turns MIDI events into samples, without devices and documents.
#pragma once

#include "midi/MidiConsumer.h"
#include "synth/SoundRecords.h"
#include "synth/VoiceRenderer.h"

namespace vexa {

/// The records of a sound, with the MIDI consumer and the renderer that share them.
struct Engine : SoundRecords {
    /// Sets the plane function from the next sample and the next note on. Window thread.
    void SetFunction(const PlaneFunction& f) {
        renderer.SetFunction(f);
        consumer.SetFunction(f);
    }

    VexaMidiConsumer consumer{"Vexa midi in", *this};
    VoiceRenderer renderer{*this};
};

} // namespace vexa
