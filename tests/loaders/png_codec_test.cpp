// The PNG codec on files the tests write with libpng; the corpus test
// covers the PngSuite.
#include <gtest/gtest.h>
#include <png.h>

#include <cstdio>
#include <string>
#include <vector>

#include "fbcompose/image.h"
#include "fbcompose/loader.h"
#include "loader_test_support.hpp"

namespace {

// A PNG of one row per entry of `rows`, each holding the packed samples.
struct PngSpec {
    uint32_t width, height;
    int color_type, bit_depth;
    std::vector<std::vector<uint8_t>> rows;
    std::vector<png_color> palette = {};
    std::vector<uint8_t> trns = {};
};

void write_png(const std::string &file, const PngSpec &spec) {
    FILE *out = std::fopen(file.c_str(), "wb");
    ASSERT_NE(out, nullptr);
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, out);
    png_set_IHDR(png, info, spec.width, spec.height, spec.bit_depth, spec.color_type,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (!spec.palette.empty())
        png_set_PLTE(png, info, spec.palette.data(), static_cast<int>(spec.palette.size()));
    if (!spec.trns.empty())
        png_set_tRNS(png, info, spec.trns.data(), static_cast<int>(spec.trns.size()), nullptr);
    png_write_info(png, info);
    for (const auto &row : spec.rows) png_write_row(png, row.data());
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    std::fclose(out);
}

class PngCodec : public fbc_test::ScratchDir {
protected:
    void SetUp() override {
        ScratchDir::SetUp();
        xc_image_init();
    }
};

TEST_F(PngCodec, ColourTypesBecomeBgraWords) {
    const struct {
        const char *what;
        PngSpec spec;
        int info_result;
        uint32_t format, depth, has_alpha;
        std::vector<uint32_t> words;
    } cases[] = {
        // Premultiplied by >> 8: 255 x 128 >> 8 = 127; opaque pixels untouched.
        {"rgba", {2, 1, PNG_COLOR_TYPE_RGBA, 8, {{255, 0, 0, 128, 10, 20, 30, 255}}},
         4, 0, 32, 1, {0x807F0000u, 0xFF0A141Eu}},
        {"grey+alpha", {1, 1, PNG_COLOR_TYPE_GRAY_ALPHA, 8, {{200, 0}}}, 4, 0, 32, 1, {0x00000000u}},
        {"1-bit grey", {3, 1, PNG_COLOR_TYPE_GRAY, 1, {{0xA0}}},
         0, 1, 24, 0, {0xFFFFFFFFu, 0xFF000000u, 0xFFFFFFFFu}},
        {"4-bit grey", {1, 1, PNG_COLOR_TYPE_GRAY, 4, {{0x30}}}, 0, 1, 24, 0, {0xFF333333u}},
        // 16-bit samples keep their high byte.
        {"16-bit rgb", {1, 1, PNG_COLOR_TYPE_RGB, 16, {{0x12, 0xFF, 0x34, 0x01, 0xAB, 0x80}}},
         0, 1, 24, 0, {0xFF1234ABu}},
        // tRNS adds alpha bytes but neither the alpha mark nor premultiplication.
        {"palette+tRNS", {2, 1, PNG_COLOR_TYPE_PALETTE, 8, {{0, 1}}, {{200, 100, 50}, {1, 2, 3}}, {0}},
         0, 1, 24, 0, {0x00C86432u, 0xFF010203u}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        const std::string file = path("case.png");
        write_png(file, c.spec);
        xc_image *image = xc_image_new();
        EXPECT_EQ(png_loader.load_info(image, file.c_str()), c.info_result);
        EXPECT_EQ(image->data, nullptr);
        EXPECT_EQ(png_loader.load_data(image, file.c_str()), c.info_result);
        ASSERT_NE(image->data, nullptr);
        EXPECT_EQ(image->width, static_cast<int32_t>(c.spec.width));
        EXPECT_EQ(image->rowstride, image->width * 4);
        EXPECT_EQ(image->format, c.format);
        EXPECT_EQ(image->depth, c.depth);
        EXPECT_EQ(image->has_alpha, c.has_alpha);
        for (size_t x = 0; x < c.words.size(); ++x)
            EXPECT_EQ(fbc_test::pixel(image, static_cast<int32_t>(x), 0), c.words[x]) << x;
        xc_image_unref(image);
    }
}

TEST_F(PngCodec, SavedAreaReloadsAsOpaqueRgb) {
    xc_image *source = xc_image_new_from_data(20, 10, nullptr, 32, 0, 0);
    for (int32_t y = 0; y < 10; ++y)
        for (int32_t x = 0; x < 20; ++x)
            reinterpret_cast<uint32_t *>(source->data)[y * 20 + x] =
                0x80000000u | static_cast<uint32_t>(x) << 16 | static_cast<uint32_t>(y) << 8 | 7u;
    const xg_area area{4, 3, 14, 8};
    const std::string file = path("area.png");
    EXPECT_EQ(xc_image_save(source, file.c_str(), &area, "ignored"), 0);
    xc_image *saved = xc_image_new_from_file(file.c_str());
    ASSERT_NE(saved, nullptr);
    ASSERT_GE(xc_image_load_data(saved), 0);
    EXPECT_EQ(saved->width, 10);
    EXPECT_EQ(saved->height, 5);
    EXPECT_EQ(saved->format, 1u);
    // Alpha is dropped; the colour bytes are written as they are.
    EXPECT_EQ(fbc_test::pixel(saved, 0, 0), 0xFF040307u);
    EXPECT_EQ(fbc_test::pixel(saved, 9, 4), 0xFF0D0707u);
    xc_image_unref(saved);
    xc_image_unref(source);
}

TEST_F(PngCodec, SaveRefusesAreasOutsideTheImageAndNon32BitRows) {
    xc_image *image = xc_image_create(8, 8);
    const xg_area outside[] = {{-1, 0, 4, 4}, {0, 0, 9, 4}, {0, 0, 4, 9}, {3, 0, 3, 4}, {0, 5, 4, 2}};
    for (const xg_area &area : outside)
        EXPECT_EQ(xc_image_save(image, path("out.png").c_str(), &area, nullptr), -1);
    xc_image *rgb565 = xc_image_new_from_data(8, 8, nullptr, 16, 0, 0);
    EXPECT_EQ(xc_image_save(rgb565, path("out.png").c_str(), nullptr, nullptr), -1);
    EXPECT_EQ(xc_image_save(image, path("no/such/dir/out.png").c_str(), nullptr, nullptr), -1);
    xc_image_unref(rgb565);
    xc_image_unref(image);
}

TEST_F(PngCodec, WrongSignatureFailsWithoutLibpngMessage) {
    const std::string file = write("fake.png", {'G', 'I', 'F', '8', '9', 'a', 0, 0});
    xc_image *image = xc_image_new();
    testing::internal::CaptureStderr();
    EXPECT_EQ(png_loader.load_info(image, file.c_str()), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    xc_image_unref(image);
}

TEST_F(PngCodec, CorruptFileIsReportedByTheFrontEnd) {
    std::vector<uint8_t> bytes = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n', 0, 0, 0, 13, 'I', 'H'};
    const std::string file = write("corrupt.png", bytes);
    xc_image_new_from_file(path("warm.none").c_str());
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_EQ(xc_image_new_from_file(file.c_str()), nullptr);
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "png file(" + file + ") load failed\nfile(" + file + ") load failed\n");
    EXPECT_NE(err.find("libpng"), std::string::npos) << err;
}

TEST_F(PngCodec, MissingFileWithoutArchiveIsReported) {
    const std::string file = path("absent.png");
    xc_image *image = xc_image_new();
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_EQ(png_loader.load_data(image, file.c_str()), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Couldn't load '" + file + "' image:No such file or directory\n");
    testing::internal::GetCapturedStdout();
    xc_image_unref(image);
}

}  // namespace

namespace fbc_test {
// Used by the archive test: a small RGBA file's bytes.
std::vector<uint8_t> small_png_bytes(const std::string &scratch) {
    write_png(scratch, {2, 2, PNG_COLOR_TYPE_RGBA, 8, {{1, 2, 3, 255, 4, 5, 6, 128}, {7, 8, 9, 0, 10, 11, 12, 255}}});
    std::vector<uint8_t> bytes;
    FILE *in = std::fopen(scratch.c_str(), "rb");
    int c;
    while (in && (c = std::fgetc(in)) != EOF) bytes.push_back(static_cast<uint8_t>(c));
    if (in) std::fclose(in);
    std::remove(scratch.c_str());
    return bytes;
}
}  // namespace fbc_test
