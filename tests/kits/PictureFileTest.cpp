// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/pictures/PictureFile.h"

#include "support/Limits.h"
#include "support/Pictures.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <cmath>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using kits::BrightnessMap;
using kits::DecodePicture;
using testing::HasSubstr;

/// Returns the brightness of channels from 0 to 1.
double Brightness(double red, double green, double blue, double opacity) {
    return (2 * (0.299 * red + 0.587 * green + 0.114 * blue) - 1) * opacity;
}

std::vector<png_byte> RandomBytes(std::size_t count) {
    std::mt19937 random(1);
    std::vector<png_byte> bytes(count);
    for (png_byte& byte : bytes)
        byte = png_byte(random());
    return bytes;
}

/// Returns the channel at index `index` of a row with `depth` bits per channel.
unsigned ChannelAt(const png_byte* row, std::size_t index, int depth) {
    if (depth == 16)
        return unsigned(row[2 * index] << 8 | row[2 * index + 1]);
    const std::size_t bit = index * unsigned(depth);
    return row[bit / 8] >> (8U - unsigned(depth) - bit % 8) & ((1U << unsigned(depth)) - 1);
}

TEST(PictureFile, ReadsEveryKindOfPng) {
    constexpr unsigned kWidth = 13, kHeight = 9;
    const std::vector<png_byte> bytes = RandomBytes(kWidth * kHeight * 8);
    struct Kind {
        int colours;
        unsigned channels;
        std::vector<int> depths;
    };
    const Kind kinds[] = {{PNG_COLOR_TYPE_GRAY, 1, {1, 2, 4, 8, 16}},
                          {PNG_COLOR_TYPE_GRAY_ALPHA, 2, {8, 16}},
                          {PNG_COLOR_TYPE_PALETTE, 1, {1, 2, 4}},
                          {PNG_COLOR_TYPE_RGB, 3, {8, 16}},
                          {PNG_COLOR_TYPE_RGB_ALPHA, 4, {8, 16}}};
    for (const auto& [colours, channels, depths] : kinds) {
        for (const int depth : depths) {
            for (const int variant : {0, 1, 2, 3}) {
                const bool mayBeTransparent = channels == 1;
                const test::PngForm form{colours, depth, variant % 2 == 1,
                                         mayBeTransparent && variant >= 2 ? 2 : 0, ""};
                const auto read = DecodePicture(test::Png(kWidth, kHeight, form, bytes));
                ASSERT_TRUE(read) << read.Fault().text;
                ASSERT_EQ(read->width, int(kWidth));
                ASSERT_EQ(read->height, int(kHeight));
                const std::size_t stride = (kWidth * channels * unsigned(depth) + 7) / 8;
                const double most = std::pow(2, depth) - 1;
                for (std::size_t k = 0; k < std::size_t(kWidth) * kHeight; k++) {
                    const png_byte* row = &bytes[k / kWidth * stride];
                    double c[4];
                    for (std::size_t i = 0; i < channels; i++)
                        c[i] = ChannelAt(row, k % kWidth * channels + i, depth) / most;
                    double expected = 0;
                    if (colours == PNG_COLOR_TYPE_PALETTE) {
                        const int index = int(std::lround(c[0] * most));
                        const png_color colour = test::PaletteColour(index);
                        expected = Brightness(colour.red / 255.0, colour.green / 255.0,
                                              colour.blue / 255.0, index >= form.transparent);
                    } else if (channels < 3) {
                        const bool isClear = form.transparent > 0 && c[0] == 0;
                        expected = Brightness(c[0], c[0], c[0], channels == 2 ? c[1] : !isClear);
                    } else {
                        expected = Brightness(c[0], c[1], c[2], channels == 4 ? c[3] : 1);
                    }
                    ASSERT_NEAR(read->values[k], expected, 1e-7)
                        << "pixel " << k << ", colours " << colours << ", depth " << depth
                        << ", variant " << variant;
                }
            }
        }
    }
}

/// Returns four blocks, each of one colour.
std::vector<JSAMPLE> Blocks(const std::vector<std::vector<JSAMPLE>>& colours) {
    std::vector<JSAMPLE> pixels;
    for (std::size_t k = 0; k < 32 * 32; k++) {
        const std::vector<JSAMPLE>& colour = colours[k / 32 / 16 * 2 + k % 32 / 16];
        pixels.insert(pixels.end(), colour.begin(), colour.end());
    }
    return pixels;
}

TEST(PictureFile, ReadsEveryKindOfJpeg) {
    const std::vector<std::vector<JSAMPLE>> grey{{0}, {100}, {180}, {255}};
    const std::vector<std::vector<JSAMPLE>> colours{
        {255, 0, 0}, {20, 200, 90}, {0, 30, 250}, {128, 128, 128}};
    const std::vector<std::vector<JSAMPLE>> inks{
        {0, 255, 255, 255}, {200, 100, 50, 0}, {255, 255, 255, 100}, {9, 8, 7, 240}};
    struct Kind {
        test::JpegForm form;
        const std::vector<std::vector<JSAMPLE>>& colours;
    };
    const Kind kinds[] = {{{JCS_GRAYSCALE, 1}, grey}, {{JCS_GRAYSCALE, 1, true}, grey},
                          {{JCS_RGB, 3}, colours},    {{JCS_RGB, 3, true}, colours},
                          {{JCS_CMYK, 4}, inks},      {{JCS_CMYK, 4, true, false}, inks}};
    for (const auto& [form, of] : kinds) {
        const auto read = DecodePicture(test::Jpeg(32, 32, form, Blocks(of)));
        ASSERT_TRUE(read) << read.Fault().text;
        for (std::size_t block = 0; block < 4; block++) {
            std::array<double, 4> c{};
            for (std::size_t i = 0; i < of[block].size(); i++)
                c[i] = of[block][i] / 255.0;
            if (form.space == JCS_CMYK) {
                for (double& ink : c)
                    ink = form.adobe ? ink : 1 - ink;
                for (std::size_t i = 0; i < 3; i++)
                    c[i] *= c[3];
            } else if (form.space == JCS_GRAYSCALE) {
                c[1] = c[2] = c[0];
            }
            const std::size_t middle = (block / 2 * 16 + 8) * 32 + block % 2 * 16 + 8;
            EXPECT_NEAR(read->values[middle], Brightness(c[0], c[1], c[2], 1), 0.017)
                << "block " << block << ", space " << form.space << ", adobe " << form.adobe;
        }
    }
}

/// Returns EXIF data with only that tag, in either byte order.
std::string Exif(int orientation, bool little) {
    const auto number = [&](unsigned value, int count) {
        std::string bytes;
        for (int i = 0; i < count; i++)
            bytes += char(value >> 8 * unsigned(little ? i : count - 1 - i));
        return bytes;
    };
    return (little ? "II" : "MM") + number(42, 2) + number(8, 4) + number(1, 2) +
           number(0x0112, 2) + number(3, 2) + number(1, 4) + number(unsigned(orientation), 2) +
           number(0, 6);
}

TEST(PictureFile, TurnsAPictureAsItsExifTells) {
    // F, and its pixels in files with each orientation (CIPA DC-008).
    const std::string upright = "##"
                                "#."
                                "##"
                                "#."
                                "#.";
    const char* stored[] = {"",           "###.###.#.", "##.###.#.#", ".#.###.###", "#.#.###.##",
                            "######.#..", "#.#..#####", "..#.######", "#####..#.#"};
    for (int orientation = 1; orientation <= 8; orientation++) {
        const bool swapped = orientation >= 5;
        const unsigned width = swapped ? 5 : 2, height = swapped ? 2 : 5;
        std::vector<png_byte> pixels;
        for (const char pixel : std::string(stored[orientation]))
            pixels.push_back(pixel == '#' ? 0 : 255);
        for (const bool little : {true, false}) {
            test::PngForm form;
            form.exif = Exif(orientation, little);
            const auto read = DecodePicture(test::Png(width, height, form, pixels));
            ASSERT_TRUE(read) << read.Fault().text;
            std::string seen;
            for (const float value : read->values)
                seen += value < 0 ? '#' : '.';
            EXPECT_EQ(read->width, 2);
            EXPECT_EQ(seen, upright) << orientation;
        }
    }
    test::JpegForm turned;
    turned.app1 = std::string("Exif\0\0", 6) + Exif(6, true);
    std::vector<JSAMPLE> pixels(32 * 8, 0);
    pixels[0] = 255;
    const auto read = DecodePicture(test::Jpeg(32, 8, turned, pixels));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->width, 8);
    EXPECT_GT(read->values[7], 0.9F) << "the first row is at the right";
    for (std::size_t cut = 0; cut < turned.app1.size(); cut++) {
        test::JpegForm damaged;
        damaged.app1 = turned.app1.substr(0, cut);
        EXPECT_EQ(DecodePicture(test::Jpeg(32, 8, damaged, pixels))->width, cut < 26 ? 32 : 8)
            << cut;
    }
}

/// Returns one file for each path through the decoders.
std::vector<std::string> SmallFiles() {
    std::vector<std::string> files;
    for (const bool interlaced : {false, true}) {
        test::PngForm form{PNG_COLOR_TYPE_RGB, 8, interlaced, 0, Exif(6, true)};
        files.push_back(test::Png(11, 7, form, RandomBytes(11 * 7 * 3)));
    }
    files.push_back(test::Png(11, 7, {PNG_COLOR_TYPE_PALETTE, 4, false, 2, ""}, RandomBytes(64)));
    for (const test::JpegForm& form :
         {test::JpegForm{JCS_RGB, 3}, {JCS_RGB, 3, true}, {JCS_CMYK, 4}})
        files.push_back(
            test::Jpeg(16, 16, form, RandomBytes(std::size_t(16 * 16 * form.channels))));
    return files;
}

TEST(PictureFile, RefusesWhatIsCutAndSurvivesWhatIsDamaged) {
    std::mt19937 random(2);
    for (const std::string& file : SmallFiles()) {
        ASSERT_TRUE(DecodePicture(file));
        for (std::size_t length = 0; length < file.size(); length++) {
            const auto read = DecodePicture(file.substr(0, length));
            // Only a JPEG file's end marker may be missing.
            if (read) {
                EXPECT_GE(length, file.size() - 2) << "of " << file.size();
            } else if (length >= 8) {
                EXPECT_THAT(read.Fault().text, HasSubstr("at byte "));
            }
        }
        for (int i = 0; i < 2000; i++) {
            std::string damaged = file;
            for (unsigned k = 0; k <= random() % 3; k++)
                damaged[random() % damaged.size()] = char(random());
            const auto read = DecodePicture(damaged);
            for (std::size_t k = 0; read && k < read->values.size(); k++)
                ASSERT_LE(std::abs(read->values[k]), 1.0F);
        }
    }
}

/// Returns the file with a chunk inserted before the pixels.
std::string WithChunk(std::string file, const std::string& name, const std::string& data) {
    const std::string body = name + data;
    const auto number = [](unsigned long value) {
        return std::string{char(value >> 24), char(value >> 16), char(value >> 8), char(value)};
    };
    unsigned long sum = 0xFFFFFFFF;
    for (const char byte : body) {
        sum ^= static_cast<unsigned char>(byte);
        for (int i = 0; i < 8; i++)
            sum = sum >> 1 ^ (sum & 1 ? 0xEDB88320 : 0);
    }
    return file.insert(33, number(data.size()) + body + number(sum ^ 0xFFFFFFFF));
}

TEST(PictureFile, TakesNoMoreMemoryOrTimeThanAPictureIsWorth) {
    // The size is checked before memory is allocated.
    const std::string small = test::Png(11, 7, {}, RandomBytes(77));
    const std::string header = WithChunk("\x89PNG\r\n\x1A\n" + std::string(25, ' '), "IHDR",
                                         std::string("\x7F\0\0\0\x7F\0\0\0\x08\0\0\0\0", 13));
    const std::string wide = header.substr(0, 8) + header.substr(33);
    std::string jpeg = test::Jpeg(16, 16, {}, RandomBytes(256));
    const std::size_t frame = jpeg.find("\xFF\xC0");
    ASSERT_NE(frame, std::string::npos);
    jpeg.replace(frame + 5, 4, "\xFF\xDC\xFF\xDC");
    const auto most = std::size_t(kits::kMostPictureSide);
    std::string largest =
        test::Png(unsigned(most), unsigned(most), {PNG_COLOR_TYPE_GRAY, 1, true, 0, ""},
                  std::vector<png_byte>(most * most / 8));
    // Texts that expand to a thousand times their length are not decompressed: these would take 70
    // MB.
    test::PngForm form;
    form.text.assign(7'000'000, 'x');
    const std::string texts = test::Png(1, 1, form, {0});
    const std::size_t packed = texts.find("zTXt") - 4;
    const std::string chunk = texts.substr(packed, texts.find("IDAT") - 4 - packed);
    for (int i = 0; i < 10; i++)
        largest.insert(33, chunk);
    const auto work = [&] {
        const auto first = DecodePicture(wide + small.substr(33));
        ASSERT_FALSE(first);
        EXPECT_EQ(first.Fault().text,
                  "it has 2130706432 x 2130706432 pixels; a side may have 4096");
        const auto second = DecodePicture(jpeg);
        ASSERT_FALSE(second);
        EXPECT_THAT(second.Fault().text, HasSubstr("65500 x 65500 pixels"));
        const auto read = DecodePicture(largest);
        ASSERT_TRUE(read) << read.Fault().text;
        EXPECT_EQ(std::ranges::count(read->values, -1.0F), std::ptrdiff_t(most * most));
    };
    if (test::kSanitized)
        work();
    else
        test::WithMemoryLeft(80 << 20, work);
    if (!test::kSanitized) {
        const test::TemporaryFolder folder;
        const auto path = folder.Write("large.png", largest);
        test::WithMemoryLeft(32 << 20, [&] {
            const auto read = kits::ReadPicture(path);
            ASSERT_FALSE(read);
            EXPECT_THAT(read.Fault().text,
                        testing::AllOf(HasSubstr("large.png"), HasSubstr("not enough memory")));
        });
    }

    std::string scans = test::Jpeg(16, 16, {JCS_RGB, 3, true}, RandomBytes(768));
    const std::size_t begin = scans.find("\xFF\xDA");
    const std::size_t end = scans.find("\xFF\xC4", begin);
    ASSERT_NE(end, std::string::npos);
    const std::string scan = scans.substr(begin, end - begin);
    for (int i = 0; i < 200; i++)
        scans.insert(end, scan);
    const auto read = DecodePicture(scans);
    ASSERT_FALSE(read);
    EXPECT_THAT(read.Fault().text, HasSubstr("too many scans"));
}

TEST(PictureFile, GoesByTheContentAndNamesTheFile) {
    const test::TemporaryFolder folder;
    EXPECT_TRUE(kits::ReadPicture(folder.Write("a.wav", test::Png(3, 2, {}, RandomBytes(6)))));
    ASSERT_EQ(::mkfifo((folder.Path() / "pipe.png").c_str(), 0600), 0);
    folder.Write("a.gif", "GIF89a and more");
    folder.Write("empty.png", "");
    folder.Write("cut.png", test::Png(3, 2, {}, RandomBytes(6)).substr(0, 45));
    for (const auto& [name, reason] :
         {std::pair{"none.png", "No such file"},
          {"pipe.png", "pipe"},
          {"", ""},
          {"a.gif", "neither PNG nor JPEG"},
          {"empty.png", "neither PNG nor JPEG"},
          {"cut.png", "cut.png: at byte 41: the file ends too early"}}) {
        const auto read = kits::ReadPicture(folder.Path() / name);
        ASSERT_FALSE(read) << name;
        EXPECT_THAT(read.Fault().text, testing::AllOf(HasSubstr(name), HasSubstr(reason)));
    }
}

} // namespace
