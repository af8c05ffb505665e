// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/MediaNode.h"

#include "kits/kernel/OS.h"
#include "kits/media/ConsumerList.h"
#include "kits/support/RealtimeMark.h"

namespace {

class SystemClock : public BTimeSource {
  public:
    SystemClock() : BMediaNode("System clock") {}
    void* AddOn(int32*) const override { return nullptr; }
    VEXA_REALTIME bigtime_t PerformanceTimeFor(bigtime_t realTime) const noexcept override {
        return realTime;
    }
    bigtime_t RealTimeFor(bigtime_t performanceTime, bigtime_t latency) const noexcept override {
        return performanceTime - latency;
    }
};

int32 NextPort() {
    static std::atomic<int32> last{0};
    return ++last;
}

} // namespace

BMediaNode::BMediaNode(const char* name) : name(name), port(NextPort()), timeSource(nullptr) {}

BTimeSource* BMediaNode::TimeSource() const {
    BTimeSource* own = timeSource;
    return own ? own : BTimeSource::System();
}

status_t BMediaNode::HandleMessage(int32, const void*, std::size_t) {
    return B_ERROR;
}

status_t BBufferProducer::SendBuffer(BBuffer* buffer,
                                     const media_destination& destination) noexcept {
    BBufferConsumer* consumer = kits::ConsumerOf(destination);
    if (!consumer)
        return B_MEDIA_BAD_DESTINATION;
    consumer->BufferReceived(buffer, destination);
    return B_OK;
}

status_t BBufferProducer::FindLatencyFor(const media_destination& destination, bigtime_t* latency,
                                         media_node_id* timeSource) {
    BBufferConsumer* consumer = kits::ConsumerOf(destination);
    return consumer ? consumer->GetLatencyFor(destination, latency, timeSource)
                    : B_MEDIA_BAD_DESTINATION;
}

bigtime_t BTimeSource::Now() const noexcept {
    return PerformanceTimeFor(system_time());
}

BTimeSource* BTimeSource::System() {
    static auto* clock = new SystemClock;
    return clock;
}
