// SPDX-License-Identifier: GPL-3.0-or-later
// A timer for displays that change more often than a window's pulse.
#pragma once

#include "kits/support/SupportDefs.h"

#include <functional>
#include <memory>

class BView;
class QTimer;

namespace kits {

/// Calls a function periodically while a view and its window are shown, also while an alert is
/// open. Window thread.
class Ticker {
  public:
    /// Calls `tick` every `interval` microseconds, at least 1000. The view must outlive the ticker.
    Ticker(const BView& view, bigtime_t interval, std::function<void()> tick);
    ~Ticker();
    Ticker(const Ticker&) = delete;
    Ticker& operator=(const Ticker&) = delete;

  private:
    std::unique_ptr<QTimer> timer;
};

} // namespace kits
