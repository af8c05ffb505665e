// SPDX-License-Identifier: GPL-3.0-or-later
// The note that lets the user hear an edit of the orbit.
#pragma once

#include "app/HandSource.h"
#include "kits/support/Geometry.h"
#include "midi/Engine.h"

#include <optional>

namespace vexa {

/// A note that is played through the MIDI thread, like those of the computer's keyboard, but
/// reaches the engine whatever source is chosen. Window thread.
class PreviewNote {
  public:
    explicit PreviewNote(Engine& engine);
    ~PreviewNote() { LetGo(); }
    PreviewNote(const PreviewNote&) = delete;
    PreviewNote& operator=(const PreviewNote&) = delete;

    /// Begins the note on `channel`, 0..15, and ends the previous one. If there is a `start`, the
    /// orbit's centre starts there. For that the engine's coefficients are changed until the note
    /// has begun; the sound in the window and in documents is not. Another note that begins in
    /// these few milliseconds starts there too.
    void Strike(uint8 channel, std::optional<BPoint> start);
    void LetGo();
    /// Restores the coefficients once the note has begun. To be called often until LetGo.
    void Watch();

    /// Sends the note to `next` from now on, as HandSource::SendTo does. It then plays in another
    /// process, where no start can be given: Strike with a start does nothing.
    void SendTo(HandSource::Player next) {
        source.SendTo(std::move(next));
        elsewhere = true;
    }

  private:
    uint32 NotesSoFar() const;
    void GiveBack();

    /// A coefficient of the engine, its own value, and the value lent to it for the start.
    struct Loan {
        kits::Shared<float>* coefficient;
        float own, lent;
    };

    Engine& engine;
    HandSource source{"Vexa preview", HandSource::Place::AlwaysHeard};
    bool elsewhere = false;
    bool sounds = false;
    std::optional<std::array<Loan, 2>> loans;
    /// The number of notes that the voice table had counted when the coefficients were lent, and
    /// the calls of Watch since then.
    uint32 notesBefore = 0;
    int watched = 0;
};

} // namespace vexa
