// SPDX-License-Identifier: GPL-3.0-or-later
// A window of this program embedded into a window of another one.
#pragma once

#include "kits/support/SupportDefs.h"

#include <QObject>
#include <QSize>
#include <QWidget>
#include <QWindow>
#include <memory>
#include <utility>

namespace kits {

/// On an X server, makes the widget a child of the window `host`, resizes the host to the widget's
/// size, and from then on resizes the widget to the host's size, within the widget's limits. A
/// press of a mouse button in the widget gives it the keyboard focus: no window manager does that
/// for an embedded window, and the toolkit leaves it to the owner of the host window, who does not
/// know the widget. The program's dialogs stay above the host's window. The widget's limits become
/// the size hints of the host, which those who size that window may read. On another kind of
/// display nothing happens. Window thread.
class Embedding : public QObject {
  public:
    Embedding(QWidget& widget, uint32 host);

    /// Resizes the widget to the host window's present size. It is to be called about ten times a
    /// second.
    void Follow();

  protected:
    bool eventFilter(QObject* receiver, QEvent* event) override;

  private:
    void TellLimits();
    void PutAboveHost(QWindow& dialog);

    QWidget& widget;
    const uint32 host;
    /// The limits that the host has, in pixels of the widget.
    std::pair<QSize, QSize> told;
    /// The window of the other program that the host is in; null until a dialog is shown.
    std::unique_ptr<QWindow> hostTop;
};

} // namespace kits
