#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fbcompose/draw.h"
#include "grid.hpp"

namespace {

using Picture = std::vector<std::string>;

constexpr xg_area kAll{0, 0, 10, 10};

Picture fill(std::vector<xg_point> points, const xg_area &clip = kAll, int32_t x_offset = 0,
             int32_t y_offset = 0) {
    xg_list *list = nullptr;
    for (xg_point &p : points) list = xg_list_append(list, &p);
    xc_image *image = test::blank(10, 10, true);
    xc_polygon_draw(image, &clip, x_offset, y_offset, list, 0xFFFFFFFF);
    Picture picture = test::picture(image);
    xc_image_unref(image);
    xg_list_free(list);
    return picture;
}

const std::vector<xg_point> kTriangle{{0, 0}, {8, 0}, {0, 8}};

const Picture kTrianglePicture{
    "########..", "#######...", "######....", "#####.....", "####......",
    "###.......", "##........", "#.........", "..........", ".........."};

TEST(PolygonDraw, TriangleFillsTopRowNotBottomRow) {
    EXPECT_EQ(fill(kTriangle), kTrianglePicture);
}

TEST(PolygonDraw, PointOrderDoesNotMatter) {
    EXPECT_EQ(fill({{0, 8}, {8, 0}, {0, 0}}), kTrianglePicture);
}

TEST(PolygonDraw, BowTieFollowsTheEvenOddRule) {
    const Picture expected{
        "..........", "#......#..", "##....##..", "###..###..", "########..",
        "###..###..", "##....##..", "#......#..", "..........", ".........."};
    EXPECT_EQ(fill({{0, 0}, {8, 8}, {8, 0}, {0, 8}}), expected);
}

TEST(PolygonDraw, NestedSquareLeavesAHole) {
    // Outer square, then back along a path through an inner square: the
    // inner region is crossed twice.
    const Picture expected{
        "..........", ".######...", ".######...", ".##..##...", ".##..##...",
        ".######...", ".######...", "..........", "..........", ".........."};
    EXPECT_EQ(fill({{1, 1}, {7, 1}, {7, 7}, {1, 7}, {1, 1}, {3, 3}, {3, 5}, {5, 5}, {5, 3}, {3, 3}}),
              expected);
}

TEST(PolygonDraw, SteepAndShallowEdgesCoverTheirRuns) {
    // A flat wedge: edges with slopes beyond one pixel per line add `extra`.
    const Picture expected{
        "#########.", "#######...", "####......", "##........", "..........",
        "..........", "..........", "..........", "..........", ".........."};
    EXPECT_EQ(fill({{0, 0}, {9, 0}, {0, 4}}), expected);
}

TEST(PolygonDraw, OffsetsShiftByOnePixel) {
    Picture right = kTrianglePicture;
    for (std::string &row : right) {
        row.pop_back();
        row.insert(row.begin(), '.');
    }
    EXPECT_EQ(fill(kTriangle, kAll, 262144, 0), right);
    Picture down = kTrianglePicture;
    down.insert(down.begin(), "..........");
    down.pop_back();
    EXPECT_EQ(fill(kTriangle, kAll, 0, 1), down);
}

TEST(PolygonDraw, ClipBoxLimitsEverySpan) {
    const xg_area clip{2, 2, 6, 6};
    Picture expected = kTrianglePicture;
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 10; ++x)
            if (y < 2 || y >= 6 || x < 2 || x >= 6) expected[static_cast<size_t>(y)][static_cast<size_t>(x)] = '.';
    EXPECT_EQ(fill(kTriangle, clip), expected);
}

TEST(PolygonDraw, ClipBeyondTheImageIsHeldToIt) {
    const xg_area huge{-50, -50, 50, 50};
    EXPECT_EQ(fill({{-20, -20}, {30, -20}, {30, 30}, {-20, 30}}, huge), Picture(10, "##########"));
}

TEST(PolygonDraw, DegenerateInputDrawsNothing) {
    const Picture empty(10, "..........");
    EXPECT_EQ(fill({}), empty);
    EXPECT_EQ(fill({{1, 3}, {8, 3}}), empty) << "horizontal edges only";
    EXPECT_EQ(fill(kTriangle, {5, 5, 5, 9}), empty) << "empty clip";
}

TEST(PolygonDraw, ColourIsPremultipliedAndBlended) {
    xg_point pts[] = {{0, 0}, {2, 0}, {2, 2}, {0, 2}};
    xg_list *list = nullptr;
    for (xg_point &p : pts) list = xg_list_append(list, &p);
    xc_image *image = test::blank(2, 2, true);
    xc_polygon_draw(image, &kAll, 0, 0, list, 0x80FF0000);
    EXPECT_EQ(test::pixel(image, 1, 1), 0x807F0000u);
    xc_image_unref(image);
    xg_list_free(list);
}

TEST(PolygonDraw, ManyPointsUseTheHeapAndStillFill) {
    // A zig-zag of 2000 points: far more edge records than the stack holds.
    std::vector<xg_point> points;
    for (int i = 0; i < 1000; ++i) points.push_back({i % 2 ? 9 : 8, i / 100});
    points.push_back({0, 9});
    points.push_back({0, 0});
    const Picture picture = fill(points);
    EXPECT_EQ(picture[0].substr(0, 8), "########");
    EXPECT_EQ(picture[9], "..........");
}

TEST(RectangleDraw, ClipsTheCallersAreaInPlaceAndFillsIt) {
    xc_image *image = test::blank(6, 4, true);
    const xg_area clip{1, 1, 5, 3};
    xg_area area{-3, 2, 3, 10};
    xc_rectangle_draw(image, &clip, &area, 0xFFFFFFFF);
    EXPECT_EQ(area.x1, 1);
    EXPECT_EQ(area.y1, 2);
    EXPECT_EQ(area.x2, 3);
    EXPECT_EQ(area.y2, 3);
    EXPECT_EQ(test::picture(image), (Picture{"......", "......", ".##...", "......"}));
    xc_image_unref(image);
}

TEST(RectangleDraw, TransparentColourLeavesTheAreaAlone) {
    xc_image *image = test::blank(4, 4, true);
    const xg_area clip{0, 0, 2, 2};
    xg_area area{-5, -5, 10, 10};
    xc_rectangle_draw(image, &clip, &area, 0x00FFFFFF);
    EXPECT_EQ(area.x1, -5);
    EXPECT_EQ(area.x2, 10);
    EXPECT_EQ(test::picture(image), Picture(4, "...."));
    xc_image_unref(image);
}

TEST(RectangleDraw, ColourIsPremultipliedThroughTheFillFunction) {
    const xg_area clip{0, 0, 2, 1};
    xc_image *alpha = test::blank(2, 1, true);
    xg_area a1 = clip;
    xc_rectangle_draw(alpha, &clip, &a1, 0x80FF0000);
    EXPECT_EQ(test::pixel(alpha, 1, 0), 0x807F0000u);
    xc_image_unref(alpha);
    xc_image *canvas = test::blank(2, 1, false);
    xg_area a2 = clip;
    xc_rectangle_draw(canvas, &clip, &a2, 0xFFFF0000);
    EXPECT_EQ(test::pixel(canvas, 0, 0), 0xFFFE0000u);
    xc_image_unref(canvas);
}

TEST(RectangleDraw, EmptyIntersectionDrawsNothing) {
    xc_image *image = test::blank(4, 4, true);
    const xg_area clip{0, 0, 2, 2};
    xg_area area{2, 0, 4, 4};
    xc_rectangle_draw(image, &clip, &area, 0xFFFFFFFF);
    EXPECT_EQ(test::picture(image), Picture(4, "...."));
    xc_image_unref(image);
}

}  // namespace
