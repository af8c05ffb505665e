// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/Control.h"
#include "kits/interface/backends/ViewWidget.h"
#include "kits/interface/backends/WindowWidget.h"
#include "support/MessageLog.h"
#include "support/TemporaryFolder.h"
#include "support/WindowStage.h"
#include "views/Contrast.h"
#include "views/ImageExport.h"
#include "views/R2RFVTranslatorSavePanel.h"
#include "views/Theme.h"
#include "views/TranslatorMenuItem.h"

#include <QHeaderView>
#include <QLabel>
#include <QTreeView>
#include <cmath>
#include <cstring>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;

constexpr uint32 kImage = FourCC("SIMG");

class Panel : public vexa::R2RFVTranslatorSavePanel {
  public:
    explicit Panel(BMessenger target)
        : R2RFVTranslatorSavePanel("TranslatorSavePanel", &target, nullptr, B_FILE_NODE, false,
                                   new BMessage(kImage), nullptr, false, true) {}

    BView& View(const char* name) const { return *Window()->ChildAt(0)->FindView(name); }
    BRect Frame(const char* name) const { return View(name).Frame(); }
    BTextControl& Size() const { return dynamic_cast<BTextControl&>(View("Size")); }
    BMenu& Formats() const { return *dynamic_cast<BMenuField&>(View("FormatMenuField")).Menu(); }
    void PressSettings() const {
        dynamic_cast<BButton&>(View("Settings")).Press();
        test::Settle();
    }
    void ChooseFormat(const char* label) const {
        Formats().FindItem(label)->Choose();
        test::Settle();
    }
    int32 SizeSent() const {
        int32 size = -1;
        Message().FindInt32("size", &size);
        return size;
    }
};

class TranslatorSavePanel : public testing::Test {
  protected:
    test::MessageLog receiver;
    test::AlertLog alerts;
    Panel panel{BMessenger(&receiver)};
};

/// Returns the largest contrast between any two pixels of the area.
double ContrastIn(QWidget& widget, const QRect& part) {
    const QImage shown = widget.grab(part).toImage();
    double most = 1;
    const QRgb first = shown.pixel(0, 0);
    const auto color = [](QRgb pixel) {
        return rgb_color{uint8(qRed(pixel)), uint8(qGreen(pixel)), uint8(qBlue(pixel))};
    };
    for (int y = 0; y < shown.height(); y++) {
        for (int x = 0; x < shown.width(); x++)
            most = std::max(most, test::Contrast(color(first), color(shown.pixel(x, y))));
    }
    return most;
}

/// Also if they change while it is open.
TEST_F(TranslatorSavePanel, CanBeReadInAllColors) {
    const test::TemporaryFolder folder;
    folder.Write("file", "x");
    panel.SetPanelDirectory(folder.Path().c_str());
    panel.Show();
    test::Settle();
    panel.ChooseFormat("PNG image");
    panel.PressSettings();
    QWidget& all = panel.Window()->Widget();
    auto& list = *all.findChild<QTreeView*>();
    QWidget& count = panel.View("CountVw").Widget();
    QLabel& name = *panel.View("text view").Widget().findChild<QLabel*>();
    ASSERT_EQ(list.model()->rowCount(), 1);
    const QRect date = list.visualRect(list.model()->index(0, 2));
    for (const vexa::ColorSet set :
         {vexa::ColorSet::Dark, vexa::ColorSet::Light, vexa::ColorSet::Dark}) {
        vexa::ChooseColors(set);
        test::Settle();
        EXPECT_GE(ContrastIn(*list.viewport(), date), 4.5);
        EXPECT_GE(ContrastIn(*list.header()->viewport(), list.header()->viewport()->rect()), 4.5);
        EXPECT_GE(ContrastIn(count, count.rect()), 4.5);
        EXPECT_GE(ContrastIn(all, QRect(name.mapTo(&all, QPoint()), name.size())), 4.5);
    }
    vexa::ChooseColors(vexa::ColorSet::Light);
}

TEST_F(TranslatorSavePanel, MakesRoomForItsControls) {
    const BMessenger target(&receiver);
    const BFilePanel plain(B_SAVE_PANEL, &target);
    const auto before = [&](const char* name) {
        return plain.Window()->ChildAt(0)->FindView(name)->Frame();
    };
    EXPECT_STREQ(panel.Window()->Title(), "Save Image");
    for (const char* up : {"cancel button", "default button", "HScrollBar", "CountVw"})
        EXPECT_EQ(panel.Frame(up), before(up).OffsetByCopy(0, -10)) << up;
    for (const char* shorter : {"PoseView", "VScrollBar"}) {
        BRect expected = before(shorter);
        expected.bottom -= 10;
        EXPECT_EQ(panel.Frame(shorter), expected) << shorter;
    }
    EXPECT_EQ(panel.Frame("text view"), before("text view").OffsetByCopy(0, 10));

    const BRect cancel = panel.Frame("cancel button");
    const BRect settings = panel.Frame("Settings");
    EXPECT_EQ(settings.right, cancel.left - 10);
    EXPECT_GE(settings.Width(), 75);
    EXPECT_EQ(settings.top, cancel.top);
    EXPECT_EQ(settings.bottom, cancel.bottom);
    const BRect text = panel.Frame("text view");
    const BRect format = panel.Frame("FormatMenuField");
    EXPECT_EQ(format.left, text.left);
    EXPECT_EQ(format.right, text.right);
    EXPECT_EQ(format.top, panel.Frame("HScrollBar").bottom + 5);
    EXPECT_LT(format.bottom, text.top);
    const BRect size = panel.Frame("Size");
    EXPECT_EQ(size.left, text.right + 10);
    EXPECT_EQ(size.Width(), 100);
    EXPECT_EQ(size.top, text.top);
}

TEST_F(TranslatorSavePanel, CannotBecomeSoNarrowThatControlsMeet) {
    panel.Show();
    panel.Window()->ResizeTo(50, 50);
    test::Settle();
    EXPECT_GE(panel.Frame("Settings").left, panel.Frame("text view").right + 9);
    EXPECT_GE(panel.Frame("Size").top, panel.Frame("Settings").bottom);
    EXPECT_EQ(panel.Window()->Bounds().Height(), 250);
}

TEST_F(TranslatorSavePanel, EveryChangeIsInTheResult) {
    EXPECT_EQ(panel.Message().what, kImage);
    EXPECT_EQ(panel.SizeSent(), 300);
    ASSERT_GT(panel.Formats().CountItems(), 3U);
    EXPECT_EQ(panel.GetCurrentMenuItem(), panel.Formats().ItemAt(0));

    panel.ChooseFormat("JPEG image");
    const auto& item = *panel.GetCurrentMenuItem();
    EXPECT_STREQ(item.Label(), "JPEG image");
    const void* id = nullptr;
    std::size_t length = 0;
    ASSERT_EQ(panel.Message().FindData("translator_id", B_RAW_TYPE, 0, &id, &length), B_OK);
    ASSERT_EQ(length, 4U);
    EXPECT_EQ(std::memcmp(id, &item.translatorId, 4), 0);
    int32 format = 0;
    EXPECT_EQ(panel.Message().FindInt32("translator_format", &format), B_OK);
    EXPECT_EQ(uint32(format), item.outputType);

    panel.Size().Type("600");
    test::Settle();
    EXPECT_EQ(panel.SizeSent(), 300) << "not confirmed";
    panel.Size().Confirm();
    test::Settle();
    EXPECT_EQ(panel.SizeSent(), 600);
    for (const auto& [text, size] : {std::pair("12 pixels", 12), std::pair("none", 0),
                                     std::pair("-5", -5), std::pair("9999999999", INT32_MAX)}) {
        panel.Size().Type(text);
        panel.Size().Confirm();
        test::Settle();
        EXPECT_EQ(panel.SizeSent(), size) << text;
    }
    panel.ChooseFormat("PNG image");
    EXPECT_EQ(panel.Message().what, kImage);
    EXPECT_EQ(panel.SizeSent(), INT32_MAX);
    // A name that is not empty gets the suffix of the format.
    EXPECT_EQ(panel.SaveText(), "");
    panel.SetSaveText("my.song");
    panel.ChooseFormat("TIFF image");
    EXPECT_EQ(panel.SaveText(), "my.song.tiff");
    panel.ChooseFormat("PNG image");
    EXPECT_EQ(panel.SaveText(), "my.song.png");
}

TEST_F(TranslatorSavePanel, ShowsOneSettingsWindow) {
    EXPECT_EQ(panel.SettingsWindow(), nullptr);
    panel.PressSettings();
    BWindow* const first = panel.SettingsWindow();
    ASSERT_TRUE(first);
    EXPECT_STREQ(first->Title(), "Translator Settings");
    EXPECT_EQ(first->Frame().LeftTop(), (BPoint{100, 100}));
    EXPECT_EQ(first->ChildAt(0)->Bounds(), first->Bounds());
    panel.ChooseFormat("JPEG image");
    panel.PressSettings();
    ASSERT_TRUE(panel.SettingsWindow());
    EXPECT_STREQ(panel.SettingsWindow()->ChildAt(0)->Name(), "JPEG image");
    panel.SettingsWindow()->PostMessage(B_QUIT_REQUESTED);
    test::Settle();
    EXPECT_EQ(panel.SettingsWindow(), nullptr);
    panel.PressSettings();
    EXPECT_TRUE(panel.SettingsWindow());
    EXPECT_TRUE(alerts.texts.empty());

    panel.ChooseFormat("BMP image");
    panel.PressSettings();
    EXPECT_THAT(alerts.texts, ElementsAre(std::strerror(EOPNOTSUPP)));
}

} // namespace
