// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/network/OscPeer.h"

#include <cstring>
#include <utility>

#include <lo/lo.h>

namespace kits {

namespace {

/// Replaces the library's error handler, which would print to the terminal.
void Ignore(int, const char*, const char*) {}

/// Returns the values of a message. They are copied bytewise, because they are aligned to 4 bytes
/// in a message, while the library's union requires 8.
std::vector<OscValue> Values(const char* types, lo_arg** values, int count) {
    std::vector<OscValue> read;
    for (int i = 0; i < count; i++) {
        if (types[i] == LO_INT32) {
            int32 number = 0;
            std::memcpy(&number, values[i], sizeof number);
            read.emplace_back(number);
        } else if (types[i] == LO_STRING) {
            read.emplace_back(std::string(reinterpret_cast<const char*>(values[i])));
        }
    }
    return read;
}

} // namespace

struct OscPeer::Handles {
    lo_address peer = nullptr;
    lo_server own = nullptr;

    Handles() = default;
    Handles(const Handles&) = delete;
    Handles& operator=(const Handles&) = delete;
    ~Handles() {
        if (own)
            lo_server_free(own);
        if (peer)
            lo_address_free(peer);
    }
};

const std::string* OscMessage::Text(std::size_t index) const {
    return index < values.size() ? std::get_if<std::string>(&values[index]) : nullptr;
}

const int32* OscMessage::Number(std::size_t index) const {
    return index < values.size() ? std::get_if<int32>(&values[index]) : nullptr;
}

Result<std::unique_ptr<OscPeer>> OscPeer::Open(const std::string& url) {
    auto handles = std::make_unique<Handles>();
    handles->peer = lo_address_new_from_url(url.c_str());
    if (!handles->peer)
        return Error{"\"" + url + "\" is no address of Open Sound Control"};
    // The library also knows local sockets, for which it needs a path of our own, and addresses
    // without a port.
    const int protocol = lo_address_get_protocol(handles->peer);
    if ((protocol != LO_UDP && protocol != LO_TCP) || !lo_address_get_port(handles->peer))
        return Error{"\"" + url + "\" names no port of UDP or TCP"};
    handles->own = lo_server_new_with_proto(nullptr, protocol, Ignore);
    if (!handles->own)
        return Error{"the system has no port for Open Sound Control"};
    // Messages are delivered at once, even if their time stamps are in the future.
    lo_server_enable_queue(handles->own, 0, 1);
    return std::unique_ptr<OscPeer>(new OscPeer(std::move(handles)));
}

OscPeer::OscPeer(std::unique_ptr<Handles> opened) : handles(std::move(opened)) {
    const auto take = [](const char* path, const char* types, lo_arg** values, int count,
                         lo_message message, void* self) {
        OscPeer& peer = *static_cast<OscPeer*>(self);
        const lo_address source = lo_message_get_source(message);
        const char* const from = lo_address_get_hostname(source);
        const char* const port = lo_address_get_port(source);
        if (!from || !port || std::string(port) != lo_address_get_port(peer.handles->peer))
            return 0;
        if (peer.host.empty())
            peer.host = from;
        if (peer.host == from)
            peer.arrived.push_back({path, Values(types, values, count)});
        return 0;
    };
    lo_server_add_method(handles->own, nullptr, nullptr, take, this);
}

OscPeer::~OscPeer() = default;

bool OscPeer::Send(const OscMessage& message) {
    const lo_message sent = lo_message_new();
    for (const OscValue& value : message.values) {
        if (const auto* text = std::get_if<std::string>(&value))
            lo_message_add_string(sent, text->c_str());
        else
            lo_message_add_int32(sent, std::get<int32>(value));
    }
    const int status =
        lo_send_message_from(handles->peer, handles->own, message.path.c_str(), sent);
    lo_message_free(sent);
    return status >= 0;
}

std::optional<OscMessage> OscPeer::Receive(std::chrono::milliseconds wait) {
    const auto end = std::chrono::steady_clock::now() + wait;
    while (arrived.empty()) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            end - std::chrono::steady_clock::now());
        if (lo_server_recv_noblock(handles->own, std::max(static_cast<int>(left.count()), 0)) <=
                0 &&
            left.count() <= 0)
            return std::nullopt;
    }
    OscMessage first = std::move(arrived.front());
    arrived.pop_front();
    return first;
}

} // namespace kits
