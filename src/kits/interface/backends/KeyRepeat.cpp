// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/backends/HeldKeys.h"

#include <QGuiApplication>
// Included last because of its macros.
#include <X11/XKBlib.h>

namespace kits {

void KeepRepeatsFromReleasing() {
    const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 && x11->display())
        ::XkbSetDetectableAutoRepeat(x11->display(), True, nullptr);
}

bool IsUp(quint32 place) {
    const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11 || !x11->display() || place > 255)
        return false;
    char down[32] = {};
    ::XQueryKeymap(x11->display(), down);
    return (down[place / 8] >> (place % 8) & 1) == 0;
}

} // namespace kits
