// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/SystemMixer.h"

#include "kits/kernel/OS.h"
#include "kits/support/Trace.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <cmath>
#include <thread>
#include <utility>

namespace kits {

namespace {

/// The limits, in frames, of a producer's buffer where the producer leaves the size open. Shorter
/// buffers would arrive a millisecond or so sooner, but to wake the producer for each costs more
/// than to render it.
constexpr uint32 kShortestBuffer = 64;
constexpr uint32 kLongestBuffer = 512;

/// The longest time, in microseconds, that a device waits for its samples, and the pause between
/// two checks.
constexpr bigtime_t kMostPatience = 1000000;
constexpr std::chrono::microseconds kDevicePause{50};

Result<std::unique_ptr<AudioDevice>> OpenDevice(AudioSystem system) {
    if (system == AudioSystem::None)
        return Error{"no audio system was asked for"};
    return system == AudioSystem::Jack ? OpenJackDevice() : OpenRtAudioDevice(system);
}

} // namespace

Result<std::unique_ptr<SystemMixer>> SystemMixer::Open(std::span<const AudioSystem> systems) {
    std::string faults;
    for (const AudioSystem system : systems) {
        auto device = OpenDevice(system);
        std::string fault;
        if (device) {
            auto mixer = std::make_unique<SystemMixer>(system, *std::move(device));
            const Result<void> started = mixer->StartDevice();
            if (started)
                return mixer;
            fault = started.Fault().text;
        } else {
            fault = device.Fault().text;
        }
        faults += (faults.empty() ? "" : "; ") + fault;
    }
    return Error{faults};
}

SystemMixer::Input::Input(const DeviceClock& clock, const media_format& format,
                          BBufferProducer* producer, const media_source& source)
    : mix(clock, double(format.u.raw_audio.frame_rate),
          format.u.raw_audio.buffer_size / sizeof(float) / format.u.raw_audio.channel_count,
          format.u.raw_audio.channel_count),
      producer(producer),
      source(source) {}

SystemMixer::SystemMixer(AudioSystem system, std::unique_ptr<AudioDevice> opened)
    : BMediaNode("System mixer"),
      system(system),
      device(std::move(opened)),
      clock(device->SampleRate(), device->Smoothing()),
      period(device->Period()) {}

SystemMixer::~SystemMixer() {
    // First end the thread that reads the inputs.
    device.reset();
    for (std::atomic<Input*>& input : inputs)
        delete input.load();
}

uint32 SystemMixer::Kinds() const {
    return B_BUFFER_CONSUMER | B_TIME_SOURCE | B_SYSTEM_MIXER;
}

Result<void> SystemMixer::StartDevice() {
    clock.Period(0, system_time());
    return device->Start(*this);
}

std::unique_ptr<AudioDevice> SystemMixer::TakeDevice() {
    device->Stop();
    return std::move(device);
}

void SystemMixer::Play(float* left, float* right, uint32 frames, bigtime_t now) noexcept {
    const Reader::Section section(reader);
    waits = std::exchange(awaited, false);
    // Set first, so that a producer that is late because the period has grown finds the reason.
    period = frames;
    clock.Period(frame, now);
    const std::span<float> mix(left, frames);
    std::fill(mix.begin(), mix.end(), 0.0F);
    const auto add = [this, mix, right](std::size_t channels) {
        for (std::atomic<Input*>& slot : inputs) {
            if (Input* input = slot.load(); input && input->mix.Channels() == channels)
                input->mix.AddTo(mix, right, frame);
        }
    };
    // An input of one channel is heard alike on both sides.
    add(1);
    std::copy_n(left, frames, right);
    add(2);
    // Inputs are finite, but a filter's output for the largest floats need not be.
    for (float* channel : {left, right})
        std::transform(channel, channel + frames, channel, [](float sample) {
            return std::isfinite(sample) ? std::clamp(sample, -1.0F, 1.0F) : 0.0F;
        });
    frame += frames;
    if (Recording* keeper = recording.load())
        keeper->Put(left, right, frames);
}

void SystemMixer::Record(Recording* next) {
    if (next)
        next->TakeRate(clock.Rate());
    recording = next;
    // A period that had already begun may use the previous recording to its end.
    const auto passed = std::make_shared<std::atomic<bool>>(false);
    Retire([passed] { *passed = true; });
    while (!*passed && !(WaitForReaders(std::chrono::milliseconds(100)) || device->HasGone())) {
    }
}

void SystemMixer::Await(uint32 frames) noexcept {
    const Reader::Section section(reader);
    const auto isThere = [end = frame + frames](const std::atomic<Input*>& slot) {
        const Input* const input = slot.load();
        return !input || input->mix.Reaches(end);
    };
    awaited = true;
    waits = true;
    const bigtime_t start = system_time();
    for (bigtime_t now = start; now < start + kMostPatience; now = system_time()) {
        // Performance time stands still meanwhile, but IsRunning stays true.
        clock.Period(frame, now);
        if (std::all_of(inputs.begin(), inputs.end(), isThere))
            return;
        std::this_thread::sleep_for(kDevicePause);
    }
}

status_t SystemMixer::AcceptFormat(const media_destination& destination, media_format* format) {
    if (!Slot(destination))
        return B_MEDIA_BAD_DESTINATION;
    media_raw_audio_format& raw = format->u.raw_audio;
    if (format->type == B_MEDIA_UNKNOWN_TYPE)
        format->type = B_MEDIA_RAW_AUDIO;
    if (raw.frame_rate == 0)
        raw.frame_rate = static_cast<float>(clock.Rate());
    if (raw.format == 0)
        raw.format = B_AUDIO_FLOAT;
    if (raw.channel_count == 0)
        raw.channel_count = 1;
    if (format->type != B_MEDIA_RAW_AUDIO || raw.format != B_AUDIO_FLOAT || raw.channel_count > 2)
        return B_MEDIA_BAD_FORMAT;
    if (!RateConverter::CanConvert(double(raw.frame_rate), clock.Rate()))
        return B_MEDIA_BAD_FORMAT;
    if (raw.buffer_size == 0) {
        // The largest power of two that is no longer than the device's period.
        const double frames = device->Period() * double(raw.frame_rate) / clock.Rate();
        raw.buffer_size = sizeof(float) * raw.channel_count *
                          std::clamp(std::bit_floor(static_cast<uint32>(frames)), kShortestBuffer,
                                     kLongestBuffer);
    }
    return B_OK;
}

status_t SystemMixer::GetNextInput(int32* cookie, media_input* input) {
    for (; *cookie < static_cast<int32>(kMostInputs); (*cookie)++) {
        if (inputs[static_cast<std::size_t>(*cookie)].load())
            continue;
        *input = media_input{};
        input->node = Node();
        input->destination = {ControlPort(), *cookie};
        input->format.type = B_MEDIA_RAW_AUDIO;
        (*cookie)++;
        return B_OK;
    }
    return B_BAD_INDEX;
}

std::atomic<SystemMixer::Input*>* SystemMixer::Slot(const media_destination& destination) {
    const bool ours = destination.port == ControlPort() && destination.id >= 0 &&
                      destination.id < static_cast<int32>(kMostInputs);
    return ours ? &inputs[static_cast<std::size_t>(destination.id)] : nullptr;
}

status_t SystemMixer::Connected(BBufferProducer* producer, const media_source& source,
                                const media_destination& destination, const media_format& format) {
    std::atomic<Input*>* slot = Slot(destination);
    if (!slot)
        return B_MEDIA_BAD_DESTINATION;
    if (slot->load())
        return B_MEDIA_ALREADY_CONNECTED;
    auto input = std::make_unique<Input>(clock, format, producer, source);
    input->latency = LatencyOf(*input);
    *slot = input.release();
    return B_OK;
}

void SystemMixer::Disconnected(const media_source&, const media_destination& destination) {
    std::atomic<Input*>* slot = Slot(destination);
    Input* input = slot ? slot->exchange(nullptr) : nullptr;
    if (!input)
        return;
    past.late += input->mix.Counts().late;
    past.missing += input->mix.Counts().missing;
    Retire([input] { delete input; });
}

void SystemMixer::BufferReceived(BBuffer* buffer, const media_destination& destination) noexcept {
    std::atomic<Input*>* slot = Slot(destination);
    // The input stays valid in this function: the producer forgets its destination, in this thread,
    // before the input is removed.
    if (Input* input = slot ? slot->load() : nullptr) {
        const auto* frames = static_cast<const float*>(buffer->Data());
        const bigtime_t start = buffer->Header()->start_time;
        const bigtime_t change =
            input->mix.Write({frames, buffer->Header()->size_used / sizeof(float)}, start);
        // Called after Write, which compares with the frames that the device has fetched. Lateness
        // due to a longer period ends when the producer knows of the period.
        const bigtime_t grown = std::max<bigtime_t>(FollowPeriod(*input, destination), 0);
        if (change > grown)
            input->producer->LateNoticeReceived(input->source, change - grown, start);
        else if (change < 0)
            input->producer->EarlyNoticeReceived(input->source, -change);
    }
    buffer->Recycle();
}

/// Tells the producer if the period has changed. Returns by how many microseconds its latency
/// grows.
bigtime_t SystemMixer::FollowPeriod(Input& input, const media_destination& destination) noexcept {
    const bigtime_t before = std::exchange(input.latency, LatencyOf(input));
    if (input.latency != before)
        input.producer->LatencyChanged(input.source, destination, input.latency, 0);
    return input.latency - before;
}

bigtime_t SystemMixer::LatencyOf(const Input& input) const noexcept {
    const double microseconds = period * 1e6 / clock.Rate();
    return static_cast<bigtime_t>(std::ceil(microseconds)) + input.mix.Lookahead() +
           MixerInput::kMargin;
}

void SystemMixer::ProducerStopped(const media_destination& destination) {
    std::atomic<Input*>* slot = Slot(destination);
    if (Input* input = slot ? slot->load() : nullptr)
        input->mix.Stopped();
}

status_t SystemMixer::GetLatencyFor(const media_destination& destination, bigtime_t* latency,
                                    media_node_id* timeSource) {
    std::atomic<Input*>* slot = Slot(destination);
    const Input* input = slot ? slot->load() : nullptr;
    if (!input)
        return B_MEDIA_BAD_DESTINATION;
    *latency = input->latency;
    *timeSource = ID();
    return B_OK;
}

MixerCounts SystemMixer::Counts() const {
    MixerCounts sum = past;
    for (const std::atomic<Input*>& slot : inputs) {
        if (const Input* input = slot.load()) {
            sum.late += input->mix.Counts().late;
            sum.missing += input->mix.Counts().missing;
        }
    }
    return sum;
}

bigtime_t SystemMixer::PerformanceTimeFor(bigtime_t realTime) const noexcept {
    return clock.PerformanceTimeFor(realTime);
}

bigtime_t SystemMixer::RealTimeFor(bigtime_t performanceTime, bigtime_t latency) const noexcept {
    return clock.RealTimeFor(performanceTime - latency);
}

} // namespace kits
