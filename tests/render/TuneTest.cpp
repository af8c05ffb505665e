// Whole tunes, rendered as a user does it and looked for in what is heard.
#include "kits/support/SupportDefs.h"
#include "support/Command.h"
#include "support/Environment.h"
#include "support/MidiFiles.h"
#include "support/SoundFiles.h"
#include "support/Spectrum.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using test::MidiMessage;
using testing::HasSubstr;

constexpr double kRate = 44100;

class Tune : public testing::Test {
  protected:
    /// Renders a file of those messages; what the program has said.
    std::string Render(const std::vector<MidiMessage>& messages, std::vector<std::string> options) {
        const std::string midi = folder.Write("a.mid", test::MidiFileOf(messages)).string();
        const std::string wav = (folder.Path() / "a.wav").string();
        options.insert(options.begin(),
                       {VEXA_PROGRAM_FOLDER "/vexa-render", midi, wav, "--user-folder"});
        const test::CommandResult result = test::RunCommand(options);
        EXPECT_EQ(result.exitCode, 0) << result.text;
        const test::DecodedSound file = test::ReadSound(wav, 0);
        channels = file.channels;
        left.clear();
        for (std::size_t i = 0; i < file.values.size(); i += channels)
            left.push_back(file.values[i]);
        return result.text;
    }
    /// In 0.4 seconds.
    double Level(double second, double hertz) const {
        const auto from = static_cast<std::size_t>(second * kRate);
        return test::Amplitude({&left[from], std::size_t(0.4 * kRate)}, hertz, kRate);
    }
    /// Writes a sine with more elements into the user's sounds.
    void WriteSine(const std::string& name, const std::string& more) const {
        std::string text = test::kSineSound;
        folder.Write("vexa/sounds/" + name, text.insert(text.rfind('<'), more));
    }

    test::TemporaryFolder folder;
    test::EnvironmentVariable data{"XDG_DATA_HOME", folder.Path().c_str()};
    /// What was rendered last.
    std::size_t channels = 0;
    std::vector<float> left;
};

/// Of two sounds an octave apart. A note that sounds goes on.
TEST_F(Tune, ProgramChangesChooseSoundsAtTheirFrame) {
    WriteSine("0.xml", "<fx>2</fx>");
    WriteSine("1.xml", "<playing><spread>90</spread></playing>");
    folder.Write("vexa/sounds/2.xml", "no sound");
    const std::vector<MidiMessage> tune{
        {0, {0xC0, 0}},        {100, {0x90, 69, 100}},  // 880 Hz
        {600, {0xB0, 32, 1}},  {600, {0xC0, 0}},        // a bank that there is not
        {700, {0xB0, 32, 0}},  {700, {0xC0, 2}},        // broken
        {1000, {0xC0, 1}},     {1000, {0x91, 74, 100}}, // half as high
        {1500, {0x80, 69, 0}}, {1500, {0x81, 74, 0}}};
    EXPECT_THAT(Render(tune, {"--programs"}),
                testing::AllOf(HasSubstr("there is no program 128"), HasSubstr("2.xml")));
    EXPECT_EQ(channels, 2U) << "the second sound has a spread";
    EXPECT_GT(Level(0.55, 880), 0.2);
    EXPECT_LT(Level(0.55, 440), 0.01);
    EXPECT_GT(Level(1.05, 440), 0.2);
    EXPECT_GT(Level(1.05, 587.3295), 0.2);
    const std::vector<float> changed = left;
    // Until that frame it is as without the change.
    std::vector<MidiMessage> unchanged(tune.begin(), tune.begin() + 2);
    unchanged.push_back({1500, {0x80, 69, 0}});
    Render(unchanged, {"--programs"});
    EXPECT_EQ(channels, 1U);
    const auto parted = std::mismatch(left.begin(), left.end(), changed.begin());
    EXPECT_NEAR(double(parted.first - left.begin()), 44100, 1);
    const std::vector<float> chosen = left;
    unchanged.erase(unchanged.begin());
    Render(unchanged, {"--sound", "0"});
    EXPECT_EQ(left, chosen) << "the same bytes as with the sound that was loaded before";
    Render(tune, {"--sound", "0"});
    EXPECT_GT(Level(1.05, 880), 0.2) << "otherwise they mean nothing";
}

} // namespace
