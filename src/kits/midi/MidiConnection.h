// SPDX-License-Identifier: GPL-3.0-or-later
// A registered consumer has this: its ports and its thread.
#pragma once

#include "kits/midi/EventGate.h"
#include "kits/support/SupportDefs.h"

namespace kits {

/// Made by BMidiLocalConsumer::Register, which alone knows MIDI systems; a program that never calls
/// it, a plug-in for one, needs none of them.
class MidiConnection {
  public:
    virtual ~MidiConnection() = default;

    virtual void EndNotes() noexcept = 0;
    virtual status_t Connect(int32 source, bool connected) = 0;
    virtual int64 LostPieces() const = 0;
    virtual EventGate& Gate() = 0;
};

} // namespace kits
