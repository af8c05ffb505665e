// SPDX-License-Identifier: GPL-3.0-or-later
// What a view tells screen readers while it changes.
#include "kits/interface/backends/ViewWidget.h"

#include <QAccessible>
#include <utility>

namespace kits {

namespace {

/// Stands for the view itself among the indices of its parts, as in the toolkit's events.
constexpr int kWhole = -1;

void Send(QAccessibleEvent&& event, int index) {
    event.setChild(index);
    QAccessible::updateAccessibility(&event);
}

/// Sends events about the differences between two descriptions of one thing.
void SendChanges(QWidget* widget, int index, const AccessibleThing& before,
                 const AccessibleThing& now) {
    if (now.name != before.name)
        Send(QAccessibleEvent(widget, QAccessible::NameChanged), index);
    if (now.number && (!before.number || before.number->value != now.number->value))
        Send(QAccessibleValueChangeEvent(widget, now.number->value), index);
    if (now.description != before.description)
        Send(QAccessibleEvent(widget, QAccessible::DescriptionChanged), index);
    if (now.role == AccessibleRole::Switch && now.on != before.on) {
        QAccessible::State changed;
        changed.checked = true;
        Send(QAccessibleStateChangeEvent(widget, changed), index);
    }
}

int ChosenPart(const BView& view) {
    for (std::size_t i = 0; i < view.CountParts(); i++) {
        if (view.DescribePart(i).chosen)
            return static_cast<int>(i);
    }
    return kWhole;
}

AccessibleThing Description(const BView& view, int index) {
    return index == kWhole ? view.Describe() : view.DescribePart(static_cast<std::size_t>(index));
}

} // namespace

void ViewWidget::TellChanges() {
    if (!QAccessible::isActive())
        return;
    const AccessibleThing whole = view.Describe();
    SendChanges(this, kWhole, std::exchange(told.whole, whole), whole);
    const int chosen = ChosenPart(view);
    const AccessibleThing part = Description(view, chosen);
    const AccessibleThing partBefore = std::exchange(told.part, part);
    const int before = std::exchange(told.chosen, chosen);
    if (before != chosen && before != kWhole && before < static_cast<int>(view.CountParts()))
        Send(QAccessibleEvent(this, QAccessible::SelectionRemove), before);
    if (chosen == kWhole)
        return;
    if (before == chosen)
        SendChanges(this, chosen, partBefore, part);
    // A view that scrolls may show another thing at the same index.
    if (before == chosen && part.name == partBefore.name)
        return;
    Send(QAccessibleEvent(this, QAccessible::SelectionAdd), chosen);
    if (hasFocus())
        Send(QAccessibleEvent(this, QAccessible::Focus), chosen);
}

void ViewWidget::TellChosen() {
    if (!QAccessible::isActive() || !hasFocus())
        return;
    told = {view.Describe(), {}, kWhole};
    TellChanges();
}

} // namespace kits
