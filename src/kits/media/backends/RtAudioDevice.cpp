// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/kernel/OS.h"
#include "kits/media/backends/AudioDevice.h"
#include "kits/media/backends/RtAudioLibrary.h"
#include "kits/support/ClientName.h"

#include <algorithm>
#include <atomic>

#include <alsa/asoundlib.h>

namespace kits {

namespace {

constexpr unsigned kPreferredPeriod = 256;
constexpr unsigned kMostChannels = 8;

RtAudio::Api ApiOf(AudioSystem system) {
    return system == AudioSystem::Pulse ? RtAudio::LINUX_PULSE : RtAudio::LINUX_ALSA;
}

std::string SystemName(AudioSystem system) {
    return system == AudioSystem::Pulse ? "PulseAudio" : "ALSA";
}

/// ALSA's library writes each of its attempts to standard error; what matters is in our messages.
void Quiet(const char*, int, const char*, int, const char*, ...) {}

RtAudio::Api QuietApiOf(AudioSystem system) {
    ::snd_lib_error_set_handler(Quiet);
    return ApiOf(system);
}

class RtAudioDevice : public AudioDevice {
  public:
    /// Throws a std::runtime_error.
    explicit RtAudioDevice(AudioSystem system) : audio(QuietApiOf(system)) {
        rtaudio::Hush(audio);
        const unsigned number = audio.getDeviceCount() > 0 ? audio.getDefaultOutputDevice() : 0;
        const RtAudio::DeviceInfo info = audio.getDeviceInfo(number);
        if (!rtaudio::Plays(info))
            throw std::runtime_error("no output device");
        name = SystemName(system) + ": " + info.name;
        channels = std::min(info.outputChannels, kMostChannels);
        rate = info.preferredSampleRate > 0 ? info.preferredSampleRate : 48000;

        RtAudio::StreamParameters output;
        output.deviceId = number;
        output.nChannels = channels;
        RtAudio::StreamOptions options;
        options.flags = RTAUDIO_SCHEDULE_REALTIME | RTAUDIO_MINIMIZE_LATENCY;
        options.streamName = ClientName();
        rtaudio::Open(audio, output, rate, period, Callback, this, options, TakeError);
        left.resize(period);
        right.resize(period);
    }

    ~RtAudioDevice() override {
        RtAudioDevice::Stop();
        if (audio.isStreamOpen())
            audio.closeStream();
    }

    std::string Name() const override { return name; }
    double SampleRate() const override { return rate; }
    uint32 Period() const override { return period; }

    /// The moments are those at which a thread woke up.
    double Smoothing() const override { return 0.05; }

    Result<void> Start(AudioSource& from) override {
        source = &from;
        try {
            rtaudio::Start(audio);
        } catch (const std::runtime_error& fault) {
            return Error{name + ": " + fault.what()};
        }
        // With a callback for errors the library throws none.
        if (!audio.isStreamRunning())
            return Error{name + ": the stream does not start"};
        return {};
    }

    void Stop() override {
        try {
            if (audio.isStreamRunning())
                audio.abortStream();
        } catch (const std::runtime_error&) {
            // The device has gone before us.
        }
    }

    bool HasGone() const override { return gone; }

  private:
    /// What ends a stream at once.
    static constexpr int kAbort = 2;

    static int Callback(void* output, void*, unsigned frames, double, RtAudioStreamStatus,
                        void* self) {
        playing = static_cast<RtAudioDevice*>(self);
        playing->Fill(static_cast<float*>(output), frames);
        return playing->gone ? kAbort : 0;
    }

    /// An error of the stream's thread is a device that takes no more samples, and to be left at
    /// once; a mere underrun is none.
    static void TakeError(rtaudio::ErrorType, const std::string&) {
        if (playing)
            playing->gone = true;
    }

    void Fill(float* output, unsigned frames) noexcept {
        for (unsigned done = 0; done < frames;) {
            const unsigned n = std::min(frames - done, period);
            source->Play(left.data(), right.data(), n, system_time());
            for (unsigned i = 0; i < n; i++)
                output = PutFrame(output, left[i], right[i]);
            done += n;
        }
    }

    /// Every second one of several loudspeakers is on the right; a single one gets both.
    float* PutFrame(float* output, float onLeft, float onRight) const noexcept {
        if (channels == 1)
            *output = (onLeft + onRight) / 2;
        for (unsigned channel = 0; channels > 1 && channel < channels; channel++)
            output[channel] = channel % 2 == 0 ? onLeft : onRight;
        return output + channels;
    }

    RtAudio audio;
    std::string name;
    unsigned channels = 0;
    unsigned rate = 0;
    unsigned period = kPreferredPeriod;
    std::vector<float> left;
    std::vector<float> right;
    AudioSource* source = nullptr;
    std::atomic<bool> gone{false};
    /// The device of the stream's thread, as the library's callback for errors says nothing of the
    /// stream.
    static thread_local RtAudioDevice* playing;
};

thread_local RtAudioDevice* RtAudioDevice::playing = nullptr;

} // namespace

Result<std::unique_ptr<AudioDevice>> OpenRtAudioDevice(AudioSystem system) {
    try {
        return {std::make_unique<RtAudioDevice>(system)};
    } catch (const std::runtime_error& fault) {
        return Error{SystemName(system) + ": " + fault.what()};
    }
}

std::vector<std::string> RtAudioDevices(AudioSystem system) {
    std::vector<std::string> names;
    try {
        RtAudio audio(QuietApiOf(system));
        rtaudio::Hush(audio);
        for (const unsigned number : rtaudio::Devices(audio)) {
            const RtAudio::DeviceInfo info = audio.getDeviceInfo(number);
            if (rtaudio::Plays(info))
                names.push_back(SystemName(system) + ": " + info.name);
        }
    } catch (const std::runtime_error&) {
        // A system that is not there has no devices.
    }
    return names;
}

} // namespace kits
