// SPDX-License-Identifier: GPL-3.0-or-later
// This is what vexa-render says while it works and when it is done.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace vexa {

/// A line on a terminal that shows how far a render is. On anything but a terminal it does nothing.
/// One thread.
class Progress {
  public:
    using Clock = std::chrono::steady_clock;

    /// `descriptor` is where to draw, and stays the caller's; `seconds` is the length of the whole.
    Progress(int descriptor, double seconds, Clock::time_point start = Clock::now());
    /// Erases the line.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// `done` seconds are rendered. Cheap enough to call for every block: it draws ten times a
    /// second at most.
    void Update(double done, Clock::time_point now = Clock::now());

  private:
    void Draw(const std::string& line);

    int descriptor;
    double seconds;
    Clock::time_point start;
    Clock::time_point next;
    /// Columns of the line that stands there.
    std::size_t drawn = 0;
};

/// The progress line in at most `width` columns, its bar as long as they allow: `done` of `seconds`
/// are rendered, `speed` times as fast as they play.
std::string ProgressLine(double done, double seconds, double speed, std::size_t width);

/// The figures that a render came to.
struct RenderSummary {
    double seconds = 0;
    /// Largest absolute value of a sample; 1 is full scale.
    double peak = 0;
    std::size_t notes = 0;
    std::size_t mostVoices = 0;
    std::size_t stolenVoices = 0;
};

/// Returns the closing line, without a newline, the same in every locale.
std::string SummaryLine(const RenderSummary& summary);

} // namespace vexa
