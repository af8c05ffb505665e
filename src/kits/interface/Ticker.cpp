// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/Ticker.h"

#include "kits/interface/View.h"
#include "kits/interface/backends/ViewWidget.h"

#include <QTimer>
#include <algorithm>
#include <utility>

namespace kits {

Ticker::Ticker(const BView& view, bigtime_t interval, std::function<void()> tick)
    : timer(std::make_unique<QTimer>()) {
    const QWidget& widget = view.Widget();
    QObject::connect(timer.get(), &QTimer::timeout, timer.get(), [&widget, tick = std::move(tick)] {
        if (widget.isVisible() && !widget.window()->isMinimized())
            tick();
    });
    timer->start(static_cast<int>(std::max<bigtime_t>(interval, 1000) / 1000));
}

Ticker::~Ticker() = default;

} // namespace kits
