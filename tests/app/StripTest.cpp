// SPDX-License-Identifier: GPL-3.0-or-later
// Catches faults of the strip for playing: every gesture, and its effect on the sound and its
// document.
#include "app/strip/Strip.h"

#include "app/MainViewStage.h"
#include "app/strip/Knob.h"
#include "app/strip/Latch.h"
#include "app/strip/NumberField.h"
#include "app/strip/Piano.h"
#include "app/strip/Scope.h"
#include "app/strip/TuningControls.h"
#include "app/strip/Wheel.h"
#include "documents/SoundDocument.h"
#include "kits/interface/backends/ViewWidget.h"
#include "support/Environment.h"

#include <QAccessible>
#include <QTest>
#include <QWheelEvent>
#include <cmath>
#include <fstream>
#include <numbers>

#include <gmock/gmock.h>

namespace {

using namespace vexa;
using testing::HasSubstr;
using testing::StartsWith;

class StripTest : public test::MainViewTest {
  protected:
    template<class View>
    View& Find(const char* name) const {
        return dynamic_cast<View&>(*window->FindView(name));
    }
    VexaMidiConsumer& Consumer() { return view->Graph().Consumer(); }
    const Playing& Heard() { return view->Engine().playing; }
    /// Returns the text of that row in the sound's document.
    std::optional<std::string> Said(std::string_view row) {
        const auto playing = view->ConstructSound().playing;
        return playing ? playing->Of(row) : std::nullopt;
    }
    void Look() {
        window->Strip().Refresh();
        test::Settle();
    }
    /// Turns the mouse wheel over a view.
    static void Turn(BView& view, int steps, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QWidget* line = view.Widget().focusProxy();
        QWidget& widget = line ? *line : view.Widget();
        const QPointF where(3, 3);
        QWheelEvent event(where, widget.mapToGlobal(where), {}, {0, 120 * steps}, Qt::NoButton,
                          modifiers, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&widget, &event);
        test::Settle();
    }
    static void Key(BView& view, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QWidget* widget = view.Widget().focusProxy() ? view.Widget().focusProxy() : &view.Widget();
        QTest::keyClick(widget, key, modifiers);
        test::Settle();
    }
    /// Lets the MIDI thread handle the sent events, until the condition has held once.
    template<class Condition>
    bool Comes(const Condition& condition) {
        for (int i = 0; i < 2000; i++) {
            if (condition())
                return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            Look();
        }
        return false;
    }
    int Held() { return Consumer().CountHeld(); }
};

TEST_F(StripTest, HowTheSoundIsPlayedIsEditedHeardAndSaved) {
    Open(false);
    auto& spread = Find<NumberField>("spread, degrees");
    auto& pressure = Find<NumberField>("pressure, controller");
    auto& glide = Find<NumberField>("glide, seconds");
    EXPECT_STREQ(spread.Text(), "0\u00b0");
    EXPECT_STREQ(pressure.Text(), "none");
    EXPECT_THAT(spread.Help(), HasSubstr("The sound does not say it"));
    EXPECT_FALSE(view->ConstructSound().playing) << "looking is no edit";

    Enter("spread, degrees", "42.5 \u00b0");
    EXPECT_EQ(Heard().spread, 42.5F);
    EXPECT_EQ(Said("spread"), "42.5");
    EXPECT_STREQ(spread.Text(), "42.5\u00b0");
    EXPECT_TRUE(view->Changed());
    // Single steps, finer and coarser ones; values stop at the ends.
    Turn(spread, 1);
    EXPECT_EQ(Said("spread"), "47.5");
    Turn(spread, -2, Qt::ShiftModifier);
    EXPECT_EQ(Said("spread"), "46.5");
    Key(spread, Qt::Key_Up, Qt::ControlModifier);
    Key(spread, Qt::Key_Down);
    EXPECT_EQ(Said("spread"), "91.5");
    Turn(spread, 99);
    EXPECT_EQ(Heard().spread, 180);
    // An invalid text is marked, and everything else is unchanged.
    Enter("glide, seconds", "6");
    EXPECT_THAT(glide.ToolTip(), HasSubstr("from 0 to 5"));
    EXPECT_EQ(Said("glide"), std::nullopt);
    Enter("glide, seconds", "0.5");
    EXPECT_EQ(Heard().glide, 0.5F);
    Turn(pressure, 2);
    EXPECT_EQ(Said("pressure"), "1");
    EXPECT_EQ(Heard().Pressure(), 1);
    Turn(pressure, -2);
    EXPECT_STREQ(pressure.Text(), "none");
    EXPECT_EQ(Said("pressure"), std::nullopt);
    Find<BMenuField>("mode of playing").Menu()->ItemAt(2)->Choose();
    Find<BMenuField>("oversampling").Menu()->ItemAt(2)->Choose();
    Find<BMenuField>("pedal").Menu()->ItemAt(1)->Choose();
    Enter("polyphony, voices", "7");
    test::Settle();
    EXPECT_EQ(Heard().Mode(), PlayMode::legato);
    EXPECT_EQ(Said("mode"), "legato");
    EXPECT_EQ(Heard().Oversampling(), 4);
    EXPECT_TRUE(Heard().Pedal());
    EXPECT_EQ(Said("polyphony"), "7");
    EXPECT_EQ(view->Played().VoiceLimit(), 7);
    EXPECT_EQ(view->VoicesMenu().Title(), "max. 7 voices");
    view->SaveSound("mine.xml");
    const auto saved = ReadSound(In("sounds/mine.xml"));
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->playing, view->ConstructSound().playing);

    // Another sound is shown, but the command line's settings take precedence.
    PlayingTexts options;
    options.Of("glide") = "0.25";
    view->Prefer(options);
    view->LoadSound(In("sounds/bell.xml"));
    Look();
    EXPECT_STREQ(glide.Text(), "0.25 s");
    EXPECT_FALSE(glide.IsEnabled());
    EXPECT_THAT(glide.Help(), StartsWith("--glide on the command line"));
    EXPECT_FALSE(view->Changed());
}

TEST_F(StripTest, ThePianoPlaysShowsWhatSoundsAndEndsEveryNote) {
    Open(false);
    view->ChooseSource("");
    view->VoicesMenu().FindItem(VoicesCode(20))->Choose();
    test::Settle();
    auto& piano = Find<Piano>("piano");
    auto& hold = Find<Latch>("hold");
    auto& bend = Find<Wheel>("pitch bend");
    const QAccessibleInterface* told = QAccessible::queryAccessibleInterface(&hold.Widget());
    EXPECT_EQ(told->role(), QAccessible::CheckBox);
    EXPECT_FALSE(told->state().checked);
    hold.SetOn(true);
    EXPECT_TRUE(told->state().checked);
    hold.SetOn(false);
    const auto at = [&](int key, float share) {
        const BRect frame = piano.Keys().FrameOf(key);
        return BPoint{(frame.left + frame.right) / 2, frame.top + frame.Height() * share};
    };
    EXPECT_EQ(piano.Keys().KeyAt(at(61, 0.9F)), 61) << "black upon white";
    EXPECT_EQ(piano.Keys().KeyAt(at(62, 0.9F)), 62);
    test::Press(piano, at(60, 1));
    ASSERT_TRUE(Comes([&] { return Held() == 1 && piano.IsLit(60); }));
    EXPECT_EQ(view->Engine().voices[0].vel, 1);
    // The pointer slides on, out of the view and back.
    test::Drag(piano, at(61, 0));
    ASSERT_TRUE(Comes([&] { return piano.IsLit(61) && !piano.IsLit(60); }));
    EXPECT_NEAR(view->Engine().voices[1].vel, 20 / 127.0, 1e-6);
    test::Drag(piano, {at(64, 0).x, -40});
    ASSERT_TRUE(Comes([&] { return piano.IsLit(64) && Held() == 1; }));
    test::Release(piano, {at(64, 0).x, -40});
    ASSERT_TRUE(Comes([&] { return Held() == 0; }));
    // Notes from other sources are shown too.
    Consumer().NoteOn(3, 72, 100, 0);
    EXPECT_TRUE(Comes([&] { return piano.IsLit(72); }));
    Consumer().NoteOff(3, 72, 0, 0);
    EXPECT_TRUE(Comes([&] { return !piano.IsLit(72); }));

    // The hold switch keeps the piano's keys, whatever the sound sets, and acts as the sound's
    // pedal.
    test::Click(hold, {5, 5});
    for (const int key : {48, 52, 48}) {
        test::Press(piano, at(key, 0.9F));
        test::Release(piano, at(key, 0.9F));
    }
    ASSERT_TRUE(Comes([&] { return Held() == 2 && view->Engine().controllers[64] == 1; }));
    test::Click(hold, {5, 5});
    ASSERT_TRUE(Comes([&] { return Held() == 0 && view->Engine().controllers[64] == 0; }));
    // Space starts and ends a note, and losing the focus ends it.
    piano.MakeFocus();
    Key(piano, Qt::Key_Right);
    Key(piano, Qt::Key_Up);
    Key(piano, Qt::Key_Space);
    ASSERT_TRUE(Comes([&] { return piano.IsLit(61); }));
    Key(piano, Qt::Key_Escape);
    ASSERT_TRUE(Comes([&] { return Held() == 0; }));
    Key(piano, Qt::Key_Space);
    ASSERT_TRUE(Comes([&] { return Held() == 1; }));
    hold.MakeFocus();
    ASSERT_TRUE(Comes([&] { return Held() == 0; }));
    // Assistive technology plays by the keys' names.
    for (std::size_t i = 0; i < piano.CountParts(); i++) {
        if (piano.DescribePart(i).name == "F#4")
            piano.Activate(i);
    }
    ASSERT_TRUE(Comes([&] { return piano.IsLit(66); }));
    piano.Activate(std::nullopt);
    ASSERT_TRUE(Comes([&] { return Held() == 0; }));

    // The wheel bends sounding notes and springs back; silencing releases all.
    Enter("bend, semitones", "12");
    test::Click(hold, {5, 5});
    test::Press(piano, at(50, 0.9F));
    test::Press(bend, {5, 22});
    test::Drag(bend, {5, -100});
    const auto semitones = [&] {
        float most = 0;
        for (const voice& slot : view->Engine().voices)
            most = std::max(most, slot.state.Look().Active() ? float(slot.bend) : 0.0F);
        return most;
    };
    ASSERT_TRUE(Comes([&] { return semitones() > 11.99F; }));
    test::Release(bend, {5, -100});
    ASSERT_TRUE(Comes([&] { return semitones() == 0; }));
    Turn(Find<Wheel>("modulation"), 5);
    ASSERT_TRUE(Comes([&] { return std::abs(view->Engine().controllers[1] - 0.5F) < 0.01F; }));
    view->SilenceAll();
    ASSERT_TRUE(Comes([&] { return Consumer().CountVox() == 0 && !hold.IsOn(); }));
    EXPECT_EQ(bend.Value(), 0);
    // The piano plays on another channel, and shows other octaves.
    view->ChannelMenu().FindItem(ChannelCode(6))->Choose();
    test::Settle();
    const int before = piano.Keys().First();
    Turn(piano, 1);
    EXPECT_EQ(piano.Keys().First(), before - 7);
    test::Press(piano, at(36, 0.9F));
    ASSERT_TRUE(Comes([&] { return Held() == 1; }));
    EXPECT_EQ(view->Engine().voices[0].channel, 5);
    EXPECT_EQ(view->DeviceMenu().FindItem("Piano in the window"), nullptr);
}

TEST_F(StripTest, AKnobTurnsByDragWheelAndKeys) {
    Open(false);
    Enter("Fxy", "a*x");
    Look();
    auto& knob = Find<Knob>("knob a");
    const auto value = [&] { return std::lround(view->Engine().macros[0].value * 1000); };
    test::Press(knob, {17, 17});
    test::Drag(knob, {17, 2});
    test::Release(knob, {17, 2});
    EXPECT_EQ(value(), 600);
    EXPECT_EQ(view->ConstructSound().function.macros[0].value, "0.6");
    Turn(knob, -1);
    Turn(knob, 1, Qt::ShiftModifier);
    EXPECT_EQ(value(), 582);
    Key(knob, Qt::Key_Up, Qt::ControlModifier);
    EXPECT_EQ(value(), 682);
    Key(knob, Qt::Key_End);
    EXPECT_EQ(value(), 1000);
    QTest::mouseClick(&knob.Widget(), Qt::LeftButton, Qt::ControlModifier, {17, 17});
    EXPECT_EQ(value(), 500);
    knob.SetNumber(std::nullopt, 0.25);
    EXPECT_EQ(value(), 250);
    EXPECT_EQ(knob.Describe().number->value, 0.25);
    QTest::mouseDClick(&knob.Widget(), Qt::LeftButton, Qt::NoModifier, {17, 17});
    EXPECT_TRUE(Field("macro a").IsFocus());
    // What is typed replaces the number. A drag in many parts there and back ends where it began.
    test::Type(*window, "0.5");
    test::TypeKey(*window, Qt::Key_Return);
    EXPECT_EQ(Text("macro a"), "0.5");
    test::Press(knob, {17, 97});
    for (const float way : {-1.0F, 1.0F}) {
        for (int i = 1; i <= 60; i++)
            test::Drag(knob, {17, (way < 0 ? 97.0F : 37.0F) + way * float(i)});
        EXPECT_EQ(Text("macro a"), way < 0 ? "0.9" : "0.5");
    }
    test::Release(knob, {17, 97});

    // While the number field has the focus, the next controller that moves is learned, and no
    // other.
    Consumer().ControlChange(0, 40, 1, 0);
    Field("controller a").MakeFocus();
    Look();
    EXPECT_EQ(view->Engine().macros[0].controller, 16);
    Consumer().ControlChange(0, 41, 90, 0);
    EXPECT_TRUE(Field("controller a").IsFocus());
    Look();
    EXPECT_EQ(view->Engine().macros[0].controller, 41);
    Consumer().ControlChange(0, 42, 90, 0);
    Look();
    EXPECT_EQ(Text("controller a"), "41");
    EXPECT_EQ(view->ConstructSound().function.macros[0].controller, "41");
}

TEST_F(StripTest, TheTuningIsChosenAndAFaultLeavesTheOneBefore) {
    Open(false);
    auto& tuning = window->Strip().Tuning();
    auto& menu = *Find<BMenuField>("tuning").Menu();
    std::ofstream(In("five.scl")) << "! five.scl\nfive\n2\n240.\n480.\n";
    std::ofstream(In("bad.scl")) << "bad\n2\n240.\nhigh\n";
    std::ofstream(In("map.kbm")) << "0\n0\n127\n60\n60\n100\n0\n";
    const auto hertz = [&](uchar key) {
        Consumer().AllNotesOff(false, 0);
        Consumer().NoteOn(0, key, 100, 0);
        return float(view->Engine().voices[0].freq);
    };
    Enter("A4, hertz", "400");
    EXPECT_NEAR(hertz(69), 400, 1e-3);
    EXPECT_TRUE(tuning.Choose({In("five.scl"), std::nullopt, 400}));
    EXPECT_EQ(menu.Title(), "five.scl");
    EXPECT_NEAR(hertz(71) / hertz(69), std::exp2(0.4), 1e-5);
    alerts.texts.clear();
    EXPECT_FALSE(tuning.Choose({In("bad.scl"), std::nullopt, 400}));
    EXPECT_EQ(alerts.texts.size(), 1U);
    EXPECT_THAT(alerts.details, HasSubstr("bad.scl:4"));
    EXPECT_NEAR(hertz(71) / hertz(69), std::exp2(0.4), 1e-5);
    EXPECT_EQ(menu.Title(), "five.scl");
    Enter("A4, hertz", "0");
    EXPECT_THAT(Field("A4, hertz").ToolTip(), HasSubstr("1 to 20000"));
    EXPECT_NEAR(hertz(69), 400, 1e-3);
    // A file that was read need not be there any more.
    std::filesystem::rename(In("five.scl"), In("moved.scl"));
    Enter("A4, hertz", "432.1");
    EXPECT_EQ(Text("A4, hertz"), "432.1 Hz");
    EXPECT_NEAR(hertz(69), 432.1, 1e-3);
    EXPECT_NEAR(hertz(71) / hertz(69), std::exp2(0.4), 1e-5);
    std::filesystem::rename(In("moved.scl"), In("five.scl"));
    for (int times = 0; times < 2; times++) {
        Enter("A4, hertz", "");
        EXPECT_NEAR(hertz(69), 440, 1e-3);
        EXPECT_EQ(Text("A4, hertz"), "440 Hz");
    }
    std::ofstream(In("without.kbm")) << "2\n0\n127\n60\n60\n260\n12\n0\nx\n";
    EXPECT_TRUE(tuning.Choose({"", In("without.kbm"), {}}));
    const std::string before = Text("A4, hertz");
    Enter("A4, hertz", "415");
    EXPECT_EQ(Text("A4, hertz"), before) << "the map leaves it out";
    EXPECT_EQ(alerts.texts.size(), 2U);
    {
        const test::CurrentFolder current(folder.Path());
        EXPECT_TRUE(tuning.Choose({"five.scl", "map.kbm", std::nullopt}));
    }
    EXPECT_EQ(settings->Get(vexa::kScaleSetting), In("five.scl").string());
    EXPECT_EQ(settings->Get(vexa::kKeymapSetting), In("map.kbm").string());
    EXPECT_TRUE(tuning.Choose({std::nullopt, In("map.kbm"), std::nullopt}));
    EXPECT_NEAR(hertz(60), 100, 1e-4);
    menu.FindItem("Keys as usual")->Choose();
    test::Settle();
    EXPECT_NEAR(hertz(69), 440, 1e-3);
}

TEST_F(StripTest, TheScopeShowsOrbitOutputAndSpectrum) {
    Open(false);
    auto& scope = Find<Scope>("scope");
    OutputTap& tap = view->Graph().Producer().Tap();
    Sound circle;
    circle.function.expression = "2*x";
    circle.envelopes[2] = circle.envelopes[3] = {{0, false, 1}};
    ASSERT_TRUE(WriteSound(In("sounds/circle.xml"), circle));
    view->LoadSound(In("sounds/circle.xml"));
    test::Settle();
    Enter("Ax0", "1");
    Look();
    const auto expectSine = [&](double amplitude, const char* caption) {
        const std::vector<float>& curve = scope.Curve();
        ASSERT_GT(curve.size(), 100U);
        const double n = double(curve.size());
        for (std::size_t i = 0; i < curve.size(); i++)
            ASSERT_NEAR(curve[i], amplitude * std::cos(2 * std::numbers::pi * double(i) / n), 0.01)
                << i;
        EXPECT_EQ(scope.Caption(), caption);
    };
    expectSine(1, "f along the newest orbit  \u00f7 2");
    Enter("Fxy", "0.25*x*a");
    Look();
    expectSine(1, "f along the newest orbit  \u00d7 8");
    // A note's own orbit: it has drifted, and follows its own macro.
    Enter("Fxy", "a*x");
    Consumer().NoteOn(0, 69, 127, 0);
    Find<Knob>("knob a").Turn(1);
    Look();
    expectSine(1, "f along the newest orbit");
    Consumer().AllNotesOff(false, 0);

    // The output and its spectrum are computed while they are visible.
    tap.SetRate(48000);
    const auto put = [&](float amplitude) {
        for (int i = 0; i < 9600; i++) {
            const auto turn = 2 * std::numbers::pi * 1000 * i / 48000;
            const std::array<float, 2> frame = {amplitude * static_cast<float>(std::sin(turn)), 0};
            tap.Put(frame.data(), 1, 2);
        }
        Look();
    };
    scope.SetMode(Scope::Mode::Output);
    put(0.5F);
    EXPECT_EQ(scope.Caption(), "output  \u00d7 4");
    EXPECT_NEAR(*std::max_element(scope.Curve().begin(), scope.Curve().end()), 1, 0.05);
    EXPECT_NEAR(scope.Curve()[0], 0, 0.2) << "it begins where it rises";
    EXPECT_GT(scope.Curve()[1], scope.Curve()[0]);
    test::Click(scope, {5, 5});
    EXPECT_EQ(scope.Shows(), Scope::Mode::Spectrum);
    put(0.5F);
    const std::vector<float>& curve = scope.Curve();
    const auto peak = std::max_element(curve.begin(), curve.end());
    EXPECT_NEAR(double(peak - curve.begin()) / double(curve.size()),
                std::log(1000.0 / 20) / std::log(1000.0), 0.01);
    EXPECT_NEAR(*peak, 1 - 12.04 / 96, 0.01) << "a quarter, in the mean of both";
    const float height = *peak;
    put(0);
    EXPECT_LT(*std::max_element(curve.begin(), curve.end()), height);

    // Nothing is recorded for an invisible scope.
    const int32 listeners = tap.Listeners();
    window->ShowPart(VexaWindow::Part::Strip, false);
    window->Strip().Pulse();
    EXPECT_EQ(tap.Listeners(), listeners - 1);
}

} // namespace
