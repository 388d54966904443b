#include "font_fixture.hpp"

#include <cstdlib>

namespace fbc_test {
namespace {

ReferenceGlyph pack(const FT_Bitmap &bitmap, int32_t left, int32_t top, int64_t advance) {
    ReferenceGlyph g;
    g.left = left;
    g.top = top;
    g.width = static_cast<int32_t>(bitmap.width);
    g.rows = static_cast<int32_t>(bitmap.rows);
    g.advance_26_6 = advance;
    for (int32_t r = 0; r < g.rows; ++r) {
        const uint8_t *row = bitmap.buffer + r * bitmap.pitch;
        for (int32_t c = 0; c < g.width; ++c) {
            const bool mono = bitmap.pixel_mode == FT_PIXEL_MODE_MONO;
            g.coverage.push_back(mono ? ((row[c >> 3] >> (7 - (c & 7))) & 1 ? 0xFF : 0) : row[c]);
        }
    }
    return g;
}

}  // namespace

ReferenceFace::ReferenceFace(const char *path, int32_t size) {
    EXPECT_EQ(FT_Init_FreeType(&lib_), 0);
    EXPECT_EQ(FT_New_Face(lib_, path, 0, &face_), 0) << path;
    FT_Select_Charmap(face_, FT_ENCODING_UNICODE);
    EXPECT_EQ(FT_Set_Char_Size(face_, 0, size * 64, 75, 75), 0);
}

ReferenceFace::~ReferenceFace() {
    FT_Done_Face(face_);
    FT_Done_FreeType(lib_);
}

ReferenceGlyph ReferenceFace::glyph_by_index(FT_UInt index) const {
    EXPECT_EQ(FT_Load_Glyph(face_, index, FT_LOAD_RENDER | FT_LOAD_NO_AUTOHINT), 0);
    const FT_GlyphSlot slot = face_->glyph;
    return pack(slot->bitmap, slot->bitmap_left, slot->bitmap_top, slot->advance.x);
}

ReferenceGlyph ReferenceFace::glyph(uint16_t ch) const {
    return glyph_by_index(FT_Get_Char_Index(face_, ch));
}

int32_t ReferenceFace::advance(const std::vector<uint16_t> &text) const {
    int64_t sum = 0;
    for (uint16_t ch : text) sum += glyph(ch).advance_26_6;
    return static_cast<int32_t>(sum >> 6);
}

ReferenceGlyph packed(const xc_font_glyph *fg) {
    const FT_BitmapGlyph b = fg->bitmap;
    return pack(b->bitmap, b->left, b->top, fg->glyph->advance.x >> 10);
}

void FontTest::SetUp() { ASSERT_EQ(xc_font_init(), 0); }

void FontTest::TearDown() {
    for (xc_font *font : loaded_) xc_font_free(font);
    xc_font_set_fallback(nullptr);
    xc_font_set_cache(0);
    EXPECT_EQ(fbc::font_handle_count(), 0);
}

xc_font *FontTest::load(const char *path, int32_t size, int32_t bold_x, int32_t bold_y) {
    xc_font *font = xc_font_load(path, size, bold_x, bold_y);
    if (font) loaded_.push_back(font);
    return font;
}

}  // namespace fbc_test
