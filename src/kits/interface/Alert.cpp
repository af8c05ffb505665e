// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/Alert.h"

#include "kits/application/Interrupt.h"
#include "kits/application/MessageQueue.h"
#include "kits/interface/backends/ViewWidget.h"
#include "kits/interface/backends/WindowWidget.h"

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <utility>

namespace {

BAlert::Responder& CurrentResponder() {
    static BAlert::Responder responder;
    return responder;
}

constexpr QMessageBox::Icon kIcons[] = {QMessageBox::Information, QMessageBox::Warning,
                                        QMessageBox::Critical};

/// Details with fewer lines than this are shown without a box of their own.
constexpr std::ptrdiff_t kShortDetails = 6;

/// Returns the window that an alert stays above: the active one or, at the start of the program
/// when none is active yet, a shown one. Null if there is neither.
QWidget* WindowBelow() {
    if (QWidget* active = QApplication::activeWindow())
        return active;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->isVisible() && dynamic_cast<kits::WindowWidget*>(widget))
            return widget;
    }
    return nullptr;
}

/// Returns the shown box with this text, or null.
QMessageBox* ShownBox(const QString& text) {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* shown = dynamic_cast<QMessageBox*>(widget);
        if (shown && shown->isVisible() && shown->text() == text)
            return shown;
    }
    return nullptr;
}

/// Returns an alert's text as its box stores it.
QString BoxText(const std::string& text) {
    return kits::ToQt(text).trimmed();
}

} // namespace

BAlert::BAlert(const char* title, const char* text, const char* button1, const char* button2,
               const char* button3, button_width, alert_type type)
    : title(title ? title : ""), text(text), type(type) {
    for (const char* button : {button1, button2, button3}) {
        if (button)
            buttons.emplace_back(button);
    }
    defaultButton = buttons.size() - 1;
}

void BAlert::SetResponder(Responder responder) {
    CurrentResponder() = std::move(responder);
}

struct BAlert::Box {
    std::unique_ptr<QMessageBox> box;
    std::vector<QPushButton*> choices;
};

BAlert::Box BAlert::MakeBox() const {
    auto box = std::make_unique<QMessageBox>(WindowBelow());
    box->setWindowTitle(kits::ToQt(title));
    box->setIcon(kIcons[type]);
    // Plain, because messages of a compiler or contents of a file may look like markup.
    box->setTextFormat(Qt::PlainText);
    box->setText(BoxText(First()));
    const bool isShort = std::count(details.begin(), details.end(), '\n') < kShortDetails;
    std::string below = isShort ? details : "";
    if (!heading.empty())
        below += (below.empty() ? "" : "\n\n") + text;
    box->setInformativeText(kits::ToQt(below));
    if (!isShort)
        box->setDetailedText(kits::ToQt(details));
    // setTextFormat() applies only to the main text, not to the informative text.
    for (QLabel* label : box->findChildren<QLabel*>())
        label->setTextFormat(Qt::PlainText);
    box->setTextInteractionFlags(Qt::TextSelectableByMouse);
    std::vector<QPushButton*> choices;
    for (const std::string& button : buttons) {
        choices.push_back(box->addButton(kits::ToQt(button), QMessageBox::AcceptRole));
        choices.back()->setMinimumSize(75, 25);
    }
    box->setDefaultButton(choices[defaultButton]);
    box->setEscapeButton(choices.front());
    return {std::move(box), std::move(choices)};
}

/// Writes the text to standard error and returns true if a signal has told the program to end, as
/// nobody can answer then. Returns false otherwise.
bool BAlert::SaidToNobody() const {
    if (!kits::Interrupt::Pending())
        return false;
    for (const std::string& part : {heading, text, details}) {
        if (!part.empty())
            std::fprintf(stderr, "%s\n", part.c_str());
    }
    return true;
}

int32 BAlert::Go() {
    const std::unique_ptr<BAlert> self(this);
    if (SaidToNobody())
        return 0;
    const kits::MessageQueue::Pause pause;
    if (const Responder& responder = CurrentResponder())
        return responder(*this);
    const auto [box, choices] = MakeBox();
    box->exec();
    for (std::size_t i = 0; i < choices.size(); i++) {
        if (box->clickedButton() == choices[i])
            return static_cast<int32>(i);
    }
    return 0;
}

void BAlert::Show() {
    const std::unique_ptr<BAlert> self(this);
    if (SaidToNobody())
        return;
    if (const Responder& responder = CurrentResponder()) {
        responder(*this);
        return;
    }
    if (ShownBox(BoxText(First())))
        return;
    QMessageBox* box = MakeBox().box.release();
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

void BAlert::Withdraw(const std::string& text) {
    if (QMessageBox* box = ShownBox(BoxText(text)))
        box->close();
}
