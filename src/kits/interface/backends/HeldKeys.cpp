// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/backends/HeldKeys.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWindow>
#include <algorithm>

namespace kits {

HeldKeys::HeldKeys(QObject* application) : QObject(application) {
    application->installEventFilter(this);
    KeepRepeatsFromReleasing();
    // A window that closes at a press misses the release.
    connect(qApp, &QGuiApplication::focusWindowChanged, this,
            [this] { std::erase_if(keys, [](const auto& key) { return IsUp(key.first); }); });
}

HeldKeys& HeldKeys::Instance() {
    static QPointer<HeldKeys> instance;
    if (!instance)
        instance = new HeldKeys(qApp);
    return *instance;
}

bool HeldKeys::eventFilter(QObject* receiver, QEvent* event) {
    switch (event->type()) {
    case QEvent::ApplicationStateChange:
        // Another program sees the releases.
        if (QGuiApplication::applicationState() != Qt::ApplicationActive)
            keys.clear();
        return false;
    case QEvent::ShortcutOverride:
    case QEvent::KeyPress:
        // The toolkit's window comes first, then the widget in it.
        return receiver->isWindowType() && Press(static_cast<QKeyEvent&>(*event));
    case QEvent::KeyRelease:
        return receiver->isWindowType() && Release(static_cast<QKeyEvent&>(*event));
    default:
        return false;
    }
}

/// True where the press is to be kept from where the focus is.
bool HeldKeys::Press(QKeyEvent& event) {
    // A key that is simulated may have no place.
    const quint32 place = event.nativeScanCode();
    if (place == 0)
        return false;
    const auto held = keys.find(place);
    if (held == keys.end()) {
        if (event.type() == QEvent::KeyPress)
            keys[place] = {QApplication::focusWidget(), nullptr, event.key()};
        return false;
    }
    if (!held->second.window && (held->second.focus == QApplication::focusWidget() ||
                                 event.key() == Qt::Key_Tab || event.key() == Qt::Key_Backtab))
        return false;
    // So that it is no shortcut either.
    event.accept();
    return true;
}

bool HeldKeys::IsDown(int code) const {
    return std::any_of(keys.begin(), keys.end(),
                       [code](const auto& key) { return key.second.code == code; });
}

bool HeldKeys::Release(const QKeyEvent& event) {
    const auto held = keys.find(event.nativeScanCode());
    if (held == keys.end())
        return false;
    WindowWidget* const window = held->second.window;
    if (!event.isAutoRepeat()) {
        keys.erase(held);
        if (window)
            window->SendKey(B_KEY_UP, event);
    }
    return window != nullptr;
}

} // namespace kits
