// SPDX-License-Identifier: GPL-3.0-or-later
// Does live playing lose buffers, use more and more resources, or drift over a long time?
//
// LiveSoak [SECONDS [PERIOD]] plays 20 voices with moving controllers on a JACK server of its own,
// beside an idle client that only reads the clock, and prints the faults that each has seen.
// Periods for which the idle client was called late are the machine's fault, not the program's.
#include "LiveChord.h"

#include <cstdio>
#include <cstdlib>

namespace {

/// Counts the periods in which the server called the client more than a period late.
class Idle : public test::JackPort {
  public:
    Idle() : JackPort("idle", "in", JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput) { Activate(); }
    ~Idle() override { jack_deactivate(handle); }
    int Late() const { return late; }

  private:
    void Process(jack_nframes_t frames) override {
        const jack_time_t now = jack_get_time();
        const double period = 1e6 * frames / jack_get_sample_rate(handle);
        if (before > 0 && double(now - before) > 2 * period)
            late++;
        before = now;
    }
    jack_time_t before = 0;
    std::atomic<int> late{0};
};

void Print(const char* when, const bench::Holdings& holdings) {
    std::printf("%s: %ld kB, %ld threads, %ld descriptors\n", when, holdings.memory,
                holdings.threads, holdings.descriptors);
}

} // namespace

int main(int count, char** arguments) {
    const std::uint32_t seconds = count > 1 ? std::uint32_t(std::atoi(arguments[1])) : 600;
    const int period = count > 2 ? std::atoi(arguments[2]) : 64;
    const std::string sound = test::Contents(VEXA_PROGRAM_FOLDER "/sounds/pad.xml");
    test::LivePlay play(period, 48000, sound);
    Idle idle;
    std::vector<test::Player::Message> script = bench::Chord(seconds);
    play.Play({script.begin(), script.begin() + 20});
    play.Play({{0, {0xB0, 1, 0}}, {96000, {0xB0, 1, 1}}});
    const bench::Holdings before = bench::Look(play.Vexa().Process());
    play.Play(std::move(script));
    const bench::Holdings after = bench::Look(play.Vexa().Process());
    play.Vexa().End(SIGTERM);
    std::printf("%u s at %d frames: %d late periods of the idle client; %.2f %% of a core\n",
                seconds, period, idle.Late(), 100 * (after.processor - before.processor) / seconds);
    Print("before", before);
    Print("after", after);
    const std::string log = play.Log();
    const std::size_t closing = log.rfind("played");
    // A program that has ended without its closing line may have said why.
    std::printf("%s", log.substr(closing == log.npos ? 0 : closing).c_str());
    return closing == log.npos ? 1 : 0;
}
