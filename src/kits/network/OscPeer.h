// SPDX-License-Identifier: GPL-3.0-or-later
// By Open Sound Control messages go to one other program and back.
#pragma once

#include "kits/support/Result.h"
#include "kits/support/SupportDefs.h"

#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace kits {

/// A number or a text; of messages with others that part is read over.
using OscValue = std::variant<int32, std::string>;

struct OscMessage {
    std::string path;
    std::vector<OscValue> values;

    /// The value at that place if it is a text, or a number.
    const std::string* Text(std::size_t index) const;
    const int32* Number(std::size_t index) const;
};

/// The connection with the program at a URL. Over UDP nobody knows whether the other one is there.
/// Window thread.
class OscPeer {
  public:
    /// Opens a connection with the program at `url`, as in "osc.udp://host:port/". It waits for the
    /// host's name to be looked up. The error says what is wrong with the URL.
    static Result<std::unique_ptr<OscPeer>> Open(const std::string& url);
    ~OscPeer();
    OscPeer(const OscPeer&) = delete;
    OscPeer& operator=(const OscPeer&) = delete;

    /// False where the system says that it cannot be sent.
    bool Send(const OscMessage& message);
    /// Returns the next message of the peer, in order; it waits for one as long as that at most.
    /// Messages from elsewhere are dropped.
    std::optional<OscMessage> Receive(std::chrono::milliseconds wait);

  private:
    struct Handles;
    explicit OscPeer(std::unique_ptr<Handles> handles);

    std::unique_ptr<Handles> handles;
    std::deque<OscMessage> arrived;
    /// The address that the peer's first message came from.
    std::string host;
};

} // namespace kits
