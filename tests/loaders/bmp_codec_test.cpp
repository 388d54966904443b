// The BMP codec on files the tests write: what the BMP Suite in the corpus
// cannot pin exactly, and refusals with their reasons.
#include "loader_test_support.hpp"

namespace {

constexpr uint32_t kRgb = 0, kRle8 = 1, kAlphaBitFields = 6;

struct BmpSpec {
    int32_t width, height;  // negative height: top-down rows
    uint32_t bits, compression;
    std::vector<uint32_t> masks_then_palette;  // after the 40-byte header; colours 0x00RRGGBB
    Bytes pixels;
};

Bytes bmp_file(const BmpSpec &s) {
    const auto header = static_cast<uint32_t>(14 + 40 + 4 * s.masks_then_palette.size());
    Bytes out = {'B', 'M'};
    // Planes (1) and bits share a word; size, density and colour counts stay 0.
    for (uint32_t v : {header + static_cast<uint32_t>(s.pixels.size()), 0u, header, 40u,
                       static_cast<uint32_t>(s.width), static_cast<uint32_t>(s.height),
                       1u | s.bits << 16, s.compression, 0u, 0u, 0u, 0u, 0u})
        put_le(out, v);
    for (uint32_t v : s.masks_then_palette) put_le(out, v);
    out.insert(out.end(), s.pixels.begin(), s.pixels.end());
    return out;
}

using BmpCodec = ScratchDir;

TEST_F(BmpCodec, FilesDecodeExactlyOrAreRefusedWithTheirReason) {
    const std::vector<uint32_t> argb = {0xFF0000, 0xFF00, 0xFF, 0xFF000000};
    const std::string not_bmp = "is not a BMP image";
    const struct {
        BmpSpec spec;
        Words words;  // rows top first
        std::string refusal = "";
    } cases[] = {
        // An alpha mask in use: premultiplied by >> 8 below full alpha.
        {{2, 1, 32, kAlphaBitFields, argb, {0, 0, 255, 128, 10, 20, 30, 255}},
         {0x807F0000u, 0xFF1E140Au}},
        // An alpha mask whose values are all 0 was left unused by the writer.
        {{1, 1, 32, kAlphaBitFields, argb, {1, 2, 3, 0}}, {0xFF030201u}},
        // An index past the palette reads as black.
        {{2, 1, 8, kRgb, {0x112233}, {0, 9, 0, 0}}, {0xFF112233u, 0xFF000000u}},
        // Run of 2, end of line; delta (1, 0); absolute run of 3 (padded, its
        // last pixel past the width); end of bitmap. Unreached pixels: colour 0.
        {{3, 2, 8, kRle8, {0, 0xFF, 0xFF00}, {2, 1, 0, 0, 0, 2, 1, 0, 0, 3, 2, 1, 2, 0, 0, 1}},
         {0xFF000000u, 0xFF00FF00u, 0xFF0000FFu, 0xFF0000FFu, 0xFF0000FFu, 0xFF000000u}},
        {{1, 1, 7, kRgb, {}, {0, 0, 0, 0}}, {}, not_bmp},
        {{1, 0, 24, kRgb, {}, {}}, {}, not_bmp},
        {{1, -1, 8, kRle8, {0}, {0, 1}}, {}, not_bmp},   // RLE top-down
        {{1, 1, 8, 9, {0}, {0, 0, 0, 0}}, {}, not_bmp},  // unknown compression
        {{4, 4, 24, kRgb, {}, Bytes(40)}, {}, "is cut inside its pixels"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(&c - cases);
        const std::string file = write("t.bmp", bmp_file(c.spec));
        const Image image{xc_image_new()};
        const int loaded = bmp_loader.load_data(image.get(), file.c_str());
        if (!c.refusal.empty()) {
            EXPECT_EQ(std::make_pair(loaded, image->data),
                      std::make_pair(-1, static_cast<uint8_t *>(nullptr)));
            const std::string err = log_.take(1);
            EXPECT_TRUE(err.starts_with("bmp: file(" + file + ") " + c.refusal)) << err;
            continue;
        }
        const bool alpha =
            std::any_of(c.words.begin(), c.words.end(), [](uint32_t w) { return w >> 24 != 255; });
        ASSERT_EQ(loaded, 0);
        EXPECT_EQ(alpha_marks(image.get()), alpha_marks(alpha));
        EXPECT_EQ(all(image.get()), c.words);
    }
}

}  // namespace
