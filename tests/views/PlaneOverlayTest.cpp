// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/plane/PlaneOverlay.h"

#include "kits/interface/backends/ViewWidget.h"
#include "kits/support/NumberText.h"
#include "midi/Engine.h"
#include "support/Sounds.h"
#include "support/WindowStage.h"
#include "views/Contrast.h"
#include "views/R2RFView.h"
#include "views/plane/OrbitColors.h"

#include <QApplication>
#include <QKeyEvent>
#include <QTest>
#include <QWindow>
#include <cmath>
#include <limits>
#include <numeric>

#include <gtest/gtest.h>

namespace {

using vexa::Brightness;
using vexa::OrbitNumber;

constexpr uint32 kBoth = B_CONTROL_KEY | B_SHIFT_KEY;

TEST(Trace, ALineHasItsWidthAndFadesAwayWithoutATrace) {
    constexpr int kSide = 100;
    const std::vector<uint32> base(kSide * kSide, 0xff102030U);
    std::vector<uint32> shown = base;
    vexa::Trace trace(kSide, kSide);
    trace.Show(base.data(), shown.data());
    const auto light = [&] {
        return std::accumulate(shown.begin(), shown.end(), 0.0,
                               [](double sum, uint32 word) { return sum + (word >> 8 & 0xff); });
    };
    const double dark = light();
    for (const BPoint to : {BPoint{70.3F, 20}, BPoint{20, 70.3F}, BPoint{60, 52.7F}}) {
        trace.Line({20, 20}, to, {0, 0xe0, 0}, 2.5F);
        const BRect extent = trace.Show(base.data(), shown.data());
        EXPECT_TRUE(extent.Contains({20, 20}) && extent.Contains(to));
        // Green over 0x20, along the line and a pixel beyond.
        const double length = std::hypot(double(to.x) - 20, double(to.y) - 20);
        EXPECT_NEAR((light() - dark) / ((0xe0 - 0x20) * 2.5), length, 2);
        trace.Fade(1.0F / 6);
        trace.Show(base.data(), shown.data());
        EXPECT_NEAR((light() - dark) / ((0xe0 - 0x20) * 2.5), length / std::exp(1), 2);
        for (int i = 0; i < 90; i++)
            trace.Fade(1.0F / 60);
        EXPECT_TRUE(trace.IsDark());
        trace.Show(base.data(), shown.data());
        EXPECT_EQ(shown, base);
        // Nothing has changed since.
        const BRect none = trace.Show(base.data(), shown.data());
        EXPECT_LT(none.right, none.left);
    }
    // Outside the view, and at places that are no numbers.
    trace.Line({-50, -50}, {150, 150}, {255, 255, 255}, 2);
    trace.Line({NAN, 3}, {4, 4}, {255, 255, 255}, 2);
    trace.Line({-1e30F, 3}, {INFINITY, 4}, {255, 255, 255}, 2);
    trace.Show(base.data(), shown.data());
    EXPECT_EQ(shown[50 * kSide + 50], 0xffffffffU);
    EXPECT_EQ(shown[3 * kSide + 50], base[0]);
    trace.Clear();
    EXPECT_TRUE(trace.IsDark());
}

TEST(OrbitColors, AreToldFromAllThatAPlaneShowsAndFromEachOther) {
    for (const rgb_color& color : vexa::kOrbitColors) {
        for (const rgb_color behind : {rgb_color{255, 0, 0}, {0, 0, 255}, {0, 0, 0}})
            EXPECT_GE(test::Contrast(color, behind), 3);
        EXPECT_EQ(std::count(vexa::kOrbitColors.begin(), vexa::kOrbitColors.end(), color), 1);
    }
}

TEST(Brightness, CurvesShowWhatIsQuietAndLinearIsThePicture) {
    std::vector<float> values(1000, 0.001F);
    values[0] = -0.25F;
    values[1] = std::numeric_limits<float>::quiet_NaN();
    values[2] = 2;
    const struct {
        Brightness curve;
        uint32 quiet, negative, large;
    } cases[] = {
        {Brightness::Linear, 0, 63U << 16, 510},
        {Brightness::SquareRoot, 8, 127U << 16, 255},
        {Brightness::Logarithmic, 43, 212U << 16, 255},
        {Brightness::Strongest, 255, 255U << 16, 255},
    };
    for (const auto& row : cases) {
        std::vector<uint32> words(values.size());
        vexa::ShowValues(row.curve, values, words.data());
        EXPECT_EQ(words[999], row.quiet);
        EXPECT_EQ(words[0], row.negative);
        EXPECT_EQ(words[1], 0U);
        EXPECT_EQ(words[2], row.large);
    }
}

float Hill(float x, float y) {
    return std::exp(-(x * x + y * y));
}

TEST(Relief, AHillStandsUpAndHidesWhatLiesBehind) {
    vexa::PlaneField field;
    constexpr std::size_t kCorners = vexa::Relief::kCells + 1;
    field.Begin({Hill}, {0, 0, 0.5F, 0.5F, 8.0F / kCorners, kCorners, kCorners});
    while (!field.IsComplete())
        field.Continue(std::chrono::milliseconds(100));
    vexa::Relief relief;
    EXPECT_FALSE(relief.PlaceOf(0, 0));
    relief.Take(field, Brightness::Linear);
    std::vector<uint32> words(301 * 301);
    relief.Draw({0, 0.3F}, 301, 301, words.data());
    const auto top = relief.PlaceOf(0, 0), front = relief.PlaceOf(0, -2.5),
               behind = relief.PlaceOf(0, 1.2), right = relief.PlaceOf(3, 0);
    ASSERT_TRUE(top && front && behind && right);
    EXPECT_NEAR(top->point.x, 150, 1);
    EXPECT_GT(right->point.x, 220);
    EXPECT_LT(top->point.y, right->point.y - 30);
    EXPECT_LT(right->point.y, front->point.y);
    EXPECT_TRUE(top->visible && front->visible && right->visible);
    EXPECT_FALSE(behind->visible);
    EXPECT_FALSE(relief.PlaceOf(5, 0));
    // The hill is blue, and the sky keeps its colour.
    const auto at = [&](BPoint p) {
        return words[static_cast<std::size_t>(std::lround(p.y) * 301 + std::lround(p.x))];
    };
    EXPECT_GT(at(top->point) & 0xff, 2 * (at(top->point) >> 16 & 0xff));
    EXPECT_EQ(words[5], words[300 * 301]);
    // From above it equals the flat picture, turned.
    relief.Draw({float(M_PI) / 2, float(M_PI) / 2}, 301, 301, words.data());
    EXPECT_NEAR(relief.PlaceOf(3, 0)->point.x, 150, 1);
    EXPECT_LT(relief.PlaceOf(3, 0)->point.y, 100);
    EXPECT_TRUE(relief.PlaceOf(0, 1.2)->visible);
}

/// Applies the gestures to an engine and a view.
class Host : public vexa::PlaneHost {
  public:
    explicit Host(vexa::Engine& engine) : engine(engine) {}

    const vexa::SoundRecords& Records() const override { return engine; }
    void SetCoefficient(vexa::ParameterId id, const std::string& text) override {
        engine.parameters.*vexa::ParameterOf(id).value = float(kits::NumberOf(text));
        texts.push_back(text);
    }
    void SetView(const std::string& width, const std::string& x, const std::string& y) override {
        view->SetScale(float(kits::NumberOf(width)) / 300);
        view->SetLinkFunctionX(float(kits::NumberOf(x)));
        view->SetLinkFunctionY(float(kits::NumberOf(y)));
        texts = {width, x, y};
    }
    void Strike(std::optional<BPoint> start) override { strikes.push_back(start); }
    void LetGo() override { ends++; }
    void Watch() override {}

    vexa::Engine& engine;
    vexa::R2RFView* view = nullptr;
    std::vector<std::string> texts;
    std::vector<std::optional<BPoint>> strikes;
    int ends = 0;
};

float Slope(float x, float y) {
    return (x + 2 * y) / 30;
}

class OverlayTest : public testing::Test {
  protected:
    OverlayTest() {
        host.view = view;
        view->SetFunction({Slope});
        view->ShowMarks(false);
        view->SetSoundParam(&engine.controllers, &engine.parameters, &engine.voices);
        test::MakeSine(engine);
        engine.parameters.Ax0 = 2;
        engine.parameters.Ay0 = 1;
        std::vector<vexa::EnvPoint> full{{0, false, 1}};
        test::SetEnvelope(engine.envelopes[2], full);
        test::SetEnvelope(engine.envelopes[3], full);
        test::Settle();
    }
    /// Returns the view's visible pixel, without alpha.
    uint32 Seen(int x, int y) { return test::Picture(*view).pixel(x, y) & 0xffffff; }
    bool ShowsThePictureItself() {
        const QImage seen = test::Picture(*view);
        const BBitmap& picture = view->Picture();
        for (int y = 0; y < 301; y++) {
            for (int x = 0; x < 301; x++) {
                const auto* words = static_cast<const uint32*>(picture.Bits());
                if ((words[y * 301 + x] & 0xffffff) != (seen.pixel(x, y) & 0xffffff))
                    return false;
            }
        }
        return true;
    }
    vexa::PlaneHandle& Handle(std::size_t i) { return *overlay->Handles()[i]; }
    float Value(vexa::ParameterId id) const {
        return engine.parameters.*vexa::ParameterOf(id).value;
    }

    vexa::Engine engine;
    Host host{engine};
    vexa::R2RFView* view = new vexa::R2RFView({10, 10, 310, 310}, "R2RFView", {0, 0}, {0.5F, 0.5F},
                                              0.05F, B_FOLLOW_NONE);
    vexa::PlaneOverlay* overlay = new vexa::PlaneOverlay(*view, host);
    test::Stage stage{view};
};

TEST_F(OverlayTest, OrbitsAreDrawnOnThePictureWhichStaysAsItIs) {
    EXPECT_TRUE(ShowsThePictureItself());
    EXPECT_FALSE(overlay->Animate(0.016F));
    engine.consumer.ReduceToMaxVox(2);
    engine.consumer.NoteOn(0, 69, 127, 0);
    EXPECT_TRUE(overlay->Animate(0.016F));
    // An ellipse of 40 by 20 pixels, in the first voice's colour; the plane's picture is unchanged.
    const auto isOrbit = [this](int x, int y) { return (Seen(x, y) >> 8 & 0xff) > 150; };
    EXPECT_TRUE(isOrbit(190, 150) && isOrbit(110, 150) && isOrbit(150, 130) && isOrbit(150, 170));
    EXPECT_FALSE(isOrbit(150, 150));
    const uint32 yellow = vexa::kOrbitColors[0].red << 16 | vexa::kOrbitColors[0].green << 8;
    EXPECT_EQ(Seen(190, 150) & 0xffff00, yellow);
    view->Pulse();
    const auto* words = static_cast<const uint32*>(view->Picture().Bits());
    EXPECT_EQ(words[150 * 301 + 190] & 0xff00, 0U);
    // Two equal orbits share the line.
    engine.consumer.NoteOn(0, 57, 127, 0);
    overlay->Animate(1);
    int colors[2] = {};
    for (int x = 105; x < 196; x++) {
        for (int y = 125; y < 176; y++) {
            for (int voice = 0; voice < 2; voice++) {
                const rgb_color c = vexa::kOrbitColors[std::size_t(voice)];
                const uint32 seen = Seen(x, y);
                colors[voice] += std::abs(int(seen >> 16 & 0xff) - c.red) < 24 &&
                                 std::abs(int(seen >> 8 & 0xff) - c.green) < 24;
            }
        }
        if (colors[0] > 20 && colors[1] > 20)
            break;
    }
    EXPECT_GT(colors[0], 20);
    EXPECT_GT(colors[1], 20);
    // The old marks fade, and then nothing is left to do.
    engine.consumer.AllNotesOff(false, 0);
    EXPECT_TRUE(overlay->Animate(0.05F));
    EXPECT_TRUE(isOrbit(190, 150) || Seen(190, 150) != 0);
    EXPECT_FALSE(overlay->Animate(3));
    EXPECT_TRUE(ShowsThePictureItself());
    // Orbits at places that are no numbers are invisible.
    engine.parameters.Ax0 = INFINITY;
    engine.consumer.NoteOn(0, 69, 127, 0);
    engine.consumer.NoteOn(0, 57, 127, 0);
    EXPECT_TRUE(overlay->Animate(0.016F));
    EXPECT_TRUE(ShowsThePictureItself());
}

TEST_F(OverlayTest, WhatBothEarsReadIsMarkedOnTheOrbitOfAStereoSound) {
    engine.consumer.NoteOn(0, 69, 127, 0);
    const auto isLit = [this](int x, int y) { return (Seen(x, y) >> 8 & 0xff) > 150; };
    overlay->Animate(0.016F);
    EXPECT_FALSE(isLit(171, 165) || isLit(170, 129));
    engine.playing.given = true;
    engine.playing.spread = 120;
    overlay->Animate(0.016F);
    // 60 degrees before and after the right end: a dot below for the left ear, a ring above.
    EXPECT_TRUE(isLit(170, 167) && isLit(171, 165));
    EXPECT_TRUE(isLit(170, 129) && !isLit(171, 131));
}

TEST_F(OverlayTest, ShowsThePlaneInOtherWays) {
    const uint32 plain = Seen(170, 150);
    const auto press = [this](kits::Key key) {
        EXPECT_TRUE(overlay->TakeShortcut({key, 0, "", 0, false}));
        for (int i = 0; i < 16; i++)
            overlay->Pulse();
    };
    press(kits::Key::F6);
    EXPECT_EQ(overlay->Curve(), Brightness::SquareRoot);
    EXPECT_GT(Seen(170, 150), 2 * plain);
    press(kits::Key::F7);
    EXPECT_TRUE(overlay->IsRelief());
    EXPECT_TRUE(Handle(0).IsHidden());
    const QImage before = test::Picture(*view);
    overlay->Press({{150, 150}, B_PRIMARY_MOUSE_BUTTON, 0, 1});
    overlay->Move({200, 150});
    overlay->Release({200, 150});
    EXPECT_NE(test::Picture(*view), before);
    engine.consumer.NoteOn(0, 69, 127, 0);
    const QImage bare = test::Picture(*view);
    overlay->Animate(0.016F);
    EXPECT_NE(test::Picture(*view), bare);
    engine.consumer.AllNotesOff(false, 0);
    overlay->Animate(3);
    press(kits::Key::F7);
    for (int i = 0; i < 3; i++)
        press(kits::Key::F6);
    EXPECT_FALSE(overlay->TakeShortcut({kits::Key::F8, 0, "", 0, false}));
    EXPECT_TRUE(ShowsThePictureItself());
}

TEST_F(OverlayTest, WheelMiddleButtonAndDoubleClickChangeTheView) {
    for (const BPoint where : {BPoint{220, 100}, BPoint{3, 290}}) {
        const BPoint before = view->ToPlane(where);
        const float scale = view->Scale();
        EXPECT_TRUE(overlay->WheelMoved(where, {0, 4}));
        EXPECT_NEAR(view->Scale() / scale, 0.5, 0.001);
        const BPoint after = view->ToView(before.x, before.y);
        EXPECT_NEAR(after.x, where.x, 0.2);
        EXPECT_NEAR(after.y, where.y, 0.2);
    }
    overlay->WheelMoved({0, 0}, {0, -1e6F});
    EXPECT_EQ(host.texts[0], "1000000");
    overlay->WheelMoved({0, 0}, {0, 1e6F});
    EXPECT_EQ(host.texts[0], "0.001");
    host.SetView("inf", "0", "0");
    overlay->WheelMoved({220, 100}, {0, 1});
    EXPECT_EQ(host.texts, (std::vector<std::string>{"1000000", "0", "0"}));
    host.SetView("15", "0", "0");
    const BPoint grip = view->ToPlane({100, 100});
    test::Press(*overlay, {100, 100}, B_TERTIARY_MOUSE_BUTTON);
    test::Drag(*overlay, {120, 90}, B_TERTIARY_MOUSE_BUTTON);
    test::Drag(*overlay, {150, 80}, B_TERTIARY_MOUSE_BUTTON);
    test::Release(*overlay, {150, 80}, B_TERTIARY_MOUSE_BUTTON);
    test::Drag(*overlay, {10, 10}, 0);
    EXPECT_NEAR(view->ToView(grip.x, grip.y).x, 150, 0.2);
    EXPECT_NEAR(view->ToView(grip.x, grip.y).y, 80, 0.2);
    EXPECT_EQ(host.texts[0], "15");
    // The first button does that too while Space is held.
    const auto space = [&](QEvent::Type type) {
        QKeyEvent event(type, Qt::Key_Space, {}, 65, 0, 0, " ");
        QApplication::sendEvent(overlay->Widget().window()->windowHandle(), &event);
    };
    space(QEvent::KeyPress);
    test::Press(*overlay, {150, 80});
    test::Drag(*overlay, {110, 120});
    test::Release(*overlay, {110, 120});
    space(QEvent::KeyRelease);
    EXPECT_NEAR(view->ToView(grip.x, grip.y).x, 110, 0.2);
    EXPECT_NEAR(view->ToView(grip.x, grip.y).y, 120, 0.2);

    // The whole area of the orbit: it starts at 3 and drifts to the left for 20/3 seconds.
    engine.parameters.C0x0 = 3;
    engine.parameters.Cx1 = -0.5;
    overlay->Press({{60, 60}, B_PRIMARY_MOUSE_BUTTON, 0, 2});
    const double drift = 0.5 * 102 / 127 * 20 / 3;
    EXPECT_NEAR(view->Scale() * 300, 1.3 * (4 + drift), 0.1);
    EXPECT_NEAR(view->ToView(float(3 - drift / 2), 0).x, 150, 1);
    EXPECT_NEAR(view->ToView(float(3 - drift / 2), 0).y, 150, 1);
    engine.parameters.C0x0 = INFINITY;
    overlay->Fit();
    EXPECT_EQ(host.texts[0], "15");
    // The handle is outside the view, but at a place that a view can show.
    EXPECT_EQ(Handle(0).Frame().left, 1e6F);
    // The second button belongs to the picture.
    test::Press(*overlay, {20, 20}, B_SECONDARY_MOUSE_BUTTON);
}

TEST_F(OverlayTest, HandlesMoveTheOrbitsNumbersAndSoundMeanwhile) {
    engine.parameters.Ax1 = 1;
    overlay->Pulse();
    const float vel = 102 / 127.0F;
    EXPECT_NEAR(Handle(1).Center().x, 150 + (2 + vel) / 0.05, 1);
    EXPECT_NEAR(Handle(2).Center().y, 130, 1);
    const auto drag = [](vexa::PlaneHandle& handle, float right, float down) {
        constexpr float kMiddle = vexa::PlaneHandle::kReach;
        test::Press(handle, {kMiddle, kMiddle});
        // The handle follows the pointer.
        test::Drag(handle, {kMiddle + right, kMiddle + down});
        test::Release(handle, {kMiddle, kMiddle});
    };
    drag(Handle(1), 20, 7);
    EXPECT_NEAR(Value(vexa::ParameterId::Ax0), 3, 0.011);
    EXPECT_NEAR(Handle(1).Center().x, 150 + (3 + vel) / 0.05, 1.1);
    EXPECT_EQ(host.strikes.size(), 1U);
    EXPECT_EQ(host.ends, 1);
    EXPECT_FALSE(host.strikes[0]);
    drag(Handle(2), 5, -40);
    EXPECT_NEAR(Value(vexa::ParameterId::Ay0), 3, 0.011);
    drag(Handle(0), 30, 10);
    EXPECT_NEAR(Value(vexa::ParameterId::C0x0), 1.5, 0.011);
    EXPECT_NEAR(Value(vexa::ParameterId::C0y0), -0.5, 0.011);
    drag(Handle(3), 0, 20);
    EXPECT_EQ(host.strikes.size(), 4U);

    // Moves with keys; the preview ends by itself.
    for (const auto& [modifiers, step] :
         {std::pair(0U, 0.08), {uint32(B_SHIFT_KEY), 0.008}, {uint32(B_CONTROL_KEY), 0.8}}) {
        const double before = overlay->Number(OrbitNumber::RadiusX);
        EXPECT_TRUE(Handle(1).KeyDown({kits::Key::Right, 0, "", modifiers, false}));
        EXPECT_NEAR(overlay->Number(OrbitNumber::RadiusX) - before, step, step / 8);
        EXPECT_TRUE(Handle(1).KeyDown({kits::Key::Down, 0, "", modifiers, false}));
        EXPECT_NEAR(overlay->Number(OrbitNumber::RadiusX), before, step / 8);
    }
    EXPECT_EQ(host.strikes.size(), 5U);
    overlay->Animate(0.3F);
    EXPECT_EQ(host.ends, 4);
    overlay->Animate(0.3F);
    EXPECT_EQ(host.ends, 5);
    // A sounding note needs no preview, and the handles belong to it.
    engine.consumer.NoteOn(0, 69, 127, 0);
    EXPECT_NEAR(overlay->Number(OrbitNumber::RadiusX), Value(vexa::ParameterId::Ax0) + 1, 1e-6);
    drag(Handle(1), 20, 0);
    EXPECT_EQ(host.strikes.size(), 5U);
    // Descriptions for assistive technology.
    ASSERT_EQ(overlay->CountParts(), 6U);
    EXPECT_EQ(overlay->DescribePart(4).name, "drift of centre x");
    overlay->SetNumber(2, 2.5);
    EXPECT_NEAR(overlay->DescribePart(2).number->value, 2.5, 0.002);
    EXPECT_NEAR(Value(vexa::ParameterId::Ax0), 1.5, 0.002);
    EXPECT_TRUE(overlay->DescribePart(2).frame.Contains(Handle(1).Center()));
}

TEST_F(OverlayTest, APreviewEndsWhateverComesBetween) {
    vexa::PlaneHandle& handle = Handle(1);
    test::Press(handle, {10, 10});
    test::PressChord(handle, {10, 10});
    test::Release(handle, {10, 10}, B_SECONDARY_MOUSE_BUTTON, B_PRIMARY_MOUSE_BUTTON);
    test::Drag(handle, {30, 10});
    EXPECT_NEAR(Value(vexa::ParameterId::Ax0), 3, 0.011);
    EXPECT_EQ(host.ends, 0);
    test::Release(handle, {10, 10});
    EXPECT_EQ(host.ends, 1);
    // One that a key has begun, on a plane that is hidden before its end.
    handle.KeyDown({kits::Key::Right, 0, "", 0, false});
    EXPECT_EQ(host.strikes.size(), 2U);
    overlay->Hide();
    EXPECT_TRUE(QTest::qWaitFor([this] { return host.ends == 2; }));
}

TEST_F(OverlayTest, APlaceIsHeardWhileItIsHeld) {
    overlay->Press({{190, 110}, B_PRIMARY_MOUSE_BUTTON, kBoth, 1});
    ASSERT_EQ(host.strikes.size(), 1U);
    EXPECT_NEAR(host.strikes[0]->x, 2, 1e-5);
    EXPECT_NEAR(host.strikes[0]->y, 2, 1e-5);
    // At another place the preview restarts, but not with each pixel.
    overlay->Move({180, 110});
    overlay->Animate(0.05F);
    overlay->Move({170, 110});
    EXPECT_EQ(host.strikes.size(), 1U);
    overlay->Animate(0.11F);
    ASSERT_EQ(host.strikes.size(), 2U);
    EXPECT_NEAR(host.strikes[1]->x, 1, 1e-5);
    EXPECT_EQ(host.ends, 0);
    overlay->Release({170, 110});
    EXPECT_EQ(host.ends, 1);
    EXPECT_TRUE(host.texts.empty());
}

} // namespace
