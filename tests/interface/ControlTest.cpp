// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/Control.h"

#include "kits/interface/Colors.h"
#include "kits/interface/Menu.h"
#include "kits/interface/TextBox.h"
#include "kits/interface/backends/ViewWidget.h"
#include "kits/interface/backends/WindowWidget.h"
#include "support/WindowStage.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QToolTip>
#include <QWindow>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;

class Listener : public BHandler {
  public:
    void MessageReceived(BMessage* message) override { codes.push_back(message->what); }
    std::vector<uint32> codes;
};

/// Two text fields and a button, whose messages are 1, 2 and 3.
class ControlTest : public testing::Test {
  protected:
    ControlTest() {
        for (BControl* control : {static_cast<BControl*>(first), static_cast<BControl*>(second),
                                  static_cast<BControl*>(button)}) {
            panel->AddChild(control);
            control->SetTarget(&listener);
        }
        first->MakeFocus();
        test::Settle();
    }

    Listener listener;
    BView* panel = new BView({0, 0, 199, 99}, "panel", B_FOLLOW_NONE, B_WILL_DRAW);
    test::Stage stage{panel};
    BTextControl* first = new BTextControl({0, 0, 49, 9}, "first", nullptr, "one", new BMessage(1));
    BTextControl* second =
        new BTextControl({60, 0, 99, 9}, "second", nullptr, "two", new BMessage(2));
    BButton* button = new BButton({0, 50, 49, 74}, "button", "Button", new BMessage(3));
};

/// A window that records the keys that it receives.
class KeyWindow : public BWindow {
  public:
    KeyWindow() : BWindow({0, 0, 199, 99}, "Keys", B_TITLED_WINDOW, 0) {}
    void MessageReceived(BMessage* message) override {
        if (message->what == B_KEY_DOWN || message->what == B_KEY_UP)
            keys.push_back(message->what);
    }
    /// Sends a key as a display does. A repetition is just another press.
    void Key(QEvent::Type type) {
        constexpr quint32 kPlace = 24;
        QKeyEvent event(type, Qt::Key_Q, Qt::NoModifier, kPlace, 0, 0, "q");
        QCoreApplication::sendEvent(Widget().windowHandle(), &event);
        test::Settle();
    }
    std::vector<uint32> keys;
};

TEST(Keys, BelongToWhereTheyWerePressedUntilTheyAreLetGo) {
    auto* window = new KeyWindow;
    auto* field = new BTextControl({0, 0, 99, 9}, "field", nullptr, "", new BMessage(1));
    window->AddChild(field);
    window->Show();
    window->Activate();
    test::Settle();
    window->Key(QEvent::KeyPress);
    field->MakeFocus();
    window->Key(QEvent::KeyPress);
    window->Key(QEvent::KeyRelease);
    EXPECT_STREQ(field->Text(), "");
    EXPECT_THAT(window->keys, ElementsAre(B_KEY_DOWN, B_KEY_UP));
    // Keys of the field repeat there, and are no notes.
    window->Key(QEvent::KeyPress);
    window->Key(QEvent::KeyPress);
    test::TypeKey(*window, Qt::Key_Return);
    window->Key(QEvent::KeyPress);
    window->Key(QEvent::KeyRelease);
    EXPECT_STREQ(field->Text(), "qq");
    window->Key(QEvent::KeyPress);
    EXPECT_THAT(std::vector(window->keys.begin() + 2, window->keys.end()),
                testing::Contains(B_KEY_DOWN));
    delete window;
}

TEST_F(ControlTest, ANarrowFieldShowsItsWholeNumber) {
    auto* narrow = new BTextControl({0, 30, 29, 39}, "narrow", nullptr, "0.02", new BMessage(4));
    panel->AddChild(narrow);
    const auto* line = narrow->Widget().findChild<QLineEdit*>();
    ASSERT_NE(line, nullptr);
    const auto room = [&] {
        return line->width() - line->fontMetrics().horizontalAdvance(line->text());
    };
    const float plain = be_plain_font()->Size();
    EXPECT_GE(room(), 4) << "as it begins";
    narrow->SetText("-0.275");
    EXPECT_GE(room(), 4) << "as it is set";
    EXPECT_LT(line->font().pixelSize(), plain);
    kits::ControlColors dark;
    std::swap(dark.field, dark.text);
    for (const kits::ControlColors& colors : {dark, kits::ControlColors{}}) {
        kits::SetControlColors(colors);
        EXPECT_GE(room(), 4) << "in other colours";
    }
    narrow->MakeFocus();
    narrow->SetText("1");
    EXPECT_EQ(line->font().pixelSize(), plain);
    test::Type(stage.Window(), "0.12");
    EXPECT_STREQ(narrow->Text(), "0.121");
    EXPECT_GE(room(), 4) << "as it is typed";
}

TEST_F(ControlTest, EnterConfirmsEveryTimeLeavingOnlyAChange) {
    for (int i = 0; i < 2; i++) {
        first->MakeFocus();
        test::TypeKey(stage.Window(), Qt::Key_Return);
        EXPECT_FALSE(first->IsFocus());
    }
    EXPECT_THAT(listener.codes, ElementsAre(1, 1));
    first->MakeFocus();
    test::Type(stage.Window(), "x");
    EXPECT_STREQ(first->Text(), "xone");
    EXPECT_THAT(listener.codes, ElementsAre(1, 1));
    test::TypeKey(stage.Window(), Qt::Key_Tab);
    EXPECT_TRUE(second->IsFocus());
    EXPECT_THAT(listener.codes, ElementsAre(1, 1, 1));
    test::TypeKey(stage.Window(), Qt::Key_Tab);
    EXPECT_TRUE(button->IsFocus());
    EXPECT_THAT(listener.codes, ElementsAre(1, 1, 1));
    test::TypeKey(stage.Window(), Qt::Key_Space);
    test::TypeKey(stage.Window(), Qt::Key_Return);
    EXPECT_THAT(listener.codes, ElementsAre(1, 1, 1, 3, 3));
}

TEST_F(ControlTest, TabGoesOnFromTheFieldThatGaveTheKeyboardBack) {
    BWindow& window = stage.Window();
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
        second->MakeFocus();
        test::TypeKey(window, key);
        EXPECT_FALSE(second->IsFocus());
        test::TypeKey(window, Qt::Key_Tab);
        EXPECT_TRUE(button->IsFocus()) << key;
        second->MakeFocus();
        test::TypeKey(window, key);
        test::TypeKey(window, Qt::Key_Backtab, Qt::ShiftModifier);
        EXPECT_TRUE(first->IsFocus()) << key;
    }
    // After a press elsewhere, or another control, it begins anew.
    second->MakeFocus();
    test::TypeKey(window, Qt::Key_Return);
    test::Press(*panel, {150, 90});
    test::TypeKey(window, Qt::Key_Tab);
    EXPECT_TRUE(first->IsFocus());
    second->MakeFocus();
    test::TypeKey(window, Qt::Key_Return);
    button->MakeFocus();
    button->Hide();
    test::TypeKey(window, Qt::Key_Tab);
    EXPECT_TRUE(first->IsFocus());
}

TEST_F(ControlTest, EscapeTakesBackWhatWasNotConfirmed) {
    test::Type(stage.Window(), "x");
    test::TypeKey(stage.Window(), Qt::Key_Escape);
    EXPECT_STREQ(first->Text(), "one");
    EXPECT_FALSE(first->IsFocus());
    EXPECT_THAT(listener.codes, ElementsAre());
}

// Otherwise a long number would show only its last digits.
TEST_F(ControlTest, AFieldThatIsLeftShowsTheBeginningAndTheTipTheWhole) {
    auto* line = second->Widget().findChild<QLineEdit*>();
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Tab, Qt::Key_Escape}) {
        second->MakeFocus();
        test::Type(stage.Window(), "0.123456789123456789");
        EXPECT_GT(line->cursorPosition(), 0);
        test::TypeKey(stage.Window(), key);
        EXPECT_EQ(line->cursorPosition(), 0) << key;
    }
    second->SetHelp("how far");
    const auto tip = [&] {
        const QPoint place(2, 2);
        QHelpEvent rests(QEvent::ToolTip, place, line->mapToGlobal(place));
        QApplication::sendEvent(line, &rests);
        return QToolTip::text().toStdString();
    };
    EXPECT_EQ(tip(), std::string(second->Text()) + "\nhow far");
    second->SetText("0.12");
    EXPECT_EQ(tip(), "how far");
}

TEST_F(ControlTest, AProgramThatSetsATextSendsNothing) {
    first->SetText("three");
    second->MakeFocus();
    test::Settle();
    EXPECT_THAT(listener.codes, ElementsAre());
}

TEST_F(ControlTest, WhatIsDisabledCannotBeUsed) {
    first->SetEnabled(false);
    button->SetEnabled(false);
    button->Press();
    test::Settle();
    EXPECT_FALSE(first->IsEnabled());
    EXPECT_FALSE(first->IsFocus());
    EXPECT_THAT(listener.codes, ElementsAre());
}

TEST_F(ControlTest, TheWindowIsTheTargetOfWhatHasNone) {
    auto* orphan = new BButton({0, 75, 49, 95}, "orphan", "Orphan", new BMessage(4));
    panel->AddChild(orphan);
    EXPECT_TRUE(orphan->Target().IsValid());
}

TEST_F(ControlTest, WhatIsPastedIsOneLine) {
    const std::pair<const char*, const char*> rows[] = {
        {"sin(x)\n", "sin(x)"},
        {"sin(x)\r\n  + y\n\n", "sin(x) + y"},
        {"a  b ", "a  b "},
    };
    for (const auto& [copied, shown] : rows) {
        QGuiApplication::clipboard()->setText(copied);
        first->SelectAll();
        test::TypeKey(stage.Window(), Qt::Key_V, Qt::ControlModifier);
        EXPECT_STREQ(first->Text(), shown);
    }
    // Pastes into the middle of a text; the cursor ends up behind the pasted text.
    first->Type("1 2");
    QGuiApplication::clipboard()->setText("+\n");
    test::TypeKey(stage.Window(), Qt::Key_Home);
    test::TypeKey(stage.Window(), Qt::Key_Right);
    test::TypeKey(stage.Window(), Qt::Key_V, Qt::ControlModifier);
    test::Type(stage.Window(), "3");
    EXPECT_STREQ(first->Text(), "1+3 2");
    // What was pasted can be undone with the typing behind it.
    for (int steps = 0; steps < 2; steps++)
        test::TypeKey(stage.Window(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_STREQ(first->Text(), "1 2");
    // A text of several lines in a document stays unchanged.
    first->SetText("1\n2");
    EXPECT_STREQ(first->Text(), "1\n2");
}

// A press beside the fields gives the focus to the window, where its keys play notes.
TEST_F(ControlTest, APressBesideAFieldLeavesIt) {
    test::Press(*panel, {150, 90});
    EXPECT_FALSE(first->IsFocus());
}

TEST_F(ControlTest, ABoxTakesLinesWhenItIsLeft) {
    auto* box = new kits::TextBox({0, 30, 99, 49}, "box", new BMessage(4));
    panel->AddChild(box);
    box->SetTarget(&listener);
    box->SetText("one");
    const auto type = [this](int key, Qt::KeyboardModifiers held = Qt::NoModifier) {
        test::TypeKey(stage.Window(), key, held);
    };
    box->MakeFocus();
    type(Qt::Key_Tab);
    EXPECT_THAT(listener.codes, ElementsAre()) << "nothing has changed";
    box->MakeFocus();
    type(Qt::Key_End, Qt::ControlModifier);
    type(Qt::Key_Return);
    test::Type(stage.Window(), "two");
    EXPECT_EQ(box->Text(), "one\ntwo");
    EXPECT_EQ(box->Confirmed(), "one");
    type(Qt::Key_Tab);
    EXPECT_EQ(box->Confirmed(), "one\ntwo");
    EXPECT_THAT(listener.codes, ElementsAre(4));
    // Escape takes back the typing, and Ctrl Z brings it back.
    box->MakeFocus();
    type(Qt::Key_End, Qt::ControlModifier);
    test::Type(stage.Window(), "!");
    type(Qt::Key_Escape);
    EXPECT_EQ(box->Text(), "one\ntwo");
    type(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(box->Text(), "one\ntwo!");
    EXPECT_TRUE(box->IsFocus());
    type(Qt::Key_Return, Qt::ControlModifier);
    EXPECT_FALSE(box->IsFocus());
    EXPECT_EQ(box->Confirmed(), "one\ntwo!");
    // A program that sets the text sends nothing.
    box->SetText("three");
    test::Settle();
    EXPECT_EQ(box->Text(), "three");
    EXPECT_THAT(listener.codes, ElementsAre(4, 4));
}

TEST(Menu, TellsWhatIsChosenToWhoCannotSeeIt) {
    auto* menu = new BPopUpMenu("voices");
    menu->AddItem(new BMenuItem("max. 2 voices", new BMessage(2)));
    auto* field = new BMenuField({0, 0, 99, 20}, "voices", nullptr, menu);
    const test::Stage stage(field);
    QAccessibleInterface* told =
        QAccessible::queryAccessibleInterface(field->Widget().findChild<QToolButton*>());
    ASSERT_TRUE(told);
    EXPECT_EQ(told->role(), QAccessible::ComboBox);
    EXPECT_EQ(told->text(QAccessible::Name), "voices");
    EXPECT_EQ(told->text(QAccessible::Description), "");
    menu->SetUsual("as many as there are");
    EXPECT_EQ(told->text(QAccessible::Value), "as many as there are");
    menu->FindItem(2)->Choose();
    EXPECT_EQ(told->text(QAccessible::Name), "voices");
    EXPECT_EQ(told->text(QAccessible::Description), "max. 2 voices");
    EXPECT_EQ(told->text(QAccessible::Value), "max. 2 voices");
}

TEST(Menu, OpensForTheKeysAtTheUsualOrTheMarkedItem) {
    Listener listener;
    auto* menu = new BPopUpMenu("mode");
    for (uint32 code = 1; code <= 3; code++)
        menu->AddItem(new BMenuItem(std::to_string(code).c_str(), new BMessage(code)));
    menu->SetTargetForItems(&listener);
    auto* field = new BMenuField({0, 0, 99, 20}, "mode", nullptr, menu);
    const test::Stage stage(field);
    auto* button = field->Widget().findChild<QToolButton*>();
    menu->SetUsual("1");
    for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Up, Qt::Key_Up}) {
        // Runs in the loop of the open menu.
        QTimer::singleShot(0, button, [button, key] {
            QTest::keyClick(button->menu(), key);
            QTest::keyClick(button->menu(), Qt::Key_Return);
        });
        button->showMenu();
        test::Settle();
    }
    EXPECT_THAT(listener.codes, ElementsAre(2, 3, 2, 1));
}

/// A device that is plugged in while a person looks for it in the menu is such a change.
TEST(Menu, FollowsItsItemsWhileItIsOpen) {
    Listener listener;
    auto* menu = new BPopUpMenu("source");
    const auto fill = [&](uint32 first) {
        menu->RemoveAll();
        for (const uint32 code : {first, first + 1})
            menu->AddItem(new BMenuItem(std::to_string(code).c_str(), new BMessage(code)));
        menu->SetTargetForItems(&listener);
    };
    fill(1);
    auto* field = new BMenuField({0, 0, 99, 20}, "source", nullptr, menu);
    const test::Stage stage(field);
    QMenu* shown = field->Widget().findChild<QToolButton*>()->menu();
    shown->popup({});
    fill(3);
    shown->actions().first()->trigger();
    test::Settle();
    EXPECT_THAT(listener.codes, ElementsAre()) << "that item is gone";
    EXPECT_EQ(shown->actions().last()->text(), "4");
    shown->actions().last()->trigger();
    shown->hide();
    test::Settle();
    EXPECT_THAT(listener.codes, ElementsAre(4));
}

/// Names of files occur among these texts.
TEST(Menu, HasRoomOnTheScreenWhateverItsItemsSay) {
    Listener listener;
    auto* menu = new BPopUpMenu("names");
    menu->AddItem(new BMenuItem((std::string(250, 'm') + " & folder").c_str(), new BMessage(7)));
    menu->AddItem(new BMenuItem("short & sweet", new BMessage(8)));
    menu->ItemAt(1)->SetKeys("Ctrl+S");
    menu->SetTargetForItems(&listener);
    auto* field = new BMenuField({0, 0, 99, 20}, "names", nullptr, menu);
    const test::Stage stage(field);
    QMenu* shown = field->Widget().findChild<QToolButton*>()->menu();
    shown->popup({});
    EXPECT_LT(shown->width(), 700);
    QAction* const item = shown->actions().first();
    EXPECT_TRUE(item->text().startsWith("mmm")) << item->text().toStdString();
    EXPECT_TRUE(item->text().endsWith("m && folder")) << item->text().toStdString();
    EXPECT_EQ(shown->actions().last()->text(), "short && sweet\tCtrl+S");
    item->trigger();
    shown->hide();
    test::Settle();
    EXPECT_THAT(listener.codes, ElementsAre(7));
}

TEST(Menu, InRadioModeOneItemIsMarkedAndGivesTheTitle) {
    Listener listener;
    BPopUpMenu menu("nothing chosen");
    for (uint32 code : {10U, 11U, 12U})
        menu.AddItem(new BMenuItem(std::to_string(code).c_str(), new BMessage(code)));
    menu.SetTargetForItems(&listener);
    EXPECT_EQ(menu.Title(), "nothing chosen");
    menu.FindItem(11)->Choose();
    menu.FindItem(12)->Choose();
    test::Settle();
    EXPECT_EQ(menu.Title(), "12");
    EXPECT_FALSE(menu.FindItem(11)->IsMarked());
    EXPECT_THAT(listener.codes, ElementsAre(11, 12));
    menu.RemoveAll();
    EXPECT_EQ(menu.CountItems(), 0U);
    EXPECT_EQ(menu.Title(), "nothing chosen");
}

} // namespace
