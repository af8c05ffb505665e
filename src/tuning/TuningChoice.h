// SPDX-License-Identifier: GPL-3.0-or-later
// The tuning that a person chooses, by the same options in all programs.
#pragma once

#include "kits/support/Result.h"
#include "tuning/Tuning.h"

#include <filesystem>
#include <optional>

namespace vexa {

/// The frequencies of A4, in Hz, that can be asked for.
constexpr double kLeastA4 = 1;
constexpr double kMostA4 = 20000;

struct TuningChoice {
    /// The Scala files. Without a scale there are twelve equal steps to the octave, and without a
    /// map it is Keymap's own.
    std::optional<std::filesystem::path> scale;
    std::optional<std::filesystem::path> keymap;
    /// The frequency of key 69 in Hz, which stands in place of what the map is tuned by.
    std::optional<double> a4;

    bool operator==(const TuningChoice&) const = default;
};

/// Reads the files. The error is a reader's, or says that no key would sound or that the map leaves
/// key 69 out, which is to be tuned. Any thread.
kits::Result<Tuning> ReadTuning(const TuningChoice& choice);

} // namespace vexa
