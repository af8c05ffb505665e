// SPDX-License-Identifier: GPL-3.0-or-later
// Catches faults of the window in which a person says what a sound is.
#include "app/DescriptionWindow.h"
#include "app/MainViewStage.h"
#include "app/bar/BarView.h"
#include "app/drawer/Drawer.h"
#include "app/drawer/SoundListView.h"
#include "documents/PlayingElement.h"
#include "documents/SoundDocument.h"
#include "kits/interface/TextBox.h"
#include "kits/interface/backends/ViewWidget.h"
#include "kits/interface/backends/WindowWidget.h"

#include <QMenu>
#include <QToolButton>
#include <QWindow>
#include <algorithm>
#include <utility>

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using vexa::Sound;
using vexa::SoundInfo;

class DescriptionTest : public test::MainViewTest {
  protected:
    void OpenBoth() {
        Open();
        Press(*window, Qt::Key_I);
    }
    static void Press(BWindow& to, int key) { test::TypeKey(to, key, Qt::ControlModifier); }
    vexa::DescriptionWindow& Described() { return *window->Description(); }
    BTextControl& Line(const char* name) {
        return dynamic_cast<BTextControl&>(*Described().FindView(name));
    }
    kits::TextBox& Comment() {
        return dynamic_cast<kits::TextBox&>(*Described().FindView("comment"));
    }
    BMenu& Categories() {
        return *dynamic_cast<BMenuField&>(*Described().FindView("category")).Menu();
    }
    void Say(const char* name, const char* text) {
        Line(name).MakeFocus();
        Line(name).Type(text);
        test::TypeKey(Described(), Qt::Key_Return);
    }
    void SayComment(const char* line, const char* next) {
        Comment().MakeFocus();
        Press(Described(), Qt::Key_A);
        test::Type(Described(), line);
        test::TypeKey(Described(), Qt::Key_Return);
        test::Type(Described(), next);
        Press(Described(), Qt::Key_Return);
    }
    void ChooseCategory(const char* word) {
        Categories().FindItem(word)->Choose();
        test::Settle();
    }
    void Pulse() {
        BMessage pulse(B_PULSE);
        Described().MessageReceived(&pulse);
        window->MessageReceived(&pulse);
        test::Settle();
    }
    /// Returns all that the window shows.
    std::vector<std::string> Shown() {
        return {Line("name").Text(), Line("author").Text(), Categories().Title(),
                Line("tags").Text(), Comment().Text()};
    }
    const SoundInfo& Info() { return view->Played().State().info; }
    void SaveAs(const char* name) {
        view->SaveSound(name);
        test::Settle();
    }
};

TEST_F(DescriptionTest, WhatIsSaidIsUndoneSavedReadBackAndListed) {
    OpenBoth();
    ASSERT_TRUE(window->Description());
    EXPECT_THAT(OpenTitles(), ElementsAre("About This Sound"));
    EXPECT_EQ(Described().Widget().windowHandle()->transientParent(),
              window->Widget().windowHandle());
    const Sound before = view->ConstructSound();
    ASSERT_TRUE(before.info.name && before.info.comment);
    const std::vector<std::string> first = Shown();
    EXPECT_EQ(first[0], *before.info.name);
    EXPECT_EQ(first[4], *before.info.comment);
    EXPECT_EQ(Described().Widget().focusWidget(), Line("name").Widget().Content());

    // Each is a step of its own, however soon it follows. The Shift of a capital is no reason to
    // enter what has been typed so far.
    Line("name").MakeFocus();
    Line("name").Type(" Rolling ");
    test::TypeKey(Described(), Qt::Key_Shift);
    test::Type(Described(), "hills ");
    test::TypeKey(Described(), Qt::Key_Return);
    Say("author", "Anna");
    ChooseCategory("lead");
    Say("tags", "soft, mine");
    SayComment("Two <hills> & a valley.", "Turn a.");
    const std::vector<std::string> said = {"Rolling hills", "Anna", "lead", "soft, mine",
                                           "Two <hills> & a valley.\nTurn a."};
    EXPECT_EQ(Shown(), said);
    EXPECT_TRUE(view->Changed());
    for (const char* step : {"comment", "tags", "category", "author", "name"}) {
        EXPECT_EQ(view->UndoName(), step);
        EXPECT_TRUE(view->Changed()) << step;
        Press(Described(), Qt::Key_Z);
    }
    EXPECT_FALSE(view->CanUndo());
    EXPECT_FALSE(view->Changed());
    EXPECT_EQ(view->ConstructSound(), before);
    Pulse();
    EXPECT_EQ(Shown(), first);
    while (view->CanRedo())
        view->Redo();
    Pulse();
    EXPECT_EQ(Shown(), said);

    // A name that the person has given stays; how the sound is played stays as well.
    SaveAs("mine.xml");
    EXPECT_FALSE(view->Changed());
    EXPECT_EQ(Shown(), said);
    const auto read = vexa::ReadSound(In("sounds/mine.xml"));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->author, "Anna");
    EXPECT_EQ(read->info, (SoundInfo{said[0], said[2], said[3], said[4]}));
    EXPECT_EQ(read->playing, before.playing);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    const auto isListed = [&] {
        return std::ranges::any_of(window->Sounds()->List().Rows(), [](const auto& entry) {
            return entry->name == "Rolling hills" && entry->category == "lead" &&
                   entry->author == "Anna" && entry->tags == "soft, mine";
        });
    };
    while (!isListed() && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        Pulse();
    }
    EXPECT_TRUE(isListed());

    // What is emptied is no longer there, but there is always an author.
    Say("name", "");
    Say("author", "");
    ChooseCategory("none");
    Say("tags", " ");
    Press(Described(), Qt::Key_S);
    EXPECT_EQ(vexa::ReadSound(In("sounds/mine.xml"))->info, (SoundInfo{{}, {}, {}, said[4]}));
    EXPECT_EQ(Line("name").Placeholder(), "mine");
    EXPECT_EQ(Shown()[1], vexa::kDefaultAuthor);
    EXPECT_THAT(alerts.texts, ElementsAre());
}

/// The name that a sound came with follows the file, in all steps of the sound.
TEST_F(DescriptionTest, ANameThatNobodyHasGivenFollowsTheFile) {
    OpenBoth();
    Enter("Fy", "3");
    SaveAs("first.xml");
    EXPECT_EQ(Info().name, "first");
    EXPECT_EQ(vexa::ReadSound(In("sounds/first.xml"))->info.name, "first");
    Pulse();
    EXPECT_EQ(Shown()[0], "first");
    EXPECT_FALSE(view->Changed());
    view->Undo();
    EXPECT_EQ(Info().name, "first");
    EXPECT_TRUE(view->Changed());
    view->Redo();
    EXPECT_FALSE(view->Changed());
    Say("name", "Given");
    SaveAs("second.xml");
    EXPECT_EQ(Info().name, "Given");
    view->Undo();
    EXPECT_EQ(Info().name, "second");
    SaveAs("third.xml");
    EXPECT_EQ(vexa::ReadSound(In("sounds/third.xml"))->info.name, "second")
        << "chosen by going back to it";
}

TEST_F(DescriptionTest, ASoundWithoutSettingsOfPlayingPlaysAsItDid) {
    folder.Write("sounds/bare.xml", "<vexasound><info><author>A</author></info><vexafunction>"
                                    "<expression>x</expression></vexafunction></vexasound>");
    OpenBoth();
    ASSERT_TRUE(view->LoadSound(In("sounds/bare.xml")));
    alerts.texts.clear();
    Pulse();
    EXPECT_THAT(Shown(), ElementsAre("", "A", "none", "", ""));
    Say("tags", "plain");
    EXPECT_EQ(Shown()[1], "A") << "who says what a sound is has not made it";
    EXPECT_FALSE(view->ConstructSound().playing);
    EXPECT_FALSE(view->Engine().playing.given);
    SaveAs("bare.xml");
    EXPECT_THAT(test::Contents(In("sounds/bare.xml")),
                testing::AllOf(HasSubstr("<tags>plain</tags>"), Not(HasSubstr("<playing>"))));
}

TEST_F(DescriptionTest, EditsKeepAnAuthorThatThePersonHasEntered) {
    settings->Set(vexa::kAuthorSetting, std::string("Berta"));
    OpenBoth();
    Enter("Fy", "3");
    EXPECT_EQ(view->SoundAuthor(), "Berta");
    Pulse();
    Say("author", "Anna");
    Enter("Fy", "4");
    EXPECT_EQ(view->SoundAuthor(), "Anna");
    view->Undo();
    view->Undo();
    EXPECT_EQ(view->SoundAuthor(), "Berta");
    Enter("Fy", "5");
    EXPECT_EQ(view->SoundAuthor(), "Berta") << "it was taken back";
    Pulse();
    Say("author", "Anna");
    ASSERT_TRUE(view->LoadSound(In("sounds/bell.xml")));
    Enter("Fy", "6");
    EXPECT_EQ(view->SoundAuthor(), "Berta") << "another sound";
}

TEST_F(DescriptionTest, WhatIsRefusedIsMarkedAndChangesNothing) {
    OpenBoth();
    const Sound before = view->ConstructSound();
    const auto isMarked = [](const BView& field) {
        return field.Widget().Content()->property("wrong").toBool();
    };
    Say("name", "a\x07"
                "b");
    EXPECT_TRUE(isMarked(Line("name")));
    EXPECT_THAT(Line("name").ToolTip(), HasSubstr("control character"));
    const std::string longText(vexa::kLongestInfo + 1, 'x');
    Say("tags", longText.c_str());
    EXPECT_TRUE(isMarked(Line("tags")));
    EXPECT_EQ(view->ConstructSound(), before);
    EXPECT_FALSE(view->CanUndo());
    // What is refused remains to be mended, until another sound comes.
    Pulse();
    EXPECT_EQ(Line("tags").Text(), longText);
    Say("name", "ab");
    EXPECT_FALSE(isMarked(Line("name")));
    EXPECT_EQ(Info().name, "ab");
    ASSERT_TRUE(view->LoadSound(In("sounds/bell.xml")));
    Pulse();
    EXPECT_FALSE(isMarked(Line("tags")));
    EXPECT_EQ(Line("tags").Text(), Info().tags);
}

/// A MIDI program, a click in the list or Escape comes between typing and confirming.
TEST_F(DescriptionTest, WhatIsTypedBelongsToTheSoundThatItWasTypedFor) {
    OpenBoth();
    Line("tags").MakeFocus();
    Line("tags").Type("for the first");
    Comment().MakeFocus();
    ASSERT_TRUE(view->LoadSound(In("sounds/bell.xml")));
    const SoundInfo bell = Info();
    test::Settle();
    Pulse();
    EXPECT_EQ(Info(), bell);
    EXPECT_EQ(Line("tags").Text(), bell.tags);
    view->Undo();
    EXPECT_EQ(Info().tags, "for the first");
    Pulse();
    // What is entered changes no other part, which may have changed meanwhile.
    const std::optional<std::string> name = Info().name;
    Say("name", "Taken back");
    Line("tags").MakeFocus();
    Line("tags").Type("late");
    Comment().MakeFocus();
    view->Undo();
    test::Settle();
    EXPECT_EQ(Info().name, name);
    EXPECT_EQ(Info().tags, "late");
    // A change of another part leaves what is being typed.
    Line("tags").MakeFocus();
    Line("tags").Type("half");
    Enter("Fy", "3");
    view->SwitchAB();
    EXPECT_EQ(Info().tags, "half") << "entered before the slots changed";
    Pulse();
    Line("tags").Type("only in B");
    view->SwitchAB();
    Pulse();
    EXPECT_STREQ(Line("tags").Text(), "half");
    view->SwitchAB();
    EXPECT_EQ(Info().tags, "only in B");
}

TEST_F(DescriptionTest, IsOpenedAndClosedInManyWaysAndLeavesNothingBehind) {
    Open();
    window->ResizeTo(1290, 580);
    test::Settle();
    const auto isOpen = [this] { return !OpenTitles().empty(); };
    const auto middle = [this] {
        const BRect box = window->Bar().CaptionFrame();
        return BPoint{(box.left + box.right) / 2, (box.top + box.bottom) / 2};
    };
    test::Click(window->Bar(), middle());
    test::Settle();
    EXPECT_TRUE(isOpen());
    Line("name").Type("typed");
    Described().PostMessage(B_QUIT_REQUESTED);
    test::Settle();
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(Info().name, "typed") << "closing is leaving";
    auto& menu = dynamic_cast<BMenuField&>(*window->FindView("main menu"));
    emit menu.Widget().findChild<QToolButton*>()->menu()->aboutToShow();
    menu.Menu()->FindItem("About This Sound")->Choose();
    test::Settle();
    EXPECT_TRUE(isOpen());
    // Behind the last control comes the first.
    Comment().MakeFocus();
    test::TypeKey(Described(), Qt::Key_Tab);
    EXPECT_EQ(Described().Widget().focusWidget(), Line("name").Widget().Content());
    // The first Escape in a comment takes back the typing.
    Comment().MakeFocus();
    test::Type(Described(), "abc");
    test::TypeKey(Described(), Qt::Key_Escape);
    EXPECT_TRUE(isOpen());
    EXPECT_FALSE(Comment().IsEdited());
    test::TypeKey(Described(), Qt::Key_Escape);
    EXPECT_FALSE(isOpen());
    Press(*window, Qt::Key_I);
    EXPECT_TRUE(isOpen());
    Press(Described(), Qt::Key_I);
    EXPECT_FALSE(isOpen());
    // At the program's end either window may be the first to go.
    Press(*window, Qt::Key_I);
    delete window->Description();
    EXPECT_EQ(window->Description(), nullptr);
    view->InitialSound();
    Press(*window, Qt::Key_I);
    EXPECT_TRUE(isOpen());
    delete std::exchange(window, nullptr);
    test::Settle();
    EXPECT_FALSE(isOpen());
}

TEST_F(DescriptionTest, SaysWhatItsControlsAreFor) {
    OpenBoth();
    std::size_t count = 0;
    const BView& sheet = *Described().FindView("description");
    for (const BView* child : sheet.Children()) {
        count++;
        EXPECT_FALSE(child->Widget().toolTip().isEmpty()) << child->Name();
        const QWidget* control = child->Widget().Content();
        while (control->focusProxy())
            control = control->focusProxy();
        EXPECT_THAT(control->accessibleName().toStdString(), HasSubstr("the sound"));
    }
    EXPECT_EQ(count, 5U);
}

/// A category that only a later version knows can be kept and chosen.
TEST_F(DescriptionTest, WhatIsOnlyLookedAtStaysAsItIs) {
    OpenBoth();
    Sound later = view->ConstructSound();
    later.info.category = "none";
    later.info.comment = "Loud\u00a0!\u2028Turn\u2029it\rdown";
    ASSERT_TRUE(vexa::WriteSound(In("sounds/later.xml"), later));
    view->LoadSound(In("sounds/later.xml"));
    Pulse();
    Described().Close();
    Press(*window, Qt::Key_I);
    EXPECT_EQ(Info(), later.info);
    EXPECT_FALSE(view->Changed());
    ChooseCategory("none");
    EXPECT_EQ(Info().category, std::nullopt);
    Categories().ItemAt(Categories().CountItems() - 1)->Choose();
    test::Settle();
    EXPECT_EQ(Info().category, "none");
    // What is typed changes nothing beside it; the box ends its lines as others do.
    Comment().MakeFocus();
    Press(Described(), Qt::Key_End);
    test::TypeKey(Described(), Qt::Key_Return, Qt::ShiftModifier);
    test::Type(Described(), "!");
    EXPECT_EQ(Comment().Text(), "Loud\u00a0!\u2028Turn\nit\ndown\n!");
    test::TypeKey(Described(), Qt::Key_Escape);
    EXPECT_EQ(Comment().Text(), later.info.comment);
}

} // namespace
