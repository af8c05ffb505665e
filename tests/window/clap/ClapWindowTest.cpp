// SPDX-License-Identifier: GPL-3.0-or-later
// The window of the plug-in as a user sees it in a host of CLAP, on a real display.
#include "plugin/clap/ClapHost.h"
#include "support/Environment.h"
#include "window/PluginStage.h"

#include <csignal>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using test::ClapHost;
using test::Size;
using test::WindowProgram;
using testing::HasSubstr;

/// The functions of an instance's gui, and what its host's user does with it.
class Gui {
  public:
    explicit Gui(ClapHost& host) : host(host) {}

    bool Create() { return table.create(host.plugin, CLAP_WINDOW_API_X11, false); }
    void Destroy() { table.destroy(host.plugin); }
    Size GetSize() {
        Size size;
        EXPECT_TRUE(table.get_size(host.plugin, &size.first, &size.second));
        return size;
    }
    bool SetSize(uint32_t width, uint32_t height) {
        return table.set_size(host.plugin, width, height);
    }
    Size Adjusted(Size size) {
        EXPECT_TRUE(table.adjust_size(host.plugin, &size.first, &size.second));
        return size;
    }
    bool SetParent(std::uint32_t window) {
        clap_window parent{CLAP_WINDOW_API_X11, {}};
        parent.x11 = window;
        return table.set_parent(host.plugin, &parent);
    }
    bool Show(bool visible) { return visible ? table.show(host.plugin) : table.hide(host.plugin); }
    bool Await(const std::function<bool()>& what) {
        return test::AwaitInHost([this] { host.Idle(); }, what);
    }

  private:
    ClapHost& host;
    const clap_plugin_gui& table = host.Extension<clap_plugin_gui>(CLAP_EXT_GUI);
};

TEST(ClapWindow, IsNoneWhereThereIsNoServer) {
    const test::EnvironmentVariable display("DISPLAY", "");
    ClapHost host;
    Gui gui(host);
    ASSERT_TRUE(gui.Create());
    testing::internal::CaptureStderr();
    EXPECT_FALSE(gui.SetParent(1));
    EXPECT_FALSE(gui.Show(true));
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("no X server"));
    gui.Destroy();
    EXPECT_FALSE(host.timer);
}

class ShownClapWindow : public testing::Test {
  protected:
    bool Type(const std::string& expression) {
        return test::TypeInHost(
            desktop, expression.c_str(), [this] { host->Idle(); },
            [&] { return host->Save().find(">" + expression + "<") != std::string::npos; });
    }
    Size Seen() const { return window.Seen(); }

    const test::TemporaryFolder folder;
    const test::EnvironmentVariable data{"XDG_DATA_HOME", folder.Path().c_str()};
    test::Desktop desktop{1300, 800};
    const test::HostWindow window;
    std::unique_ptr<ClapHost> host = std::make_unique<ClapHost>();
};

TEST_F(ShownClapWindow, EditsAreSavedAndTheProgramEndsWithTheGui) {
    Gui gui(*host);
    ASSERT_TRUE(gui.Create());
    ASSERT_TRUE(gui.SetParent(window.Id()));
    EXPECT_TRUE(gui.Show(true));
    desktop.UseWindow(test::kHostTitle);
    ASSERT_TRUE(Type("x*y/9"));
    EXPECT_TRUE(gui.Await([&] { return host->edits > 0; })) << "the host knows of the edit";

    // A host that lets the instrument sleep is woken for a note of the window, whose keys are free
    // of the field after a click on the plane.
    desktop.Click(30, 71);
    while (host->Run(512), host->status != CLAP_PROCESS_SLEEP) {
    }
    host->wakings = 0;
    desktop.Key("q");
    EXPECT_TRUE(gui.Await([&] { return host->wakings > 0; }));
    host->Run(512);
    EXPECT_EQ(host->status, CLAP_PROCESS_CONTINUE);

    // A text stands in the place of a program that is killed, and a click starts it again.
    const pid_t first = WindowProgram();
    ::kill(first, SIGKILL);
    EXPECT_TRUE(gui.Await([&] {
        int letters = 0, others = 0;
        const QImage picture = desktop.Picture();
        const Size size = gui.GetSize();
        for (int y = 0; y < std::min(int(size.second), picture.height()); y++) {
            for (int x = 0; x < std::min(int(size.first), picture.width()); x++) {
                letters += picture.pixel(x, y) == 0xFF000000;
                others += picture.pixel(x, y) != 0xFF000000 && picture.pixel(x, y) != 0xFFCCCCCC;
            }
        }
        return letters > 100 && others == 0;
    }));
    EXPECT_EQ(WindowProgram(), 0);
    desktop.Click(200, 200);
    ASSERT_TRUE(Type("x+y/9"));
    EXPECT_NE(WindowProgram(), first);

    gui.Destroy();
    EXPECT_EQ(WindowProgram(), 0);
    EXPECT_FALSE(host->timer);
    EXPECT_THAT(host->Save(), HasSubstr(">x+y/9<")) << "the sound stays";
    ASSERT_TRUE(gui.Create());
    ASSERT_TRUE(gui.SetParent(window.Id()));
    ASSERT_NE(WindowProgram(), 0);
    // The end of the instance is that of its window.
    host.reset();
    EXPECT_EQ(WindowProgram(), 0);
}

TEST_F(ShownClapWindow, HasTheSizeThatHostAndProgramAgreeUpon) {
    Gui gui(*host);
    ASSERT_TRUE(gui.Create());
    ASSERT_TRUE(gui.SetParent(window.Id()));
    // The program asks for its own size if the host has chosen none.
    EXPECT_TRUE(gui.Await([&] { return host->asked != Size() && Seen() == host->asked; }));
    EXPECT_EQ(gui.GetSize(), host->asked);
    const Size own = std::exchange(host->asked, {});
    EXPECT_NE(own, Size(700, 400));
    // It follows the host's.
    EXPECT_TRUE(gui.SetSize(1150, 620));
    EXPECT_TRUE(gui.Await([&] { return Seen() == Size(1150, 620); }));
    EXPECT_EQ(gui.GetSize(), Size(1150, 620));
    EXPECT_EQ(host->asked, Size()) << "nobody asks for what the host has chosen";

    EXPECT_TRUE(gui.Show(false));
    EXPECT_TRUE(gui.Await([&] { return Seen() == Size(); }));
    EXPECT_TRUE(gui.Show(true));
    EXPECT_TRUE(gui.Await([&] { return Seen() == Size(1150, 620); }));

    // It stays within its limits.
    const Size least = gui.Adjusted({100, 50});
    EXPECT_GT(least.first, 400U);
    EXPECT_GT(least.second, 200U);
    EXPECT_EQ(gui.Adjusted(least), least);
    EXPECT_EQ(gui.Adjusted({900, 400}), Size(900, 400));
    EXPECT_EQ(gui.Adjusted({900, 5000}), Size(900, own.second)) << "there is no more to show";
    EXPECT_FALSE(gui.SetSize(100, 50));
    EXPECT_EQ(gui.GetSize(), least);
    EXPECT_TRUE(gui.Await([&] { return Seen() == least; }));
    gui.Destroy();

    // A host that refuses a size keeps its own.
    host->grants = false;
    ASSERT_TRUE(gui.Create());
    ASSERT_TRUE(gui.SetSize(100, 50));
    ASSERT_TRUE(gui.SetParent(window.Id()));
    EXPECT_TRUE(gui.Await([&] { return host->asked == least; }));
    EXPECT_EQ(gui.GetSize(), Size(100, 50));
}

TEST_F(ShownClapWindow, OpensAtTheSizeThatTheHostRemembers) {
    Gui gui(*host);
    for (const bool before : {true, false}) {
        ASSERT_TRUE(gui.Create());
        if (before) {
            EXPECT_TRUE(gui.SetSize(700, 400));
        }
        ASSERT_TRUE(gui.SetParent(window.Id()));
        if (!before) {
            EXPECT_TRUE(gui.SetSize(700, 400));
        }
        EXPECT_TRUE(gui.Await([&] { return Seen() == Size(700, 400); }));
        // Also if it is started again.
        const pid_t first = WindowProgram();
        ::kill(first, SIGKILL);
        EXPECT_TRUE(gui.Await([] { return WindowProgram() == 0; }));
        desktop.UseWindow(test::kHostTitle);
        desktop.Click(200, 200);
        EXPECT_TRUE(gui.Await([&] { return WindowProgram() != 0 && Seen() != Size(); }));
        EXPECT_TRUE(gui.Await([&] { return Seen() == Size(700, 400); }));
        EXPECT_EQ(gui.GetSize(), Size(700, 400));
        EXPECT_EQ(host->asked, Size());
        gui.Destroy();
    }
    // The least size is known once the program runs.
    ASSERT_TRUE(gui.Create());
    EXPECT_TRUE(gui.SetSize(100, 50));
    ASSERT_TRUE(gui.SetParent(window.Id()));
    EXPECT_TRUE(gui.Await([&] { return Seen().first > 100 && Seen() == host->asked; }));
    EXPECT_EQ(gui.GetSize(), host->asked);
    EXPECT_EQ(gui.Adjusted({100, 50}), host->asked);
}

} // namespace
