// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/Gesture.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointer>
#include <utility>

namespace kits {

namespace {

/// Filters the events of the whole program. One press may pass here several times, for the window,
/// for the widget in it and for that widget's parents, and count each time. This does no harm, as
/// users of the number only compare it.
class Presses : public QObject {
  public:
    /// Returns the instance of the running application.
    static Presses& Instance() {
        static QPointer<Presses> instance;
        if (!instance)
            instance = new Presses(qApp);
        return *instance;
    }

    Gesture present;
    std::function<void()> atEdges;

  protected:
    bool eventFilter(QObject*, QEvent* event) override {
        switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
            Begin(true);
            present.held = true;
            break;
        case QEvent::MouseButtonRelease:
            if (atEdges)
                atEdges();
            [[fallthrough]];
        case QEvent::MouseMove:
            present.held = static_cast<QMouseEvent*>(event)->buttons() != Qt::NoButton;
            break;
        case QEvent::KeyPress:
            Begin(Confirms(static_cast<QKeyEvent*>(event)->key()));
            break;
        default:
            break;
        }
        return false;
    }

  private:
    explicit Presses(QObject* application) : QObject(application) {
        application->installEventFilter(this);
    }
    void Begin(bool another) {
        if (atEdges)
            atEdges();
        if (another)
            present.number++;
    }
    static bool Confirms(int key) {
        return key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Tab ||
               key == Qt::Key_Backtab;
    }
};

} // namespace

Gesture PresentGesture() {
    return Presses::Instance().present;
}

void AtGestureEdges(std::function<void()> notify) {
    Presses::Instance().atEdges = std::move(notify);
}

} // namespace kits
