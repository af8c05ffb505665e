// SPDX-License-Identifier: GPL-3.0-or-later
// A node with a thread of its own that handles events at their performance times.
#pragma once

#include "kits/media/MediaNode.h"
#include "kits/support/RealtimeMark.h"

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include <semaphore.h>

constexpr int32 B_REAL_TIME_PRIORITY = 120;

/// An event is something to be done at a performance time.
struct media_timed_event {
    enum event_type : int32 { B_START = 1, B_STOP, B_HANDLE_BUFFER };
    bigtime_t event_time = 0;
    event_type type = B_START;
};

/// Events in the order of their times; those of equal time stay in the order in which they were
/// added. The memory is reserved in the constructor. Belongs to the looper's thread.
class BTimedEventQueue {
  public:
    BTimedEventQueue() { events.reserve(kRoom); }
    /// Queues an event. Returns false if the queue is full, which means that the node queues more
    /// than it handles.
    VEXA_REALTIME bool AddEvent(const media_timed_event& event);
    /// Removes the events of a type.
    void FlushEvents(media_timed_event::event_type type);
    const media_timed_event* FirstEvent() const { return events.empty() ? nullptr : &events[0]; }
    void RemoveFirstEvent() { events.erase(events.begin()); }

  private:
    static constexpr std::size_t kRoom = 64;
    std::vector<media_timed_event> events;
};

/// Calls HandleEvent for each event. The loop wakes before an event's time by the event latency
/// plus the scheduling latency. In between it runs the hooks that other threads ask for.
class BMediaEventLooper : public virtual BMediaNode {
  public:
    enum run_state : int32 { B_UNREGISTERED, B_STOPPED, B_STARTED, B_QUITTING };

    void Call(const std::function<void()>& work) override;
    /// Queues a B_START or a B_STOP. An immediate stop is handled at once and cancels all queued
    /// starts.
    void Start(bigtime_t performanceTime) override;
    void Stop(bigtime_t performanceTime, bool immediate) override;

    /// Returns the looper's state. Any thread.
    run_state RunState() const { return state; }
    VEXA_REALTIME bigtime_t EventLatency() const { return eventLatency; }
    VEXA_REALTIME bigtime_t SchedulingLatency() const { return schedulingLatency; }
    VEXA_REALTIME bigtime_t BufferDuration() const { return bufferDuration; }

  protected:
    explicit BMediaEventLooper(uint32 apiVersion);
    ~BMediaEventLooper() override;

    /// Called in the looper's thread when an event is due. `lateness` is how many microseconds
    /// after its due moment the event is handled.
    virtual void HandleEvent(const media_timed_event* event, bigtime_t lateness,
                             bool realTimeEvent) = 0;

    /// Sets the thread's priority; B_REAL_TIME_PRIORITY is the highest. It must be called before
    /// Run.
    void SetPriority(int32 next) { priority = next; }
    /// Starts the looper's thread.
    void Run();
    /// Ends the looper's thread; queued events are dropped. A derived class calls it in its
    /// destructor, because hooks must not run in a partly destroyed object.
    void Quit();

    /// These are called in the looper's thread. Latency and duration are in microseconds.
    VEXA_REALTIME BTimedEventQueue* EventQueue() { return &queue; }
    VEXA_REALTIME void SetEventLatency(bigtime_t next) { eventLatency = next; }
    void SetBufferDuration(bigtime_t next) { bufferDuration = next; }

  private:
    /// Work that another thread waits for. The request lies on that thread's stack.
    struct Request {
        const std::function<void()>* work;
        sem_t done;
        Request* next;
    };

    void Loop();
    void ServeRequests();
    void HandleFirst(bigtime_t lateness);

    int32 priority = 0;
    std::thread thread;
    std::atomic<run_state> state{B_UNREGISTERED};
    BTimedEventQueue queue;
    std::atomic<bigtime_t> eventLatency{0};
    std::atomic<bigtime_t> schedulingLatency{0};
    std::atomic<bigtime_t> bufferDuration{0};
    /// The waiting requests, as a linked list that begins with the newest one.
    std::atomic<Request*> requests{nullptr};
    sem_t wake;
};
