#include "kits/interface/backends/HeldKeys.h"

#include <QGuiApplication>
// Last, for its macros.
#include <X11/XKBlib.h>

namespace kits {

void KeepRepeatsFromReleasing() {
    const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 && x11->display())
        ::XkbSetDetectableAutoRepeat(x11->display(), True, nullptr);
}

} // namespace kits
