// SPDX-License-Identifier: GPL-3.0-or-later
// Runs vexa --no-window on a JACK stage and records what it plays.
#pragma once

#include "live/JackStage.h"
#include "support/MidiFiles.h"
#include "support/Spectrum.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <span>
#include <utility>

namespace test {

class LivePlay {
  public:
    /// `frames` is the length of the recording per server; without a period no server runs yet.
    LivePlay(int period, std::size_t frames, const std::string& sound = kSineSound,
             const std::vector<std::string>& options = {})
        : frames(frames),
          server(period),
          log((folder.Path() / "log").string()),
          vexa(Arguments(folder.Write("sound.xml", sound), options), log) {
        if (period > 0)
            Attach();
        WaitForLog(period > 0 ? "playing through" : "there is no sound");
    }
    /// jackd2 may take eight seconds to end after a client has been killed.
    ~LivePlay() { vexa.AskToEnd(); }

    /// Starts a server, the first or a new one, and waits until Vexa has connected to it.
    void StartServer(int period, int withRate) {
        rate = withRate;
        server.Start(period, rate);
        Attach();
    }
    void KillServer() {
        server.Kill();
        Detach();
    }
    /// Closes the test's own clients, so that Vexa is the server's only client, or becomes the
    /// first one.
    void Detach() {
        ear.reset();
        player.reset();
    }
    void Attach() {
        ear = std::make_unique<Ear>(frames);
        player = std::make_unique<Player>();
        ear->Connect("Vexa:Vexa audio out", ear->Name());
        player->Connect(player->Name(), "Vexa:Vexa midi in");
    }

    void Play(std::vector<Player::Message> script) { player->Play(std::move(script)); }
    /// Waits until `more` further frames have been recorded.
    void Listen(std::size_t more) {
        const std::size_t end = Count() + more;
        ear->WaitWhileThereArePeriods([this, end] { return Count() >= end; });
    }
    /// Returns the index in the recording of a frame after the script began.
    std::size_t At(std::uint32_t frame) const {
        return std::size_t(player->StartFrame() + frame - ear->FirstFrame());
    }
    /// Returns the number of frames recorded so far.
    std::size_t Count() const { return ear->Count(); }
    void TakePlayerAway() { player.reset(); }
    void SetPeriod(unsigned period) { ear->SetPeriod(period); }
    void SetFreewheel(bool on) { ear->SetFreewheel(on); }
    int ToldLatency() const { return ear->Latency(); }
    const std::vector<float>& Samples() const { return ear->Samples(); }
    /// Returns the number of periods that the server has lost.
    int Lost() const { return ear->Lost(); }
    std::string Log() const { return Contents(log); }
    /// Waits until the program has printed the text the given number of times.
    void WaitForLog(const std::string& text, int times = 1) const {
        WaitFor(text.c_str(), [&] { return CountInLog(text) >= times; });
    }
    int CountInLog(const std::string& text) const {
        const std::string all = Log();
        int count = 0;
        for (std::size_t at = 0; (at = all.find(text, at)) != std::string::npos; at++)
            count++;
        return count;
    }
    Companion& Vexa() { return vexa; }
    JackServer& Server() { return server; }

    /// Returns the amplitudes of 440 Hz and 880 Hz in the tenth of the last 0.4 seconds in which
    /// 440 Hz is the loudest, so that buffers lost by the server do not count.
    std::pair<double, double> Levels() const {
        std::pair<double, double> best;
        for (std::size_t from = Count() - 19200; from + 4800 <= Count(); from += 2400) {
            const auto part = std::span(Samples()).subspan(from, 4800);
            best = std::max(best, {Amplitude(part, 440, rate), Amplitude(part, 880, rate)});
        }
        return best;
    }

    /// Returns the frames from each note-on of a script to the first sample that is not silent.
    std::vector<int> Latencies(const std::vector<std::uint32_t>& noteOns, int limit) const {
        std::vector<int> latencies;
        for (const std::uint32_t frame : noteOns) {
            int latency = 0;
            while (latency < limit && std::abs(Samples()[At(frame) + std::size_t(latency)]) < 1e-4F)
                latency++;
            latencies.push_back(latency);
        }
        return latencies;
    }

  private:
    static std::vector<std::string> Arguments(const std::filesystem::path& sound,
                                              const std::vector<std::string>& options) {
        std::vector<std::string> arguments{VEXA_PROGRAM_FOLDER "/vexa",
                                           "--no-window",
                                           "--audio",
                                           "jack",
                                           "--sound",
                                           sound.string()};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return arguments;
    }

    std::size_t frames;
    int rate = 48000;
    TemporaryFolder folder;
    JackServer server;
    std::string log;
    Companion vexa;
    std::unique_ptr<Ear> ear;
    std::unique_ptr<Player> player;
};

/// Returns `count` short notes, each silenced before the next, at frames anywhere in a period.
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
