// SPDX-License-Identifier: GPL-3.0-or-later
// The differences between RtAudio's versions. Up to 5 it throws errors, numbers its devices from 0
// and has an error callback for each stream; from 6 on it returns errors, its devices have ids of
// their own, and there is one error callback for the library object.
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

/// Throws an error that the library has returned.
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

/// Opens a stream of floats for playback. `takeError` is called in the stream's thread with its
/// errors, ALSA's underruns among them. Throws a std::runtime_error.
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
