// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/Recording.h"

#include "support/SoundFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

class RecordingTest : public testing::Test {
  protected:
    std::unique_ptr<kits::Recording> Begin(const char* name) {
        auto begun = kits::Recording::Begin(folder.Path() / name);
        EXPECT_TRUE(begun);
        return *std::move(begun);
    }
    /// Returns the reason for which the recording is incomplete; empty if it is complete.
    static std::string Fault(kits::Recording& recording) {
        const auto finished = recording.Finish();
        return finished ? "" : finished.Fault().text;
    }
    std::size_t Files() const {
        return std::size_t(std::distance(std::filesystem::directory_iterator(folder.Path()), {}));
    }
    /// Puts `frames` frames of these values.
    static void Put(kits::Recording& recording, std::size_t frames, float left, float right) {
        recording.Put(std::vector(frames, left).data(), std::vector(frames, right).data(), frames);
    }
    test::TemporaryFolder folder;
};

TEST_F(RecordingTest, KeepsWhatWasPutFromTheFirstDeviceOn) {
    const auto recording = Begin("a.wav");
    Put(*recording, 10, 1, 1); // no device yet
    EXPECT_EQ(recording->Seconds(), 0);
    recording->TakeRate(48000);
    std::vector<float> all;
    for (int piece = 0; piece < 3000; piece++) {
        Put(*recording, 64, float(piece), float(-piece));
        for (int i = 0; i < 64; i++)
            all.insert(all.end(), {float(piece), float(-piece)});
        if (piece == 1500)
            recording->TakeRate(48000); // it was lost and came back
    }
    EXPECT_EQ(recording->Seconds(), 4); // 192000 frames
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "a.wav")) << "it is not whole yet";
    EXPECT_EQ(Fault(*recording), "");
    const test::DecodedSound sound = test::ReadSound(folder.Path() / "a.wav", 0);
    EXPECT_EQ(sound.frameRate, 48000);
    EXPECT_EQ(sound.values, all);
}

TEST_F(RecordingTest, SaysWhatIsMissing) {
    EXPECT_FALSE(kits::Recording::Begin(folder.Path() / "a.mp3"));
    EXPECT_FALSE(kits::Recording::Begin(folder.Path() / "none" / "a.wav"));
    EXPECT_NE(Fault(*Begin("a.wav")).find("no audio device"), std::string::npos);
    {
        const auto recording = Begin("a.wav");
        recording->TakeRate(48000);
        Put(*recording, 100, 1, 1);
    }
    EXPECT_EQ(Files(), 0U) << "unfinished ones leave nothing";

    const auto changed = Begin("a.wav");
    changed->TakeRate(48000);
    Put(*changed, 100, 1, 1);
    changed->TakeRate(44100);
    Put(*changed, 100, 2, 2);
    EXPECT_NE(Fault(*changed).find("from 48000 to 44100 Hz"), std::string::npos);
    EXPECT_EQ(test::ReadSound(folder.Path() / "a.wav", 0).values, std::vector<float>(200, 1.0F));

    // A disk that would become full ends the recording, which keeps its content.
    const auto full = *kits::Recording::Begin(folder.Path() / "full.flac", 1U << 20, 1ULL << 60);
    full->TakeRate(48000);
    Put(*full, 100, 1, 1);
    for (int i = 0; i < 500 && !full->HasEnded(); i++)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_TRUE(full->HasEnded());
    EXPECT_NE(Fault(*full).find("full.flac: the recording ends where the disk was nearly full"),
              std::string::npos);
    EXPECT_TRUE(std::filesystem::exists(folder.Path() / "full.flac"));

    // Far more than any disk can write in the available time, so that the recording pauses.
    const auto slow = *kits::Recording::Begin(folder.Path() / "b.wav", 1024);
    slow->TakeRate(48000);
    Put(*slow, 1U << 22, 1, 1);
    EXPECT_NE(Fault(*slow).find(" frames are missing"), std::string::npos);
}

} // namespace
