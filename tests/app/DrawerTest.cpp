// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/drawer/Drawer.h"

#include "app/MainViewStage.h"
#include "app/drawer/ChipRow.h"
#include "app/drawer/SoundListView.h"
#include "kits/interface/backends/ViewWidget.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>

#include <gmock/gmock.h>

namespace {

using test::Settle;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

class DrawerTest : public test::MainViewTest {
  protected:
    /// Opens with the sounds of the program folder and a damaged one.
    void OpenDrawer() {
        std::ofstream(In("sounds/broken.xml")) << "<vexasound><envelope></vexasound>";
        Open();
        drawer = window->Sounds();
        ASSERT_TRUE(drawer);
        WaitFor([this] { return drawer->List().Rows().size() == Files().size(); });
    }
    template<class Condition>
    void WaitFor(const Condition& condition) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!condition() && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            drawer->Refresh();
        }
        EXPECT_TRUE(condition());
    }
    std::vector<std::string> Files() const { return folders.Documents("sounds"); }
    std::vector<std::string> Listed() const {
        std::vector<std::string> names;
        for (const auto& entry : drawer->List().Rows())
            names.push_back(entry->path.stem());
        return names;
    }
    std::size_t RowOf(const std::string& name) const {
        const std::vector<std::string> names = Listed();
        return std::size_t(std::find(names.begin(), names.end(), name) - names.begin());
    }
    void LookFor(const char* text) {
        drawer->SearchField().Type(text);
        Settle();
    }

    vexa::Drawer* drawer = nullptr;
};

TEST_F(DrawerTest, FindsShowsAndLoadsSounds) {
    OpenDrawer();
    vexa::SoundListView& list = drawer->List();
    EXPECT_EQ(list.LoadedRow(), RowOf("default"));
    LookFor("glass rings");
    ASSERT_THAT(Listed(), ElementsAre("glass-rings"));
    list.Activate(0);
    Settle();
    EXPECT_EQ(view->SoundName(), "glass-rings");
    EXPECT_EQ(list.LoadedRow(), 0U);
    // Selects by a click on the second visible row.
    LookFor("");
    list.MoveCursor(0);
    test::Click(list, {100, 80});
    Settle();
    EXPECT_EQ(view->SoundName(), Listed()[1]);
    // After a click keys play notes; after keys have moved the focus there they search for a sound.
    test::Type(*window, "q");
    EXPECT_STREQ(drawer->SearchField().Text(), "");
    drawer->Categories().MakeFocus();
    list.MakeFocus();
    test::Type(*window, "g");
    Settle();
    EXPECT_STREQ(drawer->SearchField().Text(), "g");
    LookFor("");
    // The name under the pointer is shown, also after other rows have moved there.
    const BPoint second = {100, 80};
    LookFor("glass rings");
    list.MouseMoved(second, B_INSIDE_VIEW, nullptr);
    EXPECT_STREQ(list.ToolTip(), "") << "there is no second row";
    LookFor("");
    EXPECT_STRNE(list.ToolTip(), "");
    LookFor("glass rings");
    EXPECT_STREQ(list.ToolTip(), "");
    // Down goes from the search to the list, and Escape shows all sounds again.
    drawer->SearchField().MakeFocus();
    test::TypeKey(*window, Qt::Key_Down);
    EXPECT_TRUE(list.IsFocus());
    drawer->SearchField().MakeFocus();
    drawer->SearchField().Confirm();
    test::TypeKey(*window, Qt::Key_Escape);
    Settle();
    EXPECT_EQ(Listed().size(), Files().size());
    // One category; then favourites, of which there are none before a star is pressed.
    for (std::size_t i = 0; i < drawer->Categories().CountParts(); i++) {
        const std::string word = drawer->Categories().DescribePart(i).name;
        drawer->Categories().Choose(i);
        const auto isBass = [](const auto& entry) { return entry->category == "bass"; };
        EXPECT_EQ(list.Rows().empty(), word == "★") << word;
        EXPECT_EQ(list.Describe().description.find("no favourites yet") == 0, word == "★") << word;
        EXPECT_EQ(std::ranges::all_of(list.Rows(), isBass), word == "★" || word == "bass") << word;
    }
    drawer->Categories().Choose(0);
    // What is found is shown from the top, however far the list was scrolled.
    for (const auto& find : {std::function<void()>([&] { LookFor("e"); }),
                             std::function<void()>([&] { drawer->Categories().Choose(3); })}) {
        LookFor("");
        drawer->Categories().Choose(0);
        list.MoveCursor(list.Rows().size() - 1);
        find();
        EXPECT_EQ(list.InSight().at(0), list.Rows().at(0)->path);
    }
    LookFor("");
    drawer->Categories().Choose(0);
    const auto loaded = view->SoundPath();
    EXPECT_THAT(list.InSight(), Contains(loaded)) << "all are shown again, and this one plays";
    vexa::Favourites kept;
    drawer->SetFavourites({}, [&](const vexa::Favourites& next) { kept = next; });
    list.MoveCursor(0);
    test::Click(list, {list.Bounds().right - 20, 16});
    EXPECT_THAT(kept, ElementsAre(Listed()[0] + ".xml"));
    EXPECT_TRUE(alerts.texts.empty());
}

/// A document may name any category.
TEST_F(DrawerTest, ASoundWhoseFileIsDeletedIsUnsavedAndIsShownWhenItComesBack) {
    OpenDrawer();
    vexa::SoundListView& list = drawer->List();
    view->SaveSound("zz-mine.xml");
    WaitFor([&] { return list.LoadedRow() == RowOf("zz-mine"); });
    EXPECT_FALSE(view->Changed());
    std::filesystem::remove(In("sounds/zz-mine.xml"));
    WaitFor([&] { return !list.LoadedRow(); });
    EXPECT_THAT(view->Caption(), testing::StartsWith("zz-mine *"));
    alerts.answer = 0;
    EXPECT_FALSE(view->MayGiveUpAll([] {}));
    EXPECT_THAT(alerts.texts, ElementsAre(HasSubstr("\"zz-mine\" has been deleted")));
    list.MoveCursor(0);
    view->SaveAgain();
    WaitFor([&] { return list.LoadedRow() == RowOf("zz-mine"); });
    EXPECT_FALSE(view->Changed());
    EXPECT_THAT(list.InSight(), testing::Contains(In("sounds/zz-mine.xml")));
    // If it is left for another sound, closing asks about it too.
    std::filesystem::remove(In("sounds/zz-mine.xml"));
    WaitFor([&] { return !list.LoadedRow(); });
    ASSERT_TRUE(view->LoadSound(In("sounds/bell.xml")));
    Settle();
    alerts.texts.clear();
    EXPECT_FALSE(view->MayGiveUpAll([] {}));
    EXPECT_THAT(alerts.texts, ElementsAre(HasSubstr("A sound that you have left")));
}

TEST_F(DrawerTest, AWordWithoutRoomDoesNotRunOverThePicture) {
    std::ifstream read(In("sounds/default.xml"));
    std::string text{std::istreambuf_iterator<char>(read), {}};
    const std::string usual = "<category>keys<";
    ASSERT_NE(text.find(usual), std::string::npos);
    text.replace(text.find(usual), usual.size(), "<category>" + std::string(60, 'm') + '<');
    std::ofstream(In("sounds/wordy.xml")) << text;
    OpenDrawer();
    LookFor("mmm");
    ASSERT_THAT(Listed(), ElementsAre("wordy"));
    // The area left of the picture is empty.
    const QImage shown = drawer->List().Widget().grab().toImage();
    for (int y = 0; y < 50; y++) {
        for (int x = 0; x < 8; x++)
            EXPECT_EQ(shown.pixel(x, y), shown.pixel(0, 0)) << x << ' ' << y;
    }
}

TEST_F(DrawerTest, PreviousAndNextGoThroughWhatIsListedAndPassBrokenOnesOver) {
    OpenDrawer();
    vexa::SoundListView& list = drawer->List();
    const std::size_t broken = RowOf("broken");
    ASSERT_LT(broken, list.Rows().size());
    EXPECT_THAT(list.Rows()[broken]->fault, HasSubstr("broken.xml:1:1"));
    list.Activate(broken);
    Settle();
    EXPECT_EQ(view->SoundName(), "default");
    // Nor does it become a favourite, as it shows no star.
    int stars = 0;
    drawer->SetFavourites({}, [&](const vexa::Favourites&) { stars++; });
    list.MakeFocus();
    test::TypeKey(*window, Qt::Key_D, Qt::ControlModifier);
    const BRect row = list.DescribePart(broken).frame;
    test::Click(list, {row.right - 12, row.top + 16});
    EXPECT_EQ(stars, 0);
    list.Activate(broken - 1);
    Settle();
    test::TypeKey(*window, Qt::Key_PageDown);
    EXPECT_EQ(view->SoundName(), Listed()[broken + 1]);
    window->ShowPart(vexa::VexaWindow::Part::Drawer, false);
    test::TypeKey(*window, Qt::Key_PageUp);
    EXPECT_EQ(view->SoundName(), Listed()[broken - 1]);
    // Beyond the end the search continues at the beginning.
    LookFor("glass");
    const std::vector<std::string> names = Listed();
    for (std::size_t i = 0; i <= names.size(); i++) {
        PressButton("next sound (Page Down)");
        EXPECT_EQ(view->SoundName(), names[i % names.size()]);
    }
    // A sound that is saved appears, and one that is deleted disappears.
    LookFor("");
    view->SaveSound("zz.xml");
    WaitFor([this] { return RowOf("zz") < Listed().size(); });
    std::filesystem::remove(In("sounds/zz.xml"));
    WaitFor([this] { return RowOf("zz") == Listed().size(); });
    EXPECT_TRUE(alerts.texts.empty());
}

} // namespace
