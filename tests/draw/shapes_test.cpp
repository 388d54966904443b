#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>

#include "fbcompose/draw.h"
#include "image_words.hpp"

namespace {

using Points = std::vector<xg_point>;

constexpr xg_area kWhole{0, 0, 8, 6};
constexpr xg_area kHuge{-100, -100, 100, 100};
constexpr xg_area kEverywhere{INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX};
constexpr const char *kNothing = "........ ........ ........ ........ ........ ........";

TEST(LineDraw, TouchesExactlyThesePixels) {
    struct Case {
        int32_t x0, y0, x1, y1;
        xg_area clip;
        const char *expected;
    };
    const Case cases[] = {
        // Straight lines omit their far end, whichever way they run.
        {1, 2, 5, 2, kWhole, "........ ........ .####... ........ ........ ........"},
        {5, 2, 1, 2, kWhole, "........ ........ .####... ........ ........ ........"},
        {3, 1, 3, 4, kWhole, "........ ...#.... ...#.... ...#.... ........ ........"},
        // A vertical right of the clip, or a horizontal below it, is still
        // drawn; left of it or above it, not.
        {6, 0, 6, 3, {0, 0, 4, 6}, "......#. ......#. ......#. ........ ........ ........"},
        {1, 0, 1, 3, {2, 0, 8, 6}, kNothing},
        {0, 5, 3, 5, {0, 0, 8, 3}, "........ ........ ........ ........ ........ ###....."},
        {0, 0, 5, 0, {0, 1, 8, 6}, kNothing},
        // Straight lines clipped along their length.
        {2, 0, 2, 6, {0, 2, 8, 4}, "........ ........ ..#..... ..#..... ........ ........"},
        {0, 1, 8, 1, {2, 0, 5, 6}, "........ ..###... ........ ........ ........ ........"},
        // A point, inside and outside the clip.
        {4, 4, 4, 4, kWhole, "........ ........ ........ ........ ....#... ........"},
        {4, 4, 4, 4, {0, 0, 4, 4}, kNothing},
        // Sloped lines, x-major and y-major, draw both ends.
        {0, 0, 6, 2, kWhole, "##...... ..###... .....##. ........ ........ ........"},
        {7, 5, 5, 0, kWhole, ".....#.. .....#.. ......#. ......#. .......# .......#"},
        // The box has no +1 on x: a line ending on the clip's left column is
        // dropped whole, while one ending on its top row is drawn.
        {0, 0, 3, 2, {3, 0, 8, 6}, kNothing},
        {0, 0, 6, 2, {0, 2, 8, 6}, "........ ........ .....##. ........ ........ ........"},
        // End points and clips anywhere in the int32 range: the walk starts
        // where the clip and the image do.
        {INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX, kWhole,
         "#....... .#...... ..#..... ...#.... ....#... .....#.."},
        {INT32_MIN, -(1 << 30), INT32_MAX - 1, (1 << 30) - 1, kWhole,
         "#....... .##..... ...##... .....##. .......# ........"},
        {3, INT32_MAX, 3, INT32_MIN, kEverywhere,
         "...#.... ...#.... ...#.... ...#.... ...#.... ...#...."},
        {INT32_MAX, 1, INT32_MIN, 1, kEverywhere,
         "........ ######## ........ ........ ........ ........"},
        // A clip larger than the image is held to the image.
        {8, -50, 8, 50, kHuge, kNothing},
        {-50, 5, 50, 5, kHuge, "........ ........ ........ ........ ........ ########"},
        {-20, -20, 20, 20, kHuge, "#....... .#...... ..#..... ...#.... ....#... .....#.."},
    };
    for (const Case &c : cases) {
        test::Image image = test::blank_alpha(8, 6);
        xc_line_draw(image.get(), &c.clip, c.x0, c.y0, c.x1, c.y1, 0xFFFFFFFF);
        EXPECT_EQ(test::picture(image.get()), c.expected) << c.x0 << "," << c.y0 << " to " << c.x1;
    }
}

TEST(LineDraw, JumpingToTheClipChangesNoPixel) {
    // A line drawn through a clip that starts (or ends) part way along it
    // equals the line drawn whole, cut to that clip: the walk jumps to the
    // clip instead of stepping up to it.
    std::mt19937 random(5);
    for (int round = 0; round < 400; ++round) {
        const int32_t x0 = random() % 64, y0 = random() % 64;
        const int32_t x1 = random() % 64, y1 = random() % 64;
        if (x0 == x1 || y0 == y1) continue;
        test::Image whole = test::blank_alpha(64, 64);
        const xg_area all{0, 0, 64, 64};
        xc_line_draw(whole.get(), &all, x0, y0, x1, y1, 0xFFFFFFFF);
        for (const xg_area &clip : {xg_area{20, 13, 64, 64}, xg_area{0, 0, 41, 29}}) {
            // The box without +1 on x drops a line ending on the clip's left column.
            if (std::max(x0, x1) == clip.x1) continue;
            test::Image part = test::blank_alpha(64, 64);
            xc_line_draw(part.get(), &clip, x0, y0, x1, y1, 0xFFFFFFFF);
            for (int32_t y = 0; y < 64; ++y)
                for (int32_t x = 0; x < 64; ++x) {
                    const bool in = x >= clip.x1 && x < clip.x2 && y >= clip.y1 && y < clip.y2;
                    ASSERT_EQ(test::at(part.get(), x, y), in ? test::at(whole.get(), x, y) : 0u)
                        << x0 << "," << y0 << " to " << x1 << "," << y1 << " at " << x << "," << y;
                }
        }
    }
}

TEST(LineDraw, StraightLinesAndPointsBlendTheColourAsGivenTruncatedToTheByte) {
    // A line to (x1, 0), from 0 a point. Alpha 128 over zero: the colour
    // bytes land as given, not premultiplied. Over 0xFF bytes, shifted by 8
    // and truncated: (255 - 128) x 255 >> 8 = 126; red 126 + 255 stores 125.
    for (const auto &[before, x1, colour, want] :
         {std::tuple{0, 2, 0x80C86420u, 0x80C86420u}, {0xFF, 0, 0x80FF0040u, 0xFE7D7EBEu}}) {
        test::Image image = test::blank_alpha(2, 2);
        std::memset(image->data, before, 16);
        xc_line_draw(image.get(), &kWhole, 0, 0, x1, 0, colour);
        EXPECT_EQ(test::at(image.get(), 0, 0), want) << std::hex << colour;
    }
}

TEST(LineDraw, ImageWithoutPixelsOrWithSixteenBitRowsIsSkipped) {
    test::Image empty{xc_image_new()};
    empty->width = empty->height = 4;
    xc_line_draw(empty.get(), &kWhole, 0, 0, 3, 3, 0xFFFFFFFF);
    std::vector<uint16_t> words(16, 0);
    test::Image rgb16{xc_image_new_from_data(4, 4, words.data(), 16, 0, 1)};
    xc_line_draw(rgb16.get(), &kWhole, 0, 3, 4, 3, 0xFFFFFFFF);
    EXPECT_EQ(words, std::vector<uint16_t>(16, 0));
}

constexpr xg_area kAll{0, 0, 10, 10};

test::Image fill(Points points, const xg_area &clip, int32_t x_offset, int32_t y_offset,
                 uint32_t colour = 0xFFFFFFFF, int32_t size = 10) {
    xg_list *list = nullptr;
    for (xg_point &p : points) list = xg_list_append(list, &p);
    test::Image image = test::blank_alpha(size, size);
    xc_polygon_draw(image.get(), &clip, x_offset, y_offset, list, colour);
    xg_list_free(list);
    return image;
}

// Points written "x,y x,y ...".
Points points_of(const char *text) {
    Points out;
    for (int x, y, n; std::sscanf(text, "%d,%d%n", &x, &y, &n) == 2; text += n)
        out.push_back({x, y});
    return out;
}

TEST(PolygonDraw, TopRowInBottomRowOutWithinTheClip) {
    const char *triangle = "0,0 8,0 0,8";
    const struct {
        const char *points;
        xg_area clip;
        std::string top_rows;
    } cases[] = {
        {triangle, kAll,
         "########.. #######... ######.... #####..... ####...... ###....... ##........ #........."},
        {triangle,
         {2, 2, 6, 6},
         ".......... .......... ..####.... ..###..... ..##...... ..#......."},
        // A clip beyond the image is held to it.
        {"-20,-20 30,-20 30,30 -20,30",
         {-50, -50, 50, 50},
         "########## ########## ########## ########## ########## "
         "########## ########## ########## ########## ##########"},
        // No points, horizontal edges only, an empty clip.
        {"", kAll, ""},
        {"1,3 8,3", kAll, ""},
        {triangle, {5, 5, 5, 9}, ""},
    };
    // Rows below those given are empty.
    const std::string blank = test::picture(test::blank_alpha(10, 10).get());
    for (const auto &c : cases) {
        const test::Image image = fill(points_of(c.points), c.clip, 0, 0);
        EXPECT_EQ(test::picture(image.get()), c.top_rows + blank.substr(c.top_rows.size()))
            << c.points;
    }
}

TEST(PolygonDraw, ManyPointsUseTheHeapAndStillFill) {
    // A zig-zag of 1000 points: far more edge records than the stack holds.
    Points points;
    for (int i = 0; i < 1000; ++i) points.push_back({i % 2 ? 9 : 8, i / 100});
    points.push_back({0, 9});
    points.push_back({0, 0});
    const std::string picture = test::picture(fill(points, kAll, 0, 0).get());
    EXPECT_EQ(picture.substr(0, 8), "########");
    EXPECT_EQ(picture.substr(99), "..........");
}

TEST(PolygonDraw, ScanlinesAboveTheClipAreSkippedWithoutChangingARow) {
    // Rows from a clip's top down equal those of the fill from the image's
    // top, which steps every scanline; vertices on a coarse grid make edges
    // that run parallel and cross, so keys tie.
    std::mt19937 random(20240611);
    for (int round = 0; round < 300; ++round) {
        Points points(3 + random() % 10);
        for (xg_point &p : points)
            p = {int32_t(random() % 12) * 7 - 10, int32_t(random() % 9) * 8 - 4};
        const std::string whole = test::picture(fill(points, {0, 0, 64, 64}, 0, 4, ~0u, 64).get());
        for (int32_t top : {3, 17, 40}) {
            const std::string part =
                test::picture(fill(points, {0, top, 64, 64}, 0, 4, ~0u, 64).get());
            const size_t cut = size_t(top) * 65;
            EXPECT_EQ(part.substr(cut), whole.substr(cut)) << round << " from row " << top;
            EXPECT_EQ(part.find('#'), part.find('#', cut)) << round << " above row " << top;
        }
    }
    // A vertex at the far top: only the clip's rows are visited, and they
    // are those of the same edges starting just above the image (edges this
    // long and steep run straight down; the second pair draws nothing).
    const struct {
        Points far, near;
    } cases[] = {
        {{{3, INT32_MIN}, {12, INT32_MIN}, {12, 19}}, {{3, -5}, {12, -5}, {12, 19}, {3, 19}}},
        {{{0, -100000000}, {40, 19}, {0, 19}}, {}},
    };
    for (const auto &c : cases) {
        const std::string drawn = test::picture(fill(c.far, {0, 0, 20, 20}, 0, 0, ~0u, 20).get());
        EXPECT_EQ(drawn, test::picture(fill(c.near, {0, 0, 20, 20}, 0, 0, ~0u, 20).get()));
        EXPECT_EQ(drawn.find('#') == std::string::npos, c.near.empty());
    }
}

TEST(RectangleDraw, ClipsTheCallersAreaInPlaceAndFillsIt) {
    struct Case {
        xg_area clip, area;
        uint32_t colour;
        xg_area clipped;
        const char *expected;
    };
    const char *nothing = "...... ...... ...... ......";
    const Case cases[] = {
        {{1, 1, 5, 3}, {-3, 2, 3, 10}, 0xFFFFFFFF, {1, 2, 3, 3}, "...... ...... .##... ......"},
        {{0, 0, 2, 2}, {2, 0, 4, 4}, 0xFFFFFFFF, {2, 0, 2, 2}, nothing},
        // A transparent colour returns before clipping.
        {{0, 0, 2, 2}, {-5, -5, 10, 10}, 0x00FFFFFF, {-5, -5, 10, 10}, nothing},
        // Corners anywhere in the int32 range.
        {{0, 0, 6, 4}, {1, 1, INT32_MIN, INT32_MIN}, ~0u, {1, 1, INT32_MIN, INT32_MIN}, nothing},
        {{1, 1, 5, 3}, kEverywhere, ~0u, {1, 1, 5, 3}, "...... .####. .####. ......"},
    };
    for (const Case &c : cases) {
        test::Image image = test::blank_alpha(6, 4);
        xg_area area = c.area;
        xc_rectangle_draw(image.get(), &c.clip, &area, c.colour);
        EXPECT_EQ(test::picture(image.get()), c.expected);
        EXPECT_EQ(test::corners(area), test::corners(c.clipped));
    }
}

}  // namespace
