// SPDX-License-Identifier: GPL-3.0-or-later
// Tracks the keys that are down, independently of the keyboard focus.
#pragma once

#include "kits/interface/backends/WindowWidget.h"

#include <QObject>
#include <QPointer>
#include <map>

class QKeyEvent;

namespace kits {

/// Follows each key from its press to its release. Until its release a key belongs to the widget or
/// window that got its press: a field that gets the focus while a key is held gets none of its
/// repeats, and a window is told of the release of every key that it took, even if a field or a
/// menu has the focus by then. Only the repeats of Tab follow the focus. Window thread.
class HeldKeys : public QObject {
  public:
    /// Returns the instance of the running application.
    static HeldKeys& Instance();

    /// Notes that the window has taken the press of the key at `place`, the key's number on the
    /// keyboard.
    void Take(quint32 place, WindowWidget& window) { keys[place].window = &window; }

    /// Returns true while a key with this toolkit key code is down.
    bool IsDown(int code) const;

  protected:
    bool eventFilter(QObject* receiver, QEvent* event) override;

  private:
    struct Key {
        /// The widget that had the focus when the key was pressed.
        QPointer<QWidget> focus;
        /// The window that took the press, if one did.
        QPointer<WindowWidget> window;
        int code = 0;
    };

    explicit HeldKeys(QObject* application);
    bool Press(QKeyEvent& event);
    bool Release(const QKeyEvent& event);

    std::map<quint32, Key> keys;
};

/// Makes the X server send no releases while a key repeats; does nothing without an X server.
/// Otherwise the toolkit has to recognise a repeat by the press that follows its release at once,
/// and if that press is delayed it takes the two for a true release and a new press.
void KeepRepeatsFromReleasing();

/// Returns true if the X server reports that the key at that place of the keyboard is up, and false
/// without an X server.
bool IsUp(quint32 place);

} // namespace kits
