// SPDX-License-Identifier: GPL-3.0-or-later
// Counts operations that are forbidden inside a RealtimeSection.
#pragma once

namespace test {

/// While the watch exists, every allocation, deallocation and mutex lock by a thread inside a
/// vexa::RealtimeSection counts as a fault. Only one may exist at a time. Link RealtimeWatch.cpp.
class RealtimeWatch {
  public:
    RealtimeWatch();
    ~RealtimeWatch();
    int Faults() const;
};

} // namespace test
