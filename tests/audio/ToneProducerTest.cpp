// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/ToneProducer.h"

#include "kits/media/MediaRoster.h"
#include "support/RealtimeWatch.h"
#include "support/Sounds.h"

#include <chrono>
#include <semaphore>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using Times = std::vector<bigtime_t>;

/// A consumer that keeps what it gets, and a clock that stands until it is told to run on.
class Sink : public BBufferConsumer, public BTimeSource {
  public:
    Sink() : BMediaNode("sink") { starts.reserve(1000); }
    ~Sink() override = default;

    // The values that the consumer requests; a 0 leaves the choice to the producer.
    std::size_t bufferSize = 4096;
    float frameRate = 0;
    bigtime_t latency = 0;
    status_t connectStatus = B_OK;
    /// Told to the producer with each buffer.
    bigtime_t late = 0;
    bool keepBuffers = false;
    std::atomic<bool> freewheels{false};
    /// Real time and performance time are the same.
    std::atomic<bool> tellsTime{false};

    Times starts;
    std::vector<float> samples;
    std::vector<BBuffer*> kept;
    media_header header;
    BBufferProducer* producer = nullptr;
    media_source source;

    /// Lets the producer handle all events before `time`; it has queued another one then.
    void RunTo(BMediaNode& node, bigtime_t time) {
        until = time;
        node.Call([] {});
        while (waitingFor < time)
            ASSERT_TRUE(waits.try_acquire_for(60s));
    }

    void* AddOn(int32*) const override { return nullptr; }
    status_t AcceptFormat(const media_destination&, media_format* format) override {
        format->u.raw_audio.buffer_size = bufferSize;
        if (frameRate > 0)
            format->u.raw_audio.frame_rate = frameRate;
        return B_OK;
    }
    status_t GetNextInput(int32* cookie, media_input* input) override {
        if ((*cookie)++ > 0)
            return B_BAD_INDEX;
        input->destination = {ControlPort(), 0};
        return B_OK;
    }
    status_t Connected(BBufferProducer* from, const media_source& output, const media_destination&,
                       const media_format& format) override {
        producer = from;
        source = output;
        samples.resize(format.u.raw_audio.buffer_size / sizeof(float));
        kept.reserve(1000);
        return connectStatus;
    }
    void Disconnected(const media_source&, const media_destination&) override {}
    void BufferReceived(BBuffer* buffer, const media_destination&) noexcept override {
        header = *buffer->Header();
        starts.push_back(header.start_time);
        const auto* frames = static_cast<const float*>(buffer->Data());
        std::copy_n(frames, samples.size(), samples.begin());
        if (late > 0)
            producer->LateNoticeReceived(source, late, header.start_time);
        if (keepBuffers)
            kept.push_back(buffer);
        else
            buffer->Recycle();
    }
    void ProducerStopped(const media_destination&) override {}
    status_t GetLatencyFor(const media_destination&, bigtime_t* into, media_node_id*) override {
        *into = latency;
        return B_OK;
    }
    bigtime_t PerformanceTimeFor(bigtime_t realTime) const noexcept override {
        return tellsTime ? realTime : until.load();
    }
    bigtime_t RealTimeFor(bigtime_t performanceTime, bigtime_t) const noexcept override {
        if (performanceTime < until)
            return 0;
        waitingFor = performanceTime;
        waits.release();
        return bigtime_t(1) << 60;
    }
    bool Waits() const noexcept override { return freewheels; }

  private:
    std::atomic<bigtime_t> until{0};
    mutable std::atomic<bigtime_t> waitingFor{0};
    mutable std::counting_semaphore<> waits{0};
};

class ToneProducer : public testing::Test {
  protected:
    ToneProducer() {
        test::MakeSine(instrument);
        producer->SetGain(1);
        producer->SetFunction({test::PlaneOfX});
        roster.RegisterNode(producer);
        roster.GetNodeFor(producer->ID(), &producerNode);
        roster.RegisterNode(sink);
        roster.GetNodeFor(sink->ID(), &sinkNode);
        roster.SetTimeSourceFor(producerNode.node, sinkNode.node);
        output = Output();
        to = {sink->ControlPort(), 0};
    }
    ~ToneProducer() override {
        for (BBuffer* buffer : sink->kept)
            buffer->Recycle();
        roster.Disconnect(producerNode.node, output.source, sinkNode.node, to);
        roster.ReleaseNode(producerNode);
        roster.ReleaseNode(sinkNode);
    }

    /// A hook's answer, in the node's thread.
    status_t Ask(const std::function<status_t()>& hook) {
        status_t status = B_OK;
        producer->Call([&] { status = hook(); });
        return status;
    }
    media_output Output() {
        media_output found;
        int32 cookie = 0;
        EXPECT_EQ(Ask([&] { return producer->GetNextOutput(&cookie, &found); }), B_OK);
        EXPECT_EQ(cookie, 1);
        return found;
    }
    status_t Connect() {
        media_format format;
        format.type = B_MEDIA_RAW_AUDIO;
        media_output from;
        media_input input;
        return roster.Connect(output.source, to, &format, &from, &input);
    }
    status_t Prepare(const media_source& source, media_format* format) {
        media_source chosen;
        char name[B_MEDIA_NAME_LENGTH] = {};
        return Ask([&] { return producer->PrepareToConnect(source, to, format, &chosen, name); });
    }
    void Start(bigtime_t time) { roster.StartNode(producerNode, time); }
    void RunTo(bigtime_t time) { sink->RunTo(*producer, time); }
    void Stop() {
        roster.StopNode(producerNode, 0, true);
        producer->Call([] {}); // the stop is handled between two calls
        ASSERT_EQ(producer->RunState(), BMediaEventLooper::B_STOPPED);
    }

    vexa::Engine instrument;
    BMediaRoster& roster = *BMediaRoster::Roster();
    vexa::VexaToneProducer* producer =
        new vexa::VexaToneProducer(instrument.renderer, instrument.voices);
    Sink* sink = new Sink;
    media_node producerNode;
    media_node sinkNode;
    media_output output;
    media_destination to;
    const media_source foreign{12345, 0};
};

TEST_F(ToneProducer, AnswersForItsOneOutput) {
    EXPECT_STREQ(output.name, "Vexa audio out");
    EXPECT_EQ(output.node, producerNode);
    EXPECT_EQ(output.source, (media_source{producer->ControlPort(), 0}));
    EXPECT_EQ(output.destination, media_destination::null);
    const media_raw_audio_format preferred{44100, 1, B_AUDIO_FLOAT, B_MEDIA_LITTLE_ENDIAN, 0};
    EXPECT_EQ(output.format.u.raw_audio, preferred);

    int32 cookie = 1;
    media_output none;
    EXPECT_EQ(Ask([&] { return producer->GetNextOutput(&cookie, &none); }), B_BAD_INDEX);
    media_format format;

    const auto suggested = [&](media_type type, media_format* into) {
        return Ask([&] { return producer->FormatSuggestionRequested(type, 0, into); });
    };
    EXPECT_EQ(suggested(B_MEDIA_RAW_AUDIO, nullptr), B_BAD_VALUE);
    EXPECT_EQ(suggested(B_MEDIA_RAW_AUDIO, &format), B_OK);
    EXPECT_EQ(suggested(B_MEDIA_UNKNOWN_TYPE, &format), B_OK);
    format = {};
    EXPECT_EQ(suggested(B_MEDIA_NO_TYPE, &format), B_MEDIA_BAD_FORMAT);
    EXPECT_EQ(format.u.raw_audio, preferred) << "given all the same";

    const auto proposed = [&](const media_source& source, media_type type) {
        format = {};
        format.type = type;
        return Ask([&] { return producer->FormatProposal(source, &format); });
    };
    EXPECT_EQ(proposed(foreign, B_MEDIA_RAW_AUDIO), B_MEDIA_BAD_SOURCE);
    EXPECT_EQ(format.u.raw_audio, media_raw_audio_format::wildcard);
    EXPECT_EQ(proposed(output.source, B_MEDIA_UNKNOWN_TYPE), B_OK);
    EXPECT_EQ(proposed(output.source, B_MEDIA_NO_TYPE), B_MEDIA_BAD_FORMAT);
    EXPECT_EQ(format.u.raw_audio, preferred);
}

TEST_F(ToneProducer, PreparesOneConnectionOfFloats) {
    media_format format = output.format;
    EXPECT_EQ(Prepare(foreign, &format), B_MEDIA_BAD_SOURCE);
    format.type = B_MEDIA_UNKNOWN_TYPE;
    EXPECT_EQ(Prepare(output.source, &format), B_MEDIA_BAD_FORMAT);
    format.type = B_MEDIA_RAW_AUDIO;
    format.u.raw_audio.format = B_AUDIO_SHORT;
    EXPECT_EQ(Prepare(output.source, &format), B_MEDIA_BAD_FORMAT);
    EXPECT_EQ(Output().destination, media_destination::null);
    format.u.raw_audio.format = B_AUDIO_FLOAT;
    EXPECT_EQ(Prepare(output.source, &format), B_OK);
    EXPECT_EQ(format.u.raw_audio.buffer_size, 64U) << "left open by the consumer";
    EXPECT_EQ(Output().destination, to);
    format.u.raw_audio.format = B_AUDIO_SHORT;
    EXPECT_EQ(Prepare(output.source, &format), B_MEDIA_ALREADY_CONNECTED);
    char name[B_MEDIA_NAME_LENGTH] = {};
    producer->Call([&] { producer->Connect(B_ERROR, output.source, to, format, name); });
    EXPECT_EQ(Output().destination, media_destination::null);
    EXPECT_EQ(Output().format.u.raw_audio, output.format.u.raw_audio);
}

TEST_F(ToneProducer, AConnectionSetsLatencyAndBuffers) {
    sink->latency = 50000;
    ASSERT_EQ(Connect(), B_OK);
    EXPECT_EQ(producer->BufferDuration(), 23219);
    EXPECT_EQ(producer->EventLatency(), 50000 + 24576);
    EXPECT_EQ(producer->CountBuffers(), 4);
    bigtime_t latency = 0;
    EXPECT_EQ(roster.GetLatencyFor(producerNode, &latency), B_OK);
    EXPECT_EQ(latency, producer->EventLatency() + producer->SchedulingLatency());
    EXPECT_NE(Connect(), B_OK);

    const auto changed = [&](const media_source& source, bigtime_t now) {
        producer->Call([&] { producer->LatencyChanged(source, to, now, 0); });
        return producer->EventLatency();
    };
    EXPECT_EQ(changed(foreign, 1), 50000 + 24576);
    EXPECT_EQ(changed(output.source, 1000), 1000 + 24576);

    producer->Call([&] { producer->Disconnect(foreign, to); });
    EXPECT_EQ(producer->CountBuffers(), 4);
    EXPECT_EQ(roster.Disconnect(producerNode.node, output.source, sinkNode.node, to), B_OK);
    EXPECT_EQ(producer->CountBuffers(), 0);
    EXPECT_EQ(Output().destination, media_destination::null);

    sink->frameRate = 48000;
    ASSERT_EQ(Connect(), B_OK);
    EXPECT_EQ(producer->BufferDuration(), 21333);
    EXPECT_EQ(producer->EventLatency(), 50000 + 22 * 1024);
}

TEST_F(ToneProducer, ARefusedConnectionLeavesItFree) {
    sink->connectStatus = B_ERROR;
    EXPECT_EQ(Connect(), B_ERROR);
    EXPECT_EQ(Output().destination, media_destination::null);
    EXPECT_EQ(producer->CountBuffers(), 0);
    sink->connectStatus = B_OK;
    EXPECT_EQ(Connect(), B_OK);
}

TEST_F(ToneProducer, TakesABufferGroup) {
    sink->latency = 50000;
    ASSERT_EQ(Connect(), B_OK);
    auto* group = new BBufferGroup(4096, 9);
    const auto set = [&](const media_source& source, BBufferGroup* next) {
        return Ask([&] { return producer->SetBufferGroup(source, next); });
    };
    EXPECT_EQ(set(foreign, group), B_MEDIA_BAD_SOURCE);
    EXPECT_EQ(producer->CountBuffers(), 4);
    EXPECT_EQ(set(output.source, group), B_OK);
    EXPECT_EQ(set(output.source, group), B_OK) << "its own group is kept";
    EXPECT_EQ(producer->CountBuffers(), 9);
    EXPECT_EQ(set(output.source, nullptr), B_OK);
    EXPECT_EQ(producer->CountBuffers(), 4);
}

TEST_F(ToneProducer, ReportsThatItCannotWorkOffline) {
    roster.SetRunModeNode(producerNode, B_DROP_DATA);
    EXPECT_EQ(producer->ReportedErrors(), 0U);
    roster.SetRunModeNode(producerNode, B_OFFLINE);
    EXPECT_EQ(producer->ReportedErrors(), 1U << BMediaNode::B_NODE_FAILED_SET_RUN_MODE);
    EXPECT_EQ(producer->RunMode(), B_OFFLINE) << "not refused";
}

TEST_F(ToneProducer, CountsFramesFromEachStart) {
    ASSERT_EQ(Connect(), B_OK);
    Start(1000000);
    RunTo(1050000);
    EXPECT_EQ(sink->starts, (Times{1000000, 1023219, 1046439})) << "1024 frames of 1/44100 s";
    EXPECT_EQ(sink->header.type, B_MEDIA_RAW_AUDIO);
    EXPECT_EQ(sink->header.size_used, 4096U);
    EXPECT_EQ(sink->header.time_source, sinkNode.node);
    Start(1060000); // while started
    RunTo(1100000);
    EXPECT_EQ(sink->starts, (Times{1000000, 1023219, 1046439, 1069659, 1092879}));
    Stop();
    sink->starts.clear();
    Start(2000000);
    Stop(); // before it has begun
    Start(3000000);
    RunTo(3000001);
    EXPECT_EQ(sink->starts, Times{3000000}) << "nothing is left of the first run";
}

TEST_F(ToneProducer, ADisabledOutputPlaysOnUnheard) {
    sink->bufferSize = 65536; // long, so that no load makes it drop the voice
    vexa::Engine reference;
    test::MakeSine(reference);
    for (vexa::Engine* each : {&instrument, &reference})
        each->consumer.NoteOn(0, 69, 127, 0);
    ASSERT_EQ(Connect(), B_OK);
    const auto enable = [&](const media_source& what, bool enabled) {
        producer->Call([&] { producer->EnableOutput(what, enabled, nullptr); });
    };
    enable(output.source, false);
    enable(foreign, true);
    Start(0);
    RunTo(3000000); // nine buffers of 371519 us, of a group of two
    EXPECT_EQ(sink->starts, Times{});
    enable(output.source, true);
    RunTo(3600000);
    EXPECT_EQ(sink->starts, Times{3343673});
    ASSERT_EQ(producer->DroppedVoices(), 0);
    for (int skipped = 0; skipped < 9; skipped++)
        test::Render(reference, 16384);
    EXPECT_EQ(sink->samples, test::Render(reference, 16384));
    EXPECT_GT(test::Peak(sink->samples), 0.5F);
}

TEST_F(ToneProducer, HasTwoChannelsWhereItIsTold) {
    sink->bufferSize = 131072; // long, so that no load makes it drop the voice
    producer->SetChannels(2);
    vexa::Engine reference;
    test::MakeSine(reference);
    for (vexa::Engine* each : {&instrument, &reference})
        each->consumer.NoteOn(0, 69, 127, 0);
    const vexa::OutputTap::Listener listener(producer->Tap());
    ASSERT_EQ(Connect(), B_OK);
    EXPECT_EQ(listener.Rate(), 44100);
    EXPECT_EQ(Output().format.u.raw_audio.channel_count, 2U);
    EXPECT_EQ(producer->BufferDuration(), 371519) << "16384 frames";
    Start(0);
    // A spread that comes and goes needs no other connection.
    for (const float spread : {0.0F, 60.0F, 0.0F, 180.0F}) {
        for (vexa::Engine* each : {&instrument, &reference}) {
            each->playing.given = true;
            each->playing.spread = spread;
        }
        sink->starts.clear();
        for (bigtime_t to = 1; sink->starts.empty(); to += 100000)
            RunTo(to);
        std::vector<float> left(16384), right(16384), both;
        reference.renderer.Render(left.data(), right.data(), left.size());
        for (std::size_t i = 0; i < left.size(); i++)
            both.insert(both.end(), {left[i], right[i]});
        EXPECT_EQ(sink->samples, both) << spread;
        std::vector<vexa::OutputFrame> seen(left.size());
        ASSERT_TRUE(listener.Copy(listener.Count() - seen.size(), seen));
        for (std::size_t i = 0; i < seen.size(); i++)
            ASSERT_TRUE(seen[i].left == left[i] && seen[i].right == right[i]) << spread;
        EXPECT_EQ(left == right, spread == 0 && sink->starts[0] == 0) << spread;
    }
    EXPECT_EQ(producer->DroppedVoices(), 0);
}

TEST_F(ToneProducer, AnEventTakesEffectAtItsFrame) {
    constexpr bigtime_t kBuffer = 92879; // 4096 frames
    sink->bufferSize = 16384;
    sink->tellsTime = true;
    kits::EventGate gate(instrument.consumer);
    gate.SetTimed(true);
    producer->SetEvents(&gate);
    ASSERT_EQ(Connect(), B_OK);
    Start(0);
    RunTo(kBuffer);
    const bigtime_t delay = producer->EventDelay();
    EXPECT_GT(delay, 2 * kBuffer) << "rendering may take more than a buffer";
    const auto timeOf = [delay](int64 frame) { return frame * 1000000 / 44100 - delay; };
    // Of the second buffer, of its end, and of the third.
    gate.NoteOn(0, 69, 127, timeOf(4096 + 500));
    gate.NoteOff(0, 69, 64, timeOf(4096 + 600));
    gate.AllNotesOff(false, timeOf(4096 + 4000));
    gate.NoteOn(0, 69, 127, timeOf(8192 + 70));
    const auto firstAndLast = [this] {
        const auto sounds = [](float sample) { return sample != 0; };
        const auto& all = sink->samples;
        return std::pair(std::ranges::find_if(all, sounds) - all.begin(),
                         all.rend() - std::find_if(all.rbegin(), all.rend(), sounds));
    };
    RunTo(2 * kBuffer);
    EXPECT_EQ(firstAndLast(), std::pair(501L, 4000L)) << "the first sample of a note is 0";
    RunTo(3 * kBuffer);
    EXPECT_EQ(firstAndLast().first, 71);
    // Late events, and events without a known time, are played at once.
    gate.AllNotesOff(false, timeOf(0));
    gate.NoteOn(0, 69, 127, 0);
    RunTo(4 * kBuffer);
    EXPECT_EQ(firstAndLast().first, 1);
    producer->SetEvents(nullptr);
}

TEST_F(ToneProducer, AnEventOfAnOversampledSoundIsHeardAtItsFrameToo) {
    constexpr bigtime_t kBuffer = 92879; // 4096 frames
    sink->bufferSize = 16384;
    sink->tellsTime = true;
    kits::EventGate gate(instrument.consumer);
    gate.SetTimed(true);
    producer->SetEvents(&gate);
    ASSERT_EQ(Connect(), B_OK);
    Start(0);
    bigtime_t buffer = 0;
    std::vector<float> first;
    bigtime_t firstDelay = 0;
    // One sound after the other, on the same connection: 1, 4, 16 and 1 times the rate.
    for (const int power : {0, 2, 4, 0}) {
        instrument.playing.oversample = float(power);
        RunTo(++buffer * kBuffer);
        const bigtime_t delay = producer->EventDelay();
        gate.NoteOn(0, 69, 127, (4096 * buffer + 500) * 1000000 / 44100 - delay);
        gate.AllNotesOff(false, (4096 * buffer + 3500) * 1000000 / 44100 - delay);
        RunTo(++buffer * kBuffer);
        if (first.empty()) {
            first = sink->samples;
            firstDelay = delay;
            EXPECT_GT(test::Peak(first), 0.9F);
        }
        EXPECT_EQ(delay - firstDelay, power == 0 ? 0 : 725) << "32 frames";
        for (std::size_t i = 0; i < 3400; i++)
            ASSERT_NEAR(sink->samples[i], first[i], 0.01) << power << ' ' << i;
    }
    producer->SetEvents(nullptr);
}

TEST_F(ToneProducer, DropsAVoiceThatTakesTooLongUnlessPerformanceTimeWaits) {
    constexpr auto kLong = [](float, float) noexcept {
        std::this_thread::sleep_for(1ms);
        return 1.0F;
    };
    instrument.consumer.ReduceToMaxVox(2);
    sink->bufferSize = 64; // 16 frames, 363 us
    producer->SetFunction({+kLong});
    instrument.consumer.NoteOn(0, 69, 127, 0);
    instrument.consumer.NoteOn(0, 71, 127, 0);
    ASSERT_EQ(Connect(), B_OK);
    sink->freewheels = true;
    Start(0);
    RunTo(1000);
    EXPECT_EQ(producer->DroppedVoices(), 0);
    EXPECT_EQ(instrument.consumer.CountVox(), 2);
    sink->freewheels = false;
    RunTo(1400);
    EXPECT_EQ(producer->DroppedVoices(), 1);
    EXPECT_EQ(instrument.consumer.CountVox(), 1);
}

TEST_F(ToneProducer, SkipsABufferThatHasNoMemoryWithoutStoppingTheClock) {
    sink->bufferSize = 64;
    sink->keepBuffers = true;
    ASSERT_EQ(Connect(), B_OK);
    Start(0);
    RunTo(2000);
    EXPECT_EQ(sink->starts, (Times{0, 362})) << "two buffers, that never come back";
    for (BBuffer* buffer : std::exchange(sink->kept, {}))
        buffer->Recycle();
    sink->keepBuffers = false;
    RunTo(2300);
    EXPECT_EQ(sink->starts, (Times{0, 362, 2176}));
}

TEST_F(ToneProducer, BeingLateRaisesTheLatencyOrSkips) {
    ASSERT_EQ(Connect(), B_OK);
    const bigtime_t latency = producer->EventLatency();
    sink->late = 700;
    roster.SetRunModeNode(producerNode, B_INCREASE_LATENCY);
    Start(0);
    RunTo(40000);
    EXPECT_EQ(sink->starts, (Times{0, 23219}));
    EXPECT_EQ(producer->EventLatency(), latency + 1400);
    roster.SetRunModeNode(producerNode, B_DROP_DATA);
    RunTo(100000);
    EXPECT_EQ(sink->starts, (Times{0, 23219, 46439, 92879})) << "one buffer is left out";
    EXPECT_EQ(producer->EventLatency(), latency + 1400);
    sink->starts.clear();
    roster.SetRunModeNode(producerNode, B_RECORDING);
    RunTo(170000);
    EXPECT_EQ(sink->starts, (Times{139319, 162539})) << "recording takes no notice";
    producer->Call([&] { producer->LateNoticeReceived(foreign, 1, 0); });
    EXPECT_EQ(producer->EventLatency(), latency + 1400);
}

TEST_F(ToneProducer, BeingEarlyGivesBackWhatBeingLateHasAdded) {
    ASSERT_EQ(Connect(), B_OK);
    const bigtime_t latency = producer->EventLatency();
    roster.SetRunModeNode(producerNode, B_INCREASE_LATENCY);
    const auto early = [&](const media_source& what, bigtime_t howMuch) {
        producer->Call([&] { producer->EarlyNoticeReceived(what, howMuch); });
        return producer->EventLatency() - latency;
    };
    producer->Call([&] { producer->LateNoticeReceived(output.source, 5000, 0); });
    EXPECT_EQ(early(foreign, 2000), 5000);
    EXPECT_EQ(early(output.source, 2000), 3000);
    producer->Call([&] { producer->LatencyChanged(output.source, to, sink->latency + 700, 0); });
    EXPECT_EQ(early(output.source, 9000), 700) << "what the connection needs stays";
}

TEST_F(ToneProducer, ABufferNeitherAllocatesNorLocks) {
    for (uchar note = 40; note < 60; note++)
        instrument.consumer.NoteOn(0, note, 100, 0);
    ASSERT_EQ(Connect(), B_OK);
    Start(0);
    RunTo(1);
    const vexa::OutputTap::Listener listener(producer->Tap());
    const test::RealtimeWatch watch;
    RunTo(2000000);
    EXPECT_EQ(sink->starts.size(), 87U);
    EXPECT_EQ(watch.Faults(), 0);
}

} // namespace
