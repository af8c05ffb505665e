// SPDX-License-Identifier: GPL-3.0-or-later
// Undoes and redoes all kinds of edits in the window. Catches edits that cannot be undone or change
// something else.
#include "app/MainViewStage.h"
#include "app/MessageCodes.h"
#include "app/strip/Knob.h"
#include "app/strip/Strip.h"
#include "documents/SoundDocument.h"
#include "instrument/InitialSound.h"
#include "instrument/ShownFunction.h"
#include "support/Environment.h"
#include "views/EnvView.h"

#include <random>
#include <thread>
#include <utility>

#include <gmock/gmock.h>

namespace {

using vexa::EnvView;
using vexa::FieldId;
using vexa::FunctionField;
using vexa::ParameterId;

/// There is no compiler, so that none is waited for. A base of the test, so that the window and its
/// threads, which read the environment, are gone before it is restored.
struct WithoutCompiler {
    const test::EnvironmentVariable path{"PATH", "/none"};
};

class UndoTest : WithoutCompiler, public test::MainViewTest {
  protected:
    std::size_t Below(std::size_t count) { return random() % count; }
    float Between(float from, float to) {
        return from + (to - from) * float(random() % 1000) / 1000;
    }

    /// Types into a field and presses Enter, as a user does; a disabled field ignores it.
    void Confirm(BTextControl& field, const std::string& text) {
        window->Strip().Refresh();
        if (!field.IsEnabled())
            return;
        field.Type(text.c_str());
        field.MakeFocus();
        test::TypeKey(*window, Qt::Key_Return);
    }
    void Press(bool redo) {
        test::TypeKey(*window, Qt::Key_Z,
                      redo ? Qt::ControlModifier | Qt::ShiftModifier : Qt::ControlModifier);
    }
    std::string Document() const { return vexa::SoundText(view->ConstructSound()); }
    /// Returns the value of the function with all its inputs at one half.
    float Plays(float x, float y) const {
        std::array<float, vexa::kMostInputs> inputs;
        inputs.fill(0.5F);
        return vexa::ShownFunction(view->ShownFunction(), inputs).At(x, y, nullptr);
    }
    void DragPoint(EnvView& editor, std::size_t index, BPoint to) {
        test::Press(editor, editor.EnvPoint2View(std::as_const(editor).Points()[index]));
        test::Drag(editor, {(to.x + 100) / 2, (to.y + 40) / 2});
        view->Pulse();
        test::Drag(editor, to);
        test::Release(editor, to);
    }
    /// Makes one of all kinds of gestures.
    void Gesture() {
        static const char* const kNumbers[] = {"0", "-1", "0.25", "2", "abc", "nan", "1,5", "0.01"};
        static const char* const kControllers[] = {"0", "1", "74", "127", "200", "x"};
        static const char* const kFormulas[] = {"x", "sin(x)*y", "x+", "a*x+b*y", "x*vel", "0"};
        static const char* const kSounds[] = {"bell", "bass", "choir", "default"};
        static const char* const kFunctions[] = {"ripples", "vowels", "sand"};
        static const char* const kSamples[] = {"pluck.wav", "voice.wav", "gone.wav"};
        const auto one = [this](const auto& texts) { return texts[Below(std::size(texts))]; };
        EnvView& editor = view->EnvelopeEditor(Below(4));
        const std::size_t point = Below(std::as_const(editor).Points().size());
        const BPoint somewhere = {Between(12, editor.Bounds().Width() - 12), Between(5, 80)};
        switch (Below(12)) {
        case 0:
        case 1: {
            const vexa::Parameter& row = vexa::Parameters()[Below(vexa::kParameters)];
            Confirm(view->Field(row.id), row.controller ? one(kControllers) : one(kNumbers));
            break;
        }
        case 2:
            DragPoint(editor, point, somewhere);
            break;
        case 3:
            test::Click(editor, somewhere);
            break;
        case 4:
            test::Click(editor, editor.EnvPoint2View(std::as_const(editor).Points()[point]),
                        B_SECONDARY_MOUSE_BUTTON);
            break;
        case 5:
            Confirm(view->Field(FunctionField::Expression), one(kFormulas));
            break;
        case 6:
            Confirm(Field(std::string("macro ") + "abcd"[Below(4)]), one(kNumbers));
            break;
        case 7:
            Confirm(Field(std::string("controller ") + "abcd"[Below(4)]), one(kControllers));
            break;
        case 8:
            Confirm(view->Field(vexa::FunctionFields()[1 + Below(6)].id), one(kNumbers));
            break;
        case 9:
            view->LoadSound(In("sounds") / (std::string(one(kSounds)) + ".xml"));
            break;
        case 10:
            if (Below(2) == 0)
                view->LoadSample((In("samples") / one(kSamples)).c_str());
            else
                view->LoadFunction(In("functions") / (std::string(one(kFunctions)) + ".xml"));
            break;
        default:
            Below(4) == 0 ? view->InitialSound() : view->MutateSound(Below(100));
        }
        test::Settle();
    }

    std::mt19937 random{11}; // NOLINT(cert-msc32-c,cert-msc51-cpp)
};

TEST_F(UndoTest, ComesBackToTheFirstSoundAndForthToTheLast) {
    Open();
    alerts.answer = 1; // discards the unsaved changes
    std::vector<std::string> documents{Document()};
    std::vector<std::string> names{view->SoundName()};
    const float first = Plays(1, 0.5F);
    for (int i = 0; i < 500; i++) {
        Gesture();
        view->NoteSteps();
        if (std::string now = Document(); now != documents.back()) {
            ASSERT_TRUE(view->CanUndo());
            ASSERT_NE(view->UndoName(), "");
            documents.push_back(std::move(now));
            names.push_back(view->SoundName());
        }
    }
    EXPECT_GT(documents.size(), 350U);
    view->LoadSound(In("sounds/bell.xml"));
    documents.push_back(Document());
    names.push_back("bell");
    const float last = Plays(1, 0.5F);
    alerts.texts.clear();
    // At least one step for each document, and no step that changes nothing but the file to which
    // the sound belongs.
    std::size_t steps = 0;
    for (std::size_t i = documents.size() - 1; view->CanUndo(); steps++) {
        view->Undo();
        test::Settle();
        if (i > 0 && Document() != documents[i]) {
            ASSERT_EQ(Document(), documents[--i]) << i;
            EXPECT_EQ(view->SoundName(), names[i]) << i;
        }
    }
    EXPECT_EQ(Document(), documents.front());
    EXPECT_EQ(steps, documents.size() - 1);
    EXPECT_EQ(Plays(1, 0.5F), first);
    EXPECT_FALSE(view->Changed());
    EXPECT_EQ(view->SoundName(), "default");
    for (std::size_t i = 1; view->CanRedo(); i++) {
        view->Redo();
        ASSERT_EQ(Document(), documents[i]) << i;
        EXPECT_EQ(view->SoundName(), names[i]) << i;
    }
    test::Settle();
    EXPECT_EQ(Plays(1, 0.5F), last);
    EXPECT_FALSE(view->Changed());
    EXPECT_EQ(alerts.texts.size(), 0U) << alerts.texts[0];
    // The fields show the values that play.
    const vexa::Sound sound = view->ConstructSound();
    vexa::sound_param expected;
    vexa::ApplyParameters(sound, expected);
    for (const vexa::Parameter& row : vexa::Parameters()) {
        if (row.value) {
            EXPECT_EQ(float(view->SoundParam().*row.value), float(expected.*row.value));
        }
    }
}

/// Each edit is one step, however it is made, and has the right name.
TEST_F(UndoTest, AGestureIsOneStepWithAName) {
    Open();
    const auto undoes = [&](const std::string& name) {
        view->Pulse();
        EXPECT_EQ(view->UndoName(), name);
        Press(false);
        EXPECT_EQ(view->UndoName(), "") << name;
        EXPECT_FALSE(view->CanUndo());
        EXPECT_EQ(view->RedoName(), name);
    };
    EnvView& editor = view->EnvelopeEditor(2);
    const std::vector<vexa::EnvPoint> points = std::as_const(editor).Points();
    DragPoint(editor, 1, {90, 20});
    EXPECT_NE(std::as_const(editor).Points(), points);
    undoes("envelope of radius x");
    EXPECT_EQ(std::as_const(editor).Points(), points);
    EXPECT_EQ(editor.Value(0.1F, false, 0), vexa::EnvelopeCurve(points, 0).Value(0.1F, false, 0));
    Press(true);
    EXPECT_NE(std::as_const(editor).Points(), points);
    Press(false);
    auto& knob = dynamic_cast<vexa::Knob&>(*window->FindView("knob a"));
    for (int i = 0; i < 30; i++) {
        knob.Turn(float(i) / 1000);
        test::Settle();
        view->Pulse();
    }
    undoes("macro a");
    window->Strip().Refresh();
    EXPECT_EQ(Text("macro a"), "0.5");
    EXPECT_EQ(view->Engine().macros[0].value, 0.5F);
    for (const char* text : {"2", "2.1", "2.2"})
        Enter("C0x1", text);
    undoes("start of centre x, velocity");
    view->LoadSound(In("sounds/bell.xml"));
    EXPECT_EQ(view->SoundName(), "bell");
    undoes("sound bell");
    EXPECT_EQ(view->SoundName(), "default");
    view->LoadFunction(In("functions/ripples.xml"));
    undoes("function ripples");
    view->LoadSample(In("samples/pluck.wav").c_str());
    EXPECT_TRUE(view->SampleMode());
    undoes("sample pluck");
    EXPECT_FALSE(view->SampleMode());
    EXPECT_FALSE(Field("SFreq").IsEnabled());
    view->MutateSound();
    undoes("mutation");
    Enter("Fxy", "x+");
    undoes("formula");
    EXPECT_EQ(view->SavingRemark(), "");
    Press(true);
    EXPECT_EQ(Text("Fxy"), "x+");
    EXPECT_NE(view->SavingRemark(), "");
    Press(false);
    // Without a pulse in between, as fast as possible.
    DragPoint(editor, 1, {90, 20});
    Confirm(Field("macro a"), "0.25");
    Confirm(Field("macro a"), "0.75");
    DragPoint(view->EnvelopeEditor(3), 1, {90, 20});
    for (int i = 0; i < 4; i++) {
        EXPECT_TRUE(view->CanUndo()) << i;
        Press(false);
    }
    EXPECT_FALSE(view->CanUndo());
    EXPECT_EQ(std::as_const(editor).Points(), points);
    // The end of a drag belongs to it, even if the machine stalls before the next pulse.
    test::Press(editor, editor.EnvPoint2View(points[1]));
    test::Drag(editor, {80, 30});
    view->Pulse();
    test::Drag(editor, {90, 20});
    test::Release(editor, {90, 20});
    std::this_thread::sleep_for(vexa::History::kDelay + std::chrono::milliseconds(1));
    view->Pulse();
    Press(false);
    EXPECT_EQ(std::as_const(editor).Points(), points);
}

TEST_F(UndoTest, AFieldTakesItsTypingBackFirst) {
    Open(false);
    Enter("Cx1", "3");
    Field("Cx2").MakeFocus();
    test::Type(*window, "7");
    Press(false);
    EXPECT_EQ(Text("Cx2"), "0");
    EXPECT_EQ(Text("Cx1"), "3");
    Press(true);
    EXPECT_FALSE(Text("Cx2") == "0") << "typed again";
    Press(false);
    Press(false);
    EXPECT_EQ(Text("Cx1"), "0") << "there is no typing left";
    Press(true);
    Press(true);
    EXPECT_EQ(Text("Cx1"), "3");
    EXPECT_EQ(view->SoundParam().Cx1, 3);
}

/// Undoing back to the saved state removes the unsaved mark, whatever was undone.
/// An invalid text leaves the plane as it was, so it comes back with what the plane showed then.
TEST_F(UndoTest, ThePlaneIsShownAsItWasAlsoWhereItsNumbersAreWrong) {
    Open();
    const auto width = [&] { return view->Plane().Scale() * 300; };
    const auto link = [&] { return view->Plane().LinkFunction().x; };
    const auto confirm = [&](const char* field, const char* text) { Confirm(Field(field), text); };
    confirm("Sc", "8");
    confirm("LFx", "2");
    for (const char* wrong : {"0", "inf"}) {
        confirm("Sc", wrong);
        EXPECT_FLOAT_EQ(width(), 8) << wrong;
    }
    confirm("LFx", "nan");
    confirm("Sc", "20");
    confirm("LFx", "3");
    Press(false);
    EXPECT_EQ(link(), 2);
    EXPECT_EQ(Text("LFx"), "nan");
    Press(false);
    EXPECT_EQ(Text("Sc"), "inf");
    EXPECT_FLOAT_EQ(width(), 8);
    EXPECT_EQ(link(), 2);
    Press(true);
    EXPECT_FLOAT_EQ(width(), 20);
    Press(false);
    ASSERT_TRUE(view->LoadSound(In("sounds/bell.xml")));
    Press(false);
    EXPECT_EQ(Text("Sc"), "inf");
    EXPECT_FLOAT_EQ(width(), 8);
    for (int i = 0; i < 3; i++)
        Press(false);
    EXPECT_EQ(Text("Sc"), "8");
    EXPECT_FLOAT_EQ(width(), 8);
}

TEST_F(UndoTest, KnowsWhatIsSaved) {
    Open();
    Enter("Cx1", "3");
    view->SaveSound("mine.xml");
    EXPECT_FALSE(view->Changed());
    Enter("Cx2", "4");
    EXPECT_TRUE(view->Changed());
    view->Undo();
    EXPECT_FALSE(view->Changed());
    view->Undo();
    EXPECT_TRUE(view->Changed());
    EXPECT_EQ(view->SoundName(), "mine");
    alerts.answer = 0;
    view->InitialSound();
    EXPECT_EQ(alerts.texts.size(), 1U);
    EXPECT_EQ(view->SoundName(), "mine") << "cancelled";
    alerts.answer = 1;
    view->InitialSound();
    EXPECT_EQ(view->SoundName(), vexa::kInitialSoundName);
    EXPECT_FALSE(view->Changed());
    EXPECT_EQ(view->ConstructSound(), vexa::InitialSound());
    view->Undo();
    EXPECT_EQ(view->SoundName(), "mine");
    EXPECT_TRUE(view->Changed());
    view->BeginHistory();
    EXPECT_FALSE(view->CanUndo());
    EXPECT_FALSE(view->CanRedo());
}

TEST_F(UndoTest, EachSlotHasItsOwnSoundAndSteps) {
    Open();
    EXPECT_THAT(view->Caption(), testing::StartsWith("default")) << "there is only one slot";
    Enter("Cx1", "3");
    const std::string a = Document();
    view->SwitchAB();
    EXPECT_EQ(view->PresentSlot(), 'B');
    EXPECT_THAT(view->Caption(), testing::StartsWith("B: default *"));
    EXPECT_EQ(Document(), a) << "a copy at first";
    EXPECT_FALSE(view->CanUndo());
    view->LoadSound(In("sounds/bell.xml"));
    Enter("Fxy", "x");
    const std::string b = Document();
    for (int i = 0; i < 3; i++) {
        view->SwitchAB();
        EXPECT_EQ(view->PresentSlot(), 'A');
        EXPECT_EQ(Document(), a);
        EXPECT_EQ(view->SoundName(), "default");
        EXPECT_EQ(view->UndoName(), "drift of centre x, velocity");
        view->SwitchAB();
        EXPECT_EQ(Document(), b);
        EXPECT_EQ(view->SoundName(), "bell");
        EXPECT_TRUE(view->Changed());
        EXPECT_EQ(view->UndoName(), "formula");
    }
    view->CopyToOther();
    view->SwitchAB();
    EXPECT_EQ(Document(), b);
    EXPECT_EQ(view->SoundName(), "bell");
    EXPECT_EQ(view->UndoName(), "copy of B");
    view->Undo();
    EXPECT_EQ(Document(), a);
    // Closing asks about both slots.
    alerts.texts.clear();
    alerts.answer = 1;
    EXPECT_TRUE(view->MayGiveUpAll([] {}));
    EXPECT_EQ(alerts.texts.size(), 2U);
}

/// Another sound may be chosen before Enter is pressed.
TEST_F(UndoTest, AFormulaThatIsTypedIsNotLostToAnotherSound) {
    Open();
    const auto type = [&](const char* text) { Field("Fxy").Type(text); };
    type("0.5*sin(3*x)");
    view->LoadSound(In("sounds/bell.xml"));
    view->Undo();
    EXPECT_EQ(Text("Fxy"), "0.5*sin(3*x)");
    EXPECT_EQ(view->SoundName(), "default");
    EXPECT_EQ(view->UndoName(), "formula");
    type("0.25*x");
    view->SwitchAB();
    view->SwitchAB();
    EXPECT_EQ(Text("Fxy"), "0.25*x");
    type("0.75*x");
    view->MutateSound(1);
    view->Undo();
    EXPECT_EQ(Text("Fxy"), "0.75*x");
    EXPECT_NEAR(Plays(1, 0), 0.75, 1e-6);
    type("0.125*x");
    alerts.answer = 1; // the typed text is an unsaved change, which is discarded
    view->InitialSound();
    view->Undo();
    EXPECT_EQ(Text("Fxy"), "0.125*x");
    // An invalid text would only cause an alert.
    alerts.texts.clear();
    type("0.75*");
    view->LoadSound(In("sounds/bell.xml"));
    EXPECT_TRUE(alerts.texts.empty());
    view->Undo();
    EXPECT_EQ(Text("Fxy"), "0.125*x");
}

/// Choosing from the list does not ask, as Undo can restore the sound; closing asks, as nothing
/// can.
TEST_F(UndoTest, ClosingAsksAboutWhatWasLeftForAnotherSound) {
    Open();
    const auto mayClose = [&](int32 answer) {
        alerts.texts.clear();
        alerts.answer = answer;
        return view->MayGiveUpAll([] {});
    };
    Enter("Cx1", "3");
    view->LoadSound(In("sounds/bell.xml"));
    Enter("Cx1", "4");
    view->SaveSound("mine.xml");
    Enter("Cx1", "5");
    view->LoadSound(In("sounds/pad.xml"));
    EXPECT_FALSE(mayClose(0));
    EXPECT_EQ(alerts.texts.size(), 1U);
    EXPECT_EQ(alerts.details, "mine\ndefault");
    EXPECT_EQ(view->SoundName(), "pad");
    EXPECT_TRUE(mayClose(1));
    // Each sound is shown as it was left, and saved.
    EXPECT_FALSE(mayClose(2));
    EXPECT_EQ(Text("Cx1"), "5");
    EXPECT_THAT(test::Contents(In("sounds/mine.xml")), testing::HasSubstr("<vel>5<"));
    EXPECT_FALSE(mayClose(2));
    EXPECT_EQ(alerts.details, "default");
    EXPECT_EQ(Text("Cx1"), "3");
    EXPECT_THAT(OpenTitles(), testing::ElementsAre("Save Sound"));
    view->SaveSound("another.xml");
    EXPECT_TRUE(mayClose(0));
    EXPECT_TRUE(alerts.texts.empty());
    view->LoadSound(In("sounds/pad.xml"));
    EXPECT_TRUE(mayClose(0)) << "what was left is saved";
    view->Undo();
    // Discarded changes are not asked about again, unless the user returns to them.
    Enter("Cx1", "6");
    alerts.answer = 1;
    view->Open(In("sounds/bell.xml"));
    EXPECT_TRUE(mayClose(0));
    view->Undo();
    Field("Fxy").Type("0.5*x");
    alerts.answer = 1;
    view->Open(In("sounds/bell.xml"));
    EXPECT_TRUE(mayClose(0)) << "what was typed is discarded too";
    view->Undo();
    EXPECT_FALSE(mayClose(0));
    alerts.answer = 1;
    view->InitialSound();
    EXPECT_TRUE(mayClose(0));
    // Changes in the other slot count too.
    view->Undo();
    EXPECT_FALSE(mayClose(0));
    view->SwitchAB();
    EXPECT_TRUE(mayClose(1));
    EXPECT_EQ(alerts.texts.size(), 1U) << "both have the same";
    view->LoadSound(In("sounds/bell.xml"));
    EXPECT_TRUE(mayClose(1));
    EXPECT_EQ(alerts.texts.size(), 1U) << "the other slot has what this one has left";
    EXPECT_EQ(view->PresentSlot(), 'A');
    view->LoadSound(In("sounds/bell.xml"));
    view->SwitchAB();
    EXPECT_FALSE(mayClose(0));
    EXPECT_EQ(view->PresentSlot(), 'A') << "where it was left";
}

TEST_F(UndoTest, ControllersArePlayedNotEdited) {
    Open();
    Enter("Cx1", "3");
    view->Graph().Consumer().ControlChange(0, 17, 127, 0);
    view->Pulse();
    EXPECT_EQ(view->UndoName(), "drift of centre x, velocity");
    Enter("Cx2", "4");
    view->Graph().Consumer().ControlChange(0, 18, 127, 0);
    view->Undo();
    view->Undo();
    EXPECT_FALSE(view->CanUndo());
    EXPECT_EQ(Text("Cx1"), "0");
    EXPECT_EQ(float(view->Engine().macros[1].value), 1);
    EXPECT_EQ(float(view->Engine().macros[2].value), 1);
    view->Redo();
    EXPECT_EQ(view->ConstructSound().function.macros[2].value, "1");
}

} // namespace
