// SPDX-License-Identifier: GPL-3.0-or-later
// The window of a plug-in as a user sees it in a host: the library of the user interface, the
// program that it starts, and an instrument in this process, on a real display.
#include "documents/SoundDocument.h"
#include "plugin/frame/WindowProcess.h"
#include "plugin/lv2/WindowInterface.h"
#include "plugin/window/Windows.h"
#include "support/Environment.h"
#include "window/PluginStage.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <thread>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <lv2/data-access/data-access.h>
#include <lv2/instance-access/instance-access.h>
#include <lv2/ui/ui.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using namespace vexa;

constexpr const char* kBundle = VEXA_PROGRAM_FOLDER "/../lv2/vexa.lv2";
const std::string kLibrary = std::string(kBundle) + "/vexa-ui.so";

constexpr int kAttachedPlane = 10, kPlaneTop = 51, kAttachedPlaneSize = 301;

const LV2UI_Descriptor* Descriptor(void* library) {
    if (!library)
        throw std::runtime_error(::dlerror());
    const auto entry = reinterpret_cast<const LV2UI_Descriptor* (*)(std::uint32_t)>(
        ::dlsym(library, "lv2ui_descriptor"));
    return entry(0);
}

/// A host with a window that holds the user interface.
class Host {
  public:
    explicit Host(Windows& windows) {
        library = ::dlopen(kLibrary.c_str(), RTLD_NOW);
        descriptor = Descriptor(library);
        idle = static_cast<const LV2UI_Idle_Interface*>(
            descriptor->extension_data(LV2_UI__idleInterface));
        LV2_Extension_Data_Feature access{[](const char*) -> const void* {
            static const lv2::WindowInterface opener{[](LV2_Handle plugin, char*, std::size_t) {
                return *static_cast<Windows*>(plugin)->Open();
            }};
            return &opener;
        }};
        LV2_Feature parent{LV2_UI__parent, reinterpret_cast<void*>(std::uintptr_t(window.Id()))};
        LV2_Feature instance{LV2_INSTANCE_ACCESS_URI, &windows};
        LV2_Feature data{LV2_DATA_ACCESS_URI, &access};
        LV2_Feature sizes{LV2_UI__resize, &resize};
        const LV2_Feature* const features[] = {&parent, &instance, &data, &sizes, nullptr};
        LV2UI_Widget widget = nullptr;
        ui = descriptor->instantiate(descriptor, "urn:vexa:instrument", kBundle, nullptr, nullptr,
                                     &widget, features);
    }
    ~Host() {
        descriptor->cleanup(ui);
        ::dlclose(library);
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    /// Runs until the condition holds; returns false if it does not within `seconds`.
    bool Await(const std::function<bool()>& what, double seconds = 20) {
        return test::AwaitInHost([this] { Idle(); }, what, seconds);
    }
    void Idle() { idle->idle(ui); }

    const test::HostWindow window;
    /// The size that the user interface has asked for last.
    test::Size asked;

  private:
    static int Resize(LV2UI_Feature_Handle host, int width, int height) {
        static_cast<Host*>(host)->Ask(width, height);
        return 0;
    }
    void Ask(int width, int height) {
        asked = test::Size(width, height);
        window.SetSize(asked.first, asked.second);
    }

    LV2UI_Resize resize{this, Resize};
    void* library;
    const LV2UI_Descriptor* descriptor;
    const LV2UI_Idle_Interface* idle;
    LV2UI_Handle ui;
};

/// Counts the pixels of the plane that an orbit covers.
int Marks(const QImage& picture) {
    int marks = 0;
    for (int y = kPlaneTop; y < kPlaneTop + kAttachedPlaneSize; y++) {
        for (int x = kAttachedPlane; x < kAttachedPlane + kAttachedPlaneSize; x++)
            marks += qGreen(picture.pixel(x, y)) >= 200;
    }
    return marks;
}

TEST(AttachedWindow, IsNoneWhereThereIsNoServer) {
    const test::EnvironmentVariable display("DISPLAY", "");
    void* const library = ::dlopen(kLibrary.c_str(), RTLD_NOW);
    const LV2UI_Descriptor* const descriptor = Descriptor(library);
    LV2_Feature parent{LV2_UI__parent, reinterpret_cast<void*>(std::uintptr_t(1))};
    const LV2_Feature* const features[] = {&parent, nullptr};
    LV2UI_Widget widget = nullptr;
    EXPECT_EQ(descriptor->instantiate(descriptor, "urn:vexa:instrument", kBundle, nullptr, nullptr,
                                      &widget, features),
              nullptr);
    EXPECT_EQ(widget, nullptr);
    ::dlclose(library);
}

TEST(AttachedWindow, FindsTheProgramOfItsInstallation) {
    const test::EnvironmentVariable path("PATH", "/nowhere");
    for (const char* place : {"lib/lv2/vexa.lv2/", "lib/clap/vexa", "lib64/lv2/vexa.lv2",
                              "lib/x86_64-linux-gnu/clap/vexa", "lv2/vexa.lv2"}) {
        const test::TemporaryFolder prefix;
        const std::filesystem::path folder = prefix.Path() / place;
        std::filesystem::create_directories(folder);
        int ends[2];
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
        WindowProcess process;
        EXPECT_NE(process.Start(folder, ends[1], 1), "") << "there is no program";

        const auto program = prefix.Write("bin/vexa", "#!/bin/sh\necho \"$*\" >&3\n");
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
        EXPECT_EQ(process.Start(folder, ends[1], 1), "") << place;
        ::close(ends[1]);
        char said[100] = "";
        EXPECT_GT(::read(ends[0], said, sizeof said - 1), 0) << place;
        EXPECT_STREQ(said, "--user-folder --attach 3 --into 1\n");
        ::close(ends[0]);
    }
}

TEST(AttachedWindow, EditsPlaysShowsOrbitsAndOutlivesNothing) {
    const test::TemporaryFolder folder;
    const test::EnvironmentVariable data("XDG_DATA_HOME", folder.Path().c_str());
    test::Desktop desktop(1100, 700);
    HostedInstrument instrument(std::filesystem::path("/nowhere"), 48000);
    Sound sound;
    sound.envelopes[2] = sound.envelopes[3] = {{0, false, 1}, {0.01F, true, 0}};
    bool taken = false;
    instrument.Restore(SoundText(sound), "", taken);
    std::jthread player([&](const std::stop_token& stop) {
        std::vector<float> left(256), right(256);
        while (!stop.stop_requested()) {
            instrument.Render(left.data(), right.data(), left.size());
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    });
    auto windows = std::make_unique<Windows>(
        instrument, [](const std::string& line) { ADD_FAILURE() << line; });
    auto host = std::make_unique<Host>(*windows);
    desktop.UseWindow(test::kHostTitle);

    const auto type = [&](const char* expression) {
        const auto plays = [&] {
            return instrument.ShownSince(0)->sound.function.expression == expression;
        };
        return test::TypeInHost(
            desktop, expression, [&] { host->Idle(); }, plays);
    };
    const auto held = [&] {
        int count = 0;
        for (const voice& slot : instrument.Records().voices)
            count += slot.state.Look().Active() && !slot.released;
        return count;
    };
    ASSERT_TRUE(type("x*y/9"));

    // The window follows its host's size, and asks for nothing but the size of its beginning.
    const test::Size own = host->asked;
    EXPECT_NE(own, test::Size());
    for (const test::Size& next : {test::Size(1090, 640), test::Size(1000, 600)}) {
        host->window.SetSize(next.first, next.second);
        EXPECT_TRUE(host->Await([&] { return host->window.Seen() == next; }));
        EXPECT_FALSE(host->Await([&] { return host->asked != own; }, 0.3));
    }

    // Its host is not left by the keys that end a program.
    const pid_t program = test::WindowProgram();
    desktop.Click(kAttachedPlane + 20, kPlaneTop + 20);
    desktop.Key("ctrl+q");
    desktop.Key("ctrl+w");
    EXPECT_FALSE(host->Await([&] { return test::WindowProgram() != program; }, 0.5));

    desktop.Click(kAttachedPlane + 20, kPlaneTop + 20);
    desktop.Do({"keydown", "q"});
    EXPECT_TRUE(host->Await([&] { return held() == 1; }));
    EXPECT_TRUE(host->Await([&] { return Marks(desktop.Picture()) > 20; }));

    // The note of a held key ends when the program is killed, and a click starts the program again.
    ::kill(program, SIGKILL);
    EXPECT_TRUE(host->Await([&] { return held() == 0 && test::WindowProgram() == 0; }));
    desktop.Do({"keyup", "q"});
    desktop.Click(kAttachedPlane + 20, kPlaneTop + 20);
    ASSERT_TRUE(type("x+y/9"));
    EXPECT_NE(test::WindowProgram(), program);

    // The program ends with the plug-in, and when the host closes its window. A sound that lacks
    // its file is told of once the window is shown, by an alert above the host.
    windows.reset();
    EXPECT_TRUE(host->Await([] { return test::WindowProgram() == 0; }, 1));
    sound.function.kind = FunctionKind::Sample;
    sound.function.sampleFile = "/nowhere/a.wav";
    instrument.Restore(SoundText(sound), "", taken);
    windows = std::make_unique<Windows>(instrument, [](const std::string&) {});
    host = std::make_unique<Host>(*windows);
    ASSERT_TRUE(host->Await([&] { return desktop.HasWindow("Error"); }));
    EXPECT_NE(host->window.Seen(), test::Size());
    desktop.UseWindow("Error");
    EXPECT_TRUE(host->window.IsBelow(desktop.WindowId()));
    ASSERT_NE(test::WindowProgram(), 0);
    host.reset();
    EXPECT_EQ(test::WindowProgram(), 0);
}

} // namespace
