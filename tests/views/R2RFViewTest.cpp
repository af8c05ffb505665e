// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/R2RFView.h"

#include "support/Sounds.h"
#include "support/WindowStage.h"

#include <atomic>
#include <chrono>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace {

constexpr BRect kFrame = {10, 10, 310, 310};

vexa::R2RFView* NewView() {
    return new vexa::R2RFView(kFrame, "R2RFView", {0, 0}, {0.5F, 0.5F}, 0.05F, B_FOLLOW_NONE);
}

uint32 Word(const BBitmap& picture, int column, int row) {
    const auto* bits = static_cast<const uint8*>(picture.Bits());
    return *reinterpret_cast<const uint32*>(bits + row * picture.BytesPerRow() + column * 4);
}

int GreenPixels(const BBitmap& picture) {
    int count = 0;
    for (int row = 0; row < 301; row++) {
        for (int column = 0; column < 301; column++)
            count += (Word(picture, column, row) & 0xff00) == 200U << 8;
    }
    return count;
}

template<int Numerator, int Denominator>
float Constant(float, float) {
    return float(Numerator) / float(Denominator);
}
float NotANumber(float, float) {
    return std::numeric_limits<float>::quiet_NaN();
}
float Infinite(float, float) {
    return std::numeric_limits<float>::infinity();
}

TEST(R2RFView, ShowsAValueAsItsWord) {
    vexa::R2RFView view(kFrame, "R2RFView", {0, 0}, {0.5F, 0.5F}, 0.05F, B_FOLLOW_NONE);
    EXPECT_EQ(Word(view.Picture(), 150, 150), 0U);
    const struct {
        vexa::PlaneFunction::Point function;
        uint32 word;
    } cases[] = {
        {Constant<1, 1>, 255},
        {Constant<-1, 1>, 0x00ff0000},
        {Constant<1, 2>, 127},
        {Constant<-3, 1000>, 0},
        {Constant<-4, 1000>, 1U << 16},
        {Constant<2, 1>, 510},
        {Constant<-2, 1>, 510U << 16},
        {NotANumber, 0},
        {Infinite, 0},
        // The values end at a word boundary.
        {Constant<1000000000, 1>, 2147483520},
    };
    for (const auto& row : cases) {
        view.SetFunction({row.function});
        EXPECT_EQ(Word(view.Picture(), 0, 0), row.word);
        EXPECT_EQ(Word(view.Picture(), 300, 300), row.word);
    }
}

float XInHundredths(float x, float) {
    return x * 100 / 255;
}
float YInHundredths(float, float y) {
    return y * 100 / 255;
}

/// Expects the picture of XInHundredths or YInHundredths.
int Signed(uint32 word) {
    return word & 0xff0000 ? -int(word >> 16) : int(word);
}

TEST(R2RFView, APixelShowsItsPointOfThePlane) {
    vexa::R2RFView view(kFrame, "R2RFView", {0, 0}, {0.5F, 0.5F}, 0.05F, B_FOLLOW_NONE);
    view.SetFunction({XInHundredths});
    // 100 x truncated: the middle of 301 columns is at -0.025.
    EXPECT_EQ(Signed(Word(view.Picture(), 150, 150)), -2);
    EXPECT_EQ(Signed(Word(view.Picture(), 170, 7)), 97);
    view.SetFunction({YInHundredths});
    EXPECT_EQ(Signed(Word(view.Picture(), 150, 150)), 2);
    EXPECT_EQ(Signed(Word(view.Picture(), 7, 130)), 102);
    view.SetLinkFunctionY(1);
    EXPECT_EQ(Signed(Word(view.Picture(), 7, 150)), 102);
    view.SetLinkScreenY(1);
    view.SetScale(0.01F);
    EXPECT_EQ(Signed(Word(view.Picture(), 7, 0)), 100);
    EXPECT_EQ(Signed(Word(view.Picture(), 7, 50)), 50);
    view.SetFunction({XInHundredths});
    view.SetLinkFunctionX(-1);
    view.SetLinkScreenX(0);
    EXPECT_EQ(Signed(Word(view.Picture(), 0, 0)), -100);
}

/// A view on a stage that shows the notes of an instrument.
class OrbitTest : public testing::Test {
  protected:
    OrbitTest() {
        test::MakeSine(instrument);
        view->SetSoundParam(&instrument.controllers, &instrument.parameters, &instrument.voices);
        // The middle of the orbit's first second, where the circle has its full radius.
        instrument.parameters.Ax0 = 2;
        instrument.parameters.Ay0 = 1;
        std::vector<vexa::EnvPoint> full{{0, false, 1}};
        test::SetEnvelope(instrument.envelopes[2], full);
        test::SetEnvelope(instrument.envelopes[3], full);
    }

    vexa::Engine instrument;
    vexa::R2RFView* view = NewView();
    test::Stage stage{view};
};

TEST_F(OrbitTest, APulseDrawsTheComingRevolutionAndTheNextErasesIt) {
    const BBitmap before = view->Picture();
    view->Pulse();
    EXPECT_EQ(GreenPixels(view->Picture()), 0);
    instrument.consumer.NoteOn(0, 69, 127, 0);
    view->Pulse();
    // 51 marks on an ellipse of 40 by 20 pixels round the middle, few of them on one pixel.
    EXPECT_GE(GreenPixels(view->Picture()), 48);
    EXPECT_LE(GreenPixels(view->Picture()), 51);
    EXPECT_EQ(Word(view->Picture(), 190, 150), 200U << 8);
    const BRect dirty = view->DirtyRect();
    EXPECT_NEAR(dirty.left, 110, 0.1);
    EXPECT_NEAR(dirty.right, 190, 0.1);
    EXPECT_NEAR(dirty.top, 130, 0.1);
    EXPECT_NEAR(dirty.bottom, 170, 0.1);
    instrument.consumer.AllNotesOff(false, 0);
    view->Pulse();
    EXPECT_EQ(GreenPixels(view->Picture()), 0);
    EXPECT_EQ(Word(view->Picture(), 190, 150), Word(before, 190, 150));
    EXPECT_LT(view->DirtyRect().right, view->DirtyRect().left);
}

/// For a note with pressure and bend of its own.
TEST_F(OrbitTest, ShowsTheOrbitThatIsHeard) {
    vexa::sound_param& p = instrument.parameters;
    p.Ax0 = p.Ay0 = p.Cx0 = 0;
    p.Ax3 = 2;
    p.Ax4 = 2;
    p.Cx1 = 440 / float(2 * M_PI); // so many units in a revolution of 440 Hz, as they are drawn
    instrument.playing.given = true;
    instrument.playing.pressure = 2;
    instrument.playing.glide = 10;
    instrument.consumer.ExpectMpe();
    const auto width = [this] {
        test::Render(instrument, 441);
        view->Pulse();
        return view->DirtyRect().right - view->DirtyRect().left;
    };
    instrument.consumer.NoteOn(1, 69, 127, 0);
    EXPECT_NEAR(width(), 20, 1) << "no pressure yet: the drift alone";
    instrument.consumer.PitchBend(1, 0, 80, 0); // 12 semitones
    EXPECT_NEAR(width(), 10, 1) << "twice as often round while it drifts as fast";
    instrument.consumer.ChannelPressure(1, 127, 0);
    EXPECT_NEAR(width(), 80, 8);
    instrument.consumer.ChannelPressure(2, 0, 0);
    EXPECT_NEAR(width(), 80, 8) << "another channel's";
    instrument.consumer.AllNotesOff(true, 0);
    p.Ax3 = 0;
    instrument.consumer.NoteOn(1, 57, 127, 0);
    EXPECT_NEAR(width(), 10, 1) << "it glides from where the other was";
}

TEST_F(OrbitTest, AnOrbitOutsideCountsAsDirtyAndMarksNothing) {
    instrument.parameters.C0x0 = 100;
    instrument.parameters.Fx = std::numeric_limits<float>::infinity();
    instrument.consumer.NoteOn(0, 69, 127, 0);
    view->Pulse();
    EXPECT_EQ(GreenPixels(view->Picture()), 0);
    instrument.parameters.Fx = 1;
    view->Pulse();
    EXPECT_EQ(GreenPixels(view->Picture()), 0);
    EXPECT_NEAR(view->DirtyRect().right, 2190, 1);
}

TEST_F(OrbitTest, AChangedPictureHasNoOldMarks) {
    for (uchar note = 60; note < 80; note++)
        instrument.consumer.NoteOn(0, note, 127, 0);
    view->Pulse();
    EXPECT_GT(GreenPixels(view->Picture()), 0);
    view->SetLinkFunctionX(1);
    EXPECT_EQ(GreenPixels(view->Picture()), 0);
    view->ResizeTo(200, 100);
    EXPECT_EQ(view->Picture().Bounds().IntegerHeight(), 100);
    // Marks of the picture before must not be erased in the new one, which is smaller.
    view->Pulse();
    view->Pulse();
}

/// Counts its paint events.
class PaintedView : public vexa::R2RFView {
  public:
    using R2RFView::R2RFView;
    void Draw(BRect update) override {
        paintings++;
        R2RFView::Draw(update);
    }
    int paintings = 0;
};

TEST(R2RFView, ALevelOrUprightOrbitIsShownAndTakenAwayAgain) {
    vexa::Engine instrument;
    test::MakeSine(instrument);
    test::SetEnvelope(instrument.envelopes[2], {{0, false, 1}});
    test::SetEnvelope(instrument.envelopes[3], {{0, false, 1}});
    auto* const view =
        new PaintedView(kFrame, "R2RFView", BPoint{0, 0}, BPoint{0.5F, 0.5F}, 0.05F, B_FOLLOW_NONE);
    view->SetSoundParam(&instrument.controllers, &instrument.parameters, &instrument.voices);
    const test::Stage stage(view);
    test::Settle();
    const auto paintings = [view] {
        view->paintings = 0;
        view->Pulse();
        test::Settle();
        return view->paintings;
    };
    paintings();
    EXPECT_EQ(paintings(), 0) << "nothing to show";
    for (const bool upright : {false, true}) {
        instrument.parameters.Ax0 = upright ? 0.0F : 1.0F;
        instrument.parameters.Ay0 = upright ? 1.0F : 0.0F;
        instrument.consumer.NoteOn(0, 69, 127, 0);
        EXPECT_EQ(paintings(), 1) << upright;
        EXPECT_GT(GreenPixels(view->Picture()), 5);
        instrument.consumer.AllNotesOff(false, 0);
        EXPECT_EQ(paintings(), 1) << upright;
        EXPECT_EQ(GreenPixels(view->Picture()), 0);
    }
}

TEST(R2RFView, AFunctionThatTakesLongIsDrawnBitByBitAndOnceForAllChanges) {
    static std::atomic<std::size_t> points;
    points = 0;
    constexpr std::size_t kAll = 301 * 301;
    vexa::R2RFView* view = NewView();
    const test::Stage stage(view);
    view->SetFunction({[](float x, float) {
        points++;
        const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(10);
        while (std::chrono::steady_clock::now() < end) {
        }
        return x;
    }});
    view->SetScale(0.1F);
    view->SetLinkFunctionX(1);
    view->SetLinkFunctionY(1);
    EXPECT_EQ(points, 0U) << "nothing before it is to be shown";
    view->Pulse();
    EXPECT_GT(points, 0U);
    EXPECT_LT(points, kAll / 2);
    EXPECT_FALSE(view->IsComplete());
    int pulses = 1;
    for (; !view->IsComplete(); pulses++)
        view->Pulse();
    EXPECT_GT(pulses, 5);
    EXPECT_EQ(points, kAll) << "each point once";
    view->Pulse();
    EXPECT_EQ(points, kAll);
}

/// Draws the curves that may only be drawn inside Draw.
class Strokes : public vexa::R2RFView {
  public:
    using R2RFView::R2RFView;
    void Draw(BRect update) override {
        R2RFView::Draw(update);
        if (slot >= 0)
            DrawSoundPath(slot, 0, 1 / 440.0F, 1 / 44000.0F);
        else
            DrawLissajous(0, 0, 0, 0, 1, 1, 1, 1);
    }
    int32 slot = -1;
};

TEST(R2RFView, StrokesCurvesWithThePen) {
    vexa::Engine instrument;
    test::MakeSine(instrument);
    test::SetEnvelope(instrument.envelopes[2], {{0, false, 1}});
    test::SetEnvelope(instrument.envelopes[3], {{0, false, 1}});
    instrument.consumer.NoteOn(0, 69, 127, 0);
    auto* view = new Strokes(kFrame, "R2RFView", BPoint{0, 0}, BPoint{0.5F, 0.5F}, 0.05F,
                             uint32(B_FOLLOW_NONE));
    view->SetSoundParam(&instrument.controllers, &instrument.parameters, &instrument.voices);
    test::Stage stage(view);
    for (const int32 slot : {-1, 0}) {
        view->slot = slot;
        const QImage picture = test::Picture(*view);
        // A circle of radius 1: 20 pixels round the middle.
        for (const auto& [x, y] : {std::pair{170, 150}, {130, 150}, {150, 130}, {150, 170}})
            EXPECT_GT(picture.pixelColor(x, y).green(), 100) << x << ' ' << y;
        EXPECT_EQ(picture.pixelColor(150, 150).green(), 0);
    }
}

} // namespace
