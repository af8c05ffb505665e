// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/View.h"

#include "kits/interface/Control.h"
#include "kits/interface/Menu.h"
#include "kits/interface/backends/ViewWidget.h"
#include "support/WindowStage.h"

#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QTextDocumentFragment>
#include <QToolButton>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;

/// Records the calls that it receives.
class Witness : public BView {
  public:
    explicit Witness(BRect frame, uint32 mode = B_FOLLOW_NONE, uint32 flags = 0)
        : BView(frame, "witness", mode, flags | B_WILL_DRAW | B_FRAME_EVENTS | B_PULSE_NEEDED) {}

    void Draw(BRect) override { draws++; }
    void MouseDown(BPoint where) override { Note("down", where); }
    void MouseUp(BPoint where) override { Note("up", where); }
    void MouseMoved(BPoint where, uint32 transit, const BMessage*) override {
        static constexpr const char* kNames[] = {"entered", "inside", "exited"};
        Note(kNames[transit], where);
    }
    void Pulse() override { pulses++; }
    void FrameResized(float width, float height) override { Note("resized", {width, height}); }

    std::vector<std::string> events;
    uint32 buttons = 0;
    int draws = 0;
    int pulses = 0;

  private:
    void Note(const std::string& what, BPoint where) {
        BPoint pointer;
        GetMouse(&pointer, &buttons);
        events.push_back(what + ' ' + std::to_string(int(where.x)) + ' ' +
                         std::to_string(int(where.y)));
    }
};

TEST(View, FollowsItsParentByItsModes) {
    auto* parent = new BView({10, 20, 109, 69}, "parent", B_FOLLOW_ALL_SIDES, B_WILL_DRAW);
    struct Case {
        uint32 mode;
        BRect after;
    };
    const Case cases[] = {
        {B_FOLLOW_NONE, {10, 10, 30, 20}},
        {B_FOLLOW_RIGHT, {60, 10, 80, 20}},
        {B_FOLLOW_LEFT_RIGHT, {10, 10, 80, 20}},
        {B_FOLLOW_BOTTOM, {10, 40, 30, 50}},
        {B_FOLLOW_RIGHT | B_FOLLOW_BOTTOM, {60, 40, 80, 50}},
        {B_FOLLOW_ALL_SIDES, {10, 10, 80, 50}},
    };
    std::vector<Witness*> views;
    for (const Case& row : cases) {
        views.push_back(new Witness({10, 10, 30, 20}, row.mode));
        parent->AddChild(views.back());
    }
    test::Stage stage(parent, 200, 100);
    stage.Window().ResizeTo(249, 129);
    test::Settle();
    EXPECT_EQ(parent->Frame(), (BRect{10, 20, 159, 99}));
    for (std::size_t i = 0; i < std::size(cases); i++)
        EXPECT_EQ(views[i]->Frame(), cases[i].after) << i;
    EXPECT_THAT(views[2]->events, ElementsAre("resized 70 10"));
    EXPECT_THAT(views[1]->events, ElementsAre());
}

TEST(View, PointerEndsItsVisitWhenItLeavesEvenWithAButtonDown) {
    auto* view = new Witness({0, 0, 99, 49});
    test::Stage stage(view);
    view->events.clear();
    test::Press(*view, {5, 6});
    EXPECT_EQ(view->buttons, B_PRIMARY_MOUSE_BUTTON);
    // The last quarter of a pixel, as on a dense screen.
    test::Drag(*view, {99.75F, 49});
    test::Drag(*view, {101, 49});
    test::Drag(*view, {120, 49});
    test::Drag(*view, {50, 40});
    test::Drag(*view, {50, 60});
    test::Release(*view, {50, 60});
    EXPECT_THAT(view->events, ElementsAre("down 5 6", "inside 99 49", "exited 101 49",
                                          "entered 50 40", "exited 50 60"));
}

TEST(View, APressEndsWithTheLastButton) {
    auto* view = new Witness({0, 0, 99, 49}, B_FOLLOW_NONE, B_KEEPS_POINTER);
    test::Stage stage(view);
    view->events.clear();
    test::Press(*view, {1, 1});
    test::PressChord(*view, {2, 1});
    EXPECT_EQ(view->buttons, B_PRIMARY_MOUSE_BUTTON | B_SECONDARY_MOUSE_BUTTON);
    test::Release(*view, {3, 1}, B_SECONDARY_MOUSE_BUTTON, B_PRIMARY_MOUSE_BUTTON);
    test::Release(*view, {4, 99});
    EXPECT_THAT(view->events, ElementsAre("down 1 1", "down 2 1", "up 4 99"));

    // Two releases go elsewhere, as to an alert.
    view->events.clear();
    test::Press(*view, {1, 1});
    test::Drag(*view, {2, 1}, 0);
    test::Press(*view, {3, 1});
    test::Press(*view, {4, 1});
    EXPECT_THAT(view->events,
                ElementsAre("down 1 1", "up 2 1", "inside 2 1", "down 3 1", "up 4 1", "down 4 1"));
}

TEST(View, ATextIsCutBetweenCharactersToWhatFits) {
    BView view({0, 0, 99, 49}, "view", B_FOLLOW_NONE, B_WILL_DRAW);
    std::string text;
    while (text.size() < 4000)
        text += "größer, ";
    for (const float room : {40.0F, 150.0F}) {
        const std::string cut = view.CutToFit(text, room);
        EXPECT_LE(view.StringWidth(cut), room);
        const std::size_t kept = cut.size() - std::string("…").size();
        EXPECT_EQ(cut, text.substr(0, kept) + "…");
        const std::size_t next = kept + ((text[kept] & 0x80) != 0 ? 2 : 1);
        EXPECT_GT(view.StringWidth(text.substr(0, next) + "…"), room);
    }
    EXPECT_EQ(view.CutToFit("größer", 150), "größer");
    EXPECT_EQ(view.CutToFit("größer", 1), "…");
}

/// Draws a figure whose pixels are known.
class Figure : public BView {
  public:
    Figure()
        : BView({0, 0, 19, 19}, "figure", B_FOLLOW_NONE, B_WILL_DRAW),
          bitmap({0, 0, 3, 3}, B_RGB32) {
        SetViewColor({10, 20, 30});
        for (int i = 0; i < 16; i++)
            static_cast<uint32*>(bitmap.Bits())[i] = 0x00a0b0c0;
    }
    void Draw(BRect) override {
        SetHighColor({255, 0, 0});
        FillRect({2, 2, 4, 4});
        SetLowColor({0, 255, 0});
        StrokeLine({0, 10}, {8, 10}, B_SOLID_LOW);
        StrokeLine({8, 14}, B_SOLID_LOW);
        DrawBitmap(&bitmap, {12, 12, 15, 15});
        DrawBitmap(&bitmap, {12, 2, 19, 9});
    }

  private:
    BBitmap bitmap;
};

TEST(View, GivesTheKeyboardToNobodyWhenItIsHidden) {
    auto* panel = new BView({0, 0, 199, 99}, "panel", B_FOLLOW_NONE, B_WILL_DRAW);
    test::Stage stage{panel};
    auto* pane = new BView({0, 0, 99, 49}, "pane", B_FOLLOW_NONE, B_WILL_DRAW);
    panel->AddChild(pane);
    auto* inside = new BView({0, 0, 49, 24}, "inside", B_FOLLOW_NONE, B_WILL_DRAW | B_NAVIGABLE);
    pane->AddChild(inside);
    auto* field = new BTextControl({0, 60, 99, 69}, "field", nullptr, "sin(x)", new BMessage(1));
    panel->AddChild(field);
    for (BView* hidden : {inside, pane}) {
        inside->MakeFocus();
        ASSERT_TRUE(inside->IsFocus());
        hidden->Hide();
        EXPECT_FALSE(field->IsFocus()) << hidden->Name();
        hidden->Show();
    }
    field->MakeFocus();
    pane->Hide();
    EXPECT_TRUE(field->IsFocus());
}

TEST(View, DrawsByPixelsWhoseEdgesBelongToThem) {
    auto* view = new Figure;
    test::Stage stage(view);
    const QImage picture = test::Picture(*view);
    const auto pixel = [&](int x, int y) { return picture.pixel(x, y) & 0xffffffU; };
    constexpr unsigned kBack = 0x0a141e, kRed = 0xff0000, kGreen = 0x00ff00;
    EXPECT_EQ(pixel(1, 2), kBack);
    EXPECT_EQ(pixel(2, 2), kRed);
    EXPECT_EQ(pixel(4, 4), kRed);
    EXPECT_EQ(pixel(5, 4), kBack);
    EXPECT_EQ(pixel(0, 10), kGreen);
    EXPECT_EQ(pixel(8, 10), kGreen);
    EXPECT_EQ(pixel(9, 10), kBack);
    EXPECT_EQ(pixel(8, 14), kGreen);
    EXPECT_EQ(pixel(8, 15), kBack);
    EXPECT_EQ(pixel(11, 12), kBack);
    EXPECT_EQ(pixel(12, 12), 0xa0b0c0U);
    EXPECT_EQ(pixel(15, 15), 0xa0b0c0U);
    EXPECT_EQ(pixel(16, 15), kBack);

    // A window on Wayland has transparent parts; no pixel of a bitmap is one, smaller or larger.
    QImage window(view->Widget().size(), QImage::Format_ARGB32_Premultiplied);
    window.fill(Qt::transparent);
    view->Widget().render(&window, {}, {}, QWidget::DrawChildren);
    EXPECT_EQ(window.pixel(13, 13), 0xffa0b0c0U);
    EXPECT_EQ(window.pixel(16, 6), 0xffa0b0c0U);
}

/// Comments and names from files of others occur among these texts.
TEST(View, ShowsWordsThatLookLikeMarkupAsTheyAre) {
    const char* const words = "f:3: <a>: \"2\" counts as 1\nwhere x<b and y>0";
    auto* view = new BView({0, 0, 50, 50}, "view", B_FOLLOW_NONE, B_WILL_DRAW);
    const test::Stage stage(view);
    view->SetToolTip(words);
    QWidget* tipped = nullptr;
    for (QWidget* widget : QApplication::allWidgets())
        tipped = widget->objectName() == "view" ? widget : tipped;
    ASSERT_TRUE(tipped);
    EXPECT_EQ(QTextDocumentFragment::fromHtml(tipped->toolTip()).toPlainText(), words);
    view->SetToolTip("plain & simple");
    EXPECT_EQ(tipped->toolTip(), "plain & simple");

    // A menu's title without enough room.
    auto* field = new BMenuField({0, 0, 50, 20}, "field", nullptr, new BMenu("<b>long</b> title"));
    const test::Stage other(field);
    const QString tip = field->Widget().findChild<QToolButton*>()->toolTip();
    EXPECT_EQ(QTextDocumentFragment::fromHtml(tip).toPlainText(), "<b>long</b> title");

    auto* alert = new BAlert("Warning", words, "OK");
    alert->SetDetails(words);
    alert->SetHeading("first");
    // Newer versions of Qt advise against it, but have no other way to activate none.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    QApplication::setActiveWindow(nullptr);
#pragma GCC diagnostic pop
    alert->Show();
    const auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    ASSERT_TRUE(box);
    EXPECT_TRUE(box->parentWidget()) << "the window stays below it, though it is not active";
    EXPECT_EQ(box->text(), "first");
    EXPECT_EQ(box->informativeText(), QString(words) + "\n\n" + words);
    for (const QLabel* label : box->findChildren<QLabel*>())
        EXPECT_EQ(label->textFormat(), Qt::PlainText);
    delete box;
}

/// Its state in words, and what it is for.
TEST(View, IsDescribedToWhoCannotSeeIt) {
    class Switch : public BView {
      public:
        Switch() : BView({0, 0, 50, 50}, "switch", B_FOLLOW_NONE, B_WILL_DRAW) {}
        kits::AccessibleThing Describe() const override {
            kits::AccessibleThing thing;
            thing.role = kits::AccessibleRole::Button;
            thing.description = state;
            return thing;
        }
        std::string state = "on";
    };
    auto* view = new Switch;
    const test::Stage stage(view);
    QAccessibleInterface* told = QAccessible::queryAccessibleInterface(&view->Widget());
    ASSERT_TRUE(told);
    EXPECT_EQ(told->text(QAccessible::Description), "on");
    view->SetToolTip("<b>holds</b> notes");
    EXPECT_EQ(told->text(QAccessible::Description), "on\n<b>holds</b> notes");
    view->state.clear();
    EXPECT_EQ(told->text(QAccessible::Description), "<b>holds</b> notes");
}

TEST(View, ATipIsInLinesThatCanBeRead) {
    auto* view = new BView({0, 0, 50, 50}, "view", B_FOLLOW_NONE, B_WILL_DRAW);
    const test::Stage stage(view);
    const std::string word(80, 'w');
    view->SetToolTip(
        ("The first line says more than there is room for beside a pointer.\n\n" + word + " b")
            .c_str());
    EXPECT_EQ(view->Widget().toolTip().toStdString(),
              "The first line says more than there is room for beside a\npointer.\n\n" +
                  word.substr(0, 60) + '\n' + word.substr(60) + " b");
}

TEST(Window, EndsOnceHoweverOftenItIsAsked) {
    static int asked, ends;
    class Counted : public BWindow {
      public:
        Counted() : BWindow({0, 0, 99, 99}, "counted", B_TITLED_WINDOW, 0) {}
        ~Counted() override { ends++; }
        bool QuitRequested() override { return ++asked > 1; }
    };
    auto* window = new Counted;
    for (int i = 0; i < 4; i++)
        window->PostMessage(B_QUIT_REQUESTED);
    test::Settle();
    EXPECT_EQ(asked, 2) << "once more than it refused";
    EXPECT_EQ(ends, 1);
    window = new Counted;
    window->Quit();
    window->Quit();
    delete window;
    test::Settle();
    EXPECT_EQ(ends, 2);
}

TEST(View, IsFoundByNameUntilItIsRemoved) {
    auto* parent = new BView({0, 0, 99, 99}, "parent", B_FOLLOW_NONE, 0);
    auto* child = new Witness({0, 0, 9, 9});
    parent->AddChild(child);
    test::Stage stage(parent);
    EXPECT_EQ(stage.Window().FindView("witness"), child);
    EXPECT_EQ(child->Window(), &stage.Window());
    EXPECT_TRUE(parent->RemoveChild(child));
    EXPECT_EQ(stage.Window().FindView("witness"), nullptr);
    EXPECT_EQ(child->Window(), nullptr);
    EXPECT_EQ(child->Looper(), nullptr);
    delete child;
}

} // namespace
