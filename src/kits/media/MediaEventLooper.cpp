// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/MediaEventLooper.h"

#include "kits/kernel/OS.h"
#include "kits/media/Clock.h"
#include "kits/support/RealtimePriority.h"
#include "kits/support/Trace.h"

#include <algorithm>

namespace {

/// Below the audio servers and the MIDI thread, above ordinary work: a server that had to wait
/// while a buffer is computed would lose more than is gained.
constexpr int kRealTimePriority = 4;

/// How many microseconds late a thread may wake with real-time priority and with ordinary priority.
constexpr bigtime_t kRealTimeJitter = 200;
constexpr bigtime_t kOrdinaryJitter = 1000;

/// Microseconds between two checks of a time source that stands still.
constexpr bigtime_t kStandstillPause = 10000;

} // namespace

bool BTimedEventQueue::AddEvent(const media_timed_event& event) {
    if (events.size() == kRoom)
        return false;
    const auto after = std::upper_bound(events.begin(), events.end(), event,
                                        [](const media_timed_event& a, const media_timed_event& b) {
                                            return a.event_time < b.event_time;
                                        });
    events.insert(after, event);
    return true;
}

void BTimedEventQueue::FlushEvents(media_timed_event::event_type type) {
    std::erase_if(events, [type](const media_timed_event& event) { return event.type == type; });
}

BMediaEventLooper::BMediaEventLooper(uint32) {
    ::sem_init(&wake, 0, 0);
}

BMediaEventLooper::~BMediaEventLooper() {
    Quit();
    ::sem_destroy(&wake);
}

void BMediaEventLooper::Run() {
    state = B_STOPPED;
    thread = std::thread([this] { Loop(); });
}

void BMediaEventLooper::Quit() {
    if (!thread.joinable())
        return;
    state = B_QUITTING;
    ::sem_post(&wake);
    thread.join();
    // Runs the requests that came too late for the loop.
    ServeRequests();
}

void BMediaEventLooper::Call(const std::function<void()>& work) {
    if (!thread.joinable() || std::this_thread::get_id() == thread.get_id()) {
        work();
        return;
    }
    Request request{&work, {}, requests.load()};
    ::sem_init(&request.done, 0, 0);
    while (!requests.compare_exchange_weak(request.next, &request)) {
    }
    ::sem_post(&wake);
    while (::sem_wait(&request.done) != 0) {
    }
    ::sem_destroy(&request.done);
}

void BMediaEventLooper::Start(bigtime_t performanceTime) {
    queue.AddEvent({performanceTime, media_timed_event::B_START});
}

void BMediaEventLooper::Stop(bigtime_t performanceTime, bool immediate) {
    if (immediate)
        queue.FlushEvents(media_timed_event::B_START);
    queue.AddEvent({immediate ? 0 : performanceTime, media_timed_event::B_STOP});
}

void BMediaEventLooper::Loop() {
    bool realTime = false;
    if (priority >= B_REAL_TIME_PRIORITY) {
        realTime = kits::TakeRealtimePriority(kRealTimePriority);
        if (!realTime)
            FPRINTF(stderr, "BMediaEventLooper: no real-time priority\n");
    }
    schedulingLatency = realTime ? kRealTimeJitter : kOrdinaryJitter;
    while (state != B_QUITTING) {
        ServeRequests();
        const media_timed_event* first = queue.FirstEvent();
        if (!first) {
            ::sem_wait(&wake);
            continue;
        }
        const bigtime_t due = first->type == media_timed_event::B_STOP && first->event_time == 0
                                  ? 0
                                  : TimeSource()->RealTimeFor(first->event_time,
                                                              EventLatency() + SchedulingLatency());
        const bigtime_t now = system_time();
        const bigtime_t lateness = now - due;
        // Buffers computed for a time that does not come would be heard late, and for long.
        if (due != 0 && !TimeSource()->IsRunning(now))
            kits::WaitUntil(wake, now + kStandstillPause);
        else if (lateness >= 0)
            HandleFirst(lateness);
        else
            kits::WaitUntil(wake, due);
    }
}

/// Runs the hooks in the order in which they were requested.
void BMediaEventLooper::ServeRequests() {
    Request* newest = requests.exchange(nullptr);
    Request* oldest = nullptr;
    while (newest) {
        Request* next = newest->next;
        newest->next = oldest;
        oldest = newest;
        newest = next;
    }
    while (oldest) {
        Request* next = oldest->next;
        (*oldest->work)();
        ::sem_post(&oldest->done);
        oldest = next;
    }
}

void BMediaEventLooper::HandleFirst(bigtime_t lateness) {
    const media_timed_event event = *queue.FirstEvent();
    queue.RemoveFirstEvent();
    HandleEvent(&event, lateness, false);
    if (state == B_QUITTING)
        return;
    if (event.type == media_timed_event::B_START)
        state = B_STARTED;
    else if (event.type == media_timed_event::B_STOP)
        state = B_STOPPED;
}
