// SPDX-License-Identifier: GPL-3.0-or-later
// The ports and the thread of a registered consumer.
#pragma once

#include "kits/midi/EventGate.h"
#include "kits/support/SupportDefs.h"

namespace kits {

/// Made by BMidiLocalConsumer::Register, the only function that needs MIDI systems. A program that
/// never calls it, such as a plug-in, needs none of them.
class MidiConnection {
  public:
    virtual ~MidiConnection() = default;

    virtual void EndNotes() noexcept = 0;
    virtual status_t Connect(int32 source, bool connected) = 0;
    virtual int64 LostPieces() const = 0;
    virtual EventGate& Gate() = 0;
};

} // namespace kits
