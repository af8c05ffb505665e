// SPDX-License-Identifier: GPL-3.0-or-later
// Catches controls and texts that cover or cut each other, with any font.
#include "app/MainViewStage.h"
#include "app/bar/BarView.h"
#include "kits/interface/backends/ViewWidget.h"
#include "views/EnvView.h"
#include "views/R2RFView.h"

#include <QFontInfo>
#include <QFontMetricsF>
#include <QRegularExpression>
#include <QScrollBar>
#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace {

struct Piece {
    std::string what;
    QRectF area;
};

QRectF AreaOf(BRect rect) {
    return {rect.left, rect.top, rect.Width() + 1.0, rect.Height() + 1.0};
}

/// A narrow font, a wide one and a tall one.
class LayoutTest : public test::MainViewTest, public testing::WithParamInterface<const char*> {
  protected:
    LayoutTest() {
        kits::SetPlainFontFamily(GetParam());
        Open(false);
    }
    ~LayoutTest() override { kits::SetPlainFontFamily(""); }

    QFont PanelFont() const {
        QFont font{QString::fromUtf8(GetParam())};
        font.setPixelSize(12);
        font.setItalic(true);
        return font;
    }

    std::vector<Piece> Controls() const {
        std::vector<Piece> pieces;
        for (const BView* child : view->Children()) {
            if (!child->IsHidden())
                pieces.push_back({child->Name(), AreaOf(child->Frame())});
        }
        return pieces;
    }

    /// Returns the inked area of the formulas' texts.
    std::vector<Piece> Texts() const {
        const QFontMetricsF metrics(PanelFont());
        std::vector<Piece> pieces;
        for (const auto& text : view->Formulas().Texts()) {
            // Leading and trailing blanks have no ink.
            const QString whole = QString::fromStdString(text.text);
            const QString blanks(whole.indexOf(QRegularExpression("\\S")), ' ');
            const QRectF ink = metrics.tightBoundingRect(whole.trimmed());
            pieces.push_back(
                {text.text, ink.translated(text.baseline.x + metrics.horizontalAdvance(blanks),
                                           text.baseline.y)});
        }
        return pieces;
    }
};

TEST_P(LayoutTest, TheFontIsThere) {
    EXPECT_EQ(QFontInfo(PanelFont()).family().toStdString(), GetParam());
}

TEST_P(LayoutTest, NothingCoversAnything) {
    std::vector<Piece> pieces = Controls();
    const std::size_t controls = pieces.size();
    EXPECT_EQ(controls, 1U + 7 + 5 + 3 + 4 + 32);
    const std::vector<Piece> texts = Texts();
    pieces.insert(pieces.end(), texts.begin(), texts.end());
    const QRectF bounds = AreaOf(view->Bounds());
    for (std::size_t i = 0; i < pieces.size(); i++) {
        EXPECT_TRUE(bounds.contains(pieces[i].area)) << pieces[i].what;
        for (std::size_t j = 0; j < i; j++) {
            const QRectF common = pieces[i].area.intersected(pieces[j].area);
            // Neighbours may share the anti-aliased edge of a letter.
            const bool apart = common.width() < 0.75 || common.height() < 0.75;
            EXPECT_TRUE(apart) << pieces[j].what << " and " << pieces[i].what << " share "
                               << common.x() << ' ' << common.y() << ' ' << common.width() << ' '
                               << common.height();
        }
    }
}

/// On a screen that is too small for the window.
TEST_P(LayoutTest, ASmallWindowScrolls) {
    const BRect whole = view->Frame();
    window->ResizeTo(500, 300);
    QApplication::processEvents();
    BView* pane = window->FindView("main pane");
    EXPECT_EQ(view->Frame().Width(), view->LeastWidth());
    EXPECT_EQ(view->Frame().Height(), whole.Height());
    EXPECT_LT(pane->Frame().bottom, window->FindView("strip")->Frame().top);
    EXPECT_LE(pane->Frame().right, 500);
    // A control that gets the focus scrolls into view.
    BTextControl& last = view->Field(vexa::ParameterId::C0y4);
    EXPECT_LE(last.Frame().right, view->LeastWidth());
    last.MakeFocus();
    QApplication::processEvents();
    const QPoint corner = last.Widget().mapTo(&pane->Widget(), QPoint(0, 0));
    EXPECT_TRUE(pane->Widget().rect().contains(corner)) << corner.x() << ' ' << corner.y();
}

/// A scroll bar appears only in a direction in which something is out of view, and leaves no gap.
TEST_P(LayoutTest, AWindowThatIsOnlyLowScrollsInOneDirection) {
    const QWidget& pane = window->FindView("main pane")->Widget();
    const auto bars = pane.findChildren<QScrollBar*>();
    window->ShowPart(vexa::VexaWindow::Part::Strip, false);
    window->ResizeTo(1250, 510 - BWindow::kRounding);
    test::Settle();
    EXPECT_TRUE(std::ranges::none_of(bars, &QScrollBar::isVisible));
    window->ResizeTo(1250, 400);
    test::Settle();
    for (const QScrollBar* bar : bars) {
        EXPECT_EQ(bar->isVisible(), bar->orientation() == Qt::Vertical);
        const QPoint corner = bar->mapTo(&pane, bar->rect().bottomRight());
        EXPECT_TRUE(!bar->isVisible() || corner == pane.rect().bottomRight()) << corner.x();
    }
}

/// In a narrow window, logos and items without room are hidden instead of covering others.
TEST_P(LayoutTest, TheBarKeepsTheNameOfTheSound) {
    window->ShowPart(vexa::VexaWindow::Part::Drawer, false);
    const vexa::BarView& bar = window->Bar();
    std::size_t before = 0;
    for (const float width : {480.0F, 560.0F, 640.0F, 800.0F, 935.0F}) {
        window->ResizeTo(width, 500);
        test::Settle();
        std::vector<Piece> pieces;
        for (const BView* child : bar.Children()) {
            if (!child->IsHidden())
                pieces.push_back({child->Name(), AreaOf(child->Frame())});
        }
        EXPECT_GE(pieces.size(), std::max<std::size_t>(before, 4));
        EXPECT_GE(bar.CaptionFrame().Width(), 150) << width;
        before = pieces.size();
        for (std::size_t i = 0; i < pieces.size(); i++) {
            EXPECT_TRUE(AreaOf(bar.Bounds()).contains(pieces[i].area)) << pieces[i].what << width;
            for (std::size_t j = 0; j < i; j++)
                // Undo and redo share a column.
                EXPECT_LE(pieces[i].area.intersected(pieces[j].area).width(), 1)
                    << pieces[j].what << " and " << pieces[i].what << ' ' << width;
        }
    }
    EXPECT_EQ(before, bar.Children().size());
}

class StripLayoutTest : public LayoutTest {
  protected:
    static constexpr std::size_t kScopeAndMacros = 1 + 4 * 3, kTuning = 2;
    static constexpr std::size_t kPlaying = vexa::kPlayingRows;
    static constexpr std::size_t kControls = kScopeAndMacros + kPlaying + kTuning;
    static constexpr std::size_t kHands = 2 + 1 + 1; // wheels, hold, piano

    StripLayoutTest() { window->ShowPart(vexa::VexaWindow::Part::Drawer, false); }

    /// Checks that the strip's visible controls, which are `count`, lie in it and apart. Returns
    /// their names.
    std::set<std::string> ExpectApart(std::size_t count) {
        std::vector<Piece> pieces;
        const auto add = [&](const auto& self, const BView& parent, QPointF origin) -> void {
            for (const BView* child : parent.Children()) {
                if (child->IsHidden())
                    continue;
                const QRectF area = AreaOf(child->Frame());
                EXPECT_TRUE(AreaOf(parent.Bounds()).contains(area)) << child->Name();
                if (child->Children().empty())
                    pieces.push_back({child->Name(), area.translated(origin)});
                self(self, *child, origin + area.topLeft());
            }
        };
        add(add, Strip(), {});
        EXPECT_EQ(pieces.size(), count) << window->Bounds().right;
        std::set<std::string> names;
        for (std::size_t i = 0; i < pieces.size(); i++) {
            names.insert(pieces[i].what);
            EXPECT_GE(pieces[i].area.width(), 18) << pieces[i].what;
            for (std::size_t j = 0; j < i; j++)
                EXPECT_FALSE(pieces[i].area.intersects(pieces[j].area))
                    << pieces[j].what << " and " << pieces[i].what;
        }
        return names;
    }
    void Size(float width, float height) {
        window->ResizeTo(width, height);
        test::Settle();
    }
    BView& Strip() { return *window->FindView("strip"); }
    BView& More() { return *window->FindView("macros, playing and tuning"); }
};

TEST_P(StripLayoutTest, StandsBelowTheMainViewAndNothingTouchesInIt) {
    EXPECT_EQ(window->FindView("main pane")->Frame(), (BRect{0, 41, window->Bounds().right, 510}));
    const float width = window->Bounds().right, height = window->Bounds().bottom;
    for (const float wider : {0.0F, 300.0F}) {
        Size(width + wider, height);
        EXPECT_EQ(Strip().Frame(), (BRect{0, 511, window->Bounds().right, height}));
        ExpectApart(kControls + kHands);
    }
    // A fractional scale of the screen may cost a pixel.
    Size(width, height - 1);
    EXPECT_EQ(window->FindView("main pane")->Frame().bottom, 510);
    ExpectApart(kControls + kHands);
    // In a low window the strip has one row, and the main view has the remaining height.
    Size(width, 566);
    EXPECT_EQ(window->FindView("main pane")->Frame().bottom, 510);
    ExpectApart(kHands + 1);
    More().MakeFocus();
    for (const std::size_t count : {kControls, kHands}) {
        test::TypeKey(*window, Qt::Key_Space);
        EXPECT_EQ(Strip().Frame().bottom, 566);
        ExpectApart(count + 1);
        EXPECT_TRUE(More().IsFocus());
    }
    Size(width, height);
    ExpectApart(kControls + kHands);
}

/// Whatever the window's size, its pages together have every control, and after the last the first
/// is back.
TEST_P(StripLayoutTest, MoreReachesAllThatDoesNotFit) {
    constexpr std::size_t kOthers = kScopeAndMacros + kTuning;
    const float full = window->Bounds().bottom;
    const std::set<std::string> all = ExpectApart(kControls + kHands);
    const auto expectPages = [&](float width, float height, std::vector<std::size_t> counts) {
        Size(width, height);
        ASSERT_EQ(window->Bounds().right, width);
        EXPECT_EQ(More().IsHidden(), counts.size() == 1);
        std::set<std::string> seen;
        for (const std::size_t count : counts) {
            seen.merge(ExpectApart(count + (counts.size() > 1 ? 1 : 0)));
            if (counts.size() > 1)
                test::Click(More(), {5, 5});
        }
        seen.erase(More().Name());
        EXPECT_EQ(seen, all) << width << ' ' << height;
        ExpectApart(counts.front() + (counts.size() > 1 ? 1 : 0));
    };
    for (const float width : {785.0F, 800.0F, 935.0F})
        expectPages(width, full, {kControls + kHands});
    for (const float width : {480.0F, 500.0F, 640.0F, 784.0F})
        expectPages(width, full, {kOthers + kHands, kPlaying + kHands});
    for (const float width : {480.0F, 700.0F, 800.0F, 826.0F})
        expectPages(width, 500, {kHands, kOthers, kPlaying});
    for (const float width : {827.0F, 935.0F})
        expectPages(width, 500, {kHands, kControls});
    // A page that is gone in a wider window leaves the last one.
    Size(480, 500);
    for (int i = 0; i < 2; i++)
        test::Click(More(), {5, 5});
    Size(935, 500);
    ExpectApart(kControls + 1);
    test::Click(More(), {5, 5});
    ExpectApart(kHands + 1);
}

TEST_P(LayoutTest, EveryFieldStandsInItsGapOnTheBaselineOfItsFormula) {
    for (const auto& gap : view->Formulas().Gaps()) {
        const BTextControl& field = view->Field(gap.field);
        const BRect frame = field.Frame();
        EXPECT_GE(frame.left, gap.baseline.x) << field.Name();
        EXPECT_LE(frame.right, gap.baseline.x + gap.width) << field.Name();
        EXPECT_GE(frame.Width(), gap.width - 7) << field.Name();
        EXPECT_NEAR(frame.top + BTextControl::BaselineOffset(), gap.baseline.y, 0.51)
            << field.Name();
    }
}

TEST_P(LayoutTest, NoMenuTitleIsCut) {
    for (BMenu* menu : {&view->VoicesMenu(), &view->ChannelMenu()}) {
        menu->ItemAt(menu->CountItems() - 1)->SetMarked(true);
        bool shown = false;
        for (const BView* child : view->Children()) {
            for (const BView* field : child->Children()) {
                const auto* menuField = dynamic_cast<const BMenuField*>(field);
                shown = shown || (menuField && menuField->Menu() == menu &&
                                  menuField->ShownTitle() == menu->Title());
            }
        }
        EXPECT_TRUE(shown) << menu->Title();
    }
}

TEST_P(LayoutTest, AWiderWindowWidensTheEnvelopesOnly) {
    const BRect before = view->EnvelopeEditor(2).Frame();
    const BRect field = view->Field(vexa::ParameterId::C0y4).Frame();
    const float width = window->Bounds().Width();
    const float height = window->Bounds().Height();
    window->ResizeTo(width + 400, window->Bounds().Height() + 100);
    test::Settle();
    EXPECT_EQ(window->Bounds().Height(), height);
    EXPECT_EQ(view->EnvelopeEditor(2).Frame().right, before.right + 400);
    EXPECT_EQ(view->EnvelopeEditor(2).Frame().Height(), 92);
    EXPECT_EQ(view->Field(vexa::ParameterId::C0y4).Frame(), field);
    EXPECT_EQ(view->Plane().Frame(), (BRect{10, 10, 310, 310}));
}

const auto kFonts = testing::Values("Liberation Sans", "DejaVu Sans", "Open Sans");

INSTANTIATE_TEST_SUITE_P(Fonts, LayoutTest, kFonts);
INSTANTIATE_TEST_SUITE_P(Fonts, StripLayoutTest, kFonts);

} // namespace
