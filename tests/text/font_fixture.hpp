// The shared harness of the font tests: the fonts the set-up installs, an
// independent FreeType face to check the library's glyphs against, and a
// fixture that leaves nothing open behind it.
#pragma once

#include <gtest/gtest.h>

#include <ft2build.h>
#include FT_FREETYPE_H

#include <algorithm>
#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

#include "fbcompose/text.h"
#include "text/font_internal.hpp"

namespace fbc_test {

using Text = std::vector<uint16_t>;

inline constexpr const char *kSans = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
inline constexpr const char *kMono = "/usr/share/fonts/truetype/dejavu/DejaVuSansMono.ttf";
// Has the CJK ideographs that DejaVu lacks.
inline constexpr const char *kCjk = "/usr/share/fonts/truetype/wqy/wqy-microhei.ttc";
inline constexpr uint16_t kZhong = 0x4E2D, kWen = 0x6587;

// A wide string as the library takes it.
inline Text terminated(Text text) {
    text.push_back(0);
    return text;
}

// A placed glyph: bearings, size, 26.6 advance and packed coverage rows.
struct ReferenceGlyph {
    int32_t left = 0, top = 0, width = 0, rows = 0;
    int64_t advance_26_6 = 0;
    std::vector<uint8_t> coverage;
    uint8_t at(int32_t col, int32_t row) const { return coverage[row * width + col]; }
    bool operator==(const ReferenceGlyph &) const = default;
};

// One-bit pixels become full or no coverage.
inline ReferenceGlyph pack(const FT_Bitmap &b, int32_t left, int32_t top, int64_t advance) {
    ReferenceGlyph g{left, top, int32_t(b.width), int32_t(b.rows), advance, {}};
    for (int32_t r = 0; r < g.rows; ++r) {
        const uint8_t *row = b.buffer + r * b.pitch;
        for (int32_t c = 0; c < g.width; ++c) {
            const bool bit = (row[c >> 3] >> (7 - (c & 7))) & 1;
            g.coverage.push_back(b.pixel_mode == FT_PIXEL_MODE_MONO ? (bit ? 0xFF : 0) : row[c]);
        }
    }
    return g;
}

// A glyph record of the library (16.16 advance).
inline ReferenceGlyph packed(const xc_font_glyph *fg) {
    return pack(fg->bitmap->bitmap, fg->bitmap->left, fg->bitmap->top, fg->glyph->advance.x >> 10);
}

// What FreeType itself renders at a size in points at 75 dpi.
struct ReferenceFace {
    FT_Library lib = nullptr;
    FT_Face face = nullptr;

    ReferenceFace(const char *path, int32_t size) {
        EXPECT_EQ(FT_Init_FreeType(&lib), 0);
        EXPECT_EQ(FT_New_Face(lib, path, 0, &face), 0) << path;
        FT_Select_Charmap(face, FT_ENCODING_UNICODE);
        EXPECT_EQ(FT_Set_Char_Size(face, 0, size * 64, 75, 75), 0);
    }
    ~ReferenceFace() {
        FT_Done_Face(face);
        FT_Done_FreeType(lib);
    }
    ReferenceGlyph glyph_by_index(FT_UInt index) const {
        EXPECT_EQ(FT_Load_Glyph(face, index, FT_LOAD_RENDER | FT_LOAD_NO_AUTOHINT), 0);
        const FT_GlyphSlot s = face->glyph;
        return pack(s->bitmap, s->bitmap_left, s->bitmap_top, s->advance.x);
    }
    ReferenceGlyph glyph(uint16_t ch) const { return glyph_by_index(FT_Get_Char_Index(face, ch)); }
    int32_t ascent() const { return int32_t(face->size->metrics.ascender >> 6); }
    int32_t descent() const { return int32_t(-(face->size->metrics.descender >> 6)); }
    // Pixel width of a string: the 26.6 advances summed, then floored.
    int32_t advance(const Text &text) const {
        int64_t sum = 0;
        for (uint16_t ch : text) sum += glyph(ch).advance_26_6;
        return int32_t(sum >> 6);
    }
};

// Starts the font engine; at the end drops the fonts it loaded and the
// fallback list and empties the cache, so the leak checker sees nothing.
class FontTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(xc_font_init(), 0); }
    void TearDown() override {
        for (xc_font *font : loaded_) xc_font_free(font);
        xc_font_set_fallback(nullptr);
        xc_font_set_cache(0);
        EXPECT_EQ(fbc::font_handle_count(), 0);
    }
    xc_font *load(const char *path, int32_t size, int32_t bold_x = 0, int32_t bold_y = 0) {
        xc_font *font = xc_font_load(path, size, bold_x, bold_y);
        if (font) loaded_.push_back(font);
        return font;
    }
    std::vector<xc_font *> loaded_;
};

// DejaVu Sans at 16 points, and FreeType's own face of it.
class Sans16 : public FontTest {
protected:
    void SetUp() override {
        FontTest::SetUp();
        font = load(kSans, 16);
    }
    xc_font *font = nullptr;
    ReferenceFace ref{kSans, 16};
};

}  // namespace fbc_test
