// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/kernel/OS.h"
#include "kits/media/backends/AudioDevice.h"
#include "kits/support/ClientName.h"

#include <algorithm>
#include <atomic>

#include <alsa/asoundlib.h>
#include <rtaudio/RtAudio.h>

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
    /// Throws RtAudioError.
    explicit RtAudioDevice(AudioSystem system) : audio(QuietApiOf(system)) {
        audio.showWarnings(false);
        const unsigned number = audio.getDeviceCount() > 0 ? audio.getDefaultOutputDevice() : 0;
        const RtAudio::DeviceInfo info = audio.getDeviceInfo(number);
        if (!info.probed || info.outputChannels == 0)
            throw RtAudioError("no output device", RtAudioError::NO_DEVICES_FOUND);
        name = SystemName(system) + ": " + info.name;
        channels = std::min(info.outputChannels, kMostChannels);
        rate = info.preferredSampleRate > 0 ? info.preferredSampleRate : 48000;

        RtAudio::StreamParameters output;
        output.deviceId = number;
        output.nChannels = channels;
        RtAudio::StreamOptions options;
        options.flags = RTAUDIO_SCHEDULE_REALTIME | RTAUDIO_MINIMIZE_LATENCY;
        options.streamName = ClientName();
        audio.openStream(&output, nullptr, RTAUDIO_FLOAT32, rate, &period, Callback, this, &options,
                         TakeError);
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
            audio.startStream();
        } catch (const RtAudioError& fault) {
            return Error{name + ": " + fault.getMessage()};
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
        } catch (const RtAudioError&) {
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
    static void TakeError(RtAudioError::Type, const std::string&) {
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
    } catch (const RtAudioError& fault) {
        return Error{SystemName(system) + ": " + fault.getMessage()};
    }
}

std::vector<std::string> RtAudioDevices(AudioSystem system) {
    std::vector<std::string> names;
    try {
        RtAudio audio(QuietApiOf(system));
        audio.showWarnings(false);
        for (unsigned i = 0; i < audio.getDeviceCount(); i++) {
            const RtAudio::DeviceInfo info = audio.getDeviceInfo(i);
            if (info.probed && info.outputChannels > 0)
                names.push_back(SystemName(system) + ": " + info.name);
        }
    } catch (const RtAudioError&) {
        // A system that is not there has no devices.
    }
    return names;
}

} // namespace kits
