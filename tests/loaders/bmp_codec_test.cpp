// The BMP codec on files the tests write: what the BMP Suite in the corpus
// cannot pin exactly, and refusals with their reasons.
#include "loader_test_support.hpp"

namespace {

constexpr uint32_t kRgb = 0, kRle8 = 1, kBitFields = 3, kAlphaBitFields = 6;

struct BmpSpec {
    int32_t width, height;  // negative height: top-down rows
    uint32_t bits, compression;
    std::vector<uint32_t> masks, palette;  // both after the 40-byte header; colours 0x00RRGGBB
    std::vector<uint8_t> pixels;
};

std::vector<uint8_t> bmp_file(const BmpSpec &s) {
    const auto header = static_cast<uint32_t>(14 + 40 + 4 * (s.masks.size() + s.palette.size()));
    std::vector<uint8_t> out = {'B', 'M'};
    // Planes (1) and bits share a word; size, density and colour counts stay 0.
    for (uint32_t v : {header + static_cast<uint32_t>(s.pixels.size()), 0u, header, 40u,
                       static_cast<uint32_t>(s.width), static_cast<uint32_t>(s.height),
                       1u | s.bits << 16, s.compression, 0u, 0u, 0u, 0u, 0u})
        fbc_test::put_le(out, v);
    for (uint32_t v : s.masks) fbc_test::put_le(out, v);
    for (uint32_t v : s.palette) fbc_test::put_le(out, v);
    out.insert(out.end(), s.pixels.begin(), s.pixels.end());
    return out;
}

using BmpCodec = fbc_test::ScratchDir;

TEST_F(BmpCodec, FilesDecodeExactlyOrAreRefusedWithTheirReason) {
    const std::vector<uint32_t> argb = {0xFF0000, 0xFF00, 0xFF, 0xFF000000};
    const struct {
        const char *what;
        BmpSpec spec;
        std::vector<uint32_t> words;  // rows top first
        const char *refusal = nullptr;
    } cases[] = {
        // An alpha mask in use: premultiplied by >> 8 below full alpha.
        {"alpha",
         {2, 1, 32, kAlphaBitFields, argb, {}, {0, 0, 255, 128, 10, 20, 30, 255}},
         {0x807F0000u, 0xFF1E140Au}},
        // An alpha mask whose values are all 0 was left unused by the writer.
        {"zero alpha", {1, 1, 32, kAlphaBitFields, argb, {}, {1, 2, 3, 0}}, {0xFF030201u}},
        // 5 and 6-bit channels widen by bit replication.
        {"565",
         {2, 1, 16, kBitFields, {0xF800, 0x7E0, 0x1F}, {}, {0x1F, 0xF8, 0xE0, 0x07}},
         {0xFFFF00FF, 0xFF00FF00}},
        // An index past the palette reads as black.
        {"bad index", {2, 1, 8, kRgb, {}, {0x112233}, {0, 9, 0, 0}}, {0xFF112233u, 0xFF000000u}},
        // Run of 2, end of line; delta (1, 0); absolute run of 3 (padded, its
        // last pixel past the width); end of bitmap. Unreached pixels: colour 0.
        {"RLE8",
         {3,
          2,
          8,
          kRle8,
          {},
          {0x000000, 0x0000FF, 0x00FF00},
          {2, 1, 0, 0, 0, 2, 1, 0, 0, 3, 2, 1, 2, 0, 0, 1}},
         {0xFF000000u, 0xFF00FF00u, 0xFF0000FFu, 0xFF0000FFu, 0xFF0000FFu, 0xFF000000u}},
        {"7 bits", {1, 1, 7, kRgb, {}, {}, {0, 0, 0, 0}}, {}, "is not a BMP image"},
        {"height 0", {1, 0, 24, kRgb, {}, {}, {}}, {}, "is not a BMP image"},
        {"RLE top-down", {1, -1, 8, kRle8, {}, {0}, {0, 1}}, {}, "is not a BMP image"},
        {"unknown compression", {1, 1, 8, 9, {}, {0}, {0, 0, 0, 0}}, {}, "is not a BMP image"},
        {"cut pixels",
         {4, 4, 24, kRgb, {}, {}, std::vector<uint8_t>(40)},
         {},
         "is cut inside its pixels"},
        // A size the device cannot address is refused before anything else.
        {"huge RLE",
         {30000, 30000, 8, kRle8, {}, {0}, {0, 1}},
         {},
         "has unusable size 30000x30000"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        const std::string file = write("t.bmp", bmp_file(c.spec));
        xc_image *image = xc_image_new();
        testing::internal::CaptureStderr();
        const int loaded = bmp_loader.load_data(image, file.c_str());
        const std::string err = testing::internal::GetCapturedStderr();
        if (c.refusal) {
            EXPECT_EQ(std::make_pair(loaded, image->data),
                      std::make_pair(-1, static_cast<uint8_t *>(nullptr)));
            EXPECT_NE(err.find("bmp: file(" + file + ") " + c.refusal), std::string::npos) << err;
        } else {
            const bool alpha = std::any_of(c.words.begin(), c.words.end(),
                                           [](uint32_t w) { return w >> 24 != 255; });
            ASSERT_EQ(loaded, 0);
            EXPECT_EQ(fbc_test::alpha_marks(image), fbc_test::alpha_marks(alpha));
            EXPECT_EQ(fbc_test::pixels(image), c.words);
        }
        xc_image_unref(image);
    }
}

}  // namespace
