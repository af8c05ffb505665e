// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/WindowStage.h"

#include "kits/application/MessageQueue.h"
#include "kits/interface/Application.h"
#include "kits/interface/backends/ViewWidget.h"
#include "kits/interface/backends/WindowWidget.h"

#include <QApplication>
#include <QMouseEvent>
#include <QTest>
#include <QWheelEvent>
#include <cstdlib>
#include <memory>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace test {

namespace {

/// The application object of the whole test program.
class ApplicationEnvironment : public testing::Environment {
  public:
    void SetUp() override {
        // The toolkit's default screen is smaller than usual screens. It would read a path in the
        // variable as Latin-1, hence the descriptor, which the programs of tests do not inherit.
        const int screen =
            ::open(VEXA_SOURCE_FOLDER "/tests/support/screen.json", O_RDONLY | O_CLOEXEC);
        const std::string file = "/dev/fd/" + std::to_string(screen);
        ::setenv("QT_QPA_PLATFORM", ("offscreen:configfile=" + file).c_str(), 1);
        application = std::make_unique<BApplication>("application/x-vnd.test-Test");
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
        ::close(screen);
    }
    void TearDown() override { application.reset(); }

  private:
    std::unique_ptr<BApplication> application;
};

const auto* const kEnvironment = testing::AddGlobalTestEnvironment(new ApplicationEnvironment);

Qt::MouseButton ToQt(uint32 button) {
    if (!button)
        return Qt::NoButton;
    if (button == B_SECONDARY_MOUSE_BUTTON)
        return Qt::RightButton;
    return button == B_TERTIARY_MOUSE_BUTTON ? Qt::MiddleButton : Qt::LeftButton;
}

void Send(BView& view, QEvent::Type type, BPoint where, Qt::MouseButton button,
          Qt::MouseButtons down) {
    QWidget& widget = view.Widget();
    const QPointF local(where.x, where.y);
    QMouseEvent event(type, local, widget.mapToGlobal(local), button, down, Qt::NoModifier);
    QApplication::sendEvent(&widget, &event);
}

} // namespace

void Settle() {
    kits::MessageQueue::Instance().Deliver();
    QApplication::processEvents();
    kits::MessageQueue::Instance().Deliver();
}

void Press(BView& view, BPoint where, uint32 button) {
    Send(view, QEvent::MouseButtonPress, where, ToQt(button), ToQt(button));
}

void PressChord(BView& view, BPoint where) {
    Send(view, QEvent::MouseButtonPress, where, Qt::RightButton, Qt::LeftButton | Qt::RightButton);
}

void Drag(BView& view, BPoint where, uint32 button) {
    Send(view, QEvent::MouseMove, where, Qt::NoButton, ToQt(button));
}

void Release(BView& view, BPoint where, uint32 button, uint32 held) {
    Send(view, QEvent::MouseButtonRelease, where, ToQt(button), ToQt(held));
}

void Click(BView& view, BPoint where, uint32 button) {
    Press(view, where, button);
    Release(view, where, button);
}

void DoubleClick(BView& view, BPoint where) {
    Send(view, QEvent::MouseButtonDblClick, where, Qt::LeftButton, Qt::LeftButton);
    Release(view, where);
}

void Type(BWindow& window, const char* text) {
    QWidget* focus = window.Widget().focusWidget();
    QTest::keyClicks(focus ? focus : &window.Widget(), QString::fromUtf8(text));
    Settle();
}

void TypeKey(BWindow& window, int key) {
    TypeKey(window, key, Qt::NoModifier);
}

void TypeKey(BWindow& window, int key, Qt::KeyboardModifiers modifiers) {
    QWidget* focus = window.Widget().focusWidget();
    QTest::keyClick(focus ? focus : &window.Widget(), static_cast<Qt::Key>(key), modifiers);
    Settle();
}

void TurnWheel(BView& view, int steps, Qt::KeyboardModifiers modifiers) {
    QWidget* content = view.Widget().Content();
    QWidget& widget = content ? *content : view.Widget();
    const QPointF middle = QRectF(widget.rect()).center();
    QWheelEvent event(middle, widget.mapToGlobal(middle), {}, {0, 120 * steps}, Qt::NoButton,
                      modifiers, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&widget, &event);
    Settle();
}

QImage Picture(BView& view) {
    QImage image(view.Widget().size(), QImage::Format_RGB32);
    image.fill(Qt::white);
    view.Widget().render(&image, {}, {}, QWidget::DrawChildren);
    return image;
}

AlertLog::AlertLog() {
    BAlert::SetResponder([this](const BAlert& alert) {
        texts.push_back(alert.Text());
        details = alert.Details();
        heading = alert.Heading();
        if (meanwhile)
            meanwhile();
        return answer < 0 ? static_cast<int32>(alert.Buttons().size()) - 1 : answer;
    });
}

AlertLog::~AlertLog() {
    BAlert::SetResponder(nullptr);
}

Stage::Stage(BView* view, float width, float height)
    : window(new BWindow({0, 0, width - 1, height - 1}, "Stage", B_TITLED_WINDOW, 0)) {
    window->AddChild(view);
    window->Show();
    window->Activate();
    Settle();
}

Stage::~Stage() {
    delete window;
}

} // namespace test
