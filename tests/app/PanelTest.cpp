// SPDX-License-Identifier: GPL-3.0-or-later
// Catches faults in the main view's file panels: their content and the effect of their results.
#include "app/MainViewStage.h"
#include "app/MessageCodes.h"
#include "documents/SoundDocument.h"
#include "instrument/InitialSound.h"
#include "kits/interface/backends/WindowWidget.h"
#include "kits/storage/NodeInfo.h"
#include "support/Environment.h"
#include "support/Limits.h"
#include "support/Pictures.h"

#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QTreeView>
#include <QWindow>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <utility>

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class PanelTest : public test::MainViewTest {
  protected:
    PanelTest() { Open(false); }

    /// Returns the entries that the panel of that button lists.
    std::vector<std::string> Listed(const char* button) {
        PressButton(button);
        std::vector<std::string> names;
        for (const QWidget* widget : QApplication::topLevelWidgets()) {
            const auto* list = widget->isVisible() ? widget->findChild<QTreeView*>() : nullptr;
            for (int row = 0; list && row < list->model()->rowCount(); row++)
                names.push_back(list->model()->index(row, 0).data().toString().toStdString());
        }
        ClosePanels();
        return names;
    }

    static std::vector<QWidget*> PanelsOf(const char* title) {
        std::vector<QWidget*> panels;
        std::ranges::copy_if(QApplication::topLevelWidgets(), std::back_inserter(panels),
                             [title](const QWidget* widget) {
                                 return widget->isVisible() && widget->windowTitle() == title;
                             });
        return panels;
    }

    /// Sends the message of an open panel in which a file was chosen.
    void Choose(uint32 result, const std::filesystem::path& path) {
        BMessage message(result);
        const entry_ref ref{path.parent_path().string(), path.filename().string()};
        message.AddRef("refs", &ref);
        Send(*view, message);
    }
    /// Sends the message of a save panel that showed `shown`.
    void SaveAs(uint32 result, const std::string& name, const std::filesystem::path& shown) {
        BMessage message(result);
        const entry_ref ref{shown.parent_path().string(), shown.filename().string()};
        message.AddRef("directory", &ref);
        message.AddString("name", name);
        Send(*view, message);
    }
};

TEST_F(PanelTest, EveryButtonShowsItsPanel) {
    for (const char* label :
         {"Load f(x,y)", "Save f(x,y)", "Load Sound", "Save Sound", "Load Sample"}) {
        PressButton(label);
        PressButton(label);
    }
    EXPECT_THAT(OpenTitles(),
                testing::UnorderedElementsAre("Load f(x,y)", "Save f(x,y)", "Load Sound",
                                              "Save Sound", "Load Sample"));
    EXPECT_THAT(alerts.texts, ElementsAre());
}

TEST_F(PanelTest, ASavePanelProposesTheNameOfTheSound) {
    /// Returns the name in the panel, and how much of it the next key replaces.
    const auto proposed = [&] {
        PressButton("Save Sound");
        const auto* line = dynamic_cast<QLineEdit*>(PanelsOf("Save Sound").at(0)->focusWidget());
        const std::pair name(line->text().toStdString(), line->selectedText().toStdString());
        ClosePanels();
        return name;
    };
    using testing::Pair;
    EXPECT_THAT(proposed(), Pair("", "")) << "a new sound has no name";
    Choose(vexa::kSoundLoadedCode, In("sounds/bell.xml"));
    EXPECT_THAT(proposed(), Pair("bell", "bell"));
    SaveAs(vexa::kSoundSavedCode, "v1.5.xml", In("sounds"));
    EXPECT_THAT(proposed(), Pair("v1.5", "v1.5"));
    // What is typed in an open panel stays until the sound has another name.
    PressButton("Save Sound");
    auto* line = dynamic_cast<QLineEdit*>(PanelsOf("Save Sound").at(0)->focusWidget());
    line->setText("mine");
    PressButton("Save Sound");
    EXPECT_EQ(line->text(), "mine");
    Choose(vexa::kSoundLoadedCode, In("sounds/bell.xml"));
    PressButton("Save Sound");
    EXPECT_EQ(line->text(), "bell");
    ClosePanels();
    // Saved under this name, a sound would become the one that every start begins with.
    Choose(vexa::kSoundLoadedCode, In("sounds/default.xml"));
    EXPECT_THAT(proposed(), Pair("", ""));
}

TEST_F(PanelTest, APanelStaysAboveItsWindow) {
    PressButton("Load Sound");
    EXPECT_EQ(PanelsOf("Load Sound").at(0)->windowHandle()->transientParent(),
              window->Widget().windowHandle());
    ClosePanels();
}

/// As when the window is closed, the panel for the name is cancelled, and the sound is saved later.
TEST_F(PanelTest, WhatWasToFollowACancelledPanelDoesNotFollowAnother) {
    Choose(vexa::kSoundLoadedCode, In("sounds/bell.xml"));
    view->NameSound("mine");
    bool followed = false;
    const auto save = [&] { view->SaveAgain([&] { followed = true; }); };
    save();
    ClosePanels();
    PressButton("Save Sound");
    const auto confirm = [](QWidget* panel) {
        QKeyEvent key(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
        QApplication::sendEvent(panel->focusWidget(), &key);
        test::Settle();
    };
    confirm(PanelsOf("Save Sound").at(0));
    EXPECT_TRUE(std::filesystem::exists(In("sounds/mine.xml")));
    EXPECT_FALSE(followed);

    view->NameSound("other");
    save();
    confirm(PanelsOf("Save Sound").at(0));
    EXPECT_TRUE(std::filesystem::exists(In("sounds/other.xml")));
    EXPECT_TRUE(followed);
}

TEST_F(PanelTest, WhatAnOpenPanelNamesIsLoaded) {
    Choose(vexa::kSoundLoadedCode, In("sounds/bell.xml"));
    EXPECT_EQ(Text("Fy"), "3.5");
    EXPECT_EQ(view->SoundParam().Fy, 3.5F);
    Choose(vexa::kSampleLoadedCode, In("samples/voice.wav"));
    EXPECT_TRUE(view->SampleMode());
    EXPECT_EQ(view->ConstructFunction().sampleFile, "voice.wav");
    Choose(vexa::kSampleLoadedCode, folder.Write("pictures/a.png", test::Png(1, 1, {}, {255})));
    EXPECT_EQ(view->Kind(), vexa::FunctionKind::Picture);
    EXPECT_EQ(view->ConstructFunction().pictureFile, "a.png");
    for (const auto& entry : std::filesystem::directory_iterator(In("functions"))) {
        if (entry.path().extension() != ".xml")
            continue;
        Choose(vexa::kFunctionLoadedCode, entry.path());
        EXPECT_FALSE(view->SampleMode()) << entry.path();
        EXPECT_NE(Text("Fxy"), "") << entry.path();
    }
    EXPECT_THAT(alerts.texts, ElementsAre());
    EXPECT_EQ(view->SoundParam().Fy, 3.5F);
}

TEST_F(PanelTest, DocumentsLandInTheirFolderWithTheirTypeWhereverThePanelWas) {
    Enter("Fxy", "x+1");
    SaveAs(vexa::kFunctionSavedCode, "mine", folder.Path());
    SaveAs(vexa::kSoundSavedCode, "mine", In("sounds"));
    EXPECT_FALSE(std::filesystem::exists(In("mine")));
    for (const auto& [name, type] : {std::pair{"functions/mine", "text/orvo-Vexa-function"},
                                     {"sounds/mine", "text/orvo-Vexa-sound"}}) {
        EXPECT_THAT(test::Contents(In(name)), HasSubstr("<expression>x+1</expression>"));
        BNode node(In(name).c_str());
        char found[B_MIME_TYPE_LENGTH] = "";
        BNodeInfo(&node).GetType(found);
        EXPECT_STREQ(found, folder.KeepsAttributes() ? type : "");
    }
    // The alert names the file's actual folder if it differs from the chosen one.
    EXPECT_THAT(alerts.texts, ElementsAre(HasSubstr(In("functions").string())));
    // A folder that the user has deleted meanwhile is created again.
    std::filesystem::remove_all(In("sounds"));
    view->SaveAgain();
    EXPECT_THAT(test::Contents(In("sounds/mine")), HasSubstr("<expression>x+1</expression>"));
    EXPECT_EQ(alerts.texts.size(), 1U);
}

TEST_F(PanelTest, AFileThatThePanelDidNotShowIsReplacedOnlyWithConsent) {
    const std::string before = test::Contents(In("sounds/bell.xml"));
    alerts.answer = 0;
    SaveAs(vexa::kSoundSavedCode, "bell.xml", folder.Path());
    ASSERT_EQ(alerts.texts.size(), 1U);
    EXPECT_THAT(alerts.texts[0], HasSubstr(In("sounds").string()));
    EXPECT_EQ(test::Contents(In("sounds/bell.xml")), before);
    alerts.answer = 1;
    SaveAs(vexa::kSoundSavedCode, "bell.xml", folder.Path());
    EXPECT_NE(test::Contents(In("sounds/bell.xml")), before);
    // The panel has already asked about replacing a file that it showed.
    SaveAs(vexa::kSoundSavedCode, "bell.xml", In("sounds"));
    EXPECT_EQ(alerts.texts.size(), 2U);
}

TEST_F(PanelTest, WhatIsSavedButNotHeardIsSaidBefore) {
    Enter("Fxy", "x/");
    alerts.texts.clear();
    alerts.answer = 0;
    SaveAs(vexa::kSoundSavedCode, "wrong.xml", In("sounds"));
    EXPECT_THAT(alerts.texts, ElementsAre(HasSubstr("The expression is wrong")));
    EXPECT_FALSE(std::filesystem::exists(In("sounds/wrong.xml")));
    alerts.answer = 1;
    SaveAs(vexa::kSoundSavedCode, "wrong.xml", In("sounds"));
    EXPECT_TRUE(std::filesystem::exists(In("sounds/wrong.xml")));
    // A text that is typed but not confirmed is heard when it is saved.
    Field("Fxy").Type("x+1");
    SaveAs(vexa::kSoundSavedCode, "typed.xml", In("sounds"));
    EXPECT_EQ(view->ShownFunction()(2, 3), 3);
    EXPECT_EQ(alerts.texts.size(), 2U);
    // Enter alone writes nothing.
    Enter("Fxy", "x/");
    BAlert::SetResponder(nullptr);
    bool asked = false;
    QTimer::singleShot(0, [&] {
        auto* box = dynamic_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_TRUE(box);
        asked = true;
        box->defaultButton()->click();
    });
    SaveAs(vexa::kSoundSavedCode, "enter.xml", In("sounds"));
    EXPECT_TRUE(asked);
    EXPECT_FALSE(std::filesystem::exists(In("sounds/enter.xml")));
}

TEST_F(PanelTest, AllThatIsWrongWithAFileIsInOneAlertWithItsReasons) {
    Choose(vexa::kSoundLoadedCode,
           folder.Write("odd.xml", "<vexasound><vexafunction><expression>x</expression>"
                                   "</vexafunction></vexasound>"));
    EXPECT_THAT(alerts.texts, ElementsAre("Not all of \"odd.xml\" was understood."));
    EXPECT_GT(std::count(alerts.details.begin(), alerts.details.end(), '\n'), 3);
    EXPECT_THAT(alerts.details, HasSubstr(In("odd.xml").string()));
    const std::pair<uint32, const char*> cases[] = {{vexa::kSoundLoadedCode, "none.xml"},
                                                    {vexa::kSampleLoadedCode, "none.wav"}};
    for (const auto& [code, name] : cases) {
        Choose(code, In(name));
        EXPECT_THAT(alerts.details, HasSubstr(std::strerror(ENOENT))) << name;
    }
    SaveAs(vexa::kSoundSavedCode, std::string(300, 'a'), In("sounds"));
    EXPECT_THAT(alerts.texts.back(), HasSubstr("long"));
    Enter("Fxy", "x/");
    EXPECT_THAT(alerts.details, HasSubstr("character 3"));
}

TEST_F(PanelTest, ASampleThatIsCutShortPlaysWithARemark) {
    const std::string whole = test::Contents(In("samples/pluck.wav"));
    const auto cut = folder.Write("samples/cut.wav", whole.substr(0, whole.size() - 100));
    const auto remark =
        ElementsAre("The sample \"cut.wav\" plays, but something is wrong with it.");
    Choose(vexa::kSampleLoadedCode, cut);
    EXPECT_TRUE(view->SampleMode());
    EXPECT_THAT(std::exchange(alerts.texts, {}), remark);
    EXPECT_THAT(alerts.details, HasSubstr("cut.wav: the file ends after "));
    ASSERT_TRUE(vexa::WriteSound(In("cut.xml"), view->ConstructSound()));
    Choose(vexa::kSampleLoadedCode, In("samples/pluck.wav"));
    EXPECT_THAT(alerts.texts, ElementsAre());
    view->TakeAsSaved();
    Choose(vexa::kSoundLoadedCode, In("cut.xml"));
    EXPECT_THAT(alerts.texts, remark);
}

/// With a user's folder beside the program's.
class OwnFolderTest : public PanelTest {
  protected:
    OwnFolderTest() {
        for (const char* name : {"own/functions", "own/samples", "own/sounds"})
            std::filesystem::create_directories(In(name));
        std::filesystem::copy(VEXA_SOURCE_FOLDER "/data/sounds/bass.xml", In("own/sounds"));
        std::filesystem::remove(In("functions/recent.c"));
        delete window;
        folders = {In("own"), folder.Path()};
        Open();
    }
};

TEST_F(OwnFolderTest, BothAreOfferedAndTheOwnOneIsWrittenTo) {
    const std::string before = test::Contents(In("sounds/bell.xml"));
    Enter("Fy", "7");
    EXPECT_THAT(Listed("Save Sound"), ElementsAre()) << "a mere copy is not the user's";
    SaveAs(vexa::kSoundSavedCode, "bell.xml", In("own/sounds"));
    SaveAs(vexa::kSoundSavedCode, "mine.xml", In("own/sounds"));
    EXPECT_EQ(test::Contents(In("sounds/bell.xml")), before);
    EXPECT_THAT(Listed("Save Sound"), ElementsAre("bell.xml", "mine.xml"));
    EXPECT_THAT(Listed("Load Sound"), testing::IsSupersetOf({"bass.xml", "mine.xml", "wind.xml"}));
    Choose(vexa::kSoundLoadedCode, In("sounds/voice.xml"));
    EXPECT_EQ(view->ConstructFunction().sampleFile, "vowel.wav");
    Choose(vexa::kSampleLoadedCode, In("samples/pluck.wav"));
    EXPECT_EQ(view->ConstructFunction().sampleFile, "pluck.wav");
    EXPECT_FALSE(std::filesystem::exists(In("functions/recent.c")));
    EXPECT_THAT(alerts.texts, ElementsAre());
}

TEST_F(OwnFolderTest, ControlSSavesToThePersonsOwnFileOfTheSoundAndToNoOther) {
    const auto save = [&] {
        test::TypeKey(*window, Qt::Key_S, Qt::ControlModifier);
        test::Settle();
    };
    // A shipped sound, and a sound in another folder with the name of one of the user's.
    for (const auto& path : {In("sounds/bell.xml"), In("mine.xml")}) {
        Choose(vexa::kSoundLoadedCode, path);
        Enter("Fy", "7");
        const std::string shipped = test::Contents(path),
                          own = test::Contents(In("own/sounds/mine.xml"));
        save();
        EXPECT_THAT(OpenTitles(), ElementsAre("Save Sound")) << path;
        ClosePanels();
        EXPECT_EQ(test::Contents(path), shipped);
        EXPECT_EQ(test::Contents(In("own/sounds/mine.xml")), own);
        SaveAs(vexa::kSoundSavedCode, "mine.xml", In("own/sounds"));
        std::filesystem::copy(In("own/sounds/mine.xml"), In("mine.xml"),
                              std::filesystem::copy_options::overwrite_existing);
    }
    // A text that is typed but not confirmed is heard when it is saved, and typing can continue.
    Field("Fy").MakeFocus();
    Field("Fy").Type("5");
    EXPECT_TRUE(view->Changed());
    save();
    EXPECT_THAT(OpenTitles(), ElementsAre());
    EXPECT_FALSE(view->Changed());
    EXPECT_THAT(test::Contents(In("own/sounds/mine.xml")),
                testing::AllOf(HasSubstr("<fy>5<"), HasSubstr("<name>mine</name>")));
    EXPECT_EQ(view->SoundParam().Fy, 5);
    test::Type(*window, "6");
    EXPECT_EQ(Text("Fy"), "56");
    EXPECT_THAT(alerts.texts, ElementsAre());
}

TEST_F(OwnFolderTest, AnotherSoundStandsInForADefaultThatCannotBeRead) {
    const std::string broken = folder.Write("own/sounds/default.xml", "<vexasound");
    const auto open = [&] {
        delete window;
        alerts.texts.clear();
        window = new vexa::VexaWindow({64, 100, 999, 610}, folders, {.settings = settings});
        view = &window->MainView();
        test::Settle();
        EXPECT_THAT(alerts.texts, ElementsAre("The sound \"default\" could not be read."));
        EXPECT_THAT(alerts.details, HasSubstr(broken + ":1:1: "));
        EXPECT_FALSE(view->Changed());
    };
    open();
    EXPECT_THAT(alerts.details, HasSubstr("instead the sound of " + folder.Path().string()));
    EXPECT_EQ(view->SoundName(), "default");
    EXPECT_EQ(view->ConstructSound(), *vexa::ReadSound(In("sounds/default.xml")));
    // The broken file is left for its owner to mend.
    Enter("Fy", "7");
    test::TypeKey(*window, Qt::Key_S, Qt::ControlModifier);
    test::Settle();
    EXPECT_THAT(OpenTitles(), ElementsAre("Save Sound"));
    EXPECT_EQ(test::Contents(broken), "<vexasound");

    ClosePanels();
    folder.Write("sounds/default.xml", "");
    open();
    EXPECT_THAT(alerts.details, HasSubstr("sounds/default.xml: expected a root element"));
    EXPECT_EQ(view->SoundName(), vexa::kInitialSoundName);
    EXPECT_EQ(view->ConstructSound(), vexa::InitialSound());
}

TEST_F(OwnFolderTest, ControlSAsksBeforeItReplacesWhatWasChangedElsewhere) {
    const auto mine = In("own/sounds/mine.xml");
    std::filesystem::copy(In("sounds/bell.xml"), mine);
    const auto changeElsewhere = [&] { std::ofstream(mine, std::ios::app) << "<!-- mine -->"; };
    /// Edits and saves, and returns the questions.
    int number = 2;
    const auto save = [&] {
        alerts.texts.clear();
        Enter("Fy", std::to_string(number++).c_str());
        test::TypeKey(*window, Qt::Key_S, Qt::ControlModifier);
        test::Settle();
        return std::exchange(alerts.texts, {});
    };
    const auto asks = ElementsAre(HasSubstr("has changed since it was opened"));
    Choose(vexa::kSoundLoadedCode, mine);
    changeElsewhere();
    alerts.answer = 0;
    EXPECT_THAT(save(), asks);
    EXPECT_THAT(test::Contents(mine), HasSubstr("<!-- mine -->"));
    EXPECT_TRUE(view->Changed());
    alerts.answer = 1;
    EXPECT_THAT(save(), asks);
    EXPECT_THAT(test::Contents(mine), testing::Not(HasSubstr("<!-- mine -->")));
    EXPECT_FALSE(view->Changed());
    // There is no question about what was written here.
    EXPECT_THAT(save(), ElementsAre());
    // What one slot has saved the other may replace: the first slot's sound is there unsaved.
    Choose(vexa::kSoundLoadedCode, In("sounds/bell.xml"));
    view->SwitchAB();
    Choose(vexa::kSoundLoadedCode, mine);
    view->CopyToOther();
    view->SwitchAB();
    EXPECT_THAT(save(), ElementsAre());
    view->SwitchAB();
    for (int turn = 0; turn < 3; turn++) {
        EXPECT_TRUE(view->Changed()) << "the file now has the other slot's sound";
        EXPECT_THAT(save(), ElementsAre());
        EXPECT_FALSE(view->Changed());
        view->SwitchAB();
    }
    changeElsewhere();
    EXPECT_THAT(save(), asks);
    // A file that has gone is written again.
    changeElsewhere();
    std::filesystem::remove(mine);
    EXPECT_THAT(save(), ElementsAre());
    EXPECT_TRUE(std::filesystem::exists(mine));
    // A sound that a program change has chosen is of its file too.
    view->FollowPrograms(true);
    const std::vector<std::string> names = folders.Documents("sounds");
    const auto program = std::ranges::find(names, "mine.xml") - names.begin();
    view->Graph().Consumer().Gate()->ProgramChange(0, static_cast<uchar>(program), 0);
    test::Settle();
    EXPECT_FALSE(view->Changed());
    EXPECT_THAT(save(), ElementsAre());
    changeElsewhere();
    EXPECT_THAT(save(), asks);
}

TEST_F(OwnFolderTest, WhatTheProgramIsStartedWithIsOfItsFile) {
    std::filesystem::create_directories(In("elsewhere"));
    std::filesystem::create_directory_symlink(In("own"), In("link"));
    for (const char* name : {"own/sounds/mine.xml", "own/sounds/default.xml", "elsewhere/mine.xml"})
        std::filesystem::copy(In("sounds/bell.xml"), In(name));
    const test::CurrentFolder current(folder.Path());
    const auto start = [&](const vexa::AppOptions& options) {
        delete window;
        Open(!options.sound);
        window->Begin(options, nullptr);
        test::Settle();
        EXPECT_FALSE(view->Changed());
    };
    const auto editAndSave = [&](const char* number) {
        Enter("Fy", number);
        test::TypeKey(*window, Qt::Key_S, Qt::ControlModifier);
        test::Settle();
    };
    vexa::AppOptions named, opened, linked, elsewhere, function;
    named.sound = In("own/sounds/mine.xml");
    opened.file = "own/sounds/../sounds/mine.xml";
    linked.file = In("link/sounds/mine.xml");
    elsewhere.file = "elsewhere/mine.xml";
    function.file = In("functions/ripples.xml");
    const std::tuple<vexa::AppOptions, const char*, const char*> owns[] = {
        {named, "mine", "7"}, {opened, "mine", "8"}, {linked, "mine", "9"}, {{}, "default", "10"}};
    for (const auto& [options, name, number] : owns) {
        start(options);
        EXPECT_EQ(view->SoundPath(), folders.Own("sounds") / (name + std::string(".xml")));
        editAndSave(number);
        EXPECT_THAT(OpenTitles(), ElementsAre()) << number;
        EXPECT_THAT(test::Contents(view->SoundPath()),
                    HasSubstr("<fy>" + std::string(number) + "<"));
    }
    // A file with the same name, and a sound other than that of the file.
    start(elsewhere);
    EXPECT_EQ(view->SoundPath(), std::filesystem::canonical(In("elsewhere/mine.xml")));
    start(function);
    editAndSave("11");
    EXPECT_THAT(OpenTitles(), ElementsAre("Save Sound"));
    EXPECT_THAT(alerts.texts, ElementsAre());
}

TEST_F(PanelTest, NoNameLeavesTheFolderOrIsHidden) {
    for (const char* name : {"", "..", "../out.xml", "/tmp/out.xml", "a\nb", ".out.xml"})
        SaveAs(vexa::kSoundSavedCode, name, In("sounds"));
    EXPECT_EQ(alerts.texts.size(), 6U);
    EXPECT_FALSE(std::filesystem::exists(In("out.xml")));
    EXPECT_FALSE(std::filesystem::exists(In("sounds/.out.xml")));
}

TEST_F(PanelTest, BadDocumentsAreReportedAndChangeNothing) {
    const vexa::Sound before = view->ConstructSound();
    const std::pair<const char*, std::string> cases[] = {
        {"empty", ""},
        {"text", "no XML at all"},
        {"cut", "<vexasound><vexafunction><expression>x"},
        {"other", "<?xml version=\"1.0\"?><html></html>"},
        {"binary", std::string("\0\1\2\xff<", 5)},
        {"hostile", "<vexasound><vexafunction><expression>system(\"true\")</expression>"
                    "</vexafunction></vexasound>"},
    };
    for (const auto& [name, text] : cases) {
        const auto path = folder.Write(name, text);
        alerts.texts.clear();
        Choose(vexa::kSoundLoadedCode, path);
        // A truncated document still gives its function, and the rest is unchanged.
        EXPECT_FALSE(alerts.texts.empty()) << name;
        EXPECT_EQ(view->ConstructSound().envelopes, before.envelopes) << name;
        EXPECT_EQ(view->ConstructSound().texts, before.texts) << name;
    }
}

TEST_F(PanelTest, AFileIsOpenedAsWhatItIs) {
    view->Open(In("sounds/bell.xml"));
    test::Settle();
    EXPECT_EQ(Text("Fy"), "3.5");
    view->Open(In("samples/pluck.wav"));
    test::Settle();
    EXPECT_TRUE(view->SampleMode());
    // Without a file type the root element determines the kind.
    const auto function =
        folder.Write("f", "\xEF\xBB\xBF <vexafunction><expression>0.5</expression></vexafunction>");
    view->Open(function);
    test::Settle();
    EXPECT_EQ(Text("Fxy"), "0.5");
    EXPECT_THAT(alerts.texts, ElementsAre("Not all of \"f\" was understood."));
    view->Open("/none/such");
    EXPECT_EQ(alerts.texts.size(), 2U);
}

/// The process's numbers of resources.
struct Holdings {
    long threads, files, addOns;
    bool operator==(const Holdings&) const = default;
};

long Entries(const char* folder) {
    const std::filesystem::directory_iterator all(folder);
    return std::distance(begin(all), end(all));
}

Holdings Count() {
    long addOns = 0;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
        addOns +=
            line.find("r-xp") != std::string::npos && line.find("recent") != std::string::npos;
    return {Entries("/proc/self/task"), Entries("/proc/self/fd"), addOns};
}

std::size_t ResidentPages() {
    std::size_t all = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> all >> resident;
    return resident;
}

TEST_F(PanelTest, NothingLeaksOverManyLoadsCompilesAndExports) {
    alerts.answer = 1;
    const auto useAll = [&](int round) {
        Choose(vexa::kSoundLoadedCode, In("sounds/bell.xml"));
        Choose(vexa::kSampleLoadedCode, In("samples/pluck.wav"));
        Enter("Fxy", ("x+" + std::to_string(round)).c_str());
        FinishAddon();
        if (round % 4 == 0)
            ExportPicture("picture");
        PressButton("Load Sound");
        ClosePanels();
    };
    // Large enough to start the helper threads for pictures.
    ExportPicture("picture", 3000);
    for (int round = 0; round < 8; round++)
        useAll(round);
    const Holdings before = Count();
    const std::size_t memory = ResidentPages();
    for (int round = 0; round < 60; round++)
        useAll(round);
    // Fewer if a library has released something meanwhile.
    EXPECT_LE(Count().threads, before.threads);
    EXPECT_LE(Count().files, before.files);
    EXPECT_EQ(Count().addOns, 1);
    EXPECT_THAT(alerts.texts, testing::Each(HasSubstr("changes that are not saved")));
    // The memory that the allocator keeps may vary; a leaked sample or picture would be many times
    // larger. Sanitizers keep freed memory, and check for leaks themselves.
    if (!test::kSanitized) {
        EXPECT_LT(ResidentPages(), memory + 2048);
    }
    EXPECT_TRUE(std::filesystem::exists(In("picture")));
}

} // namespace
