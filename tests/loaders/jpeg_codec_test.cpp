// The JPEG codec: size query, decode flags, the saver's geometry and its
// choice of quality. The corpus test covers decoding real files.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include <jpeglib.h>

#include "fbcompose/image.h"
#include "fbcompose/loader.h"
#include "loader_test_support.hpp"

namespace {

// The first luminance quantiser of a JPEG file: libjpeg scales the standard
// table's 16 by the quality (80 -> 6, 60 -> 13, 95 -> 2, 1 -> 255 baseline).
int first_quantiser(const std::string &file) {
    FILE *in = std::fopen(file.c_str(), "rb");
    if (!in) return -1;
    jpeg_decompress_struct cinfo;
    jpeg_error_mgr errors;
    cinfo.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&cinfo);
    jpeg_stdio_src(&cinfo, in);
    jpeg_read_header(&cinfo, TRUE);
    const int value = cinfo.quant_tbl_ptrs[0]->quantval[0];
    jpeg_destroy_decompress(&cinfo);
    std::fclose(in);
    return value;
}

xc_image *filled(int32_t width, int32_t height, uint32_t word) {
    xc_image *image = xc_image_new_from_data(width, height, nullptr, 32, 0, 0);
    auto *pixels = reinterpret_cast<uint32_t *>(image->data);
    for (int32_t i = 0; i < width * height; ++i) pixels[i] = word;
    return image;
}

void expect_near(uint32_t got, uint32_t want, int tolerance) {
    for (int shift = 0; shift < 32; shift += 8) {
        const int d = static_cast<int>((got >> shift) & 0xFF) - static_cast<int>((want >> shift) & 0xFF);
        EXPECT_LE(std::abs(d), tolerance) << std::hex << got << " vs " << want;
    }
}

class JpegCodec : public fbc_test::ScratchDir {
protected:
    void SetUp() override {
        ScratchDir::SetUp();
        xc_image_init();
    }
};

TEST_F(JpegCodec, QualityFollowsOptionsOrSize) {
    const struct {
        int32_t width, height;
        const char *options;
        int quantiser;
    } rows[] = {
        {200, 200, nullptr, 6},             // both below 300: 80
        {200, 300, nullptr, 13},            // otherwise 60
        {300, 10, "fast", 13},
        {200, 300, "x,quality=95", 2},      // given quality wins
        {20, 20, "quality=", 255},          // 0, clamped by libjpeg to 1
    };
    for (const auto &row : rows) {
        xc_image *image = filled(row.width, row.height, 0xFF808080u);
        const std::string file = path("q.jpg");
        testing::internal::CaptureStdout();
        EXPECT_EQ(jpeg_loader.save(image, file.c_str(), nullptr, row.options), 0);
        // Printed on every save, before the colour space is set.
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "cinfo.in_color_space = 0\n");
        EXPECT_EQ(first_quantiser(file), row.quantiser) << row.width << "x" << row.height;
        xc_image_unref(image);
    }
}

TEST_F(JpegCodec, SavedAreaHoldsExactlyThosePixelsWithColourAsStored) {
    // Grey everywhere except the area, which holds a half-transparent
    // premultiplied colour: saved as it is, alpha dropped.
    xc_image *image = filled(40, 40, 0xFF808080u);
    for (int32_t y = 10; y < 30; ++y)
        for (int32_t x = 10; x < 20; ++x)
            reinterpret_cast<uint32_t *>(image->data)[y * 40 + x] = 0x80406010u;
    const xg_area area{10, 10, 20, 30};
    const std::string file = path("area.jpeg");
    testing::internal::CaptureStdout();
    ASSERT_EQ(xc_image_save(image, file.c_str(), &area, "quality=95"), 0);
    testing::internal::GetCapturedStdout();
    xc_image *saved = xc_image_new_from_file(file.c_str());
    ASSERT_NE(saved, nullptr);
    EXPECT_EQ(saved->width, 10);
    EXPECT_EQ(saved->height, 20);
    EXPECT_EQ(xc_image_load_data(saved), 1);
    EXPECT_EQ(saved->format, 1u);
    EXPECT_EQ(saved->depth, 32u);
    for (int32_t y = 0; y < 20; ++y)
        for (int32_t x = 0; x < 10; ++x) expect_near(fbc_test::pixel(saved, x, y), 0xFF406010u, 3);
    xc_image_unref(saved);
    xc_image_unref(image);
}

TEST_F(JpegCodec, NonJpegDataPassesTheSizeQueryAndFailsToDecode) {
    const std::string file = write("png-inside.jpg", {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n', 0, 0});
    xc_image *image = xc_image_new_from_file(file.c_str());
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->width, 0);
    EXPECT_EQ(image->height, 0);
    testing::internal::CaptureStderr();
    EXPECT_EQ(xc_image_load_data(image), -1);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("Not a JPEG file"), std::string::npos);
    EXPECT_EQ(image->data, nullptr);
    xc_image_unref(image);
}

TEST_F(JpegCodec, MissingFileFailsBothStages) {
    const std::string file = path("absent.jpg");
    xc_image *image = xc_image_new();
    EXPECT_EQ(jpeg_loader.load_info(image, file.c_str()), -1);
    EXPECT_EQ(jpeg_loader.load_info(image, nullptr), -1);
    EXPECT_EQ(jpeg_loader.load_data(image, nullptr), -1);
    testing::internal::CaptureStderr();
    EXPECT_EQ(jpeg_loader.load_data(image, file.c_str()), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Couldn't load '" + file + "' image:No such file or directory\n");
    xc_image_unref(image);
}

TEST_F(JpegCodec, GreyFileDecodesToOpaqueGreyWords) {
    const std::string file = fbc_test::corpus_file("jpeg/wuffs/peacock.grayscale.jpeg");
    xc_image *image = xc_image_new();
    ASSERT_EQ(jpeg_loader.load_info(image, file.c_str()), 1);
    ASSERT_EQ(jpeg_loader.load_data(image, file.c_str()), 1);
    EXPECT_EQ(image->format, 1u);
    EXPECT_EQ(image->has_alpha, 0u);
    const uint32_t p = fbc_test::pixel(image, 50, 40);
    EXPECT_EQ(p >> 24, 0xFFu);
    EXPECT_EQ(p & 0xFF, (p >> 8) & 0xFF);
    EXPECT_EQ(p & 0xFF, (p >> 16) & 0xFF);
    xc_image_unref(image);
}

TEST_F(JpegCodec, FourComponentFileIsPremultipliedByItsFourthComponent) {
    const std::string file = fbc_test::corpus_file("jpeg/generated/peacock-cmyk-kramp.jpg");
    xc_image *image = xc_image_new();
    ASSERT_EQ(jpeg_loader.load_info(image, file.c_str()), 1);
    ASSERT_EQ(jpeg_loader.load_data(image, file.c_str()), 1);
    EXPECT_EQ(image->format, 0u);
    EXPECT_EQ(image->has_alpha, 1u);
    // The fourth component ramps from 0 at the left: premultiplied to black.
    EXPECT_EQ(fbc_test::pixel(image, 0, 0) & 0x00FFFFFFu, 0u);
    xc_image_unref(image);
}

}  // namespace
