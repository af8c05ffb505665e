// The toolkit's side of a window.
#pragma once

#include "kits/interface/Window.h"

#include <QTimer>
#include <QWidget>
#include <set>

namespace kits {

/// Forwards the toolkit's events to the window.
class WindowWidget : public QWidget {
  public:
    WindowWidget(BWindow& window, Qt::WindowFlags flags);

    BWindow& Window() { return window; }
    QTimer& PulseTimer() { return pulse; }

  protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    bool eventFilter(QObject* receiver, QEvent* event) override;
    void SendKey(uint32 what, const QKeyEvent& event);
    void Pulse();

    BWindow& window;
    QTimer pulse;
    /// Places of the keys that this window was told of and that have not been let go of since.
    std::set<quint32> down;
};

} // namespace kits
