// SPDX-License-Identifier: GPL-3.0-or-later
// The messages of vexa-render while it works and when it is done.
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

    /// Draws on `descriptor`, which the caller keeps and closes; `seconds` is the length of the
    /// whole render.
    Progress(int descriptor, double seconds, Clock::time_point start = Clock::now());
    /// Erases the line.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Shows that `done` seconds are rendered. It may be called for every block: it draws at most
    /// ten times a second.
    void Update(double done, Clock::time_point now = Clock::now());

  private:
    void Draw(const std::string& line);

    int descriptor;
    double seconds;
    Clock::time_point start;
    Clock::time_point next;
    /// The number of columns of the line that is shown.
    std::size_t drawn = 0;
};

/// Returns the progress line, at most `width` columns wide, with the longest bar that fits: `done`
/// of `seconds` are rendered, `speed` times as fast as real time.
std::string ProgressLine(double done, double seconds, double speed, std::size_t width);

/// The statistics of a render.
struct RenderSummary {
    double seconds = 0;
    /// Largest absolute value of a sample; 1 is full scale.
    double peak = 0;
    /// The notes on channels that are heard.
    std::size_t notes = 0;
    std::size_t mostVoices = 0;
    std::size_t stolenVoices = 0;
};

/// Returns the closing line, without a newline, the same in every locale.
std::string SummaryLine(const RenderSummary& summary);

} // namespace vexa
