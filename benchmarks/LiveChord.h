// SPDX-License-Identifier: GPL-3.0-or-later
// The notes that live benchmarks play, and the resources that playing uses.
#pragma once

#include "live/LivePlay.h"

#include <ctime>
#include <filesystem>
#include <fstream>

namespace bench {

/// The resources of a process.
struct Holdings {
    /// Resident memory in kilobytes.
    long memory = 0;
    long threads = 0;
    long descriptors = 0;
    /// Processor time of all threads in seconds.
    double processor = 0;
};

inline long Entries(const std::string& folder) {
    const std::filesystem::directory_iterator all(folder);
    return std::distance(begin(all), end(all));
}

inline Holdings Look(pid_t process) {
    const std::string folder = "/proc/" + std::to_string(process);
    Holdings holdings;
    std::ifstream status(folder + "/status");
    for (std::string word; status >> word;) {
        if (word == "VmRSS:")
            status >> holdings.memory;
    }
    holdings.threads = Entries(folder + "/task");
    holdings.descriptors = Entries(folder + "/fd");
    clockid_t clock = 0;
    timespec used{};
    if (::clock_getcpuclockid(process, &clock) == 0 && ::clock_gettime(clock, &used) == 0)
        holdings.processor = double(used.tv_sec) + 1e-9 * double(used.tv_nsec);
    return holdings;
}

/// Returns a script of 20 voices, with 20 controller changes and 2 to 3 note changes a second.
inline std::vector<test::Player::Message> Chord(std::uint32_t seconds) {
    std::vector<test::Player::Message> script;
    for (std::uint8_t note = 40; note < 60; note++)
        script.push_back({1000, {0x90, note, 90}});
    for (std::uint32_t tick = 1; tick < 20 * seconds; tick++) {
        const std::uint32_t frame = 1000 + 2400 * tick;
        script.push_back({frame, {0xB0, 1, std::uint8_t(tick % 128)}});
        if (tick % 8 == 0) {
            const auto note = std::uint8_t(40 + tick / 8 % 20);
            script.push_back({frame, {0x80, note, 0}});
            script.push_back({frame + 600, {0x90, note, 90}});
        }
    }
    return script;
}

} // namespace bench
