// SPDX-License-Identifier: GPL-3.0-or-later
// Catches faults in opening files from the main menu and by drag and drop.
#include "app/About.h"
#include "app/MainMenu.h"
#include "app/MainViewStage.h"
#include "app/MessageCodes.h"
#include "documents/FunctionDocument.h"
#include "kits/interface/backends/WindowWidget.h"
#include "kits/storage/ReadFile.h"
#include "kits/support/Descriptor.h"
#include "support/Environment.h"

#include <QDropEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QUrl>
#include <algorithm>
#include <sstream>

#include <fcntl.h>
#include <gmock/gmock.h>

namespace {

using test::kScale;
using testing::ElementsAre;
using testing::HasSubstr;
namespace fs = std::filesystem;

class OpeningTest : public test::MainViewTest {
  protected:
    /// Drops at a point of the window as the desktop does; returns whether the drop was accepted.
    bool Drop(const QMimeData& data, QWidget* under = nullptr) {
        QWidget& to = under ? *under : window->Widget();
        // With Shift the desktop proposes a move.
        QDragEnterEvent enter({50, 50}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton,
                              Qt::ShiftModifier);
        enter.ignore();
        QApplication::sendEvent(&to, &enter);
        if (!enter.isAccepted())
            return false;
        EXPECT_EQ(enter.dropAction(), Qt::CopyAction);
        QDropEvent drop({50, 50}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton,
                        Qt::ShiftModifier);
        drop.setDropAction(Qt::MoveAction);
        QApplication::sendEvent(&to, &drop);
        // A move would make the other program delete its file.
        EXPECT_EQ(drop.dropAction(), Qt::CopyAction);
        test::Settle();
        test::Settle();
        return drop.isAccepted();
    }
    bool DropFiles(const std::vector<fs::path>& files) {
        QMimeData data;
        QList<QUrl> urls;
        for (const fs::path& file : files)
            urls.append(QUrl::fromLocalFile(QString::fromStdString(file)));
        data.setUrls(urls);
        return Drop(data);
    }
    bool DropText(const char* text) {
        QMimeData data;
        data.setText(text);
        return Drop(data);
    }
    fs::path Function(const char* name, const char* expression) const {
        vexa::Function function;
        function.expression = expression;
        EXPECT_TRUE(vexa::WriteFunction(In(name), function));
        return In(name);
    }
    /// Returns the item of the main menu or of its submenus, with its present mark.
    BMenuItem& Item(const std::string& label) {
        vexa::FillMainMenu(menu, *window);
        for (std::size_t i = 0; BMenuItem* item = menu.ItemAt(i); i++) {
            if (label == item->Label())
                return *item;
            if (BMenuItem* below = item->Submenu() ? item->Submenu()->FindItem(label) : nullptr)
                return *below;
        }
        throw std::runtime_error("no item " + label);
    }
    void Pick(const std::string& label) {
        Item(label).Choose();
        test::Settle();
    }

    BMenu menu{"test"};
};

TEST_F(OpeningTest, EachKindOfWhatIsDroppedIsOpened) {
    Open();
    EXPECT_TRUE(DropText("\n x*y \n+ 1\r\n"));
    EXPECT_EQ(Text("Fxy"), "x*y  + 1");
    EXPECT_EQ(view->ShownFunction()(2, 3), 7);
    // The user is asked about a sound with unsaved changes.
    view->TakeAsSaved();

    EXPECT_TRUE(DropFiles({In("sounds/bell.xml")}));
    EXPECT_EQ(view->SoundName(), "bell");
    EXPECT_TRUE(DropFiles({Function("f.xml", "x+0.5")}));
    EXPECT_EQ(Text("Fxy"), "x+0.5");
    EXPECT_TRUE(DropFiles({In("samples/pluck.wav")}));
    EXPECT_TRUE(view->SampleMode());
    EXPECT_TRUE(DropFiles({In("pictures/island.png")}));
    EXPECT_EQ(view->Kind(), vexa::FunctionKind::Picture);
    EXPECT_TRUE(DropFiles({folder.Write("s.SCL", kScale)}));
    EXPECT_EQ(view->KeyTuning().Chosen().scale, In("s.SCL"));
    EXPECT_EQ(settings->Get(vexa::kScaleSetting), In("s.SCL").string());
    EXPECT_TRUE(alerts.texts.empty());

    QMimeData elsewhere, nothing;
    elsewhere.setUrls({QUrl("http://localhost/a.xml")});
    elsewhere.setText("http://localhost/a.xml");
    EXPECT_FALSE(Drop(elsewhere));
    EXPECT_FALSE(Drop(nothing));
    // A field accepts a dropped text itself, but leaves a file to the window.
    auto* line = window->Widget().findChild<QLineEdit*>();
    QMimeData file;
    file.setUrls({QUrl::fromLocalFile("/x")});
    EXPECT_TRUE(Drop(file, line));
    EXPECT_FALSE(line->text().contains("file:"));
    QMimeData words;
    words.setText("cos(x)");
    EXPECT_TRUE(Drop(words, line));
    EXPECT_TRUE(line->text().contains("cos(x)"));
    EXPECT_FALSE(alerts.texts.empty());
}

TEST_F(OpeningTest, OfSeveralFilesTheFirstOfEachKindIsOpenedAndTheRestIsTold) {
    Open();
    const auto sound = In("sounds/bell.xml");
    EXPECT_TRUE(DropFiles({Function("f.xml", "x-1"), In("samples/pluck.wav"), sound,
                           In("sounds/default.xml"), folder.Write("a.scl", kScale),
                           folder.Write("b.scl", kScale)}));
    EXPECT_EQ(view->SoundName(), "bell");
    EXPECT_EQ(Text("Fxy"), "x-1");
    EXPECT_EQ(view->KeyTuning().Chosen().scale, In("a.scl"));
    EXPECT_THAT(alerts.texts, ElementsAre(HasSubstr("only the first")));
    EXPECT_EQ(alerts.details, "These were not:\npluck.wav\ndefault.xml\nb.scl");

    alerts.texts.clear();
    EXPECT_TRUE(DropFiles({folder.Write("bad.scl", "hello")}));
    EXPECT_THAT(alerts.texts, ElementsAre("The tuning stays as it is."));
    EXPECT_THAT(alerts.details, HasSubstr("bad.scl:"));
    EXPECT_EQ(view->KeyTuning().Chosen().scale, In("a.scl"));
}

TEST_F(OpeningTest, OfSeveralFilesTheUnusableTakeNoPlaceAndAreTold) {
    Open();
    const fs::path noise = folder.Write("noise.bin", "no sound"),
                   page = folder.Write("page.xml", "<html></html>"),
                   bad = folder.Write("bad.scl", "hello"), none = In("none.wav");
    EXPECT_TRUE(DropFiles({noise, page, In("samples/pluck.wav"), bad, folder.Write("a.scl", kScale),
                           none, In("sounds")}));
    EXPECT_TRUE(view->SampleMode());
    EXPECT_EQ(view->KeyTuning().Chosen().scale, In("a.scl"));
    EXPECT_THAT(alerts.texts, ElementsAre("Not all of these files can be opened."));
    EXPECT_EQ(alerts.details,
              "These cannot be opened:\nnoise.bin\npage.xml\nbad.scl\nnone.wav\nsounds");
    alerts.texts.clear();
    EXPECT_TRUE(DropFiles({page, Function("f.xml", "x-1"), In("samples/pluck.wav")}));
    EXPECT_EQ(Text("Fxy"), "x-1");
    EXPECT_THAT(alerts.texts, ElementsAre(HasSubstr("only the first")));
    EXPECT_EQ(alerts.details, "These were not:\npluck.wav\nThese cannot be opened:\npage.xml");
}

TEST_F(OpeningTest, OfSeveralFilesADamagedOneTakesNoPlaceFromAWholeOne) {
    Open();
    std::string picture = test::Contents(In("pictures/island.png"));
    picture.resize(picture.size() / 2);
    EXPECT_TRUE(DropFiles(
        {folder.Write("bad.png", picture), In("pictures/island.png"), In("sounds/bell.xml")}));
    EXPECT_EQ(view->SoundName(), "bell");
    EXPECT_EQ(view->Kind(), vexa::FunctionKind::Picture);
    EXPECT_THAT(alerts.texts, ElementsAre("Not all of these files can be opened."));
    EXPECT_EQ(alerts.details, "These cannot be opened:\nbad.png");
}

TEST_F(OpeningTest, WhatIsDroppedWithASoundWaitsUntilTheSoundIsOpened) {
    Open();
    Enter("Fxy", "x*y");
    const std::vector<fs::path> files{In("samples/pluck.wav"), folder.Write("s.scl", kScale),
                                      In("sounds/bell.xml"), In("sounds/default.xml")};
    const auto expectNothingOpened = [&] {
        EXPECT_THAT(alerts.texts, ElementsAre(HasSubstr("changes that are not saved")));
        EXPECT_EQ(Text("Fxy"), "x*y");
        EXPECT_FALSE(view->SampleMode());
        EXPECT_EQ(view->KeyTuning().Chosen().scale, std::nullopt);
        alerts.texts.clear();
    };
    alerts.answer = 0;
    DropFiles(files);
    expectNothingOpened();

    alerts.answer = 2;
    DropFiles(files);
    EXPECT_THAT(OpenTitles(), ElementsAre("Save Sound"));
    expectNothingOpened();
    BMessage named(vexa::kSoundSavedCode);
    const entry_ref sounds{folder.Path().string(), "sounds"};
    named.AddRef("directory", &sounds);
    named.AddString("name", "mine.xml");
    alerts.answer = -1;
    Send(*view, named);
    EXPECT_THAT(test::Contents(In("sounds/mine.xml")), HasSubstr("<expression>x*y</expression>"));
    EXPECT_EQ(view->SoundName(), "bell");
    EXPECT_TRUE(view->SampleMode());
    EXPECT_EQ(view->KeyTuning().Chosen().scale, In("s.scl"));
    EXPECT_THAT(alerts.texts, ElementsAre(HasSubstr("only the first")));

    // Of a sound that cannot be opened there is nothing that the terrain could belong to.
    view->TakeAsSaved();
    DropFiles({folder.Write("empty.xml", "<vexasound></vexasound>"), Function("f.xml", "x-1")});
    EXPECT_EQ(alerts.texts.back(), "This is not a valid sound.");
    EXPECT_TRUE(view->SampleMode());
}

TEST_F(OpeningTest, WhatWasOpenedCanBeOpenedAgain) {
    Open();
    EXPECT_EQ(menu.FindItem("Open Recent"), nullptr);
    DropFiles({In("sounds/bell.xml")});
    DropFiles({Function("f.xml", "x+0.5")});
    DropFiles({folder.Path() / "none.xml"});
    view->SaveSound("mine.xml");
    DropFiles({In("sounds/bell.xml")});
    EXPECT_THAT(settings->Get(vexa::kRecentSetting),
                ElementsAre(In("sounds/bell.xml").string(), In("sounds/mine.xml").string(),
                            In("f.xml").string()));
    Pick("f   –   " + folder.Path().filename().string());
    EXPECT_EQ(Text("Fxy"), "x+0.5");
    EXPECT_EQ(settings->Get(vexa::kRecentSetting).front(), In("f.xml").string());
}

TEST_F(OpeningTest, TheMenuDoesWhatItSays) {
    Open();
    Pick("Open…");
    Pick("Save Sound As…");
    EXPECT_THAT(OpenTitles(), testing::UnorderedElementsAre("Open", "Save Sound"));
    ClosePanels();
    Pick("Save Picture…");
    EXPECT_EQ(OpenTitles().size(), 1U);
    ClosePanels();

    EXPECT_FALSE(Item("Program Changes Choose Sounds").IsMarked());
    Pick("Program Changes Choose Sounds");
    EXPECT_TRUE(Item("Program Changes Choose Sounds").IsMarked());

    EXPECT_TRUE(Item("Twelve Equal Steps").IsMarked());
    DropFiles({folder.Write("s.scl", kScale)});
    EXPECT_FALSE(Item("Twelve Equal Steps").IsMarked());
    EXPECT_TRUE(Item("Scala Scale (s.scl)…").IsMarked());
    Pick("Twelve Equal Steps");
    EXPECT_EQ(view->KeyTuning().Chosen().scale, std::nullopt);
    EXPECT_EQ(settings->Get(vexa::kScaleSetting), "");

    Pick("Classic Look");
    EXPECT_TRUE(window->IsClassic());
    EXPECT_TRUE(window->FindView("main menu")->IsHidden());
    EXPECT_TRUE(settings->Get(vexa::kClassicSetting));
    test::TypeKey(*window, Qt::Key_F11);
    EXPECT_FALSE(window->IsClassic());
    EXPECT_FALSE(settings->Get(vexa::kClassicSetting));

    Pick("About Vexa");
    EXPECT_THAT(alerts.texts.back(), HasSubstr("Vexa 0."));
    EXPECT_THAT(alerts.details, HasSubstr("Qt 6"));
}

TEST_F(OpeningTest, TheManualAndTheOwnSoundsAreShownOrItTellsWhyNot) {
    Open();
    const auto waitFor = [](const std::function<bool()>& done) {
        for (int i = 0; i < 2000 && !done(); i++) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            test::Settle();
        }
        return done();
    };
    const auto opener = [&](const char* script) {
        fs::permissions(folder.Write("bin/xdg-open", script), fs::perms::owner_all);
    };
    const auto shown = In("shown");
    const test::EnvironmentVariable path("PATH", (In("bin").string() + ":/bin").c_str());
    // Libraries do not mark all of their descriptors close-on-exec. The shell may have a file of
    // its own under the same number, so the script compares the files.
    const kits::Descriptor open(::open(folder.Write("open", "").c_str(), O_RDONLY));
    opener(("#!/bin/sh\ncd \"${0%/*}/..\"\n[ /dev/fd/" + std::to_string(open.Number()) +
            " -ef open ] && echo inherited > new\necho \"$1\" >> new\nmv new shown")
               .c_str());
    Pick("Help");
    ASSERT_TRUE(waitFor([&] { return fs::exists(shown); }));
    EXPECT_EQ(*kits::ReadFile(shown), VEXA_SOURCE_FOLDER "/docs/manual/README.md\n");
    // The folder of the user's sounds is created when it is shown, before the first save.
    fs::remove(shown);
    fs::remove_all(In("sounds"));
    Pick("Show My Sounds");
    ASSERT_TRUE(waitFor([&] { return fs::exists(shown); }));
    EXPECT_EQ(*kits::ReadFile(shown), In("sounds").string() + '\n');
    EXPECT_TRUE(fs::is_directory(In("sounds")));
    EXPECT_TRUE(alerts.texts.empty());

    opener("#!/bin/sh\nexit 3");
    test::TypeKey(*window, Qt::Key_F1);
    ASSERT_TRUE(waitFor([&] { return !alerts.texts.empty(); }));
    EXPECT_EQ(alerts.details, "xdg-open found no program that shows it (3).");
    // Its interpreter is missing.
    alerts.texts.clear();
    opener("#!/none/sh\n");
    test::TypeKey(*window, Qt::Key_F1);
    ASSERT_TRUE(waitFor([&] { return !alerts.texts.empty(); }));
    EXPECT_EQ(alerts.details,
              "xdg-open, which shows files, could not be started: No such file or directory.");
    alerts.texts.clear();
    fs::remove(In("bin/xdg-open"));
    const test::EnvironmentVariable nowhere("PATH", In("bin").c_str());
    Pick("Help");
    ASSERT_TRUE(waitFor([&] { return !alerts.texts.empty(); }));
    EXPECT_THAT(alerts.texts.back(), HasSubstr("docs/manual/README.md"));
    EXPECT_EQ(alerts.details, "xdg-open, which shows files, was not found (package xdg-utils).");
}

TEST(About, NamesTheLibrariesThatTheDocumentNames) {
    std::istringstream document(*kits::ReadFile(VEXA_SOURCE_FOLDER "/docs/LICENCES.md"));
    std::size_t count = 0;
    for (std::string row; std::getline(document, row);) {
        const bool linked = row.ends_with("| all |") || row.find("`vexa`") != std::string::npos;
        if (!row.starts_with("| ") || !linked || row.starts_with("| the C and C++"))
            continue;
        count++;
        EXPECT_TRUE(std::ranges::any_of(vexa::LinkedLibraries(), [&](const auto& library) {
            return row.starts_with(std::string("| ") + library.name) &&
                   row.find(library.licence) != std::string::npos;
        })) << row;
    }
    EXPECT_EQ(count, vexa::LinkedLibraries().size());
}

} // namespace
