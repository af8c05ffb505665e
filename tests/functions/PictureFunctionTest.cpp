// SPDX-License-Identifier: GPL-3.0-or-later
#include "functions/PictureFunction.h"

#include "functions/PictureLoops.h"

#include <array>
#include <bit>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

namespace {

using vexa::Picture;
using vexa::PictureTerrain;
using vexa::PlaneFunction;

Picture Noise(int width, int height) {
    kits::BrightnessMap map{width, height, std::vector<float>(std::size_t(width * height))};
    std::mt19937 random(1);
    for (float& value : map.values)
        value = static_cast<float>(random()) / 2147483648.0F - 1;
    return std::make_shared<const kits::BrightnessMap>(std::move(map));
}

/// Returns the mean of the pixels, weighted by their overlap with a pixel-sized square around the
/// point: another form of bilinear interpolation.
double Reference(const kits::BrightnessMap& map, double x, double y) {
    const double pixel = 10.0 / std::max(map.width, map.height);
    const double left = map.width * -pixel / 2, top = map.height * pixel / 2;
    double sum = 0;
    for (int row = -1; row <= map.height; row++) {
        const double down = std::max(0.0, 1 - std::abs((top - y) / pixel - row - 0.5));
        for (int column = -1; down > 0 && column <= map.width; column++) {
            const double across = std::max(0.0, 1 - std::abs((x - left) / pixel - column - 0.5));
            sum += down * across *
                   double(map.values[std::size_t(std::clamp(row, 0, map.height - 1) * map.width +
                                                 std::clamp(column, 0, map.width - 1))]);
        }
    }
    return sum;
}

TEST(PictureFunction, IsBilinearAndSpansTenByItsLongerSide) {
    std::mt19937 random(2);
    for (const auto& [width, height] :
         {std::pair{40, 30}, {7, 50}, {1, 1}, {1, 9}, {2, 1}, {600, 400}}) {
        const Picture picture = Noise(width, height);
        const PlaneFunction f = std::make_shared<PictureTerrain>(picture);
        double worst = 0;
        const double pixel = 10.0 / std::max(width, height);
        for (int i = 0; i < 2000; i++) {
            const float x = (float(random()) / 4294967296.0F - 0.5F) * float(pixel * (width + 1));
            const float y = (float(random()) / 4294967296.0F - 0.5F) * float(pixel * (height + 1));
            worst = std::max(worst, std::abs(f(x, y) - Reference(*picture, x, y)));
        }
        // A position among 600 pixels has a resolution of 2^-15 pixel.
        EXPECT_LT(worst, 1e-4) << width << " x " << height;
    }
    // As on the screen: the second pixel is right of the first, the second row below.
    const Picture corners = std::make_shared<const kits::BrightnessMap>(
        kits::BrightnessMap{2, 2, {0.1F, 0.2F, 0.3F, 0.4F}});
    const PlaneFunction f = std::make_shared<PictureTerrain>(corners);
    const float far = std::numeric_limits<float>::infinity();
    for (const float at : {2.5F, 5.0F, 1e9F, far}) {
        EXPECT_EQ(f(-at, at), 0.1F) << at;
        EXPECT_EQ(f(at, at), 0.2F) << at;
        EXPECT_EQ(f(-at, -at), 0.3F) << at;
        EXPECT_EQ(f(at, -at), 0.4F) << at;
    }
    EXPECT_EQ(f(NAN, -far), 0.3F);
    EXPECT_EQ(f(far, NAN), 0.2F);
}

TEST(PictureFunction, HasABlockFormOfTheSameBits) {
    const Picture picture = Noise(301, 255);
    const PlaneFunction f = std::make_shared<PictureTerrain>(picture);
    const vexa::PicturePlane plane{picture->values.data(), 300, 254, 30.1F, 150, 127};
    std::vector<float> x, y;
    for (const float first :
         {0.0F, -0.0F, 1e-40F, 5.0F, -5.0F, -1e30F, 3.4e38F, INFINITY, -INFINITY, NAN}) {
        for (const float second : {0.0F, 1.0F, -4.2F, 1e30F, INFINITY, -INFINITY, NAN}) {
            x.insert(x.end(), {first, second});
            y.insert(y.end(), {second, first});
        }
    }
    std::mt19937 random(3);
    for (int i = 0; i < 100000; i++) {
        x.push_back(float(random()) / 4e8F - 5.4F);
        y.push_back(float(random()) / 4e8F - 5.4F);
    }
    std::vector<float> values(x.size());
    for (const vexa::PictureLoops* loops : vexa::RunnablePictureLoops()) {
        loops->Values(plane, x.data(), y.data(), values.data(), x.size());
        for (std::size_t i = 0; i < x.size(); i++)
            ASSERT_EQ(std::bit_cast<int>(values[i]),
                      std::bit_cast<int>(vexa::PictureValue(plane, x[i], y[i])))
                << loops->name << " at " << x[i] << ", " << y[i];
    }
    f.Evaluate(x.data(), y.data(), values.data(), x.size());
    for (std::size_t i = 0; i < x.size(); i++)
        ASSERT_EQ(std::bit_cast<int>(values[i]), std::bit_cast<int>(f(x[i], y[i])));
}

} // namespace
