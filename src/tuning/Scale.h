// SPDX-License-Identifier: GPL-3.0-or-later
// Scales: the pitches that an octave, or what stands in its place, is divided into.
#pragma once

#include "kits/support/Result.h"
#include "kits/support/SupportDefs.h"

#include <filesystem>
#include <string_view>
#include <vector>

namespace vexa {

/// The most notes that a scale from a file may have.
constexpr int kMostScaleNotes = 4096;
/// The widest interval in a scale's file, in cents up or down.
constexpr double kWidestInterval = 1e6;

/// Degree 0 is the pitch that the others are told from.
struct Scale {
    /// Cents of the degrees from 1 on; the last is the interval at which the scale repeats itself.
    /// Twelve equal steps unless read from a file; never empty.
    std::vector<double> cents{100, 200, 300, 400, 500, 600, 700, 800, 900, 1000, 1100, 1200};

    /// Cents of any degree, be it below 0 or beyond the last.
    double Cents(int64 degree) const;
};

/// Reads a file in Scala's format "scl": a description, the number of notes, and a pitch per line,
/// in cents where it has a period, else as a ratio or a whole number; what follows a pitch on its
/// line counts nothing. The error is FILE:LINE with what was expected. Any thread.
kits::Result<Scale> ReadScale(const std::filesystem::path& path);
/// Reads a scale from a file's bytes; messages call the file `name`.
kits::Result<Scale> ParseScale(std::string_view bytes, const std::string& name);

} // namespace vexa
