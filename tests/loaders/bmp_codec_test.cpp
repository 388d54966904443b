// The BMP codec on files the tests write; the corpus test covers the BMP
// Suite.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fbcompose/image.h"
#include "fbcompose/loader.h"
#include "loader_test_support.hpp"

namespace {

void put16(std::vector<uint8_t> &out, uint32_t v) {
    out.push_back(static_cast<uint8_t>(v));
    out.push_back(static_cast<uint8_t>(v >> 8));
}
void put32(std::vector<uint8_t> &out, uint32_t v) {
    put16(out, v & 0xFFFF);
    put16(out, v >> 16);
}

struct BmpSpec {
    int32_t width, height;  // negative height: top-down rows
    uint16_t bits;
    uint32_t compression;
    std::vector<uint32_t> palette;  // 0x00RRGGBB
    std::vector<uint32_t> masks;    // after a 40-byte header, or in a 56-byte one
    std::vector<uint8_t> pixels;
    uint32_t info_size = 40;
};

std::vector<uint8_t> bmp_file(const BmpSpec &s) {
    std::vector<uint8_t> info;
    put32(info, s.info_size);
    put32(info, static_cast<uint32_t>(s.width));
    put32(info, static_cast<uint32_t>(s.height));
    put16(info, 1);
    put16(info, s.bits);
    put32(info, s.compression);
    for (int i = 0; i < 5; ++i) put32(info, 0);  // image size, density, colours used, important
    if (s.info_size > 40) {
        for (uint32_t m : s.masks) put32(info, m);
        info.resize(s.info_size, 0);
    } else {
        for (uint32_t m : s.masks) put32(info, m);
    }
    for (uint32_t c : s.palette) put32(info, c);
    std::vector<uint8_t> out = {'B', 'M'};
    put32(out, static_cast<uint32_t>(14 + info.size() + s.pixels.size()));
    put32(out, 0);
    put32(out, static_cast<uint32_t>(14 + info.size()));
    out.insert(out.end(), info.begin(), info.end());
    out.insert(out.end(), s.pixels.begin(), s.pixels.end());
    return out;
}

class BmpCodec : public fbc_test::ScratchDir {
protected:
    // Loads through the record; null when either stage fails.
    xc_image *load(const BmpSpec &spec) {
        const std::string file = write("t.bmp", bmp_file(spec));
        xc_image *image = xc_image_new();
        if (bmp_loader.load_info(image, file.c_str()) < 0 || bmp_loader.load_data(image, file.c_str()) < 0) {
            EXPECT_EQ(image->data, nullptr);
            xc_image_unref(image);
            return nullptr;
        }
        return image;
    }
};

TEST_F(BmpCodec, PixelLayoutsBecomeColourWords) {
    const uint32_t kBitFields = 3, kRle8 = 1, kRle4 = 2;
    const struct {
        const char *what;
        BmpSpec spec;
        uint32_t format;
        std::vector<uint32_t> words;  // the image's rows, top first
    } cases[] = {
        // Rows bottom-up, padded to 4 bytes: the file's first row is the bottom one.
        {"24-bit", {2, 2, 24, 0, {}, {}, {1, 2, 3, 4, 5, 6, 0, 0, 7, 8, 9, 10, 11, 12, 0, 0}},
         1, {0xFF090807u, 0xFF0C0B0Au, 0xFF030201u, 0xFF060504u}},
        {"top-down", {1, -2, 24, 0, {}, {}, {1, 2, 3, 0, 4, 5, 6, 0}}, 1, {0xFF030201u, 0xFF060504u}},
        // The fourth byte of plain 32-bit pixels is padding.
        {"32-bit", {1, 1, 32, 0, {}, {}, {1, 2, 3, 0}}, 1, {0xFF030201u}},
        // An alpha mask in use: premultiplied by >> 8 below full alpha.
        {"32-bit alpha", {2, 1, 32, kBitFields, {}, {0xFF0000, 0xFF00, 0xFF, 0xFF000000},
                          {0, 0, 255, 128, 10, 20, 30, 255}, 56},
         0, {0x807F0000u, 0xFF1E140Au}},
        // An alpha mask whose values are all 0 was left unused by the writer.
        {"32-bit zero alpha", {1, 1, 32, kBitFields, {}, {0xFF0000, 0xFF00, 0xFF, 0xFF000000}, {1, 2, 3, 0}, 56},
         1, {0xFF030201u}},
        // 5 and 6-bit channels widen by bit replication.
        {"16-bit 565", {2, 1, 16, kBitFields, {}, {0xF800, 0x07E0, 0x001F}, {0x1F, 0xF8, 0xE0, 0x07}},
         1, {0xFFFF00FFu, 0xFF00FF00u}},
        {"16-bit 555", {1, 1, 16, 0, {}, {}, {0x10, 0x42, 0, 0}}, 1, {0xFF848484u}},
        {"1-bit", {3, 1, 1, 0, {0x000000, 0xFFFFFF}, {}, {0xA0, 0, 0, 0}},
         1, {0xFFFFFFFFu, 0xFF000000u, 0xFFFFFFFFu}},
        {"4-bit", {2, 1, 4, 0, {0x112233, 0x445566}, {}, {0x10, 0, 0, 0}}, 1, {0xFF445566u, 0xFF112233u}},
        // An index past the palette reads as black.
        {"8-bit bad index", {2, 1, 8, 0, {0x112233}, {}, {0, 9, 0, 0}}, 1, {0xFF112233u, 0xFF000000u}},
        // Run of 2, end of line; delta (1, 0); absolute run of 3 (padded, its
        // last pixel past the width); end of bitmap. Unreached pixels: colour 0.
        {"RLE8", {3, 2, 8, kRle8, {0x000000, 0x0000FF, 0x00FF00}, {},
                  {2, 1, 0, 0, 0, 2, 1, 0, 0, 3, 2, 1, 2, 0, 0, 1}},
         1, {0xFF000000u, 0xFF00FF00u, 0xFF0000FFu, 0xFF0000FFu, 0xFF0000FFu, 0xFF000000u}},
        {"RLE4", {3, 1, 4, kRle4, {0x000000, 0x0000FF, 0x00FF00}, {}, {3, 0x12, 0, 1}},
         1, {0xFF0000FFu, 0xFF00FF00u, 0xFF0000FFu}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        xc_image *image = load(c.spec);
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(image->format, c.format);
        EXPECT_EQ(image->has_alpha, c.format == 0 ? 1u : 0u);
        ASSERT_EQ(c.words.size(), static_cast<size_t>(image->width) * image->height);
        for (size_t i = 0; i < c.words.size(); ++i)
            EXPECT_EQ(fbc_test::pixel(image, static_cast<int32_t>(i) % image->width,
                                      static_cast<int32_t>(i) / image->width),
                      c.words[i]) << i;
        xc_image_unref(image);
    }
}

TEST_F(BmpCodec, UnusableFilesAreRefusedWithADiagnostic) {
    const struct {
        const char *what;
        BmpSpec spec;
        const char *message;
    } cases[] = {
        {"7 bits", {1, 1, 7, 0, {}, {}, {0, 0, 0, 0}}, "is not a BMP image"},
        {"width 0", {0, 1, 24, 0, {}, {}, {}}, "is not a BMP image"},
        {"height 0", {1, 0, 24, 0, {}, {}, {}}, "is not a BMP image"},
        {"RLE top-down", {1, -1, 8, 1, {0}, {}, {0, 1}}, "is not a BMP image"},
        {"unknown compression", {1, 1, 8, 9, {0}, {}, {0, 0, 0, 0}}, "is not a BMP image"},
        {"cut pixels", {4, 4, 24, 0, {}, {}, std::vector<uint8_t>(40)}, "is cut inside its pixels"},
        {"huge", {0x7FFFFFFF, 0x7FFFFFFF, 24, 0, {}, {}, {}}, "has unusable size 2147483647x2147483647"},
        {"huge square", {30000, 30000, 8, 1, {0}, {}, {0, 1}}, "has unusable size 30000x30000"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        testing::internal::CaptureStderr();
        EXPECT_EQ(load(c.spec), nullptr);
        const std::string err = testing::internal::GetCapturedStderr();
        EXPECT_NE(err.find(std::string("bmp: file(") + path("t.bmp") + ") " + c.message), std::string::npos)
            << err;
    }
}

TEST_F(BmpCodec, ShortFilesFailCleanly) {
    const std::vector<uint8_t> full = bmp_file({2, 2, 8, 0, {0x010203, 0x040506}, {}, {0, 1, 0, 0, 1, 0, 0, 0}});
    // Every cut before the last pixel row's data fails; none crashes.
    for (size_t cut = 0; cut < 14 + 40 + 8 + 5; ++cut) {
        const std::string file = write("cut.bmp", std::vector<uint8_t>(full.begin(), full.begin() + cut));
        xc_image *image = xc_image_new();
        testing::internal::CaptureStderr();
        const int info = bmp_loader.load_info(image, file.c_str());
        const int data = bmp_loader.load_data(image, file.c_str());
        testing::internal::GetCapturedStderr();
        EXPECT_TRUE(info < 0 || data < 0) << cut;
        EXPECT_EQ(image->data, nullptr) << cut;
        xc_image_unref(image);
    }
}

}  // namespace
