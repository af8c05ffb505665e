// SPDX-License-Identifier: GPL-3.0-or-later
#include "attach/Link.h"

#include "attach/Moment.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace vexa::attach {

namespace {

constexpr std::string_view kGreeting = "vexa";
constexpr std::size_t kMostReason = 1000;
/// The maximum number of bytes per call of recv.
constexpr std::size_t kPiece = std::size_t{64} << 10;

struct Header {
    Kind kind;
    uint32 size;
};

struct Row {
    Kind kind;
    /// The end that receives such letters; nothing for both ends.
    std::optional<End> to;
    std::size_t least, most;
};
constexpr Row kRows[] = {
    {Kind::Hello, std::nullopt, 8, 8},
    {Kind::Refusal, std::nullopt, 0, kMostReason},
    {Kind::Sound, End::Window, sizeof(uint32), sizeof(uint32) + kMostSound},
    {Kind::Edit, End::Plugin, sizeof(uint32), sizeof(uint32) + kMostSound},
    {Kind::Moment, End::Window, sizeof(Moment), sizeof(Moment)},
    {Kind::Midi, End::Plugin, 3, 3},
};

template<class T>
std::string_view BytesOf(const T& value) {
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

} // namespace

Link::Link(int socket, End thisEnd) : descriptor(socket), end(thisEnd) {
    ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) | O_NONBLOCK);
    ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    Put(Kind::Hello, kGreeting, BytesOf(kVersion));
}

Link::~Link() {
    Close();
}

void Link::Wait(std::chrono::milliseconds time) const {
    pollfd entry{descriptor, static_cast<short>(POLLIN | (out.empty() ? 0 : POLLOUT)), 0};
    ::poll(&entry, 1, static_cast<int>(time.count()));
}

bool Link::IsDeserted() const {
    pollfd entry{descriptor, POLLRDHUP, 0};
    return !IsOpen() || ::poll(&entry, 1, 0) > 0;
}

void Link::Pump() {
    Send();
    Read();
}

void Link::Read() {
    char piece[kPiece];
    // Limits the unread data to about one letter of the largest kind, until Next takes letters out.
    while (IsOpen() && in.size() <= sizeof(Header) + sizeof(uint32) + kMostSound) {
        const ssize_t count = ::recv(descriptor, piece, sizeof piece, 0);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && errno == EAGAIN)
            return;
        // Closing keeps `in`, so Next still returns the letters that arrived before.
        if (count <= 0)
            return Close();
        in.append(piece, static_cast<std::size_t>(count));
    }
}

void Link::Send() {
    while (IsOpen() && !out.empty()) {
        const ssize_t count = ::send(descriptor, out.data(), out.size(), MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR)
            continue;
        // The other end has gone. The link is not closed here, because its last letters are unread.
        if (count < 0 && errno != EAGAIN)
            out.clear();
        if (count < 0)
            return;
        out.erase(0, static_cast<std::size_t>(count));
    }
}

std::optional<Letter> Link::Next() {
    while (fault.empty() && in.size() >= sizeof(Header)) {
        Header header{};
        std::memcpy(&header, in.data(), sizeof header);
        if (std::string wrong = FaultOf(header.kind, header.size); !wrong.empty()) {
            Refuse(wrong);
            break;
        }
        if (in.size() < sizeof header + header.size)
            break;
        Letter letter{header.kind, in.substr(sizeof header, header.size)};
        in.erase(0, sizeof header + header.size);
        if (letter.kind == Kind::Hello) {
            TakeHello(letter.body);
        } else if (letter.kind == Kind::Refusal) {
            fault = letter.body.empty() ? "the other side refuses" : letter.body;
            Close();
        } else {
            return letter;
        }
    }
    if (!IsOpen() && fault.empty() && !in.empty())
        fault = "the connection ends in the middle of a letter";
    return std::nullopt;
}

/// Returns the fault of a header; empty if it is valid.
std::string Link::FaultOf(Kind kind, std::size_t size) const {
    const auto* row = std::find_if(std::begin(kRows), std::end(kRows),
                                   [&](const Row& r) { return r.kind == kind; });
    if (!begun && kind != Kind::Hello && kind != Kind::Refusal)
        return "the other side is not of Vexa: it does not say Hello";
    if (row == std::end(kRows) || (begun && kind == Kind::Hello) || (row->to && *row->to != end))
        return "a letter of the kind " + std::to_string(static_cast<uint32>(kind)) +
               " is not for this side";
    if (size < row->least || size > row->most)
        return "a letter of the kind " + std::to_string(static_cast<uint32>(kind)) + " has " +
               std::to_string(size) + " bytes; it may have " + std::to_string(row->least) + " to " +
               std::to_string(row->most);
    return "";
}

void Link::TakeHello(std::string_view body) {
    uint32 version = 0;
    std::memcpy(&version, body.data() + kGreeting.size(), sizeof version);
    if (!body.starts_with(kGreeting))
        Refuse("the other side is not of Vexa: it does not say Hello");
    else if (version != kVersion)
        Refuse(
            "the plug-in and the program vexa are of different versions (their connections are " +
            std::to_string(version) + " and " + std::to_string(kVersion) +
            "); install them together");
    else
        begun = true;
}

void Link::Put(Kind kind, std::string_view body, std::string_view rest) {
    if (!IsOpen())
        return;
    const Header header{kind, static_cast<uint32>(body.size() + rest.size())};
    out.append(BytesOf(header)).append(body).append(rest);
    Send();
}

void Link::PutSound(Kind kind, uint32 serial, std::string_view document) {
    Put(kind, BytesOf(serial), document);
}

SoundLetter ReadSoundLetter(const Letter& letter) {
    SoundLetter read{0, letter.body.substr(sizeof(uint32))};
    std::memcpy(&read.serial, letter.body.data(), sizeof read.serial);
    return read;
}

void Link::Refuse(const std::string& reason) {
    fault = reason;
    Put(Kind::Refusal, std::string_view(reason).substr(0, kMostReason));
    Close();
}

void Link::Close() {
    if (descriptor >= 0)
        ::close(descriptor);
    descriptor = -1;
}

} // namespace vexa::attach
