// SPDX-License-Identifier: GPL-3.0-or-later
// Catches faults of the program in sessions of a session manager, which the tests provide.
#include "app/JoinedSession.h"
#include "app/MainViewStage.h"
#include "documents/SoundDocument.h"
#include "kits/storage/ReadFile.h"
#include "support/Command.h"
#include "support/Environment.h"
#include "support/SessionManager.h"

#include <gmock/gmock.h>

namespace {

using std::chrono::milliseconds;
using test::kScale;
using testing::HasSubstr;
using vexa::AppOptions;
using vexa::Session;

constexpr const char* kOtherScale = "! t.scl\n!\nthird\n 2\n!\n 5/4\n 2/1\n";

class SessionTest : public test::MainViewTest {
  protected:
    /// Opens the window in the manager's session as main does.
    void OpenInSession(const AppOptions& options = {}) {
        delete window;
        // The variable has gone when the window's threads, which read the environment, begin.
        auto joined = [&] {
            const test::EnvironmentVariable url("NSM_URL", manager.Url().c_str());
            return vexa::JoinSession(options);
        }();
        ASSERT_TRUE(joined && *joined) << (joined ? "" : joined.Fault().text);
        project = (*joined)->project;
        window = new vexa::VexaWindow(
            {64, 100, 999, 610}, folders,
            {.withDefaultSound = !project.options.sound, .settings = settings});
        view = &window->MainView();
        window->Begin(std::move((*joined)->session), project, nullptr);
        test::Settle();
    }
    bool ManagerHears(const std::string& text) {
        return manager.Hears(text, [this] {
            BMessage pulse(B_PULSE);
            window->MessageReceived(&pulse);
            test::Settle();
        });
    }
    void Pick(BMenu& menu, uint32 code) {
        menu.FindItem(code)->Choose();
        test::Settle();
    }

    test::SessionManager manager{folder.Path() / "session/Vexa.nTEST"};
    /// The project as it was read.
    vexa::Project project;
};

TEST_F(SessionTest, RemembersAll) {
    AppOptions options;
    options.tuning = {folder.Write("s.scl", kScale), std::nullopt, 432.1};
    options.playing.Of("mode") = "legato";
    options.mpe = true;
    OpenInSession(options);
    EXPECT_TRUE(ManagerHears("/nsm/server/announce Vexa :dirty:optional-gui: test_app 1 0 " +
                             std::to_string(::getpid())));
    EXPECT_TRUE(ManagerHears("/reply /nsm/client/open"));
    EXPECT_TRUE(vexa::ProjectExists(folder.Path() / "session/Vexa.nTEST"));
    EXPECT_TRUE(ManagerHears("/nsm/client/is_clean"));
    EXPECT_TRUE(ManagerHears("/nsm/client/gui_is_shown"));

    // The session has a copy of the file, so the original is no longer needed.
    std::filesystem::remove(folder.Path() / "s.scl");
    // Each of these is a change of its own.
    const std::function<void()> changes[] = {
        [&] { Enter("Fxy", "x*y+0.25"); },
        [&] { Pick(view->VoicesMenu(), vexa::VoicesCode(7)); },
        [&] { Pick(view->ChannelMenu(), vexa::ChannelCode(3)); },
        [&] { view->ChooseSource(""); },
        [&] { view->DescribeSound("Anna", view->Played().State().info, "author"); },
        [&] { view->FollowPrograms(true); },
        [&] { view->NameSound("Zoë = 1"); },
        [&] {
            // What plays is saved, whatever has become of its file.
            view->KeyTuning().Choose({folder.Write("t.scl", kOtherScale), {}, {}});
            folder.Write("t.scl", "! t.scl\n!\n");
        },
    };
    for (const auto& change : changes) {
        change();
        EXPECT_TRUE(ManagerHears("/nsm/client/is_dirty"));
        manager.Send("/nsm/client/save");
        EXPECT_TRUE(ManagerHears("/reply /nsm/client/save"));
        EXPECT_TRUE(ManagerHears("/nsm/client/is_clean"));
    }
    EXPECT_FALSE(view->Changed());
    EXPECT_EQ(*kits::ReadFile(folder.Path() / "session/Vexa.nTEST/scale.scl"), kOtherScale);

    manager.Send("/nsm/client/hide_optional_gui");
    EXPECT_TRUE(ManagerHears("/nsm/client/gui_is_hidden"));
    manager.Send("/nsm/client/show_optional_gui");
    EXPECT_TRUE(ManagerHears("/nsm/client/gui_is_shown"));
    EXPECT_FALSE(window->QuitRequested());
    EXPECT_TRUE(ManagerHears("/nsm/client/gui_is_hidden"));
    manager.Send("/nsm/client/save");
    EXPECT_TRUE(ManagerHears("/reply /nsm/client/save"));
    const vexa::Sound saved = view->ConstructSound();

    OpenInSession();
    EXPECT_TRUE(ManagerHears("/reply /nsm/client/open"));
    EXPECT_TRUE(ManagerHears("/nsm/client/is_clean"));
    EXPECT_TRUE(ManagerHears("/nsm/client/gui_is_hidden"));
    EXPECT_TRUE(window->IsHidden());
    EXPECT_EQ(Text("Fxy"), "x*y+0.25");
    EXPECT_TRUE(view->ConstructSound() == saved);
    EXPECT_EQ(view->Engine().consumer.Channel(), 2);
    EXPECT_EQ(view->Played().VoiceLimit(), 7);
    EXPECT_EQ(view->ChosenSource(), "");
    EXPECT_TRUE(view->FollowsPrograms());
    EXPECT_EQ(view->SoundName(), "Zoë = 1");
    EXPECT_EQ(view->Played().Preferred().Of("mode"), "legato");
    EXPECT_TRUE(project.options.mpe);
    EXPECT_EQ(project.options.tuning.a4, 432.1);
    EXPECT_EQ(project.options.tuning.scale, folder.Path() / "session/Vexa.nTEST/scale.scl");

    manager.SendOpen();
    EXPECT_TRUE(ManagerHears("/error /nsm/client/open -8"));
}

TEST_F(SessionTest, WhatGoesWrongIsAnsweredAndLeavesTheProjectAsItWas) {
    OpenInSession();
    const auto place = folder.Path() / "session/Vexa.nTEST";
    const std::string sound = *kits::ReadFile(place / "sound.xml");
    const std::string session = *kits::ReadFile(place / "session");
    Enter("Fxy", "x");
    EXPECT_TRUE(ManagerHears("/nsm/client/is_dirty"));
    std::filesystem::rename(place / "session", place / "moved");
    std::filesystem::create_directory(place / "session");
    testing::internal::CaptureStderr();
    manager.Send("/nsm/client/save");
    EXPECT_TRUE(ManagerHears("/error /nsm/client/save -10 could not write " + place.string()));
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("could not write"));
    EXPECT_EQ(*kits::ReadFile(place / "sound.xml"), sound);
    std::filesystem::remove(place / "session");

    FinishAddon();
    const test::EnvironmentVariable url("NSM_URL", manager.Url().c_str());
    for (const auto& [name, content, fault] :
         {std::tuple{"session", "\nvoices = 77\n", "session:2: voices cannot be \"77\""},
          {"session", "window = ajar", "session:1: window"},
          {"session", "record = /etc/x.wav", "session:1: record"},
          {"session", "hello", "session:1: \"hello\" is no setting"},
          {"sound.xml", "<vexasound><", "sound.xml"}}) {
        folder.Write(place / "session", session);
        folder.Write(place / name, content);
        const auto joined = vexa::JoinSession({});
        ASSERT_FALSE(joined);
        EXPECT_THAT(joined.Fault().text, HasSubstr(fault));
        EXPECT_TRUE(manager.Hears("/error /nsm/client/open -9 " + joined.Fault().text));
    }
}

/// An alert at the start waits for a person; the manager does not.
TEST_F(SessionTest, WhatCannotPlayYetIsNotSaved) {
    const auto place = folder.Path() / "session/Vexa.nTEST";
    const auto save = [&] {
        manager.Send("/nsm/client/save");
        EXPECT_TRUE(ManagerHears("/reply /nsm/client/save"));
    };
    OpenInSession();
    Enter("Fxy", "x*y+0.25");
    save();
    Field("Fxy").Type("0.5*sin(");
    save();
    EXPECT_THAT(*kits::ReadFile(place / "sound.xml"), HasSubstr("x*y+0.25"));
    Field("Fxy").Type("0.5*x");
    save();
    std::string sound = *kits::ReadFile(place / "sound.xml");
    EXPECT_THAT(sound, HasSubstr("<expression>0.5*x<"));

    sound.replace(sound.find("0.5*x"), 5, "0.5*sin(");
    folder.Write(place / "sound.xml", sound);
    const std::string session = *kits::ReadFile(place / "session");
    alerts.meanwhile = [&] {
        save();
        EXPECT_EQ(*kits::ReadFile(place / "sound.xml"), sound);
        EXPECT_EQ(*kits::ReadFile(place / "session"), session);
    };
    alerts.texts.clear();
    OpenInSession();
    EXPECT_FALSE(alerts.texts.empty());
    // Nor is half of another sound.
    view->LoadSound(In("sounds/bell.xml"));
    save();
    sound = *kits::ReadFile(place / "sound.xml");
    alerts.meanwhile = [&] {
        save();
        EXPECT_EQ(*kits::ReadFile(place / "sound.xml"), sound);
    };
    alerts.texts.clear();
    view->LoadSound(folder.Write("wrong.xml", "<vexasound><vexafunction><expression>0.5*cos("
                                              "</expression></vexafunction></vexasound>"));
    EXPECT_FALSE(alerts.texts.empty());
    alerts.meanwhile = nullptr;
}

TEST_F(SessionTest, WithoutAManagerThereIsNone) {
    std::string nobody;
    {
        const test::SessionManager gone("/x");
        nobody = gone.Url();
    }
    const test::SessionManager refusing("/x", true), lost("x");
    for (const auto& [url, fault] : {std::pair{nobody, "does not answer"},
                                     {refusing.Url(), "No session is open"},
                                     {lost.Url(), "does not say what to open"},
                                     {"nowhere", "is no address"},
                                     {"osc.unix:///tmp/x", "names no port of UDP or TCP"},
                                     {"osc.udp://localhost/", "names no port of UDP or TCP"}}) {
        const auto joined = Session::Join(url, true, {milliseconds(200), milliseconds(200)});
        ASSERT_FALSE(joined);
        EXPECT_THAT(joined.Fault().text, HasSubstr(fault));
    }
}

TEST_F(SessionTest, AWindowWhoseManagerHasGoneIsShownAndIsAsAnyOther) {
    auto other = std::make_unique<test::SessionManager>(folder.Path() / "other");
    auto joined = Session::Join(
        other->Url(), true,
        {milliseconds(5000), milliseconds(5000), milliseconds(200), milliseconds(1000)});
    ASSERT_TRUE(joined);
    window = new vexa::VexaWindow({64, 100, 999, 610}, folders);
    vexa::Project hidden;
    hidden.windowShown = false;
    window->Begin(*std::move(joined), hidden, nullptr);
    EXPECT_TRUE(window->IsHidden());
    const auto pulse = [&] {
        BMessage message(B_PULSE);
        window->MessageReceived(&message);
    };
    EXPECT_TRUE(other->Hears("/osc/ping", pulse));
    EXPECT_TRUE(other->Hears("/osc/ping", pulse));
    EXPECT_TRUE(window->InSession());
    // A window that stood still has not asked.
    const auto pulseFor = [&](int atMost) {
        for (int i = 0; i < atMost && window->InSession(); i++) {
            pulse();
            std::this_thread::sleep_for(milliseconds(5));
        }
    };
    pulseFor(10);
    std::this_thread::sleep_for(milliseconds(1100));
    pulseFor(1);
    EXPECT_TRUE(window->InSession());
    other.reset();
    testing::internal::CaptureStderr();
    pulseFor(1000);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("session manager has gone"));
    EXPECT_FALSE(window->InSession());
    EXPECT_FALSE(window->IsHidden());
    EXPECT_TRUE(window->QuitRequested());
}

TEST_F(SessionTest, WithoutAWindowItIsTheSame) {
    const auto place = folder.Path() / "session/Vexa.nTEST";
    const auto play = [&](std::vector<std::string> arguments, const std::string& answer,
                          const char* state) {
        arguments.insert(arguments.begin(),
                         {VEXA_PROGRAM_FOLDER "/vexa", "--no-window", "--audio", "none"});
        const test::EnvironmentVariable url("NSM_URL", manager.Url().c_str());
        return test::RunCommand(arguments, [&](pid_t child) {
            EXPECT_TRUE(manager.Hears("/nsm/server/announce Vexa :dirty: vexa 1 0 "));
            EXPECT_TRUE(manager.Hears(answer + " /nsm/client/open"));
            EXPECT_TRUE(manager.Hears(state));
            folder.Write("s.scl", "! s.scl\n!\n");
            manager.Send("/nsm/client/save");
            EXPECT_TRUE(manager.Hears(answer + " /nsm/client/save"));
            ::kill(child, SIGTERM);
        });
    };
    // What is left of a first save that failed is no project.
    std::filesystem::create_directories(place / "session");
    EXPECT_EQ(play({}, "/error", "is_dirty").exitCode, 0);
    std::filesystem::remove(place / "session");
    const std::string scale = folder.Write("s.scl", kScale);
    const auto played =
        play({"--voices", "3", "--glide", "0.5", "--tuning", scale}, "/reply", "is_clean");
    EXPECT_EQ(played.exitCode, 0);
    // A sample may be missing for a while.
    folder.Write(place / "sound.xml",
                 "<vexasound><vexasamplefunction><samplefile>gone.wav</samplefile>"
                 "</vexasamplefunction></vexasound>");
    const auto silent = play({}, "/reply", "is_clean");
    EXPECT_EQ(silent.exitCode, 0);
    EXPECT_THAT(silent.text, HasSubstr("gone.wav"));
    const auto read = vexa::ReadProject(place, {});
    ASSERT_TRUE(read) << read.Fault().text;
    EXPECT_EQ(read->sound.function.sampleFile, "gone.wav");
    EXPECT_EQ(read->soundName, "default");
    EXPECT_EQ(read->options.voices, 3);
    EXPECT_THAT(*kits::ReadFile(place / "session"), HasSubstr("glide = 0.5\n"));
}

/// A new session saves the sound that plays.
TEST_F(SessionTest, WithoutAWindowTheShippedDefaultStandsInForOneThatCannotBeRead) {
    const std::string broken = folder.Write("data/vexa/sounds/default.xml", "<vexasound");
    const test::EnvironmentVariable url("NSM_URL", manager.Url().c_str());
    const test::EnvironmentVariable data("XDG_DATA_HOME", In("data").c_str());
    const auto played = test::RunCommand(
        {VEXA_PROGRAM_FOLDER "/vexa", "--no-window", "--audio", "none", "--user-folder"},
        [&](pid_t child) {
            EXPECT_TRUE(manager.Hears("/reply /nsm/client/open"));
            ::kill(child, SIGTERM);
        });
    EXPECT_EQ(played.exitCode, 0);
    EXPECT_THAT(played.text, HasSubstr("vexa: " + broken + ":1:1: "));
    EXPECT_THAT(played.text, HasSubstr("instead the sound of " VEXA_PROGRAM_FOLDER));
    const auto project = vexa::ReadProject(folder.Path() / "session/Vexa.nTEST", {});
    ASSERT_TRUE(project) << project.Fault().text;
    EXPECT_EQ(project->sound, *vexa::ReadSound(VEXA_SOURCE_FOLDER "/data/sounds/default.xml"));
}

} // namespace
