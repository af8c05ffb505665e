// SPDX-License-Identifier: GPL-3.0-or-later
// The edits and notes that windows send to the instrument.
#include "plugin/HostedInstrument.h"

namespace vexa {

std::optional<HostedInstrument::Shown> HostedInstrument::ShownSince(uint64 changes) {
    const std::lock_guard lock(documents);
    if (instrument.Changes() == changes)
        return std::nullopt;
    Shown shown{instrument.State(), instrument.Changes()};
    Function& function = shown.sound.function;
    if (const auto file = PresentFile(); file != FileOf(function, folders))
        SourceOf(function) = file->string();
    return shown;
}

std::optional<HostedInstrument::Shown> HostedInstrument::Edit(const Shown& before,
                                                              const Sound& next) {
    const std::lock_guard lock(documents);
    if (instrument.Changes() != before.changes)
        return std::nullopt;
    // A failure is not reported here: the window found and reported it before it sent the edit.
    // Sounding notes pass to the edited sound without a click, as in the program's own window.
    instrument.Engine().renderer.SetJoins(true);
    instrument.Change(before.sound, next);
    edited = true;
    return Shown{next, instrument.Changes()};
}

void HostedInstrument::PostMidi(const std::array<uint8, 3>& message) {
    const std::lock_guard lock(posting);
    auto next = notesOn;
    const uint8 kind = message[0] & 0xF0;
    if (kind == 0x80 || kind == 0x90)
        next[(message[0] & 15U) * 128 + (message[1] & 127U)] = kind == 0x90 && message[2] > 0;
    // Leaves enough room for the note-offs of all notes that are on.
    if (posted.Writable() <= next.count())
        return;
    posted.Write(&message, 1);
    notesOn = next;
    if (wake)
        wake();
}

void HostedInstrument::PlayPosted() noexcept {
    std::array<uint8, 3> message{};
    while (posted.Read(&message, 1) == 1)
        Midi(message);
}

} // namespace vexa
