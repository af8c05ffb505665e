// SPDX-License-Identifier: GPL-3.0-or-later
// Tests in real time, which a busy machine may disturb.
#pragma once

#include <cstdio>
#include <functional>
#include <stdexcept>

namespace test {

/// Ends an attempt that cannot succeed any more.
class AttemptFails : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Whether one of five attempts succeeds: what a busy machine makes a server or a device lose is
/// not ours to judge.
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
