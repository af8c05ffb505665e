// SPDX-License-Identifier: GPL-3.0-or-later
// A window of ours as the content of another program's.
#pragma once

#include "kits/support/SupportDefs.h"

#include <QObject>
#include <QWidget>

namespace kits {

/// On an X server: makes the widget a child of the window `host`, gives that its size, and keeps to
/// the size that others give it, as far as the widget's limits go. A button that is pressed in it
/// gives it the keyboard, which no window manager would: the toolkit leaves that to the owner of
/// the host's window, who knows of nothing. On another display nothing happens. Window thread.
class Embedding : public QObject {
  public:
    Embedding(QWidget& widget, uint32 host);

    /// To be called some ten times a second.
    void Follow();

  protected:
    bool eventFilter(QObject* receiver, QEvent* event) override;

  private:
    QWidget& widget;
    const uint32 host;
};

} // namespace kits
