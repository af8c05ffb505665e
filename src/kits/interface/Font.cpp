// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/Font.h"

#include "kits/interface/backends/ViewWidget.h"

#include <QApplication>
#include <QFontMetricsF>

namespace {

BFont& PlainFont() {
    static BFont font;
    return font;
}

} // namespace

BFont::BFont() = default;

const BFont* be_plain_font() {
    return &PlainFont();
}

namespace kits {

void SetPlainFontFamily(std::string_view family) {
    PlainFont().SetFamily(family);
}

QFont ToQt(const BFont& font) {
    QFont result = QApplication::font();
    if (!font.Family().empty())
        result.setFamily(ToQt(font.Family()));
    result.setPixelSize(static_cast<int>(font.Size()));
    result.setItalic(font.Face() & B_ITALIC_FACE);
    // Without hinting, widths are the same on every screen, so a layout computed from them fits
    // everywhere.
    result.setHintingPreference(QFont::PreferNoHinting);
    return result;
}

} // namespace kits

void BFont::GetHeight(font_height* height) const {
    const QFontMetricsF metrics(kits::ToQt(*this));
    height->ascent = static_cast<float>(metrics.ascent());
    height->descent = static_cast<float>(metrics.descent());
    height->leading = static_cast<float>(metrics.leading());
}

float BFont::InkWidth(std::string_view text) const {
    const QFontMetricsF metrics(kits::ToQt(*this));
    return static_cast<float>(metrics.tightBoundingRect(kits::ToQt(text)).right());
}

float BFont::StringWidth(std::string_view text) const {
    const QFontMetricsF metrics(kits::ToQt(*this));
    return static_cast<float>(metrics.horizontalAdvance(kits::ToQt(text)));
}
