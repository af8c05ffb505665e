// SPDX-License-Identifier: GPL-3.0-or-later
// Catches differences between the sound that the window plays and the sound that it saves.
#include "app/MainViewStage.h"
#include "documents/SoundDocument.h"
#include "kits/media/MediaFile.h"
#include "render/MidiFile.h"
#include "support/Command.h"
#include "synth/VoiceRenderer.h"
#include "views/EnvView.h"
#include "views/R2RFView.h"

#include <cmath>

namespace {

/// Plays a MIDI file on the window's own records, each event at its sample.
std::vector<float> Play(vexa::VexaView& view, const vexa::MidiFile& file, std::size_t length) {
    vexa::VexaMidiConsumer& consumer = view.Graph().Consumer();
    // The window's producer would drop voices when a few samples take longer than real time.
    vexa::Engine& engine = view.Engine();
    vexa::VoiceRenderer renderer(engine);
    renderer.SetFunction(view.Plane().Function());
    renderer.SetGain(0.25F);
    std::vector<float> samples(length);
    std::size_t position = 0;
    for (const vexa::MidiEvent& event : file.events) {
        const auto at =
            std::min(length, static_cast<std::size_t>(std::llround(event.seconds * 44100)));
        renderer.Render(samples.data() + position, at - position);
        position = at;
        kits::Call(event.ForConsumer(), consumer);
    }
    renderer.Render(samples.data() + position, length - position);
    return samples;
}

using SavedSoundTest = test::MainViewTest;

TEST_F(SavedSoundTest, IsRenderedAsTheWindowPlaysIt) {
    Open();
    // A sound that is rendered without oversampling.
    ASSERT_TRUE(view->LoadSound(VEXA_SOURCE_FOLDER "/benchmarks/twin-hills.xml"));
    Enter("Fxy", "0.5*sin(2*x)*cos(y)");
    Enter("Cy1", "0.25");
    Enter("Fy", "1.5");
    Enter("Ax3", "0.75");
    Enter("Ax4", "7");
    view->EnvelopeEditor(2).SetPoints({{0, false, 0}, {0.1F, false, 1}, {0.4F, true, 0}});
    // Numbers that use all six digits that a document stores.
    view->EnvelopeEditor(0).SetPoints({{0, false, 0.123456F}, {1, false, -0.654321F}});
    view->SaveSound("mine.xml");
    ASSERT_TRUE(alerts.texts.empty());

    const auto tune = std::filesystem::path(VEXA_PROGRAM_FOLDER) / "demo.mid";
    const auto wav = folder.Path() / "out.wav";
    const auto rendered =
        test::RunCommand({VEXA_PROGRAM_FOLDER "/vexa-render", tune.string(), wav.string(),
                          "--quiet", "--sound", (folder.Path() / "sounds/mine.xml").string()});
    ASSERT_EQ(rendered.exitCode, 0) << rendered.text;

    const auto file = vexa::ReadMidiFile(tune);
    ASSERT_TRUE(file);
    const entry_ref ref{folder.Path().string(), "out.wav"};
    BMediaFile media(&ref);
    BMediaTrack* track = media.TrackAt(0);
    media_format format;
    track->DecodedFormat(&format);
    std::vector<float> expected(static_cast<std::size_t>(track->CountFrames()));
    int64 frames = 0;
    for (std::size_t at = 0; at < expected.size(); at += std::size_t(frames)) {
        std::vector<float> piece(1U << 16);
        if (track->ReadFrames(piece.data(), &frames, nullptr) != B_OK || frames == 0)
            break;
        std::copy_n(piece.begin(), std::min(std::size_t(frames), expected.size() - at),
                    expected.begin() + std::ptrdiff_t(at));
    }
    // Twenty seconds are enough.
    expected.resize(20 * 44100);
    const std::vector<float> played = Play(*view, *file, expected.size());
    float difference = 0;
    float peak = 0;
    for (std::size_t i = 0; i < played.size(); i++) {
        difference = std::max(difference, std::abs(played[i] - expected[i]));
        peak = std::max(peak, std::abs(expected[i]));
    }
    EXPECT_LE(difference, 1e-6);
    EXPECT_GT(peak, 0.05);
}

/// Whatever was loaded before, an incomplete document gives the same sound here as in the programs
/// without a window, and elements that are unknown to this version are saved again.
TEST_F(SavedSoundTest, AnIncompleteSoundIsLoadedOntoAFreshOne) {
    Open();
    Enter("Ax2", "0.75");
    Enter("Fx", "3");
    view->EnvelopeEditor(0).SetPoints({{0, false, 0.5F}, {2, true, 0.25F}});
    const auto part =
        folder.Write("part.xml", "<vexasound><info><author>A</author><tags>t</tags></info>"
                                 "<vexafunction><expression>x</expression><macros><a>1</a></macros>"
                                 "</vexafunction><fy>2</fy><playing><bend>2</bend></playing>"
                                 "<later/></vexasound>");
    const auto expected = vexa::ReadSound(part);
    ASSERT_TRUE(expected);
    ASSERT_TRUE(view->LoadSound(part));
    test::Settle();
    const vexa::Sound loaded = view->ConstructSound();
    EXPECT_EQ(loaded.texts, expected->texts);
    EXPECT_EQ(loaded.envelopes, expected->envelopes);
    EXPECT_EQ(loaded, *expected);
    view->SaveSound("again.xml");
    const std::string saved = test::Contents(In("sounds/again.xml"));
    for (const char* kept : {"    <tags>t</tags>\n", "    <macros>\n", "    <bend>2</bend>\n",
                             "\n  <later/>\n</vexasound>"})
        EXPECT_NE(saved.find(kept), std::string::npos) << saved;
}

} // namespace
