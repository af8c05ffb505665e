// SPDX-License-Identifier: GPL-3.0-or-later
// Scales: the pitches that divide an octave or another interval of repetition.
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

/// Degree 0 is the pitch from which the others are measured.
struct Scale {
    /// The degrees from 1 on, in cents; the last is the interval at which the scale repeats. Twelve
    /// equal steps unless read from a file; never empty.
    std::vector<double> cents{100, 200, 300, 400, 500, 600, 700, 800, 900, 1000, 1100, 1200};

    /// Returns the cents of any degree, including those below 0 and beyond the last.
    double Cents(int64 degree) const;
};

/// Reads a file in Scala's format "scl": a description, the number of notes, and a pitch per line,
/// in cents if it contains a period, else as a ratio or an integer; text after the pitch is
/// ignored. The error is FILE:LINE with the expected content. Any thread.
kits::Result<Scale> ReadScale(const std::filesystem::path& path);
/// Reads a scale from a file's bytes; messages call the file `name`.
kits::Result<Scale> ParseScale(std::string_view bytes, const std::string& name);

} // namespace vexa
