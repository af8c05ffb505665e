// SPDX-License-Identifier: GPL-3.0-or-later
// The tuning of the keys that the user has chosen.
#pragma once

#include "tuning/TuningChoice.h"

#include <string>

namespace vexa {

class Settings;
class VexaMidiConsumer;

/// Tunes the keys of a consumer. A file is read when it is chosen, and plays on without being
/// there. Window thread.
class KeyTuning {
  public:
    /// The choices are remembered in `settings`. If a host tunes the consumer, nothing changes the
    /// tuning here. The consumer and the settings outlive the object.
    KeyTuning(VexaMidiConsumer& consumer, Settings& settings, bool hostTunes)
        : consumer(consumer), settings(settings), hostTunes(hostTunes) {}

    /// Tunes the keys by as much of the choice as can be read; nothing if a host tunes them. An
    /// alert that waits for nobody says what cannot, and what plays. The settings stay, so that all
    /// returns with the file.
    void Restore(const TuningChoice& choice);
    /// Changes the parts of the tuning that `change` holds (TuningParts::Change), and remembers
    /// them for the next start. Returns false, and keeps the tuning, if that fails, with an alert,
    /// or if a host tunes the keys.
    bool Choose(const TuningChoice& change);
    const TuningChoice& Chosen() const { return parts.choice; }
    /// Returns the files of the choice as they were read.
    const TuningFiles& Files() const { return parts.files; }
    /// Returns the tuning that plays.
    const Tuning& Present() const { return present; }
    /// Returns the frequency of A4 in Hz as it was chosen, else as it plays; 0 if it is silent.
    double A4() const { return parts.choice.a4.value_or(present[kA4]); }

  private:
    void Play(TuningParts next, const Tuning& tuning);
    std::string Told() const;

    VexaMidiConsumer& consumer;
    Settings& settings;
    const bool hostTunes;
    TuningParts parts;
    Tuning present = EqualTemperament();
};

} // namespace vexa
