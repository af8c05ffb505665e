// SPDX-License-Identifier: GPL-3.0-or-later
// Nodes take part in the media graph; the hooks here are what each kind of them is asked.
#pragma once

#include "kits/media/BufferGroup.h"
#include "kits/media/MediaDefs.h"
#include "kits/support/RealtimeMark.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>

struct media_seek_tag;
class BTimeSource;

/// A node lives on the heap. Once it is registered it belongs to the roster, which deletes it with
/// its last reference. Hooks run in the node's own thread, where it has one, else in the caller's.
class BMediaNode {
  public:
    enum node_error { B_NODE_FAILED_SET_RUN_MODE = 1 };

    BMediaNode(const BMediaNode&) = delete;
    BMediaNode& operator=(const BMediaNode&) = delete;

    const std::string& Name() const { return name; }
    /// Returns the number by which the roster knows the node, -1 while it is not registered.
    VEXA_REALTIME media_node_id ID() const { return id; }
    /// Identifies the node's outputs and inputs; valid from the beginning.
    VEXA_REALTIME int32 ControlPort() const { return port; }
    virtual uint32 Kinds() const { return kinds; }
    media_node Node() const { return {id, port, Kinds()}; }
    VEXA_REALTIME run_mode RunMode() const { return mode; }
    /// Returns the node's clock, never null: it is the system's until another was set.
    VEXA_REALTIME BTimeSource* TimeSource() const;

    /// Runs `work` as a hook and returns when it is done. Any thread but the node's own.
    virtual void Call(const std::function<void()>& work) { work(); }

    /// Returns the add-on that the node came with, null if there is none.
    virtual void* AddOn(int32* id) const = 0;
    virtual void SetRunMode(run_mode) {}
    virtual status_t HandleMessage(int32 message, const void* data, std::size_t size);
    virtual void NodeRegistered() {}
    virtual void Start(bigtime_t) {}
    virtual void Stop(bigtime_t, bool) {}

    /// Returns what the node has reported with ReportError, with a bit for each node_error. Any
    /// thread.
    uint32 ReportedErrors() const { return errors; }

  protected:
    explicit BMediaNode(const char* name);
    virtual ~BMediaNode() = default;
    void ReportError(node_error error) { errors |= 1U << error; }
    void AddKind(uint32 kind) { kinds |= kind; }

  private:
    friend class BMediaRoster;
    std::string name;
    media_node_id id = -1;
    int32 port;
    uint32 kinds = 0;
    std::atomic<run_mode> mode{B_DECREASE_PRECISION};
    std::atomic<BTimeSource*> timeSource;
    std::atomic<uint32> errors{0};
    int references = 0;
};

/// A node that sends buffers.
class BBufferProducer : public virtual BMediaNode {
  public:
    virtual status_t FormatSuggestionRequested(media_type type, int32 quality,
                                               media_format* format) = 0;
    virtual status_t FormatProposal(const media_source& output, media_format* format) = 0;
    virtual status_t FormatChangeRequested(const media_source& source,
                                           const media_destination& destination,
                                           media_format* format, int32* deprecated) = 0;
    virtual status_t GetNextOutput(int32* cookie, media_output* output) = 0;
    virtual status_t DisposeOutputCookie(int32 cookie) = 0;
    virtual status_t SetBufferGroup(const media_source& source, BBufferGroup* group) = 0;
    virtual status_t GetLatency(bigtime_t* latency) = 0;
    virtual status_t PrepareToConnect(const media_source& what, const media_destination& where,
                                      media_format* format, media_source* source, char* name) = 0;
    virtual void Connect(status_t error, const media_source& source,
                         const media_destination& destination, const media_format& format,
                         char* name) = 0;
    virtual void Disconnect(const media_source& what, const media_destination& where) = 0;
    VEXA_REALTIME virtual void LateNoticeReceived(const media_source& what, bigtime_t howMuch,
                                                  bigtime_t performanceTime) = 0;
    /// Called when all buffers of the last seconds came `howMuch` microseconds earlier than they
    /// had to: what late notices have added to the latency can be given back.
    VEXA_REALTIME virtual void EarlyNoticeReceived(const media_source&, bigtime_t /*howMuch*/) {}
    virtual void EnableOutput(const media_source& what, bool enabled, int32* deprecated) = 0;
    virtual status_t SetPlayRate(int32 numerator, int32 denominator) = 0;
    virtual void AdditionalBufferRequested(const media_source& source, media_buffer_id buffer,
                                           bigtime_t time, const media_seek_tag* tag) = 0;
    VEXA_REALTIME virtual void LatencyChanged(const media_source& source,
                                              const media_destination& destination,
                                              bigtime_t latency, uint32 flags) = 0;

  protected:
    explicit BBufferProducer(media_type) { AddKind(B_BUFFER_PRODUCER); }

    /// Hands the buffer over. Where nobody takes it the answer is B_MEDIA_BAD_DESTINATION, and the
    /// buffer stays the caller's. Media thread: no wait, lock or allocation.
    VEXA_REALTIME status_t SendBuffer(BBuffer* buffer,
                                      const media_destination& destination) noexcept;
    /// Finds how many microseconds pass from the moment at which a buffer is sent until it is
    /// heard. It is called in the node's own thread.
    status_t FindLatencyFor(const media_destination& destination, bigtime_t* latency,
                            media_node_id* timeSource);
};

/// A node that takes buffers.
class BBufferConsumer : public virtual BMediaNode {
  public:
    /// Fills in what the proposal leaves open. Returns B_MEDIA_BAD_FORMAT where it cannot be taken.
    virtual status_t AcceptFormat(const media_destination& destination, media_format* format) = 0;
    /// Gives the free input, if there is one, in the way of BBufferProducer::GetNextOutput.
    virtual status_t GetNextInput(int32* cookie, media_input* input) = 0;
    virtual status_t Connected(BBufferProducer* producer, const media_source& source,
                               const media_destination& destination,
                               const media_format& format) = 0;
    virtual void Disconnected(const media_source& source, const media_destination& destination) = 0;
    /// Called with a buffer that is the consumer's from then on, which recycles it. The sender's
    /// media thread.
    VEXA_REALTIME virtual void BufferReceived(BBuffer* buffer,
                                              const media_destination& destination) noexcept = 0;
    /// The producer of that input has been stopped: that nothing comes is as it should be.
    virtual void ProducerStopped(const media_destination& destination) = 0;
    virtual status_t GetLatencyFor(const media_destination& destination, bigtime_t* latency,
                                   media_node_id* timeSource) = 0;

  protected:
    BBufferConsumer() { AddKind(B_BUFFER_CONSUMER); }
};

/// Tells the performance time, in microseconds: the clock of what is heard. Any thread, wait-free.
class BTimeSource : public virtual BMediaNode {
  public:
    VEXA_REALTIME virtual bigtime_t PerformanceTimeFor(bigtime_t realTime) const noexcept = 0;
    /// The moment at which to act so that it is heard at the performance time.
    virtual bigtime_t RealTimeFor(bigtime_t performanceTime, bigtime_t latency) const noexcept = 0;
    /// Returns false while the source's time stands still, as the time of a device does whose
    /// server hangs: what is due then waits.
    virtual bool IsRunning(bigtime_t /*realTime*/) const noexcept { return true; }
    /// True where the clock stands until everything is rendered, as that of a device whose server
    /// freewheels: nothing takes too long then. Any thread.
    VEXA_REALTIME virtual bool Waits() const noexcept { return false; }
    bigtime_t Now() const noexcept;
    /// Gives back what BMediaRoster::MakeTimeSourceFor returned.
    void Release() {}

    /// The system's clock, for whom there is no other.
    VEXA_REALTIME static BTimeSource* System();

  protected:
    BTimeSource() { AddKind(B_TIME_SOURCE); }
};
