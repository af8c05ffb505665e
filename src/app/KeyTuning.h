// SPDX-License-Identifier: GPL-3.0-or-later
// The tuning of the keys that the user has chosen.
#pragma once

#include "tuning/TuningChoice.h"

namespace vexa {

class Settings;
class VexaMidiConsumer;

/// Tunes the keys of a consumer. Window thread.
class KeyTuning {
  public:
    /// The choices are remembered in `settings`. If a host tunes the consumer, nothing changes the
    /// tuning here. The consumer and the settings outlive the object.
    KeyTuning(VexaMidiConsumer& consumer, Settings& settings, bool hostTunes)
        : consumer(consumer), settings(settings), hostTunes(hostTunes) {}

    /// Tunes the keys. Returns false, and keeps the tuning, if that fails, with an alert, or if a
    /// host tunes them.
    bool Tune(const TuningChoice& choice);
    /// Does the same and remembers the choice for the next start.
    bool Choose(const TuningChoice& choice);
    const TuningChoice& Chosen() const { return chosen; }
    /// Returns the tuning that plays.
    const Tuning& Present() const { return present; }

  private:
    VexaMidiConsumer& consumer;
    Settings& settings;
    const bool hostTunes;
    TuningChoice chosen;
    Tuning present = EqualTemperament();
};

} // namespace vexa
