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

/// ALSA's library writes each of its attempts to standard error; the program's messages say what
/// matters.
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

    /// The moments are those at which a thread woke up, so they jitter.
    double Smoothing() const override { return 0.05; }

    Result<void> Start(AudioSource& from) override {
        source = &from;
        try {
            rtaudio::Start(audio);
        } catch (const std::runtime_error& fault) {
            return Error{name + ": " + fault.what()};
        }
        // If it has an error callback, the library does not throw errors.
        if (!audio.isStreamRunning())
            return Error{name + ": the stream does not start"};
        return {};
    }

    void Stop() override {
        try {
            if (audio.isStreamRunning())
                audio.abortStream();
        } catch (const std::runtime_error&) {
            // The device has already gone.
        }
    }

    bool HasGone() const override { return gone; }

  private:
    /// The result of the callback that ends the stream at once.
    static constexpr int kAbort = 2;

    static int Callback(void* output, void*, unsigned frames, double, RtAudioStreamStatus,
                        void* self) {
        playing = static_cast<RtAudioDevice*>(self);
        playing->Fill(static_cast<float*>(output), frames);
        return playing->gone ? kAbort : 0;
    }

    /// An error in the stream's thread means that the device takes no more samples and must be left
    /// at once. ALSA's underruns come here too, with a text that ends with this word; the library
    /// has recovered by then. Where it could not, the text ends with the reason.
    static void TakeError(rtaudio::ErrorType, const std::string& text) {
        if (playing && !text.ends_with("underrun."))
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

    /// Plays the right channel on every second one of several loudspeakers; a single one gets the
    /// mean of both.
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
    /// The device whose stream runs in this thread, because the library's error callback does not
    /// name the stream.
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
        // A system that does not exist has no devices.
    }
    return names;
}

} // namespace kits
