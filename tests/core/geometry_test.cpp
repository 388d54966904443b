#include <gtest/gtest.h>

#include <vector>

#include "fbcompose/image.h"

namespace {

// Rows: b, then a after xg_area_cross(a, b) and after xg_area_intersect_area(a, b),
// with a = {0, 0, 10, 10}. Cross never normalises; disjoint areas collapse.
TEST(Area, CrossClampsInPlaceAndIntersectCollapsesDisjointAreas) {
    const int32_t rows[][12] = {
        {10, 0, 20, 10, 10, 0, 10, 10, 0, 0, 0, 0},
        {5, 5, 20, 20, 5, 5, 10, 10, 5, 5, 10, 10},
        {20, 20, 30, 30, 20, 20, 10, 10, 0, 0, 0, 0},
    };
    for (const auto &r : rows) {
        const xg_area b{r[0], r[1], r[2], r[3]};
        xg_area crossed{0, 0, 10, 10}, met{0, 0, 10, 10};
        xg_area_cross(&crossed, &b);
        xg_area_intersect_area(&met, &b);
        EXPECT_EQ(std::vector<int32_t>({crossed.x1, crossed.y1, crossed.x2, crossed.y2, met.x1,
                                        met.y1, met.x2, met.y2}),
                  std::vector<int32_t>(r + 4, r + 12));
    }
}

// Rows: a, b, whether they cross, the intersection and its result. Ends
// beyond the int32 range are compared as they are, not wrapped; the width of
// crossing rectangles always fits.
TEST(Rect, CrossingAndIntersectionOfTouchingAndHugeRectangles) {
    const int32_t rows[][14] = {
        {0, 0, 10, 10, 10, 0, 5, 5, 1, 10, 0, 0, 5, 5},
        {0, 0, 10, 10, 11, 0, 5, 5, 0, -1, -1, 0, 0, 0},
        {10, 0, INT32_MAX, 1, 100, 0, 5, 1, 1, 100, 0, 5, 1, 1},
        {0, 10, 4, INT32_MAX, 2, INT32_MAX - 3, 1, 1, 1, 2, INT32_MAX - 3, 1, 1, 1},
    };
    for (const auto &r : rows) {
        const xg_rect a{r[0], r[1], r[2], r[3]}, b{r[4], r[5], r[6], r[7]};
        xg_rect out{-1, -1, -1, -1};
        EXPECT_EQ(xg_rect_is_cross(&a, &b), r[8]);
        EXPECT_EQ(xg_rect_intersect(&out, &a, &b), r[13]);
        EXPECT_EQ(std::vector<int32_t>({out.x, out.y, out.w, out.h}),
                  std::vector<int32_t>(r + 9, r + 13));
    }
}

}  // namespace
