// SPDX-License-Identifier: GPL-3.0-or-later
// Uses the window as a user does: with a real display, mouse and keyboard, on a real JACK server.
#include "window/MainWindowStage.h"

namespace {

using test::kEditorX, test::kEditorY, test::kPlane, test::kSecond, test::kTop, test::kUnsaved;
using test::MainWindow;
using test::WaitFor;

TEST_F(MainWindow, AnEnvelopeDrawnWithTheMouseIsHeardAfterTheRelease) {
    StartWithSine();
    HoldNote();
    // Drags the first point from 1 down to a half.
    desktop.Drag(kEditorX + 9, kEditorY + 3, kEditorX + 9, kEditorY + 43);
    EXPECT_NEAR(Peak(), 0.25, 0.01);
    desktop.Drop();
    WaitForPeak(0.12F, 0.13F);
    // Adds a point at the end of the held part, and drags it to the top with a second press.
    desktop.Click(kEditorX + 100, kEditorY + 43);
    desktop.Drag(kEditorX + 100, kEditorY + 43, kEditorX + 11, kEditorY + 3);
    EXPECT_NEAR(Peak(), 0.125, 0.01);
    desktop.Drop();
    WaitForPeak(0.24F, 0.26F);
    desktop.Click(kEditorX + 11, kEditorY + 3, "3");
    WaitForPeak(0.12F, 0.13F);
    EXPECT_EQ(Close(), 0);
    EXPECT_EQ(Log().find("Error"), std::string::npos) << Log();
}

TEST_F(MainWindow, ANoteDrawsItsOrbitWhichIsErasedAfterwards) {
    for (const bool classic : {true, false}) {
        Start(classic ? std::vector<std::string>{"--classic"} : std::vector<std::string>{});
        EXPECT_EQ(OrbitMarks(), 0);
        WaitFor("an orbit", [&] {
            player->Play({{0, {0x90, 69, 100}}});
            return OrbitMarks() > 20;
        });
        player->Play({{0, {0xB0, 123, 0}}});
        WaitFor("its end", [&] { return OrbitMarks() == 0; });
        EXPECT_EQ(Close(), 0);
    }
}

TEST_F(MainWindow, TheBarRecordsWhatIsHeard) {
    StartWithSine();
    constexpr int kRecord = 716, kBar = 20;
    desktop.Click(kRecord, kBar);
    HoldNote();
    desktop.Click(kRecord, kBar);
    const std::string said = "vexa: recorded ";
    std::string path;
    WaitFor("the recording", [&] {
        const std::string text = Log();
        const std::size_t at = text.find(said);
        const std::size_t end = at == text.npos ? at : text.find('\n', at);
        path = end == text.npos ? "" : text.substr(at + said.size(), end - at - said.size());
        return !path.empty();
    });
    EXPECT_THAT(path, testing::StartsWith(program.Path("recordings/sine ")));
    // 32-bit floats, whose peak equals that of the recorded output.
    const std::string bytes = test::Contents(path);
    float loudest = 0;
    for (std::size_t i = bytes.find("data") + 8; i + sizeof(float) <= bytes.size();) {
        float sample = 0;
        std::memcpy(&sample, bytes.data() + i, sizeof sample);
        loudest = std::max(loudest, sample);
        i += sizeof sample;
    }
    EXPECT_NEAR(loudest, 0.25, 0.02);

    // Several recordings in one second must not replace each other.
    const auto told = [&] {
        const std::string text = Log();
        std::size_t count = 0;
        for (std::size_t at = 0; (at = text.find(said, at)) != text.npos; at++)
            count++;
        return count;
    };
    for (std::size_t i = 2; i <= 5; i++) {
        desktop.Click(kRecord, kBar);
        desktop.Click(kRecord, kBar);
        WaitFor("another one", [&] { return told() == i; });
    }
    using Folder = std::filesystem::directory_iterator;
    EXPECT_EQ(std::distance(Folder(program.Path("recordings")), Folder()), 5);
    EXPECT_EQ(Close(), 0);
}

TEST_F(MainWindow, WhatIsDroppedFromAnotherProgramIsOpened) {
    StartWithSine();
    HoldNote();
    // Each step waits for the previous one. The other program runs until all is taken.
    const auto drop = [&](std::vector<std::string> what, int x, int y, const auto& awaitResult) {
        what.insert(what.begin(), VEXA_DRAG_SOURCE);
        const std::string said = program.Path("dragged");
        test::Companion source(what, said);
        const auto says = [&](const char* word) {
            return test::Contents(said).find(word) != std::string::npos;
        };
        const auto moveUntil = [&](const char* word, int atX, int atY) {
            WaitFor(word, [&, step = 0]() mutable {
                desktop.Move(atX + ++step % 9, atY);
                return says(word);
            });
        };
        desktop.UseWindow("Drag source");
        desktop.Move(20, 20);
        desktop.Do({"mousedown", "1"});
        moveUntil("begun", 40, 40);
        desktop.UseWindow("Vexa");
        moveUntil("taken", x, y);
        desktop.Drop();
        // The file is copied, not moved: it stays in the other program.
        WaitFor("the end of the drag", [&] { return says("moved") || says("copied"); });
        EXPECT_TRUE(says("copied"));
        awaitResult();
        desktop.UseWindow("Vexa");
    };
    // A text dropped on an empty place becomes the formula.
    drop({"--text", "x/2"}, kEditorX - 60, kTop + 240, [&] { HoldNote(0.12F, 0.13F); });
    // A file is opened wherever it is dropped, also on the plane and on a field.
    const std::string function = program.Folder().Write(
        "quarter.xml", "<vexafunction><expression>x/4</expression></vexafunction>");
    drop({function}, kPlane + 100, kTop + 100, [&] {
        HoldNote(0.06F, 0.065F);
        Answer("Warning", 0);
    });
    drop({program.Path("functions/none.xml")}, 100, kTop + 325, [&] { Answer("Error", 0); });
    EXPECT_EQ(Close(), 0);
}

TEST_F(MainWindow, AWrongFormulaIsMendedInItsField) {
    StartWithSine();
    HoldNote();
    Replace(100, kTop + 325, "x/");
    WaitFor("the alert", [&] { return desktop.HasWindow("Error"); });
    desktop.Key("Return");
    WaitFor("its end", [&] { return !desktop.HasWindow("Error"); });
    EXPECT_NEAR(Peak(), 0.25, 0.01);
    // The field has the keyboard again, to be mended or taken back; then Tab goes on from there.
    desktop.UseWindow("Vexa");
    desktop.Key("End");
    desktop.Type("4");
    desktop.Key("Return");
    HoldNote(0.06F, 0.065F);
    desktop.Key("Tab");
    desktop.Key("ctrl+a");
    desktop.Type("7");
    desktop.Key("Tab");
    SaveAs(kTop + 418, "Save Sound", "mended.xml");
    EXPECT_THAT(test::Contents(program.Path("sounds/mended.xml")),
                testing::AllOf(testing::HasSubstr(">x/4<"), testing::HasSubstr(">7<")));
    EXPECT_EQ(Close(), 0);
}

TEST_F(MainWindow, WithoutDescriptorsThereIsAnAlertAndTheSoundGoesOn) {
    if (test::kNeedsDescriptors)
        GTEST_SKIP() << "a sanitizer needs descriptors itself";
    StartWithSine();
    HoldNote();
    rlimit before{};
    ::prlimit(vexa->Process(), RLIMIT_NOFILE, nullptr, &before);
    const rlimit none{3, before.rlim_max};
    ::prlimit(vexa->Process(), RLIMIT_NOFILE, &none, nullptr);
    // The formula plays without an add-on.
    Replace(100, kTop + 325, "x/2");
    desktop.UseWindow("Error");
    EXPECT_NEAR(Peak(), 0.125, 0.01);
    ::prlimit(vexa->Process(), RLIMIT_NOFILE, &before, nullptr);
    WaitFor("the function", [&] {
        if (desktop.HasWindow("Error")) {
            desktop.Key("Escape");
            return false;
        }
        desktop.UseWindow("Vexa");
        Replace(100, kTop + 325, "x/4");
        return Peak(kSecond / 20) < 0.07F;
    });
    EXPECT_EQ(Close(), 0);
}

TEST_F(MainWindow, PlaysWithTheLeastThatItAsksFor) {
    if (test::kSanitized)
        GTEST_SKIP() << "a sanitizer needs more than these limits leave";
    const std::string path = program.Path("vexa");
    const int loader = test::LoaderMemory(path);
    for (const auto& [option, tooLittle, enough] :
         {std::tuple{"-n ", 60, 96}, {"-v ", loader + (700 << 10), loader + (741 << 10)}}) {
        const auto refused = test::RunLimited(option + std::to_string(tooLittle), {path});
        EXPECT_EQ(refused.exitCode, 1);
        EXPECT_THAT(refused.text, testing::HasSubstr("vexa: there is not enough")) << option;
        Start({}, option + std::to_string(enough));
        // A busy machine may cost the first note its voice.
        WaitFor("a note", [this] { return PeakOfNote() > 0.01F; });
        Replace(100, kTop + 325, "x/2");
        EXPECT_EQ(Close(), 0) << option;
        EXPECT_EQ(Log().find("vexa:"), std::string::npos) << Log();
    }
}

TEST_F(MainWindow, AKeyThatIsHeldIsFollowedIntoAFieldAndEscapeSilencesAll) {
    StartWithSine();
    // After Enter the keyboard plays notes again.
    Replace(352, kTop + 258, "0.75");
    desktop.Do({"keydown", "q"});
    WaitForPeak(0.1F, 0.5F);
    desktop.Click(352, kTop + 278);
    // Long enough for the key to repeat.
    Listen(2 * kSecond);
    EXPECT_GT(Peak(), 0.1F);
    desktop.Do({"keyup", "q"});
    WaitForPeak(0, 0.001F);
    // A click has selected the content, so that typing replaces it.
    desktop.Type("0.5");
    desktop.Key("Return");
    // In a field a key types.
    desktop.Click(352, kTop + 258);
    desktop.Do({"keydown", "q"});
    EXPECT_LT(Peak(), 0.01);
    desktop.Do({"keyup", "q"});
    desktop.Key("Escape");
    // The keys play on another channel too, and a change of the channel leaves no note on.
    desktop.Click(170, kTop + 449);
    for (int i = 0; i < 4; i++)
        desktop.Key("Down");
    desktop.Key("Return");
    desktop.Do({"keydown", "q"});
    WaitForPeak(0.1F, 0.5F);
    desktop.Key("Escape");
    WaitForPeak(0, 0.001F);
    desktop.Do({"keyup", "q"});
    SaveAs(kTop + 418, "Save Sound", "held.xml");
    EXPECT_THAT(test::Contents(program.Path("sounds/held.xml")),
                testing::AllOf(testing::HasSubstr("<vel>0.75<"), testing::HasSubstr("<key>0.5<")));
    EXPECT_EQ(vexa->End(SIGTERM), 0);
}

TEST_F(MainWindow, ExportsThePictureAndEndsWithAFilePanelOpen) {
    const test::EnvironmentVariable home("HOME", program.Folder().Path().c_str());
    for (const bool signal : {false, true}) {
        Start();
        desktop.Click(kPlane + 150, kTop + 160, "3");
        desktop.UseWindow("Save Image");
        if (!signal) {
            desktop.Type("picture.png");
            desktop.Key("Return");
            WaitFor("the panel's end", [&] { return !desktop.HasWindow("Save Image"); });
            desktop.UseWindow("Vexa");
            // Moves away from the plane, where the pointer makes handles appear.
            desktop.Move(kEditorX, 5);
            const QString path = QString::fromStdString(program.Path("picture.png"));
            WaitFor("the picture, in the file and where the panel covered it",
                    [&] { return Pixels(QImage(path)) == Plane(); });
            desktop.Click(kPlane + 150, kTop + 160, "3");
            desktop.UseWindow("Save Image");
        }
        desktop.UseWindow("Vexa");
        if (signal) {
            EXPECT_EQ(vexa->End(SIGTERM), 0);
        } else {
            desktop.Close();
            EXPECT_EQ(vexa->Wait(), 0);
        }
    }
}

TEST_F(MainWindow, EndsAtOnceThoughThereIsSomethingToSay) {
    const test::EnvironmentVariable noServer("JACK_DEFAULT_SERVER", "vexa-test-none");
    {
        test::Companion closed({program.Path("vexa"), "--audio", "jack"}, log);
        Answer("Error", 0);
        desktop.UseWindow("Vexa");
        desktop.Close();
        EXPECT_EQ(closed.Wait(), 0) << "nobody is asked";
    }
    test::Companion silent({program.Path("vexa"), "--audio", "jack"}, log);
    Answer("Error", 0);
    desktop.UseWindow("Vexa");
    ::kill(silent.Process(), SIGTERM);
    EXPECT_TRUE(test::EndsWithin(silent.Process(), std::chrono::seconds(1)));
    EXPECT_THAT(Log(), testing::HasSubstr("Error disconnecting nodes"));

    const test::TemporaryFolder folder;
    test::Companion starting({program.Path("vexa"), "--audio", "none", "--record",
                              (folder.Path() / "heard.wav").string()},
                             log);
    while (folder.Count() == 0 && starting.Runs()) {
    }
    ::kill(starting.Process(), SIGTERM);
    EXPECT_TRUE(test::EndsWithin(starting.Process(), std::chrono::seconds(10)));
    EXPECT_EQ(folder.Count(), 0U) << "a part of the recording is left";
}

TEST_F(MainWindow, ClosingAsksWhereSomethingHasChangedAndEnterReplacesNothing) {
    Start();
    Replace(352, kTop + 258, "0.75");
    const std::string bell = test::Contents(program.Path("sounds/bell.xml"));
    desktop.Close();
    desktop.UseWindow(kUnsaved);
    desktop.Key("Escape");
    WaitFor("the question's end", [&] { return !desktop.HasWindow(kUnsaved); });
    desktop.UseWindow("Vexa");
    desktop.Close();
    Answer(kUnsaved, 0);
    desktop.UseWindow("Save Sound");
    desktop.Type("bell.xml");
    desktop.Key("Return");
    Answer("Replace", 0);
    EXPECT_EQ(test::Contents(program.Path("sounds/bell.xml")), bell);
    desktop.UseWindow("Save Sound");
    desktop.Key("ctrl+a");
    desktop.Type("mine");
    desktop.Key("Return");
    EXPECT_EQ(vexa->Wait(), 0);
    EXPECT_THAT(test::Contents(program.Path("sounds/mine.xml")), testing::HasSubstr("<vel>0.75<"));
    // A signal closes the window without a question.
    Start();
    Replace(352, kTop + 258, "0.75");
    EXPECT_EQ(vexa->End(SIGTERM), 0);
}

TEST_F(MainWindow, IsAsLargeAsChosen) {
    Start();
    const int width = desktop.Picture().width();
    EXPECT_EQ(vexa->End(SIGTERM), 0);
    desktop.Remember("size = 150");
    Start();
    EXPECT_NEAR(desktop.Picture().width(), width * 1.5, 2);
    EXPECT_EQ(vexa->End(SIGTERM), 0);
}

TEST_F(MainWindow, WithoutAFolderToWriteInItSaysSoAndPlays) {
    const test::TemporaryFolder bare;
    std::filesystem::copy(program.Path("vexa"), bare.Path() / "vexa");
    const test::EnvironmentVariable data("XDG_DATA_HOME", "/dev/null/data");
    vexa = std::make_unique<test::Companion>(
        std::vector<std::string>{(bare.Path() / "vexa").string()}, log);
    Answer("Error", 0);
    WaitFor("the window", [&] { return desktop.HasWindow("Vexa"); });
    EXPECT_EQ(vexa->End(SIGTERM), 0);
    EXPECT_THAT(Log(), testing::HasSubstr("warning: could not create the folder /dev/null/data"));
}

/// Also while the window is not visible and the alert is unread. The chosen source is connected
/// again.
TEST_F(MainWindow, SoundComesBackWithTheServer) {
    StartWithSine("player:out");
    desktop.Minimize();
    server.Kill();
    ear.reset();
    player.reset();
    WaitFor("the alert", [&] { return desktop.HasWindow("Error"); });
    server.Start(256, 44100);
    ear = std::make_unique<test::Ear>(kSecond * 60);
    player = std::make_unique<test::Player>();
    ear->Connect("Vexa:Vexa audio out", ear->Name());
    player->WaitUntilConnected();
    // A connection may exist for a period before it delivers anything.
    HoldNote();
    WaitFor("the end of the alert, which nobody answers",
            [&] { return !desktop.HasWindow("Error"); });
    EXPECT_NEAR(Peak(), 0.25, 0.01);
    EXPECT_EQ(vexa->End(SIGTERM), 0);
}

TEST_F(MainWindow, ASessionIsSavedAndFoundAgain) {
    Start();
    // A sample by its name, and its frequency.
    desktop.Click(55, kTop + 398);
    desktop.UseWindow("Load Sample");
    desktop.Type("pluck.wav");
    desktop.Key("Return");
    WaitFor("the panel's end", [&] { return !desktop.HasWindow("Load Sample"); });
    desktop.UseWindow("Vexa");
    Replace(105, kTop + 426, "220");
    // Coefficients, an envelope, voices and channel.
    Replace(352, kTop + 258, "0.75");
    Replace(352, kTop + 278, "0.5");
    desktop.Drag(kEditorX + 11, kEditorY + 3, kEditorX + 60, kEditorY + 20);
    desktop.Drop();
    desktop.Click(60, kTop + 449);
    desktop.Key("Down");
    desktop.Key("Down");
    desktop.Key("Down");
    desktop.Key("Return");
    const QImage saved = Plane();
    const float level = PeakOfNote();
    EXPECT_GT(level, 0.01F);

    SaveAs(kTop + 418, "Save Sound", "mine.xml");
    SaveAs(kTop + 358, "Save f(x,y)", "mine.xml");
    ASSERT_EQ(Close(), 0);
    EXPECT_THAT(test::Contents(program.Path("sounds/mine.xml")),
                testing::AllOf(testing::HasSubstr("<samplefile>pluck.wav"),
                               testing::HasSubstr("<frequency>220"),
                               testing::HasSubstr("<vel>0.75"), testing::HasSubstr("<key>0.5")));
    EXPECT_THAT(test::Contents(program.Path("functions/mine.xml")),
                testing::HasSubstr("<samplefile>pluck.wav"));

    Start();
    EXPECT_NE(Plane(), saved);
    desktop.Click(275, kTop + 448);
    desktop.UseWindow("Load Sound");
    desktop.Type("mine.xml");
    desktop.Key("Return");
    WaitFor("the panel's end", [&] { return !desktop.HasWindow("Load Sound"); });
    desktop.UseWindow("Vexa");
    WaitFor("the saved picture", [&] { return Plane() == saved; });
    EXPECT_NEAR(PeakOfNote() / level, 1, 0.05);
    EXPECT_EQ(Close(), 0);
    EXPECT_EQ(Log().find("Error"), std::string::npos) << Log();
}

} // namespace
