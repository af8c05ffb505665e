// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/Menu.h"

#include "kits/interface/Colors.h"
#include "kits/interface/Control.h"
#include "kits/interface/Window.h"
#include "kits/interface/backends/ViewWidget.h"

#include <QActionGroup>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QStyleOption>
#include <QToolButton>
#include <cmath>

namespace {

// The following are in pixels.

/// The room for the arrow and the frame.
constexpr float kArrowWidth = 13;
constexpr float kLeftMargin = 4;
constexpr int kWidestLabel = 480;

/// A button that draws its title at the left and an arrow at the right.
class Opener : public QToolButton {
  protected:
    void paintEvent(QPaintEvent*) override {
        QStyleOptionToolButton option;
        initStyleOption(&option);
        option.text.clear();
        QPainter painter(this);
        style()->drawComplexControl(QStyle::CC_ToolButton, &option, &painter, this);
        painter.setPen(property("onDark").toBool() ? QColor(230, 230, 230)
                                                   : palette().color(QPalette::ButtonText));
        painter.setFont(font());
        const QRectF room = QRectF(rect()).adjusted(kLeftMargin, 0, -kArrowWidth, 0);
        painter.drawText(room, Qt::AlignVCenter | Qt::AlignLeft, text());
        const QPointF middle(width() - kArrowWidth / 2.0, height() / 2.0 + 0.5);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(property("onDark").toBool()
                             ? QColor(200, 204, 214)
                             : kits::ToQt(kits::PresentControlColors().arrow));
        painter.drawPolygon(QPolygonF(
            {middle + QPointF(-3.5, -2), middle + QPointF(3.5, -2), middle + QPointF(0, 2.5)}));
    }
};

/// Returns an item's label for the toolkit's menu. A label that is too long, such as a file name,
/// is shortened in the middle. The item's keys follow in a column of their own.
QString ShownLabel(const BMenuItem& item, const QMenu& toolkit) {
    const QFontMetrics metrics(toolkit.font());
    // Escaped, because a single & would mark the next letter as a shortcut.
    const QString label =
        metrics.elidedText(kits::ToQt(item.Label()), Qt::ElideMiddle, kWidestLabel)
            .replace("&", "&&");
    return item.Keys().empty() ? label : label + '\t' + kits::ToQt(item.Keys());
}

} // namespace

BMenuItem::BMenuItem(const char* label, BMessage* message, char)
    : BInvoker(message), label(label) {}

BMenuItem::BMenuItem(BMenu* below) : BInvoker(nullptr), label(below->Name()), submenu(below) {}

BMenuItem::~BMenuItem() = default;

void BMenuItem::SetMarked(bool mark) {
    if (mark && menu && menu->IsRadioMode()) {
        for (const std::shared_ptr<BMenuItem>& item : menu->items)
            item->marked = false;
    }
    marked = mark;
    if (menu)
        menu->Changed();
}

void BMenuItem::Choose() {
    if (menu && menu->IsRadioMode())
        SetMarked(true);
    Invoke();
}

BMenu::BMenu(const char* name, menu_layout) : name(name) {}

BMenu::~BMenu() = default;

void BMenu::SetName(std::string_view next) {
    name = next;
    Changed();
}

void BMenu::AddItem(BMenuItem* item) {
    item->menu = this;
    items.emplace_back(item);
}

void BMenu::RemoveAll() {
    items.clear();
    Changed();
}

BMenuItem* BMenu::ItemAt(std::size_t index) const {
    return index < items.size() ? items[index].get() : nullptr;
}

BMenuItem* BMenu::FindItem(std::string_view label) const {
    for (const std::shared_ptr<BMenuItem>& item : items) {
        if (item->Label() == label)
            return item.get();
    }
    return nullptr;
}

BMenuItem* BMenu::FindItem(uint32 command) const {
    for (const std::shared_ptr<BMenuItem>& item : items) {
        if (item->Message() && item->Message()->what == command)
            return item.get();
    }
    return nullptr;
}

BMenuItem* BMenu::FindMarked() const {
    for (const std::shared_ptr<BMenuItem>& item : items) {
        if (item->IsMarked())
            return item.get();
    }
    return nullptr;
}

void BMenu::SetTargetForItems(const BHandler* handler) {
    SetTargetForItems(BMessenger(handler));
}

void BMenu::SetTargetForItems(const BMessenger& messenger) {
    for (const std::shared_ptr<BMenuItem>& item : items)
        item->SetTarget(messenger);
}

std::string BMenu::Title() const {
    const BMenuItem* item = labelFromMarked ? FindMarked() : nullptr;
    return item ? item->Label() : name;
}

std::string BMenu::Choice() const {
    const BMenuItem* item = FindMarked();
    return item ? item->Label() : usual;
}

void BMenu::Changed() const {
    if (observer)
        observer();
}

void BMenu::Fill(QMenu& toolkit) {
    if (opening)
        opening(*this);
    toolkit.clear();
    qDeleteAll(toolkit.findChildren<QMenu*>(Qt::FindDirectChildrenOnly));
    // In radio mode the items form a group, so that the mark looks like one of several
    // alternatives.
    delete toolkit.findChild<QActionGroup*>();
    QActionGroup* group = nullptr;
    if (radio) {
        group = new QActionGroup(&toolkit);
        group->setExclusive(true);
    }
    const BMenuItem* usualItem = FindMarked() ? nullptr : FindItem(usual);
    for (const std::shared_ptr<BMenuItem>& item : items) {
        if (dynamic_cast<const BSeparatorItem*>(item.get())) {
            toolkit.addSeparator();
            continue;
        }
        if (BMenu* below = item->Submenu()) {
            QMenu* beside = toolkit.addMenu(ShownLabel(*item, toolkit));
            beside->setFont(toolkit.font());
            below->Fill(*beside);
            continue;
        }
        QAction* action = toolkit.addAction(ShownLabel(*item, toolkit));
        const bool isMarked = item->IsMarked() || item.get() == usualItem;
        action->setCheckable(radio || isMarked);
        action->setActionGroup(group);
        action->setChecked(isMarked);
        // The keys go on from here.
        if (radio && isMarked)
            toolkit.setActiveAction(action);
        // The item may be removed while the toolkit's menu is open.
        QObject::connect(action, &QAction::triggered, action, [item = std::weak_ptr(item)] {
            if (const auto chosen = item.lock())
                chosen->Choose();
        });
    }
}

BPopUpMenu::BPopUpMenu(const char* name, bool radioMode, bool autoRename, menu_layout layout)
    : BMenu(name, layout) {
    SetRadioMode(radioMode);
    SetLabelFromMarked(autoRename);
}

BMenuField::BMenuField(BRect frame, const char* name, const char* label, BMenu* menu,
                       uint32 resizingMode, uint32 flags)
    : BView(frame, name, resizingMode, flags | B_FRAME_EVENTS),
      menu(menu),
      label(label ? label : ""),
      button(new Opener) {
    auto* both = new QWidget;
    Widget().SetContent(both);
    // Before all else, because the toolkit describes the button to screen readers as what it
    // belongs to at the first change.
    button->setParent(both);
    button->setPopupMode(QToolButton::InstantPopup);
    button->setFocusPolicy(flags & B_NAVIGABLE ? Qt::StrongFocus : Qt::NoFocus);
    auto* toolkit = new QMenu(button);
    toolkit->setFont(kits::ToQt(*be_plain_font()));
    QObject::connect(toolkit, &QMenu::aboutToShow, toolkit, [this] { Fill(); });
    button->setMenu(toolkit);
    button->setAccessibleName(kits::ToQt(this->label.empty() ? Name() : this->label));
    both->setFocusProxy(button);
    if (!this->label.empty()) {
        auto* caption = new QLabel(kits::ToQt(this->label), both);
        caption->setFont(kits::ToQt(*be_plain_font()));
        caption->setBuddy(button);
        caption->move(0, static_cast<int>((PreferredHeight() - caption->sizeHint().height()) / 2));
        divider = be_plain_font()->StringWidth(this->label) + 7;
    }
    menu->SetObserver([this] {
        ShowTitle();
        FillIfOpen();
    });
    ResizeTo(frame.Width(), PreferredHeight());
    SetDivider(divider);
}

BMenuField::~BMenuField() = default;

void BMenuField::SetDivider(float position) {
    divider = position;
    const BRect bounds = Bounds();
    button->setGeometry(kits::ToQt(BRect{divider, 0, bounds.right, bounds.bottom}));
    ShowTitle();
}

/// Fills the toolkit's menu.
void BMenuField::Fill() {
    // Whoever fills a menu that opens changes it, which is no reason to fill it again.
    filling = true;
    menu->Fill(*button->menu());
    filling = false;
}

/// Has an open menu show the present items, once these are complete.
void BMenuField::FillIfOpen() {
    if (filling || !button->menu() || !button->menu()->isVisible())
        return;
    filling = true;
    QMetaObject::invokeMethod(
        button, [this] { Fill(); }, Qt::QueuedConnection);
}

std::string BMenuField::ShownTitle() const {
    return button->text().toStdString();
}

float BMenuField::PreferredHeight() {
    font_height height;
    be_plain_font()->GetHeight(&height);
    return std::ceil(height.ascent + height.descent) + 5;
}

// Items without a target send their messages to the window, as other controls do.
void BMenuField::AttachedToWindow() {
    for (std::size_t i = 0; BMenuItem* item = menu->ItemAt(i); i++) {
        if (!item->Target().IsValid())
            item->SetTarget(Window());
    }
}

void BMenuField::SetEnabled(bool enabled) {
    button->setEnabled(enabled);
}

void BMenuField::SetOnDark() {
    button->setProperty("onDark", true);
}

void BMenuField::FrameResized(float, float) {
    SetDivider(divider);
}

void BMenuField::ShowTitle() {
    const std::string title = menu->Title();
    const float room = Bounds().Width() - divider - kArrowWidth - kLeftMargin;
    BFont font = *be_plain_font();
    font.SetSize(kits::FittingFontSize(title, room));
    button->setFont(kits::ToQt(font));
    const QString text = kits::ToQt(title);
    button->setText(QFontMetrics(button->font()).elidedText(text, Qt::ElideRight, int(room) + 1));
    button->setToolTip(font.StringWidth(title) > room ? kits::TipText(text) : QString());
    const std::string choice = menu->Choice();
    const QString told = choice.empty() ? text : kits::ToQt(choice);
    button->setAccessibleDescription(told == button->accessibleName() ? QString() : told);
}

BMenuBar::BMenuBar(BRect frame, const char* name, uint32 resizingMode, menu_layout, bool)
    : BView(frame, name, resizingMode, B_WILL_DRAW) {
    ResizeTo(frame.Width(), BMenuField::PreferredHeight());
}

void BMenuBar::AddItem(BMenu* menu) {
    auto* field = new BMenuField({0, 0, 10, 10}, menu->Name(), nullptr, menu);
    fields.push_back(field);
    const float each = (Bounds().Width() + 1) / float(fields.size());
    for (std::size_t i = 0; i < fields.size(); i++) {
        fields[i]->MoveTo(each * float(i), 0);
        fields[i]->ResizeTo(each - 1, Bounds().Height());
    }
    AddChild(field);
}
