// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/Progress.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <system_error>

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace vexa {

namespace {

constexpr std::chrono::milliseconds kRedrawInterval{100};
constexpr std::size_t kUsualWidth = 80; // columns of a terminal that does not report its width
constexpr std::size_t kShortestBar = 4; // if the bar would be shorter, only the text is shown

/// Returns `value` with `digits` digits after the decimal point, independently of the locale.
std::string Fixed(double value, int digits) {
    char text[400]; // the largest double has 309 digits before the point
    const auto [end, fault] =
        std::to_chars(std::begin(text), std::end(text), value, std::chars_format::fixed, digits);
    return fault == std::errc() ? std::string(std::begin(text), end) : "?";
}

/// Returns seconds as minutes and seconds, "1:05".
std::string Clockwise(double seconds) {
    const auto whole = static_cast<long long>(std::max(seconds, 0.0));
    const std::string rest = std::to_string(whole % 60);
    return std::to_string(whole / 60) + (rest.size() < 2 ? ":0" : ":") + rest;
}

std::string Counted(std::size_t count, const char* one) {
    return std::to_string(count) + ' ' + one + (count == 1 ? "" : "s");
}

std::size_t TerminalWidth(int descriptor) {
    winsize size{};
    return ::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col
                                                                          : kUsualWidth;
}

} // namespace

Progress::Progress(int descriptor, double seconds, Clock::time_point start)
    : descriptor(::isatty(descriptor) ? descriptor : -1),
      seconds(seconds),
      start(start),
      next(start) {}

Progress::~Progress() {
    if (drawn > 0)
        Draw("");
}

void Progress::Update(double done, Clock::time_point now) {
    if (descriptor < 0 || now < next)
        return;
    next = now + kRedrawInterval;
    const double elapsed = std::chrono::duration<double>(now - start).count();
    // A line in the last column would wrap on some terminals.
    Draw(ProgressLine(done, seconds, elapsed > 0 ? done / elapsed : 0,
                      TerminalWidth(descriptor) - 1));
}

/// Replaces the line by overwriting it, which works on every terminal.
void Progress::Draw(const std::string& line) {
    std::string text = '\r' + line;
    if (line.size() < drawn)
        text += std::string(drawn - line.size(), ' ');
    if (line.empty())
        text += '\r';
    // Does not wait for a terminal that has been stopped (Ctrl-S): a signal must be able to end the
    // render.
    pollfd terminal{descriptor, POLLOUT, 0};
    if (::poll(&terminal, 1, 0) == 0)
        return;
    drawn = line.size();
    // If the terminal takes no output the line is lost; the render goes on.
    if (::write(descriptor, text.data(), text.size()) < 0)
        descriptor = -1;
}

std::string ProgressLine(double done, double seconds, double speed, std::size_t width) {
    const double part = seconds > 0 ? std::clamp(done / seconds, 0.0, 1.0) : 1.0;
    const std::string percent = std::to_string(static_cast<int>(part * 100));
    const std::string text = std::string(3 - percent.size(), ' ') + percent + " %  " +
                             Clockwise(done) + " of " + Clockwise(seconds) + "  " +
                             Fixed(speed, 1) + " x real time";
    if (text.size() + kShortestBar + 3 > width)
        return text.substr(0, width);
    const std::size_t length = width - text.size() - 3; // two brackets and a space
    const auto full = static_cast<std::size_t>(part * static_cast<double>(length));
    return '[' + std::string(full, '#') + std::string(length - full, '.') + "] " + text;
}

std::string SummaryLine(const RenderSummary& summary) {
    const std::string level =
        summary.peak > 0 ? Fixed(20 * std::log10(summary.peak), 1) + " dBFS" : "silence";
    return Fixed(summary.seconds, 1) + " s, peak " + Fixed(summary.peak, 3) + " (" + level + "), " +
           Counted(summary.notes, "note") + ", at most " + Counted(summary.mostVoices, "voice") +
           " at once, " + std::to_string(summary.stolenVoices) + " stolen";
}

} // namespace vexa
