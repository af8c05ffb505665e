// SPDX-License-Identifier: GPL-3.0-or-later
// Repeats tests in real time, which a busy machine may disturb.
#pragma once

#include <cstdio>
#include <functional>
#include <stdexcept>

namespace test {

/// Thrown to end an attempt that can no longer succeed.
class AttemptFails : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Returns true if one of five attempts succeeds: data that a server or a device loses on a busy
/// machine is not the program's fault.
inline bool SucceedsInTheEnd(const std::function<bool()>& attempt) {
    for (int i = 0; i < 5; i++) {
        try {
            if (attempt())
                return true;
        } catch (const AttemptFails& fault) {
            std::printf("attempt %d: %s\n", i + 1, fault.what());
        }
    }
    return false;
}

} // namespace test
