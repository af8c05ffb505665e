// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/backends/AccessibleView.h"

#include "kits/interface/Menu.h"
#include "kits/interface/View.h"
#include "kits/interface/backends/AccessibleLine.h"
#include "kits/interface/backends/ViewWidget.h"
#include "kits/interface/backends/WindowWidget.h"

#include <QAccessibleWidget>
#include <QLineEdit>
#include <QPointer>
#include <QScrollArea>
#include <QToolButton>
#include <vector>

namespace kits {

namespace {

QAccessible::Role RoleOf(AccessibleRole role) {
    switch (role) {
    case AccessibleRole::Pane:
        return QAccessible::Client;
    case AccessibleRole::Group:
        return QAccessible::Grouping;
    case AccessibleRole::Picture:
        return QAccessible::Graphic;
    case AccessibleRole::Chart:
        return QAccessible::Chart;
    case AccessibleRole::List:
        return QAccessible::List;
    case AccessibleRole::ListItem:
        return QAccessible::ListItem;
    case AccessibleRole::Button:
        return QAccessible::Button;
    case AccessibleRole::Switch:
        return QAccessible::CheckBox;
    case AccessibleRole::Slider:
        return QAccessible::Slider;
    case AccessibleRole::Meter:
        return QAccessible::ProgressBar;
    case AccessibleRole::Text:
        return QAccessible::StaticText;
    }
    return QAccessible::Client;
}

/// Implements the toolkit's two interfaces for numbers and actions, in the same way for a view and
/// for a part of one. The description is fetched again for each request, because views change.
class Answers : public QAccessibleValueInterface, public QAccessibleActionInterface {
  public:
    virtual BView* View() const = 0;
    virtual std::optional<std::size_t> Part() const = 0;

    AccessibleThing Thing() const {
        const BView* view = View();
        if (!view)
            return {};
        return Part() ? view->DescribePart(*Part()) : view->Describe();
    }

    QVariant currentValue() const override { return Number().value; }
    QVariant maximumValue() const override { return Number().most; }
    QVariant minimumValue() const override { return Number().least; }
    QVariant minimumStepSize() const override { return Number().step; }
    void setCurrentValue(const QVariant& value) override {
        if (BView* view = View(); view && !Number().fixed)
            view->SetNumber(Part(), value.toDouble());
    }

    QStringList actionNames() const override {
        QStringList names;
        const AccessibleThing thing = Thing();
        if (!thing.action.empty())
            names << pressAction();
        if (thing.number && !thing.number->fixed)
            names << increaseAction() << decreaseAction();
        return names;
    }
    void doAction(const QString& name) override {
        BView* view = View();
        if (!view)
            return;
        if (name == pressAction())
            return view->Activate(Part());
        const AccessibleNumber number = Number();
        const double step = name == increaseAction() ? number.step : -number.step;
        view->SetNumber(Part(), number.value + step);
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

  protected:
    void* AnswerTo(QAccessible::InterfaceType type) {
        if (type == QAccessible::ValueInterface && Thing().number)
            return static_cast<QAccessibleValueInterface*>(this);
        const bool acts = !Thing().action.empty() || (Thing().number && !Thing().number->fixed);
        if (type == QAccessible::ActionInterface && acts)
            return static_cast<QAccessibleActionInterface*>(this);
        return nullptr;
    }

  private:
    AccessibleNumber Number() const { return Thing().number.value_or(AccessibleNumber()); }
};

/// The toolkit's interface of a part of a view, such as a row, a point or a key.
class PartInterface : public QAccessibleInterface, public Answers {
  public:
    PartInterface(ViewWidget* widget, std::size_t index) : widget(widget), index(index) {}

    BView* View() const override {
        return widget && index < widget->View().CountParts() ? &widget->View() : nullptr;
    }
    std::optional<std::size_t> Part() const override { return index; }

    bool isValid() const override { return View() != nullptr; }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return widget ? widget->window()->windowHandle() : nullptr; }
    QAccessibleInterface* parent() const override {
        return widget ? QAccessible::queryAccessibleInterface(widget) : nullptr;
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }

    QString text(QAccessible::Text which) const override {
        const AccessibleThing thing = Thing();
        if (which == QAccessible::Name)
            return QString::fromStdString(thing.name);
        if (which == QAccessible::Description || which == QAccessible::Value)
            return QString::fromStdString(thing.description);
        return {};
    }
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override {
        if (!isValid())
            return {};
        return kits::ToQt(Thing().frame).translated(widget->mapToGlobal(QPoint(0, 0)));
    }
    QAccessible::Role role() const override { return RoleOf(Thing().role); }
    QAccessible::State state() const override {
        QAccessible::State state;
        state.invalid = !isValid();
        if (state.invalid)
            return state;
        const AccessibleThing thing = Thing();
        state.invisible = !widget->isVisible();
        state.readOnly = thing.role == AccessibleRole::Text;
        if (state.readOnly)
            return state;
        state.focusable = widget->View().Flags() & B_NAVIGABLE;
        state.focused = thing.chosen && widget->hasFocus();
        state.selectable = true;
        state.selected = thing.chosen;
        return state;
    }
    void* interface_cast(QAccessible::InterfaceType type) override {
        return isValid() ? AnswerTo(type) : nullptr;
    }

  private:
    QPointer<ViewWidget> widget;
    std::size_t index;
};

/// The toolkit's interface of a view. Its parts come before its child views.
class ViewInterface : public QAccessibleWidget, public Answers {
  public:
    explicit ViewInterface(ViewWidget& widget) : QAccessibleWidget(&widget) {}
    ~ViewInterface() override {
        for (const QAccessible::Id part : parts)
            QAccessible::deleteAccessibleInterface(part);
    }

    BView* View() const override {
        auto* found = static_cast<ViewWidget*>(widget());
        return found ? &found->View() : nullptr;
    }
    std::optional<std::size_t> Part() const override { return std::nullopt; }

    QAccessible::Role role() const override { return RoleOf(Thing().role); }
    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        const AccessibleThing thing = Thing();
        state.checkable = thing.role == AccessibleRole::Switch;
        state.checked = state.checkable && thing.on;
        return state;
    }
    QString text(QAccessible::Text which) const override {
        const AccessibleThing thing = Thing();
        if (which == QAccessible::Name && !thing.name.empty())
            return QString::fromStdString(thing.name);
        if (which == QAccessible::Value && !thing.description.empty())
            return QString::fromStdString(thing.description);
        // Screen readers get only numbers as values, so a description in words is also part of the
        // Description text.
        if (const BView* view = View(); view && which == QAccessible::Description) {
            const std::string tip = view->ToolTip();
            const bool both = !tip.empty() && !thing.description.empty();
            return QString::fromStdString(thing.description + (both ? "\n" : "") + tip);
        }
        return QAccessibleWidget::text(which);
    }
    /// The view's own actions, and the toolkit's to give it the keyboard.
    QStringList actionNames() const override {
        return Answers::actionNames() + QAccessibleWidget::actionNames();
    }
    void doAction(const QString& name) override {
        if (name == setFocusAction())
            QAccessibleWidget::doAction(name);
        else
            Answers::doAction(name);
    }
    int childCount() const override { return Parts() + QAccessibleWidget::childCount(); }
    QAccessibleInterface* child(int index) const override {
        if (index < 0 || index >= Parts())
            return QAccessibleWidget::child(index - Parts());
        const auto at = static_cast<std::size_t>(index);
        while (parts.size() <= at)
            parts.push_back(QAccessible::registerAccessibleInterface(
                new PartInterface(static_cast<ViewWidget*>(widget()), parts.size())));
        return QAccessible::accessibleInterface(parts[at]);
    }
    QAccessibleInterface* childAt(int x, int y) const override {
        for (int i = 0; i < Parts(); i++) {
            if (child(i)->rect().contains(x, y))
                return child(i);
        }
        return QAccessibleWidget::childAt(x, y);
    }
    int indexOfChild(const QAccessibleInterface* wanted) const override {
        for (int i = 0; i < Parts(); i++) {
            if (child(i) == wanted)
                return i;
        }
        const int index = QAccessibleWidget::indexOfChild(wanted);
        return index < 0 ? index : index + Parts();
    }
    void* interface_cast(QAccessible::InterfaceType type) override {
        void* answer = View() ? AnswerTo(type) : nullptr;
        return answer ? answer : QAccessibleWidget::interface_cast(type);
    }

  private:
    int Parts() const { return View() ? static_cast<int>(View()->CountParts()) : 0; }

    mutable std::vector<QAccessible::Id> parts;
};

/// Returns the menu field to which a button of the toolkit belongs, if its menu offers choices,
/// else null.
const BMenuField* FieldOf(const QObject* button) {
    const QObject* around = dynamic_cast<const QToolButton*>(button);
    while (around && !dynamic_cast<const ViewWidget*>(around))
        around = around->parent();
    if (!around)
        return nullptr;
    const auto& view = static_cast<const ViewWidget*>(around)->View();
    const auto* field = dynamic_cast<const BMenuField*>(&view);
    return field && field->Menu()->IsRadioMode() ? field : nullptr;
}

/// The toolkit's interface of the button of a menu field. Its value is the chosen item.
class ChoiceInterface : public QAccessibleWidget {
  public:
    explicit ChoiceInterface(QToolButton& button)
        : QAccessibleWidget(&button, QAccessible::ComboBox) {}

    QString text(QAccessible::Text which) const override {
        if (const BMenuField* field = FieldOf(object()); field && which == QAccessible::Value)
            return ToQt(field->Menu()->Choice());
        return QAccessibleWidget::text(which);
    }
    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.hasPopup = true;
        return state;
    }
    QStringList actionNames() const override {
        return QStringList{showMenuAction(), pressAction()} + QAccessibleWidget::actionNames();
    }
    void doAction(const QString& name) override {
        if (name != showMenuAction() && name != pressAction())
            return QAccessibleWidget::doAction(name);
        // Later, because the open menu has an event loop of its own, and the caller waits.
        if (auto* button = dynamic_cast<QToolButton*>(object()))
            QMetaObject::invokeMethod(button, "click", Qt::QueuedConnection);
    }
};

QAccessibleInterface* MakeInterface(const QString&, QObject* object) {
    if (auto* window = dynamic_cast<WindowWidget*>(object))
        return new QAccessibleWidget(window, QAccessible::Window);
    if (FieldOf(object))
        return new ChoiceInterface(*static_cast<QToolButton*>(object));
    // The toolkit's own interface of an area that scrolls reads past its children if a screen
    // reader counts them before a scroll bar vanishes and asks for the last one afterwards.
    if (auto* area = dynamic_cast<QScrollArea*>(object))
        return new QAccessibleWidget(area, QAccessible::Client);
    if (auto* line = dynamic_cast<QLineEdit*>(object))
        return new AccessibleLine(*line);
    auto* widget = dynamic_cast<ViewWidget*>(object);
    return widget && !widget->Content() ? new ViewInterface(*widget) : nullptr;
}

} // namespace

void DescribeViews() {
    QAccessible::installFactory(MakeInterface);
}

} // namespace kits
