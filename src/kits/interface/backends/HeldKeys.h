// SPDX-License-Identifier: GPL-3.0-or-later
// The keys that are down, wherever the keyboard's focus goes meanwhile.
#pragma once

#include "kits/interface/backends/WindowWidget.h"

#include <QObject>
#include <QPointer>
#include <map>

class QKeyEvent;

namespace kits {

/// Follows each key of the keyboard from its press to its release: what a key does until it is let
/// go belongs to the place that it was pressed in. A field that gets the focus while a key is held
/// gets none of its repeats, and a window is told of the release of every key that it took, even if
/// a field or a menu has the focus by then. Tab alone goes on with the focus. Window thread.
class HeldKeys : public QObject {
  public:
    /// Returns the one of the running application.
    static HeldKeys& Instance();

    /// Notes that the window has taken the press of the key at that place.
    void Take(quint32 place, WindowWidget& window) { keys[place].window = &window; }

    /// True while a key with that code of the toolkit is down.
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

/// Has the X server tell of no releases while a key is only held; where there is none, nothing.
/// The toolkit recognises a repeat by the press that follows its release, and takes it for two true
/// events where the press comes a moment later.
void KeepRepeatsFromReleasing();

/// True where the X server says that the key at that place of the keyboard is up; false where there
/// is no X server.
bool IsUp(quint32 place);

} // namespace kits
