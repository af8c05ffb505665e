// SPDX-License-Identifier: GPL-3.0-or-later
// The window's end of the connection to an instrument that plays in a plug-in.
#pragma once

#include "attach/Link.h"
#include "attach/Moment.h"
#include "documents/Sound.h"
#include "kits/application/Messenger.h"
#include "kits/support/Result.h"
#include "synth/SoundRecords.h"

#include <memory>
#include <optional>
#include <semaphore>
#include <string>
#include <thread>

namespace vexa {

/// What tells that a control is disabled because the host sets its value in place of the sound.
constexpr const char* kHostSetsIt = "A knob of the host stands before the sound's\n";

/// Keeps the sound here and the one that plays in a plug-in the same, over a socket. Window thread;
/// a thread of its own only waits for the socket.
class Attachment {
  public:
    /// Takes ownership of the descriptor of a connected socket and waits until the plug-in has sent
    /// its sound. The error says what is wrong with the other end.
    static kits::Result<std::unique_ptr<Attachment>> Begin(int descriptor);
    /// Waits up to a second for the plug-in to take all that was sent.
    ~Attachment();

    /// From now on sends the message `code` to `target` when data has arrived, and about sixty
    /// times a second in any case. After each message it waits for a call of Take before it sends
    /// the next.
    void Watch(const BMessenger& target, uint32 code);
    /// Reads what has arrived. Returns the plug-in's sound if it has changed by other means than
    /// Offer.
    std::optional<Sound> Take();
    /// Makes `records` show the notes that play in the plug-in, the controllers and the macros. A
    /// macro that the host sets is shown as it plays, whatever was done here since.
    void Show(SoundRecords& records);
    /// Returns the settings of playing that the host sets in place of the sound.
    PlayingTexts HostsPlaying() const;
    /// Returns true if the host sets the macro in place of the sound.
    bool HostSetsMacro(std::size_t macro) const { return moment.hostsMacros >> macro & 1; }
    /// Sends the plug-in this sound to play from now on. Returns true and sends nothing if the
    /// plug-in's sound is already like it, apart from the functions' authors. Returns false and
    /// sends nothing if the document is too large.
    bool Offer(const Sound& sound);
    /// Sends the plug-in a MIDI message of three bytes, such as a note or a controller.
    void Play(uint8 status, uint8 first, uint8 second);

    /// True if the other end has closed the connection, even if Take has still something to read.
    bool IsOver() const { return link.IsDeserted(); }
    /// Returns why the connection is over; empty if the plug-in has simply gone.
    const std::string& Fault() const { return link.Fault(); }

  private:
    explicit Attachment(int descriptor);
    void Read();
    void WatchUntil(const std::stop_token& stop, const BMessenger& target, uint32 code);

    attach::Link link;
    /// A duplicate of the socket's descriptor, for the thread.
    const int watched;
    uint32 serial = 0;
    /// The plug-in's sound, as it was last received or sent.
    Sound known;
    /// True if `known` has been received and Take has not returned it yet.
    bool fresh = false;
    /// What was received last, and true if Show has not shown it yet.
    attach::Moment moment{};
    bool moved = false;
    /// Released by Watch and Take, for one message.
    std::binary_semaphore taken{0};
    std::jthread thread;
};

} // namespace vexa
