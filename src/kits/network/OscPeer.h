// SPDX-License-Identifier: GPL-3.0-or-later
// Exchanges messages of Open Sound Control (OSC) with one other program.
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

/// An argument of a message. Arguments of other types are skipped when a message is received.
using OscValue = std::variant<int32, std::string>;

struct OscMessage {
    std::string path;
    std::vector<OscValue> values;

    /// Return the value at `index` if it is a text, or if it is a number; otherwise null.
    const std::string* Text(std::size_t index) const;
    const int32* Number(std::size_t index) const;
};

/// The connection with the program at a URL. Over UDP it is unknown whether that program exists.
/// Window thread.
class OscPeer {
  public:
    /// Opens a connection with the program at `url`, for example "osc.udp://host:port/". It blocks
    /// while the host name is looked up. The error says that the URL is invalid or that the system
    /// has no port left.
    static Result<std::unique_ptr<OscPeer>> Open(const std::string& url);
    ~OscPeer();
    OscPeer(const OscPeer&) = delete;
    OscPeer& operator=(const OscPeer&) = delete;

    /// Returns false if the system reports that the message cannot be sent.
    bool Send(const OscMessage& message);
    /// Returns the next message of the peer in the order of arrival, waiting at most `wait` for
    /// one. Messages from other senders are dropped.
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
