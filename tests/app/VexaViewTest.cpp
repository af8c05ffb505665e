// SPDX-License-Identifier: GPL-3.0-or-later
// Catches controls of the main view whose message has no or the wrong effect.
#include "app/FormulaHint.h"
#include "app/MainViewStage.h"
#include "app/MessageCodes.h"
#include "app/strip/Knob.h"
#include "app/strip/Strip.h"
#include "documents/SoundDocument.h"
#include "kits/interface/backends/ViewWidget.h"
#include "kits/midi/MidiLocalProducer.h"
#include "kits/midi/MidiRoster.h"
#include "support/Environment.h"
#include "support/Pictures.h"
#include "synth/Envelope.h"
#include "views/EnvView.h"
#include "views/R2RFView.h"

#include <QApplication>
#include <QKeyEvent>
#include <cmath>
#include <fstream>
#include <thread>

#include <gmock/gmock.h>

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using VexaViewTest = test::MainViewTest;

TEST_F(VexaViewTest, StartsWithTheTextsThatItsParametersHave) {
    Open(false);
    EXPECT_EQ(Text("Fxy"), "(5*(x*y*y-y*x*x)-3*(x-y))/((1+x*x+y*y)*(1+x*x+y*y))");
    EXPECT_EQ(Text("Sc"), "15");
    EXPECT_FLOAT_EQ(view->Plane().Scale(), 0.05F);
    for (const auto& [field, text] :
         {std::pair{"LFx", "0"}, {"LFy", "0"}, {"LSx", "0.5"}, {"LSy", "0.5"}, {"SFreq", "440"}})
        EXPECT_EQ(Text(field), text) << field;
    EXPECT_FALSE(Field("SFreq").IsEnabled());
    for (const vexa::Parameter& row : vexa::Parameters()) {
        const std::string field(row.field);
        const bool isFirst = field == "Cx0" || field == "Cy0" || field == "Ax0" || field == "Ay0" ||
                             field == "Fx" || field == "Fy";
        EXPECT_EQ(Text(field.c_str()), isFirst ? "1" : "0") << field;
        const float value = row.value ? float(view->SoundParam().*row.value)
                                      : float(view->SoundParam().*row.controller);
        EXPECT_EQ(value, isFirst ? 1 : 0) << field;
    }
    EXPECT_EQ(view->VoicesMenu().Title(), "voices");
    EXPECT_EQ(view->ChannelMenu().Title(), "midi channel");
    EXPECT_STREQ(window->Title(), "Vexa");
}

TEST_F(VexaViewTest, TabWalksTheFieldsInReadingOrder) {
    Open(false);
    std::vector<std::string> expected{"Fxy", "Sc", "LFx", "LFy", "LSx", "LSy"};
    for (const char* group : {"dcxdt", "dcydt", "ax", "ay", "fx", "cx0", "fy", "cy0"}) {
        for (const vexa::Parameter& row : vexa::ParametersOf(group))
            expected.emplace_back(row.field);
    }
    Field("Fxy").MakeFocus();
    std::vector<std::string> walked{"Fxy"};
    // Buttons and menus lie in between.
    for (int key = 0; key < 60 && walked.size() < expected.size(); key++) {
        test::TypeKey(*window, Qt::Key_Tab);
        for (const std::string& name : expected) {
            if (Field(name).IsFocus())
                walked.push_back(name);
        }
    }
    EXPECT_EQ(walked, expected);
}

TEST_F(VexaViewTest, EveryCoefficientFieldSetsItsParameterAndMarksTheSound) {
    Open(false);
    float number = 2;
    for (const vexa::Parameter& row : vexa::Parameters()) {
        number += 1;
        Enter(std::string(row.field).c_str(), std::to_string(int(number)).c_str());
        const float value = row.value ? float(view->SoundParam().*row.value)
                                      : float(view->SoundParam().*row.controller);
        EXPECT_EQ(value, number) << row.field;
    }
    Enter("Ax1", "abc");
    EXPECT_EQ(view->SoundParam().Ax1, 0);
    Enter("Ax1", "0.25");
    Enter("Ax1", "nan");
    EXPECT_EQ(view->SoundParam().Ax1, 0.25F);
    Enter("Cx4", "127");
    EXPECT_TRUE(alerts.texts.empty());
    for (const char* wrong : {"-1", "128"}) {
        Enter("Cx4", wrong);
        EXPECT_EQ(view->SoundParam().Cx4, 127);
    }
    const std::string alert = "Controller number must be between 0 and 127.";
    EXPECT_THAT(alerts.texts, ElementsAre(alert, alert));
}

TEST_F(VexaViewTest, WheelAndArrowsTurnNumbersAndAMovedControllerIsLearned) {
    Open(false);
    const auto& sound = view->SoundParam();
    Enter("Ax0", "0.7");
    test::TurnWheel(Field("Ax0"), 3);
    EXPECT_EQ(Field("Ax0").Text(), std::string("0.73"));
    EXPECT_EQ(sound.Ax0, 0.73F);
    test::TurnWheel(Field("Ax0"), -2, Qt::ShiftModifier);
    EXPECT_EQ(sound.Ax0, 0.728F);
    Field("Ax0").MakeFocus();
    test::TypeKey(*window, Qt::Key_Up, Qt::ControlModifier);
    EXPECT_EQ(sound.Ax0, 0.828F);
    EXPECT_TRUE(Field("Ax0").IsFocus());
    // A number above 1 changes in steps of its second digit; a width stays positive; a controller's
    // number is an integer from 0 to 127.
    for (const auto& [field, from, steps, to] :
         {std::tuple{"Fx", "3", 1, "3.1"}, std::tuple{"Fy", "0.99", 2, "1.01"},
          std::tuple{"Sc", "0.05", -9, "0.01"}, std::tuple{"Ax4", "125", 5, "127"},
          std::tuple{"Ay4", "2", -5, "0"}, std::tuple{"Cx1", "-0.3", -1, "-0.31"}}) {
        Enter(field, from);
        test::TurnWheel(Field(field), steps);
        EXPECT_EQ(Field(field).Text(), std::string(to)) << field;
    }
    // No controller is learned while no number field has the focus.
    view->Engine().controllers[7] = 0.5F;
    view->Pulse();
    Field("Ax4").MakeFocus();
    view->Pulse();
    view->Engine().controllers[74] = 0.01F;
    view->Pulse();
    EXPECT_EQ(sound.Ax4, 127);
    view->Engine().controllers[74] = 0.4F;
    view->Pulse();
    test::Settle();
    EXPECT_EQ(sound.Ax4, 74);
    EXPECT_TRUE(alerts.texts.empty());
}

TEST_F(VexaViewTest, PlaneControlsMoveThePicture) {
    Open(false);
    Enter("LFx", "1.5");
    Enter("LFy", "-2");
    Enter("LSx", "0.25");
    Enter("LSy", "1");
    EXPECT_EQ(view->Plane().LinkFunction(), (BPoint{1.5F, -2}));
    EXPECT_EQ(view->Plane().LinkScreen(), (BPoint{0.25F, 1}));
    Enter("Sc", "6");
    EXPECT_FLOAT_EQ(view->Plane().Scale(), 0.02F);
    for (const char* ignored : {"0", "-3", "nan", "wide"}) {
        Enter("Sc", ignored);
        EXPECT_FLOAT_EQ(view->Plane().Scale(), 0.02F) << ignored;
    }
}

TEST_F(VexaViewTest, AnExpressionIsCompiledAndShown) {
    Open(false);
    Enter("Fxy", "0.5");
    EXPECT_THAT(alerts.texts, ElementsAre());
    EXPECT_EQ(PixelAt(10, 10), 127U);
    EXPECT_EQ(Text("Fxy"), "0.5");
    EXPECT_TRUE(Field("Fxy").IsEnabled());
    // Text typed meanwhile stays when the add-on is ready or has failed.
    Field("Fxy").Type("x+");
    FinishAddon();
    EXPECT_TRUE(std::filesystem::exists(In("functions/recent")));
    EXPECT_EQ(Text("Fxy"), "x+");
    EXPECT_THAT(alerts.texts, ElementsAre());
    folder.Write("functions/addon.c", "#error no");
    Enter("Fxy", "0.5");
    FinishAddon();
    ASSERT_EQ(alerts.texts.size(), 1U);
    EXPECT_THAT(alerts.texts[0], HasSubstr("There was an error while trying to compile"));
    EXPECT_THAT(alerts.heading, HasSubstr("The formula plays"));
    EXPECT_EQ(PixelAt(10, 10), 127U);
    alerts.texts.clear();
    {
        const test::EnvironmentVariable path("PATH", "/none");
        Enter("Fxy", "-1.0");
        FinishAddon();
        EXPECT_THAT(alerts.texts, ElementsAre()) << "without a compiler";
        EXPECT_EQ(PixelAt(10, 10), 0xff0000U);
        Enter("Fxy", "0.5");
        FinishAddon();
    }
    // After a failure the previous function stays, with the invalid text.
    Enter("Fxy", "0.5 + fopen(x)");
    ASSERT_EQ(alerts.texts.size(), 1U);
    EXPECT_THAT(alerts.texts[0], HasSubstr("There was an error while trying to compile"));
    EXPECT_THAT(alerts.heading, HasSubstr("mend it in its field"));
    EXPECT_THAT(alerts.details, HasSubstr("character 7: "));
    EXPECT_EQ(PixelAt(10, 10), 127U);
    EXPECT_EQ(Text("Fxy"), "0.5 + fopen(x)");
    EXPECT_THAT(Field("Fxy").ToolTip(), HasSubstr("fopen"));
    EXPECT_TRUE(Field("Fxy").IsEnabled());
    Enter("Fxy", "-1.0");
    EXPECT_STREQ(Field("Fxy").ToolTip(), "");
    EXPECT_EQ(PixelAt(10, 10), 0xff0000U);
}

TEST_F(VexaViewTest, WhatIsTypedIsExplainedAndShownAndHeardWhenItIsConfirmed) {
    Open(false);
    // Only the test sends pulses, however slow the machine is.
    window->SetPulseRate(3600000000);
    Enter("Fxy", "0.25");
    BTextControl& field = Field("Fxy");
    const auto pixelAfterPulses = [&] {
        for (int i = 0; i < 3; i++)
            view->Pulse();
        return PixelAt(10, 10);
    };
    const auto type = [&](const char* text) {
        field.MakeFocus();
        field.Type(text);
        test::Settle();
    };
    const auto heard = [&] {
        view->Graph().Consumer().NoteOn(0, 60, 100, 0);
        return float(view->Engine().voices[0].start);
    };
    constexpr uint32 kPlaying = 63;
    constexpr uint32 kTyped = 127;
    type("0.5+x^2");
    EXPECT_FALSE(view->Hint().IsHidden());
    EXPECT_THAT(view->Hint().Lines(), Contains(HasSubstr("pow(x, 2)")));
    EXPECT_THAT(field.ToolTip(), HasSubstr("pow(x, 2)"));
    const float mark = *view->Hint().Mark();
    type("0.5+x+x^2");
    EXPECT_GT(*view->Hint().Mark(), mark + 5);
    EXPECT_EQ(pixelAfterPulses(), kPlaying);
    // A formula may be doubtful too; what is said about it stays once it plays.
    type("1/3*x");
    EXPECT_THAT(view->Hint().Lines(), Contains("write 1.0/3"));
    EXPECT_EQ(pixelAfterPulses(), 0U);
    Enter("Fxy", "1/3*x");
    EXPECT_TRUE(view->Hint().IsHidden());
    EXPECT_THAT(field.ToolTip(), HasSubstr("1/3 is 0"));
    Enter("Fxy", "0.25");
    type("0.5");
    EXPECT_TRUE(view->Hint().IsHidden());
    EXPECT_STREQ(field.ToolTip(), "");
    view->Pulse();
    EXPECT_EQ(PixelAt(10, 10), kPlaying) << "not at once";
    EXPECT_EQ(pixelAfterPulses(), kTyped);
    type("0.5+");
    EXPECT_EQ(pixelAfterPulses(), kTyped) << "the last that was right";
    EXPECT_EQ(heard(), 0.25F);
    test::TypeKey(*window, Qt::Key_Escape);
    EXPECT_TRUE(view->Hint().IsHidden());
    EXPECT_EQ(pixelAfterPulses(), kPlaying);
    type("0.5");
    EXPECT_EQ(pixelAfterPulses(), kTyped);
    field.Confirm();
    test::Settle();
    EXPECT_EQ(pixelAfterPulses(), kTyped);
    EXPECT_EQ(heard(), 0.5F);
    // The alert says the same. Then the field has the keyboard again, and Escape restores what was
    // there before the first refused text.
    type("0.5+x^2");
    const std::string tip = field.ToolTip();
    test::TypeKey(*window, Qt::Key_Return);
    test::Settle();
    EXPECT_EQ(alerts.details, tip);
    EXPECT_TRUE(view->Hint().IsHidden());
    EXPECT_TRUE(field.IsFocus());
    type("0.5+");
    test::TypeKey(*window, Qt::Key_Return);
    test::Settle();
    EXPECT_NE(view->SavingRemark(), "");
    test::TypeKey(*window, Qt::Key_Escape);
    test::Settle();
    EXPECT_STREQ(field.Text(), "0.5");
    EXPECT_FALSE(field.IsFocus());
    EXPECT_EQ(view->SavingRemark(), "");
    type("0.5+x^2");
    field.Confirm();
    test::Settle();
    type("x");
    field.Type("0.5+x^2");
    test::Settle();
    EXPECT_EQ(field.ToolTip(), tip) << "what was confirmed is wrong as before";
    EXPECT_TRUE(view->Hint().IsHidden());
    // An unconfirmed text leaves no trace when something else is loaded.
    type("0.125");
    pixelAfterPulses();
    ASSERT_TRUE(view->LoadSound(In("sounds/bell.xml")));
    test::Settle();
    const uint32 bell = PixelAt(170, 160);
    pixelAfterPulses();
    EXPECT_EQ(PixelAt(170, 160), bell);
}

TEST_F(VexaViewTest, MacrosAreEditedFollowedAndSaved) {
    Open(false);
    auto& knob = dynamic_cast<vexa::Knob&>(*window->FindView("knob a"));
    const auto pulse = [&] {
        view->Pulse();
        window->Strip().Refresh();
        test::Settle();
    };
    const vexa::Macro& a = view->Engine().macros[0];
    Enter("Fxy", "x");
    pulse();
    EXPECT_FALSE(Field("macro a").IsEnabled());
    Enter("Fxy", "a + 0*vel");
    pulse();
    EXPECT_TRUE(Field("macro a").IsEnabled());
    EXPECT_FALSE(Field("macro b").IsEnabled());
    EXPECT_EQ(PixelAt(10, 10), 127U);
    view->SaveSound("mine.xml");
    EXPECT_FALSE(view->Changed());
    knob.Turn(0.25F);
    test::Settle();
    EXPECT_EQ(a.value, 0.25F);
    EXPECT_EQ(Text("macro a"), "0.25");
    EXPECT_TRUE(view->Changed());
    // After the previous picture has existed for a while.
    for (int i = 0; i < 5000 && PixelAt(10, 10) != 63; i++) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        pulse();
    }
    EXPECT_EQ(PixelAt(10, 10), 63U);
    Enter("macro a", "0.5");
    EXPECT_EQ(knob.Value(), 0.5F);
    EXPECT_FALSE(view->Changed()) << "as it was";
    for (const auto& [text, tip] : {std::pair{"1,5", "counts as 1"}, {"7", "counts as 1"}}) {
        Enter("macro a", text);
        EXPECT_THAT(Field("macro a").ToolTip(), HasSubstr(tip));
        EXPECT_EQ(a.value, 1);
    }
    // Another controller moves the macro, and its new value is shown and saved.
    Enter("controller a", "128");
    EXPECT_THAT(alerts.texts, ElementsAre("Controller number must be between 0 and 127."));
    EXPECT_EQ(a.controller, 16);
    Enter("controller a", "21");
    view->Graph().Consumer().ControlChange(0, 21, 32, 0);
    pulse();
    EXPECT_EQ(Text("macro a"), "0.251969");
    EXPECT_NEAR(knob.Value(), 32 / 127.0, 1e-6);
    view->Graph().Consumer().ControlChange(0, 21, 127, 0);
    view->SaveSound("mine.xml");
    view->LoadSound(In("sounds/bell.xml"));
    pulse();
    EXPECT_EQ(Text("macro a"), "0.5");
    EXPECT_EQ(Text("controller a"), "16");
    view->LoadSound(In("sounds/mine.xml"));
    pulse();
    EXPECT_EQ(Text("macro a"), "1");
    EXPECT_EQ(Text("controller a"), "21");
    EXPECT_EQ(a.value, 1);
    EXPECT_FALSE(view->Changed());
}

TEST_F(VexaViewTest, APictureIsOpenedByItsContentSavedAndLoaded) {
    Open(false);
    // The left half is dark, which is red on the plane, the right one bright; the file has a sound
    // file's name.
    folder.Write("pictures/two.wav", test::Png(2, 1, {}, {25, 255}));
    view->Open(In("pictures/two.wav"));
    test::Settle();
    EXPECT_EQ(view->Kind(), vexa::FunctionKind::Picture);
    EXPECT_EQ(Text("Fxy"), "");
    EXPECT_FALSE(Field("SFreq").IsEnabled());
    EXPECT_EQ(PixelAt(10, 160), 0xCD0000U);
    EXPECT_EQ(PixelAt(250, 160), 255U);
    view->SaveFunction("two.xml");
    Enter("Fxy", "x/");
    EXPECT_THAT(view->SavingRemark(), HasSubstr("the picture \"two.wav\", which sounds, will"));
    Enter("Fxy", "0.5");
    EXPECT_EQ(PixelAt(10, 160), 127U);
    view->Open(In("functions/two.xml"));
    test::Settle();
    EXPECT_EQ(PixelAt(10, 160), 0xCD0000U);
    EXPECT_EQ(view->ConstructFunction().pictureFile, "two.wav");
    // A damaged picture changes nothing; a missing picture of a document is silent and keeps its
    // name.
    view->Open(folder.Write("cut.png", test::Png(2, 1, {}, {9, 9}).substr(0, 50)));
    EXPECT_THAT(alerts.texts, testing::Contains("Could not load picture"));
    EXPECT_EQ(PixelAt(10, 160), 0xCD0000U);
    std::filesystem::remove(In("pictures/two.wav"));
    view->LoadFunction(In("functions/two.xml"));
    test::Settle();
    EXPECT_EQ(PixelAt(10, 160), 0U);
    EXPECT_THAT(view->SavingRemark(), HasSubstr("picture \"two.wav\" is missing"));
    EXPECT_EQ(view->ConstructFunction().pictureFile, "two.wav");
}

TEST_F(VexaViewTest, ASampleTakesTheExpressionsPlaceAndGivesItBack) {
    Open(false);
    const uint32 before = PixelAt(170, 160);
    view->LoadSample((folder.Path() / "samples/pluck.wav").c_str());
    test::Settle();
    EXPECT_TRUE(view->SampleMode());
    EXPECT_EQ(Text("Fxy"), "");
    EXPECT_TRUE(Field("SFreq").IsEnabled());
    const uint32 spiral = PixelAt(170, 160);
    EXPECT_NE(spiral, before);
    Enter("SFreq", "220");
    EXPECT_NE(PixelAt(170, 160), spiral);
    const vexa::Function function = view->ConstructFunction();
    EXPECT_EQ(function.kind, vexa::FunctionKind::Sample);
    EXPECT_EQ(function.sampleFile, "pluck.wav");
    EXPECT_EQ(function.frequency, "220");
    view->LoadSample("/none/such.wav");
    EXPECT_THAT(alerts.texts, ElementsAre("Could not load sample"));
    EXPECT_TRUE(view->SampleMode());
    Enter("Fxy", "0.5");
    EXPECT_FALSE(view->SampleMode());
    EXPECT_FALSE(Field("SFreq").IsEnabled());
    EXPECT_EQ(PixelAt(170, 160), 127U);
}

TEST_F(VexaViewTest, MenusSetVoicesAndChannel) {
    Open(false);
    vexa::VexaMidiConsumer& consumer = view->Graph().Consumer();
    const auto play = [&](int notes) {
        consumer.AllNotesOff(false, 0);
        for (int i = 0; i < notes; i++)
            consumer.NoteOn(3, static_cast<uchar>(40 + i), 100, 0);
        return consumer.CountVox();
    };
    EXPECT_EQ(play(5), 1);
    for (const int32 limit : {20, 7, 10, 1}) {
        view->VoicesMenu().FindItem(vexa::VoicesCode(limit))->Choose();
        test::Settle();
        EXPECT_EQ(play(30), limit);
    }
    EXPECT_EQ(view->VoicesMenu().Title(), "max. 1 voice");
    BMenu& channels = view->ChannelMenu();
    for (const int32 channel : {1, 9, 10, 16}) {
        channels.FindItem(("channel " + std::to_string(channel)).c_str())->Choose();
        test::Settle();
        EXPECT_EQ(view->Graph().Consumer().Channel(), channel - 1);
    }
    channels.FindItem("all channels")->Choose();
    test::Settle();
    EXPECT_EQ(view->Graph().Consumer().Channel(), -1);
}

TEST_F(VexaViewTest, TheSourceMenuListsEachSourceOnceAndConnectsTheChosenOne) {
    Open(false);
    BMessenger(view).SendMessage(BMessage(B_MIDI_EVENT));
    BMessenger(view).SendMessage(BMessage(B_MIDI_EVENT));
    test::Settle();
    // The machine may have sources of its own.
    for (const std::string_view label :
         {"none", vexa::ComputerKeyboard::kName, "Let program changes choose sounds"}) {
        int count = 0;
        for (std::size_t i = 0; i < view->DeviceMenu().CountItems(); i++)
            count += view->DeviceMenu().ItemAt(i)->Label() == label;
        EXPECT_EQ(count, 1) << label;
    }
    EXPECT_EQ(view->DeviceMenu().Title(), "none");
    const auto sounds = [&] {
        BMessage press(B_KEY_DOWN);
        press.AddInt32("key", 24);
        BMessenger(window).SendMessage(press);
        test::Settle();
        // Unregistering ends the MIDI thread after it has handled all sent events.
        view->Graph().Consumer().Unregister();
        return view->Graph().Consumer().CountVox();
    };
    view->DeviceMenu().FindItem(vexa::ComputerKeyboard::kName)->Choose();
    test::Settle();
    EXPECT_EQ(view->DeviceMenu().Title(), vexa::ComputerKeyboard::kName);
    EXPECT_EQ(sounds(), 1);
}

TEST_F(VexaViewTest, WithoutASourceKeysAreSilent) {
    Open(false);
    view->DeviceMenu().FindItem(vexa::ComputerKeyboard::kName)->Choose();
    test::Settle();
    view->DeviceMenu().FindItem("none")->Choose();
    test::Settle();
    EXPECT_EQ(view->DeviceMenu().Title(), "none");
    BMessage press(B_KEY_DOWN);
    press.AddInt32("key", 24);
    BMessenger(window).SendMessage(press);
    test::Settle();
    view->Graph().Consumer().Unregister();
    EXPECT_EQ(view->Graph().Consumer().CountVox(), 0);
}

TEST_F(VexaViewTest, ProgramChangesChooseSoundsWhereTheyAreLetTo) {
    Open(false);
    kits::EventGate& midi = *view->Graph().Consumer().Gate();
    const auto after = [&](uchar program, uchar bank) {
        midi.ControlChange(3, 32, bank, 0);
        midi.ProgramChange(3, 0, 0);
        midi.ProgramChange(3, program, 0);
        test::Settle();
        return view->Caption();
    };
    const std::string before = view->Caption();
    // The first four shipped sounds are acid-line, alarm, bass and bell.
    EXPECT_EQ(after(3, 0), before) << "not without being asked to";
    view->DeviceMenu().FindItem(vexa::kFollowProgramsCode)->Choose();
    test::Settle();
    EXPECT_THAT(after(3, 0), StartsWith("bell"));
    EXPECT_THAT(test::Contents(In("sounds/bell.xml")),
                HasSubstr("<expression>" +
                          std::string(view->Field(vexa::FunctionField::Expression).Text()) + "<"));
    EXPECT_THAT(after(3, 1), testing::AllOf(StartsWith("bell"), HasSubstr("no program 131")));
    view->ChannelMenu().FindItem(vexa::ChannelCode(3))->Choose();
    test::Settle();
    EXPECT_THAT(after(2, 0), StartsWith("bell")) << "of another channel";
    view->ChannelMenu().FindItem(vexa::ChannelCode(4))->Choose();
    test::Settle();
    EXPECT_THAT(after(2, 0),
                testing::AllOf(StartsWith("bass"), testing::Not(HasSubstr("program"))));
    // No document, an invalid function, and a missing sample: none of them is loaded.
    const std::string radius = Text("Ax0");
    for (const char* text :
         {"no sound",
          "<vexasound><vexafunction><expression>x^2</expression></vexafunction></vexasound>",
          "<vexasound><vexasamplefunction><samplefile>gone.wav</samplefile></vexasamplefunction>"
          "</vexasound>"}) {
        std::ofstream(In("sounds/bell.xml")) << text;
        EXPECT_THAT(after(3, 0),
                    testing::AllOf(StartsWith("bass"), HasSubstr("bell is not loaded")));
        EXPECT_EQ(Text("Ax0"), radius);
    }
    view->DeviceMenu().FindItem(vexa::kFollowProgramsCode)->Choose();
    test::Settle();
    EXPECT_THAT(after(1, 0), StartsWith("bass"));
    EXPECT_TRUE(alerts.texts.empty());
}

TEST_F(VexaViewTest, AnotherChannelReleasesWhatIsHeldAndTheKeysPlayOnIt) {
    BMidiLocalProducer other("other");
    other.Register();
    Open(false);
    view->VoicesMenu().FindItem(vexa::VoicesCode(20))->Choose();
    view->ChooseSource("other");
    test::Settle();
    other.SprayNoteOn(2, 60, 100);
    while (view->Graph().Consumer().CountVox() == 0)
        std::this_thread::yield();
    view->ChannelMenu().FindItem(vexa::ChannelCode(6))->Choose();
    test::Settle();
    for (int i = 0; i < 1000 && !view->Engine().voices[0].released; i++)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_TRUE(view->Engine().voices[0].released);
    view->ChooseSource(vexa::ComputerKeyboard::kName);
    BMessage press(B_KEY_DOWN);
    press.AddInt32("key", 24);
    Send(*window, press);
    // Ends the MIDI thread after it has handled all sent events.
    view->Graph().Consumer().Unregister();
    EXPECT_EQ(view->Graph().Consumer().CountVox(), 2) << "released, not silenced";
    EXPECT_TRUE(view->Engine().voices[0].released);
    EXPECT_FALSE(view->Engine().voices[1].released);
    PressButton("Silence");
    EXPECT_EQ(view->Graph().Consumer().CountVox(), 0);
}

TEST_F(VexaViewTest, TheAuthorIsTheDocumentsUntilSomethingIsEdited) {
    settings->Set(vexa::kAuthorSetting, std::string("Cleo"));
    Open(false);
    vexa::Sound sound = view->ConstructSound();
    sound.author = "Anna";
    sound.function.author = "Bert";
    const auto path = folder.Path() / "sounds/authors.xml";
    ASSERT_TRUE(vexa::WriteSound(path, sound));
    view->LoadSound(path);
    test::Settle();
    EXPECT_EQ(view->SoundAuthor(), "Anna");
    // Confirming an unchanged value is not an edit.
    Enter("Cx1", Text("Cx1").c_str());
    Enter("macro a", Text("macro a").c_str());
    Enter("Fxy", Text("Fxy").c_str());
    EXPECT_EQ(view->SoundAuthor(), "Anna");
    EXPECT_EQ(view->FunctionAuthor(), "Bert");
    Enter("Cx1", "0.125");
    EXPECT_EQ(view->SoundAuthor(), "Cleo");
    EXPECT_EQ(view->FunctionAuthor(), "Bert");
    Enter("Sc", "10");
    EXPECT_EQ(view->FunctionAuthor(), "Bert");
    Enter("Fxy", "x");
    EXPECT_EQ(view->FunctionAuthor(), "Cleo");
    // Text that is only typed counts as an edit when it is saved.
    view->LoadSound(path);
    Field("Cx1").Type("0.25");
    view->SaveAgain();
    test::Settle();
    EXPECT_EQ(vexa::ReadSound(path)->author, "Cleo");
}

TEST_F(VexaViewTest, TabGoesOnFromTheNumbersOfAPointAsFromItsEnvelope) {
    Open(false);
    vexa::EnvView& envelope = view->EnvelopeEditor(1);
    envelope.MakeFocus();
    test::TypeKey(*window, Qt::Key_Tab);
    const QWidget* const next = QApplication::focusWidget();
    ASSERT_TRUE(next);
    envelope.MakeFocus();
    test::TypeKey(*window, Qt::Key_Return);
    ASSERT_TRUE(envelope.Entry());
    test::Type(*window, "0 0.5");
    test::TypeKey(*window, Qt::Key_Tab);
    test::Settle();
    EXPECT_FALSE(envelope.Entry());
    EXPECT_EQ(QApplication::focusWidget(), next);
    EXPECT_EQ(view->ConstructSound().envelopes[1][0].val, 0.5F);
    // A text that is no number stays, to be mended later.
    envelope.MakeFocus();
    test::TypeKey(*window, Qt::Key_Return);
    test::Type(*window, "half");
    test::TypeKey(*window, Qt::Key_Tab);
    test::Settle();
    EXPECT_EQ(QApplication::focusWidget(), next);
    ASSERT_TRUE(envelope.Entry());
    EXPECT_STREQ(envelope.Entry()->Text(), "half");
    EXPECT_THAT(envelope.Entry()->ToolTip(), HasSubstr("not a time and a value"));
    envelope.Entry()->MakeFocus();
    envelope.Entry()->Type("0 0.75");
    test::TypeKey(*window, Qt::Key_Tab);
    test::Settle();
    EXPECT_FALSE(envelope.Entry());
    EXPECT_EQ(view->ConstructSound().envelopes[1][0].val, 0.75F);
}

TEST_F(VexaViewTest, WhatIsNotSavedIsMarkedAndAskedAbout) {
    Open();
    EXPECT_FALSE(view->Changed());
    EXPECT_THAT(view->Caption(), testing::StartsWith("default  ("));
    const auto mayGiveUp = [&](int32 answer) {
        alerts.answer = answer;
        return view->MayGiveUp([] {});
    };
    EXPECT_TRUE(mayGiveUp(0));
    EXPECT_TRUE(alerts.texts.empty());
    Enter("Cx1", "0.25");
    EXPECT_THAT(view->Caption(), testing::StartsWith("default *"));
    EXPECT_FALSE(mayGiveUp(0));
    EXPECT_TRUE(mayGiveUp(1));
    bool saved = false;
    alerts.answer = 2;
    EXPECT_FALSE(view->MayGiveUp([&] { saved = true; }));
    EXPECT_THAT(OpenTitles(), ElementsAre("Save Sound"));
    view->SaveSound("mine.xml");
    EXPECT_TRUE(saved);
    EXPECT_FALSE(view->Changed());
    // A sound with a file of the user's is saved there at once.
    saved = false;
    Field("Cx1").Type("0.125");
    alerts.answer = 2;
    EXPECT_FALSE(view->MayGiveUp([&] { saved = true; }));
    EXPECT_TRUE(saved);
    EXPECT_FALSE(view->Changed());
    EXPECT_THAT(test::Contents(In("sounds/mine.xml")), HasSubstr("0.125"));
    Enter("Cx1", "0.25");
    view->SaveAgain();
    Enter("Cx1", "0.5");
    Enter("Cx1", "0.25");
    EXPECT_TRUE(mayGiveUp(0)) << "what is as it was";
    const std::vector<vexa::EnvPoint> points = view->ConstructSound().envelopes[1];
    view->EnvelopeEditor(1).SetPoints({{0, false, 0.25F}});
    EXPECT_TRUE(view->Changed());
    view->EnvelopeEditor(1).SetPoints(points);
    EXPECT_FALSE(view->Changed());
    Field("Cx1").Type("7");
    EXPECT_TRUE(view->Changed());
    Field("Cx1").Type("0.25");
    EXPECT_FALSE(view->Changed());
    // It limits the voices, but not so much that its add-on would be refused.
    std::string costly = "x";
    for (int i = 0; i < 10; i++)
        costly += "+jn(50,x+" + std::to_string(i) + ")";
    Enter("Fxy", costly.c_str());
    EXPECT_THAT(view->Caption(), testing::ContainsRegex("\\(about [0-9]+ voices?\\)"));
    view->LoadSound(In("sounds/mine.xml"));
    test::Settle();
    EXPECT_THAT(view->Caption(), testing::Not(HasSubstr("about")));
    EXPECT_EQ(alerts.texts.size(), 4U);
    // Another sound replaces it only after consent; a function only changes it.
    view->Open(In("functions/ripples.xml"));
    view->Open(In("sounds/bell.xml"));
    EXPECT_NE(Text("Fy"), "3.5");
    alerts.answer = 1;
    view->Open(In("sounds/bell.xml"));
    EXPECT_EQ(Text("Fy"), "3.5");
    EXPECT_EQ(alerts.texts.size(), 6U);
    test::Settle();
    EXPECT_FALSE(view->Changed());
}

TEST_F(VexaViewTest, NothingOfASampleOrALongExpressionIsLostOnSaving) {
    Open(false);
    view->LoadSample((folder.Path() / "samples/pluck.wav").c_str());
    Enter("Fxy", "x/");
    EXPECT_EQ(view->ConstructFunction().sampleFile, "pluck.wav");
    EXPECT_EQ(view->ConstructFunction().kind, vexa::FunctionKind::Sample);
    vexa::Sound sound = view->ConstructSound();
    sound.function.sampleFile = "gone.wav";
    ASSERT_TRUE(vexa::WriteSound(In("gone.xml"), sound));
    EXPECT_THAT(view->SavingRemark(), HasSubstr("the sample \"pluck.wav\", which sounds, will"));
    view->LoadSound(In("gone.xml"));
    test::Settle();
    EXPECT_EQ(view->ConstructFunction().sampleFile, "gone.wav");
    EXPECT_THAT(view->SavingRemark(), HasSubstr("\"gone.wav\" is missing"));
    EXPECT_EQ(PixelAt(10, 10), 0U) << "nothing of the sample before";
    Enter("Fxy", "x");
    EXPECT_EQ(view->SavingRemark(), "");
    // A formula that is only typed is saved in place of a sample.
    view->LoadSample(In("samples/pluck.wav").c_str());
    view->SaveSound("mine.xml");
    Field("Fxy").Type("x*y");
    view->SaveAgain();
    test::Settle();
    EXPECT_FALSE(view->Changed());
    const vexa::Sound saved = *vexa::ReadSound(In("sounds/mine.xml"));
    EXPECT_EQ(saved.function.kind, vexa::FunctionKind::Expression);
    EXPECT_EQ(saved.function.expression, "x*y");
    const std::string text(40000, '1');
    Field("Fxy").SetText(text.c_str());
    EXPECT_EQ(Text("Fxy"), text);
}

TEST_F(VexaViewTest, AFieldThatIsNotWhollyANumberIsMarked) {
    Open(false);
    view->LoadSample(In("samples/pluck.wav").c_str());
    for (const auto& [field, text, tip] : {std::tuple{"Ax1", "7,5", "counts as 7"},
                                           {"SFreq", "0", "expected a frequency above 0"},
                                           {"SFreq", "-3", "expected a frequency above 0"},
                                           {"SFreq", "1e300", "expected a frequency above 0"},
                                           {"SFreq", "220.5", ""},
                                           {"SFreq", "220,5", "counts as 220"},
                                           {"Ax1", "nan", "not a number"},
                                           {"Cx4", "128", "between 0 and 127"},
                                           {"Sc", "0.90.7", "counts as 0.9"},
                                           {"Sc", "0", "expected a width above 0"},
                                           {"Sc", "nan", "expected a width above 0"},
                                           {"Ax1", " 7.5 ", ""},
                                           {"Cx4", "5", ""},
                                           {"Sc", "1e1", ""}}) {
        Enter(field, text);
        EXPECT_THAT(Field(field).ToolTip(), HasSubstr(tip)) << text;
        EXPECT_EQ(*Field(field).ToolTip() == 0, *tip == 0) << text;
        EXPECT_EQ(Field(field).Widget().Content()->property("wrong").toBool(), *tip != 0) << text;
    }
}

TEST_F(VexaViewTest, WhoAsksForNoAudioSystemGetsNoAlertAboutIt) {
    const auto ofSound = testing::AnyOf(HasSubstr("mixer"), HasSubstr("node"));
    window = new vexa::VexaWindow({64, 100, 999, 610}, folders, {.settings = settings});
    test::Settle();
    EXPECT_THAT(alerts.texts, testing::Not(testing::Contains(ofSound)));
    delete window;
    window = nullptr;
    EXPECT_THAT(alerts.texts, testing::Not(testing::Contains(ofSound)));
}

TEST_F(VexaViewTest, WhatCannotBeLoadedChangesNothing) {
    Open();
    const vexa::Sound before = view->ConstructSound();
    const auto write = [&](const char* name, const char* text) {
        std::ofstream(folder.Path() / name) << text;
        return folder.Path() / name;
    };
    EXPECT_FALSE(view->LoadSound(folder.Path() / "none.xml"));
    EXPECT_FALSE(view->LoadSound(write("empty.xml", "")));
    EXPECT_FALSE(
        view->LoadSound(write("f.xml", "<vexafunction><expression>x</expression></vexafunction>")));
    EXPECT_THAT(alerts.details, HasSubstr("f.xml:1:1: (expected a root element <vexasound>"));
    EXPECT_FALSE(view->LoadFunction(write("other.xml", "<foo></foo>")));
    test::Settle();
    ASSERT_EQ(alerts.texts.size(), 4U);
    EXPECT_EQ(alerts.texts[0], "Could not load \n" + (folder.Path() / "none.xml").string());
    EXPECT_EQ(alerts.texts[2], "This is not a valid sound.");
    EXPECT_EQ(alerts.texts[3], "This is not a valid function.");
    EXPECT_THAT(alerts.details, testing::AllOf(HasSubstr("other.xml:1:1: (expected a root"),
                                               HasSubstr("<vexasound> for a sound, found <foo>")));
    EXPECT_EQ(view->ConstructSound(), before);
}

} // namespace
