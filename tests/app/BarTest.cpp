// SPDX-License-Identifier: GPL-3.0-or-later
// Catches faults in the logo bar's content, and in the window's remembered settings.
#include "app/MainViewStage.h"
#include "app/bar/BarView.h"
#include "app/bar/LevelMeter.h"
#include "app/bar/RecordButton.h"
#include "documents/SoundDocument.h"
#include "kits/interface/backends/ViewWidget.h"
#include "kits/midi/MidiLocalProducer.h"
#include "views/Theme.h"
#include "views/plane/PlaneOverlay.h"

#include <QAccessible>
#include <QMenu>
#include <QPaintEvent>
#include <QPushButton>
#include <QToolButton>
#include <cmath>
#include <fstream>
#include <functional>
#include <utility>

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using vexa::Brightness;
namespace fs = std::filesystem;

class BarTest : public test::MainViewTest {
  protected:
    vexa::BarView& Bar() { return window->Bar(); }
    /// Sends pulses as the window does ten times a second.
    void Pulse(int times = 1) {
        for (int i = 0; i < times; i++) {
            BMessage pulse(B_PULSE);
            window->MessageReceived(&pulse);
        }
        test::Settle();
    }
    /// Returns the item of the device menu as it is when the user opens the menu.
    BMenuItem& Device(const char* label) {
        auto* button = window->FindView("audio device")->Widget().findChild<QToolButton*>();
        emit button->menu()->aboutToShow();
        BMenuItem* item = Bar().DeviceMenu().FindItem(label);
        return item ? *item : throw std::runtime_error(label);
    }
    void Reopen() {
        delete window;
        Open(false);
        Pulse();
    }
};

/// Without a tip of its own a control would show that of the bar or panel around it.
TEST_F(BarTest, EveryControlSaysWhatItIsFor) {
    Open(false);
    std::size_t count = 0;
    const std::function<void(const BView&)> look = [&](const BView& view) {
        if (view.Flags() & B_NAVIGABLE) {
            count++;
            EXPECT_FALSE(view.Widget().toolTip().isEmpty()) << view.Name();
        }
        for (const BView* child : view.Children())
            look(*child);
    };
    for (std::size_t i = 0; const BView* child = window->ChildAt(i); i++)
        look(*child);
    EXPECT_GT(count, 80U);
}

TEST_F(BarTest, TheMeterShowsTheLevelAndItsLightStaysOnUntilItIsPutOut) {
    Open(false);
    auto& meter =
        dynamic_cast<vexa::LevelMeter&>(*window->FindView("level, decibels of full scale"));
    vexa::OutputTap& tap = view->Graph().Producer().Tap();
    const auto put = [&](float amplitude) {
        const std::vector<float> frames(9600, amplitude);
        tap.Put(frames.data(), frames.size() / 2, 2);
        Pulse();
    };
    const auto says = [&] { return meter.Describe().description; };
    EXPECT_EQ(meter.Describe().number->value, -48);
    const QImage silent = test::Picture(meter);
    put(0.5F);
    EXPECT_NEAR(meter.Describe().number->value, -6.02, 0.5);
    EXPECT_NE(test::Picture(meter), silent);
    EXPECT_EQ(says(), "");
    put(1.5F);
    put(0);
    EXPECT_EQ(says(), "clipped");
    test::Click(meter, {5, 5});
    EXPECT_EQ(says(), "");
    for (const int key : {Qt::Key_Space, Qt::Key_Return}) {
        put(-1.5F);
        EXPECT_EQ(says(), "clipped");
        meter.MakeFocus();
        test::TypeKey(*window, key);
        EXPECT_EQ(says(), "");
    }
    // Without a bar nothing is recorded for it.
    const int32 listeners = tap.Listeners();
    window->SetClassic(true);
    Pulse();
    EXPECT_LT(tap.Listeners(), listeners);
}

TEST_F(BarTest, SaysWhatTheVoicesAre) {
    Open(false);
    view->Graph().Consumer().NoteOn(0, 60, 100, 0);
    Pulse();
    QAccessibleInterface* bar = QAccessible::queryAccessibleInterface(&Bar().Widget());
    ASSERT_TRUE(bar);
    const QAccessibleInterface* said = bar->child(0);
    EXPECT_EQ(said->role(), QAccessible::StaticText);
    EXPECT_THAT(said->text(QAccessible::Name).toStdString(), StartsWith("voices: 1/"));
    EXPECT_FALSE(said->state().focusable);
    // To who sees them, and where a press has an effect.
    for (const auto& [frame, tip] :
         {std::pair(Bar().VoicesFrame(), "voices that sound"), {Bar().CaptionFrame(), "Click"}}) {
        test::Drag(Bar(), {frame.left + 30, frame.top + 5}, 0);
        EXPECT_THAT(Bar().ToolTip(), HasSubstr(tip));
    }
    test::Drag(Bar(), {Bar().CaptionFrame().right + 1, 5}, 0);
    EXPECT_STREQ(Bar().ToolTip(), "");
}

TEST_F(BarTest, TellsWhyThereIsNoRecording) {
    Open();
    // A name as long as those of sounds' files may be, which is cut at a character.
    std::string name = "n";
    while (name.size() < 251)
        name += "ä";
    view->NameSound(name);
    PressButton("Record");
    EXPECT_TRUE(Bar().IsRecording());
    PressButton("Record");
    EXPECT_FALSE(Bar().IsRecording());
    EXPECT_THAT(alerts.texts, ElementsAre("The recording is not complete."));
    EXPECT_THAT(alerts.details, HasSubstr("ä 20"));
    EXPECT_THAT(alerts.details, HasSubstr("no audio device played"));
    EXPECT_TRUE(fs::is_empty(In("recordings")));
    Pulse();
    EXPECT_EQ(Bar().Caption(), view->Caption());

    alerts.texts.clear();
    fs::remove_all(In("recordings"));
    std::ofstream(In("recordings")) << "taken";
    PressButton("Record");
    EXPECT_FALSE(Bar().IsRecording());
    EXPECT_THAT(alerts.texts, ElementsAre("The recording cannot begin."));
    EXPECT_THAT(alerts.details, HasSubstr("recordings"));

    // That of the command line is not cut off. The button waits until it has ended.
    fs::remove(In("recordings"));
    const auto named = *kits::Recording::Begin(In("named.wav"));
    view->Record(named.get());
    Pulse();
    PressButton("Record");
    EXPECT_FALSE(Bar().IsRecording());
    EXPECT_THAT(window->FindView("Record")->ToolTip(), HasSubstr("--record"));
    named->TakeRate(48000);
    named->TakeRate(44100);
    Pulse();

    // The window ends the recording when it closes.
    PressButton("Record");
    EXPECT_TRUE(Bar().IsRecording());
    delete std::exchange(window, nullptr);
    EXPECT_TRUE(fs::is_empty(In("recordings")));
}

/// Records the parts of a view that are painted, by itself or by its children.
class Painted : public QObject {
  public:
    explicit Painted(BView& view) : view(view.Widget()) { qApp->installEventFilter(this); }
    QRegion region;

  private:
    bool eventFilter(QObject* object, QEvent* event) override {
        const auto* widget = qobject_cast<QWidget*>(object);
        if (event->type() == QEvent::Paint && widget &&
            (widget == &view || view.isAncestorOf(widget)))
            region += static_cast<QPaintEvent*>(event)->region().translated(
                widget->mapTo(&view, QPoint(0, 0)));
        return false;
    }
    QWidget& view;
};

TEST_F(BarTest, ARecordingIsSeenAndItsTimeIsRepaintedAlone) {
    Open();
    auto& record = dynamic_cast<vexa::RecordButton&>(*window->FindView("Record"));
    auto& button = *record.Widget().findChild<QPushButton*>();
    const QImage resting = test::Picture(record);
    const auto colored = [&] {
        const QImage picture = test::Picture(record);
        const rgb_color running = vexa::Colors().controls.running;
        int count = 0;
        for (int y = 0; y < picture.height(); y++) {
            for (int x = 0; x < picture.width(); x++)
                count +=
                    picture.pixelColor(x, y) == QColor(running.red, running.green, running.blue);
        }
        return double(count) / picture.width() / picture.height();
    };
    EXPECT_EQ(colored(), 0);
    PressButton("Record");
    EXPECT_GT(colored(), 0.6);
    EXPECT_STREQ(record.Label(), "● 0:00");
    EXPECT_EQ(button.accessibleName().toStdString(), "Recording; press to end it");
    // Without a device no time passes in a recording.
    const std::pair<double, const char*> times[] = {
        {0.9, "0:00"}, {7.2, "0:07"}, {59.99, "0:59"}, {60, "1:00"}, {3661, "61:01"}};
    for (const auto& [seconds, text] : times) {
        record.Show(seconds);
        EXPECT_EQ(record.Label(), std::string("● ") + text);
        EXPECT_EQ(button.accessibleDescription().toStdString(), std::string(text) + " recorded");
        EXPECT_LE(button.fontMetrics().horizontalAdvance(button.text()), button.width() - 4);
    }
    test::Settle();
    Painted painted(Bar());
    record.Show(8);
    test::Settle();
    const QRect own = kits::ToQt(record.Frame());
    EXPECT_FALSE(painted.region.isEmpty());
    EXPECT_TRUE(own.contains(painted.region.boundingRect()))
        << painted.region.boundingRect().x() << ' ' << painted.region.boundingRect().width();
    alerts.texts.clear();
    PressButton("Record");
    EXPECT_EQ(test::Picture(record), resting);
    EXPECT_EQ(button.accessibleName().toStdString(), "Record what is heard");
}

TEST_F(BarTest, DeviceAndMidiSourceAreChosenInOneMenu) {
    Open(false);
    EXPECT_TRUE(Device("no sound").IsMarked());
    EXPECT_EQ(Bar().DeviceMenu().Title(), "no sound");
    Device("PulseAudio").Choose();
    test::Settle();
    EXPECT_EQ(view->Graph().System(), kits::AudioSystem::Pulse);
    Bar().Refresh();
    EXPECT_THAT(Bar().DeviceMenu().Title(), StartsWith("PulseAudio"));
    EXPECT_TRUE(Device("PulseAudio").IsMarked());
    EXPECT_FALSE(Device("no sound").IsMarked());
    Device("no sound").Choose();
    test::Settle();
    Bar().Refresh();
    EXPECT_EQ(Bar().DeviceMenu().Title(), "no sound");

    // A source may come later.
    view->ChooseSource("other");
    EXPECT_EQ(view->DeviceMenu().Title(), "waiting for other");
    Device("waiting for other").Choose();
    test::Settle();
    EXPECT_TRUE(Device("waiting for other").IsMarked());
    {
        BMidiLocalProducer other("other");
        other.Register();
        view->ChooseSource("other");
        EXPECT_EQ(view->DeviceMenu().Title(), "other");
    }
    view->ChooseSource("");
    EXPECT_EQ(view->DeviceMenu().Title(), "none");
    EXPECT_FALSE(Device("Computer keyboard").IsMarked());
    Device("Computer keyboard").Choose();
    test::Settle();
    EXPECT_EQ(view->ChosenSource(), "Computer keyboard");
    EXPECT_TRUE(Device("Computer keyboard").IsMarked());
}

TEST_F(BarTest, TheFileThatIsTheTerrainIsNamed) {
    Open();
    const auto named = [this] { return std::string(Field("Fxy").Placeholder()); };
    EXPECT_EQ(named(), "");
    EXPECT_TRUE(view->LoadPicture(In("pictures/island.png").c_str()));
    EXPECT_EQ(named(), "picture island.png");
    window->SetClassic(true);
    EXPECT_EQ(named(), "");
    window->SetClassic(false);
    EXPECT_TRUE(view->LoadSample(In("samples/pluck.wav").c_str()));
    EXPECT_EQ(named(), "sample pluck.wav");
    view->Undo();
    EXPECT_EQ(named(), "picture island.png");
    view->Undo();
    EXPECT_EQ(named(), "");
    vexa::Sound sound = view->ConstructSound();
    sound.function.kind = vexa::FunctionKind::Sample;
    sound.function.sampleFile = "gone.wav";
    ASSERT_TRUE(vexa::WriteSound(In("sounds/gone.xml"), sound));
    view->LoadSound(In("sounds/gone.xml"));
    EXPECT_EQ(named(), "sample gone.wav (missing)");
    folder.Write("samples/gone.wav", "no sound");
    view->LoadSound(In("sounds/gone.xml"));
    EXPECT_EQ(named(), "sample gone.wav (unreadable)");
    EXPECT_THAT(view->SavingRemark(), testing::HasSubstr("is unreadable, so that nothing sounds"));
}

TEST_F(BarTest, TheWindowComesUpAsItWasLeft) {
    Open(false);
    Pulse();
    EXPECT_EQ(settings->Get(vexa::kWindowWidthSetting), 0) << "as it came up";
    const BRect first = window->Frame();
    window->MoveTo(150, 130);
    window->ResizeTo(1290, 580);
    test::Settle();
    Pulse();
    const BRect left = window->Frame();
    EXPECT_NE(left, first);
    const auto press = [this](kits::Key key) {
        EXPECT_TRUE(window->TakeShortcut({key, 0, "", 0, false}));
    };
    press(kits::Key::F6);
    press(kits::Key::F7);
    Reopen();
    EXPECT_EQ(window->Frame(), left);
    EXPECT_EQ(view->Overlay().Curve(), Brightness::SquareRoot);
    EXPECT_TRUE(view->Overlay().IsRelief());
    // A classic window has a fixed size of its own, and leaves the stored one unchanged.
    window->SetClassic(true);
    Pulse();
    EXPECT_EQ(settings->Get(vexa::kWindowHeightSetting), 580);
    // The screen no longer exists, or is smaller.
    settings->Set(vexa::kWindowLeftSetting, 30000);
    settings->Set(vexa::kWindowTopSetting, -500);
    settings->Set(vexa::kWindowWidthSetting, 30000);
    Reopen();
    // Except for the frame that the platform adds once the window is shown.
    const BRect room = window->Room().InsetByCopy(-4, -4);
    EXPECT_TRUE(room.Contains(window->Frame().LeftTop()));
    EXPECT_LE(window->Frame().right, room.right);
    EXPECT_LE(window->Frame().bottom, room.bottom);
}

TEST_F(BarTest, ASizeHoldsFromTheNextStart) {
    Open(false);
    BMessage choice(vexa::kSizeCode);
    choice.AddInt32("percent", 150);
    for (int times = 0; times < 2; times++)
        window->MessageReceived(&choice);
    EXPECT_EQ(settings->Get(vexa::kSizeSetting), 150);
    EXPECT_THAT(alerts.texts, ElementsAre("The size is 150 % when Vexa is started again."));
}

/// The user may have edited the settings file. At such a frequency no key would sound.
TEST_F(BarTest, AFrequencyThatCannotBePlayedIsNotRemembered) {
    settings->Set(vexa::kA4Setting, 442.0);
    Open(false);
    window->Begin({}, nullptr);
    EXPECT_FLOAT_EQ(view->KeyTuning().Present()[vexa::kA4], 442);
    for (const double wrong : {1e300, -440.0, double(INFINITY), 20001.0}) {
        settings->Set(vexa::kA4Setting, wrong);
        Reopen();
        window->Begin({}, nullptr);
        EXPECT_FLOAT_EQ(view->KeyTuning().Present()[vexa::kA4], 440) << wrong;
    }
}

TEST_F(BarTest, OfARememberedTuningAllThatCanBeReadHolds) {
    const std::string gone = In("gone.scl").string();
    settings->Set(vexa::kScaleSetting, gone);
    settings->Set(vexa::kKeymapSetting,
                  folder.Write("c.kbm", "0\n0\n100\n60\n60\n260\n0\n").string());
    settings->Set(vexa::kA4Setting, 432.5);
    Open(false);
    window->Begin({}, nullptr);
    EXPECT_FLOAT_EQ(view->KeyTuning().Present()[vexa::kA4], 432.5);
    EXPECT_EQ(view->KeyTuning().Present()[101], 0) << "by the map";
    EXPECT_THAT(alerts.texts,
                ElementsAre(HasSubstr("twelve equal steps by c.kbm, with A4 at 432.5 Hz")));
    EXPECT_THAT(alerts.details, HasSubstr(gone));
    view->KeyTuning().Choose({{}, {}, 430});
    EXPECT_EQ(settings->Get(vexa::kScaleSetting), gone) << "for when it is back";
}

TEST_F(BarTest, AWordThatNoSettingHasIsReported) {
    const auto file = folder.Write("settings", "colors = pink\nbrightness = dim\na4 = 0.5\n");
    settings = std::make_shared<vexa::Settings>(file);
    testing::internal::CaptureStderr();
    Open(false);
    window->Begin({}, nullptr);
    Reopen();
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::AllOf(HasSubstr(":1: colors cannot be \"pink\"; it is light, dark or"),
                               HasSubstr(":2: brightness cannot be \"dim\"; it is one of linear, "),
                               HasSubstr(":3: a4 cannot be \"0.5\"; it is a frequency from")));
    EXPECT_TRUE(view->Overlay().Curve() == Brightness::Linear);
}

} // namespace
