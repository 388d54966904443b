#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "fbcompose/transform.h"
#include "images.hpp"

namespace {

using test::Words;

// 3 x 2, pixel value = its label:  1 2 3 / 4 5 6
xc_image *labelled() { return test::canvas(3, 2, Words{1, 2, 3, 4, 5, 6}); }

Words turned(xc_image *src, int32_t degrees, int32_t *w = nullptr, int32_t *h = nullptr) {
    xc_image *out = xc_image_new_from_rotated_image(src, degrees);
    if (w) *w = out->width;
    if (h) *h = out->height;
    Words words = test::all(out);
    xc_image_unref(out);
    return words;
}

TEST(Rotate, QuarterTurnsPermuteExactly) {
    xc_image *src = labelled();
    const struct {
        int32_t degrees, w, h;
        Words expected;
    } cases[] = {
        {0, 3, 2, {1, 2, 3, 4, 5, 6}},   {90, 2, 3, {4, 1, 5, 2, 6, 3}},
        {180, 3, 2, {6, 5, 4, 3, 2, 1}}, {270, 2, 3, {3, 6, 2, 5, 1, 4}},
        {-90, 2, 3, {3, 6, 2, 5, 1, 4}}, {450, 2, 3, {4, 1, 5, 2, 6, 3}},
        {-720, 3, 2, {1, 2, 3, 4, 5, 6}},
    };
    for (const auto &c : cases) {
        int32_t w = 0, h = 0;
        EXPECT_EQ(turned(src, c.degrees, &w, &h), c.expected) << c.degrees;
        EXPECT_EQ(w, c.w) << c.degrees;
        EXPECT_EQ(h, c.h) << c.degrees;
    }
    xc_image_unref(src);
}

TEST(Rotate, QuarterTurnKeepsTheFormatAndSixteenBitPixels) {
    std::vector<uint16_t> words{1, 2, 3, 4, 5, 6};
    xc_image *src = xc_image_new_from_data(3, 2, words.data(), 16, 0, 1);
    xc_image *out = xc_image_new_from_rotated_image(src, 90);
    EXPECT_EQ(out->depth, 16u);
    EXPECT_EQ(out->rowstride, 4);
    auto *p = reinterpret_cast<uint16_t *>(out->data);
    EXPECT_EQ(std::vector<uint16_t>(p, p + 6), (std::vector<uint16_t>{4, 1, 5, 2, 6, 3}));
    xc_image_unref(out);
    xc_image_unref(src);
    xc_image *canvas = labelled();
    xc_image *turned_canvas = xc_image_new_from_rotated_image(canvas, 270);
    EXPECT_EQ(turned_canvas->format, 1u);
    EXPECT_EQ(turned_canvas->depth, 24u);
    EXPECT_EQ(turned_canvas->has_alpha, 0u);
    EXPECT_EQ(turned_canvas->no_cache, 1u);
    xc_image_unref(turned_canvas);
    xc_image_unref(canvas);
}

TEST(Rotate, TurnThenTurnBackIsTheIdentity) {
    xc_image *src = test::painted(7, 5, [](int x, int y) { return uint32_t(x * 31 + y * 7); });
    for (int32_t degrees : {90, 180, 270}) {
        xc_image *there = xc_image_new_from_rotated_image(src, degrees);
        xc_image *back = xc_image_new_from_rotated_image(there, 360 - degrees);
        EXPECT_EQ(test::all(back), test::all(src)) << degrees;
        xc_image_unref(back);
        xc_image_unref(there);
    }
    xc_image_unref(src);
}

TEST(Rotate, OtherAnglesFillTheBoundingBoxWithTransparentCorners) {
    xc_image *src = test::canvas(20, 10, 0x00406080u);  // opaque source: alpha byte ignored
    const struct {
        int32_t degrees, w, h;
    } cases[] = {{45, 22, 22}, {30, 23, 19}, {-30, 23, 19}, {135, 22, 22}, {1, 21, 11}};
    for (const auto &c : cases) {
        xc_image *out = xc_image_new_from_rotated_image(src, c.degrees);
        EXPECT_EQ(out->width, c.w) << c.degrees;
        EXPECT_EQ(out->height, c.h) << c.degrees;
        EXPECT_EQ(out->format, 0u);
        EXPECT_EQ(out->has_alpha, 1u);
        if (c.degrees != 1) {
            EXPECT_EQ(test::at(out, 0, 0), 0u) << c.degrees;
            EXPECT_EQ(test::at(out, c.w - 1, c.h - 1), 0u) << c.degrees;
        }
        // The interior of a constant opaque image stays exactly that colour.
        EXPECT_EQ(test::at(out, c.w / 2, c.h / 2), 0xFF406080u) << c.degrees;
        // Edges are antialiased: alpha somewhere strictly between 0 and 255,
        // and colour never exceeds alpha (premultiplied).
        bool partial = false;
        for (uint32_t v : test::all(out)) {
            const uint32_t a = v >> 24;
            partial |= a > 0 && a < 255;
            EXPECT_LE(v >> 16 & 0xFF, a);
        }
        EXPECT_TRUE(partial) << c.degrees;
        xc_image_unref(out);
    }
    xc_image_unref(src);
}

TEST(Rotate, SmallAngleStaysCloseToTheSource) {
    // A horizontal gradient turned by 1 degree: the box grows to 22 x 12, so
    // the middle row sits half a pixel left of the source's columns (5 grey
    // levels) and keeps its values within what the tilt moves them.
    xc_image *src = test::painted(21, 11, [](int x, int) { return test::grey(uint32_t(10 * x)); });
    xc_image *out = xc_image_new_from_rotated_image(src, 1);
    for (int32_t x = 2; x < 19; ++x) {
        const int32_t got = static_cast<int32_t>(test::at(out, x, 5) & 0xFF);
        EXPECT_NEAR(got, 10 * x - 5, 2) << x;
    }
    xc_image_unref(out);
    xc_image_unref(src);
}

TEST(Rotate, RefusesImagesWithoutPixelsOrTooLarge) {
    xc_image *empty = xc_image_new();
    empty->width = empty->height = 4;
    xc_image *huge = xc_image_new_with_data(20000, 1, nullptr, 1, 0, 0, 0);
    for (xc_image *image : {empty, huge}) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(xc_image_new_from_rotated_image(image, 30), nullptr);
        EXPECT_NE(testing::internal::GetCapturedStdout().find("xc_image_new_from_rotated_image"),
                  std::string::npos);
    }
    xc_image_unref(huge);
    xc_image_unref(empty);
}

}  // namespace
