// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/FilePanel.h"

#include "kits/interface/Control.h"
#include "kits/interface/backends/ViewWidget.h"
#include "kits/interface/backends/WindowWidget.h"
#include "kits/storage/Entry.h"
#include "support/MessageLog.h"
#include "support/TemporaryFolder.h"
#include "support/WindowStage.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCompleter>
#include <QHeaderView>
#include <QLineEdit>
#include <QScrollBar>
#include <QTest>
#include <QTextDocumentFragment>
#include <QTreeView>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr uint32 kResult = FourCC("RSLT");

template<class T>
T* ContentOf(const BFilePanel& panel, const char* view) {
    return panel.Window()->ChildAt(0)->FindView(view)->Widget().findChild<T*>();
}

/// A panel, and a user's actions on it.
class Panel : public BFilePanel {
  public:
    Panel(file_panel_mode mode, const BHandler& receiver, const fs::path& folder,
          uint32 flavors = B_FILE_NODE, bool multiple = true, BRefFilter* filter = nullptr)
        : Panel(mode, BMessenger(&receiver), folder, flavors, multiple, filter) {}

    void WasHidden() override { hidden++; }
    void SelectionChanged() override { selections++; }

    QTreeView& List() const { return *ContentOf<QTreeView>(*this, "PoseView"); }
    QLineEdit& Name() const { return *ContentOf<QLineEdit>(*this, "text view"); }
    QLineEdit& Path() const { return *ContentOf<QLineEdit>(*this, "path view"); }

    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        const QAbstractItemModel& model = *List().model();
        for (int row = 0; row < model.rowCount(); row++)
            names.push_back(model.index(row, 0).data().toString().toStdString());
        return names;
    }
    std::string Folder() const {
        entry_ref ref;
        GetPanelDirectory(&ref);
        return BPath(&ref).Path();
    }
    std::vector<std::string> Selected() {
        std::vector<std::string> names;
        Rewind();
        entry_ref ref;
        while (GetNextSelectedRef(&ref) == B_OK)
            names.push_back(ref.name);
        return names;
    }

    /// Sends to the focused view.
    void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const {
        QTest::keyClick(Window()->Widget().focusWidget(), key, modifiers);
        test::Settle();
    }
    void Press(const char* button) const {
        dynamic_cast<BButton&>(*Window()->FindView(button)).Press();
        test::Settle();
    }

    int hidden = 0;
    int selections = 0;

  private:
    Panel(file_panel_mode mode, const BMessenger& target, const fs::path& folder, uint32 flavors,
          bool multiple, BRefFilter* filter)
        : BFilePanel(mode, &target, nullptr, flavors, multiple, new BMessage(kResult), filter) {
        SetPanelDirectory(folder.c_str());
        Show();
        test::Settle();
    }
};

class FilePanelTest : public testing::Test {
  protected:
    FilePanelTest() {
        folder.Write("b2.txt", std::string(10, 'x'));
        folder.Write("b10.txt", std::string(3000, 'x'));
        folder.Write("Apple.txt", std::string(200, 'x'));
        folder.Write(".secret", "x");
        folder.Write("zoo/inside.txt", "x");
        const std::filesystem::file_time_type now = fs::file_time_type::clock::now();
        fs::last_write_time(folder.Path() / "b2.txt", now - std::chrono::hours(1));
        fs::last_write_time(folder.Path() / "Apple.txt", now - std::chrono::hours(2));
        fs::last_write_time(folder.Path() / "b10.txt", now - std::chrono::hours(3));
    }

    test::TemporaryFolder folder;
    test::MessageLog receiver;
    test::AlertLog alerts;
};

TEST_F(FilePanelTest, SendsWhatIsOpenedAndHidesItself) {
    Panel panel(B_OPEN_PANEL, receiver, folder.Path());
    EXPECT_TRUE(panel.IsShowing());
    panel.Key(Qt::Key_B);
    EXPECT_THAT(panel.Selected(), ElementsAre("b2.txt")) << "typing selects";
    panel.Key(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_GE(panel.selections, 2);
    panel.Key(Qt::Key_Return);
    ASSERT_EQ(receiver.messages.size(), 1U);
    const BMessage& result = receiver.messages[0];
    EXPECT_EQ(result.what, kResult);
    entry_ref first;
    entry_ref second;
    ASSERT_EQ(result.FindRef("refs", 0, &first), B_OK);
    ASSERT_EQ(result.FindRef("refs", 1, &second), B_OK);
    EXPECT_EQ(result.FindRef("refs", 2, &second), B_BAD_INDEX);
    EXPECT_EQ(BPath(&first).Path(), folder.Path() / "b2.txt");
    EXPECT_EQ(BPath(&second).Path(), folder.Path() / "b10.txt");
    EXPECT_FALSE(panel.IsShowing());
    EXPECT_EQ(panel.hidden, 1);
}

TEST_F(FilePanelTest, ListsTheFilesOfAFolderBeneathAnother) {
    folder.Write("zoo/lower/inside.txt", "beneath");
    folder.Write("zoo/lower/outside.txt", "beneath");
    folder.Write("zoo/lower/more/x.txt", "beneath");
    Panel panel(B_OPEN_PANEL, receiver, folder.Path());
    panel.SetBeneath((folder.Path() / "zoo").c_str(), (folder.Path() / "zoo/lower").c_str());
    panel.Key(Qt::Key_Return);
    EXPECT_THAT(panel.Names(), ElementsAre("lower", "inside.txt", "outside.txt"));
    panel.Key(Qt::Key_I);
    panel.Key(Qt::Key_Down, Qt::ShiftModifier);
    panel.Key(Qt::Key_Return);
    ASSERT_EQ(receiver.messages.size(), 1U);
    entry_ref first;
    entry_ref second;
    receiver.messages[0].FindRef("refs", 0, &first);
    receiver.messages[0].FindRef("refs", 1, &second);
    EXPECT_EQ(BPath(&first).Path(), folder.Path() / "zoo/inside.txt");
    EXPECT_EQ(BPath(&second).Path(), folder.Path() / "zoo/lower/outside.txt");
}

TEST_F(FilePanelTest, GoesThroughFoldersByKeyboard) {
    Panel panel(B_OPEN_PANEL, receiver, folder.Path());
    EXPECT_THAT(panel.Names(), ElementsAre("zoo", "Apple.txt", "b2.txt", "b10.txt"));
    panel.Key(Qt::Key_Return);
    EXPECT_EQ(panel.Folder(), folder.Path() / "zoo") << "the first entry has the keyboard";
    EXPECT_EQ(panel.Path().text().toStdString(), (folder.Path() / "zoo").string());
    EXPECT_THAT(panel.Names(), ElementsAre("inside.txt"));

    panel.Key(Qt::Key_Backspace);
    EXPECT_EQ(panel.Folder(), folder.Path());
    panel.Key(Qt::Key_Return);
    EXPECT_EQ(panel.Folder(), folder.Path() / "zoo") << "the folder that was left is selected";
    panel.Key(Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(panel.Folder(), folder.Path());
    panel.Press("parent button");
    EXPECT_EQ(panel.Folder(), folder.Path().parent_path());
    panel.Key(Qt::Key_Home, Qt::AltModifier);
    EXPECT_EQ(panel.Folder(), BPath(std::getenv("HOME")).Path());
    panel.Key(Qt::Key_L, Qt::ControlModifier);
    panel.Path().setText(QString::fromStdString((folder.Path() / "zoo/../zoo").string()));
    panel.Key(Qt::Key_Return);
    EXPECT_EQ(panel.Folder(), folder.Path() / "zoo");
    EXPECT_TRUE(alerts.texts.empty());

    panel.Key(Qt::Key_Escape);
    EXPECT_FALSE(panel.IsShowing());
    EXPECT_EQ(panel.hidden, 1);
    EXPECT_TRUE(receiver.messages.empty());
    panel.SetPanelDirectory("/");
    panel.Show();
    panel.Key(Qt::Key_Backspace);
    EXPECT_EQ(panel.Folder(), "/") << "above the root is nothing";
}

TEST_F(FilePanelTest, SortsByEachColumnAndKeepsTheSelection) {
    Panel panel(B_OPEN_PANEL, receiver, folder.Path());
    panel.Key(Qt::Key_A);
    QTreeView& list = panel.List();
    list.sortByColumn(0, Qt::DescendingOrder);
    EXPECT_THAT(panel.Names(), ElementsAre("zoo", "b10.txt", "b2.txt", "Apple.txt"));
    list.sortByColumn(1, Qt::AscendingOrder);
    EXPECT_THAT(panel.Names(), ElementsAre("zoo", "b2.txt", "Apple.txt", "b10.txt"));
    list.sortByColumn(2, Qt::AscendingOrder);
    EXPECT_THAT(panel.Names(), ElementsAre("zoo", "b10.txt", "Apple.txt", "b2.txt"));
    EXPECT_THAT(panel.Selected(), ElementsAre("Apple.txt"));
    const int selections = panel.selections;
    panel.Key(Qt::Key_H, Qt::ControlModifier);
    EXPECT_THAT(panel.Names(), ElementsAre("zoo", "b10.txt", "Apple.txt", "b2.txt", ".secret"));
    panel.Key(Qt::Key_H, Qt::ControlModifier);
    EXPECT_EQ(panel.Names().size(), 4U);
    EXPECT_THAT(panel.Selected(), ElementsAre("Apple.txt"));
    EXPECT_EQ(panel.selections, selections) << "the selection has not changed";
}

TEST_F(FilePanelTest, ShowsWhatHasHappenedToTheFolder) {
    /// Removes all other files while the folder is read.
    class Only : public BRefFilter {
      public:
        bool Filter(const entry_ref* ref, const struct stat*) override {
            if (!std::string(ref->directory).ends_with("/zoo"))
                return true;
            for (const auto& entry : fs::directory_iterator(ref->directory)) {
                if (entry.path().filename() != ref->name)
                    fs::remove(entry);
            }
            return true;
        }
    } only;
    for (const char* name : {"zoo/1", "zoo/2"})
        folder.Write(name, "x");
    EXPECT_EQ(Panel(B_OPEN_PANEL, receiver, folder.Path() / "zoo", B_FILE_NODE, true, &only)
                  .Names()
                  .size(),
              1U);
    EXPECT_THAT(alerts.texts, ElementsAre());
    fs::remove_all(folder.Path() / "zoo");
    folder.Write("zoo/inside.txt", "x");

    Panel panel(B_OPEN_PANEL, receiver, folder.Path() / "zoo");
    folder.Write("zoo/new.txt", "x");
    panel.Key(Qt::Key_F5);
    EXPECT_THAT(panel.Names(), ElementsAre("inside.txt", "new.txt"));
    for (const char* name : {"zoo/inside.txt", "zoo/new.txt"})
        fs::remove(folder.Path() / name);
    panel.Key(Qt::Key_F5);
    // In an empty list there is nothing to copy.
    panel.Key(Qt::Key_C, Qt::ControlModifier);
    EXPECT_FALSE(panel.List().model()->headerData(99, Qt::Horizontal).isValid());
    EXPECT_THAT(panel.Names(), ElementsAre());
    fs::remove_all(folder.Path() / "zoo");
    panel.Key(Qt::Key_F5);
    EXPECT_EQ(panel.Folder(), folder.Path());
    ASSERT_FALSE(alerts.texts.empty());
    EXPECT_THAT(alerts.texts[0], HasSubstr((folder.Path() / "zoo").string()));
    EXPECT_THAT(alerts.texts[0], HasSubstr("No such file or directory"));
}

TEST_F(FilePanelTest, ReportsAFolderThatCannotBeRead) {
    Panel panel(B_OPEN_PANEL, receiver, folder.Path());
    // A file stands for a folder without rights, which would not stop root.
    panel.SetPanelDirectory((folder.Path() / "Apple.txt").c_str());
    EXPECT_THAT(alerts.texts, ElementsAre("Could not read the folder \"" + folder.Path().string() +
                                          "/Apple.txt\": Not a directory."));
    EXPECT_EQ(panel.Folder(), folder.Path());
    EXPECT_EQ(panel.Names().size(), 4U);
    if (::geteuid() == 0)
        return;
    ::chmod((folder.Path() / "zoo").c_str(), 0);
    panel.SetPanelDirectory((folder.Path() / "zoo").c_str());
    EXPECT_THAT(alerts.texts.back(), HasSubstr("Permission denied"));
    ::chmod((folder.Path() / "zoo").c_str(), 0700);
}

TEST_F(FilePanelTest, GoesToATypedFile) {
    class TextFiles : public BRefFilter {
      public:
        bool Filter(const entry_ref* ref, const struct stat*) override {
            return std::string(ref->name).ends_with(".txt");
        }
    } only;
    Panel panel(B_OPEN_PANEL, receiver, folder.Path(), B_FILE_NODE, true, &only);
    const auto go = [](const Panel& to, const std::string& path) {
        to.Key(Qt::Key_L, Qt::ControlModifier);
        QTest::keyClicks(&to.Path(), QString::fromStdString(path));
        to.Key(Qt::Key_Return);
    };
    const auto opened = [this] {
        entry_ref ref;
        EXPECT_EQ(receiver.messages.back().FindRef("refs", &ref), B_OK);
        return std::string(BPath(&ref).Path());
    };
    go(panel, "Apple.txt");
    ASSERT_EQ(receiver.messages.size(), 1U);
    EXPECT_EQ(opened(), folder.Path() / "Apple.txt");
    EXPECT_FALSE(panel.IsShowing());
    panel.Show();
    go(panel, (folder.Path() / "zoo/../zoo/inside.txt").string());
    ASSERT_EQ(receiver.messages.size(), 2U);
    EXPECT_EQ(opened(), folder.Path() / "zoo/inside.txt");
    EXPECT_TRUE(alerts.texts.empty());

    // What is not there stays to be corrected, until the field is left.
    panel.Show();
    for (const char* none : {"insid.txt", "inside.txt/x"}) {
        go(panel, none);
        EXPECT_EQ(alerts.texts.back(), "There is no file or folder \"" +
                                           (folder.Path() / "zoo" / none).string() + "\".");
        EXPECT_EQ(panel.Path().text(), none);
    }
    panel.Key(Qt::Key_Tab);
    EXPECT_EQ(panel.Path().text().toStdString(), (folder.Path() / "zoo").string());
    // Nor is a file opened that the panel does not list.
    go(panel, "../.secret");
    EXPECT_THAT(alerts.texts.back(), HasSubstr("none that can be chosen here"));
    EXPECT_TRUE(panel.Selected().empty());
    EXPECT_EQ(receiver.messages.size(), 2U);

    // Where a file is saved, its name is taken, and nothing is replaced yet.
    Panel saving(B_SAVE_PANEL, receiver, folder.Path());
    go(saving, "zoo/inside.txt");
    EXPECT_EQ(saving.Folder(), folder.Path() / "zoo");
    EXPECT_EQ(saving.Name().text(), "inside.txt");
    EXPECT_EQ(receiver.messages.size(), 2U);
}

TEST_F(FilePanelTest, TellsANameThatLooksLikeMarkupAsItIs) {
    folder.Write("zoo/x <b> & y.txt", "x");
    const Panel panel(B_OPEN_PANEL, receiver, folder.Path() / "zoo");
    ASSERT_THAT(panel.Names(), ElementsAre("inside.txt", "x <b> & y.txt"));
    const QString tip = panel.List().model()->index(1, 0).data(Qt::ToolTipRole).toString();
    EXPECT_EQ(QTextDocumentFragment::fromHtml(tip).toPlainText(), "x <b> & y.txt");
}

TEST_F(FilePanelTest, IsAllInSight) {
    Panel panel(B_SAVE_PANEL, receiver, folder.Path());
    BWindow& window = *panel.Window();
    panel.Hide();
    window.ResizeTo(4000, 3000);
    panel.Show();
    test::Settle();
    const BRect room = window.Room();
    const BRect frame = window.Frame();
    EXPECT_GE(frame.left, room.left);
    EXPECT_GE(frame.top, room.top);
    EXPECT_LE(frame.right, room.right);
    EXPECT_LE(frame.bottom, room.bottom);
    EXPECT_TRUE(frame.OffsetToCopy(0, 0).Contains(
        window.ChildAt(0)->FindView("default button")->Frame().LeftTop()));
}

TEST_F(FilePanelTest, ReturnsFoldersOnlyWhereTheyAreWanted) {
    Panel files(B_OPEN_PANEL, receiver, folder.Path(), B_FILE_NODE);
    files.Key(Qt::Key_Z);
    EXPECT_TRUE(files.Selected().empty());
    files.Press("default button");
    EXPECT_EQ(files.Folder(), folder.Path() / "zoo");
    Panel folders(B_OPEN_PANEL, receiver, folder.Path(), B_DIRECTORY_NODE);
    EXPECT_THAT(folders.Names(), ElementsAre("zoo"));
    folders.Key(Qt::Key_Z);
    folders.Press("default button");
    ASSERT_EQ(receiver.messages.size(), 1U);
    entry_ref ref;
    receiver.messages[0].FindRef("refs", &ref);
    EXPECT_EQ(BPath(&ref).Path(), folder.Path() / "zoo");
}

TEST_F(FilePanelTest, ListsWhatTheFilterLets) {
    class Large : public BRefFilter {
        bool Filter(const entry_ref*, const struct stat* status) override {
            return status->st_size > 100;
        }
    } filter;
    Panel panel(B_OPEN_PANEL, receiver, folder.Path(), B_FILE_NODE, true, &filter);
    EXPECT_THAT(panel.Names(), ElementsAre("zoo", "Apple.txt", "b10.txt"));
}

TEST_F(FilePanelTest, TwoPanelsGiveEachItsOwnSelection) {
    auto first = std::make_unique<Panel>(B_OPEN_PANEL, receiver, folder.Path());
    auto second = std::make_unique<Panel>(B_OPEN_PANEL, receiver, folder.Path() / "zoo");
    first->Key(Qt::Key_A);
    second->Key(Qt::Key_I);
    first->Key(Qt::Key_Return);
    second->Key(Qt::Key_Return);
    ASSERT_EQ(receiver.messages.size(), 2U);
    EXPECT_EQ(BFilePanel::SenderOf(receiver.messages[0]), first.get());
    EXPECT_EQ(BFilePanel::SenderOf(receiver.messages[1]), second.get());
    EXPECT_THAT(first->Selected(), ElementsAre("Apple.txt"));
    EXPECT_THAT(second->Selected(), ElementsAre("inside.txt"));
    first.reset();
    EXPECT_EQ(BFilePanel::SenderOf(receiver.messages[0]), nullptr);
    EXPECT_EQ(BFilePanel::SenderOf(BMessage(kResult)), nullptr);
    test::Settle();
}

TEST_F(FilePanelTest, SavesUnderATypedName) {
    Panel panel(B_SAVE_PANEL, receiver, folder.Path());
    panel.SetSaveText("new.txt");
    panel.Key(Qt::Key_H, Qt::ControlModifier);
    EXPECT_EQ(panel.Names().back(), "b10.txt");
    EXPECT_THAT(panel.Names(), testing::Contains(".secret")) << "keys work in the field as well";
    panel.Key(Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(panel.Folder(), folder.Path().parent_path());
    panel.SetPanelDirectory(folder.Path().c_str());
    QTest::keyClicks(&panel.Name(), "other");
    panel.Key(Qt::Key_Return);
    ASSERT_EQ(receiver.messages.size(), 1U);
    entry_ref directory;
    std::string name;
    ASSERT_EQ(receiver.messages[0].FindRef("directory", &directory), B_OK);
    ASSERT_EQ(receiver.messages[0].FindString("name", &name), B_OK);
    EXPECT_EQ(BPath(&directory).Path(), folder.Path());
    EXPECT_EQ(name, "other.txt") << "the extension was not selected";
    EXPECT_EQ(BFilePanel::SenderOf(receiver.messages[0]), &panel);
    EXPECT_TRUE(alerts.texts.empty());
}

TEST_F(FilePanelTest, GivesANameItsEndingBeforeItAsks) {
    Panel panel(B_SAVE_PANEL, receiver, folder.Path());
    panel.SetEnding(".txt");
    alerts.answer = 1;
    const auto saved = [&](const char* typed) {
        panel.Show();
        panel.SetSaveText(typed);
        panel.Press("default button");
        std::string name;
        if (!receiver.messages.empty())
            receiver.messages.back().FindString("name", &name);
        return name;
    };
    EXPECT_EQ(saved("one"), "one.txt");
    EXPECT_EQ(saved("one.txt"), "one.txt");
    EXPECT_EQ(saved("one.two"), "one.two.txt");
    EXPECT_TRUE(alerts.texts.empty());
    EXPECT_EQ(saved("Apple"), "Apple.txt");
    ASSERT_EQ(alerts.texts.size(), 1U);
    EXPECT_THAT(alerts.texts[0], HasSubstr("\"Apple.txt\" already exists"));
    folder.Write("plain", "");
    EXPECT_EQ(saved("plain"), "plain") << "which there is";
    // A text that cannot be a file name is still refused.
    EXPECT_EQ(saved(".."), "plain");
    EXPECT_EQ(saved("a/b"), "plain");
    EXPECT_EQ(alerts.texts.size(), 4U);
    EXPECT_THAT(alerts.texts.back(), HasSubstr("\"a/b"));
}

TEST_F(FilePanelTest, CompletesNamesWhileTheyAreTyped) {
    Panel panel(B_SAVE_PANEL, receiver, folder.Path());
    QTest::keyClicks(&panel.Name(), "B1");
    const QCompleter& completer = *panel.Name().completer();
    EXPECT_EQ(completer.completionCount(), 1);
    EXPECT_EQ(completer.currentCompletion(), "b10.txt");
    ASSERT_TRUE(completer.popup()->isVisible());
    QTest::keyClick(completer.popup(), Qt::Key_Down);
    QTest::keyClick(completer.popup(), Qt::Key_Return);
    test::Settle();
    EXPECT_EQ(panel.Name().text(), "b10.txt");
    EXPECT_FALSE(completer.popup()->isVisible());
    EXPECT_TRUE(alerts.texts.empty()) << "what was completed is not yet confirmed";
    EXPECT_TRUE(receiver.messages.empty());

    panel.Name().clear();
    QTest::keyClicks(&panel.Name(), "b");
    ASSERT_TRUE(completer.popup()->isVisible());
    panel.Key(Qt::Key_Escape);
    EXPECT_FALSE(completer.popup()->isVisible());
    EXPECT_TRUE(panel.IsShowing()) << "Escape closes the completions first";
    panel.Key(Qt::Key_Escape);
    EXPECT_FALSE(panel.IsShowing());

    panel.Show();
    panel.Path().setFocus();
    panel.Path().clear();
    QTest::keyClicks(&panel.Path(), QString::fromStdString((folder.Path() / "zo").string()));
    EXPECT_EQ(panel.Path().completer()->currentCompletion().toStdString(),
              (folder.Path() / "zoo").string());
}

TEST_F(FilePanelTest, AsksBeforeAFileIsReplaced) {
    Panel panel(B_SAVE_PANEL, receiver, folder.Path());
    panel.List().setFocus();
    panel.Key(Qt::Key_A);
    EXPECT_EQ(panel.Name().text(), "Apple.txt");
    alerts.answer = 0;
    panel.Press("default button");
    ASSERT_EQ(alerts.texts.size(), 1U);
    EXPECT_THAT(alerts.texts[0], HasSubstr("Apple.txt"));
    EXPECT_TRUE(receiver.messages.empty());
    EXPECT_TRUE(panel.IsShowing());
    alerts.answer = 1;
    panel.Press("default button");
    EXPECT_EQ(receiver.messages.size(), 1U);

    panel.Show();
    panel.SetSaveText("zoo");
    panel.Press("default button");
    EXPECT_EQ(panel.Folder(), folder.Path() / "zoo") << "the name of a folder opens it";
    EXPECT_EQ(receiver.messages.size(), 1U);
}

TEST_F(FilePanelTest, TheScrollBarsOutsideAreTheLists) {
    for (int i = 0; i < 100; i++)
        folder.Write("many/" + std::to_string(i), "");
    Panel panel(B_OPEN_PANEL, receiver, folder.Path() / "many");
    auto* bar = ContentOf<QScrollBar>(panel, "VScrollBar");
    ASSERT_GT(bar->maximum(), 0);
    panel.Key(Qt::Key_End);
    EXPECT_EQ(bar->value(), bar->maximum());
    bar->setValue(0);
    EXPECT_EQ(panel.List().indexAt({5, 5}).row(), 0);
}

TEST_F(FilePanelTest, MayGoWhileAMessageOfItsButtonsIsOnItsWay) {
    auto panel = std::make_unique<Panel>(B_SAVE_PANEL, receiver, folder.Path());
    panel->SetSaveText("name");
    dynamic_cast<BButton&>(*panel->Window()->FindView("default button")).Press();
    panel.reset();
    test::Settle();
    EXPECT_TRUE(receiver.messages.empty());
}

} // namespace
