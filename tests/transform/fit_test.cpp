#include <gtest/gtest.h>

#include <string>

#include "fbcompose/transform.h"
#include "images.hpp"

namespace {

using test::Words;

std::string geometry(int sx, int sy, int sw, int sh, int dx, int dy, int dw, int dh) {
    char line[200];
    std::snprintf(line, sizeof line,
                  "xc_image_fit_size: src: x = %d y = %d w = %d h = %d dst: x = %d y = %d w = %d "
                  "h = %d\n",
                  sx, sy, sw, sh, dx, dy, dw, dh);
    return line;
}

TEST(FitSize, GeometryOfEveryModeIsPrintedOnTheDebugLine) {
    const struct {
        int32_t w0, h0, w, h;
        const char *mode;
        std::string line;
    } cases[] = {
        {400, 100, 200, 100, "crop", geometry(100, 0, 200, 100, 0, 0, 200, 100)},
        {100, 200, 100, 100, "crop", geometry(0, 50, 100, 100, 0, 0, 100, 100)},
        {200, 100, 100, 100, nullptr, geometry(0, 0, 200, 100, 0, 0, 100, 100)},
        {300, 100, 100, 50, "crop", geometry(75, 0, 150, 100, 0, 0, 100, 50)},
        {60, 60, 30, 30, "crop", geometry(0, 0, 60, 60, 0, 0, 30, 30)},
        {200, 100, 100, 100, "matte", geometry(0, 0, 200, 100, 0, 25, 100, 50)},
        {100, 200, 100, 100, "matte", geometry(0, 0, 100, 200, 25, 0, 50, 100)},
        {50, 40, 100, 100, "matte", geometry(0, 0, 50, 40, 0, 10, 100, 80)},
        {60, 60, 30, 30, "matte", geometry(0, 0, 60, 60, 0, 0, 30, 30)},
        {50, 40, 100, 100, "matte-both", geometry(0, 0, 50, 40, 25, 30, 50, 40)},
        {200, 100, 100, 100, "matte-both", geometry(0, 0, 200, 100, 0, 25, 100, 50)},
        {200, 100, 100, 100, "distort", geometry(0, 0, 200, 100, 0, 0, 100, 100)},
        {400, 100, 200, 100, "Matte", geometry(100, 0, 200, 100, 0, 0, 200, 100)},
        {400, 100, 200, 100, "stretch", geometry(100, 0, 200, 100, 0, 0, 200, 100)},
    };
    for (const auto &c : cases) {
        xc_image *src = test::canvas(c.w0, c.h0, 0xFFFFFFFFu);
        testing::internal::CaptureStdout();
        xc_image *fit = xc_image_fit_size(src, c.w, c.h, c.mode);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), c.line) << (c.mode ? c.mode : "null");
        ASSERT_NE(fit, nullptr);
        EXPECT_EQ(fit->width, c.w);
        EXPECT_EQ(fit->height, c.h);
        EXPECT_EQ(fit->has_alpha, 0u);
        EXPECT_EQ(fit->no_cache, 1u);
        EXPECT_EQ(fit->ref, 1);
        xc_image_unref(fit);
        xc_image_unref(src);
    }
}

TEST(FitSize, MatteBarsAreOpaqueBlack) {
    xc_image *src = test::canvas(200, 100, 0xFF336699u);
    testing::internal::CaptureStdout();
    xc_image *fit = xc_image_fit_size(src, 100, 100, "matte");
    testing::internal::GetCapturedStdout();
    for (int32_t y : {0, 24, 75, 99}) EXPECT_EQ(test::row(fit, y), Words(100, 0xFF000000u)) << y;
    for (int32_t y : {25, 50, 74}) EXPECT_EQ(test::row(fit, y), Words(100, 0xFF336699u)) << y;
    xc_image_unref(fit);
    xc_image_unref(src);
}

TEST(FitSize, MatteBothCentresASmallSourceUnscaled) {
    xc_image *src = test::painted(5, 4, [](int x, int y) { return 0xFF000000u | uint32_t(y * 5 + x + 1); });
    testing::internal::CaptureStdout();
    xc_image *fit = xc_image_fit_size(src, 9, 8, "matte-both");
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(test::at(fit, 1, 1), 0xFF000000u);
    EXPECT_EQ(test::at(fit, 2, 2), 0xFF000001u);
    EXPECT_EQ(test::at(fit, 6, 5), 0xFF000014u);
    EXPECT_EQ(test::at(fit, 7, 6), 0xFF000000u);
    xc_image_unref(fit);
    xc_image_unref(src);
}

TEST(FitSize, SourceWithoutPixelsGivesBlackAfterTheDebugLine) {
    xc_image *src = xc_image_new();
    src->width = 10;
    src->height = 10;
    testing::internal::CaptureStdout();
    xc_image *fit = xc_image_fit_size(src, 4, 4, "distort");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), geometry(0, 0, 10, 10, 0, 0, 4, 4));
    EXPECT_EQ(test::all(fit), Words(16, 0xFF000000u));
    xc_image_unref(fit);
    xc_image_unref(src);
}

TEST(FitSize, SizesThatWouldDivideByZeroAreRefused) {
    xc_image *src = test::canvas(10, 10, 0u);
    xc_image *empty = xc_image_new();
    const struct {
        xc_image *src;
        int32_t w, h;
    } cases[] = {{src, 0, 10}, {src, 10, 0}, {src, -5, 10}, {empty, 10, 10}};
    for (const auto &c : cases) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(xc_image_fit_size(c.src, c.w, c.h, "matte"), nullptr);
        EXPECT_NE(testing::internal::GetCapturedStdout().find("xc_image_fit_size: bad size"),
                  std::string::npos);
    }
    xc_image_unref(empty);
    xc_image_unref(src);
}

}  // namespace
