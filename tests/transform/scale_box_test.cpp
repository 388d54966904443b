#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "fbcompose/transform.h"
#include "images.hpp"

namespace {

using test::Words;

xc_image *ramp(int32_t w, int32_t h) {
    return test::painted(w, h, [](int x, int y) { return test::grey(uint32_t(8 * x + 40 * y)); });
}

TEST(ScaleDown, TwoByTwoAndFourByFourBlocksAreAveraged) {
    xc_image *src = ramp(8, 4);
    xc_image *half = xc_image_scale_down_2x(src);
    ASSERT_EQ(half->width, 4);
    ASSERT_EQ(half->height, 2);
    // Block (0, 0): x 0, 1 and y 0, 1 -> (0 + 8 + 40 + 48) / 4 = 24.
    EXPECT_EQ(test::row(half, 0), (Words{test::grey(24), test::grey(40), test::grey(56), test::grey(72)}));
    EXPECT_EQ(test::at(half, 0, 1), test::grey(104));
    EXPECT_EQ(half->format, 1u);
    xc_image *quarter = xc_image_scale_down_4x(src);
    ASSERT_EQ(quarter->width, 2);
    ASSERT_EQ(quarter->height, 1);
    EXPECT_EQ(test::row(quarter, 0), (Words{test::grey(72), test::grey(104)}));
    xc_image_unref(quarter);
    xc_image_unref(half);
    xc_image_unref(src);
}

TEST(ScaleDown, OddEdgesAndTinyImages) {
    xc_image *src = ramp(5, 1);
    xc_image *half = xc_image_scale_down_2x(src);
    ASSERT_EQ(half->width, 2);
    ASSERT_EQ(half->height, 1);
    // Boxes of 3 and 2: (0 + 8 + 16) / 3 = 8, (24 + 32) / 2 = 28.
    EXPECT_EQ(test::row(half, 0), (Words{test::grey(8), test::grey(28)}));
    xc_image *quarter = xc_image_scale_down_4x(half);
    EXPECT_EQ(quarter->width, 1);
    EXPECT_EQ(test::at(quarter, 0, 0), test::grey(18));
    xc_image_unref(quarter);
    xc_image_unref(half);
    xc_image_unref(src);
}

TEST(ScaleDown, AlphaSourcesGiveAlphaResults) {
    std::vector<uint32_t> words{0x80402010, 0x80402010, 0x00000000, 0x00000000};
    xc_image *src = xc_image_new_from_data(2, 2, words.data(), 32, 0, 1);
    xc_image *half = xc_image_scale_down_2x(src);
    EXPECT_EQ(half->has_alpha, 1u);
    EXPECT_EQ(test::at(half, 0, 0), 0x40201008u);
    xc_image_unref(half);
    xc_image_unref(src);
}

TEST(ScaleDown, StagedReductionReachesTheTargetAndKeepsConstants) {
    xc_image *src = test::canvas(100, 60, 0xFF336699u);
    xc_image *small = xc_image_scale_down_xy_2(src, 12, 7);
    ASSERT_NE(small, nullptr);
    EXPECT_EQ(small->width, 12);
    EXPECT_EQ(small->height, 7);
    EXPECT_EQ(test::all(small), Words(84, 0xFF336699u));
    xc_image_unref(small);
    // Halving first: a ramp reduced 8 -> 2 equals two 2x steps.
    xc_image *r = ramp(8, 8);
    xc_image *staged = xc_image_scale_down_xy_2(r, 2, 2);
    xc_image *h1 = xc_image_scale_down_2x(r);
    xc_image *h2 = xc_image_scale_down_2x(h1);
    EXPECT_EQ(test::all(staged), test::all(h2));
    xc_image_unref(h2);
    xc_image_unref(h1);
    xc_image_unref(staged);
    xc_image_unref(r);
    xc_image_unref(src);
}

TEST(ScaleDown, RefusesMissingPixelsAndBadSizes) {
    xc_image *empty = xc_image_new();
    xc_image *src = test::canvas(4, 4, 0u);
    testing::internal::CaptureStdout();
    EXPECT_EQ(xc_image_scale_down_2x(empty), nullptr);
    EXPECT_EQ(xc_image_scale_down_4x(nullptr), nullptr);
    EXPECT_EQ(xc_image_scale_down_xy_2(src, 0, 3), nullptr);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("xc_image_scale_down_2x: no pixels"), std::string::npos);
    EXPECT_NE(out.find("xc_image_scale_down_xy_2: bad size 0 x 3"), std::string::npos);
    xc_image_unref(src);
    xc_image_unref(empty);
}

TEST(Scale1d, BoxWhenShrinkingBelowHalfLinearOtherwise) {
    const Words ramp8{0, 10, 20, 30, 40, 50, 60, 70};
    Words out(3, 0xDEAD);
    xc_image_scale_1d(ramp8.data(), 8, 1, out.data(), 3, 1);
    EXPECT_EQ(out, (Words{10, 40, 65}));  // boxes 0-2, 3-5, 6-7
    Words wide(5, 0);
    const Words three{0, 100, 200};
    xc_image_scale_1d(three.data(), 3, 1, wide.data(), 5, 1);
    EXPECT_EQ(wide, (Words{0, 50, 100, 150, 200}));
}

TEST(Scale1d, StepsWalkColumnsAndCountsBelowOneDoNothing) {
    // A column of a 2-wide image into every other word of the output.
    const Words image{0, 99, 0x40, 99, 0x80, 99};
    Words out(6, 7);
    xc_image_scale_1d(image.data(), 3, 2, out.data(), 3, 2);
    EXPECT_EQ(out, (Words{0, 7, 0x40, 7, 0x80, 7}));
    xc_image_scale_1d(image.data(), 0, 1, out.data(), 3, 1);
    xc_image_scale_1d(image.data(), 3, 1, out.data(), 0, 1);
    EXPECT_EQ(out, (Words{0, 7, 0x40, 7, 0x80, 7}));
}

}  // namespace
