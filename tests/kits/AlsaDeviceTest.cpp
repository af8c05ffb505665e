// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/backends/AudioDevice.h"
#include "support/Environment.h"
#include "support/TemporaryFolder.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <thread>

#include <alsa/asoundlib.h>
#include <gtest/gtest.h>

namespace {

/// The numbers of the writes that fail: by an underrun, and because the device was pulled out.
constexpr int kUnderrun = 20, kPulled = 60;
std::atomic<int> writes{0};

} // namespace

// These stand in for the functions of ALSA's library: the only device is "default".
extern "C" {
int snd_card_next(int* card) {
    *card = -1;
    return 0;
}
int snd_ctl_open(snd_ctl_t**, const char* name, int) {
    return std::string(name) == "default" ? 0 : -ENODEV;
}
int snd_ctl_close(snd_ctl_t*) {
    return 0;
}
snd_pcm_state_t snd_pcm_state(snd_pcm_t*) {
    return writes == kUnderrun ? SND_PCM_STATE_XRUN : SND_PCM_STATE_PREPARED;
}
snd_pcm_sframes_t snd_pcm_writei(snd_pcm_t*, const void*, snd_pcm_uframes_t frames) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const int number = ++writes;
    return number == kUnderrun ? -EPIPE
           : number == kPulled ? -ENODEV
                               : static_cast<snd_pcm_sframes_t>(frames);
}
}

namespace {

TEST(AlsaDevice, PlaysOnAfterAnUnderrunAndHasGoneAfterAnError) {
    struct Silence : kits::AudioSource {
        void Play(float*, float*, uint32, bigtime_t) noexcept override {}
        void Await(uint32) noexcept override {}
    } silence;
    const test::TemporaryFolder folder;
    folder.Write("alsa.conf", "pcm.default { type null }");
    // The path is relative because ALSA splits the variable at blanks.
    const test::CurrentFolder inside(folder.Path());
    const test::EnvironmentVariable path("ALSA_CONFIG_PATH", "alsa.conf");
    const auto device = kits::OpenRtAudioDevice(kits::AudioSystem::Alsa);
    ASSERT_TRUE(device) << device.Fault().text;
    ASSERT_TRUE((*device)->Start(silence));
    while (!(*device)->HasGone())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(writes, kPulled);
}

} // namespace
