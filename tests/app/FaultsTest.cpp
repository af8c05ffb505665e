// SPDX-License-Identifier: GPL-3.0-or-later
// Denies one system resource after the other. At its start the program must play all the same, or
// end with a message and code 1. Later each action of the user must succeed, or an alert must
// report its failure and leave everything unchanged.
#include "app/MainViewStage.h"
#include "support/Limits.h"

#include <chrono>
#include <thread>

#include <gmock/gmock.h>

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

const std::string kProgram = VEXA_PROGRAM_FOLDER "/vexa";

const std::vector<std::string> kPlaying = {kProgram, "--no-window", "--audio", "none"};

/// Starts the program at each step of a limit; returns how often it played.
int Walk(const char* option, int from, int to, int step) {
    int played = 0;
    for (int limit = from; limit <= to; limit += step) {
        const auto result =
            test::RunLimited(option + std::to_string(limit), kPlaying, test::TerminateWhenHandled);
        if (result.exitCode == 0) {
            played++;
            EXPECT_THAT(result.text, HasSubstr("s without sound, 0 MIDI events lost")) << limit;
        } else {
            EXPECT_EQ(result.exitCode, 1) << option << limit << "\n" << result.text;
            EXPECT_THAT(result.text, HasSubstr("vexa: there ")) << option << limit;
        }
    }
    return played;
}

/// Open descriptors, and kilobytes of address space.
struct Usage {
    int descriptors = 0, kilobytes = 0;
};

/// Returns the resources of the program after it has played without a limit for a moment. The peak
/// would also count address space that it only uses for an attempt.
Usage WhatPlayingTakes() {
    Usage taken;
    test::RunCommand(kPlaying, [&taken](pid_t child) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        const fs::path process = "/proc/" + std::to_string(child);
        for ([[maybe_unused]] const auto& file : fs::directory_iterator(process / "fd"))
            taken.descriptors++;
        const std::string status = test::Contents(process / "status");
        taken.kilobytes = std::stoi(status.substr(status.find("VmSize:") + 7));
        test::TerminateWhenHandled(child);
    });
    return taken;
}

/// Returns the number before `what` in the message with which the program refuses to play under a
/// limit.
int AskedFor(const std::string& limit, const std::string& what) {
    const std::string text = test::RunLimited(limit, kPlaying).text;
    const std::size_t end = text.find(what);
    EXPECT_NE(end, std::string::npos) << text;
    return end == std::string::npos ? 0 : std::stoi(text.substr(text.rfind(' ', end - 1) + 1));
}

TEST(ProgramFaults, TooLittleAtTheStart) {
    if (test::kSanitized)
        GTEST_SKIP() << "a sanitizer needs more than these limits leave";
    ::setenv("JACK_DEFAULT_SERVER", "vexa-test-none", 1);
    const Usage taken = WhatPlayingTakes();
    ASSERT_GT(taken.descriptors, 0);
    // Besides the three standard streams the loader has a library open.
    constexpr int kLoading = 4;
    const int few = std::max(taken.descriptors, kLoading);
    const int files = AskedFor("-n " + std::to_string(few), " descriptors more");
    EXPECT_GE(files, taken.descriptors) << "what the program asks for is not enough";
    EXPECT_EQ(Walk("-n ", kLoading, files - 1, files / 8), 0);
    EXPECT_GT(Walk("-n ", files, files + 7, 1), 0);

    const int least = test::LoaderMemory(kProgram);
    const int memory = AskedFor("-v " + std::to_string(least), " MB more") << 10;
    EXPECT_GE(memory, taken.kilobytes - least) << "what the program asks for is not enough";
    EXPECT_EQ(Walk("-v ", least, least + memory - memory / 20, memory / 10), 0);
    EXPECT_GT(Walk("-v ", least + memory, least + memory + (20 << 10), 5 << 10), 0);
}

class WindowFaults : public test::MainViewTest {
  protected:
    WindowFaults() {
        // Some tests do their work as another user, who needs access.
        ::chmod(folder.Path().c_str(), 0755);
        Open(false);
    }

    /// An action of the user, and a trace that shows whether it was done.
    struct Deed {
        const char* name;
        std::function<void()> act;
        std::function<std::string()> trace;
    };
    const std::vector<Deed> deeds = {
        {"compile", [this] { Enter("Fxy", "-1.0"), FinishAddon(); },
         [this] { return std::to_string(PixelAt(10, 10)); }},
        {"save a sound", [this] { view->SaveSound("mine.xml"); },
         [this] { return test::Contents(In("sounds/mine.xml")); }},
        {"save a function", [this] { view->SaveFunction("mine.xml"); },
         [this] { return test::Contents(In("functions/mine.xml")); }},
        {"save the picture", [this] { ExportPicture("picture.png"); },
         [this] { return test::Contents(In("picture.png")); }},
        {"load a sample", [this] { view->LoadSample(In("samples/pluck.wav").c_str()); },
         [this] { return std::to_string(view->SampleMode()); }},
        {"load a function",
         [this] { view->LoadFunction(In("functions/ripples.xml")), FinishAddon(); },
         [this] { return std::to_string(PixelAt(10, 10)); }},
        {"open a panel", [this] { PressButton("Load Sound"); },
         [this] { return std::to_string(!OpenTitles().empty() && alerts.texts.empty()); }},
    };
    /// The colour of 0.5.
    static constexpr uint32 kHalf = 127;
    using Shortage = std::function<void(const std::function<void()>&)>;

    /// Does all deeds in a shortage. `expected` has the beginnings of their last alerts: empty if
    /// the deed must succeed, null if either outcome is valid.
    void Try(const Shortage& shortage, const std::vector<const char*>& expected) {
        for (std::size_t i = 0; i < deeds.size(); i++) {
            for (const char* name : {"picture.png", "sounds/mine.xml", "functions/mine.xml"})
                folder.Write(name, "old");
            if (PixelAt(10, 10) != kHalf || view->SampleMode())
                Enter("Fxy", "0.5");
            FinishAddon();
            ClosePanels();
            alerts.texts.clear();
            const std::vector<std::string> names = Names();
            const std::string before = deeds[i].trace();
            shortage(deeds[i].act);
            test::Settle();
            const std::string alert = alerts.texts.empty() ? "" : alerts.texts.back();
            // The function plays even if its add-on fails.
            const bool done = alert.empty() || alert.find("/functions/recent") != alert.npos;
            EXPECT_EQ(deeds[i].trace() != before, done) << deeds[i].name << alert;
            EXPECT_EQ(Names(), names) << deeds[i].name;
            if (expected[i]) {
                EXPECT_TRUE(alert.starts_with(expected[i]) && alert.empty() == !*expected[i])
                    << deeds[i].name << ": " << alert;
            }
        }
    }

    /// Returns the names of all files below the program folder.
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::recursive_directory_iterator(folder.Path()))
            names.push_back(entry.path().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    const std::vector<const char*> either = std::vector<const char*>(deeds.size(), nullptr);
    const std::vector<const char*> done = std::vector<const char*>(deeds.size(), "");
};

TEST_F(WindowFaults, FileDescriptorsUsedUp) {
    if (test::kNeedsDescriptors)
        GTEST_SKIP() << "a sanitizer needs descriptors itself";
    Try([](const auto& act) { act(); }, done);
    for (std::size_t left = 0; left <= 8; left++)
        Try([left](const auto& act) { test::WithDescriptorsLeft(left, act); },
            left > 0 ? either
                     : std::vector<const char*>{nullptr, "Could not save \n", "Could not save \n",
                                                "Could not create file.", "Could not load sample",
                                                "Could not load \n", "Could not read the folder"});
    Try([](const auto& act) { act(); }, done);
}

TEST_F(WindowFaults, ADiskThatIsFullOrAFolderThatTakesNothing) {
    for (const rlim_t room : {0, 60})
        Try([room](const auto& act) { test::WithFileSizeLimit(room, act); },
            {"The temporary file ", "Could not save \n", "Could not save \n",
             "Could not save the image.", "", "The temporary file ", ""});
    const std::vector<fs::path> folders = {folder.Path(), In("functions"), In("sounds")};
    Try([&](const auto& act) { test::WithReadOnlyFolders(folders, act); },
        {"The temporary file ", "Could not save \n", "Could not save \n", "Could not create file.",
         "", "The temporary file ", ""});
    Try([](const auto& act) { act(); }, done);
}

/// A file that is too large for the available memory.
TEST_F(WindowFaults, MemoryUsedUp) {
    if (test::kSanitized)
        GTEST_SKIP() << "a sanitizer needs more than this limit leaves";
    const auto document =
        folder.Write("huge.xml", "<vexasound>" + std::string(64 << 20, ' ') + "</vexasound>");
    // The header of a file of 20 million frames, of which the disk holds only this.
    const auto sample = folder.Write("huge.wav", test::Contents(In("samples/pluck.wav")));
    const auto write = [&](long at, std::uint32_t number) {
        std::fstream file(sample, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(at).write(reinterpret_cast<const char*>(&number), sizeof number);
    };
    write(4, 40'000'036);
    write(40, 40'000'000);
    fs::resize_file(sample, 40'000'044);
    folder.Write("picture.png", "old");
    Enter("Fxy", "0.5");
    test::WithMemoryLeft(16 << 20, [&] {
        view->LoadSound(document);
        view->LoadSample(sample.c_str());
        ExportPicture("picture.png", 8000);
        // The remaining memory is enough for this.
        Enter("Ax0", "0.25");
    });
    EXPECT_THAT(alerts.texts, ElementsAre("Could not load \n" + document.string(),
                                          "Could not load sample", "Could not save the image."));
    EXPECT_FALSE(view->SampleMode());
    EXPECT_EQ(test::Contents(In("picture.png")), "old");
    EXPECT_EQ(view->SoundParam().Ax0, 0.25F);
    view->LoadSample(sample.c_str());
    EXPECT_TRUE(view->SampleMode());
    ExportPicture("picture.png", 1000);
    EXPECT_NE(test::Contents(In("picture.png")), "old");
    EXPECT_EQ(alerts.texts.size(), 3U);
}

} // namespace
