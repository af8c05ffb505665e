// SPDX-License-Identifier: GPL-3.0-or-later
// Catches faults on the connection between a hosted instrument and its windows; both ends run in
// one process.
#include "plugin/window/Windows.h"

#include "attach/Link.h"
#include "attach/Moment.h"
#include "documents/SoundDocument.h"
#include "support/Pictures.h"
#include "support/RealtimeWatch.h"
#include "support/TemporaryFolder.h"
#include "synth/Realtime.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

using namespace vexa;
using attach::Kind;
using testing::HasSubstr;
using Milliseconds = std::chrono::milliseconds;

/// Renders a block as a host does and returns its largest sample.
float Play(HostedInstrument& instrument) {
    std::array<float, 256> left{}, right{};
    ControlValues leftToTheSound;
    leftToTheSound.fill(NAN);
    const RealtimeSection realtime;
    instrument.TakeControls(leftToTheSound);
    instrument.Render(left.data(), right.data(), left.size());
    return *std::max_element(left.begin(), left.end());
}

/// The window's program at its end of the connection.
class Window {
  public:
    explicit Window(Windows& windows) : link(*windows.Open(), attach::End::Window) {}

    /// Returns the next letter, of one kind if given; null if the connection ends.
    std::optional<attach::Letter> Read(std::optional<Kind> kind = std::nullopt) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (std::chrono::steady_clock::now() < end) {
            while (std::optional<attach::Letter> letter = link.Next()) {
                if (!kind || letter->kind == *kind)
                    return letter;
            }
            if (!link.IsOpen())
                return std::nullopt;
            link.Wait(Milliseconds(10));
            link.Pump();
        }
        throw std::runtime_error("no letter came");
    }
    Sound ReadSound() {
        const attach::SoundLetter letter = attach::ReadSoundLetter(*Read(Kind::Sound));
        serial = letter.serial;
        return *SoundOfText(letter.document);
    }
    void Edit(const Sound& sound) { link.PutSound(Kind::Edit, serial, SoundText(sound)); }
    void Strike(char status, char key, char velocity) {
        link.Put(Kind::Midi, std::string{status, key, velocity});
    }
    /// Returns the next moment for which the condition holds.
    attach::Moment See(const std::function<bool(const attach::Moment&)>& what) {
        attach::Moment moment{};
        int count = 0;
        do
            moment = attach::ReadMoment(Read(Kind::Moment).value().body);
        while (!what(moment) && ++count < 200);
        EXPECT_LT(count, 200);
        return moment;
    }

    attach::Link link;
    uint32 serial = 0;
};

class WindowsOfAPlugin : public testing::Test {
  protected:
    std::string Lines() {
        const std::lock_guard lock(mutex);
        return lines;
    }
    void Await(const std::function<bool()>& what) {
        for (int i = 0; i < 1000 && !what(); i++)
            std::this_thread::sleep_for(Milliseconds(5));
        EXPECT_TRUE(what()) << Lines();
    }
    std::string Expression() { return instrument.ShownSince(0)->sound.function.expression; }

    std::mutex mutex;
    std::string lines;
    HostedInstrument instrument{std::filesystem::path("/nowhere"), 48000};
    Windows windows{instrument, [this](const std::string& line) {
                        const std::lock_guard lock(mutex);
                        lines += line + '\n';
                    }};
};

TEST_F(WindowsOfAPlugin, EditsAreHeardAndWhatPlaysIsSeenWhileTheAudioSideNeverWaits) {
    std::atomic<float> peak{0};
    const test::RealtimeWatch watch;
    std::jthread host([&](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            peak = Play(instrument);
            std::this_thread::sleep_for(Milliseconds(2));
        }
    });
    auto window = std::make_unique<Window>(windows);
    Sound sound = window->ReadSound();
    EXPECT_EQ(SoundText(sound), instrument.State());

    // A key of the window, and its orbit.
    sound.envelopes[2] = sound.envelopes[3] = {{0, false, 1}, {1, true, 0}};
    window->Edit(sound);
    window->Strike('\x90', 60, 100);
    const auto first = window->See([](const auto& m) { return m.voices[0].t > 0; });
    const auto later =
        window->See([&](const auto& m) { return m.voices[0].t > first.voices[0].t; });
    EXPECT_GT(later.voices[0].phasex, first.voices[0].phasex);
    SoundRecords shown;
    attach::Show(later, shown);
    EXPECT_EQ(attach::MomentOf(shown), later);
    EXPECT_EQ(CountHeard(shown.voices), 1);
    attach::Moment over = later;
    over.voices[0].released = 2;
    attach::Show(over, shown);
    EXPECT_EQ(attach::MomentOf(shown), over);
    EXPECT_EQ(CountHeard(shown.voices), 0);

    // Edits the numbers, the formula, the macros and the points one by one; all edits are kept.
    sound.texts[0] = "3.5";
    sound.function.expression = "4*a*x";
    window->Edit(sound);
    sound.function.macros[0].value = "0.75";
    window->Edit(sound);
    sound.envelopes[2][0].val = 0.5F;
    window->Edit(sound);
    sound.playing.emplace().Of("polyphony") = "3";
    window->Edit(sound);
    Await([&] { return instrument.State() == SoundText(sound); });
    Await([&] { return peak > 0.3F; });
    EXPECT_TRUE(instrument.TakeEdited());
    EXPECT_FALSE(instrument.TakeEdited());

    // An invalid formula is left out, now and in the next edit.
    sound.function.expression = "x+";
    window->Edit(sound);
    sound.texts[0] = "4.5";
    window->Edit(sound);
    sound.function.expression = "4*a*x";
    Await([&] { return instrument.State() == SoundText(sound); });

    // A state that the host restores takes precedence over an edit that crossed it, and is shown.
    Sound restored;
    restored.function.expression = "y/3";
    bool taken = false;
    instrument.Restore(SoundText(restored), "", taken);
    window->Edit(sound);
    EXPECT_EQ(window->ReadSound().function.expression, "y/3");
    EXPECT_EQ(Expression(), "y/3");

    // A killed window leaves no key down, and does not affect another window.
    window->Strike('\x90', 64, 100);
    Window other(windows);
    other.See([](const auto& m) { return m.voices[1].active || m.voices[0].key == 64.0F / 127; });
    window.reset();
    other.See([](const auto& m) {
        return std::ranges::all_of(m.voices, [](const auto& v) { return !v.active || v.released; });
    });
    host.request_stop();
    host.join();
    EXPECT_EQ(watch.Faults(), 0);
    EXPECT_EQ(Lines(), "");
}

/// A host asks whether to save as soon as it has closed the window.
TEST_F(WindowsOfAPlugin, WhatAWindowSentBeforeItIsClosedIsTaken) {
    for (int i = 0; i < 100; i++) {
        auto window = std::make_unique<Window>(windows);
        Sound sound = window->ReadSound();
        sound.texts[0] = std::to_string(i);
        window->Edit(sound);
        if (i % 2 == 0)
            window.reset();
        windows.Close();
        ASSERT_EQ(instrument.State(), SoundText(sound)) << i;
        ASSERT_TRUE(instrument.TakeEdited()) << i;
    }
    EXPECT_EQ(Lines(), "");
}

TEST_F(WindowsOfAPlugin, KeysStruckWhileTheHostStandsStillAreReleasedWhenItGoesOn) {
    for (int i = 0; i < 400; i++) {
        for (const uint8 status : {0x90, 0x80})
            instrument.PostMidi({status, static_cast<uint8>(i % 128), 100});
        instrument.PostMidi({0xB0, 1, static_cast<uint8>(i % 128)});
    }
    instrument.PostMidi({0x90, 60, 100});
    instrument.PostMidi({0x80, 60, 64});
    for (int i = 0; i < 3; i++)
        Play(instrument);
    const attach::Moment moment = attach::MomentOf(instrument.Records());
    EXPECT_TRUE(
        std::ranges::all_of(moment.voices, [](const auto& v) { return !v.active || v.released; }));
}

/// The session has a path for the file that the document does not know.
TEST_F(WindowsOfAPlugin, AFileThatIsOnlyInTheSessionIsFoundByAWindowAndKeptByIt) {
    const test::TemporaryFolder folder;
    const std::string here = (folder.Path() / "here.png").string();
    folder.Write("here.png", test::Png(2, 1, {}, {0, 255}));
    Sound restored;
    restored.function.kind = FunctionKind::Picture;
    restored.function.pictureFile = "gone.png";
    bool taken = false;
    EXPECT_EQ(instrument.Restore(SoundText(restored), here, taken), "");
    Window window(windows);
    Sound sound = window.ReadSound();
    EXPECT_EQ(sound.function.pictureFile, here);
    sound.texts[0] = restored.texts[0] = "3.5";
    window.Edit(sound);
    Await([&] { return instrument.State() == SoundText(restored); });
    EXPECT_EQ(instrument.Keep().file, here);
    // Files that the user chooses, or restores by Undo, are found here too.
    Sound other = sound;
    other.function.kind = FunctionKind::Expression;
    window.Edit(other);
    Await([&] { return !instrument.Keep().file; });
    window.Edit(sound);
    Await([&] { return instrument.Keep().file == here; });
    // A session keeps what belongs together, whatever else happens meanwhile.
    std::jthread loading([&](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            instrument.Restore(SoundText(Sound()), "", taken);
            instrument.Restore(SoundText(restored), here, taken);
        }
    });
    for (int i = 0; i < 1000; i++) {
        const HostedInstrument::Kept kept = instrument.Keep();
        const FunctionKind kind = SoundOfText(kept.document)->function.kind;
        ASSERT_EQ(kept.file.has_value(), kind == FunctionKind::Picture);
    }
}

std::string Raw(uint32 kind, uint32 size, const std::string& body) {
    std::string raw(8, '\0');
    std::memcpy(raw.data(), &kind, 4);
    std::memcpy(raw.data() + 4, &size, 4);
    return raw + body;
}

TEST_F(WindowsOfAPlugin, PeersThatAreNoWindowsAreToldWhyAndNothingChanges) {
    const std::string before = instrument.State();
    const std::string hello = Raw(1, 8, std::string("vexa\2\0\0\0", 8));
    const std::pair<std::string, const char*> peers[] = {
        {std::string(1 << 20, 'x'), "does not say Hello"},
        {Raw(6, 3, "\x90\x3C\x64"), "does not say Hello"},
        {Raw(1, 8, std::string("vexa\1\0\0\0", 8)), "different versions"},
        {Raw(1, 8, std::string("asap\1\0\0\0", 8)), "does not say Hello"},
        {hello + hello, "not for this side"},
        {hello + Raw(3, 8, std::string(8, 'x')), "not for this side"},
        {hello + Raw(77, 0, ""), "not for this side"},
        {hello + Raw(6, 2, "xx"), "it may have 3 to 3"},
        {hello + Raw(4, 1 << 20, std::string(1 << 20, ' ')), "it may have 4 to 524292"},
        {hello + Raw(4, 12, std::string("\1\0\0\0<nosound", 12)), "a tag without"},
        {hello + Raw(4, 500, "\1"), "in the middle of a letter"},
    };
    for (const auto& [bytes, reason] : peers) {
        const int socket = *windows.Open();
        const timeval patience{2, 0};
        ::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
        // The sound comes first, so that an edit refers to it.
        char header[16 + 12];
        EXPECT_EQ(::send(socket, hello.data(), bytes.starts_with(hello) ? 16 : 0, MSG_NOSIGNAL),
                  bytes.starts_with(hello) ? 16 : 0);
        EXPECT_EQ(::recv(socket, header, bytes.starts_with(hello) ? 28 : 16, MSG_WAITALL),
                  bytes.starts_with(hello) ? 28 : 16);
        const std::size_t from = bytes.starts_with(hello) ? 16 : 0;
        std::jthread drain([socket] {
            char rest[65536];
            while (::recv(socket, rest, sizeof rest, 0) > 0) {
            }
        });
        for (std::size_t at = from; at < bytes.size();) {
            const ssize_t n = ::send(socket, bytes.data() + at, bytes.size() - at, MSG_NOSIGNAL);
            if (n <= 0)
                break;
            at += static_cast<std::size_t>(n);
        }
        ::shutdown(socket, SHUT_WR);
        Await([&] { return Lines().find(reason) != std::string::npos; });
        ::shutdown(socket, SHUT_RDWR);
        drain.join();
        ::close(socket);
        const std::lock_guard lock(mutex);
        lines.clear();
    }
    EXPECT_EQ(instrument.State(), before);
}

/// A window that never reads, and one that ends with the plug-in.
TEST_F(WindowsOfAPlugin, NobodyWaitsForAWindowThatStandsStillAndThePluginsEndIsIts) {
    auto hosted = std::make_unique<HostedInstrument>(std::filesystem::path("/nowhere"), 48000);
    auto itsWindows = std::make_unique<Windows>(*hosted, [](const std::string&) {});
    Window frozen(*itsWindows), window(*itsWindows);
    Sound sound = window.ReadSound();
    // In total more than a socket can buffer.
    sound.info.comment = std::string(100000, 'c');
    for (int i = 0; i < 20; i++) {
        sound.function.expression = "x*" + std::to_string(i);
        bool taken = false;
        hosted->Restore(SoundText(sound), "", taken);
        while (window.ReadSound().function.expression != sound.function.expression) {
        }
    }
    const auto start = std::chrono::steady_clock::now();
    itsWindows.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
    EXPECT_TRUE(window.link.IsDeserted());
    EXPECT_FALSE(window.Read(Kind::Midi));
    EXPECT_TRUE(window.link.IsDeserted());
    EXPECT_EQ(window.link.Fault(), "");
}

} // namespace
