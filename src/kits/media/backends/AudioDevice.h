// SPDX-License-Identifier: GPL-3.0-or-later
// The interface between the system mixer and an audio device.
#pragma once

#include "kits/media/AudioSystem.h"
#include "kits/support/RealtimeMark.h"
#include "kits/support/Result.h"
#include "kits/support/SupportDefs.h"

#include <memory>
#include <string>
#include <vector>

namespace kits {

/// Computes what a device plays.
class VEXA_REALTIME AudioSource {
  public:
    virtual ~AudioSource() = default;
    /// Computes the next `frames` samples of the left and of the right channel, within -1..1. `now`
    /// is the real time, in microseconds, at which this period begins, as far as the device can
    /// tell. The device's real-time thread: no wait, lock or allocation.
    virtual void Play(float* left, float* right, uint32 frames, bigtime_t now) noexcept = 0;
    /// Waits until the next `frames` samples are available, for a second at most. It is called by a
    /// device that does not play in real time and takes samples as soon as they are available. The
    /// device's thread.
    virtual void Await(uint32 frames) noexcept = 0;
};

/// An audio output. Any one thread opens and starts it; all later calls are in the window thread
/// unless noted.
class AudioDevice {
  public:
    virtual ~AudioDevice() = default;
    /// Returns a name that a person understands, such as "JACK" or "PulseAudio: Built-in Audio".
    virtual std::string Name() const = 0;
    /// Returns the rate, in frames per second, that the device had when it was opened or last
    /// stopped.
    virtual double SampleRate() const = 0;
    /// Returns the maximum number of frames requested at a time. May change while playing; any
    /// thread.
    virtual uint32 Period() const = 0;
    /// Returns the `smoothing` that DeviceClock needs for the moments that the device reports.
    virtual double Smoothing() const = 0;
    /// Starts to call the source, until Stop is called or the device has gone.
    virtual Result<void> Start(AudioSource& source) = 0;
    /// Stops calling the source. When it returns, no call is under way and none will follow;
    /// silence is played until the next Start.
    virtual void Stop() = 0;
    /// Takes the latency, in frames, from an event to the moment at which its effect is played. A
    /// system that reports latencies to other programs stores it. It is to be called regularly,
    /// even with the same latency.
    virtual void TellLatency(uint32 /*frames*/) {}
    /// Handles what may appear later than the device, such as ports to connect to. It is to be
    /// called regularly while the device plays.
    virtual void Tend() {}
    /// Returns true if the device has disappeared for good and must be opened anew. Any thread.
    virtual bool HasGone() const = 0;
    /// Returns true if the device plays at another rate than SampleRate() and must be stopped and
    /// started.
    virtual bool HasNewRate() const { return false; }
};

/// The error says why there is no such device. Both wait for as long as the system takes to answer.
Result<std::unique_ptr<AudioDevice>> OpenJackDevice();
Result<std::unique_ptr<AudioDevice>> OpenRtAudioDevice(AudioSystem system);

/// Returns the names of a system's devices, for a person to read.
std::vector<std::string> RtAudioDevices(AudioSystem system);

} // namespace kits
