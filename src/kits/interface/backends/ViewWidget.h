// SPDX-License-Identifier: GPL-3.0-or-later
// The toolkit's side of a view.
#pragma once

#include "kits/interface/View.h"

#include <QElapsedTimer>
#include <QPainter>
#include <QTimer>
#include <QWidget>
#include <memory>

namespace kits {

inline QColor ToQt(rgb_color color) {
    return {color.red, color.green, color.blue, color.alpha};
}

inline QString ToQt(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// Returns the text to set as a tool tip so that it shows exactly `words`, in lines of readable
/// length. Markup in them is escaped, because they may come from a stranger's comment or a file
/// name.
QString TipText(const QString& words);

/// Returns the pixels that a BRect, whose edges are inclusive, covers.
inline QRect ToQt(BRect rect) {
    const QPointF leftTop(rect.left, rect.top);
    return {leftTop.toPoint(),
            QPointF(double(rect.right) + 1, double(rect.bottom) + 1).toPoint() - QPoint(1, 1)};
}

QFont ToQt(const BFont& font);

/// Returns the sum of B_SHIFT_KEY and the like.
uint32 FromQt(Qt::KeyboardModifiers modifiers);
KeyPress FromQt(const QKeyEvent& event);

/// Returns an image that shares the bitmap's bits, so the bitmap must outlive it.
QImage ToQt(const BBitmap& bitmap);

/// Forwards the toolkit's events to the view's hooks.
class ViewWidget : public QWidget {
  public:
    explicit ViewWidget(BView& view);

    BView& View() { return view; }
    const BView& View() const { return view; }
    /// Returns the painter while the view draws, otherwise null.
    QPainter* Painter() { return painter; }
    BPoint Pointer() const { return pointer; }
    uint32 Buttons() const { return buttons; }
    uint32 Modifiers() const { return modifiers; }
    int32 Clicks() const { return clicks; }
    bool FocusCameByKeys() const { return focusCameByKeys; }
    /// Sets the toolkit widget that fills a control; it has the focus in place of the view.
    void SetContent(QWidget* next);
    QWidget* Content() const { return content; }
    void StartAnimation();
    /// Tells screen readers, if there are any, how the view and its chosen part differ from what
    /// they were told last.
    void TellChanges();

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void Note(const QMouseEvent& event);
    void Press(const QMouseEvent& event, int32 count);
    void EndPress();
    /// Returns true if the view gets all moves of the pointer while a button is held
    /// (B_KEEPS_POINTER).
    bool Keeps() const;
    bool Contains(BPoint point) const;
    void Leave();
    void Animate();
    /// Tells screen readers which part is the chosen one if the view still has the keyboard.
    void TellChosen();

    BView& view;
    QWidget* content = nullptr;
    QPainter* painter = nullptr;
    BPoint pointer;
    uint32 buttons = 0;
    uint32 modifiers = 0;
    int32 clicks = 0;
    bool focusCameByKeys = false;
    /// Runs while an animation does. Created by the first StartAnimation.
    std::unique_ptr<QTimer> frames;
    QElapsedTimer sinceFrame;
    /// True if the pointer was inside at the last event.
    bool inside = false;
    /// True from the press of a button until all are released.
    bool pressed = false;
    /// What screen readers were told last. `chosen` is the index of `part`, -1 if there was none.
    struct {
        AccessibleThing whole, part;
        int chosen = -1;
    } told;
};

} // namespace kits
