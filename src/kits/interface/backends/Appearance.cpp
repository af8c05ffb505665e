// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/backends/Appearance.h"

#include <QApplication>
#include <QPalette>
#include <QStyleFactory>

namespace kits {

namespace {

constexpr QColor kPanel{204, 204, 204};
constexpr QColor kText{24, 24, 24};
constexpr QColor kFaint{128, 128, 128};
constexpr QColor kAccent{42, 96, 158};

constexpr const char* kControls = R"(
QLineEdit {
    border: 1px solid #8c8c8c; border-radius: 2px; background: #fbfbfb; color: #181818;
    padding: 0px 1px 0px 1px; selection-background-color: #2a609e; selection-color: white;
}
QLineEdit:focus { border: 1px solid #2a609e; }
QLineEdit:disabled { background: #d6d6d6; color: #808080; border: 1px solid #a8a8a8; }
QLineEdit[wrong="true"] { border: 1px solid #b02020; background: #fbeaea; }
QPushButton, QToolButton {
    border: 1px solid #868686; border-radius: 3px; color: #181818; padding: 0px 2px;
    background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 #f4f4f4, stop:1 #dadada);
}
QPushButton:hover, QToolButton:hover { border: 1px solid #5c5c5c; background: #f8f8f8; }
QPushButton:focus, QToolButton:focus { border: 1px solid #2a609e; }
QPushButton:pressed, QToolButton:pressed, QToolButton:open { background: #c6ccd4; }
QPushButton:default { border: 2px solid #5a6f88; }
QPushButton:disabled, QToolButton:disabled { color: #8c8c8c; }
QToolButton::menu-indicator { image: none; }
)";

} // namespace

void SetAppearance(QApplication& application) {
    QApplication::setStyle(QStyleFactory::create("Fusion"));
    QPalette palette(kPanel);
    palette.setColor(QPalette::WindowText, kText);
    palette.setColor(QPalette::Text, kText);
    palette.setColor(QPalette::ButtonText, kText);
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::Highlight, kAccent);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::ToolTipBase, QColor(255, 255, 224));
    palette.setColor(QPalette::ToolTipText, kText);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, kFaint);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, kPanel.darker(120));
    QApplication::setPalette(palette);
    application.setStyleSheet(kControls);
}

} // namespace kits
