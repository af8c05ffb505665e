// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/Slider.h"
#include "kits/support/DataIO.h"
#include "kits/translation/BitmapStream.h"
#include "kits/translation/TranslatorRoster.h"
#include "support/WindowStage.h"

#include <QImageReader>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <memory>
#include <string>

#include <gtest/gtest.h>

namespace {

class Bytes : public BDataIO {
  public:
    ssize_t Write(const void* data, std::size_t size) override {
        bytes.append(static_cast<const char*>(data), size);
        return ssize_t(size);
    }
    std::string bytes;
};

class Full : public BDataIO {
    ssize_t Write(const void*, std::size_t) override { return -ENOSPC; }
};

/// Smooth and coloured, so that a lossy format loses little.
BBitmap* Gradient(int32 width, int32 height) {
    auto* bitmap = new BBitmap({0, 0, float(width - 1), float(height - 1)}, B_RGB32);
    for (int32 y = 0; y < height; y++) {
        auto* row = static_cast<uint8*>(bitmap->Bits()) + y * bitmap->BytesPerRow();
        for (int32 x = 0; x < width; x++) {
            row[4 * x] = uint8(x * 255 / width);
            row[4 * x + 1] = uint8(128 + 100 * std::sin(float(x * y) / 60));
            row[4 * x + 2] = uint8(y * 255 / height);
        }
    }
    return bitmap;
}

std::map<std::string, translator_id> Translators() {
    translator_id* ids = nullptr;
    int32 count = 0;
    EXPECT_EQ(BTranslatorRoster::Default()->GetAllTranslators(&ids, &count), B_OK);
    std::map<std::string, translator_id> translators;
    for (int32 i = 0; i < count; i++) {
        const translation_format* formats = nullptr;
        int32 formatCount = 0;
        BTranslatorRoster::Default()->GetOutputFormats(ids[i], &formats, &formatCount);
        EXPECT_EQ(formatCount, 2);
        EXPECT_EQ(formats[0].type, B_TRANSLATOR_BITMAP);
        EXPECT_EQ(formats[1].group, B_TRANSLATOR_BITMAP);
        translators[formats[1].name] = ids[i];
    }
    delete[] ids;
    return translators;
}

uint32 TypeOf(translator_id translator) {
    const translation_format* formats = nullptr;
    int32 count = 0;
    BTranslatorRoster::Default()->GetOutputFormats(translator, &formats, &count);
    return formats[1].type;
}

std::string Written(translator_id translator, int32 width, int32 height) {
    BBitmapStream stream(Gradient(width, height));
    Bytes bytes;
    EXPECT_EQ(BTranslatorRoster::Default()->Translate(translator, &stream, nullptr, &bytes,
                                                      TypeOf(translator)),
              B_OK);
    return bytes.bytes;
}

TEST(Translators, WriteEachFormatSoThatItCanBeReadBack) {
    const auto translators = Translators();
    for (const char* name : {"PNG image", "JPEG image", "BMP image", "PPM image", "XPM image"})
        EXPECT_TRUE(translators.contains(name)) << name;
    const std::unique_ptr<BBitmap> original(Gradient(37, 21));
    for (const auto& [name, id] : translators) {
        const std::string file = Written(id, 37, 21);
        const QImage image =
            QImage::fromData(reinterpret_cast<const uchar*>(file.data()), int(file.size()));
        ASSERT_EQ(image.size(), QSize(37, 21)) << name;
        const bool lossy = name == "JPEG image" || name == "WebP image";
        for (int y = 0; y < 21; y++) {
            for (int x = 0; x < 37; x++) {
                const QRgb pixel = image.pixel(x, y);
                const auto* expected = static_cast<const uint8*>(original->Bits()) +
                                       y * original->BytesPerRow() + 4 * x;
                const int blue = std::abs(qBlue(pixel) - expected[0]);
                const int green = std::abs(qGreen(pixel) - expected[1]);
                const int red = std::abs(qRed(pixel) - expected[2]);
                ASSERT_LE(std::max({red, green, blue}), lossy ? 60 : 0) << name << x << "," << y;
            }
        }
    }
}

TEST(Translators, SettingsChangeTheFile) {
    for (const auto& [name, id] : Translators()) {
        BView* view = nullptr;
        BRect extent{0, 0, 239, 239};
        const status_t status =
            BTranslatorRoster::Default()->MakeConfigurationView(id, nullptr, &view, &extent);
        if (name != "PNG image" && name != "JPEG image" && name != "WebP image") {
            EXPECT_EQ(status, B_NO_CONFIGURATION) << name;
            continue;
        }
        ASSERT_EQ(status, B_OK) << name;
        EXPECT_EQ(view->Bounds(), extent);
        test::Stage stage(view);
        auto* slider = dynamic_cast<BSlider*>(view->ChildAt(0));
        ASSERT_TRUE(slider) << name;
        const int32 before = slider->Value();
        const bool png = name == "PNG image";
        slider->Move(png ? 9 : 0);
        test::Settle();
        const std::size_t small = Written(id, 200, 200).size();
        slider->Move(png ? 0 : 100);
        test::Settle();
        EXPECT_GT(Written(id, 200, 200).size(), small) << name;
        EXPECT_TRUE(!png || Written(id, 200, 200).size() > 200U * 200 * 3) << "0 compresses";
        slider->Move(before);
        test::Settle();
    }
}

TEST(Translators, SayWhyNothingIsWritten) {
    BTranslatorRoster& roster = *BTranslatorRoster::Default();
    const auto translators = Translators();
    const translator_id png = translators.at("PNG image");
    const translator_id jpeg = translators.at("JPEG image");
    BBitmapStream stream(Gradient(5, 5));
    Bytes bytes;
    Full full;
    EXPECT_EQ(roster.Translate(0, &stream, nullptr, &bytes, TypeOf(png)), B_NO_TRANSLATOR);
    EXPECT_EQ(roster.Translate(999, &stream, nullptr, &bytes, TypeOf(png)), B_NO_TRANSLATOR);
    EXPECT_EQ(roster.Translate(png, &stream, nullptr, &bytes, TypeOf(jpeg)), B_NO_TRANSLATOR);
    EXPECT_EQ(roster.Translate(png, &stream, nullptr, &full, TypeOf(png)), -ENOSPC);
    BBitmapStream wide(new BBitmap({0, 0, 69999, 0}, B_RGB32));
    EXPECT_EQ(roster.Translate(jpeg, &wide, nullptr, &bytes, TypeOf(jpeg)), B_ERROR)
        << "no JPEG is that wide";
    BBitmap* bitmap = nullptr;
    EXPECT_EQ(stream.DetachBitmap(&bitmap), B_OK);
    const std::unique_ptr<BBitmap> owner(bitmap);
    EXPECT_EQ(roster.Translate(png, &stream, nullptr, &bytes, TypeOf(png)), B_BAD_VALUE);
    EXPECT_TRUE(bytes.bytes.empty());
}

} // namespace
