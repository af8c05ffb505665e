// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/ImageExport.h"

#include "support/TemporaryFolder.h"
#include "support/WindowStage.h"

#include <QImage>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;

constexpr uint32 kPng = FourCC("PNG ");

std::unique_ptr<BBitmap> Picture(int32 size) {
    return std::make_unique<BBitmap>(BRect{0, 0, float(size), float(size)}, B_RGB32);
}

class ImageExport : public testing::Test {
  protected:
    vexa::ImageRequest Request(const std::string& name, int32 size) const {
        const auto& path = folder.Path();
        return {{path.parent_path(), path.filename()}, name, 1, kPng, size};
    }

    test::TemporaryFolder folder;
    test::AlertLog alerts;
};

TEST_F(ImageExport, ReplacesTheFileByAPictureOfThatSize) {
    folder.Write("a.png", "old");
    for (const int32 size : {300, 0}) {
        vexa::ExportImage(Request("a.png", size), Picture);
        const QImage image(QString::fromStdString(folder.Path() / "a.png"));
        EXPECT_EQ(image.size(), QSize(size + 1, size + 1));
    }
    EXPECT_EQ(folder.Count(), 1U);
    EXPECT_TRUE(alerts.texts.empty());
}

TEST_F(ImageExport, SaysWhichStepFailedAndLeavesTheOldFile) {
    const auto file = folder.Write("a.png", "old");
    const std::vector<std::string> notCreated = {"Could not create file."};
    const std::vector<std::string> notSaved = {"Could not save the image."};
    const auto expectAlert = [&](const vexa::ImageRequest& request, const auto& makeBitmap,
                                 const std::vector<std::string>& expected) {
        alerts.texts.clear();
        vexa::ExportImage(request, makeBitmap);
        EXPECT_EQ(alerts.texts, expected) << request.name << " " << request.size;
        EXPECT_EQ(test::Contents(file), "old");
        EXPECT_EQ(folder.Count(), 1U);
    };
    const auto never = [](int32) -> std::unique_ptr<BBitmap> {
        ADD_FAILURE() << "no picture was to be made";
        return nullptr;
    };
    const auto none = [](int32) { return std::unique_ptr<BBitmap>(); };
    const auto invalid = [](int32) { return std::make_unique<BBitmap>(BRect{}, B_RGB32); };

    vexa::ImageRequest nowhere = Request("a.png", 3);
    nowhere.directory.name += "-missing";
    expectAlert(nowhere, never, notCreated);
    expectAlert(Request("../a.png", 3), never, notCreated);
    for (const char* name : {"a.png", "new.png"}) {
        expectAlert(Request(name, -1), never, notSaved);
        expectAlert(Request(name, 32768), never, notSaved);
        expectAlert(Request(name, 3), none, notSaved);
        expectAlert(Request(name, 3), invalid, notSaved);
        vexa::ImageRequest unknown = Request(name, 3);
        unknown.translator = 99;
        expectAlert(unknown, Picture, notSaved);
    }
}

TEST_F(ImageExport, ARequestNeedsAllOfItsFields) {
    const entry_ref directory{"/some", "where"};
    const translator_id translator = 7;
    // All of them, without one of them, and with an id that is too short.
    for (int missing = -1; missing <= 5; missing++) {
        BMessage message;
        if (missing != 0)
            message.AddData("translator_id", B_RAW_TYPE, &translator,
                            missing == 5 ? 1 : sizeof translator);
        for (const auto& [field, value, index] :
             {std::tuple{"translator_format", int32(kPng), 1}, {"size", 300, 2}}) {
            if (missing != index)
                message.AddInt32(field, value);
        }
        if (missing != 3)
            message.AddRef("directory", &directory);
        if (missing != 4)
            message.AddString("name", "a.png");
        const auto request = vexa::ReadImageRequest(message);
        ASSERT_EQ(request.has_value(), missing < 0) << missing;
        if (request) {
            EXPECT_EQ(std::tie(request->translator, request->format, request->size,
                               request->directory, request->name),
                      std::tuple(translator, kPng, 300, directory, "a.png"));
        }
    }
}

} // namespace
