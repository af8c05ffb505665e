// SPDX-License-Identifier: GPL-3.0-or-later
// A MIDI system gives us one input port, and the other programs' sources.
#pragma once

#include "kits/midi/MidiThread.h"
#include "kits/support/Result.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kits {

/// A connection to one MIDI system. Its functions are called one at a time, from any thread but the
/// real-time ones and the system's. `changed` runs in whatever thread the system chooses: it must
/// only take note.
class MidiBackend {
  public:
    virtual ~MidiBackend() = default;

    /// Names of the sources of other programs, as the system shows them.
    virtual std::vector<std::string> Sources() = 0;

    /// Makes a port of this name, to which other programs may connect sources, whose bytes go into
    /// the inlet `shared`. Those of the sources that Connect connects go into `chosen`, so that
    /// each vanishes with its own notes. There is at most one port.
    virtual Result<void> OpenInput(const std::string& name, MidiThread::Inlet& shared,
                                   MidiThread::Inlet& chosen) = 0;
    /// Closes the port. When it returns nothing more is put into the inlets.
    virtual void CloseInput() = 0;

    /// Connects the source of that name to the input; the error names the source.
    virtual Result<void> Connect(const std::string& source) = 0;
    virtual void Disconnect(const std::string& source) = 0;

    /// The system has ended, for good: it is to be opened anew.
    virtual bool HasGone() const { return false; }
};

/// The error says why there is no such system. `changed` is called when sources have come or gone,
/// where the system tells, and when the system has gone; otherwise the sources must be asked for
/// now and then. Wait for as long as the system takes to answer.
Result<std::unique_ptr<MidiBackend>> OpenJackMidi(std::function<void()> changed);
Result<std::unique_ptr<MidiBackend>> OpenAlsaMidi(std::function<void()> changed);

} // namespace kits
