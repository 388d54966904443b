#include <gtest/gtest.h>

#include <string>

#include "drawn.hpp"

namespace {

using test::Image;
using test::Words;

std::string geometry(int sx, int sy, int sw, int sh, int dx, int dy, int dw, int dh) {
    char line[200];
    std::snprintf(line, sizeof line,
                  "xc_image_fit_size: src: x = %d y = %d w = %d h = %d dst: x = %d y = %d w = %d "
                  "h = %d\n",
                  sx, sy, sw, sh, dx, dy, dw, dh);
    return line;
}

// The fitted image and the debug line printed on the way.
std::pair<Image, std::string> fit(xc_image *src, int32_t w, int32_t h, const char *mode) {
    testing::internal::CaptureStdout();
    Image out{xc_image_fit_size(src, w, h, mode)};
    return {std::move(out), testing::internal::GetCapturedStdout()};
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
        const Image src = test::canvas(c.w0, c.h0, 0xFFFFFFFFu);
        const auto [out, line] = fit(src.get(), c.w, c.h, c.mode);
        EXPECT_EQ(line, c.line) << (c.mode ? c.mode : "null");
        ASSERT_NE(out, nullptr);
        EXPECT_EQ((std::array{out->width, out->height, out->ref, int(out->has_alpha), int(out->no_cache)}),
                  (std::array{c.w, c.h, 1, 0, 1}));
    }
}

TEST(FitSize, MatteBarsAreOpaqueBlackAndASmallSourceIsCentredUnscaled) {
    const Image src = test::canvas(200, 100, 0xFF336699u);
    const Image bars = fit(src.get(), 100, 100, "matte").first;
    for (int32_t y : {0, 24, 75, 99}) EXPECT_EQ(test::row(bars.get(), y), Words(100, 0xFF000000u)) << y;
    for (int32_t y : {25, 50, 74}) EXPECT_EQ(test::row(bars.get(), y), Words(100, 0xFF336699u)) << y;
    const Image small = test::painted(5, 4, [](int x, int y) { return 0xFF000000u | uint32_t(y * 5 + x + 1); });
    const Image centred = fit(small.get(), 9, 8, "matte-both").first;
    EXPECT_EQ(test::at(centred.get(), 1, 1), 0xFF000000u);
    EXPECT_EQ(test::at(centred.get(), 2, 2), 0xFF000001u);
    EXPECT_EQ(test::at(centred.get(), 6, 5), 0xFF000014u);
    EXPECT_EQ(test::at(centred.get(), 7, 6), 0xFF000000u);
}

TEST(FitSize, SourceWithoutPixelsGivesBlackAfterTheDebugLine) {
    const Image src{xc_image_new()};
    src->width = src->height = 10;
    const auto [out, line] = fit(src.get(), 4, 4, "distort");
    EXPECT_EQ(line, geometry(0, 0, 10, 10, 0, 0, 4, 4));
    EXPECT_EQ(test::all(out.get()), Words(16, 0xFF000000u));
}

TEST(FitSize, SizesThatWouldDivideByZeroAreRefused) {
    const Image src = test::canvas(10, 10, 0u), empty{xc_image_new()};
    const struct {
        xc_image *src;
        int32_t w, h;
    } cases[] = {{src.get(), 0, 10}, {src.get(), 10, 0}, {src.get(), -5, 10}, {empty.get(), 10, 10}};
    for (const auto &c : cases) {
        const auto [out, line] = fit(c.src, c.w, c.h, "matte");
        EXPECT_EQ(out, nullptr);
        EXPECT_NE(line.find("xc_image_fit_size: bad size"), std::string::npos) << c.w << "x" << c.h;
    }
}

}  // namespace
