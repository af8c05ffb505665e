// The program on a real JACK server, played by a real client and recorded by another.
#include "live/LivePlay.h"
#include "support/Spectrum.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using test::LivePlay;
using testing::HasSubstr;

/// The phase of 440 Hz in a tenth of a second from a sample on.
double PhaseAt(std::span<const float> samples, std::size_t from) {
    std::complex<double> sum = 0;
    for (std::size_t i = from; i < from + 4800; i++)
        sum += double(samples[i]) * std::polar(1.0, -2 * M_PI * 440 * double(i) / 48000);
    return std::arg(sum);
}

TEST(Live, ANoteHasItsPitchBeginsAndEndsWithoutAClick) {
    std::unique_ptr<LivePlay> play;
    // What the server or the machine loses is not ours to judge: such a recording is made again.
    for (int attempt = 0; attempt < 3; attempt++) {
        play.reset();
        play = std::make_unique<LivePlay>(128, 48000 * 8);
        play->Play({{1000, {0x90, 69, 100}}, {97000, {0x80, 69, 0}}});
        play->Listen(24000);
        EXPECT_EQ(play->Vexa().End(SIGTERM), 0);
        if (play->Log().find("; 0 late and 0 missing") != std::string::npos)
            break;
    }
    EXPECT_THAT(play->Log(), HasSubstr("; 0 late and 0 missing buffers, 0 voices dropped"));

    const std::vector<float>& samples = play->Samples();
    const std::span<const float> held(&samples[play->At(5000)], 90000);
    const double turns =
        std::remainder(PhaseAt(held, 72000) - PhaseAt(held, 0), 2 * M_PI) / (2 * M_PI);
    EXPECT_NEAR(1200 * std::log2(1 + turns / 1.5 / 440), 0, 1) << "cents over 1.5 seconds";
    EXPECT_NEAR(test::Amplitude(held, 440, 48000), 0.25, 0.02);

    const auto most = static_cast<float>(0.25 * 2 * M_PI * 440 / 48000 * 1.5);
    for (std::size_t i = play->At(0); i < play->At(110000); i++)
        ASSERT_LT(std::abs(samples[i + 1] - samples[i]), most) << "at frame " << i - play->At(0);
    const std::size_t end = play->At(97000 + 960 + 1000);
    for (std::size_t i = end; i < end + 9600; i++)
        ASSERT_LT(std::abs(samples[i]), 0.01) << "20 ms after note-off";
}

TEST(Live, ANoteIsHeardWithinThreePeriodsAndABuffer) {
    LivePlay play(128, 48000 * 20);
    std::vector<std::uint32_t> noteOns;
    play.Play(test::ShortNotes(100, noteOns));
    play.Listen(4800);
    std::vector<int> latencies = play.Latencies(noteOns, 2000);
    std::sort(latencies.begin(), latencies.end());
    // The producer's buffer is 64 frames of 44100 Hz, 70 of the server's. The median, as on a busy
    // machine the server itself loses periods.
    EXPECT_LE(latencies[50], 3 * 128 + 70);
    EXPECT_GT(latencies[0], 0);
}

TEST(Live, TheEndOfTheServerIsToldOnceAndSurvived) {
    LivePlay play(128, 48000 * 4);
    play.Play({{1000, {0x90, 69, 100}}});
    play.Server().Process().End(SIGKILL);
    test::WaitFor("the message", [&] {
        return play.Log().find("the audio device has disappeared") != std::string::npos;
    });
    EXPECT_EQ(play.Vexa().End(SIGTERM), 0);
    EXPECT_EQ(play.Log().find("disappeared"), play.Log().rfind("disappeared"));
}

} // namespace
