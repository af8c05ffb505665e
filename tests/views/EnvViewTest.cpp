// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/EnvView.h"

#include "kits/interface/Control.h"
#include "support/WindowStage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;

/// An editor as in the main window: 46.7 pixels per second, the release part from 320.33 on,
/// values -1 to 1 from 83 to 3.
class EnvViewTest : public testing::Test {
  protected:
    EnvViewTest() { view->SetPoints({{0, false, 0}, {2, false, 0.5F}, {1, true, -0.5F}}); }

    std::vector<float> Times() const {
        std::vector<float> times;
        for (const vexa::EnvPoint& point : view->Points())
            times.push_back(point.t);
        return times;
    }
    BPoint PlaceOf(std::size_t index) const { return view->EnvPoint2View(view->Points()[index]); }

    vexa::EnvView* view = new vexa::EnvView({440, 10, 925, 102}, "EnvView", -1, 1, 10,
                                            B_FOLLOW_LEFT_RIGHT, {180, 180, 180}, {128, 0, 0});
    test::Stage stage{view, 936, 300};
};

TEST_F(EnvViewTest, PlacesPointsAndFindsThemAgain) {
    const BPoint held = view->EnvPoint2View({2, false, 1});
    EXPECT_NEAR(held.x, 9 + 93.4, 1e-3);
    EXPECT_EQ(held.y, 3);
    const BPoint released = view->EnvPoint2View({1, true, -1});
    EXPECT_NEAR(released.x, 320.333 + 46.7, 1e-3);
    EXPECT_NEAR(released.y, 83, 1e-4);
    for (const vexa::EnvPoint& point :
         {vexa::EnvPoint{0, false, -0.25F}, {6, false, 1}, {3, true, 0}}) {
        const vexa::EnvPoint back = view->View2EnvPoint(view->EnvPoint2View(point));
        EXPECT_NEAR(back.t, point.t, 1e-5);
        EXPECT_NEAR(back.val, point.val, 1e-6);
        EXPECT_EQ(back.fku, point.fku);
    }
    // Beyond the curve area a point is kept inside its part and range, but for a time below 0.
    EXPECT_NEAR(view->View2EnvPoint({485, 0}).t, 10 / 3.0, 1e-5);
    EXPECT_EQ(view->View2EnvPoint({485, 0}).val, 1);
    EXPECT_EQ(view->View2EnvPoint({100, 92}).val, -1);
    EXPECT_LT(view->View2EnvPoint({0, 50}).t, 0);
}

TEST_F(EnvViewTest, APressBesideAPointAddsOneThatIsHeardAfterTheRelease) {
    test::Press(*view, {60, 23});
    EXPECT_EQ(view->Points().size(), 4U);
    EXPECT_NEAR(view->Points()[1].t, 51 / 46.7, 1e-4);
    EXPECT_NEAR(view->Points()[1].val, 0.5, 1e-5);
    EXPECT_NEAR(view->Value(51 / 46.7F, false, 0), 0.25 * 51 / 46.7, 1e-3);
    // It is not selected, so it does not follow the pointer.
    test::Drag(*view, {70, 60});
    EXPECT_NEAR(view->Points()[1].t, 51 / 46.7, 1e-4);
    test::Release(*view, {70, 60});
    EXPECT_NEAR(view->Value(51 / 46.7F, false, 0), 0.5, 1e-3);
    // In an empty list a press left of the curve adds nothing.
    view->SetPoints({});
    test::Click(*view, {9, 40});
    EXPECT_TRUE(view->Points().empty());
    test::Click(*view, {10, 40});
    EXPECT_EQ(view->Points().size(), 1U);
}

TEST_F(EnvViewTest, APointIsDraggedBetweenItsNeighbours) {
    const BPoint start = PlaceOf(1);
    test::Press(*view, {start.x + 2, start.y - 2});
    test::Drag(*view, {150, 43});
    EXPECT_NEAR(view->Points()[1].t, 141 / 46.7, 1e-4);
    EXPECT_NEAR(view->Points()[1].val, 0, 1e-6);
    EXPECT_NEAR(view->Value(2, false, 0), 0.5, 1e-4);
    test::Drag(*view, {3, 0});
    EXPECT_EQ(view->Points()[1].t, 0);
    EXPECT_EQ(view->Points()[1].val, 1);
    // Over the release part the point stays at the end of its own part.
    test::Drag(*view, {400, 43});
    EXPECT_EQ(view->Points()[1].t, view->Split());
    EXPECT_FALSE(view->Points()[1].fku);
    test::Release(*view, {400, 43});
    EXPECT_NEAR(view->Value(view->Split(), false, 0), 0, 1e-5);
    test::Drag(*view, {100, 43});
    EXPECT_EQ(view->Points()[1].t, view->Split());
}

TEST_F(EnvViewTest, FirstPointsOfBothPartsStayAtTheirBegin) {
    test::Press(*view, PlaceOf(0));
    test::Drag(*view, {200, 3});
    EXPECT_EQ(view->Points()[0], (vexa::EnvPoint{0, false, 1}));
    test::Release(*view, {200, 3});
    test::Press(*view, PlaceOf(2));
    test::Drag(*view, {200, 83});
    EXPECT_EQ(view->Points()[2], (vexa::EnvPoint{0, true, -1}));
    test::Drag(*view, {480, 83});
    EXPECT_NEAR(view->Points()[2].t, 10 / 3.0, 1e-5);
    test::Release(*view, {480, 83});
}

TEST_F(EnvViewTest, LeavingTheViewEndsTheDragAndIsHeard) {
    test::Press(*view, PlaceOf(1));
    test::Drag(*view, {102, 3});
    test::Drag(*view, {102, -5});
    EXPECT_NEAR(view->Value(2, false, 0), 1, 1e-2);
    test::Drag(*view, {102, 80});
    EXPECT_EQ(view->Points()[1].val, 1);
}

TEST_F(EnvViewTest, OtherButtonsDeleteAllButTheFirstPoint) {
    test::Click(*view, PlaceOf(0), B_SECONDARY_MOUSE_BUTTON);
    test::Click(*view, {200, 50}, B_SECONDARY_MOUSE_BUTTON);
    EXPECT_THAT(Times(), ElementsAre(0, 2, 1));
    test::Click(*view, PlaceOf(1), B_TERTIARY_MOUSE_BUTTON);
    EXPECT_THAT(Times(), ElementsAre(0, 1));
    EXPECT_NEAR(view->Value(2, false, 0), 0, 1e-6);
    test::Click(*view, PlaceOf(1), B_SECONDARY_MOUSE_BUTTON);
    EXPECT_THAT(Times(), ElementsAre(0));
    // On the first point it still drags the value.
    test::Press(*view, PlaceOf(0), B_SECONDARY_MOUSE_BUTTON);
    test::Drag(*view, {9, 3}, B_SECONDARY_MOUSE_BUTTON);
    EXPECT_EQ(view->Points()[0].val, 1);
}

TEST_F(EnvViewTest, OfPointsOnTopOfEachOtherTheLaterIsTaken) {
    view->SetPoints({{0, false, 0}, {2, false, 0.5F}, {2, false, 0.5F}});
    test::Press(*view, PlaceOf(1));
    test::Drag(*view, {200, 43});
    EXPECT_EQ(view->Points()[1].t, 2);
    EXPECT_GT(view->Points()[2].t, 3);
}

TEST_F(EnvViewTest, DrawsTheCurveAndTheKey) {
    const QImage picture = test::Picture(*view);
    const auto isLine = [&](int x, int y) { return picture.pixelColor(x, y).green() < 90; };
    // The square of the second point, the held value, and the curve's level end.
    EXPECT_TRUE(isLine(101, 22) && isLine(103, 24));
    EXPECT_TRUE(isLine(200, 23) && isLine(319, 23));
    EXPECT_TRUE(isLine(400, 63) && isLine(475, 63));
    EXPECT_FALSE(isLine(480, 63));
    // The marker is visible between 9 and 320.
    EXPECT_TRUE(isLine(3, 89) && isLine(9, 86) && isLine(200, 86) && isLine(320, 86));
    EXPECT_TRUE(isLine(400, 89) && isLine(482, 89));
    EXPECT_FALSE(isLine(400, 86) || isLine(200, 89) || isLine(483, 89));
}

TEST_F(EnvViewTest, AWiderViewShowsTheSamePointsFurtherApart) {
    view->ResizeTo(952, 92);
    EXPECT_NEAR(PlaceOf(1).x, 9 + 2 * 93.4, 1e-3);
    EXPECT_THAT(Times(), ElementsAre(0, 2, 1));
}

TEST_F(EnvViewTest, KeysMoveAddAndDeletePoints) {
    view->MakeFocus();
    BWindow& window = stage.Window();
    test::TypeKey(window, Qt::Key_Right, Qt::AltModifier);
    EXPECT_EQ(view->ChosenPoint(), 1U);
    test::TypeKey(window, Qt::Key_Right);
    test::TypeKey(window, Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_NEAR(view->Points()[1].t, 2.055, 1e-5);
    test::TypeKey(window, Qt::Key_Down, Qt::ControlModifier);
    EXPECT_NEAR(view->Points()[1].val, 0.1, 1e-5);
    // The change is audible at once.
    EXPECT_NEAR(view->Value(2.055F, false, 0), 0.1, 1e-3);
    test::TypeKey(window, Qt::Key_Insert);
    EXPECT_EQ(view->ChosenPoint(), 2U);
    EXPECT_THAT(Times(), ElementsAre(0, testing::FloatNear(2.055F, 1e-4F),
                                     testing::FloatNear((2.055F + view->Split()) / 2, 1e-4F), 1));
    test::TypeKey(window, Qt::Key_Delete);
    EXPECT_EQ(view->Points().size(), 3U);
    // The first point stays, whatever keys are pressed.
    for (int i = 0; i < 5; i++)
        test::TypeKey(window, Qt::Key_Left, Qt::AltModifier);
    test::TypeKey(window, Qt::Key_Delete);
    test::TypeKey(window, Qt::Key_Left);
    EXPECT_EQ(view->Points().size(), 3U);
    EXPECT_EQ(view->Points()[0].t, 0);
}

TEST_F(EnvViewTest, APointTakesNumbersAfterADoubleClick) {
    const BPoint at = PlaceOf(1);
    test::Click(*view, at);
    test::DoubleClick(*view, at);
    ASSERT_TRUE(view->Entry());
    test::Type(stage.Window(), "0.75, -0.25");
    test::TypeKey(stage.Window(), Qt::Key_Return);
    EXPECT_FALSE(view->Entry());
    EXPECT_EQ(view->Points()[1], (vexa::EnvPoint{0.75F, false, -0.25F}));
    EXPECT_EQ(view->Label(1), "0.75 s, -0.25");
    EXPECT_EQ(view->Label(2), "+1 s, -0.5");
    // The envelope has the keyboard again.
    test::TypeKey(stage.Window(), Qt::Key_Down);
    EXPECT_NEAR(view->Points()[1].val, -0.29, 1e-5);
    // A value beyond its neighbours or the bounds is limited to them.
    for (const auto& [text, expected] : {std::pair{"99 7", vexa::EnvPoint{view->Split(), false, 1}},
                                         std::pair{"-3 -7", vexa::EnvPoint{0, false, -1}}}) {
        test::DoubleClick(*view, PlaceOf(1));
        test::Type(stage.Window(), text);
        test::TypeKey(stage.Window(), Qt::Key_Return);
        EXPECT_EQ(view->Points()[1], expected) << text;
    }
    // A text that is not a pair of numbers stays, and is marked.
    for (const char* text : {"abc", "0.5", "nan inf"}) {
        test::DoubleClick(*view, PlaceOf(1));
        test::Type(stage.Window(), text);
        test::TypeKey(stage.Window(), Qt::Key_Return);
        ASSERT_TRUE(view->Entry());
        EXPECT_TRUE(view->Entry()->IsFocus()) << text;
        EXPECT_STREQ(view->Entry()->Text(), text);
        EXPECT_STRNE(view->Entry()->ToolTip(), "");
        EXPECT_EQ(view->Points()[1], (vexa::EnvPoint{0, false, -1}));
        test::TypeKey(stage.Window(), Qt::Key_Escape);
        EXPECT_FALSE(view->Entry());
    }
    // Long numbers are shown rounded, as beside the point, and stay as they are if nobody changes
    // them.
    view->MovePoint(1, 0.123456F, -0.654321F);
    view->MakeFocus();
    test::TypeKey(stage.Window(), Qt::Key_Return);
    EXPECT_STREQ(view->Entry()->Text(), "0.123 -0.654");
    test::TypeKey(stage.Window(), Qt::Key_Return);
    EXPECT_EQ(view->Points()[1], (vexa::EnvPoint{0.123456F, false, -0.654321F}));
    test::DoubleClick(*view, PlaceOf(2));
    test::TypeKey(stage.Window(), Qt::Key_Escape);
    EXPECT_FALSE(view->Entry());
}

} // namespace
