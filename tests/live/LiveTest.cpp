// SPDX-License-Identifier: GPL-3.0-or-later
// The program on a real JACK server, played by a real client and recorded by another.
#include "kits/support/ClientName.h"
#include "kits/support/backends/JackClient.h"
#include "live/LivePlay.h"
#include "support/Environment.h"
#include "support/SoundFiles.h"
#include "support/Spectrum.h"

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <optional>
#include <random>
#include <thread>

#include <gtest/gtest.h>

namespace {

using test::LivePlay;

/// Returns the phase of 440 Hz in the tenth of a second that begins at a sample.
double PhaseAt(std::span<const float> samples, std::size_t from) {
    std::complex<double> sum = 0;
    for (std::size_t i = from; i < from + 4800; i++)
        sum += double(samples[i]) * std::polar(1.0, -2 * M_PI * 440 * double(i) / 48000);
    return std::arg(sum);
}

/// Returns the largest step between two samples, from the start of the script to a frame of it.
float LargestStep(const LivePlay& play, std::uint32_t end) {
    float step = 0;
    for (std::size_t i = play.At(0); i < play.At(end); i++)
        step = std::max(step, std::abs(play.Samples()[i + 1] - play.Samples()[i]));
    return step;
}

/// 1.5 times the steepest step of a sine of 440 Hz and amplitude 0.25.
constexpr float kSteepest = 0.25F * 2 * float(M_PI) * 440 / 48000 * 1.5F;

TEST(Live, ANoteHasItsPitchBeginsAndEndsWithoutAClick) {
    std::unique_ptr<LivePlay> play;
    // Buffers lost by the server or a busy machine are not the program's fault: such a recording is
    // repeated, and long periods give them time.
    float step = 0;
    const auto nothingIsLost = [&play, &step] {
        play.reset();
        play = std::make_unique<LivePlay>(1024, 48000 * 8);
        play->Play({{1000, {0x90, 69, 100}}, {97000, {0x80, 69, 0}}});
        play->Listen(36000);
        EXPECT_EQ(play->Vexa().End(SIGTERM), 0);
        // jackd1 does not report every period that it skips.
        step = LargestStep(*play, 110000);
        return play->Lost() == 0 && step < kSteepest &&
               play->Log().find("; 0 late and 0 missing buffers, 0 voices") != std::string::npos;
    };
    ASSERT_TRUE(test::SucceedsInTheEnd(nothingIsLost)) << "step " << step << '\n' << play->Log();

    const std::vector<float>& samples = play->Samples();
    const std::span<const float> held(&samples[play->At(5000)], 90000);
    const double turns =
        std::remainder(PhaseAt(held, 72000) - PhaseAt(held, 0), 2 * M_PI) / (2 * M_PI);
    EXPECT_NEAR(1200 * std::log2(1 + turns / 1.5 / 440), 0, 1) << "cents over 1.5 seconds";
    EXPECT_NEAR(test::Amplitude(held, 440, 48000), 0.25, 0.02);

    const std::size_t end = play->At(97000 + 960 + 4000);
    for (std::size_t i = end; i < end + 9600; i++)
        ASSERT_LT(std::abs(samples[i]), 0.01) << "20 ms after note-off";
}

/// In frames at 48000 Hz: three periods of 128 and the producer's buffer, whose 64 frames at 44100
/// Hz are 70 frames of the server.
constexpr int kMostLatency = 3 * 128 + 70;

/// Returns the median of the frames from a note's event to its first sample, over `notes` notes.
int MedianLatency(LivePlay& play, std::size_t notes) {
    std::vector<std::uint32_t> noteOns;
    play.Play(test::ShortNotes(int(notes), noteOns));
    play.Listen(4800);
    std::vector<int> latencies = play.Latencies(noteOns, 2000);
    std::sort(latencies.begin(), latencies.end());
    return latencies[notes / 2];
}

TEST(Live, ANoteIsHeardWithinThreePeriodsAndABuffer) {
    int median = 0;
    // On a busy machine the server loses periods, and late buffers raise the latency for a while;
    // later notes may be right again.
    EXPECT_TRUE(test::SucceedsInTheEnd([&median] {
        LivePlay play(128, 48000 * 20);
        for (int i = 0; i < 3; i++) {
            median = MedianLatency(play, 20);
            EXPECT_GT(median, 0);
            if (median <= kMostLatency)
                return true;
        }
        return false;
    })) << median;
}

constexpr std::uint32_t kNotes = 16;
/// The least number of notes that keep the latency of the previous one if events keep their time.
/// Notes that begin anywhere in a period of 256 frames do so by chance once in 85 notes.
constexpr int kInStep = 6;

/// The start and end of each of these notes of 10 ms in the recording, relative to their events; no
/// entry for a note that is not heard.
struct ShortNotesHeard {
    std::vector<int> begins;
    std::vector<int> ends;
};

ShortNotesHeard PlayShortNotes(LivePlay& play) {
    constexpr std::uint32_t kHeld = 480;
    std::vector<test::Player::Message> script;
    std::vector<std::uint32_t> noteOns;
    for (std::uint32_t i = 0, frame = 5000; i < kNotes; i++, frame += 4800 + i * 137 % 1000) {
        noteOns.push_back(frame);
        script.push_back({frame, {0x90, 69, 100}});
        script.push_back({frame + kHeld, {0x80, 69, 0}});
    }
    play.Play(script);
    play.Listen(9600);
    ShortNotesHeard heard;
    for (const std::uint32_t frame : noteOns) {
        const auto note = std::span(play.Samples()).subspan(play.At(frame), 4800);
        const auto sounds = [](float sample) { return std::abs(sample) > 1e-3F; };
        const auto begin = std::ranges::find_if(note, sounds);
        if (begin == note.end())
            continue;
        auto end = note.end();
        while (!sounds(*(end - 1)))
            --end;
        heard.begins.push_back(int(begin - note.begin()));
        heard.ends.push_back(int(end - note.begin()));
    }
    return heard;
}

/// Returns the number of values that equal the previous one within a frame.
int CountSteady(const std::vector<int>& values) {
    int count = 0;
    for (std::size_t i = 1; i < values.size(); i++)
        count += std::abs(values[i] - values[i - 1]) <= 1;
    return count;
}

/// Catches events that are moved to the start of a period. A period of the server holds several
/// notes, or the start and the end of one, and the server knows the latency of the output.
TEST(Live, EventsHaveTheirTimeWhateverThePeriod) {
    for (const int period : {256, 1024, 2048}) {
        // On a busy machine the server now and then loses periods, and late buffers raise the
        // latency for a while.
        const auto right = [period] {
            LivePlay play(period, 48000 * 20);
            const ShortNotesHeard heard = PlayShortNotes(play);
            const auto isTold = [told = play.ToldLatency()](int begin) {
                return std::abs(begin - told) <= 4;
            };
            return heard.begins.size() == kNotes && CountSteady(heard.begins) >= kInStep &&
                   CountSteady(heard.ends) >= kInStep && std::ranges::any_of(heard.begins, isTold);
        };
        EXPECT_TRUE(test::SucceedsInTheEnd(right)) << period;
    }
}

/// Catches a latency that is reported only under the usual client name: a session may choose the
/// name.
TEST(Live, LatencyIsToldWhateverTheProgramIsCalled) {
    const test::JackServer server(256);
    kits::SetClientName("Vexa (2) + [x]");
    {
        const auto client = *kits::JackClient::Open();
        jack_port_t* const out = jack_port_register(client->Handle(), "out",
                                                    JACK_DEFAULT_AUDIO_TYPE, JackPortIsOutput, 0);
        test::Ear ear(48000);
        ear.Connect(jack_port_name(out), ear.Name());
        client->SetLatency(500);
        EXPECT_NO_THROW(test::WaitFor("the latency", [&] { return ear.Latency() >= 500; }));
    }
    kits::SetClientName("Vexa");
}

/// Compares the recordings of other clients, from both ports, from the first sample that is not
/// silent to the last.
TEST(Live, WhatIsHeardIsRecordedSampleBySample) {
    const auto sounding = [](std::span<const float> all) {
        const auto sounds = [](float sample) { return sample != 0; };
        const auto begin = std::ranges::find_if(all, sounds);
        const auto end = std::find_if(all.rbegin(), all.rend(), sounds).base();
        return begin < end ? std::vector<float>(begin, end) : std::vector<float>();
    };
    const auto allTheSame = [&] {
        const test::TemporaryFolder folder;
        const auto path = folder.Path() / "heard.wav";
        LivePlay play(512, 48000 * 20, test::kSineSound,
                      {"--record", path.string(), "--spread", "60"});
        test::Ear right(48000 * 20);
        right.Connect("Vexa:Vexa audio out right", right.Name());
        std::vector<std::uint32_t> noteOns;
        play.Play(test::ShortNotes(20, noteOns));
        play.Listen(9600);
        EXPECT_EQ(play.Vexa().End(SIGTERM), 0);
        const test::DecodedSound file = test::ReadSound(path, 0);
        EXPECT_EQ(file.frameRate, 48000);
        EXPECT_EQ(file.channels, 2U);
        std::array<std::vector<float>, 2> kept;
        for (std::size_t i = 0; i < file.values.size(); i++)
            kept[i % 2].push_back(file.values[i]);
        const std::vector<float> left = sounding(play.Samples());
        EXPECT_FALSE(left.empty());
        EXPECT_NE(sounding(kept[0]), sounding(kept[1])) << "each ear hears its own";
        // Does not count if the server has lost periods.
        return play.Lost() == 0 && sounding(kept[0]) == left &&
               sounding(kept[1]) == sounding(right.Samples());
    };
    EXPECT_TRUE(test::SucceedsInTheEnd(allTheSame));
}

/// A limit of the file's size is to the writer what a full disk is.
TEST(Live, ARecordingThatEndsByItselfIsToldAtOnceAndKept) {
    const test::TemporaryFolder folder;
    const auto path = folder.Path() / "heard.wav";
    LivePlay play(512, 48000 * 20, test::kSineSound, {"--record", path.string()});
    const rlimit limit{1 << 20, 1 << 20};
    ASSERT_EQ(::prlimit(play.Vexa().Process(), RLIMIT_FSIZE, &limit, nullptr), 0);
    play.WaitForLog("vexa: --record: could not write " + path.string());
    play.Listen(48000);
    EXPECT_EQ(play.CountInLog("the recording ends there"), 1);
    EXPECT_EQ(play.Vexa().End(SIGTERM), 1);
    EXPECT_EQ(play.CountInLog("the recording ends there, and the last "), 1) << play.Log();
    EXPECT_GT(test::ReadSound(path, 0).values.size(), 200'000U);
}

/// The program may have to wait for such a server before it can end.
TEST(Live, AServerThatHangsHoldsBackNoRecording) {
    const test::TemporaryFolder folder;
    const auto path = folder.Path() / "heard.wav";
    LivePlay play(512, 48000 * 20, test::kSineSound, {"--record", path.string()});
    play.Listen(9600);
    const std::jthread hanging([&] { play.Server().Stall(4000); });
    play.Vexa().AskToEnd();
    ASSERT_TRUE(std::filesystem::exists(path));
    EXPECT_GT(test::ReadSound(path, 0).values.size(), 9600U);
}

/// Repeats the play until `sounds` accepts it, at most five times, as a busy machine makes the
/// server lose periods, which is not the program's fault. The program must end properly each time.
bool SoundsRight(const std::function<bool(LivePlay&)>& sounds,
                 const std::vector<std::string>& options = {}, int period = 128) {
    return test::SucceedsInTheEnd([&] {
        LivePlay play(period, 48000 * 20, test::kSineSound, options);
        const bool right = sounds(play);
        EXPECT_EQ(play.Vexa().End(SIGTERM), 0);
        if (!right)
            std::printf("It did not sound as it should:\n%s", play.Log().c_str());
        return right;
    });
}

std::vector<test::Player::Message> NoteOn(std::uint8_t number) {
    return {{1000, {0x90, number, 100}}};
}

TEST(Live, AFloodOfMidiLeavesNoNoteBehind) {
    std::mt19937 random(7);
    std::vector<test::Player::Message> script;
    for (std::uint32_t i = 0; i < 100000; i++) {
        const auto status = std::uint8_t(0x80 + random() % 0x80);
        const auto data = [&random] { return std::uint8_t(random() % 0x80); };
        // JACK takes whole messages only: one byte from F4 on, three bytes below F0.
        std::vector<std::uint8_t> bytes{status};
        if (status < 0xF0)
            bytes.insert(bytes.end(), {data(), data()});
        if (status < 0xF0 || status > 0xF3)
            script.push_back({i * 48 / 100, bytes});
    }
    script.push_back({48100, {0xB0, 123, 0}});
    script.push_back({72000, {0x90, 69, 100}});
    EXPECT_TRUE(SoundsRight([&script](LivePlay& play) {
        play.Play(script);
        // The flood may have raised the latency on a busy machine, which falls again gradually.
        play.Listen(38400);
        const auto loudest = [&play](std::uint32_t frame, std::size_t count) {
            float peak = 0;
            for (const float sample : std::span(play.Samples()).subspan(play.At(frame), count))
                peak = std::max(peak, std::abs(sample));
            return peak;
        };
        return loudest(0, 48000) > 0.05F && loudest(60000, 11000) == 0.0F &&
               loudest(73000, 33600) > 0.1F;
    }));
}

/// When a port's buffer is full, jackd1's library delivers events that nobody sent.
TEST(Live, AFullMidiBufferIsSurvived) {
    std::mt19937 random(3);
    std::vector<test::Player::Message> script;
    for (std::uint32_t period = 0; period < 300; period++) {
        const std::size_t most = 3 + period % 30;
        for (int k = 0; k < 400; k++) {
            std::vector<std::uint8_t> bytes(2 + random() % most, 0x7F);
            bytes.front() = 0xF0;
            bytes.back() = 0xF7;
            script.push_back({period * 128, bytes});
        }
    }
    EXPECT_TRUE(SoundsRight([&script](LivePlay& play) {
        play.Play(script);
        play.Play({{0, {0xB0, 123, 0}}, {4800, {0x90, 69, 100}}});
        play.Listen(24000);
        return play.Levels().first > 0.2;
    }));
}

TEST(Live, ASecondInstanceHasPortsOfItsOwn) {
    LivePlay play(128, 48000);
    test::Companion second({VEXA_PROGRAM_FOLDER "/vexa", "--no-window"});
    jack_client_t* probe = jack_client_open("probe", JackNoStartServer, nullptr);
    test::WaitFor("the second instance", [probe] {
        return jack_port_by_name(probe, "Vexa-01:Vexa audio out") &&
               jack_port_by_name(probe, "Vexa-01:Vexa midi in");
    });
    jack_client_close(probe);
    EXPECT_EQ(second.End(SIGTERM), 0);
    EXPECT_EQ(play.Vexa().End(SIGTERM), 0);
}

/// Catches a vanished source that leaves its notes on or ends those of others. One source was
/// chosen by the program, the other was connected from outside.
TEST(Live, ASourceThatVanishesEndsItsOwnNotesOnly) {
    for (const bool chosenVanishes : {true, false}) {
        const auto sounds = [chosenVanishes](LivePlay& play) {
            auto chosen = std::make_unique<test::Player>();
            EXPECT_EQ(chosen->Name(), "player-01:out");
            chosen->Connect(chosen->Name(), "Vexa:Vexa midi in (chosen)");
            play.WaitForLog("the MIDI source \"player-01:out\" is there");
            play.Play(NoteOn(chosenVanishes ? 69 : 81));
            chosen->Play(NoteOn(chosenVanishes ? 81 : 69));
            play.Listen(24000);
            const auto both = play.Levels();
            if (chosenVanishes) {
                // It is back before anybody has looked, and is connected all the same.
                chosen.reset();
                chosen = std::make_unique<test::Player>();
            } else {
                play.TakePlayerAway();
            }
            play.Listen(24000);
            const auto one = play.Levels();
            if (chosenVanishes) {
                play.Listen(96000);
                chosen->Play(NoteOn(81));
                play.Listen(24000);
            }
            const bool again = !chosenVanishes || play.Levels().second > 0.2;
            return both.first > 0.2 && both.second > 0.2 && one.first > 0.2 && one.second < 0.01 &&
                   again;
        };
        EXPECT_TRUE(SoundsRight(sounds, {"--midi", "player-01:out"}));
    }
}

/// When the program is notified, the number of connections is the same as before.
TEST(Live, ASourceInWhosePlaceAnotherComesEndsItsNotes) {
    EXPECT_TRUE(SoundsRight([](LivePlay& play) {
        const std::string input = "Vexa:Vexa midi in";
        test::Player next;
        bool right = true;
        for (int i = 0; i < 4; i++) {
            play.Play(NoteOn(69));
            play.Listen(24000);
            right = right && play.Levels().first > 0.2;
            next.Disconnect("player:out", input);
            next.Connect(next.Name(), input);
            play.Listen(24000);
            right = right && play.Levels().first < 0.01;
            next.Disconnect(next.Name(), input);
            next.Connect("player:out", input);
        }
        return right;
    }));
}

/// Nothing is rendered while the server stands still. Catches a latency that stays raised
/// afterwards.
TEST(Live, AServerThatStallsForSecondsIsSurvived) {
    EXPECT_TRUE(SoundsRight([](LivePlay& play) {
        play.Play({{1000, {0x90, 69, 100}}, {5800, {0x80, 69, 0}}});
        play.Server().Stall(5000);
        play.Listen(96000);
        play.Play(NoteOn(69));
        play.Listen(28800);
        return play.Levels().first > 0.2;
    }));
}

/// The server may change the buffer size at any time.
TEST(Live, TheServersPeriodMayChange) {
    EXPECT_TRUE(SoundsRight([](LivePlay& play) {
        play.Play(NoteOn(69));
        bool right = true;
        for (const unsigned period : {512U, 64U, 1024U}) {
            play.SetPeriod(period);
            play.Listen(24000);
            right = right && play.Levels().first > 0.2;
        }
        return right;
    }));
}

/// After long periods, and after the program or the server was stopped.
TEST(Live, TheLatencyThatAFaultHasAddedIsGivenBack) {
    EXPECT_TRUE(SoundsRight([](LivePlay& play) {
        play.SetPeriod(2048);
        play.Listen(48000);
        play.SetPeriod(128);
        play.Listen(9600);
        // 0 if an earlier note is still audible.
        const int afterLongPeriods = MedianLatency(play, 9);
        play.Vexa().Stall(400);
        // The latency falls gradually, within five seconds.
        int afterAStop = 0;
        for (int i = 0; i < 8 && (afterAStop <= 0 || afterAStop > 2 * kMostLatency); i++)
            afterAStop = MedianLatency(play, 9);
        // A busy machine keeps the latency that it needs; long periods would leave 1920 frames.
        return afterLongPeriods > 0 && afterLongPeriods <= 2 * kMostLatency && afterAStop > 0 &&
               afterAStop <= 2 * kMostLatency;
    }));
}

/// In freewheel mode a note sounds as in real time, and playing continues afterwards.
TEST(Live, AServerThatFreewheelsGetsAllOfTheSound) {
    std::optional<LivePlay> stage;
    // jackd2's frame counter may jump if a busy machine makes it miss a period.
    ASSERT_TRUE(test::SucceedsInTheEnd([&stage] {
        stage.emplace(128, 48000 * 60);
        stage->SetFreewheel(true);
        stage->Play({{1000, {0x90, 69, 100}}, {145000, {0x80, 69, 0}}, {240000, {0x90, 69, 100}}});
        stage->SetFreewheel(false);
        stage->Listen(1);
        return stage->At(240000) < stage->Count();
    }));
    LivePlay& play = *stage;
    const std::span<const float> all(play.Samples());
    // Compares from the start of the note to its end.
    const std::size_t first = play.At(1000);
    const std::size_t last = play.At(145000);
    const auto begin = std::find_if(all.begin() + std::ptrdiff_t(first), all.end(),
                                    [](float sample) { return std::abs(sample) > 1e-4F; });
    const auto at = std::size_t(begin - all.begin());
    EXPECT_LE(at - first, 4800) << "the latency of a machine that was busy before";
    float step = 0;
    int silent = 0;
    for (std::size_t i = at; i < last; i++) {
        step = std::max(step, std::abs(all[i + 1] - all[i]));
        silent += all[i] == 0.0F;
    }
    EXPECT_NEAR(step, 0.25 * 2 * M_PI * 440 / 48000, 0.002);
    EXPECT_LT(silent, 10) << "samples";
    EXPECT_NEAR(test::Amplitude(all.subspan(at, 96000), 440, 48000), 0.25, 0.02);
    // Back in real time, a busy machine may lose buffers, or the voice.
    bool sounds = false;
    for (int attempt = 0; attempt < 10 && !sounds; attempt++) {
        play.Play(NoteOn(69));
        play.Listen(24000);
        sounds = play.Levels().first > 0.1;
    }
    EXPECT_TRUE(sounds);
    EXPECT_EQ(play.Vexa().End(SIGTERM), 0);
    const std::string log = play.Log();
    int late = -1;
    int missing = -1;
    std::sscanf(log.c_str() + log.find("; ") + 2, "%d late and %d missing", &late, &missing);
    EXPECT_LT(late + missing, 100) << log;
    EXPECT_GE(missing, 0) << log;
}

/// Notes held when the server dies have ended, notes have their pitch at the next server's sample
/// rate, and the requested source is connected each time.
TEST(Live, AServerThatComesLateOrComesBackIsPlayedThrough) {
    const auto sounds = [](LivePlay& play) {
        int servers = 0;
        bool right = true;
        for (const auto& [period, rate] : {std::pair(512, 48000), std::pair(1024, 44100)}) {
            play.StartServer(period, rate);
            servers++;
            test::Player chosen;
            chosen.WaitUntilConnected();
            play.WaitForLog("the audio device is there; playing through JACK", servers);
            play.Listen(24000);
            const auto before = play.Levels();
            play.Play(NoteOn(81));
            chosen.Play(NoteOn(69));
            play.Listen(28800);
            const auto held = play.Levels();
            right = right && before.first < 0.001 && before.second < 0.001 && held.first > 0.2 &&
                    held.second > 0.2;
            play.KillServer();
            play.WaitForLog("the audio device has disappeared", servers);
        }
        for (const char* once : {"disappeared", "the audio device is there"})
            EXPECT_EQ(play.CountInLog(once), servers) << play.Log();
        return right;
    };
    EXPECT_TRUE(SoundsRight(sounds, {"--midi", "player-01:out"}, 0));
}

/// Returns the frames from an event to the first sample that does not continue a sine: each sample
/// of a sine is 2 cos(w) times the previous one, minus the one before that.
int FramesToChange(const LivePlay& play, std::uint32_t frame, double hertz) {
    const double factor = 2 * std::cos(2 * M_PI * hertz / 48000);
    const auto begin = play.Samples().begin() + std::ptrdiff_t(play.At(frame));
    auto at = begin;
    while (at + 1 < play.Samples().end() && std::abs(factor * at[0] - at[-1] - at[1]) < 5e-5)
        ++at;
    return int(at - begin);
}

/// A note 50 ms after a program change has the sound of that number, or the previous sound if there
/// is none. The note before it continues, and the change is first audible in it.
TEST(Live, ProgramChangesChooseSounds) {
    const test::TemporaryFolder data;
    const std::string sine = test::kSineSound;
    const std::string octave = "<fx>2</fx></vexasound>";
    // File names that sort before and after those of the shipped sounds.
    data.Write("vexa/sounds/0.xml", sine.substr(0, sine.rfind('<')) + octave);
    data.Write("vexa/sounds/1.xml", "no sound");
    const test::EnvironmentVariable home("XDG_DATA_HOME", data.Path().c_str());
    namespace fs = std::filesystem;
    const auto count = 2 + std::distance(fs::directory_iterator(VEXA_PROGRAM_FOLDER "/sounds"), {});
    const auto sounds = [count](LivePlay& play) {
        play.Play({{1000, {0x90, 45, 100}},
                   {12000, {0xC0, 0}},
                   {14400, {0x90, 69, 100}},
                   {24000, {0xB0, 32, 1}}, // a bank that does not exist
                   {24000, {0xC0, 0}},
                   {26400, {0x90, 57, 100}},
                   {40000, {0xB0, 32, 0}},
                   {40000, {0xC0, 1}},
                   {43000, {0x90, 81, 100}}});
        play.Listen(24000);
        play.WaitForLog("program 0: 0");
        play.WaitForLog("there is no program 128: the sounds are programs 0 to " +
                        std::to_string(count - 1));
        play.WaitForLog("sounds/1.xml");
        const auto level = [&play](std::uint32_t frame, double hertz) {
            const auto heard = std::span(play.Samples()).subspan(play.At(frame) + 480, 4800);
            return test::Amplitude(heard, hertz, 48000);
        };
        const int frames = FramesToChange(play, 6000, 110) - 6000;
        std::printf("A program change was heard after %d frames.\n", frames);
        return frames > 0 && frames <= 2400 && level(14400, 880) > 0.2 && level(14400, 220) > 0.2 &&
               level(26400, 440) > 0.2 && level(26400, 220) > 0.2 && level(43000, 1760) > 0.2;
    };
    EXPECT_TRUE(SoundsRight(sounds, {"--user-folder", "--programs"}, 512));
}

/// The client is closed, which cancels the threads of jackd2's library, while one of them is in a
/// function that it has called, where a cancelled thread would end this process.
TEST(Live, AServersEndInterruptsNothingThatTheServerHasCalled) {
    struct Slow : kits::JackProcessor {
        void Process(uint32) noexcept override {
            if (!wanted.exchange(false))
                return;
            begun = true;
            std::this_thread::sleep_for(std::chrono::milliseconds(500));
            ended = true;
        }
        std::atomic<bool> wanted{false};
        std::atomic<bool> begun{false};
        std::atomic<bool> ended{false};
    };
    for (const bool inPeriod : {false, true}) {
        Slow slow;
        test::JackServer server(1024);
        auto client = *kits::JackClient::Open();
        ASSERT_TRUE(client->Add(slow));
        if (inPeriod) {
            slow.wanted = true;
            test::WaitFor("a period", [&] { return slow.begun.load(); });
        } else {
            client->Listen(&slow, [&, told = client.get()](const kits::PortChange&) {
                slow.wanted = told->IsDead();
                slow.Process(0);
            });
        }
        server.Kill();
        test::WaitFor("the server's end", [&] { return client->IsDead() && slow.begun; });
        client.reset();
        EXPECT_TRUE(slow.ended);
    }
}

/// Runs without other clients in this process: their sockets, numbered next to the program's, may
/// hide errors of a library when the server ends or drops its client, as jackd1 drops one that
/// stands still.
TEST(Live, WithNoOtherClientAServersEndIsSurvivedToo) {
    EXPECT_TRUE(SoundsRight([](LivePlay& play) {
        play.Detach();
        int losses = 0;
        for (const int signal : {SIGTERM, SIGKILL}) {
            play.Server().Kill(signal);
            play.WaitForLog("the audio device has disappeared", ++losses);
            play.Server().Launch(128);
            play.WaitForLog("the audio device is there; playing through JACK", losses);
        }
        play.Vexa().Stall(2000);
        play.Attach();
        play.Play(NoteOn(69));
        play.Listen(28800);
        return play.Levels().first > 0.2;
    }));
}

} // namespace
