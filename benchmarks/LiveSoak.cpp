// Does live playing lose buffers, grow or drift over a long time?
//
// LiveSoak [SECONDS [PERIOD]] plays 20 voices with moving controllers on a JACK server of its own,
// beside a client that does nothing but look at the clock, and prints what each has noticed:
// periods that the idle client was called late for are the machine's own doing.
#include "live/LivePlay.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

/// Counts the periods in which the server called it more than a period late.
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

/// What a process holds and has used.
struct Holdings {
    /// Resident, in kilobytes.
    long memory = 0;
    long threads = 0;
    long descriptors = 0;
    /// Seconds of a processor, of all threads.
    double processor = 0;
};

long Entries(const std::string& folder) {
    const std::filesystem::directory_iterator all(folder);
    return std::distance(begin(all), end(all));
}

Holdings Look(pid_t process) {
    const std::string folder = "/proc/" + std::to_string(process);
    Holdings holdings;
    std::ifstream status(folder + "/status");
    for (std::string word; status >> word;) {
        if (word == "VmRSS:")
            status >> holdings.memory;
    }
    holdings.threads = Entries(folder + "/task");
    holdings.descriptors = Entries(folder + "/fd");
    // The numbers behind the name, which is in parentheses; user and system time are the 12th and
    // 13th of them.
    const std::string stat = test::Contents(folder + "/stat");
    std::istringstream fields(stat.substr(stat.rfind(')') + 1));
    std::string skipped;
    for (int i = 0; i < 11; i++)
        fields >> skipped;
    long user = 0;
    long system = 0;
    fields >> user >> system;
    holdings.processor = double(user + system) / double(::sysconf(_SC_CLK_TCK));
    return holdings;
}

void Print(const char* when, const Holdings& holdings) {
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
    std::vector<test::Player::Message> script;
    for (std::uint8_t note = 40; note < 60; note++)
        script.push_back({1000, {0x90, note, 90}});
    for (std::uint32_t tick = 1; tick < 20 * seconds; tick++) {
        const std::uint32_t frame = 1000 + 2400 * tick;
        script.push_back({frame, {0xB0, 1, std::uint8_t(tick % 128)}});
        if (tick % 8 == 0) {
            const auto note = std::uint8_t(40 + tick / 8 % 20);
            script.push_back({frame, {0x80, note, 0}});
            script.push_back({frame + 600, {0x90, note, 90}});
        }
    }
    play.Play({script.begin(), script.begin() + 20});
    play.Play({{0, {0xB0, 1, 0}}, {96000, {0xB0, 1, 1}}});
    const Holdings before = Look(play.Vexa().Process());
    play.Play(std::move(script));
    const Holdings after = Look(play.Vexa().Process());
    play.Vexa().End(SIGTERM);
    std::printf("%u s at %d frames: %d late periods of the idle client; %.2f %% of a core\n",
                seconds, period, idle.Late(), 100 * (after.processor - before.processor) / seconds);
    Print("before", before);
    Print("after", after);
    const std::string log = play.Log();
    std::printf("%s", log.substr(log.rfind("played")).c_str());
}
