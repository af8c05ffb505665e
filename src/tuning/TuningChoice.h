// SPDX-License-Identifier: GPL-3.0-or-later
// The user's choice of tuning, with the same options in all programs.
#pragma once

#include "kits/support/Result.h"
#include "tuning/Keymap.h"
#include "tuning/Scale.h"
#include "tuning/Tuning.h"

#include <filesystem>
#include <optional>
#include <string>

namespace vexa {

/// The valid range of the frequency of A4, in Hz.
constexpr double kLeastA4 = 1;
constexpr double kMostA4 = 20000;

struct TuningChoice {
    /// The Scala files. The default scale is twelve equal steps to the octave, the default map that
    /// of Keymap.
    std::optional<std::filesystem::path> scale;
    std::optional<std::filesystem::path> keymap;
    /// The frequency of key 69 in Hz, which replaces the map's reference.
    std::optional<double> a4;

    bool operator==(const TuningChoice&) const = default;
};

/// The bytes of the Scala files of a choice; empty without a file.
struct TuningFiles {
    std::string scale;
    std::string keymap;

    bool operator==(const TuningFiles&) const = default;
};

/// A choice with its files as they were read, which need not be there any more. Any thread.
struct TuningParts {
    TuningChoice choice;
    TuningFiles files;
    Scale scale;
    Keymap keymap;

    /// Takes over the parts that `change` holds, reading only their files; an empty path, or 0 for
    /// the frequency, stands for the default. Returns the tuning. The error is that of a reader, or
    /// says that no key would sound, or that the map omits key 69 although its frequency is given;
    /// some of the parts may have changed then.
    kits::Result<Tuning> Change(const TuningChoice& change);
};

/// Reads the files of a choice. The errors are those of TuningParts::Change. Any thread.
kits::Result<Tuning> ReadTuning(const TuningChoice& choice);

} // namespace vexa
