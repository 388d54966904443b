#include <gtest/gtest.h>

#include "fbcompose/image.h"

namespace {

TEST(PrintArea, WritesTheFourCorners) {
    const xg_area area{1, -2, 30, 40};
    testing::internal::CaptureStdout();
    xc_print_area(&area, "clip");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "clip: x1 = 1 y1 = -2 x2 = 30 y2 = 40\n");
}

}  // namespace
