// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/support/backends/JackClient.h"

#include "kits/support/ClientName.h"
#include "kits/support/RealtimeMark.h"
#include "kits/support/Room.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <optional>
#include <string_view>
#include <thread>
#include <type_traits>

#include <dlfcn.h>
#include <jack/jack.h>

namespace kits {

namespace {

std::string Reason(jack_status_t status) {
    if (status & (JackServerFailed | JackServerError))
        return "no JACK server is running";
    if (status & JackVersionError)
        return "the JACK server speaks another version of the protocol";
    return "the JACK server refused the client";
}

/// The most that a client takes: about ten descriptors, the server's memory of 105 MB, and threads.
/// If the library finds too little, it leaves a database with which none of the user's clients
/// starts.
constexpr std::size_t kDescriptors = 24;
constexpr std::size_t kMemory = std::size_t{192} << 20;

/// The one client, which the threads of both the audio and the MIDI port ask for.
struct TheClient {
    std::mutex mutex;
    std::weak_ptr<JackClient> opened;
    /// True while there is a handle, possibly of a client that is being closed.
    std::atomic<bool> exists{false};
};

TheClient& One() {
    static TheClient one;
    return one;
}

/// The number of calls from the library's threads that are under way, and whether further ones do
/// nothing because the client is being closed.
constinit std::atomic<int> calls{0};
constinit std::atomic<bool> closing{false};

/// Makes a callback for the library of a function without state. jackd2's library cancels its
/// threads, asynchronously, when the client is closed, and the unwinding of a stack ends the
/// program at the first function that is noexcept, as destructors are. Therefore no function is
/// under way then.
template<typename Function>
class Callback {
  public:
    explicit Callback(Function) {}

    template<typename Result, typename... Arguments>
    using Pointer = Result (*)(Arguments...);

    template<typename Result, typename... Arguments>
    operator Pointer<Result, Arguments...>() const {
        return Call<Result, Arguments...>;
    }

  private:
    /// Here the thread may be cancelled: it is not noexcept and has no object with a destructor.
    template<typename Result, typename... Arguments>
    static Result Call(Arguments... arguments) {
        calls++;
        if constexpr (std::is_void_v<Result>) {
            if (!closing)
                Run<Result>(arguments...);
            calls--;
        } else {
            Result result{};
            if (!closing)
                result = Run<Result>(arguments...);
            calls--;
            return result;
        }
    }

    /// Not inlined, so that Call has no destructors of the function's objects either.
    template<typename Result, typename... Arguments>
    [[gnu::noinline]] static Result Run(Arguments... arguments) noexcept {
        return Function{}(arguments...);
    }
};

/// The library writes to standard error on its own; the program's messages say what matters.
void Quiet(const char*) {}

/// jackd1's library writes, in threads of its own, to the sockets of a server that may have died.
/// Such a write must fail, as it does in jackd2's, instead of ending the program. Programs that
/// RunProgram starts have the signal's default action.
void SurviveAServersEnd() {
    struct sigaction now {};
    if (::sigaction(SIGPIPE, nullptr, &now) == 0 && now.sa_handler == SIG_DFL)
        std::signal(SIGPIPE, SIG_IGN);
}

/// Returns true if the library is PipeWire's, which says so in its version. jackd1's library does
/// not have the function, so it is looked up.
bool LibraryIsPipeWires() {
    using Version = decltype(&jack_get_version_string);
    const auto version =
        reinterpret_cast<Version>(::dlsym(RTLD_DEFAULT, "jack_get_version_string"));
    return version && std::string_view(version()).find("PipeWire") != std::string_view::npos;
}

/// Microseconds, in addition to two periods, that the beginning of a period can plausibly lie back.
constexpr double kMostAgo = 10000;

/// Returns the beginning of the period by the system's clock. The server may use another clock:
/// only the distance from its present time counts.
VEXA_REALTIME bigtime_t StartOfPeriod(jack_client_t* client) noexcept {
    jack_nframes_t frame = 0;
    jack_time_t begin = 0;
    jack_time_t next = 0;
    float period = 0;
    bigtime_t ago = 0;
    if (jack_get_cycle_times(client, &frame, &begin, &next, &period) == 0)
        ago = static_cast<bigtime_t>(jack_get_time() - begin);
    // After the server has stood still, its smoothed time is wrong by that duration and recovers
    // over many seconds.
    if (std::abs(static_cast<double>(ago)) > kMostAgo + 2 * double(period))
        ago = 0;
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count() - ago;
}

} // namespace

Result<std::shared_ptr<JackClient>> JackClient::Open() {
    TheClient& one = One();
    const std::lock_guard lock(one.mutex);
    if (std::shared_ptr<JackClient> client = one.opened.lock(); client && !client->IsDead())
        return client;
    // All clients of a process use one server's memory: a new server's cannot be used while the old
    // client exists.
    if (one.exists)
        return Error{"the JACK server has gone"};
    if (const auto room = CheckRoom(kDescriptors, kMemory); !room)
        return room.Fault();
    SurviveAServersEnd();
    jack_set_error_function(Quiet);
    jack_set_info_function(Quiet);
    jack_status_t status{};
    jack_client_t* handle = jack_client_open(ClientName().c_str(), JackNoStartServer, &status);
    if (!handle)
        return Error{Reason(status)};
    one.exists = true;
    // A thread that was cancelled may have left its call counted.
    calls = 0;
    closing = false;
    std::shared_ptr<JackClient> client(new JackClient(handle));
    if (jack_activate(handle) != 0)
        return Error{"the JACK server did not activate the client"};
    one.opened = client;
    return client;
}

JackClient::JackClient(_jack_client* client)
    : client(client), passesLatencyLater(LibraryIsPipeWires()) {
    const auto set = [this](auto* setCallback, auto callback) {
        setCallback(this->client, Callback(callback), this);
    };
    set(jack_set_process_callback, [](jack_nframes_t frames, void* self) {
        static_cast<JackClient*>(self)->Process(frames);
        return 0;
    });
    set(jack_on_shutdown, [](void* self) {
        auto* const ending = static_cast<JackClient*>(self);
        ending->dead = true;
        ending->Notify();
    });
    set(jack_set_freewheel_callback,
        [](int on, void* self) { static_cast<JackClient*>(self)->freewheeling = on != 0; });
    set(jack_set_latency_callback, [](jack_latency_callback_mode_t mode, void* self) {
        auto* const telling = static_cast<JackClient*>(self);
        if (telling->passesLatencyLater)
            telling->latencyIsOutdated = true;
        else
            telling->PassLatency(mode == JackCaptureLatency);
    });
    set(jack_set_port_registration_callback, [](jack_port_id_t port, int registered, void* self) {
        auto* const watching = static_cast<JackClient*>(self);
        PortChange change;
        if (!registered) {
            const jack_port_t* const gone = jack_port_by_id(watching->client, port);
            const char* const name = gone ? jack_port_name(gone) : nullptr;
            change.gone = name ? name : "";
        }
        watching->Notify(change);
    });
    set(jack_set_port_connect_callback,
        [](jack_port_id_t one, jack_port_id_t other, int connected, void* self) {
            auto* const watching = static_cast<JackClient*>(self);
            PortChange change;
            if (!connected)
                change = {jack_port_by_id(watching->client, one),
                          jack_port_by_id(watching->client, other),
                          {}};
            watching->Notify(change);
        });
    set(jack_set_port_rename_callback, [](jack_port_id_t, const char*, const char*, void* self) {
        static_cast<JackClient*>(self)->Notify();
    });
}

JackClient::~JackClient() {
    // What is under way (see Callback) ends soon: it waits for no more than a freewheeling period.
    closing = true;
    while (calls > 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    jack_client_close(client);
    One().exists = false;
}

void JackClient::SetLatency(uint32 frames) {
    const bool changed = latency.exchange(frames) != frames;
    const bool outdated = latencyIsOutdated.exchange(false);
    if (!(changed || outdated) || IsDead())
        return;
    const auto request = Request();
    if (!passesLatencyLater) {
        jack_recompute_total_latencies(client);
        return;
    }
    PassLatency(true);
    PassLatency(false);
}

/// Adds this program's latency to that of the ports at one end, and reports the sum at the ports of
/// the other end.
void JackClient::PassLatency(bool capture) {
    const auto mode = capture ? JackCaptureLatency : JackPlaybackLatency;
    const unsigned long from = capture ? JackPortIsInput : JackPortIsOutput;
    const unsigned long to = capture ? JackPortIsOutput : JackPortIsInput;
    // The server takes a name for a regular expression, and a session may choose any name.
    const std::string own = std::string(jack_get_client_name(client)) + ':';
    const auto forPorts = [&](unsigned long direction, const auto& use) {
        const char** names = jack_get_ports(client, nullptr, nullptr, direction);
        for (const char** name = names; name && *name; name++) {
            if (!std::string_view(*name).starts_with(own))
                continue;
            if (jack_port_t* port = jack_port_by_name(client, *name))
                use(port);
        }
        jack_free(names);
    };
    std::optional<jack_latency_range_t> sum;
    forPorts(from, [&](jack_port_t* port) {
        jack_latency_range_t range{};
        jack_port_get_latency_range(port, mode, &range);
        if (jack_port_connected(port) == 0)
            return;
        sum =
            sum ? jack_latency_range_t{std::min(sum->min, range.min), std::max(sum->max, range.max)}
                : range;
    });
    jack_latency_range_t range = sum.value_or(jack_latency_range_t{0, 0});
    range.min += latency;
    range.max += latency;
    forPorts(to, [&](jack_port_t* port) { jack_port_set_latency_range(port, mode, &range); });
}

bool JackClient::Add(JackProcessor& processor) {
    for (std::atomic<JackProcessor*>& slot : processors) {
        JackProcessor* empty = nullptr;
        if (slot.compare_exchange_strong(empty, &processor))
            return true;
    }
    return false;
}

void JackClient::Remove(JackProcessor& processor) {
    for (std::atomic<JackProcessor*>& slot : processors) {
        JackProcessor* expected = &processor;
        slot.compare_exchange_strong(expected, nullptr);
    }
    FinishPeriod();
}

void JackClient::FinishPeriod() {
    // The period is over when the readers have passed. Only a server that has gone can leave its
    // thread, and so its reader, inside of a period.
    const auto passed = std::make_shared<std::atomic<bool>>(false);
    Retire([passed] { *passed = true; });
    while (!*passed && !(WaitForReaders(std::chrono::milliseconds(100)) || IsDead())) {
    }
}

void JackClient::Listen(const void* owner, Listener listener) {
    const std::lock_guard lock(listenersMutex);
    listeners[owner] = std::move(listener);
}

void JackClient::Unlisten(const void* owner) {
    const std::lock_guard lock(listenersMutex);
    listeners.erase(owner);
}

void JackClient::Process(uint32 frames) noexcept {
    const Reader::Section section(reader);
    periodStart = freewheeling ? 0 : StartOfPeriod(client);
    for (std::atomic<JackProcessor*>& slot : processors) {
        if (JackProcessor* processor = slot.load())
            processor->Process(frames);
    }
}

void JackClient::Notify(const PortChange& change) {
    const std::lock_guard lock(listenersMutex);
    for (const auto& [owner, listener] : listeners)
        listener(change);
}

} // namespace kits
