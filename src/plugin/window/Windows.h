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

/// Lets programs in processes of their own show an instrument and edit it (attach/Link.h). Each has
/// a thread here, which waits for the window and never makes the audio side wait. Whatever a window
/// sends, and however it ends, the instrument plays on.
class Windows {
  public:
    /// Takes what there is to tell a person, a line each. Any thread.
    using Tell = std::function<void(const std::string& line)>;

    /// The instrument and `tell` outlive it.
    Windows(HostedInstrument& instrument, Tell tell);
    /// Closes the windows.
    ~Windows();

    /// Returns the descriptor of a socket, for a program that is to be the window; the caller hands
    /// it on and closes it. Nobody else can come by that connection, as it has no name. The error
    /// says why there is none. It is not for the audio side.
    kits::Result<int> Open();

  private:
    struct Session;

    HostedInstrument& instrument;
    const Tell tell;
    std::mutex mutex;
    std::list<Session> sessions;
};

} // namespace vexa
