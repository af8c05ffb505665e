// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/plane/PreviewNote.h"

#include "synth/Coefficients.h"
#include "views/plane/PlaneHost.h"

#include <numeric>

namespace vexa {

namespace {

/// The calls of Watch after which the coefficients are restored even if the note has not begun: the
/// channel may be ignored, or nothing plays.
constexpr int kMostWatched = 30;

} // namespace

PreviewNote::PreviewNote(Engine& engine) : engine(engine) {}

uint32 PreviewNote::NotesSoFar() const {
    return std::accumulate(engine.voices.begin(), engine.voices.end(), uint32{0},
                           [](uint32 sum, const voice& slot) { return sum + slot.notes; });
}

void PreviewNote::Strike(uint8 channel, std::optional<BPoint> start) {
    if (elsewhere && start)
        return;
    LetGo();
    if (start) {
        const auto lend = [this](const CoefficientGroup& sum, float place) {
            sound_param& p = engine.parameters;
            const double rest =
                sum.For(p, engine.controllers, kPreviewVelocity / 127.0F, kPreviewKey / 127.0F)
                    .rest;
            Loan loan{&(p.*sum.c0), p.*sum.c0, static_cast<float>(double(place) - rest)};
            *loan.coefficient = loan.lent;
            return loan;
        };
        notesBefore = NotesSoFar();
        watched = 0;
        loans = {lend(kCx0, start->x), lend(kCy0, start->y)};
    }
    source.SetChannel(channel);
    source.NoteOn(kPreviewKey, kPreviewVelocity);
    sounds = true;
}

void PreviewNote::Watch() {
    if (loans && (NotesSoFar() != notesBefore || ++watched > kMostWatched))
        GiveBack();
}

/// Restores the coefficients, except those that the user has changed meanwhile.
void PreviewNote::GiveBack() {
    for (const Loan& loan : *loans) {
        if (*loan.coefficient == loan.lent)
            *loan.coefficient = loan.own;
    }
    loans.reset();
}

void PreviewNote::LetGo() {
    if (loans)
        GiveBack();
    if (sounds)
        source.NoteOff(kPreviewKey, kPreviewVelocity);
    sounds = false;
}

} // namespace vexa
