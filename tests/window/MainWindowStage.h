// SPDX-License-Identifier: GPL-3.0-or-later
// The program's window on a display and a JACK server that belong to the test.
#pragma once

#include "live/LivePlay.h"
#include "support/Content.h"
#include "support/Environment.h"
#include "support/Limits.h"
#include "window/Desktop.h"

#include <QColorSpace>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace test {

constexpr std::size_t kSecond = 48000;

/// A copy of the program folder, so that files saved by a test are removed with it.
class ProgramCopy {
  public:
    ProgramCopy() {
        CopyContent(folder.Path());
        for (const char* name : {"vexa", "orvo.png", "orvobar.png", "vexa.png", "vexa-icon.png"})
            std::filesystem::copy(std::filesystem::path(VEXA_PROGRAM_FOLDER) / name,
                                  folder.Path() / name);
    }
    std::string Path(const char* name) const { return (folder.Path() / name).string(); }
    const TemporaryFolder& Folder() const { return folder; }

  private:
    TemporaryFolder folder;
};

/// Positions in the window: those of the main view, which begins at y = 41.
constexpr int kTop = 41;
/// The position of the editor of EnvAx; its curve goes from y = 3 (1) to y = 83 (0) and begins at x
/// = 9.
constexpr int kEditorX = 440;
constexpr int kEditorY = kTop + 218;
constexpr int kPlane = 10;
constexpr int kPlaneSize = 301;
constexpr const char* kUnsaved = "Unsaved changes";
/// The steps in that question from the button "Save" to the one that discards the changes.
constexpr int kDiscard = 1;

class MainWindow : public testing::Test {
  protected:
    /// `limit`, if any, is the argument of the shell's ulimit; `alert` is the title of an alert
    /// that the program shows first, which is acknowledged.
    void Start(std::vector<std::string> options = {}, const std::string& limit = "",
               const std::string& alert = "") {
        options.insert(options.begin(), program.Path("vexa"));
        if (!limit.empty())
            options = Limited(limit, options);
        vexa = std::make_unique<Companion>(options, log);
        if (!alert.empty())
            Answer(alert, 0);
        desktop.UseWindow("Vexa");
        ear->Connect("Vexa:Vexa audio out", ear->Name());
        player->Connect(player->Name(), "Vexa:Vexa midi in");
    }
    void StartWithSine(const char* source = "Computer keyboard",
                       const std::string& sound = kSineSound) {
        // The document has only some of the elements.
        Start({"--sound", program.Folder().Write("sine.xml", sound).string(), "--voices", "20",
               "--midi", source},
              "", "Warning");
    }
    std::string Log() const { return Contents(log); }

    /// Returns the largest sample of the next stretch.
    float Peak(std::size_t frames = kSecond / 4) {
        // Samples that are already on their way to the recorder do not belong to the stretch.
        Listen(kSecond / 10);
        const std::size_t from = ear->Count();
        Listen(frames);
        float peak = 0;
        for (std::size_t i = from; i < ear->Count(); i++)
            peak = std::max(peak, std::abs(ear->Samples()[i]));
        return peak;
    }
    void Listen(std::size_t frames) {
        const std::size_t end = ear->Count() + frames;
        ear->WaitWhileThereArePeriods([&] { return ear->Count() >= end; });
    }
    void WaitForPeak(float low, float high) {
        const std::string wanted = "a level of " + std::to_string(low);
        WaitFor(wanted.c_str(), [&] {
            const float peak = Peak(kSecond / 20);
            return low <= peak && peak <= high;
        });
    }

    /// Holds A4 and checks its level; strikes it again if needed, as a busy machine may cost a note
    /// its voice.
    void HoldNote(float low = 0.24F, float high = 0.26F) {
        WaitFor("the note", [&] {
            player->Play({{0, {0x90, 69, 100}}});
            const float peak = Peak(kSecond / 20);
            return low <= peak && peak <= high;
        });
    }

    /// Closes the window, discarding changes, and waits for the program to end.
    int Close() {
        desktop.Close();
        WaitFor("the end or a question",
                [&] { return desktop.HasWindow(kUnsaved) || !desktop.HasWindow("Vexa"); });
        if (desktop.HasWindow(kUnsaved))
            Answer(kUnsaved, kDiscard);
        return vexa->Wait();
    }
    /// Presses a button of an alert, counted from the focused one.
    void Answer(const std::string& alert, int steps) {
        desktop.UseWindow(alert);
        for (int i = 0; i < steps; i++)
            desktop.Key("shift+Tab");
        desktop.Key("Return");
        WaitFor("the alert's end", [&] { return !desktop.HasWindow(alert); });
    }

    /// Replaces the text of the field at that position and confirms it.
    void Replace(int x, int y, const std::string& text) const {
        desktop.Click(x, y);
        desktop.Key("ctrl+a");
        desktop.Type(text);
        desktop.Key("Return");
    }
    /// Presses the button at that height, and saves under the name.
    void SaveAs(int y, const std::string& title, const std::string& name) {
        desktop.Click(275, y);
        desktop.UseWindow(title);
        desktop.Type(name);
        desktop.Key("Return");
        WaitFor("the panel's end", [&] { return !desktop.HasWindow(title); });
        desktop.UseWindow("Vexa");
    }
    /// Returns the picture of the plane on the screen.
    QImage Plane() const {
        return Pixels(desktop.Picture().copy(kPlane, kTop + 10, kPlaneSize, kPlaneSize));
    }
    /// Returns the pixels without an image file's metadata.
    static QImage Pixels(QImage image) {
        image.convertTo(QImage::Format_RGB32);
        image.setColorSpace({});
        return image;
    }
    /// Returns the peak of a second of a note that begins now.
    float PeakOfNote() {
        player->Play({{0, {0x90, 57, 100}}});
        const float peak = Peak(kSecond);
        player->Play({{0, {0xB0, 123, 0}}});
        WaitForPeak(0, 0.001F);
        return peak;
    }

    /// Counts the pixels of the plane view that an orbit covers.
    int OrbitMarks() const {
        const QImage plane = Plane();
        int marks = 0;
        for (int y = 0; y < kPlaneSize; y++) {
            for (int x = 0; x < kPlaneSize; x++)
                marks += qGreen(plane.pixel(x, y)) >= 200;
        }
        return marks;
    }

    ProgramCopy program;
    std::string log = program.Path("log");
    Desktop desktop;
    JackServer server{512};
    std::unique_ptr<Ear> ear = std::make_unique<Ear>(kSecond * 60);
    std::unique_ptr<Player> player = std::make_unique<Player>();
    std::unique_ptr<Companion> vexa;
};

} // namespace test
