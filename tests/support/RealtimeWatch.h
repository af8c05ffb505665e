// SPDX-License-Identifier: GPL-3.0-or-later
// Counts what code inside a RealtimeSection must not do.
#pragma once

namespace test {

/// While it lives, every allocation, release and lock of a mutex by a thread that is inside a
/// vexa::RealtimeSection is a fault. One at a time. Link RealtimeWatch.cpp.
class RealtimeWatch {
  public:
    RealtimeWatch();
    ~RealtimeWatch();
    int Faults() const;
};

} // namespace test
