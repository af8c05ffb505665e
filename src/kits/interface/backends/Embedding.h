// SPDX-License-Identifier: GPL-3.0-or-later
// A window of ours as the content of another program's.
#pragma once

#include "kits/support/SupportDefs.h"

#include <QObject>
#include <QWidget>

namespace kits {

/// Makes the widget, on an X server, a child of the window `host`, gives that its size, and keeps
/// to the size that others give it, as far as the widget's limits go. A button that is pressed in
/// the widget gives it the keyboard: no window manager does that, and the toolkit leaves it to the
/// owner of the host's window, who does not know the widget. On another display nothing happens.
/// Window thread.
class Embedding : public QObject {
  public:
    Embedding(QWidget& widget, uint32 host);

    /// Takes up the host window's present size. It is to be called some ten times a second.
    void Follow();

  protected:
    bool eventFilter(QObject* receiver, QEvent* event) override;

  private:
    QWidget& widget;
    const uint32 host;
};

} // namespace kits
