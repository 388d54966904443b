// The WBMP codec on files the tests write; the corpus test covers real ones.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "fbcompose/image.h"
#include "fbcompose/loader.h"
#include "loader_test_support.hpp"

namespace {

class WbmpCodec : public fbc_test::ScratchDir {
protected:
    // Loads information and pixels through the loader record itself.
    xc_image *load(const std::string &file) {
        xc_image *image = xc_image_new();
        EXPECT_EQ(wbmp_loader.load_info(image, file.c_str()), 0);
        EXPECT_EQ(wbmp_loader.load_data(image, file.c_str()), 0);
        return image;
    }
    // Row y as W (white) and B (black) characters.
    static std::string row_text(const xc_image *image, int32_t y) {
        std::string text;
        for (int32_t x = 0; x < image->width; ++x) {
            const uint32_t p = fbc_test::pixel(image, x, y);
            text += p == 0xFFFFFFFFu ? 'W' : p == 0xFF000000u ? 'B' : '?';
        }
        return text;
    }
};

TEST_F(WbmpCodec, HeaderFieldsAreMultiByteIntegers) {
    const struct {
        std::vector<uint8_t> bytes;
        int32_t width, height;
    } rows[] = {
        {{0x00, 0x00, 0x81, 0x00, 0x10}, 128, 16},
        {{0x00, 0x00, 0x0A, 0x05}, 10, 5},
        {{0x01, 0x00, 0x03, 0x02}, 3, 2},              // another type reads the same
        {{0x00, 0x80, 0x00, 0x03, 0x02}, 3, 2},        // two-byte fixed header
        {{0x00, 0x00, 0x82, 0x83, 0x04, 0x01}, 0x8184, 1},
        {{0x00, 0x00, 0x05, 0x81}, 5, 1},              // cut inside the height
        {{}, 0, 0},
    };
    for (const auto &row : rows) {
        const std::string file = write("h.wbmp", row.bytes);
        int32_t w = -1, h = -1;
        EXPECT_EQ(xc_wbmp_get_size(file.c_str(), &w, &h), 0);
        EXPECT_EQ(w, row.width);
        EXPECT_EQ(h, row.height);
    }
}

TEST_F(WbmpCodec, SetBitsAreWhiteAndRowsStartOnNewBytes) {
    // 10 wide: two bytes a row; the last six bits of each row are ignored.
    xc_image *image = load(write("s.wbmp", fbc_test::wbmp_file(10, 2, {0xA5, 0x7F, 0x00, 0x80})));
    EXPECT_EQ(row_text(image, 0), "WBWBBWBWBW");
    EXPECT_EQ(row_text(image, 1), "BBBBBBBBWB");
    EXPECT_EQ(image->has_alpha, 0u);
    EXPECT_EQ(image->format, 1u);
    EXPECT_EQ(image->rowstride, 40);
    xc_image_unref(image);
}

TEST_F(WbmpCodec, MissingPixelsStayWhite) {
    // 16 x 3 with one and a half rows present.
    xc_image *image = load(write("cut.wbmp", fbc_test::wbmp_file(16, 3, {0x00, 0x00, 0x0F})));
    EXPECT_EQ(row_text(image, 0), "BBBBBBBBBBBBBBBB");
    EXPECT_EQ(row_text(image, 1), "BBBBWWWWWWWWWWWW");
    EXPECT_EQ(row_text(image, 2), "WWWWWWWWWWWWWWWW");
    xc_image_unref(image);
}

TEST_F(WbmpCodec, MissingFileIsReportedByEachEntry) {
    const std::string file = path("absent.wbmp");
    int32_t w = 7, h = 7;
    testing::internal::CaptureStderr();
    EXPECT_EQ(xc_wbmp_get_size(file.c_str(), &w, &h), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "fopen() error filename = " + file + "\n");
    EXPECT_EQ(w, 7);
    xc_image *image = xc_image_new();
    testing::internal::CaptureStderr();
    EXPECT_EQ(wbmp_loader.load_data(image, file.c_str()), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "xc_wbmp_load:" + file + ":No such file or directory\n");
    xc_image_unref(image);
}

TEST_F(WbmpCodec, EmptyImageHasNoPixels) {
    const uint8_t sizes[][2] = {{0, 4}, {4, 0}, {0, 0}};
    for (const auto &size : sizes) {
        xc_image *image = xc_image_new();
        const std::string file = write("zero.wbmp", fbc_test::wbmp_file(size[0], size[1], {0xFF}));
        EXPECT_EQ(wbmp_loader.load_info(image, file.c_str()), 0);
        EXPECT_EQ(wbmp_loader.load_data(image, file.c_str()), -1);
        EXPECT_EQ(image->data, nullptr);
        xc_image_unref(image);
    }
}

TEST_F(WbmpCodec, SizesBeyondTheDeviceAreRefusedBeforeAllocating) {
    // 2^28 - 1 square: far more than 2^31 bytes of pixels.
    const std::string file = write("huge.wbmp", {0x00, 0x00, 0xFF, 0xFF, 0xFF, 0x7F, 0xFF, 0xFF,
                                                 0xFF, 0x7F, 0x00, 0x00});
    xc_image *image = xc_image_new();
    testing::internal::CaptureStderr();
    EXPECT_EQ(wbmp_loader.load_info(image, file.c_str()), -1);
    EXPECT_EQ(wbmp_loader.load_data(image, file.c_str()), -1);
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_NE(err.find("wbmp: file(" + file + ") has unusable size 268435455x268435455"),
              std::string::npos) << err;
    EXPECT_EQ(image->data, nullptr);
    xc_image_unref(image);
}

}  // namespace
