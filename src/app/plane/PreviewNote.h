// SPDX-License-Identifier: GPL-3.0-or-later
// The note by which a person hears what he does to the orbit.
#pragma once

#include "app/HandSource.h"
#include "kits/support/Geometry.h"
#include "midi/Engine.h"

#include <optional>

namespace vexa {

/// A note that comes and goes by the MIDI thread, as those of the computer's keyboard do, whatever
/// source is chosen. Window thread.
class PreviewNote {
  public:
    explicit PreviewNote(Engine& engine);
    ~PreviewNote() { LetGo(); }
    PreviewNote(const PreviewNote&) = delete;
    PreviewNote& operator=(const PreviewNote&) = delete;

    /// Begins the note on the channel, 0..15, or begins it anew. Its centre starts at `start` where
    /// there is one: the engine's own coefficients say so until the note has begun, while neither
    /// the sound nor what it is saved as ever does. Another note that begins in these few
    /// milliseconds starts there too.
    void Strike(uint8 channel, std::optional<BPoint> start);
    void LetGo();
    /// Gives the coefficients back once the note has begun. It is to be called often until LetGo.
    void Watch();

    /// It plays there from now on, as HandSource does, in another process, where no start can be
    /// given: Strike with one does nothing.
    void SendTo(HandSource::Player next) {
        source.SendTo(std::move(next));
        elsewhere = true;
    }

  private:
    uint32 NotesSoFar() const;
    void GiveBack();

    /// A coefficient as it was and as it is lent.
    struct Loan {
        kits::Shared<float>* coefficient;
        float own, lent;
    };

    Engine& engine;
    HandSource source{"Vexa preview", HandSource::Place::AlwaysHeard};
    bool elsewhere = false;
    bool sounds = false;
    std::optional<std::array<Loan, 2>> loans;
    /// All notes of the table when the coefficients were lent, and calls of Watch since then.
    uint32 notesBefore = 0;
    int watched = 0;
};

} // namespace vexa
