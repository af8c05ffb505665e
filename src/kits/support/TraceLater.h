// SPDX-License-Identifier: GPL-3.0-or-later
// Trace lines of a thread that must not write them itself.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "kits/support/Ring.h"
#include "kits/support/SupportDefs.h"

namespace kits {

/// Keeps the lines of one thread until another thread writes them (kits/support/Trace.h).
class TraceLater {
  public:
    /// Stores a line: a text for fprintf that lives as long as the program and whose only
    /// conversion, if any, is %lld, and the number for that. A line for which there is no room is
    /// only counted. The real-time thread.
    VEXA_REALTIME void Put(const char* text, long long number = 0) noexcept {
        const Line line{text, number};
        if (!lines.Write(&line, 1))
            lost++;
    }

    /// Writes the stored lines, if the trace is on, and how many lines found no room. One thread at
    /// a time, which may wait.
    void Tell();

  private:
    struct Line {
        const char* text;
        long long number;
    };
    Ring<Line> lines{256};
    std::atomic<int64> lost{0};
};

} // namespace kits
