// SPDX-License-Identifier: GPL-3.0-or-later
// Catches faults between the main view and an instrument that plays in a plug-in; both run in one
// process.
#include "app/Attachment.h"

#include "app/MainViewStage.h"
#include "app/strip/Knob.h"
#include "documents/SoundDocument.h"
#include "plugin/window/Windows.h"
#include "views/EnvView.h"

#include <gmock/gmock.h>
#include <sys/socket.h>

namespace {

using namespace vexa;
using testing::HasSubstr;

class AttachedView : public test::MainViewTest {
  protected:
    ~AttachedView() override { delete std::exchange(window, nullptr); }

    /// Lets both sides run for longer than either of them waits.
    void GoOn() {
        for (int i = 0; i < 30; i++) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            test::Settle();
        }
    }
    Sound HostsSound() { return instrument.ShownSince(0)->sound; }

    HostedInstrument instrument{folders, 48000};
    Windows windows{instrument, [](const std::string& line) { ADD_FAILURE() << line; }};
    std::unique_ptr<Attachment> plugin = *Attachment::Begin(*windows.Open());
};

TEST_F(AttachedView, ShowsWhatPlaysSendsWhatIsDoneAndNothingElse) {
    Sound sound;
    sound.author = "somebody";
    sound.texts[3] = "0.25";
    sound.function.expression = "x*y+a";
    sound.function.macros[0].value = "0.75";
    sound.function.width = "7";
    sound.envelopes[2] = {{0, false, 0.5F}, {1, true, 0}};
    bool taken = false;
    instrument.Restore(SoundText(sound), "", taken);
    // Attached anew, so that this is the first sound that the window hears of.
    plugin = *Attachment::Begin(*windows.Open());
    window = new VexaWindow({64, 100, 999, 610}, folders, {.plugin = plugin.get()});
    view = &window->MainView();
    window->BeginAttached();
    GoOn();
    EXPECT_EQ(Text("Fxy"), "x*y+a");
    EXPECT_EQ(Text("Sc"), "7");
    EXPECT_EQ(view->EnvelopeEditor(2).Points(), sound.envelopes[2]);
    EXPECT_FALSE(instrument.TakeEdited()) << "what was shown came back";
    EXPECT_EQ(HostsSound(), sound);
    EXPECT_FALSE(view->CanUndo()) << "the first sound of the view never was the plug-in's";

    // A typed text is sent when it is confirmed, and never if it is invalid.
    Field("Fxy").Type("x-y");
    GoOn();
    EXPECT_FALSE(instrument.TakeEdited());
    Field("Fxy").Confirm();
    GoOn();
    EXPECT_EQ(HostsSound().function.expression, "x-y");
    Enter("Fxy", "x-");
    Enter("Sc", "9");
    GoOn();
    EXPECT_EQ(alerts.texts.size(), 1U);
    EXPECT_EQ(HostsSound().function.expression, "x-y");
    EXPECT_EQ(HostsSound().function.width, "9");

    // An edit that is undone here is undone in the plug-in.
    view->Undo();
    GoOn();
    EXPECT_EQ(HostsSound().function.width, "7");
    view->Undo();
    GoOn();
    EXPECT_EQ(HostsSound().function.expression, "x*y+a");
    EXPECT_EQ(alerts.texts.size(), 1U);

    // A description is sent too, even if it differs in the author alone, and its name is shown.
    view->DescribeSound("Anna", view->Played().State().info, "author");
    GoOn();
    EXPECT_EQ(HostsSound().author, "Anna");
    view->DescribeSound("Anna", {"Hills", {}, {}, {}}, "name");
    GoOn();
    EXPECT_EQ(HostsSound().info.name, "Hills");
    EXPECT_THAT(view->Caption(), HasSubstr("Hills"));
    view->Undo();
    view->Undo();
    GoOn();
    EXPECT_EQ(HostsSound(), sound);

    // What a host's knobs set is shown, cannot be changed here, and does not become part of the
    // sound.
    ControlValues knobs;
    knobs.fill(-100);
    knobs[0] = -20;
    knobs[kFirstMacroControl] = 0.25F;
    instrument.TakeControls(knobs);
    instrument.TakeEdited();
    GoOn();
    view->Pulse();
    GoOn();
    auto& knob = dynamic_cast<Knob&>(*window->FindView("knob a"));
    EXPECT_EQ(Text("volume, decibels"), "-20 dB");
    EXPECT_FALSE(Field("volume, decibels").IsEnabled());
    EXPECT_THAT(Field("volume, decibels").Help(), HasSubstr("host"));
    knob.Turn(0.5F);
    GoOn();
    EXPECT_EQ(knob.Value(), 0.25F);
    EXPECT_FALSE(Field("macro a").IsEnabled());
    EXPECT_FALSE(instrument.TakeEdited());
    EXPECT_EQ(HostsSound().function.macros[0].value, "0.75");
    // Nor does another sound, which is called by its own name here and in the host alike.
    Sound other = sound;
    other.info.name = "Own name";
    ASSERT_TRUE(WriteSound(In("other.xml"), other));
    ASSERT_TRUE(view->LoadSound(In("other.xml")));
    GoOn();
    EXPECT_EQ(HostsSound().info.name, "Own name");
    EXPECT_THAT(view->Caption(), testing::StartsWith("Own name"));
    EXPECT_EQ(float(view->Engine().macros[0].value), 0.25F);
    knobs.fill(-100);
    instrument.TakeControls(knobs);
    GoOn();
    EXPECT_TRUE(Field("volume, decibels").IsEnabled());
    EXPECT_EQ(knob.Value(), 0.75F);
    EXPECT_EQ(Text("A4, hertz"), "") << "the host tunes";

    // Edits in the strip and notes of its piano are played by the plug-in.
    Enter("volume, decibels", "-3");
    GoOn();
    ASSERT_TRUE(HostsSound().playing);
    EXPECT_EQ(HostsSound().playing->texts.back(), "-3");
    std::array<float, 64> left, right;
    BView& piano = *window->FindView("piano");
    test::Press(piano, {200, 40});
    GoOn();
    instrument.Render(left.data(), right.data(), left.size());
    const voice& slot = instrument.Records().voices[0];
    EXPECT_TRUE(slot.state.Look().Active() && !slot.released);
    test::Release(piano, {200, 40});
    GoOn();
    instrument.Render(left.data(), right.data(), left.size());
    EXPECT_TRUE(slot.released);

    // What was done last is sent even if the window closes at once, and if it is more than a socket
    // holds.
    instrument.TakeEdited();
    view->Undo();
    delete std::exchange(window, nullptr);
    GoOn();
    EXPECT_TRUE(instrument.TakeEdited());
    for (const char letter : {'a', 'b', 'c'}) {
        sound.info.comment = std::string(400'000, letter);
        EXPECT_TRUE(plugin->Offer(sound));
    }
    plugin.reset();
    windows.Close();
    EXPECT_TRUE(HostsSound() == sound);
}

TEST(Attachment, PluginsThatAreNoneAreNamed) {
    const std::pair<std::string, const char*> peers[] = {
        {std::string(1 << 20, '<'), "does not say Hello"},
        {std::string("\1\0\0\0\x8\0\0\0vexa\1\0\0\0", 16), "different versions"},
        {std::string("\1\0\0\0\x8\0\0\0vexa\2\0\0\0\3\0\0\0\6\0\0\0\1\0\0\0<a", 30), "sound:1:1"},
        {std::string("\2\0\0\0\3\0\0\0why", 11), ": why"},
        {std::string("\1\0\0", 3), "in the middle of a letter"},
        {"", "the plug-in has gone"},
    };
    for (const auto& [bytes, reason] : peers) {
        int ends[2];
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
        std::jthread peer([&, socket = ends[1]] {
            ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            ::shutdown(socket, SHUT_WR);
        });
        const auto begun = Attachment::Begin(ends[0]);
        peer.join();
        ::close(ends[1]);
        ASSERT_FALSE(begun) << reason;
        EXPECT_THAT(begun.Fault().text, HasSubstr(reason));
    }
    EXPECT_THAT(Attachment::Begin(0).Fault().text, HasSubstr("is no socket from a plug-in"));
}

} // namespace
