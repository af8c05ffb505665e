// SPDX-License-Identifier: GPL-3.0-or-later
// The gestures on the plane, and their effect on the sound: with a real display, mouse and
// keyboard.
#include "window/MainWindowStage.h"

#include <fstream>
#include <regex>

namespace {

using test::kPlane, test::kSecond, test::kTop;
using test::WaitFor;

/// Returns a thread's processor time in seconds.
double ProcessorTime(pid_t thread) {
    std::ifstream file("/proc/" + std::to_string(thread) + "/schedstat");
    double nanoseconds = 0;
    file >> nanoseconds;
    return nanoseconds / 1e9;
}

class PlaneWindow : public test::MainWindow {
  protected:
    // In pixels of the plane's picture, whose centre is 150, 150; initially 20 of them are 1 unit.

    void At(int x, int y) const { desktop.Move(kPlane + x, kTop + 10 + y); }
    void Press(int x, int y, const char* button = "1") const {
        At(x, y);
        desktop.Do({"mousedown", button});
    }
    void DragTo(int x, int y) const {
        At(x - 1, y);
        At(x, y);
    }
    void Let(const char* button = "1") const { desktop.Do({"mouseup", button}); }
    /// Returns the load of the window's thread, as a fraction of a core.
    double Load(std::size_t frames) {
        const double before = ProcessorTime(vexa->Process());
        Listen(frames);
        return (ProcessorTime(vexa->Process()) - before) * kSecond / double(frames);
    }
};

TEST_F(PlaneWindow, HandlesChangeTheSoundAndAreHeardWithoutANote) {
    StartWithSine();
    HoldNote();
    // Drags the radius from 1 to 3.
    Press(170, 150);
    DragTo(210, 155);
    WaitForPeak(0.73F, 0.77F);
    Let();
    WaitForPeak(0.73F, 0.77F);
    // Moves by keys, in coarse and fine steps.
    desktop.Do({"key", "--repeat", "3", "ctrl+Left"});
    WaitForPeak(0.13F, 0.17F);
    desktop.Do({"key", "--repeat", "5", "Right"});
    WaitForPeak(0.23F, 0.27F);
    player->Play({{0, {0x80, 69, 100}}});
    WaitForPeak(0, 0.001F);
    // A preview sounds as long as the handle is held.
    Press(170, 150);
    DragTo(190, 150);
    WaitForPeak(0.48F, 0.53F);
    Let();
    WaitForPeak(0, 0.001F);
    SaveAs(kTop + 418, "Save Sound", "moved.xml");
    EXPECT_THAT(test::Contents(program.Path("sounds/moved.xml")), testing::HasSubstr("<env>2<"));
    EXPECT_EQ(Close(), 0);
}

TEST_F(PlaneWindow, APlaceIsHeardAndChangesNothing) {
    StartWithSine();
    Replace(100, kTop + 325, "x>2?x:0");
    SaveAs(kTop + 418, "Save Sound", "before.xml");
    desktop.Do({"keydown", "ctrl"});
    desktop.Do({"keydown", "shift"});
    Press(60, 60);
    EXPECT_LT(Peak(), 0.001F);
    DragTo(240, 60);
    WaitForPeak(0.2F, 0.3F);
    Let();
    desktop.Do({"keyup", "shift"});
    desktop.Do({"keyup", "ctrl"});
    WaitForPeak(0, 0.001F);
    // The next note starts at its usual place.
    player->Play({{0, {0x90, 69, 100}}});
    EXPECT_LT(Peak(kSecond / 2), 0.001F);
    SaveAs(kTop + 418, "Save Sound", "after.xml");
    EXPECT_EQ(test::Contents(program.Path("sounds/before.xml")),
              test::Contents(program.Path("sounds/after.xml")));
    // There are no unsaved changes.
    desktop.Close();
    EXPECT_EQ(vexa->Wait(), 0);
}

TEST_F(PlaneWindow, TakesLittleTime) {
    if (test::kSanitized)
        GTEST_SKIP() << "a sanitizer takes several times as long";
    // Circles with a radius of 4, side by side.
    std::string circles = test::kSineSound;
    const auto radii = circles.find("<ax>"), end = circles.find("<ay>");
    std::string radius = circles.substr(radii, end - radii);
    radius.replace(radius.find(">1<"), 3, ">4<");
    circles.replace(radii, circles.find("</vexasound>") - radii,
                    radius + std::regex_replace(radius, std::regex("ax>"), "ay>") +
                        "<cx0><one>-19</one><key>40</key></cx0>");
    StartWithSine("Computer keyboard", circles);
    desktop.Move(kPlane + 500, 5);
    Listen(kSecond);
    const double idle = Load(kSecond * 3 / 2);
    EXPECT_LT(idle, 0.01);
    std::vector<test::Player::Message> notes;
    for (std::uint8_t i = 0; i < 20; i++)
        notes.push_back({0, {0x90, std::uint8_t(50 + i), 100}});
    player->Play(notes);
    WaitFor("orbits", [&] { return OrbitMarks() > 3000; });
    const double drawn = Load(kSecond * 3 / 2);
    EXPECT_LT(drawn, 0.1);
    EXPECT_GT(drawn, 3 * idle);
    desktop.Key("F7");
    Listen(kSecond);
    EXPECT_LT(Load(kSecond * 3 / 2), 0.1);
    // An invisible view is not drawn.
    desktop.Minimize();
    Listen(kSecond);
    const double hidden = Load(kSecond * 3 / 2);
    EXPECT_LT(hidden, 0.01);
    std::printf("idle %.2f %%, 20 voices %.2f %%, minimized %.2f %%\n", 100 * idle, 100 * drawn,
                100 * hidden);
    EXPECT_EQ(vexa->End(SIGTERM), 0);
}

} // namespace
