// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/Progress.h"

#include <array>
#include <cstdlib>
#include <limits>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;
using vexa::Progress;

/// A terminal of 60 columns, seen from both sides.
class Terminal {
  public:
    Terminal() : screen(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK)) {
        ::grantpt(screen);
        ::unlockpt(screen);
        keyboard = ::open(::ptsname(screen), O_RDWR | O_NOCTTY);
        const winsize size{24, 60, 0, 0};
        ::ioctl(keyboard, TIOCSWINSZ, &size);
    }
    ~Terminal() {
        ::close(keyboard);
        ::close(screen);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /// Returns the descriptor to which the program writes.
    int Descriptor() const { return keyboard; }

    /// Returns the text written since the last call.
    std::string Written() const {
        std::array<char, 4096> text{};
        const ssize_t count = ::read(screen, text.data(), text.size());
        return {text.data(), static_cast<std::size_t>(count > 0 ? count : 0)};
    }

  private:
    int screen;
    int keyboard;
};

TEST(Progress, DoesNotWaitForATerminalThatIsStopped) {
    const Terminal terminal;
    ASSERT_EQ(::tcflow(terminal.Descriptor(), TCOOFF), 0);
    // This signal ends a program that waits.
    ::alarm(10);
    const auto start = Progress::Clock::now();
    Progress progress(terminal.Descriptor(), 60, start);
    progress.Update(30, start + 2s);
    ::alarm(0);
    EXPECT_EQ(terminal.Written(), "");
    ASSERT_EQ(::tcflow(terminal.Descriptor(), TCOON), 0);
    progress.Update(31, start + 3s);
    EXPECT_NE(terminal.Written(), "");
}

TEST(Progress, DrawsTenTimesASecondAndErasesItself) {
    const Terminal terminal;
    const auto start = Progress::Clock::now();
    {
        Progress progress(terminal.Descriptor(), 60, start);
        progress.Update(30, start + 2s);
        const std::string line = terminal.Written();
        EXPECT_EQ(line, "\r[#########..........]  50 %  0:30 of 1:00  15.0 x real time");
        EXPECT_EQ(line.size(), 60U) << "the return, and one column less than there are";
        progress.Update(31, start + 2099ms);
        EXPECT_EQ(terminal.Written(), "") << "too early";
        progress.Update(32, start + 2100ms);
        EXPECT_NE(terminal.Written(), "");
    }
    EXPECT_EQ(terminal.Written(), '\r' + std::string(59, ' ') + '\r');
}

TEST(Progress, IsSilentWithoutATerminal) {
    int pipe[2];
    ASSERT_EQ(::pipe2(pipe, O_NONBLOCK), 0);
    {
        Progress progress(pipe[1], 60);
        progress.Update(1);
    }
    char byte = 0;
    EXPECT_EQ(::read(pipe[0], &byte, 1), -1) << "nothing was written";
    ::close(pipe[0]);
    ::close(pipe[1]);
}

TEST(Progress, FitsEveryWidthAndLength) {
    for (const std::size_t width : {0U, 1U, 20U, 41U, 42U, 48U, 79U, 300U}) {
        for (const double seconds : {0.0, 1.0, 86400.0}) {
            for (const double done : {0.0, 0.5, 90000.0}) {
                const std::string line = vexa::ProgressLine(done, seconds, 1e3, width);
                EXPECT_LE(line.size(), width) << line;
                EXPECT_TRUE(line.size() == width || width < 79) << line;
            }
        }
    }
}

TEST(Progress, SumsUp) {
    EXPECT_EQ(vexa::SummaryLine({63.25, 0.5, 412, 14, 3}),
              "63.2 s, peak 0.500 (-6.0 dBFS), 412 notes, at most 14 voices at once, 3 stolen");
    EXPECT_EQ(vexa::SummaryLine({3, 0, 1, 1, 0}),
              "3.0 s, peak 0.000 (silence), 1 note, at most 1 voice at once, 0 stolen");
    const double huge = std::numeric_limits<double>::max();
    EXPECT_NE(vexa::SummaryLine({huge, huge, 0, 0, 0}).find("6165.1 dBFS"), std::string::npos);
}

} // namespace
