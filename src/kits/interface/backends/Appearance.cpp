// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/backends/Appearance.h"

#include "kits/interface/Colors.h"
#include "kits/interface/Window.h"
#include "kits/interface/backends/ViewWidget.h"
#include "kits/interface/backends/WindowWidget.h"

#include <QApplication>
#include <QPalette>
#include <QStyleFactory>
#include <QWidget>
#include <utility>
#include <vector>

namespace kits {

namespace {

/// The style sheet of the controls. %1 to %25 are the colours in the order in which StyleSheet()
/// fills them in.
constexpr const char* kControls = R"(
QLineEdit, QPlainTextEdit {
    border: 1px solid %1; border-radius: 2px; background: %2; color: %3;
    padding: 0px 1px 0px 1px; selection-background-color: %4; selection-color: %5;
}
QLineEdit:focus, QPlainTextEdit:focus { border: 1px solid %6; }
QLineEdit:disabled { background: %7; color: %8; border: 1px solid %16; }
QLineEdit[wrong="true"], QPlainTextEdit[wrong="true"] { border: 1px solid %9; background: %10; }
QPushButton, QToolButton {
    border: 1px solid %11; border-radius: 3px; color: %3; padding: 0px 2px;
    background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 %12, stop:1 %13);
}
QPushButton:hover, QToolButton:hover { border: 1px solid %17; background: %14; }
QPushButton:focus, QToolButton:focus { border: 1px solid %6; }
QPushButton:pressed, QToolButton:pressed, QToolButton:open { background: %15; }
QPushButton:default { border: 2px solid %18; }
QPushButton:disabled, QToolButton:disabled { color: %19; }
QPushButton[onDark="true"], QToolButton[onDark="true"] {
    color: #e6e6e6; background: transparent; border: 1px solid transparent;
}
QPushButton[onDark="true"]:hover, QToolButton[onDark="true"]:hover,
QPushButton[onDark="true"]:focus, QToolButton[onDark="true"]:focus { border: 1px solid #7f8fb0; }
QPushButton[onDark="true"]:pressed, QToolButton[onDark="true"]:pressed,
QToolButton[onDark="true"]:open { background: #3a4668; }
QPushButton[onDark="true"]:checked { color: %25; background: %24; }
QPushButton[onDark="true"]:disabled { color: #68708a; }
QToolButton::menu-indicator { image: none; }
QTreeView { border: 1px solid %1; background: %20; alternate-background-color: %21; }
QTreeView::item { padding: 1px 4px; }
QHeaderView::section {
    padding: 2px 6px; border: none; border-right: 1px solid %23;
    border-bottom: 1px solid %1; background: %22;
}
)";

QString StyleSheet(const ControlColors& colors) {
    QString sheet = kControls;
    // Filling in one after the other is safe: the text of a colour contains no percent sign.
    for (const rgb_color color :
         {colors.fieldFrame,   colors.field,        colors.text,          colors.selection,
          colors.selectedText, colors.accent,       colors.disabledField, colors.faintText,
          colors.wrongFrame,   colors.wrongField,   colors.buttonFrame,   colors.buttonTop,
          colors.buttonBottom, colors.buttonHover,  colors.buttonPressed, colors.disabledFrame,
          colors.hoverFrame,   colors.defaultFrame, colors.faintButton,   colors.list,
          colors.otherRow,     colors.header,       colors.headerLine,    colors.running,
          colors.runningText})
        sheet = sheet.arg(ToQt(color).name());
    return sheet;
}

bool desktopIsDark = false;
ControlColors present;

} // namespace

void SetAppearance() {
    // At this point the palette is still the desktop's; the style below replaces it.
    const QPalette desktop = QApplication::palette();
    desktopIsDark = desktop.color(QPalette::WindowText).lightness() >
                    desktop.color(QPalette::Window).lightness();
    QApplication::setStyle(QStyleFactory::create("Fusion"));
    SetControlColors({});
}

bool DesktopIsDark() {
    return desktopIsDark;
}

const ControlColors& PresentControlColors() {
    return present;
}

void SetControlColors(const ControlColors& colors) {
    present = colors;
    QPalette palette(ToQt(colors.panel));
    const struct {
        QPalette::ColorRole role;
        rgb_color color;
    } roles[] = {
        {QPalette::WindowText, colors.text},     {QPalette::Text, colors.text},
        {QPalette::ButtonText, colors.text},     {QPalette::Base, colors.field},
        {QPalette::Highlight, colors.selection}, {QPalette::HighlightedText, colors.selectedText},
        {QPalette::ToolTipBase, colors.tip},     {QPalette::ToolTipText, colors.tipText},
    };
    for (const auto& row : roles)
        palette.setColor(row.role, ToQt(row.color));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, ToQt(colors.faintText));
    palette.setColor(QPalette::Disabled, QPalette::Highlight, ToQt(colors.panel).darker(120));
    QApplication::setPalette(palette);
    // A new style sheet makes the toolkit reset the widgets' fonts, so they are saved and set
    // again.
    std::vector<std::pair<QWidget*, QFont>> fonts;
    for (QWidget* widget : QApplication::allWidgets()) {
        if (widget->testAttribute(Qt::WA_SetFont))
            fonts.emplace_back(widget, widget->font());
    }
    qApp->setStyleSheet(StyleSheet(colors));
    for (const auto& [widget, font] : fonts)
        widget->setFont(font);
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* window = dynamic_cast<WindowWidget*>(widget))
            window->Window().ColorsChanged();
    }
}

} // namespace kits
