// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/Slider.h"

#include "kits/interface/backends/ViewWidget.h"

#include <QLabel>
#include <QSlider>
#include <QVBoxLayout>
#include <algorithm>

BSlider::BSlider(BRect frame, const char* name, const char* label, BMessage* message, int32 minimum,
                 int32 maximum, uint32 resizingMode, uint32 flags)
    : BControl(frame, name, label, message, resizingMode, flags),
      slider(new QSlider(Qt::Horizontal)) {
    slider->setRange(minimum, maximum);
    slider->setSingleStep(std::max(1, (maximum - minimum) / 100));
    slider->setPageStep(std::max(1, (maximum - minimum) / 10));
    QObject::connect(slider, &QSlider::valueChanged, slider, [this](int value) {
        if (silent || !Message())
            return;
        BMessage moved = *Message();
        moved.AddInt32("be:value", value);
        Target().SendMessage(moved);
    });
    if (!*Label()) {
        SetContent(slider);
        return;
    }
    auto* both = new QWidget;
    auto* layout = new QVBoxLayout(both);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    auto* caption = new QLabel;
    caption->setFont(kits::ToQt(*be_plain_font()));
    caption->setBuddy(slider);
    layout->addWidget(caption);
    layout->addWidget(slider);
    const QString text = kits::ToQt(Label());
    const auto show = [caption, text](int value) {
        caption->setText(text + ": " + QString::number(value));
    };
    slider->setAccessibleName(text);
    show(minimum);
    QObject::connect(slider, &QSlider::valueChanged, caption, show);
    SetContent(both);
    both->setFocusProxy(slider);
}

int32 BSlider::Value() const {
    return slider->value();
}

void BSlider::SetValue(int32 value) {
    silent = true;
    slider->setValue(value);
    silent = false;
}

void BSlider::Move(int32 value) {
    slider->setValue(value);
}
