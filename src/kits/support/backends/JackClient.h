// SPDX-License-Identifier: GPL-3.0-or-later
// The program's one client of a JACK server, which its audio and its MIDI ports share.
#pragma once

#include "kits/support/Published.h"
#include "kits/support/RealtimeMark.h"
#include "kits/support/Result.h"
#include "kits/support/SupportDefs.h"

#include <array>
#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

struct _jack_client; // NOLINT(bugprone-reserved-identifier): the library's names
struct _jack_port;   // NOLINT(bugprone-reserved-identifier)

namespace kits {

/// A processor is called in each of the server's periods, in the server's thread.
class JackProcessor {
  public:
    virtual ~JackProcessor() = default;
    /// Called in each period with its number of frames. The server's real-time thread: no wait,
    /// lock or allocation, unless it is freewheeling.
    VEXA_REALTIME virtual void Process(uint32 frames) noexcept = 0;
};

/// Two ports that have been disconnected from each other, or the name of one that has gone; null
/// and empty if something else has happened.
struct PortChange {
    _jack_port* one = nullptr;
    _jack_port* other = nullptr;
    std::string gone{};
};

/// The program's connection to a JACK server, open as long as somebody holds it. When the server
/// ends, or throws the client out, the client is dead for good; Open makes another one once all
/// holders have released it. Its functions may be called from any thread but the server's and the
/// real-time ones, unless noted.
class JackClient {
  public:
    /// Returns the open client, or a new one named ClientName() (the server numbers further
    /// instances). It waits for the server's answer and never starts a server; the error says why
    /// there is none. From the first call on the program ignores SIGPIPE, unless it has a handler
    /// for it.
    static Result<std::shared_ptr<JackClient>> Open();

    ~JackClient();
    JackClient(const JackClient&) = delete;
    JackClient& operator=(const JackClient&) = delete;

    VEXA_REALTIME _jack_client* Handle() const { return client; }
    /// Returns a lock that must be held while the server is asked to make, remove, connect or
    /// disconnect a port: JACK's libraries confuse the answers to two threads that ask at the same
    /// time. A listener must not take it.
    [[nodiscard]] std::unique_lock<std::mutex> Request() { return std::unique_lock(requests); }
    /// Returns true once the server has gone. Any thread.
    bool IsDead() const { return dead; }
    /// Returns true while the server freewheels: its periods follow one another as fast as all
    /// clients finish them, as for a recording. A processor may wait then, and is not in a
    /// real-time thread. Any thread.
    VEXA_REALTIME bool IsFreewheeling() const { return freewheeling; }

    /// Returns the system's time, in microseconds, at which the present period begins, as smoothed
    /// by the server; 0 while the server freewheels, as its time is not the system's then. Only
    /// processors call it.
    VEXA_REALTIME bigtime_t PeriodStart() const { return periodStart; }

    /// Sets the latency, in frames, from an input to the resulting output. If it has changed, the
    /// server is told, which tells the connected programs. It is to be called regularly, even with
    /// the same latency: under PipeWire only these calls pass on the latencies of others.
    void SetLatency(uint32 frames);

    /// Adds a processor, which is called from the next period on; returns false if there are
    /// kMostProcessors already.
    bool Add(JackProcessor& processor);
    /// Removes a processor. When it returns, no call is under way and none will follow.
    void Remove(JackProcessor& processor);
    /// Waits for the end of the period. When it returns, no processor is in a period that began
    /// before the call.
    void FinishPeriod();

    using Listener = std::function<void(const PortChange&)>;
    /// Adds the owner's listener. It is called, in a thread of the JACK library, when the server
    /// goes or when ports come, go, are renamed, connected or disconnected. It must not call the
    /// server.
    void Listen(const void* owner, Listener listener);
    /// Removes the owner's listener. When it returns, no call is under way and none will follow.
    void Unlisten(const void* owner);

  private:
    explicit JackClient(_jack_client* client);
    VEXA_REALTIME void Process(uint32 frames) noexcept;
    void Notify(const PortChange& change = {});
    void PassLatency(bool capture);

    static constexpr std::size_t kMostProcessors = 4;
    _jack_client* client;
    /// True under PipeWire, whose library (0.3.65, at least) must not be called from its latency
    /// callback. It calls back in its loop's thread, with a lock held that is not recursive.
    /// jack_port_set_latency_range then runs, inside of the call, whatever else waits for that
    /// thread. If that is another change of the period, as a change of the rate brings several, the
    /// thread takes the lock a second time and waits for itself for ever. Therefore the callback
    /// only makes a note, and SetLatency, in another thread, does the work. The jackds in turn take
    /// latencies only from the callback.
    const bool passesLatencyLater;
    std::atomic<bool> latencyIsOutdated{false};
    std::mutex requests;
    std::atomic<bool> dead{false};
    std::atomic<bool> freewheeling{false};
    std::atomic<uint32> latency{0};
    /// The system's time in microseconds at which the present period began. It belongs to the
    /// server's thread.
    bigtime_t periodStart = 0;
    std::array<std::atomic<JackProcessor*>, kMostProcessors> processors{};
    Reader reader;
    std::mutex listenersMutex;
    std::map<const void*, Listener> listeners;
};

} // namespace kits
