// SPDX-License-Identifier: GPL-3.0-or-later
// One end of the connection between an instrument in a plug-in and its window.
#pragma once

#include "kits/support/Result.h"
#include "kits/support/SupportDefs.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace vexa::attach {

/// The protocol version that both ends send first. An end with another version is refused.
constexpr uint32 kVersion = 2;
/// The maximum size of a sound's document in bytes.
constexpr std::size_t kMostSound = std::size_t{512} << 10;

/// The kind of a letter. On the wire a letter is this number, the size of the body, and the body,
/// in the machine's byte order, because both ends run on one machine.
enum class Kind : uint32 {
    /// "vexa" and kVersion. The first letter, and never a later one.
    Hello = 1,
    /// The reason why the other end is disconnected. The last letter.
    Refusal,
    /// To the window: a serial number and the document of the playing sound.
    Sound,
    /// To the plug-in: the serial number of the last Sound that was received, and the edited
    /// document. An edit of an older sound has no effect.
    Edit,
    /// To the window: a Moment.
    Moment,
    /// To the plug-in: a MIDI message of a note or a controller, three bytes.
    Midi,
};

struct Letter {
    Kind kind;
    std::string body;
};

/// The two ends of a link.
enum class End { Plugin, Window };

/// Sends and receives letters over a connected stream socket; only Wait blocks. A peer that sends
/// anything but letters for this end, of valid sizes, is told the reason and disconnected. One
/// thread at a time.
class Link {
  public:
    /// Takes ownership of the descriptor and sends Hello.
    Link(int descriptor, End end);
    ~Link();
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;

    /// Waits until there is data to read, room for data to be sent, or the end of the connection,
    /// but no longer than `time`.
    void Wait(std::chrono::milliseconds time) const;
    /// Reads and sends as much as possible without waiting.
    void Pump();
    /// Returns the next complete letter, except Hello; nothing if there is none.
    std::optional<Letter> Next();

    /// Queues a letter with the body `body` followed by `rest`.
    void Put(Kind kind, std::string_view body, std::string_view rest = {});
    /// Queues a Sound or an Edit.
    void PutSound(Kind kind, uint32 serial, std::string_view document);
    /// Returns true if all queued letters have been sent.
    bool IsIdle() const { return out.empty(); }
    /// Sends the reason to the other end and closes the connection.
    void Refuse(const std::string& reason);

    /// Returns true once the other end has sent Hello.
    bool HasBegun() const { return begun; }
    bool IsOpen() const { return descriptor >= 0; }
    /// Returns the reason why the link is closed; empty if the other end has simply gone.
    const std::string& Fault() const { return fault; }
    /// Returns true if the other end has gone, even if it has sent letters before that are still to
    /// be read.
    bool IsDeserted() const;
    /// Returns the socket's descriptor; -1 if the link is closed.
    int Descriptor() const { return descriptor; }

  private:
    void Read();
    void Send();
    void Close();
    std::string FaultOf(Kind kind, std::size_t size) const;
    void TakeHello(std::string_view body);

    int descriptor;
    const End end;
    bool begun = false;
    std::string in, out;
    std::string fault;
};

/// The serial number and the document of a Sound or an Edit.
struct SoundLetter {
    uint32 serial;
    std::string document;
};
SoundLetter ReadSoundLetter(const Letter& letter);

} // namespace vexa::attach
