// SPDX-License-Identifier: GPL-3.0-or-later
// The window's end of the connection to an instrument that plays in a plug-in.
#pragma once

#include "attach/Link.h"
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

/// A sound that plays elsewhere, as it is known here. Window thread, but for its thread, which
/// waits for the socket.
class Attachment {
  public:
    /// Takes over the descriptor of a connected socket, and waits until the plug-in has said its
    /// sound. The error says what is at the other end instead.
    static kits::Result<std::unique_ptr<Attachment>> Begin(int descriptor);
    ~Attachment();

    /// Sends the target `code` from now on when something has come, and some sixty times a second
    /// in any case; not again before Take.
    void Watch(const BMessenger& target, uint32 code);
    /// Has the records show the notes that play there. The sound, if it has become another one by
    /// other means than Offer.
    std::optional<Sound> Take(SoundRecords& records);
    /// Offers the plug-in that its sound becomes this one, but for whose it is. Nothing happens
    /// where it is so already; false, and nothing happens, where the document is too large to be
    /// sent.
    bool Offer(const Sound& sound);
    /// Plays a note or moves a controller there.
    void Play(uint8 status, uint8 first, uint8 second);

    /// True where nothing comes any more, even while there is still something to Take.
    bool IsOver() const { return link.IsDeserted(); }
    /// Returns why it is over; empty where the plug-in has simply gone.
    const std::string& Fault() const { return link.Fault(); }

  private:
    explicit Attachment(int descriptor);
    void Read(SoundRecords* records);
    void WatchUntil(const std::stop_token& stop, const BMessenger& target, uint32 code);

    attach::Link link;
    /// The descriptor of the socket once more, for the thread.
    const int watched;
    uint32 serial = 0;
    /// The sound that plays there, as far as is known here.
    Sound known;
    /// It has come and is not taken yet.
    bool fresh = false;
    std::binary_semaphore taken{1};
    std::jthread thread;
};

} // namespace vexa
