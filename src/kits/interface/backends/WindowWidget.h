// SPDX-License-Identifier: GPL-3.0-or-later
// The toolkit's side of a window.
#pragma once

#include "kits/interface/Window.h"

#include <QPointer>
#include <QTimer>
#include <QWidget>

namespace kits {

/// Forwards the toolkit's events to the window.
class WindowWidget : public QWidget {
  public:
    WindowWidget(BWindow& window, Qt::WindowFlags flags);

    BWindow& Window() { return window; }
    QTimer& PulseTimer() { return pulse; }
    void SendKey(uint32 what, const QKeyEvent& event);
    /// Gives the keyboard, which `field` has, to the window. The next Tab goes on from the field.
    void TakeKeyboardFrom(QWidget& field);
    /// Makes the next Tab begin with the first control again.
    void ForgetField() { left = nullptr; }

  protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    void changeEvent(QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    void Pulse();

    BWindow& window;
    QTimer pulse;
    /// The field that gave the keyboard back; null after another control has had it.
    QPointer<QWidget> left;
};

} // namespace kits
