#include <gtest/gtest.h>

#include <string>

#include "font_fixture.hpp"

namespace {

using fbc_test::FontTest;
using fbc_test::kCjk;
using fbc_test::kCondensed;
using fbc_test::kMono;
using fbc_test::kSans;
using fbc_test::kSerif;
using fbc_test::kWen;
using fbc_test::kZhong;
using fbc_test::packed;
using fbc_test::ReferenceFace;
using fbc_test::ReferenceGlyph;

using GlyphCache = FontTest;

void expect_same_glyph(const ReferenceGlyph &got, const ReferenceGlyph &want,
                       const std::string &what) {
    EXPECT_EQ(got.left, want.left) << what;
    EXPECT_EQ(got.top, want.top) << what;
    EXPECT_EQ(got.width, want.width) << what;
    EXPECT_EQ(got.rows, want.rows) << what;
    EXPECT_EQ(got.advance_26_6, want.advance_26_6) << what;
    EXPECT_EQ(got.coverage, want.coverage) << what;
}

size_t table_size(const xc_font *font) {
    return fbc::glyph_table(font) ? fbc::glyph_table(font)->size() : 0;
}

TEST_F(GlyphCache, GlyphsMatchFreeTypeAtTheFontsSize) {
    const uint16_t kSample[] = {'A', 'g', 'j', 'W', '.', ' ', 0xE9, 0x20AC};
    for (const char *path : {kSans, kMono}) {
        for (int32_t size : {8, 12, 16, 31}) {
            ReferenceFace ref(path, size);
            xc_font *font = load(path, size);
            ASSERT_NE(font, nullptr);
            xc_font_set_size(font);
            for (uint16_t ch : kSample) {
                const xc_font_glyph *fg = xc_font_get_glyph(font, ch);
                ASSERT_NE(fg, nullptr);
                EXPECT_EQ(fg->bitmap, reinterpret_cast<FT_BitmapGlyph>(fg->glyph));
                EXPECT_EQ(fg->bitmap->bitmap.pixel_mode, FT_PIXEL_MODE_GRAY);
                expect_same_glyph(packed(fg), ref.glyph(ch),
                                  std::string(path) + " " + std::to_string(size) + " " +
                                      std::to_string(ch));
            }
        }
    }
}

TEST_F(GlyphCache, LookupsAreCachedPerCharacter) {
    xc_font *font = load(kSans, 12);
    EXPECT_EQ(font->glyphs, nullptr);
    xc_font_glyph *a = xc_font_get_glyph(font, 'a');
    EXPECT_EQ(xc_font_get_glyph(font, 'a'), a);
    // Only the low 16 bits name the character.
    EXPECT_EQ(xc_font_get_glyph(font, 0x10000 + 'a'), a);
    EXPECT_NE(xc_font_get_glyph(font, 'b'), a);
    EXPECT_EQ(table_size(font), 2u);
}

TEST_F(GlyphCache, ByteOrderMarkHasNoGlyphAndIdeographicSpaceIsASpace) {
    xc_font *font = load(kSans, 12);
    EXPECT_EQ(xc_font_get_glyph(font, 0xFEFF), nullptr);
    EXPECT_EQ(xc_font_get_glyph(font, 0x1FEFF), nullptr);
    xc_font_glyph *space = xc_font_get_glyph(font, 0x3000);
    ASSERT_NE(space, nullptr);
    EXPECT_EQ(xc_font_get_glyph(font, ' '), space);
    EXPECT_EQ(table_size(font), 1u);
}

TEST_F(GlyphCache, TableIsFlushedWholeAtAThousandEntries) {
    xc_font *font = load(kSans, 6);
    for (uint16_t ch = 0x21; ch < 0x21 + 1000; ++ch) xc_font_get_glyph(font, ch);
    EXPECT_EQ(table_size(font), 1000u);
    // A cached character is still found without flushing.
    xc_font_get_glyph(font, 0x21);
    EXPECT_EQ(table_size(font), 1000u);
    xc_font_get_glyph(font, 0x21 + 1000);
    EXPECT_EQ(table_size(font), 1u);
    xc_font_get_glyph(font, 0x21);
    EXPECT_EQ(table_size(font), 2u);
}

TEST_F(GlyphCache, EmboldeningWidensTheBitmapButNotTheAdvance) {
    xc_font *plain = load(kSans, 16);
    xc_font *bold = load(kSans, 16, 2, 0);
    xc_font *tall = load(kSans, 16, 0, 1);
    xc_font_set_size(plain);
    const ReferenceGlyph p = packed(xc_font_get_glyph(plain, 'H'));
    xc_font_set_size(bold);
    const ReferenceGlyph b = packed(xc_font_get_glyph(bold, 'H'));
    xc_font_set_size(tall);
    const ReferenceGlyph t = packed(xc_font_get_glyph(tall, 'H'));
    EXPECT_EQ(b.width, p.width + 2);
    EXPECT_EQ(b.rows, p.rows);
    EXPECT_EQ(b.advance_26_6, p.advance_26_6);
    EXPECT_EQ(t.width, p.width);
    EXPECT_EQ(t.rows, p.rows + 1);
    EXPECT_EQ(t.advance_26_6, p.advance_26_6);
}

TEST_F(GlyphCache, MissingCharacterDrawsTheMissingGlyphShape) {
    ReferenceFace ref(kSans, 14);
    ASSERT_FALSE(ref.has(kZhong));
    xc_font *font = load(kSans, 14);
    xc_font_set_size(font);
    const xc_font_glyph *fg = xc_font_get_glyph(font, kZhong);
    expect_same_glyph(packed(fg), ref.glyph_by_index(0), "missing");
    EXPECT_EQ(font->fallback[0], nullptr);
    // Each missing character costs its own entry and its own record.
    EXPECT_NE(xc_font_get_glyph(font, kWen), fg);
    EXPECT_EQ(table_size(font), 2u);
}

TEST_F(GlyphCache, MissingCharactersShareTheRecordOfKeyZero) {
    xc_font_set_cache(1000000);
    xc_font *font = xc_font_load(kSans, 14, 0, 0);
    xc_font_glyph *zero = xc_font_get_glyph(font, 0);
    EXPECT_EQ(xc_font_get_glyph(font, kZhong), zero);
    EXPECT_EQ(xc_font_get_glyph(font, kWen), zero);
    EXPECT_EQ(table_size(font), 3u);
    const int64_t per_entry = static_cast<int64_t>(zero->bitmap->bitmap.rows) *
                                  zero->bitmap->bitmap.width + 420;
    xc_font_free(font);
    EXPECT_EQ(fbc::font_cache_usage(), 16560 + 3 * per_entry);
    // Eviction frees the shared record once (the sanitizer build checks).
}

TEST_F(GlyphCache, FlushFreesSharedRecordsOnce) {
    xc_font *font = load(kSans, 6);
    xc_font_get_glyph(font, 0);
    for (uint16_t ch = 0xE000; ch < 0xE000 + 999; ++ch) xc_font_get_glyph(font, ch);
    EXPECT_EQ(table_size(font), 1000u);
    xc_font_get_glyph(font, 'a');
    EXPECT_EQ(table_size(font), 1u);
}

TEST_F(GlyphCache, FallbackFontIsAttachedAndRendersAtItsOwnSize) {
    xc_font_set_fallback(kCjk);
    ReferenceFace cjk(kCjk, 15);
    ASSERT_TRUE(cjk.has(kZhong));
    xc_font *font = load(kSans, 15);
    xc_font_set_size(font);
    expect_same_glyph(packed(xc_font_get_glyph(font, kZhong)), cjk.glyph(kZhong), "zhong");
    xc_font *fallback = font->fallback[0];
    ASSERT_NE(fallback, nullptr);
    EXPECT_STREQ(fallback->source->filename, kCjk);
    EXPECT_EQ(fallback->size, 15);
    EXPECT_EQ(fallback->ref, 1);
    // The attached font serves the next missing character without loading.
    expect_same_glyph(packed(xc_font_get_glyph(font, kWen)), cjk.glyph(kWen), "wen");
    EXPECT_EQ(font->fallback[1], nullptr);
    EXPECT_EQ(fbc::font_handle_count(), 2);
    // Characters of the font itself still come from its own face.
    ReferenceFace sans(kSans, 15);
    xc_font_set_size(font);
    expect_same_glyph(packed(xc_font_get_glyph(font, 'A')), sans.glyph('A'), "A");
}

TEST_F(GlyphCache, FallbackGlyphsAreEmboldenedLikeTheRequestingFont) {
    xc_font_set_fallback(kCjk);
    ReferenceFace cjk(kCjk, 15);
    xc_font *font = load(kSans, 15, 1, 0);
    xc_font_set_size(font);
    const ReferenceGlyph got = packed(xc_font_get_glyph(font, kZhong));
    EXPECT_EQ(font->fallback[0]->bold_x, 1);
    EXPECT_EQ(got.width, cjk.glyph(kZhong).width + 1);
}

TEST_F(GlyphCache, FallbackListSkipsTheFontsOwnFileAndUnloadableFiles) {
    xc_font_set_fallback("/nonexistent.ttf,,/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf,"
                         "/usr/share/fonts/truetype/wqy/wqy-microhei.ttc");
    xc_font *font = load(kSans, 12);
    xc_font_get_glyph(font, kZhong);
    // The unloadable file left its slot empty, so the next name took it.
    ASSERT_NE(font->fallback[0], nullptr);
    EXPECT_STREQ(font->fallback[0]->source->filename, kCjk);
    EXPECT_EQ(font->fallback[1], nullptr);
}

TEST_F(GlyphCache, AtMostThreeFallbacksAreAttached) {
    const std::string names = std::string(kMono) + "," + kSerif + "," + kCondensed + "," + kCjk;
    xc_font_set_fallback(names.c_str());
    ReferenceFace sans(kSans, 12);
    xc_font *font = load(kSans, 12);
    xc_font_set_size(font);
    const xc_font_glyph *fg = xc_font_get_glyph(font, kZhong);
    EXPECT_STREQ(font->fallback[0]->source->filename, kMono);
    EXPECT_STREQ(font->fallback[1]->source->filename, kSerif);
    EXPECT_STREQ(font->fallback[2]->source->filename, kCondensed);
    // The CJK font had no slot left: the character is missing.
    expect_same_glyph(packed(fg), sans.glyph_by_index(0), "missing");
    EXPECT_EQ(fbc::font_handle_count(), 4);
}

TEST_F(GlyphCache, FallbackListReplacesAndClearsEntries) {
    xc_font_set_fallback("a,b,,c");
    EXPECT_STREQ(font_fallback[0], "a");
    EXPECT_STREQ(font_fallback[1], "b");
    EXPECT_STREQ(font_fallback[2], "c");
    EXPECT_EQ(font_fallback[3], nullptr);
    xc_font_set_fallback(",d");
    EXPECT_STREQ(font_fallback[0], "d");
    EXPECT_EQ(font_fallback[1], nullptr);
    EXPECT_EQ(font_fallback[2], nullptr);
    xc_font_set_fallback("1,2,3,4,5,6,7,8,9");
    EXPECT_STREQ(font_fallback[7], "8");
    xc_font_set_fallback("");
    for (char *name : font_fallback) EXPECT_EQ(name, nullptr);
}

TEST_F(GlyphCache, InitCountsCallsAndKeepsOneLibrary) {
    // The fixture made the first call.
    const FT_Library lib = xg_ft_lib;
    ASSERT_NE(lib, nullptr);
    EXPECT_EQ(xc_font_init(), 2);
    EXPECT_EQ(xc_font_init(), 3);
    EXPECT_EQ(xg_ft_lib, lib);
}

TEST(GlyphCacheDeath, NullFontAborts) {
    EXPECT_DEATH(xc_font_get_glyph(nullptr, 'a'), "font_func:.*Assertion `fi' failed");
}

}  // namespace
