// SPDX-License-Identifier: GPL-3.0-or-later
// The nodes of the media graph, and the hooks that are called for each kind of node.
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

/// A node lives on the heap. Once registered it belongs to the roster, which deletes it with its
/// last reference. Hooks run in the node's own thread if it has one, otherwise in the caller's.
class BMediaNode {
  public:
    enum node_error { B_NODE_FAILED_SET_RUN_MODE = 1 };

    BMediaNode(const BMediaNode&) = delete;
    BMediaNode& operator=(const BMediaNode&) = delete;

    const std::string& Name() const { return name; }
    /// Returns the node's number in the roster, -1 while it is not registered.
    VEXA_REALTIME media_node_id ID() const { return id; }
    /// Identifies the node's outputs and inputs; valid from construction on.
    VEXA_REALTIME int32 ControlPort() const { return port; }
    virtual uint32 Kinds() const { return kinds; }
    media_node Node() const { return {id, port, Kinds()}; }
    VEXA_REALTIME run_mode RunMode() const { return mode; }
    /// Returns the node's clock, never null: the system's clock until another one is set.
    VEXA_REALTIME BTimeSource* TimeSource() const;

    /// Runs `work` as a hook and returns when it is done. Any thread; in the node's own it runs
    /// directly.
    virtual void Call(const std::function<void()>& work) { work(); }

    /// Returns the add-on that provides the node, null if there is none.
    virtual void* AddOn(int32* id) const = 0;
    virtual void SetRunMode(run_mode) {}
    virtual status_t HandleMessage(int32 message, const void* data, std::size_t size);
    virtual void NodeRegistered() {}
    virtual void Start(bigtime_t) {}
    virtual void Stop(bigtime_t, bool) {}

    /// Returns the errors that the node has reported with ReportError, one bit for each node_error.
    /// Any thread.
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
    /// Called when all buffers of the last seconds arrived `howMuch` microseconds earlier than
    /// necessary: the producer can give back latency that late notices have added.
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

    /// Hands the buffer over. Returns B_MEDIA_BAD_DESTINATION if no consumer takes it; the buffer
    /// then stays the caller's. Media thread: no wait, lock or allocation.
    VEXA_REALTIME status_t SendBuffer(BBuffer* buffer,
                                      const media_destination& destination) noexcept;
    /// Finds the latency, in microseconds, from the moment at which a buffer is sent until it is
    /// heard. The node's own thread.
    status_t FindLatencyFor(const media_destination& destination, bigtime_t* latency,
                            media_node_id* timeSource);
};

/// A node that takes buffers.
class BBufferConsumer : public virtual BMediaNode {
  public:
    /// Fills in the fields that the proposal leaves open. Returns B_MEDIA_BAD_FORMAT if it cannot
    /// be taken.
    virtual status_t AcceptFormat(const media_destination& destination, media_format* format) = 0;
    /// Finds the next free input, in the way of BBufferProducer::GetNextOutput.
    virtual status_t GetNextInput(int32* cookie, media_input* input) = 0;
    virtual status_t Connected(BBufferProducer* producer, const media_source& source,
                               const media_destination& destination,
                               const media_format& format) = 0;
    virtual void Disconnected(const media_source& source, const media_destination& destination) = 0;
    /// Called with a buffer that belongs to the consumer from then on; the consumer recycles it.
    /// The sender's media thread.
    VEXA_REALTIME virtual void BufferReceived(BBuffer* buffer,
                                              const media_destination& destination) noexcept = 0;
    /// Called when the producer of that input has been stopped: missing buffers are no fault from
    /// now on.
    virtual void ProducerStopped(const media_destination& destination) = 0;
    virtual status_t GetLatencyFor(const media_destination& destination, bigtime_t* latency,
                                   media_node_id* timeSource) = 0;

  protected:
    BBufferConsumer() { AddKind(B_BUFFER_CONSUMER); }
};

/// Converts between real time and performance time, the clock of what is heard, both in
/// microseconds. Any thread, wait-free.
class BTimeSource : public virtual BMediaNode {
  public:
    VEXA_REALTIME virtual bigtime_t PerformanceTimeFor(bigtime_t realTime) const noexcept = 0;
    /// Returns the real time at which to act so that the effect is heard at `performanceTime`.
    virtual bigtime_t RealTimeFor(bigtime_t performanceTime, bigtime_t latency) const noexcept = 0;
    /// Returns false while the source's time stands still, such as that of a device whose server
    /// hangs; due events then wait.
    virtual bool IsRunning(bigtime_t /*realTime*/) const noexcept { return true; }
    /// Returns true if the clock stands until everything is rendered, like that of a device whose
    /// server freewheels: nothing can be late then. Any thread.
    VEXA_REALTIME virtual bool Waits() const noexcept { return false; }
    bigtime_t Now() const noexcept;
    /// Gives back what BMediaRoster::MakeTimeSourceFor returned.
    void Release() {}

    /// Returns the system's clock, the default time source.
    VEXA_REALTIME static BTimeSource* System();

  protected:
    BTimeSource() { AddKind(B_TIME_SOURCE); }
};
