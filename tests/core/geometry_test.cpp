#include <gtest/gtest.h>

#include "fbcompose/image.h"

namespace {

TEST(RectIsCross, TouchingRectanglesCrossButSeparatedOnesDoNot) {
    const xg_rect a{0, 0, 10, 10};
    const xg_rect touching{10, 0, 5, 5};
    const xg_rect apart{11, 0, 5, 5};
    const xg_rect below{0, 11, 5, 5};
    EXPECT_EQ(xg_rect_is_cross(&a, &touching), 1);
    EXPECT_EQ(xg_rect_is_cross(&touching, &a), 1);
    EXPECT_EQ(xg_rect_is_cross(&a, &apart), 0);
    EXPECT_EQ(xg_rect_is_cross(&apart, &a), 0);
    EXPECT_EQ(xg_rect_is_cross(&a, &below), 0);
    const xg_rect empty_on_edge{10, 10, 0, 0};
    EXPECT_EQ(xg_rect_is_cross(&a, &empty_on_edge), 1);
}

TEST(RectIntersect, TouchingGivesZeroWidthAndReturnsHeight) {
    const xg_rect a{0, 0, 10, 10};
    const xg_rect b{10, 0, 5, 5};
    xg_rect out{-1, -1, -1, -1};
    EXPECT_EQ(xg_rect_intersect(&out, &a, &b), 5);
    EXPECT_EQ(out.x, 10);
    EXPECT_EQ(out.w, 0);
    EXPECT_EQ(out.y, 0);
    EXPECT_EQ(out.h, 5);
}

TEST(RectIntersect, OverlapAndMissKeepsOrigin) {
    const xg_rect a{0, 0, 10, 10};
    const xg_rect b{4, 6, 10, 10};
    xg_rect out{};
    EXPECT_EQ(xg_rect_intersect(&out, &a, &b), 4);
    EXPECT_EQ(out.x, 4);
    EXPECT_EQ(out.y, 6);
    EXPECT_EQ(out.w, 6);
    EXPECT_EQ(out.h, 4);

    const xg_rect far{50, 50, 1, 1};
    out = {7, 8, 9, 9};
    EXPECT_EQ(xg_rect_intersect(&out, &a, &far), 0);
    EXPECT_EQ(out.x, 7);
    EXPECT_EQ(out.y, 8);
    EXPECT_EQ(out.w, 0);
    EXPECT_EQ(out.h, 0);
}

TEST(AreaIntersect, DisjointAreasCollapseOntoTheTopLeftCorner) {
    xg_area a{0, 0, 10, 10};
    const xg_area touching{10, 0, 20, 10};
    xg_area_intersect_area(&a, &touching);
    EXPECT_EQ(a.x1, 0);
    EXPECT_EQ(a.y1, 0);
    EXPECT_EQ(a.x2, 0);
    EXPECT_EQ(a.y2, 0);

    xg_area b{0, 0, 10, 10};
    const xg_area overlap{5, 5, 20, 20};
    xg_area_intersect_area(&b, &overlap);
    EXPECT_EQ(b.x1, 5);
    EXPECT_EQ(b.y1, 5);
    EXPECT_EQ(b.x2, 10);
    EXPECT_EQ(b.y2, 10);
}

TEST(AreaCross, ClampsWithoutNormalising) {
    xg_area a{0, 0, 10, 10};
    const xg_area b{20, 20, 30, 30};
    xg_area_cross(&a, &b);
    EXPECT_EQ(a.x1, 20);
    EXPECT_EQ(a.y1, 20);
    EXPECT_EQ(a.x2, 10);
    EXPECT_EQ(a.y2, 10);
}

TEST(RectFromArea, TakesSizeFromTheCorners) {
    const xg_area area{3, 4, 10, 6};
    xg_rect rect{};
    xg_rect_from_area(&rect, &area);
    EXPECT_EQ(rect.x, 3);
    EXPECT_EQ(rect.y, 4);
    EXPECT_EQ(rect.w, 7);
    EXPECT_EQ(rect.h, 2);
}

TEST(ColorPremultiply, ShiftsByEightNotDivideBy255) {
    uint32_t opaque = 0xFFFF0000u;
    xg_color_premultiply(&opaque);
    EXPECT_EQ(opaque, 0xFFFE0000u);

    uint32_t clear = 0x00FFFFFFu;
    xg_color_premultiply(&clear);
    EXPECT_EQ(clear, 0u);

    uint32_t half = 0x800000C8u;  // alpha 128, blue 200
    xg_color_premultiply(&half);
    EXPECT_EQ(half, 0x80000064u);

    uint32_t mixed = 0x40102030u;  // every channel scaled by 64/256
    xg_color_premultiply(&mixed);
    EXPECT_EQ(mixed, 0x4004080Cu);
}

TEST(PrintArea, WritesTheFourCorners) {
    const xg_area area{1, -2, 30, 40};
    testing::internal::CaptureStdout();
    xc_print_area(&area, "clip");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "clip: x1 = 1 y1 = -2 x2 = 30 y2 = 40\n");
}

}  // namespace
