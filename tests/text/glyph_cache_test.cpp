#include "font_fixture.hpp"

namespace fbc_test {
namespace {

constexpr const char *kSerif = "/usr/share/fonts/truetype/dejavu/DejaVuSerif.ttf";
constexpr const char *kCondensed = "/usr/share/fonts/truetype/dejavu/DejaVuSansCondensed.ttf";

using GlyphCache = FontTest;

size_t table_size(const xc_font *font) { return fbc::glyph_table(font)->size(); }

// File names joined as the fallback list takes them.
std::string joined(std::initializer_list<const char *> names) {
    std::string all;
    for (const char *name : names) all += std::string(all.empty() ? "" : ",") + name;
    return all;
}

TEST_F(GlyphCache, KeysAreTheLow16BitsWithByteOrderMarkAndIdeographicSpaceMapped) {
    xc_font *font = load(kSans, 12);
    EXPECT_EQ(font->glyphs, nullptr);
    xc_font_glyph *a = xc_font_get_glyph(font, 'a');
    EXPECT_EQ(std::tuple(xc_font_get_glyph(font, 0x10000 + 'a'), xc_font_get_glyph(font, 0xFEFF),
                         xc_font_get_glyph(font, 0x1FEFF)),
              std::tuple(a, nullptr, nullptr));
    EXPECT_NE(xc_font_get_glyph(font, 'b'), a);
    EXPECT_EQ(xc_font_get_glyph(font, 0x3000), xc_font_get_glyph(font, ' '));
    EXPECT_EQ(table_size(font), 3u);
}

TEST_F(GlyphCache, TableIsFlushedWholeAtAThousandEntries) {
    xc_font *font = load(kSans, 6);
    // Key 0, then private-use characters the font lacks: all share one record.
    xc_font_get_glyph(font, 0);
    for (uint16_t ch = 0xE000; ch < 0xE000 + 999; ++ch) xc_font_get_glyph(font, ch);
    // A cached character is still found without flushing.
    xc_font_get_glyph(font, 0xE000);
    EXPECT_EQ(table_size(font), 1000u);
    // The flush frees the shared record once (the sanitizer build checks).
    xc_font_get_glyph(font, 'a');
    EXPECT_EQ(table_size(font), 1u);
    xc_font_get_glyph(font, 0xE000);
    EXPECT_EQ(table_size(font), 2u);
}

TEST_F(GlyphCache, EmboldeningWidensTheBitmapButNotTheAdvance) {
    const ReferenceGlyph h = ReferenceFace(kSans, 16).glyph('H');
    for (auto [bold_x, bold_y] : {std::pair(2, 0), std::pair(0, 1)}) {
        const ReferenceGlyph g = packed(xc_font_get_glyph(load(kSans, 16, bold_x, bold_y), 'H'));
        EXPECT_EQ(std::tuple(g.width, g.rows, g.advance_26_6),
                  std::tuple(h.width + bold_x, h.rows + bold_y, h.advance_26_6));
    }
}

TEST_F(GlyphCache, FallbackFontIsAttachedOnceAndRendersAtItsOwnSize) {
    xc_font_set_fallback(kCjk);
    ReferenceFace cjk(kCjk, 15), sans(kSans, 15);
    xc_font *font = load(kSans, 15);
    EXPECT_EQ(packed(xc_font_get_glyph(font, kZhong)), cjk.glyph(kZhong));
    // The attached font serves the next missing character.
    EXPECT_EQ(packed(xc_font_get_glyph(font, kWen)), cjk.glyph(kWen));
    ASSERT_NE(font->fallback[0], nullptr);
    EXPECT_EQ(std::pair(font->fallback[0]->ref, fbc::font_handle_count()), std::pair(1, 2));
    // Characters of the font itself still come from its own face.
    xc_font_set_size(font);
    EXPECT_EQ(packed(xc_font_get_glyph(font, 'A')), sans.glyph('A'));
}

// The unloadable file leaves its slot empty, so the next name takes it;
// the font's own file is skipped; fallbacks get the font's size and bold.
TEST_F(GlyphCache, FallbackListSkipsOwnAndUnloadableFilesAndLoadsAtTheFontsSizeAndBold) {
    xc_font_set_fallback(joined({"/nonexistent.ttf", kSans, kCjk}).c_str());
    xc_font *font = load(kSans, 12, 1, 0);
    xc_font_get_glyph(font, kZhong);
    const xc_font *fallback = font->fallback[0];
    ASSERT_NE(fallback, nullptr);
    EXPECT_STREQ(fallback->source->filename, kCjk);
    EXPECT_EQ(std::tuple(fallback->size, fallback->bold_x, font->fallback[1]),
              std::tuple(12, 1, nullptr));
}

// The CJK font has no slot left after three: the character is missing, and
// with nothing under key 0 each missing character renders its own shape.
TEST_F(GlyphCache, AtMostThreeFallbacksAreAttachedThenTheMissingGlyphShapeIsUsed) {
    xc_font_set_fallback(joined({kMono, kSerif, kCondensed, kCjk}).c_str());
    xc_font *font = load(kSans, 12);
    const xc_font_glyph *fg = xc_font_get_glyph(font, kZhong);
    EXPECT_EQ(packed(fg), ReferenceFace(kSans, 12).glyph_by_index(0));
    EXPECT_NE(xc_font_get_glyph(font, kWen), fg);
    ASSERT_NE(font->fallback[2], nullptr);
    EXPECT_STREQ(font->fallback[2]->source->filename, kCondensed);
    EXPECT_EQ(fbc::font_handle_count(), 4);
}

// Each list replaces the last; empty names are dropped, and eight are kept.
TEST_F(GlyphCache, FallbackListReplacesAndClearsEntries) {
    for (auto [list, names] :
         {std::pair("a,b,,c", "a b c - - - - - "), std::pair(",d", "d - - - - - - - "),
          std::pair("1,2,3,4,5,6,7,8,9", "1 2 3 4 5 6 7 8 ")}) {
        xc_font_set_fallback(list);
        std::string all;
        for (const char *name : font_fallback) all += std::string(name ? name : "-") + " ";
        EXPECT_EQ(all, names);
    }
}

TEST(GlyphCacheDeath, NullFontAborts) {
    EXPECT_DEATH(xc_font_get_glyph(nullptr, 'a'), "font_func:.*Assertion `fi' failed");
}

}  // namespace
}  // namespace fbc_test
