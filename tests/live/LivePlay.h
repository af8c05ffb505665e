// vexa --no-window on a stage: what it plays when a script is played to it.
#pragma once

#include "live/JackStage.h"
#include "support/Spectrum.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <span>
#include <utility>

namespace test {

/// The plane f = x with circles of radius 1 that are there at once and last until 20 ms after
/// note-off: a note is a sine from its second sample on.
constexpr const char* kSineSound =
    "<vexasound><vexafunction><expression>x</expression></vexafunction>"
    "<dcxdt><env>0</env></dcxdt><dcydt><env>0</env></dcydt>"
    "<ax><env>1</env><envdata><envpoint t=\"0\" val=\"1\" fku=\"false\"/>"
    "<envpoint t=\"0.02\" val=\"0\" fku=\"true\"/></envdata></ax>"
    "<ay><env>0</env></ay></vexasound>";

class LivePlay {
  public:
    /// `frames` is how much can be recorded.
    LivePlay(int period, std::size_t frames, const std::string& sound = kSineSound,
             const std::vector<std::string>& options = {})
        : server(period),
          log((folder.Path() / "log").string()),
          vexa(Arguments(folder.Write("sound.xml", sound), options), log),
          ear(frames),
          player(std::make_unique<Player>()) {
        ear.Connect("Vexa:Vexa audio out", ear.Name());
        player->Connect(player->Name(), "Vexa:Vexa midi in");
        WaitFor("sound", [this] { return Log().find("playing through") != std::string::npos; });
    }

    void Play(std::vector<Player::Message> script) { player->Play(std::move(script)); }
    /// Waits until so many more frames have been recorded.
    void Listen(std::size_t frames) {
        const std::size_t end = ear.Count() + frames;
        WaitFor("the recording", [this, end] { return ear.Count() >= end; });
    }
    /// Sample of the recording at a frame after the script began.
    std::size_t At(std::uint32_t frame) const {
        return std::size_t(player->StartFrame() + frame - ear.FirstFrame());
    }
    /// Frames recorded so far.
    std::size_t Count() const { return ear.Count(); }
    void TakePlayerAway() { player.reset(); }
    void SetPeriod(unsigned frames) { ear.SetPeriod(frames); }
    const std::vector<float>& Samples() const { return ear.Samples(); }
    /// Periods that the server has lost.
    int Lost() const { return ear.Lost(); }
    std::string Log() const { return Contents(log); }
    Companion& Vexa() { return vexa; }
    JackServer& Server() { return server; }

    /// The amplitudes of 440 Hz and 880 Hz in that tenth of the last 0.4 seconds in which 440 Hz is
    /// the loudest: what the server loses is not judged.
    std::pair<double, double> Levels() const {
        std::pair<double, double> best;
        for (std::size_t from = Count() - 19200; from + 4800 <= Count(); from += 2400) {
            const auto part = std::span(Samples()).subspan(from, 4800);
            best = std::max(best, {Amplitude(part, 440, 48000), Amplitude(part, 880, 48000)});
        }
        return best;
    }

    /// Frames from each note-on of a script to the first sample that is not silent.
    std::vector<int> Latencies(const std::vector<std::uint32_t>& noteOns, int limit) const {
        std::vector<int> latencies;
        for (const std::uint32_t frame : noteOns) {
            int latency = 0;
            while (latency < limit &&
                   std::abs(ear.Samples()[At(frame) + std::size_t(latency)]) < 1e-4F)
                latency++;
            latencies.push_back(latency);
        }
        return latencies;
    }

  private:
    static std::vector<std::string> Arguments(const std::filesystem::path& sound,
                                              const std::vector<std::string>& options) {
        std::vector<std::string> arguments{VEXA_PROGRAM_FOLDER "/vexa", "--no-window", "--sound",
                                           sound.string()};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return arguments;
    }

    TemporaryFolder folder;
    JackServer server;
    std::string log;
    Companion vexa;
    Ear ear;
    std::unique_ptr<Player> player;
};

/// `count` short notes, each silenced before the next, at frames that fall anywhere in a period.
inline std::vector<Player::Message> ShortNotes(int count, std::vector<std::uint32_t>& noteOns) {
    std::vector<Player::Message> script;
    std::uint32_t frame = 1000;
    for (int i = 0; i < count; i++) {
        noteOns.push_back(frame);
        script.push_back({frame, {0x90, 69, 100}});
        script.push_back({frame + 1200, {0xB0, 123, 0}});
        frame += 3000 + std::uint32_t(i * 37 % 128);
    }
    return script;
}

} // namespace test
