// SPDX-License-Identifier: GPL-3.0-or-later
// A MIDI system, which offers one input port and lists the other programs' sources.
#pragma once

#include "kits/midi/MidiThread.h"
#include "kits/support/Result.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kits {

/// A connection to one MIDI system. Its functions are called one at a time, from any thread but the
/// real-time ones and the system's. `changed` runs in a thread of the system's choice and must only
/// set a flag or post a semaphore.
class MidiBackend {
  public:
    virtual ~MidiBackend() = default;

    /// Returns the names of the sources of other programs, as the system shows them.
    virtual std::vector<std::string> Sources() = 0;

    /// Makes a port of this name, to which other programs may connect sources; their bytes go into
    /// the inlet `shared`. The bytes of sources that Connect connects go into `chosen`, so that the
    /// notes of either kind can be ended separately. There is at most one port.
    virtual Result<void> OpenInput(const std::string& name, MidiThread::Inlet& shared,
                                   MidiThread::Inlet& chosen) = 0;
    /// Closes the port. When it returns, nothing is put into the inlets any more.
    virtual void CloseInput() = 0;

    /// Connects the source of that name to the input; the error names the source.
    virtual Result<void> Connect(const std::string& source) = 0;
    virtual void Disconnect(const std::string& source) = 0;

    /// Returns true if the system has ended for good and must be opened anew.
    virtual bool HasGone() const { return false; }
};

/// The error says why there is no such system. `changed` is called when the system has gone and, if
/// the system reports it, when sources have come or gone; otherwise the sources must be asked for
/// regularly. Both functions wait for as long as the system takes to answer.
Result<std::unique_ptr<MidiBackend>> OpenJackMidi(std::function<void()> changed);
Result<std::unique_ptr<MidiBackend>> OpenAlsaMidi(std::function<void()> changed);

} // namespace kits
