// SPDX-License-Identifier: GPL-3.0-or-later
// A link is one end of the connection between an instrument in a plug-in and its window.
#pragma once

#include "kits/support/Result.h"
#include "kits/support/SupportDefs.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace vexa::attach {

/// The version that both ends say first; another one is refused.
constexpr uint32 kVersion = 1;
/// The most bytes that the text of a sound may have.
constexpr std::size_t kMostSound = std::size_t{512} << 10;

/// What a letter is about. On the wire a letter is this number, the size of what follows and what
/// follows, in the machine's own order of bytes, as both ends are on one machine.
enum class Kind : uint32 {
    /// "vexa" and kVersion. It is the first letter, and no later one.
    Hello = 1,
    /// Tells why the other end is given up. It is the last letter.
    Refusal,
    /// Goes to the window with a serial number and the document of the sound that plays.
    Sound,
    /// Goes to the plug-in with the serial number of the last sound that came, and the document as
    /// it is after what a person did to it. An edit of another sound than the last has no effect.
    Edit,
    /// Goes to the window with a Moment.
    Moment,
    /// Goes to the plug-in with a MIDI message of a note or a controller, three bytes.
    Midi,
};

struct Letter {
    Kind kind;
    std::string body;
};

/// The two ends of a link.
enum class End { Plugin, Window };

/// A link sends and takes letters over a connected stream socket and never waits but in Wait. A
/// peer that sends something else than letters for this end, in their sizes, is refused: it is told
/// why, and the connection is closed. One thread at a time.
class Link {
  public:
    /// Takes the descriptor over and says Hello.
    Link(int descriptor, End end);
    ~Link();
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;

    /// Returns when there is something to read, or room for what is to be sent, or the connection
    /// has ended; after that time at the latest.
    void Wait(std::chrono::milliseconds time) const;
    /// Reads and sends what there is, without waiting.
    void Pump();
    /// The next letter that is there as a whole; no Hello.
    std::optional<Letter> Next();

    /// Puts a letter, the parts of its body one behind the other, behind those that are not sent
    /// yet.
    void Put(Kind kind, std::string_view body, std::string_view rest = {});
    /// Puts a Sound or an Edit into the letters to be sent.
    void PutSound(Kind kind, uint32 serial, std::string_view document);
    /// True where all that was put has been sent.
    bool IsIdle() const { return out.empty(); }
    /// Tells the other end why, and closes.
    void Refuse(const std::string& reason);

    /// The other end has said Hello.
    bool HasBegun() const { return begun; }
    bool IsOpen() const { return descriptor >= 0; }
    /// Returns why the link is closed; empty where the other end has simply gone.
    const std::string& Fault() const { return fault; }
    /// True where the other end has gone, whatever it may have sent before.
    bool IsDeserted() const;
    /// -1 where it is closed.
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
