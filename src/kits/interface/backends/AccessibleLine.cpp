// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/backends/AccessibleLine.h"

#include <QFontMetrics>

namespace kits {

AccessibleLine::AccessibleLine(QLineEdit& line)
    : QAccessibleWidget(&line, QAccessible::EditableText) {}

QLineEdit& AccessibleLine::Line() const {
    return static_cast<QLineEdit&>(*object());
}

void* AccessibleLine::interface_cast(QAccessible::InterfaceType type) {
    if (type == QAccessible::TextInterface)
        return static_cast<QAccessibleTextInterface*>(this);
    if (type == QAccessible::EditableTextInterface)
        return static_cast<QAccessibleEditableTextInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
}

QAccessible::State AccessibleLine::state() const {
    QAccessible::State state = QAccessibleWidget::state();
    state.editable = !Line().isReadOnly();
    state.readOnly = Line().isReadOnly();
    state.selectableText = true;
    return state;
}

QString AccessibleLine::text(QAccessible::Text which) const {
    return which == QAccessible::Value ? Line().text() : QAccessibleWidget::text(which);
}

void AccessibleLine::setText(QAccessible::Text which, const QString& text) {
    if (which != QAccessible::Value)
        return QAccessibleWidget::setText(which, text);
    if (!Line().isReadOnly())
        Line().setText(text);
}

int AccessibleLine::characterCount() const {
    return static_cast<int>(Line().text().size());
}

QString AccessibleLine::text(int start, int end) const {
    return Line().text().mid(start, end - start);
}

QString AccessibleLine::textAtOffset(int offset, QAccessible::TextBoundaryType boundary, int* start,
                                     int* end) const {
    // The toolkit's search does not end if it begins behind the last character. -1 is that place.
    if (offset != -1 && offset != characterCount())
        return QAccessibleTextInterface::textAtOffset(offset, boundary, start, end);
    *start = *end = characterCount();
    return {};
}

QString AccessibleLine::attributes(int offset, int* start, int* end) const {
    *start = *end = offset;
    return {};
}

int AccessibleLine::cursorPosition() const {
    return Line().cursorPosition();
}

void AccessibleLine::setCursorPosition(int position) {
    Line().setCursorPosition(position);
}

int AccessibleLine::selectionCount() const {
    return Line().hasSelectedText() ? 1 : 0;
}

void AccessibleLine::selection(int index, int* start, int* end) const {
    const bool any = index == 0 && Line().hasSelectedText();
    *start = any ? Line().selectionStart() : 0;
    *end = any ? Line().selectionEnd() : 0;
}

void AccessibleLine::addSelection(int start, int end) {
    setSelection(0, start, end);
}

void AccessibleLine::removeSelection(int index) {
    if (index == 0)
        Line().deselect();
}

void AccessibleLine::setSelection(int index, int start, int end) {
    if (index == 0)
        Line().setSelection(start, end - start);
}

QRect AccessibleLine::characterRect(int offset) const {
    if (offset < 0 || offset >= characterCount())
        return {};
    const QFontMetrics metrics(Line().font());
    const QRect cursor = Line().inputMethodQuery(Qt::ImCursorRectangle).toRect();
    const auto before = [&](int place) { return metrics.horizontalAdvance(text(0, place)); };
    const int left = cursor.center().x() + before(offset) - before(cursorPosition());
    const QRect place(left, cursor.top(), before(offset + 1) - before(offset), cursor.height());
    return place.translated(Line().mapToGlobal(QPoint()));
}

int AccessibleLine::offsetAtPoint(const QPoint& point) const {
    return Line().cursorPositionAt(Line().mapFromGlobal(point));
}

void AccessibleLine::scrollToSubstring(int, int end) {
    setCursorPosition(end);
}

void AccessibleLine::deleteText(int start, int end) {
    replaceText(start, end, {});
}

void AccessibleLine::insertText(int offset, const QString& text) {
    replaceText(offset, offset, text);
}

void AccessibleLine::replaceText(int start, int end, const QString& text) {
    if (!Line().isReadOnly())
        Line().setText(Line().text().replace(start, end - start, text));
}

} // namespace kits
