#include <gtest/gtest.h>

#include "drawn.hpp"

namespace {

using test::Image;
using test::Words;

TEST(Rotate, QuarterTurnsPermuteExactlyAndKeepTheFormat) {
    const Image canvas = test::canvas(3, 2, Words{1, 2, 3, 4, 5, 6});
    const struct {
        int32_t degrees, w;
        Words expected;
    } cases[] = {
        {0, 3, {1, 2, 3, 4, 5, 6}},   {90, 2, {4, 1, 5, 2, 6, 3}},  {180, 3, {6, 5, 4, 3, 2, 1}},
        {270, 2, {3, 6, 2, 5, 1, 4}}, {-90, 2, {3, 6, 2, 5, 1, 4}}, {450, 2, {4, 1, 5, 2, 6, 3}},
        {-720, 3, {1, 2, 3, 4, 5, 6}},
    };
    for (const auto &c : cases) {
        const Image out{xc_image_new_from_rotated_image(canvas.get(), c.degrees)};
        EXPECT_EQ(test::all(out.get()), c.expected) << c.degrees;
        EXPECT_EQ((std::array{out->width, out->height, int(out->format), int(out->depth)}),
                  (std::array{c.w, 6 / c.w, 1, 24}));
        EXPECT_EQ((std::array{out->has_alpha, out->no_cache}), (std::array{0u, 1u})) << c.degrees;
    }
    // Sixteen-bit pixels stay sixteen bits, in rows of width x 2 bytes.
    std::vector<uint16_t> words{1, 2, 3, 4, 5, 6};
    const Image rgb16{xc_image_new_from_data(3, 2, words.data(), 16, 0, 1)};
    const Image out{xc_image_new_from_rotated_image(rgb16.get(), 90)};
    EXPECT_EQ((std::array{int(out->depth), out->rowstride}), (std::array{16, 4}));
    const auto *p = reinterpret_cast<uint16_t *>(out->data);
    EXPECT_EQ(std::vector<uint16_t>(p, p + 6), (std::vector<uint16_t>{4, 1, 5, 2, 6, 3}));
}

TEST(Rotate, OtherAnglesFillTheBoundingBoxWithTransparentCorners) {
    const Image src = test::canvas(20, 10, 0x00406080u);  // opaque source: alpha byte ignored
    const struct {
        int32_t degrees, w, h;
    } cases[] = {{45, 22, 22}, {30, 23, 19}, {-30, 23, 19}, {135, 22, 22}, {1, 21, 11}};
    for (const auto &c : cases) {
        const Image out{xc_image_new_from_rotated_image(src.get(), c.degrees)};
        EXPECT_EQ((std::array{out->width, out->height, int(out->format), int(out->has_alpha)}),
                  (std::array{c.w, c.h, 0, 1}));
        const uint32_t corners = test::at(out.get(), 0, 0) | test::at(out.get(), c.w - 1, c.h - 1);
        EXPECT_TRUE(c.degrees == 1 || corners == 0) << c.degrees;
        // The interior of a constant opaque image stays exactly that colour.
        EXPECT_EQ(test::at(out.get(), c.w / 2, c.h / 2), 0xFF406080u) << c.degrees;
        // Edges are antialiased: alpha somewhere strictly between 0 and 255,
        // and colour never exceeds alpha (premultiplied).
        bool partial = false;
        for (uint32_t v : test::all(out.get())) {
            partial |= v >> 24 > 0 && v >> 24 < 255;
            EXPECT_LE(v >> 16 & 0xFF, v >> 24);
        }
        EXPECT_TRUE(partial) << c.degrees;
    }
}

TEST(Rotate, SmallAngleStaysCloseToTheSource) {
    // A horizontal gradient turned by 1 degree: the box grows to 22 x 12, so
    // the middle row sits half a pixel left of the source's columns (5 grey
    // levels) and keeps its values within what the tilt moves them.
    const Image src = test::painted(21, 11, [](int x, int) { return test::grey(uint32_t(10 * x)); });
    const Image out{xc_image_new_from_rotated_image(src.get(), 1)};
    for (int32_t x = 2; x < 19; ++x) EXPECT_NEAR(int32_t(test::at(out.get(), x, 5) & 0xFF), 10 * x - 5, 2) << x;
}

TEST(Rotate, RefusesImagesWithoutPixelsOrTooLarge) {
    const Image empty{xc_image_new()}, huge{xc_image_new_with_data(20000, 1, nullptr, 1, 0, 0, 0)};
    empty->width = empty->height = 4;
    for (xc_image *image : {empty.get(), huge.get()}) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(xc_image_new_from_rotated_image(image, 30), nullptr);
        EXPECT_NE(testing::internal::GetCapturedStdout().find("xc_image_new_from_rotated_image"),
                  std::string::npos);
    }
}

}  // namespace
