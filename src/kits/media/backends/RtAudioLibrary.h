// SPDX-License-Identifier: GPL-3.0-or-later
// RtAudio, in what its versions differ in: up to 5 it throws what fails, counts its devices from 0
// and has a callback for each stream's errors; from 6 on it returns what fails, its devices have
// numbers of their own, and the callback is the library's.
#pragma once

#include <numeric>
#include <stdexcept>
#include <string>
#include <vector>

#include <rtaudio/RtAudio.h>

namespace kits::rtaudio {

#ifdef RTAUDIO_VERSION_MAJOR

using ErrorType = RtAudioErrorType;

/// Keeps the library from writing to standard error.
inline void Hush(RtAudio& audio) {
    audio.setErrorCallback([](ErrorType, const std::string&) {});
}

inline std::vector<unsigned> Devices(RtAudio& audio) {
    return audio.getDeviceIds();
}

inline bool Plays(const RtAudio::DeviceInfo& info) {
    return info.outputChannels > 0;
}

/// Throws what the library has returned as an error.
inline void Check(RtAudio& audio, ErrorType error) {
    if (error > RTAUDIO_WARNING)
        throw std::runtime_error(audio.getErrorText());
}

#else

using ErrorType = RtAudioError::Type;

inline void Hush(RtAudio& audio) {
    audio.showWarnings(false);
}

inline std::vector<unsigned> Devices(RtAudio& audio) {
    std::vector<unsigned> devices(audio.getDeviceCount());
    std::iota(devices.begin(), devices.end(), 0U);
    return devices;
}

inline bool Plays(const RtAudio::DeviceInfo& info) {
    return info.probed && info.outputChannels > 0;
}

#endif

/// Opens a stream of floats that is played. `takeError` hears in the stream's thread of what ends
/// it. Throws a std::runtime_error.
inline void Open(RtAudio& audio, RtAudio::StreamParameters output, unsigned rate, unsigned& period,
                 RtAudioCallback callback, void* user, RtAudio::StreamOptions options,
                 void (*takeError)(ErrorType, const std::string&)) {
#ifdef RTAUDIO_VERSION_MAJOR
    audio.setErrorCallback(takeError);
    Check(audio, audio.openStream(&output, nullptr, RTAUDIO_FLOAT32, rate, &period, callback, user,
                                  &options));
#else
    audio.openStream(&output, nullptr, RTAUDIO_FLOAT32, rate, &period, callback, user, &options,
                     takeError);
#endif
}

/// Throws a std::runtime_error.
inline void Start(RtAudio& audio) {
#ifdef RTAUDIO_VERSION_MAJOR
    Check(audio, audio.startStream());
#else
    audio.startStream();
#endif
}

} // namespace kits::rtaudio
