#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fbcompose/draw.h"
#include "grid.hpp"

namespace {

using Picture = std::vector<std::string>;

struct LineCase {
    const char *name;
    int32_t x0, y0, x1, y1;
    xg_area clip;
    Picture expected;
};

constexpr xg_area kWhole{0, 0, 8, 6};

Picture draw(const LineCase &c) {
    xc_image *image = test::blank(8, 6, true);
    xc_line_draw(image, &c.clip, c.x0, c.y0, c.x1, c.y1, 0xFFFFFFFF);
    Picture p = test::picture(image);
    xc_image_unref(image);
    return p;
}

TEST(LineDraw, TouchesExactlyThesePixels) {
    const LineCase cases[] = {
        {"horizontal omits its right end", 1, 2, 5, 2, kWhole,
         {"........", "........", ".####...", "........", "........", "........"}},
        {"horizontal drawn right to left", 5, 2, 1, 2, kWhole,
         {"........", "........", ".####...", "........", "........", "........"}},
        {"vertical omits its lower end", 3, 1, 3, 4, kWhole,
         {"........", "...#....", "...#....", "...#....", "........", "........"}},
        {"vertical right of the clip is still drawn", 6, 0, 6, 3, {0, 0, 4, 6},
         {"......#.", "......#.", "......#.", "........", "........", "........"}},
        {"vertical left of the clip draws nothing", 1, 0, 1, 3, {2, 0, 8, 6},
         {"........", "........", "........", "........", "........", "........"}},
        {"vertical rows clipped", 2, 0, 2, 6, {0, 2, 8, 4},
         {"........", "........", "..#.....", "..#.....", "........", "........"}},
        {"horizontal below the clip is still drawn", 0, 5, 3, 5, {0, 0, 8, 3},
         {"........", "........", "........", "........", "........", "###....."}},
        {"horizontal above the clip draws nothing", 0, 0, 5, 0, {0, 1, 8, 6},
         {"........", "........", "........", "........", "........", "........"}},
        {"horizontal columns clipped", 0, 1, 8, 1, {2, 0, 5, 6},
         {"........", "..###...", "........", "........", "........", "........"}},
        {"point", 4, 4, 4, 4, kWhole,
         {"........", "........", "........", "........", "....#...", "........"}},
        {"point outside the clip", 4, 4, 4, 4, {0, 0, 4, 4},
         {"........", "........", "........", "........", "........", "........"}},
        {"point off the image", 8, 0, 8, 0, {0, 0, 100, 100},
         {"........", "........", "........", "........", "........", "........"}},
        {"x-major, both ends drawn", 0, 0, 6, 2, kWhole,
         {"##......", "..###...", ".....##.", "........", "........", "........"}},
        {"x-major drawn backwards", 6, 2, 0, 0, kWhole,
         {"##......", "..###...", ".....##.", "........", "........", "........"}},
        {"y-major, both ends drawn", 0, 0, 2, 5, kWhole,
         {"#.......", "#.......", ".#......", ".#......", "..#.....", "..#....."}},
        {"y-major going up and left", 7, 5, 5, 0, kWhole,
         {".....#..", ".....#..", "......#.", "......#.", ".......#", ".......#"}},
        {"diagonal", 1, 1, 4, 4, kWhole,
         {"........", ".#......", "..#.....", "...#....", "....#...", "........"}},
        {"sloped line clipped pixel by pixel", 0, 0, 5, 5, {1, 1, 4, 3},
         {"........", ".#......", "..#.....", "........", "........", "........"}},
        // The box has no +1 on x: a line ending on the clip's left column is
        // dropped whole, while one ending on its top row is drawn.
        {"box without +1 on x drops the clip's edge column", 0, 0, 3, 2, {3, 0, 8, 6},
         {"........", "........", "........", "........", "........", "........"}},
        {"box with +1 on y keeps the clip's edge row", 0, 0, 6, 2, {0, 2, 8, 6},
         {"........", "........", ".....##.", "........", "........", "........"}},
    };
    for (const auto &c : cases) EXPECT_EQ(draw(c), c.expected) << c.name;
}

TEST(LineDraw, StraightLinesBlendTheColourAsGivenSlopedOnesPremultiplied) {
    xc_image *image = test::blank(4, 4, true);
    const xg_area clip{0, 0, 4, 4};
    // Alpha 128 over zero: as given the colour bytes land unchanged;
    // premultiplied they are halved (c * 128 >> 8).
    xc_line_draw(image, &clip, 0, 0, 2, 0, 0x80C86420);
    xc_line_draw(image, &clip, 0, 1, 1, 1 + 1, 0x80C86420);
    EXPECT_EQ(test::pixel(image, 0, 0), 0x80C86420u);
    EXPECT_EQ(test::pixel(image, 1, 0), 0x80C86420u);
    EXPECT_EQ(test::pixel(image, 0, 1), 0x80643210u);
    EXPECT_EQ(test::pixel(image, 1, 2), 0x80643210u);
    xc_image_unref(image);
}

TEST(LineDraw, BlendShiftsBySevenEightsAndTruncatesToTheByte) {
    xc_image *image = test::blank(2, 1, true);
    std::memset(image->data, 0xFF, 8);
    const xg_area clip{0, 0, 2, 1};
    xc_line_draw(image, &clip, 0, 0, 0, 0, 0x80FF0040);
    // ((255 - 128) x 255 >> 8) = 126; red 126 + 255 = 381 stores 125.
    EXPECT_EQ(test::pixel(image, 0, 0), (uint32_t{126 + 128} << 24) | (125u << 16) |
                                            (126u << 8) | (126u + 0x40));
    xc_image_unref(image);
}

TEST(LineDraw, OpaqueCanvasKeepsItsAlphaByte) {
    xc_image *image = test::blank(3, 1, false);
    const xg_area clip{0, 0, 3, 1};
    xc_line_draw(image, &clip, 0, 0, 3, 0, 0xFF102030);
    EXPECT_EQ(test::pixel(image, 0, 0), 0x00102030u);
    EXPECT_EQ(test::pixel(image, 2, 0), 0x00102030u);
    xc_image_unref(image);
}

TEST(LineDraw, ClipBeyondTheImageNeverWritesOutsideIt) {
    xc_image *image = test::blank(4, 4, true);
    const xg_area huge{-100, -100, 100, 100};
    xc_line_draw(image, &huge, 10, -50, 10, 50, 0xFFFFFFFF);
    xc_line_draw(image, &huge, -50, 9, 50, 9, 0xFFFFFFFF);
    xc_line_draw(image, &huge, -20, -20, 20, 20, 0xFFFFFFFF);
    EXPECT_EQ(test::picture(image), (Picture{"#...", ".#..", "..#.", "...#"}));
    xc_image_unref(image);
}

TEST(LineDraw, ImageWithoutPixelsOrWithSixteenBitRowsIsSkipped) {
    const xg_area clip{0, 0, 4, 4};
    xc_image *empty = xc_image_new();
    empty->width = empty->height = 4;
    xc_line_draw(empty, &clip, 0, 0, 3, 3, 0xFFFFFFFF);
    xc_image_unref(empty);
    std::vector<uint16_t> words(16, 0);
    xc_image *rgb16 = xc_image_new_from_data(4, 4, words.data(), 16, 0, 1);
    xc_line_draw(rgb16, &clip, 0, 3, 4, 3, 0xFFFFFFFF);
    EXPECT_EQ(words, std::vector<uint16_t>(16, 0));
    xc_image_unref(rgb16);
}

}  // namespace
