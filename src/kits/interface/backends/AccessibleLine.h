// SPDX-License-Identifier: GPL-3.0-or-later
// Describes a field with one line of text to screen readers.
#pragma once

#include <QAccessibleWidget>
#include <QLineEdit>

namespace kits {

/// The accessibility interface of a field with one line of text. It takes the place of the
/// toolkit's own, which loops for ever if it is asked for the word or the sentence at the end of
/// the text (Qt 6.4), as screen readers do when the cursor gets there. Window thread.
class AccessibleLine : public QAccessibleWidget,
                       public QAccessibleTextInterface,
                       public QAccessibleEditableTextInterface {
  public:
    explicit AccessibleLine(QLineEdit& line);

    void* interface_cast(QAccessible::InterfaceType type) override;
    QAccessible::State state() const override;
    QString text(QAccessible::Text which) const override;
    void setText(QAccessible::Text which, const QString& text) override;

    int characterCount() const override;
    QString text(int start, int end) const override;
    QString textAtOffset(int offset, QAccessible::TextBoundaryType boundary, int* start,
                         int* end) const override;
    QString attributes(int offset, int* start, int* end) const override;

    int cursorPosition() const override;
    void setCursorPosition(int position) override;
    int selectionCount() const override;
    void selection(int index, int* start, int* end) const override;
    void addSelection(int start, int end) override;
    void removeSelection(int index) override;
    void setSelection(int index, int start, int end) override;

    QRect characterRect(int offset) const override;
    int offsetAtPoint(const QPoint& point) const override;
    void scrollToSubstring(int start, int end) override;

    void deleteText(int start, int end) override;
    void insertText(int offset, const QString& text) override;
    void replaceText(int start, int end, const QString& text) override;

  private:
    QLineEdit& Line() const;
};

} // namespace kits
