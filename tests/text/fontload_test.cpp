#include <gtest/gtest.h>

#include "font_fixture.hpp"

namespace {

using fbc_test::FontTest;
using fbc_test::kCjk;
using fbc_test::kMono;
using fbc_test::kSans;
using fbc_test::kZhong;

constexpr int64_t kEmptyHandleCost = 16560;
constexpr int32_t kRoomy = 10000000;

using FontLoad = FontTest;

TEST_F(FontLoad, SameFileSizeAndBoldShareOneHandle) {
    xc_font_set_cache(kRoomy);
    xc_font *font = xc_font_load(kSans, 12, 0, 0);
    ASSERT_NE(font, nullptr);
    EXPECT_EQ(xc_font_load(kSans, 12, 0, 0), font);
    EXPECT_EQ(font->ref, 2);
    // Any difference in size or emboldening is another handle.
    xc_font *bold = load(kSans, 12, 1, 0);
    xc_font *tall = load(kSans, 12, 0, 1);
    EXPECT_NE(bold, font);
    EXPECT_NE(tall, font);
    EXPECT_NE(tall, bold);

    xc_font_free(font);
    xc_font_free(font);
    EXPECT_EQ(font->ref, 0);
    EXPECT_EQ(fbc::font_cache_usage(), kEmptyHandleCost);
    EXPECT_EQ(xc_font_load(kSans, 12, 0, 0), font);
    EXPECT_EQ(font->ref, 1);
    EXPECT_EQ(fbc::font_cache_usage(), 0);
    xc_font_free(font);
}

TEST_F(FontLoad, SizesOfOneFileShareTheFace) {
    xc_font *small = load(kSans, 10);
    xc_font *large = load(kSans, 20);
    ASSERT_NE(small, nullptr);
    ASSERT_NE(large, nullptr);
    EXPECT_EQ(small->source, large->source);
    EXPECT_EQ(small->face, large->face);
    EXPECT_EQ(small->face, small->source->face);
    EXPECT_NE(small->ft_size, large->ft_size);
    EXPECT_EQ(small->source->ref, 2);
    EXPECT_STREQ(small->source->filename, kSans);
    EXPECT_NE(small->source->filename, kSans);  // an owned copy
    EXPECT_EQ(fbc::font_source_count(), 1);
    EXPECT_NE(load(kMono, 10)->source, small->source);
    EXPECT_EQ(fbc::font_source_count(), 2);
}

TEST_F(FontLoad, SetSizeActivatesTheHandlesSizeObject) {
    xc_font *small = load(kSans, 10);
    xc_font *large = load(kSans, 20);
    EXPECT_EQ(small->source->cur_size, 20);
    xc_font_set_size(small);
    EXPECT_EQ(small->source->cur_size, 10);
    EXPECT_EQ(small->face->size, small->ft_size);
    const int32_t small_ascent = xc_font_get_ascent(small);
    EXPECT_EQ(large->face->size, small->ft_size);
    EXPECT_GT(xc_font_get_ascent(large), small_ascent);
    EXPECT_EQ(large->face->size, large->ft_size);
}

TEST_F(FontLoad, SizeIsInPointsAt75Dpi) {
    // 72 points at 75 dpi is 75 pixels per em.
    xc_font *font = load(kSans, 72);
    EXPECT_EQ(font->face->size->metrics.x_ppem, 75);
    EXPECT_EQ(font->face->size->metrics.y_ppem, 75);
}

TEST_F(FontLoad, CacheLimitZeroEvictsOnLastRelease) {
    EXPECT_EQ(xc_font_get_cache(), 0);
    xc_font *a = xc_font_load(kSans, 10, 0, 0);
    xc_font *b = xc_font_load(kSans, 11, 0, 0);
    xc_font_free(a);
    EXPECT_EQ(fbc::font_handle_count(), 1);
    EXPECT_EQ(b->source->ref, 1);
    EXPECT_EQ(fbc::font_cache_usage(), 0);
    xc_font_free(b);
    EXPECT_EQ(fbc::font_handle_count(), 0);
    EXPECT_EQ(fbc::font_source_count(), 0);
    xc_font_free(nullptr);
}

TEST_F(FontLoad, CostCountsEveryTableEntry) {
    xc_font_set_cache(kRoomy);
    xc_font *font = xc_font_load(kSans, 14, 0, 0);
    int64_t expected = kEmptyHandleCost;
    for (uint16_t ch : {'A', 'g', ' ', '.'}) {
        const FT_Bitmap &b = xc_font_get_glyph(font, ch)->bitmap->bitmap;
        expected += static_cast<int64_t>(b.rows) * b.width + 420;
    }
    // 0x3000 is cached as a space: no new entry.
    xc_font_get_glyph(font, 0x3000);
    xc_font_free(font);
    EXPECT_EQ(fbc::font_cache_usage(), expected);
    EXPECT_EQ(fbc::font_cache_cost(font), expected);
}

TEST_F(FontLoad, LoweringTheLimitEvictsLeastRecentlyUsedFirst) {
    xc_font_set_cache(kRoomy);
    xc_font *fonts[4];
    for (int32_t i = 0; i < 4; ++i) fonts[i] = xc_font_load(kSans, 10 + i, 0, 0);
    for (xc_font *font : fonts) xc_font_free(font);
    // Reusing size 10 makes it the most recent; size 11 is now the oldest.
    xc_font_free(xc_font_load(kSans, 10, 0, 0));
    EXPECT_EQ(fbc::font_cache_usage(), 4 * kEmptyHandleCost);

    xc_font_set_cache(3 * kEmptyHandleCost);
    EXPECT_EQ(xc_font_get_cache(), 3 * kEmptyHandleCost);
    EXPECT_EQ(fbc::font_handle_count(), 3);
    EXPECT_EQ(fbc::font_cache_usage(), 3 * kEmptyHandleCost);
    // 12, 13 and 10 are still cached (no new handle); reuse orders them
    // 10, 13, 12 from the most recent.
    for (int32_t size : {12, 13, 10}) xc_font_load(kSans, size, 0, 0);
    EXPECT_EQ(fbc::font_handle_count(), 3);
    EXPECT_EQ(fbc::font_cache_usage(), 0);
    for (xc_font *font : {fonts[0], fonts[2], fonts[3]}) xc_font_free(font);
    xc_font_set_cache(2 * kEmptyHandleCost - 1);
    EXPECT_EQ(fbc::font_handle_count(), 1);
    // The survivor is size 10: loading it revives the cached handle.
    EXPECT_EQ(xc_font_load(kSans, 10, 0, 0), fonts[0]);
    EXPECT_EQ(fbc::font_cache_usage(), 0);
    xc_font_free(fonts[0]);
}

TEST_F(FontLoad, ReferencedHandlesAreNeverEvicted) {
    xc_font_set_cache(kRoomy);
    xc_font *held = load(kSans, 10);
    xc_font_free(xc_font_load(kSans, 11, 0, 0));
    xc_font_set_cache(0);
    EXPECT_EQ(fbc::font_handle_count(), 1);
    EXPECT_EQ(held->ref, 1);
    EXPECT_EQ(held->source->ref, 1);
}

TEST_F(FontLoad, UnopenableFilesYieldNullSilently) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(xc_font_load("/nonexistent/font.ttf", 12, 0, 0), nullptr);
    EXPECT_EQ(xc_font_load(FBC_TEST_DATA_DIR "/../CMakeLists.txt", 12, 0, 0), nullptr);
    EXPECT_EQ(xc_font_load(nullptr, 12, 0, 0), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(fbc::font_source_count(), 0);
}

TEST_F(FontLoad, EvictionReleasesAttachedFallbacks) {
    xc_font_set_fallback(kCjk);
    xc_font *font = xc_font_load(kSans, 12, 0, 0);
    xc_font_get_glyph(font, kZhong);
    ASSERT_NE(font->fallback[0], nullptr);
    EXPECT_EQ(fbc::font_handle_count(), 2);
    EXPECT_EQ(fbc::font_source_count(), 2);
    xc_font_free(font);
    EXPECT_EQ(fbc::font_handle_count(), 0);
    EXPECT_EQ(fbc::font_source_count(), 0);
}

TEST_F(FontLoad, AbsurdSizesAreReportedNotFatal) {
    testing::internal::CaptureStdout();
    xc_font *font = load(kSans, INT32_MAX);
    const std::string out = testing::internal::GetCapturedStdout();
    ASSERT_NE(font, nullptr);
    EXPECT_EQ(out.rfind("font_load Set_Char_Size size = 2147483647 failed = ", 0), 0u) << out;
}

}  // namespace
