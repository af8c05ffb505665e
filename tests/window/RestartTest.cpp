// SPDX-License-Identifier: GPL-3.0-or-later
// The audio server ends while the window is open and comes back, several times.
#include "live/LivePlay.h"
#include "window/Desktop.h"

#include <chrono>
#include <cstdlib>

#include <gtest/gtest.h>

namespace {

using Clock = std::chrono::steady_clock;

/// Returns the peak of a tenth of a second.
float Peak(const test::Ear& ear) {
    const std::size_t from = ear.Count();
    ear.WaitWhileThereArePeriods([&] { return ear.Count() >= from + 4800; });
    float peak = 0;
    for (std::size_t i = from; i < ear.Count(); i++)
        peak = std::max(peak, std::abs(ear.Samples()[i]));
    return peak;
}

/// A note is held, and no other client runs when the server ends, as others may hide the server's
/// effect on a single client. VEXA_RESTARTS is the number of restarts (2), half of them by SIGTERM,
/// half by SIGKILL.
TEST(Restarts, TheWindowPlaysOnWithinTwoSeconds) {
    const char* wanted = std::getenv("VEXA_RESTARTS");
    const int restarts = wanted ? std::atoi(wanted) : 2;
    test::TemporaryFolder folder;
    test::Desktop desktop;
    test::JackServer server(256);
    const std::string log = (folder.Path() / "log").string();
    test::Companion vexa({VEXA_PROGRAM_FOLDER "/vexa", "--sound",
                          folder.Write("sine.xml", test::kSineSound).string(), "--midi",
                          "Computer keyboard"},
                         log);
    // The document has only some of the elements.
    test::WaitFor("the warning", [&] { return desktop.HasWindow("Warning"); });
    desktop.UseWindow("Warning");
    desktop.Key("Return");
    test::WaitFor("its end", [&] { return !desktop.HasWindow("Warning"); });
    const auto holdNote = [&] {
        desktop.UseWindow("Vexa");
        desktop.Do({"keydown", "q"});
        test::Ear ear(48000 * 60);
        ear.Connect("Vexa:Vexa audio out", ear.Name());
        test::WaitFor("the note", [&] { return Peak(ear) > 0.1F; });
    };
    for (int restart = 0; restart < restarts; restart++) {
        holdNote();
        const int signal = restart % 2 == 0 ? SIGTERM : SIGKILL;
        server.Kill(signal);
        test::WaitFor("the alert", [&] { return desktop.HasWindow("Error"); });
        ASSERT_TRUE(vexa.Runs()) << "after restart " << restart << " by signal " << signal;
        server.Start(256);
        const auto start = Clock::now();
        {
            test::Ear ear(256);
            ear.Connect("Vexa:Vexa audio out", ear.Name());
        }
        const std::chrono::duration<double> back = Clock::now() - start;
        std::fprintf(stderr, "restart %d by signal %d: back after %.2f s\n", restart, signal,
                     back.count());
        EXPECT_LT(back.count(), 2);
        test::WaitFor("the end of the alert", [&] { return !desktop.HasWindow("Error"); });
        desktop.Do({"keyup", "q"});
    }
    holdNote();
    EXPECT_EQ(vexa.End(SIGTERM), 0) << test::Contents(log);
}

} // namespace
