// SPDX-License-Identifier: GPL-3.0-or-later
// A JACK server that belongs to the test, with a player and a recorder that are real clients of it.
#pragma once

#include "support/Attempts.h"
#include "support/Command.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <jack/jack.h>
#include <jack/midiport.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace test {

/// A program that runs beside the test and is ended with it.
class Companion {
  public:
    explicit Companion(std::vector<std::string> arguments, const std::string& output = "/dev/null")
        : child(::fork()) {
        if (child != 0)
            return;
        // Ends with the test even if the test is killed: the system has room for only eight JACK
        // servers.
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (!std::freopen(output.c_str(), "w", stdout) || !::dup2(1, 2))
            ::_exit(126);
        Execute(std::move(arguments));
    }
    ~Companion() { End(SIGKILL); }
    Companion(const Companion&) = delete;
    Companion& operator=(const Companion&) = delete;

    pid_t Process() const { return child; }
    /// Sends the signal and waits. Returns the exit code, or 128 plus the signal that ended the
    /// program.
    int End(int signal) {
        if (child <= 0)
            return 0;
        ::kill(child, signal);
        return Wait();
    }
    /// Sends SIGTERM and waits up to two seconds for the program to end.
    void AskToEnd() const {
        if (child > 0 && ::kill(child, SIGTERM) == 0)
            EndsWithin(child, std::chrono::seconds(2));
    }
    /// Stops the program for the given time.
    void Stall(int milliseconds) const {
        ::kill(child, SIGSTOP);
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
        ::kill(child, SIGCONT);
    }
    /// Returns true if the program has not ended by itself.
    bool Runs() const {
        siginfo_t info{};
        return ::waitid(P_PID, id_t(child), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
               info.si_pid == 0;
    }
    int Wait() {
        int status = 0;
        ::waitpid(child, &status, 0);
        child = -1;
        return ExitCode(status);
    }

  private:
    pid_t child;
};

/// Polls a condition until it holds; throws after thirty seconds.
inline void WaitFor(const char* what, const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            throw std::runtime_error(std::string("timed out waiting for ") + what);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

/// On a busy machine, jackd2 sometimes loses the signal that wakes a client which has just been
/// opened or connected. It then waits for that client for ever and plays nothing. Only a new server
/// helps.
class ServerStandsStill : public AttemptFails {
  public:
    ServerStandsStill() : AttemptFails("the JACK server has no more periods") {}
};

/// jackd with the dummy device. JACK_DEFAULT_SERVER names it for every client that is started
/// later.
class JackServer {
  public:
    /// Without a period the server is not started yet.
    explicit JackServer(int period = 0) : name("vexa-test-" + std::to_string(::getpid())) {
        ::setenv("JACK_DEFAULT_SERVER", name.c_str(), 1);
        ::setenv("JACK_NO_START_SERVER", "1", 1);
        jack_set_error_function([](const char*) {});
        jack_set_info_function([](const char*) {});
        // With jackd1's library the end of the server would otherwise end this process, which has
        // clients of it.
        std::signal(SIGPIPE, SIG_IGN);
        if (period > 0)
            Start(period);
    }
    ~JackServer() {
        if (server)
            server->End(SIGTERM);
        if (!killed)
            return;
        // The shared memory of killed servers would in the end keep others from starting; a new
        // server of the same name removes it.
        std::vector<std::string> brief = Command(1024, 48000);
        brief.insert(brief.begin(), {"timeout", "-s", "TERM", "1"});
        Companion(std::move(brief)).Wait();
    }

    /// Returns before the server is ready.
    void Launch(int period, int rate = 48000) {
        killed = false;
        server = std::make_unique<Companion>(Command(period, rate));
    }
    /// No client of an earlier server may be open in this process.
    void Start(int period, int rate = 48000) {
        Launch(period, rate);
        WaitFor("jackd", [&] {
            if (!server->Runs()) {
                // The server registry is full, of killed servers or of running ones.
                RunCommand({VEXA_SOURCE_FOLDER "/scripts/forget-jack-servers"});
                Launch(period, rate);
            }
            jack_client_t* client = jack_client_open("probe", JackNoStartServer, nullptr);
            if (client)
                jack_client_close(client);
            return client != nullptr;
        });
    }
    /// Ends the server, by default abruptly.
    void Kill(int signal = SIGKILL) {
        killed = signal == SIGKILL;
        server->End(signal);
        server.reset();
    }

    void Stall(int milliseconds) { server->Stall(milliseconds); }

  private:
    std::vector<std::string> Command(int period, int rate) const {
        return {"jackd", "-r",
                "-n",    name,
                "-d",    "dummy",
                "-r",    std::to_string(rate),
                "-p",    std::to_string(period)};
    }

    std::string name;
    std::unique_ptr<Companion> server;
    bool killed = false;
};

/// One JACK client with one port.
class JackPort {
  public:
    JackPort(const char* client, const char* port, const char* type, unsigned long direction)
        : handle(jack_client_open(client, JackNoStartServer, nullptr)) {
        if (!handle)
            throw std::runtime_error("no JACK client");
        own = jack_port_register(handle, port, type, direction, 0);
    }
    virtual ~JackPort() { Close(); }
    JackPort(const JackPort&) = delete;
    JackPort& operator=(const JackPort&) = delete;

    std::string Name() const { return jack_port_name(own); }
    /// Waits until any client, possibly this process, has connected the port.
    void WaitUntilConnected() const {
        WaitFor("a connection", [this] { return jack_port_connected(own) > 0; });
    }
    /// Waits for a condition that the periods bring about; throws if no period comes for five
    /// seconds.
    void WaitWhileThereArePeriods(const std::function<bool()>& condition) const {
        using Clock = std::chrono::steady_clock;
        unsigned last = periods;
        Clock::time_point lastAt = Clock::now();
        while (!condition()) {
            if (const unsigned done = periods; done != last) {
                last = done;
                lastAt = Clock::now();
            }
            if (Clock::now() - lastAt > std::chrono::seconds(5))
                throw ServerStandsStill();
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }
    void SetPeriod(unsigned frames) { jack_set_buffer_size(handle, frames); }
    /// In freewheel mode the server runs its periods as fast as all clients finish them.
    void SetFreewheel(bool on) { jack_set_freewheel(handle, on ? 1 : 0); }
    void Connect(const std::string& from, const std::string& to) {
        WaitFor(to.c_str(), [&] {
            const int status = jack_connect(handle, from.c_str(), to.c_str());
            return status == 0 || status == EEXIST;
        });
    }

    void Disconnect(const std::string& from, const std::string& to) {
        jack_disconnect(handle, from.c_str(), to.c_str());
    }

  protected:
    /// Stops calls of Process; destructors of classes that override it call this. jackd1's library
    /// may still call a client that is only deactivated when its server is dead.
    void Close() {
        if (handle)
            jack_client_close(handle);
        // Reset only now: Process uses the handle until its last call.
        handle = nullptr;
    }
    void Activate() {
        jack_set_process_callback(
            handle,
            [](jack_nframes_t frames, void* self) {
                auto* port = static_cast<JackPort*>(self);
                port->Process(frames);
                port->periods++;
                return 0;
            },
            this);
        jack_activate(handle);
    }
    virtual void Process(jack_nframes_t frames) = 0;
    /// Returns the frame at which the present period begins, by the server's clock, which also
    /// counts lost periods. To be called once a period.
    jack_nframes_t Now(jack_nframes_t frames) {
        const jack_nframes_t now = jack_last_frame_time(handle);
        // jackd1's clock stands still in freewheel mode.
        if (now == before)
            stoodStill += frames;
        before = now;
        return now + stoodStill;
    }

    jack_client_t* handle;
    jack_port_t* own;

  private:
    std::atomic<unsigned> periods{0};
    jack_nframes_t before = 0;
    jack_nframes_t stoodStill = 0;
};

/// Records the input, each sample at its frame after the first.
class Ear : public JackPort {
  public:
    explicit Ear(std::size_t mostFrames)
        : JackPort("ear", "in", JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput), samples(mostFrames) {
        jack_set_xrun_callback(
            handle,
            [](void* self) {
                static_cast<Ear*>(self)->lost++;
                return 0;
            },
            this);
        Activate();
    }
    ~Ear() override { Close(); }
    std::size_t Count() const { return count; }
    const std::vector<float>& Samples() const { return samples; }
    std::uint32_t FirstFrame() const { return first; }
    /// Returns the latency of the input in frames, as the server reports it.
    int Latency() const {
        jack_latency_range_t range{};
        jack_port_get_latency_range(own, JackCaptureLatency, &range);
        return int(range.max);
    }
    /// Returns the number of periods that the server has lost.
    int Lost() const { return lost; }

  private:
    void Process(jack_nframes_t frames) override {
        const auto* in = static_cast<const float*>(jack_port_get_buffer(own, frames));
        const jack_nframes_t now = Now(frames);
        if (count == 0)
            first = now;
        const std::size_t at = now - first;
        if (at + frames > samples.size())
            return;
        std::copy(in, in + frames, samples.begin() + std::ptrdiff_t(at));
        count = at + frames;
    }

    std::vector<float> samples;
    std::atomic<std::size_t> count{0};
    std::atomic<std::uint32_t> first{0};
    std::atomic<int> lost{0};
};

/// Sends a script of MIDI messages, each at its frame after the script began.
class Player : public JackPort {
  public:
    struct Message {
        std::uint32_t frame;
        std::vector<jack_midi_data_t> bytes;
    };

    Player() : JackPort("player", "out", JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput) { Activate(); }
    ~Player() override { Close(); }

    /// Sends the messages; returns when the last one has been sent.
    void Play(std::vector<Message> next) {
        script = std::move(next);
        position = 0;
        started = false;
        playing = true;
        WaitWhileThereArePeriods([this] { return !playing; });
    }
    /// The server's frame at which the script began.
    std::uint32_t StartFrame() const { return start; }

  private:
    void Process(jack_nframes_t frames) override {
        void* buffer = jack_port_get_buffer(own, frames);
        jack_midi_clear_buffer(buffer);
        const std::uint32_t now = Now(frames);
        if (!playing)
            return;
        if (!started)
            start = now;
        started = true;
        for (; position < script.size(); position++) {
            const Message& message = script[position];
            const std::uint32_t at = start + message.frame;
            if (at >= now + frames)
                return;
            jack_midi_event_write(buffer, at - now, message.bytes.data(), message.bytes.size());
        }
        playing = false;
    }

    std::vector<Message> script;
    std::size_t position = 0;
    bool started = false;
    std::atomic<bool> playing{false};
    std::atomic<std::uint32_t> start{0};
};

} // namespace test
