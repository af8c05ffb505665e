// SPDX-License-Identifier: GPL-3.0-or-later
// An audio device does this for the system mixer.
#pragma once

#include "kits/media/AudioSystem.h"
#include "kits/support/RealtimeMark.h"
#include "kits/support/Result.h"
#include "kits/support/SupportDefs.h"

#include <memory>
#include <string>
#include <vector>

namespace kits {

/// Whoever computes what a device plays.
class VEXA_REALTIME AudioSource {
  public:
    virtual ~AudioSource() = default;
    /// Computes the next `frames` samples of the left and of the right channel, within -1..1. `now`
    /// is the real time, in microseconds, at which the stretch begins as far as the device can
    /// tell. The device's real-time thread: no wait, lock or allocation.
    virtual void Play(float* left, float* right, uint32 frames, bigtime_t now) noexcept = 0;
    /// Waits until the next `frames` samples are there, for a second at most. A device calls it
    /// that plays in other than real time, and takes everything as soon as it is there. The
    /// device's thread.
    virtual void Await(uint32 frames) noexcept = 0;
};

/// An audio output. It is opened and started in any one thread, after which all calls are in the
/// window thread unless noted.
class AudioDevice {
  public:
    virtual ~AudioDevice() = default;
    /// Returns a name that a person understands, such as "JACK" or "PulseAudio: Built-in Audio".
    virtual std::string Name() const = 0;
    /// Returns the rate in frames per second that the device had when it was opened, or last
    /// stopped.
    virtual double SampleRate() const = 0;
    /// The most frames that are asked for at a time. May change while playing; any thread.
    virtual uint32 Period() const = 0;
    /// Returns how much the moments that the source is told need to be smoothed, as DeviceClock
    /// takes it.
    virtual double Smoothing() const = 0;
    /// Starts to ask the source for what to play, until Stop is called or the device has gone.
    virtual Result<void> Start(AudioSource& source) = 0;
    /// Stops asking the source. When it returns the source is not being asked and will not be
    /// again, and silence is played until the next Start.
    virtual void Stop() = 0;
    /// Takes the number of frames from an event to the moment at which its effect is played; a
    /// system that passes it on to others keeps it.
    virtual void TellLatency(uint32 /*frames*/) {}
    /// Looks for what may come later than the device, such as ports to connect to. It is to be
    /// called now and then while the device plays.
    virtual void Tend() {}
    /// True where the device has disappeared for good, and is to be opened anew. Any thread.
    virtual bool HasGone() const = 0;
    /// It plays at another rate than SampleRate says, and is to be stopped and started.
    virtual bool HasNewRate() const { return false; }
};

/// The error says why there is no such device. Wait for as long as the system takes to answer.
Result<std::unique_ptr<AudioDevice>> OpenJackDevice();
Result<std::unique_ptr<AudioDevice>> OpenRtAudioDevice(AudioSystem system);

/// Names of the devices of a system, for a person.
std::vector<std::string> RtAudioDevices(AudioSystem system);

} // namespace kits
