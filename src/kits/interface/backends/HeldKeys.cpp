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
    // A window that closes on a press misses the release, so keys that are up by now are removed
    // here.
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
        // Another program gets the releases from now on.
        if (QGuiApplication::applicationState() != Qt::ApplicationActive)
            keys.clear();
        return false;
    case QEvent::ShortcutOverride:
    case QEvent::KeyPress:
        // Each event passes here for the toolkit's window first, then for the focused widget; only
        // the first counts.
        return receiver->isWindowType() && Press(static_cast<QKeyEvent&>(*event));
    case QEvent::KeyRelease:
        return receiver->isWindowType() && Release(static_cast<QKeyEvent&>(*event));
    default:
        return false;
    }
}

/// Returns true if the press must not reach the focused widget.
bool HeldKeys::Press(QKeyEvent& event) {
    // A simulated key press may have no place on the keyboard.
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
    // Accepting a ShortcutOverride prevents the key from triggering a shortcut.
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
