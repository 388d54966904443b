#include <gtest/gtest.h>

#include "fbcompose/image.h"

namespace {

bool same(const xg_rect &a, const xg_rect &b) {
    return a.x == b.x && a.y == b.y && a.w == b.w && a.h == b.h;
}
bool same(const xg_area &a, const xg_area &b) {
    return a.x1 == b.x1 && a.y1 == b.y1 && a.x2 == b.x2 && a.y2 == b.y2;
}

TEST(Rect, CrossingIsStrictSoTouchingCountsAndIntersectReportsHeight) {
    struct Case {
        xg_rect b;
        int cross;
        xg_rect out;  // starting from {7, 8, 9, 9}
        int result;
    };
    const xg_rect a{0, 0, 10, 10};
    const Case cases[] = {
        {{10, 0, 5, 5}, 1, {10, 0, 0, 5}, 5},   // touching: zero width, height returned
        {{11, 0, 5, 5}, 0, {7, 8, 0, 0}, 0},    // apart: origin kept
        {{0, 11, 5, 5}, 0, {7, 8, 0, 0}, 0},
        {{4, 6, 10, 10}, 1, {4, 6, 6, 4}, 4},
        {{10, 10, 0, 0}, 1, {10, 10, 0, 0}, 0},  // empty on the corner
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message() << c.b.x << "," << c.b.y);
        EXPECT_EQ(xg_rect_is_cross(&a, &c.b), c.cross);
        EXPECT_EQ(xg_rect_is_cross(&c.b, &a), c.cross);
        xg_rect out{7, 8, 9, 9};
        EXPECT_EQ(xg_rect_intersect(&out, &a, &c.b), c.result);
        EXPECT_TRUE(same(out, c.out));
    }
}

TEST(Area, IntersectCollapsesDisjointAreasAndCrossClampsWithoutNormalising) {
    const xg_area a{0, 0, 10, 10};
    struct Case {
        xg_area b, intersected, crossed;
    };
    const Case cases[] = {
        {{10, 0, 20, 10}, {0, 0, 0, 0}, {10, 0, 10, 10}},
        {{5, 5, 20, 20}, {5, 5, 10, 10}, {5, 5, 10, 10}},
        {{20, 20, 30, 30}, {0, 0, 0, 0}, {20, 20, 10, 10}},
    };
    for (const Case &c : cases) {
        xg_area i = a, x = a;
        xg_area_intersect_area(&i, &c.b);
        xg_area_cross(&x, &c.b);
        EXPECT_TRUE(same(i, c.intersected)) << c.b.x1;
        EXPECT_TRUE(same(x, c.crossed)) << c.b.x1;
    }
    xg_rect rect{};
    const xg_area area{3, 4, 10, 6};
    xg_rect_from_area(&rect, &area);
    EXPECT_TRUE(same(rect, {3, 4, 7, 2}));
}

TEST(ColorPremultiply, ShiftsByEightNotDivideBy255) {
    const uint32_t cases[][2] = {
        {0xFFFF0000u, 0xFFFE0000u}, {0x00FFFFFFu, 0x00000000u},
        {0x800000C8u, 0x80000064u}, {0x40102030u, 0x4004080Cu},
    };
    for (const auto &c : cases) {
        uint32_t color = c[0];
        xg_color_premultiply(&color);
        EXPECT_EQ(color, c[1]) << std::hex << c[0];
    }
}

TEST(PrintArea, WritesTheFourCorners) {
    const xg_area area{1, -2, 30, 40};
    testing::internal::CaptureStdout();
    xc_print_area(&area, "clip");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "clip: x1 = 1 y1 = -2 x2 = 30 y2 = 40\n");
}

}  // namespace
