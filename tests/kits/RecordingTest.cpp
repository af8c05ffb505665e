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
    /// Why it is not whole; empty where it is.
    static std::string Fault(kits::Recording& recording) {
        const auto finished = recording.Finish();
        return finished ? "" : finished.Fault().text;
    }
    std::size_t Files() const {
        return std::size_t(std::distance(std::filesystem::directory_iterator(folder.Path()), {}));
    }
    test::TemporaryFolder folder;
};

TEST_F(RecordingTest, KeepsWhatWasPutFromTheFirstDeviceOn) {
    const auto recording = Begin("a.wav");
    recording->Put(std::vector<float>(10, 1.0F)); // no device yet
    recording->TakeRate(48000);
    std::vector<float> all;
    for (int piece = 0; piece < 3000; piece++) {
        const std::vector<float> samples(64, float(piece));
        recording->Put(samples);
        all.insert(all.end(), samples.begin(), samples.end());
        if (piece == 1500)
            recording->TakeRate(48000); // it was lost and came back
    }
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "a.wav")) << "it is not whole yet";
    EXPECT_EQ(Fault(*recording), "");
    const test::DecodedSound sound = test::ReadSound(folder.Path() / "a.wav", 1);
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
        recording->Put(std::vector<float>(100, 1.0F));
    }
    EXPECT_EQ(Files(), 0U) << "unfinished ones leave nothing";

    const auto changed = Begin("a.wav");
    changed->TakeRate(48000);
    changed->Put(std::vector<float>(100, 1.0F));
    changed->TakeRate(44100);
    changed->Put(std::vector<float>(100, 2.0F));
    EXPECT_NE(Fault(*changed).find("from 48000 to 44100 Hz"), std::string::npos);
    EXPECT_EQ(test::ReadSound(folder.Path() / "a.wav", 1).values, std::vector<float>(100, 1.0F));

    // More than there is patience for, at once.
    const auto slow = Begin("b.wav");
    slow->TakeRate(48000);
    slow->Put(std::vector<float>(1U << 21, 1.0F));
    EXPECT_NE(Fault(*slow).find("2097152 samples are missing"), std::string::npos);
}

} // namespace
