// SPDX-License-Identifier: GPL-3.0-or-later
// A ticker is for what moves more often than a window's pulse.
#pragma once

#include "kits/support/SupportDefs.h"

#include <functional>
#include <memory>

class BView;
class QTimer;

namespace kits {

/// Calls a function again and again while a view of a window that is shown is shown itself, also
/// while an alert waits. Window thread.
class Ticker {
  public:
    /// Calls `tick` every `interval` microseconds, at least 1000. The view outlives the ticker.
    Ticker(const BView& view, bigtime_t interval, std::function<void()> tick);
    ~Ticker();
    Ticker(const Ticker&) = delete;
    Ticker& operator=(const Ticker&) = delete;

  private:
    std::unique_ptr<QTimer> timer;
};

} // namespace kits
