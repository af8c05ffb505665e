// SPDX-License-Identifier: GPL-3.0-or-later
// The windows of an instrument in a plug-in.
#pragma once

#include "plugin/HostedInstrument.h"

#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <thread>

namespace vexa {

/// Lets programs in processes of their own show an instrument and edit it (attach/Link.h). Each
/// window has a thread here, which waits for the window and never blocks the audio side. Whatever a
/// window sends, and however it ends, the instrument plays on.
class Windows {
  public:
    /// Takes a message for the user, one line per call. Any thread.
    using Tell = std::function<void(const std::string& line)>;

    /// The instrument and `tell` outlive it.
    Windows(HostedInstrument& instrument, Tell tell);
    /// Closes the windows.
    ~Windows();

    /// Returns the descriptor of a socket for a program that is to be the window; the caller passes
    /// it on and closes it. The connection has no name, so no other process can join it. An error
    /// gives the reason. Not for the audio side.
    kits::Result<int> Open();
    /// Closes the windows. Returns when all that they have sent has been taken.
    void Close();

  private:
    struct Session;

    HostedInstrument& instrument;
    const Tell tell;
    std::mutex mutex;
    std::list<Session> sessions;
};

} // namespace vexa
